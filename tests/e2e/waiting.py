# SPDX-License-Identifier: GPL-3.0-or-later
"""Waiting for something to become so: asked again and again, with a limit that no loaded machine reaches."""

import time

LIMIT = 60.0  # seconds
PAUSE = 0.05


class Gone(Exception):
    """What was asked for its state is not there any more, or not yet."""


def wait_until(condition, what, limit=LIMIT, check=None):
    """Returns the first true answer of condition(). Gone counts as false. check() raises where waiting is of no use.

    what tells the reader of a failure what did not come; it may be a function that tells it then.
    """
    deadline = time.monotonic() + limit
    while True:
        try:
            answer = condition()
            if answer:
                return answer
        except Gone:
            pass
        if check is not None:
            check()
        if time.monotonic() > deadline:
            raise AssertionError(f"not within {limit:.0f} s: {what() if callable(what) else what}")
        time.sleep(PAUSE)
