"""The server of a network: Django's own, able to serve a school.

What differs from Django's: more connections may queue, but only so many may be open; none may wait
long for a request, send its head slowly, or stall; nothing is looked up in the DNS; answers
are not held back on kept connections; files are sent by the kernel; and a body that the page does
not read is never in memory as a whole.
"""

import http
import io
import socket
import socketserver
import sys
import time

from django.core.servers import basehttp

from .bodies import DRAIN_SECONDS, PIECE, drain
from .connections import Connections
from .terminal import harmless
from .transfers import Part

# How long a connection may wait for a request, and then for the whole of its head
IDLE_SECONDS = 20
HEAD_SECONDS = 20
# How long it may stall in the middle of a body or an answer
STALL_SECONDS = 120

_MAX_HEAD = 32 * 1024

_BUSY = (b"HTTP/1.1 503 Service Unavailable\r\nContent-Length: 0\r\nRetry-After: 5\r\n"
         b"Connection: close\r\n\r\n")


class _Stream(io.RawIOBase):
    """Reads from a connection, which may stall for STALL_SECONDS; after limit(), it must be done
    within a time."""

    def __init__(self, connection):
        self._connection = connection
        self.limit(None)

    def limit(self, seconds):
        """Everything that is read from now on must come within that time; None: no such limit."""
        self._end = None if seconds is None else time.monotonic() + seconds

    def readable(self):
        return True

    def readinto(self, buffer):
        left = STALL_SECONDS if self._end is None else self._end - time.monotonic()
        if left <= 0:
            raise TimeoutError
        self._connection.settimeout(left)
        return self._connection.recv_into(buffer)


class _Bounded:
    """Reads at most LEFT bytes of a stream, and calls AT_FIRST before the first of them."""

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
    is_whole = False  # once it is: all that was announced has been sent

    def __init__(self, body, request_handler, *arguments):
        super().__init__(body, *arguments)
        self.stdin = self._body = body
        self.request_handler = request_handler

    def cleanup_headers(self):
        length = self.headers["Content-Length"]
        super().cleanup_headers()
        if length is not None:  # Django 4.2 takes it out of the answer to HEAD
            self.headers["Content-Length"] = length
        if self._body.left > PIECE or self._body.waits:
            self.headers["Connection"] = "close"
            self.request_handler.close_connection = True

    def sendfile(self):
        """Send a file by the kernel. Returns whether the answer is one."""
        if not isinstance(self.result.filelike, Part):
            return False
        self.send_headers()
        self.bytes_sent = self.result.filelike.send(self.request_handler.connection)
        return True

    def close(self):
        announced = self.headers.get("Content-Length") if self.headers else None
        self.is_whole = (announced in (None, str(self.bytes_sent))
                         or self.environ["REQUEST_METHOD"] == "HEAD")
        self.request_handler.skip(self._body)
        super(basehttp.ServerHandler, self).close()  # Django's would read the rest at once

    def handle_error(self):
        if not isinstance(sys.exc_info()[1], (ConnectionError, TimeoutError)):
            super().handle_error()


class _RequestHandler(basehttp.WSGIRequestHandler):
    disable_nagle_algorithm = True

    def setup(self):
        super().setup()
        self.rfile.close()
        self._stream = _Stream(self.connection)
        self.rfile = io.BufferedReader(self._stream, PIECE)

    def parse_request(self):
        connection, self.rfile = self.rfile, _Bounded(self.rfile, _MAX_HEAD)
        self._tell_to_send = None
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
        self._tell_to_send = super().handle_expect_100
        return True

    def get_environ(self):
        environ = super().get_environ()
        environ["SERVER_NAME"] = self.connection.getsockname()[0]  # where the visitor reached it
        environ["quorvale.lan_addresses"] = self.server.lan_addresses
        return environ

    def read_head(self):
        """Returns whether there is a request that can be answered."""
        self._stream.limit(IDLE_SECONDS)
        self.rfile.peek(1)
        self._stream.limit(HEAD_SECONDS)
        self.raw_requestline = self.rfile.readline(PIECE)
        if len(self.raw_requestline) == PIECE:
            self.requestline = self.request_version = self.command = ""
            self.send_error(http.HTTPStatus.REQUEST_URI_TOO_LONG)
            return False
        return self.parse_request()

    def handle_one_request(self):
        if not self.read_head():
            return
        self._stream.limit(None)
        self.connection.settimeout(STALL_SECONDS)
        body = _Bounded(self.rfile, int(self.headers.get("Content-Length", "0")),
                        self._tell_to_send)
        answer = _Answer(body, self, self.wfile, self.get_stderr(), self.get_environ())
        answer.run(self.server.get_app())
        # What is left must not be taken for the next request, nor the next answer for the
        # rest of this one.
        if body.left or not answer.is_whole:
            self.close_connection = True

    def skip(self, body):
        """Read on for a while, if the client is still sending."""
        if body.left and not body.waits:
            self._stream.limit(DRAIN_SECONDS)
            drain(body.read)

    def log_message(self, text, *arguments):
        super().log_message(text, *(harmless(argument) if isinstance(argument, str) else argument
                                    for argument in arguments))


class Server(basehttp.ThreadedWSGIServer):
    """Serves at one address. LIKE is another server, with which this one shares the application
    and the bounds of connections."""

    request_queue_size = 128
    timeout = 0  # handle_request() does not wait
    lan_addresses = ()  # at which visitors reach the network, as far as that is known

    def __init__(self, address, ipv6=False, like=None):
        self._connections = like._connections if like else Connections()
        super().__init__(address, _RequestHandler, ipv6=ipv6)
        if like:
            self.set_app(like.get_app())

    @property
    def is_ipv4(self):
        return self.address_family == socket.AF_INET

    def server_bind(self):
        socketserver.TCPServer.server_bind(self)  # HTTPServer's asks the DNS for a name
        self.server_name, self.server_port = self.server_address[:2]
        self.setup_environ()

    def verify_request(self, request, client_address):
        if self._connections.add(request, client_address[0]):
            return True
        request.setblocking(False)
        try:
            request.send(_BUSY)
        except OSError:
            pass
        return False

    def shutdown_request(self, request):
        """Called once for every connection, also for those that were refused."""
        self._connections.remove(request)
        super().shutdown_request(request)

    def handle_error(self, request, client_address):
        if not isinstance(sys.exc_info()[1], (ConnectionError, TimeoutError)):
            super().handle_error(request, client_address)
