# SPDX-License-Identifier: GPL-3.0-or-later
"""A web server with a new version, which sends large files only as far as the test allows."""

import http.server
import threading

CHUNK = 256 * 1024


class UpdateServer:
    def __init__(self):
        self.files = {}  # path: content
        self._allowed = 0
        self._stopped = False
        self._changed = threading.Condition()
        self._server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), self._handler())
        self._server.daemon_threads = True
        threading.Thread(target=self._server.serve_forever, daemon=True).start()

    @property
    def address(self):
        return f"http://127.0.0.1:{self._server.server_port}"

    def allow(self, size):
        """Lets the server send up to that many bytes of each file."""
        with self._changed:
            self._allowed = size
            self._changed.notify_all()

    def stop(self):
        """Ends all connections in whatever state, and accepts no more."""
        with self._changed:
            self._stopped = True
            self._changed.notify_all()
        self._server.shutdown()
        self._server.server_close()

    def _wait_for_more(self, sent):
        """Blocks until more than that many bytes may go out. Returns how many, or None once the server is stopped."""
        with self._changed:
            self._changed.wait_for(lambda: self._stopped or self._allowed > sent)
            return None if self._stopped else self._allowed

    def _send(self, content, write):
        sent = 0
        while sent < len(content):
            allowed = self._wait_for_more(sent)
            if allowed is None:
                return
            end = min(sent + CHUNK, allowed, len(content))
            write(content[sent:end])
            sent = end

    def _handler(server):
        class Handler(http.server.BaseHTTPRequestHandler):
            def do_GET(self):
                content = server.files.get(self.path)
                if content is None:
                    self.send_error(404)
                    return
                self.send_response(200)
                self.send_header("Content-Length", str(len(content)))
                self.end_headers()
                try:
                    if len(content) < CHUNK:
                        self.wfile.write(content)
                    else:
                        server._send(content, self.wfile.write)
                except OSError:
                    pass  # the program closed the connection

            def log_message(self, *arguments):
                pass

        return Handler
