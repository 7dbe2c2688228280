# SPDX-License-Identifier: GPL-3.0-or-later
"""Polling for a condition, with a limit that even a loaded machine does not reach."""

import time

LIMIT = 60.0  # seconds
PAUSE = 0.05


class Gone(Exception):
    """The object asked for its state no longer exists, or does not exist yet."""


def wait_until(condition, what, limit=LIMIT, check=None):
    """Returns the first true result of condition(). Gone counts as false. check() raises if waiting is pointless.

    what names the condition in the failure message; a function is called at the time of the failure.
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
