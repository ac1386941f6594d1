"""Handing in: the files that visitors send without an account, where staff has opened it."""

import fcntl
import os
from collections.abc import Iterator
from contextlib import contextmanager
from datetime import datetime, timezone
from pathlib import Path

from django.core.files.uploadedfile import UploadedFile
from django.utils.timezone import localtime

from . import file_names, limits, resources
from .unfinished import HandIn

FOLDER = resources.Folder(limits.HANDED_IN_DIR, 0o600)

# There while visitors may hand in; every process of the server sees it.
_OPEN = limits.HANDED_IN_DIR / ".ouverte"

# The address that each file came from: lines "ADDRESS NAME"
_ADDRESSES = limits.HANDED_IN_DIR / ".adresses"

# Stands between who sent a file and the file's name.
_SEPARATOR = " — "
SENDER_LENGTH = 40

# The archive of all files, whose name no single file gets
ARCHIVE = "tout.zip"


class Refused(Exception):
    """Says in French why a file is not taken."""


def is_open():
    """Whether visitors may hand files in."""
    return _OPEN.exists()


def set_open(wanted: bool) -> None:
    """Open handing in to visitors, or close it. Raises OSError if that cannot be saved."""
    if wanted:
        limits.HANDED_IN_DIR.mkdir(mode=0o700, exist_ok=True)
        _OPEN.touch()
    else:
        _OPEN.unlink(missing_ok=True)


def parts(name: str) -> tuple[str, str]:
    """Who sent a file of that name, empty if that is not known, and the name that it had."""
    sender, _, file = name.rpartition(_SEPARATOR)
    return sender, file


@contextmanager
def _locked():
    descriptor = os.open(limits.HANDED_IN_DIR, os.O_RDONLY)
    try:
        fcntl.flock(descriptor, fcntl.LOCK_EX)
        yield
    finally:
        os.close(descriptor)


def _sizes() -> dict[str, int]:
    """The sizes of the files, by their names."""
    found = ((name, FOLDER.status(name)) for name in FOLDER.names())
    return {name: status.st_size for name, status in found if status}


def _addresses(sizes: dict[str, int]) -> dict[str, str]:
    """The addresses that the files came from, by their names, as far as they are known."""
    try:  # names may hold what splitlines() takes for the end of a line
        lines = _ADDRESSES.read_text("utf-8").split("\n")
    except (OSError, UnicodeDecodeError):
        return {}
    pairs = (line.partition(" ") for line in lines)
    return {name: address for address, _, name in pairs if name in sizes}


def kept_bytes(address: str) -> tuple[int, int]:
    """The size of all files, and of those that came from the address."""
    sizes = _sizes()
    came_from = _addresses(sizes)
    return sum(sizes.values()), sum(sizes[name] for name in came_from
                                    if came_from[name] == address)


def hand_in_of(request):
    """The hand-in that a visitor's request begins."""
    return HandIn(request.META["REMOTE_ADDR"], kept_bytes)


def _check_room(size, address, sizes, came_from):
    own = [sizes[name] for name in came_from if came_from[name] == address]
    if (len(sizes) >= limits.HANDED_IN_FILES
            or sum(sizes.values()) + size > limits.HANDED_IN_BYTES):
        raise Refused("il n'y a plus de place pour d'autres fichiers, prévenez le responsable")
    if (len(own) >= limits.HANDED_IN_FILES_PER_ADDRESS
            or sum(own) + size > limits.HANDED_IN_BYTES_PER_ADDRESS):
        raise Refused("votre adresse en a déjà remis autant qu'elle le peut, prévenez le"
                      " responsable")


def receive(file: UploadedFile, sender: str, address: str) -> str:
    """Keep a file that a visitor uploaded from an address, under a free name that begins with the
    sender's, if that was given.

    Returns the name that the list shows; the file is then whole on the disk. Raises Refused and
    OSError.
    """
    name = file_names.clean(file.name).replace(_SEPARATOR, " - ")
    if not name:
        raise Refused("son nom ne convient pas")
    if file.size > limits.HANDED_IN_FILE_BYTES:
        raise Refused("il est trop gros")
    sender = file_names.clean(sender).replace(_SEPARATOR, " - ")[:SENDER_LENGTH].strip()
    resources.write_through(file)  # before the lock, for it is slow
    with _locked():
        sizes = _sizes()
        came_from = _addresses(sizes)
        _check_room(file.size, address, sizes, came_from)
        for candidate in resources.numbered(f"{sender}{_SEPARATOR}{name}" if sender else name):
            if candidate != ARCHIVE and not FOLDER.status(candidate):
                FOLDER.keep(candidate, file)
                came_from[candidate] = address
                lines = (f"{address} {name}\n" for name, address in came_from.items())
                _ADDRESSES.write_text("".join(lines), "utf-8")
                return parts(candidate)[1]


def files() -> list[tuple[str, os.stat_result]]:
    """The name and the status of each file, the latest first."""
    found = [(name, status) for name in FOLDER.names() if (status := FOLDER.status(name))]
    return sorted(found, key=lambda file: file[1].st_ctime_ns, reverse=True)


def in_archive() -> Iterator[tuple[Path, str]]:
    """Yields where each file is on the disk, and a name for it that says when it came."""
    for name, status in files():
        sender, file = parts(name)
        came = datetime.fromtimestamp(status.st_mtime, timezone.utc)
        yield FOLDER.location(name), _SEPARATOR.join(
            [sender or "Sans nom", f"{localtime(came):%Y-%m-%d %Hh%M}", file])


def remove_until(moment: int) -> int:
    """Remove the files whose st_ctime_ns is not later. Returns how many. Raises OSError."""
    came = [name for name, status in files() if status.st_ctime_ns <= moment]
    for name in came:
        FOLDER.remove(name)
    return len(came)
