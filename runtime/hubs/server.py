"""The server of a network: Django's own, made to hold a school.

What differs from Django's: connections may queue (128), none may idle for longer than 20 seconds,
and there is a bound to how many are open; nothing is looked up in the DNS; answers are not held
back on kept connections; and of a body that the page does not read, only pieces are ever in memory.
"""

import collections
import http
import socketserver
import sys
import threading
import time

from django.core.servers import basehttp

from .terminal import harmless

IDLE_SECONDS = 20
MOST_CONNECTIONS = 500
# A class behind one router has one address, and a browser opens up to six connections.
MOST_OF_AN_ADDRESS = 200

_MOST_OF_A_HEAD = 32 * 1024
_PIECE = 64 * 1024
_SECONDS_FOR_THE_REST = 5

_BUSY = (b"HTTP/1.1 503 Service Unavailable\r\nContent-Length: 0\r\nRetry-After: 5\r\n"
         b"Connection: close\r\n\r\n")


class _Bounded:
    """As much of a stream as there may be of it."""

    def __init__(self, stream, left, at_first=None):
        self._stream, self.left, self._at_first = stream, left, at_first

    @property
    def waits(self):
        """Whether the client sends nothing before it is told to."""
        return self._at_first is not None

    def _take(self, read, size):
        if self.waits:
            at_first, self._at_first = self._at_first, None
            at_first()
        taken = read(self.left if size is None or size < 0 else min(size, self.left))
        self.left -= len(taken)
        return taken

    def read(self, size=-1):
        return self._take(self._stream.read, size)

    def readline(self, size=-1):
        return self._take(self._stream.readline, size)


class _Answer(basehttp.ServerHandler):
    def __init__(self, body, request_handler, *arguments):
        super().__init__(body, *arguments)
        self.stdin = self._body = body
        self.request_handler = request_handler

    def cleanup_headers(self):
        super().cleanup_headers()
        if self._body.left > _PIECE or self._body.waits:
            self.headers["Connection"] = "close"
            self.request_handler.close_connection = True

    def close(self):
        self.request_handler.skip(self._body)
        super(basehttp.ServerHandler, self).close()  # Django's would read the rest at once

    def handle_error(self):
        if isinstance(sys.exc_info()[1], (ConnectionError, TimeoutError)):
            self.request_handler.close_connection = True
        else:
            super().handle_error()


class _RequestHandler(basehttp.WSGIRequestHandler):
    timeout = IDLE_SECONDS
    disable_nagle_algorithm = True

    def parse_request(self):
        connection, self.rfile = self.rfile, _Bounded(self.rfile, _MOST_OF_A_HEAD)
        self._told_to_send = None
        try:
            if not super().parse_request():
                return False
            if self.rfile.left == 0:
                self.send_error(http.HTTPStatus.REQUEST_HEADER_FIELDS_TOO_LARGE)
                return False
        finally:
            self.rfile = connection
        if "Transfer-Encoding" in self.headers:
            self.send_error(http.HTTPStatus.LENGTH_REQUIRED)
            return False
        sizes = self.headers.get_all("Content-Length", ["0"])
        if len(sizes) > 1 or not (sizes[0].isdecimal() and len(sizes[0]) < 20):
            self.send_error(http.HTTPStatus.BAD_REQUEST)
            return False
        return True

    def handle_expect_100(self):
        """Let the client send the body when a page reads it, not before."""
        self._told_to_send = super().handle_expect_100
        return True

    def handle_one_request(self):
        self.raw_requestline = self.rfile.readline(_PIECE)
        if len(self.raw_requestline) == _PIECE:
            self.requestline = self.request_version = self.command = ""
            self.send_error(http.HTTPStatus.REQUEST_URI_TOO_LONG)
            return
        if not self.parse_request():
            return
        body = _Bounded(self.rfile, int(self.headers.get("Content-Length", "0")),
                        self._told_to_send)
        _Answer(body, self, self.wfile, self.get_stderr(), self.get_environ()).run(
            self.server.get_app())
        if body.left:  # which must not be taken for the next request
            self.close_connection = True

    def skip(self, body):
        """Read on for a while, so that a client that is still sending comes to see the answer."""
        end = time.monotonic() + _SECONDS_FOR_THE_REST
        while body.left and not body.waits and time.monotonic() < end:
            try:
                if not body.read(_PIECE):
                    break
            except OSError:
                break

    def log_message(self, text, *arguments):
        super().log_message(text, *(harmless(argument) if isinstance(argument, str) else argument
                                    for argument in arguments))


class Server(basehttp.ThreadedWSGIServer):
    request_queue_size = 128

    def __init__(self, address, ipv6=False):
        self._addresses = {}  # of each open connection
        self._counts = collections.Counter()
        self._lock = threading.Lock()
        super().__init__(address, _RequestHandler, ipv6=ipv6)

    def server_bind(self):
        socketserver.TCPServer.server_bind(self)  # HTTPServer's asks the DNS for a name
        self.server_name, self.server_port = self.server_address[:2]
        self.setup_environ()

    def verify_request(self, request, client_address):
        with self._lock:
            self._addresses[request] = client_address[0]
            self._counts[client_address[0]] += 1
            if (len(self._addresses) <= MOST_CONNECTIONS
                    and self._counts[client_address[0]] <= MOST_OF_AN_ADDRESS):
                return True
        request.setblocking(False)
        try:
            request.send(_BUSY)
        except OSError:
            pass
        return False

    def shutdown_request(self, request):
        """Called once for every connection, also for those that were refused."""
        with self._lock:
            address = self._addresses.pop(request, None)
            if address is not None:
                self._counts[address] -= 1
                if not self._counts[address]:
                    del self._counts[address]
        super().shutdown_request(request)

    def handle_error(self, request, client_address):
        if not isinstance(sys.exc_info()[1], (ConnectionError, TimeoutError)):
            super().handle_error(request, client_address)
