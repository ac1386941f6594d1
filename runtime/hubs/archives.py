"""Many files as one zip, made while it is sent: it is never on the disk, nor whole in memory."""

import os
import re
from collections.abc import Iterable, Iterator
from pathlib import Path
from urllib.parse import quote

from django.http import StreamingHttpResponse

from .resources import numbered

try:
    from zipstream import ZipStream
except ImportError:  # there are no archives then, and no links to them
    ZipStream = None

# What names cannot hold on other systems, or would lead out of a folder there
_UNFIT_ELSEWHERE = re.compile(r'[\\:*?"<>|]')


def are_possible() -> bool:
    """Whether the package that makes archives is installed."""
    return ZipStream is not None


def _distinct(name: str, taken: set[str]) -> str:
    """The name, fit for all systems and unlike those taken, whatever the case."""
    for candidate in numbered(_UNFIT_ELSEWHERE.sub("_", name)):
        if candidate.casefold() not in taken:
            taken.add(candidate.casefold())
            return candidate


def _exactly(size: int, pieces: Iterable[bytes]) -> Iterator[bytes]:
    """The pieces, which have SIZE bytes in all; breaks the answer off when it would have others,
    for a file has changed."""
    sent = 0
    try:
        for piece in pieces:
            sent += len(piece)
            if sent > size:
                raise ConnectionAbortedError("a file has grown while it was sent")
            yield piece
    except (OSError, RuntimeError) as error:
        raise ConnectionAbortedError("a file has changed while it was sent") from error


def answer(name: str, files: Iterable[tuple[Path, str]]) -> StreamingHttpResponse:
    """The answer that sends the files as an archive of that name.

    FILES yields the path of each on the disk and its name in the archive. One that cannot be read
    is left out; one that changes later breaks the answer off.
    """
    archive, taken = ZipStream(sized=True), set()
    for path, name_inside in files:
        if not os.access(path, os.R_OK):
            continue
        try:
            archive.add_path(path, _distinct(name_inside, taken), recurse=False)
        except (OSError, ValueError):
            continue  # it has just gone
    size = len(archive)
    return StreamingHttpResponse(_exactly(size, archive), content_type="application/zip", headers={
        "Content-Length": str(size),
        "Content-Disposition": f"attachment; filename*=utf-8''{quote(name)}",
    })
