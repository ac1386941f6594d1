"""Files as answers: whole, or the part that a browser asks for to resume a download or to seek."""

import os
import re
import socket
import time
from typing import BinaryIO

from django.http import FileResponse, HttpRequest, HttpResponse
from django.utils.cache import get_conditional_response
from django.utils.http import http_date

_ONE_RANGE = re.compile(r"bytes=([0-9]{0,18})-([0-9]{0,18})", re.IGNORECASE)


class Part:
    """Some bytes of an open file, to be sent once. They may lie beyond 4 GiB.

    Has no fileno(): a server that used it could send more than was announced.
    """

    def __init__(self, file: BinaryIO, start: int, length: int):
        self._file, self._start, self._left = file, start, length

    def read(self, size: int) -> bytes:
        """Returns the next bytes, at most SIZE. Raises OSError if the file has become shorter."""
        piece = os.pread(self._file.fileno(), min(size, self._left), self._start)
        if not piece and self._left:
            raise ConnectionAbortedError("a file has become shorter while it was sent")
        self._start += len(piece)
        self._left -= len(piece)
        return piece

    def send(self, connection: socket.socket) -> int:
        """Send all bytes through a connected socket, by the kernel. Returns how many were sent:
        fewer if the file has become shorter. Raises OSError."""
        if not self._left:
            return 0
        return connection.sendfile(self._file, self._start, self._left)

    def close(self):
        """Close the file."""
        self._file.close()


class _FileAnswer(FileResponse):
    block_size = 256 * 1024


def _etag(status):
    # A file that has just changed may change again within the same tick of the file system's clock.
    weak = "W/" if time.time() - status.st_mtime < 2 else ""
    return f'{weak}"{status.st_ino:x}-{status.st_mtime_ns:x}-{status.st_size:x}"'


def _range(request: HttpRequest, etag: str, modified: str, size: int) -> tuple[int, int] | None:
    """The first byte and the number of bytes of the one range that is asked for; None if there is
    none, or if it was asked for a file that has changed since. The number is 0 if no byte of the
    file is in the range."""
    asked = _ONE_RANGE.fullmatch(request.headers.get("Range", "").replace(" ", ""))
    if request.method != "GET" or not asked or asked[0].endswith("=-"):
        return None
    if request.headers.get("If-Range", etag) not in (etag, modified) or etag.startswith("W/"):
        return None
    if not asked[1]:  # the last bytes
        length = min(int(asked[2]), size)
        return size - length, length
    start, end = int(asked[1]), int(asked[2] or size)
    if end < start and asked[2]:
        return None  # which means nothing
    return start, max(0, min(end + 1, size) - start)


def send_file(request, file, name, content_type="application/octet-stream", inline=False):
    """The answer to a GET or HEAD request for a file: 200, 206 with one range of it, 304, 412
    or 416.

    FILE is a regular file, open for reading bytes; it is closed with the answer. NAME is the one
    that a browser saves it under. INLINE lets the browser show it; otherwise it is only saved.
    """
    status = os.fstat(file.fileno())
    etag, modified = _etag(status), http_date(status.st_mtime)
    headers = {"Accept-Ranges": "bytes", "ETag": etag, "Last-Modified": modified,
               "Cache-Control": "no-cache"}  # browsers ask each time whether it has changed
    unconditional = HttpResponse(headers=headers)
    answer = get_conditional_response(request, etag, int(status.st_mtime), unconditional)
    if answer is not unconditional:
        file.close()
        return answer
    part = _range(request, etag, modified, status.st_size)
    start, length = part or (0, status.st_size)
    if part and not length:
        file.close()
        headers["Content-Range"] = f"bytes */{status.st_size}"
        return HttpResponse(status=416, headers=headers)
    if part:
        headers["Content-Range"] = f"bytes {start}-{start + length - 1}/{status.st_size}"
    headers["Content-Length"] = str(length)
    return _FileAnswer(Part(file, start, length), as_attachment=not inline, filename=name,
                       content_type=content_type, status=206 if part else 200, headers=headers)
