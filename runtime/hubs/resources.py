"""Folders of files: plain visible files and folders in them, and nothing else, are shown."""

import errno
import os
import secrets
import stat
import time
import unicodedata
from collections.abc import Iterator
from contextlib import contextmanager, suppress
from itertools import count
from pathlib import Path
from typing import BinaryIO, NamedTuple

from django.conf import settings
from django.core.files.uploadedfile import UploadedFile

from . import limits
from .file_names import is_fit

# For how many seconds a folder's listing is cached: a file that is written anew in its place does
# not change the folder
_CACHE_SECONDS = 10

# What a file system without hard links answers
_NO_LINKS = (errno.EPERM, errno.EOPNOTSUPP, errno.ENOSYS, errno.EMLINK)

_CAUSES = {
    errno.ENOSPC: "il n'y a plus assez de place sur le disque",
    errno.EDQUOT: "il n'y a plus assez de place sur le disque",
    errno.ENAMETOOLONG: "son nom est trop long",
    errno.EACCES: "le répertoire ne peut pas être modifié",
    errno.EROFS: "le répertoire ne peut pas être modifié",
    errno.ENOENT: "le répertoire ou le fichier n'existe plus",
}

# Characters that are typed as two letters, or as another sign
_LIGATURES = str.maketrans({"œ": "oe", "Œ": "oe", "æ": "ae", "Æ": "ae", "’": "'"})

_FOLDER = os.O_RDONLY | os.O_DIRECTORY | os.O_CLOEXEC


def numbered(name: str) -> Iterator[str]:
    """Yields the name, then the same with a number before its extension, without end."""
    yield name
    stem, extension = os.path.splitext(name)
    for number in count(2):
        yield f"{stem} ({number}){extension}"


def cause(error: OSError) -> str:
    """What an OSError means, in French: Python knows it only in the language of the system."""
    return _CAUSES.get(error.errno, f"erreur {error.errno} du système")


def plain(name: str) -> str:
    """The name as it is searched and ordered: without accents, in lower case."""
    if name.isascii():
        return name.lower()
    apart = unicodedata.normalize("NFKD", name.translate(_LIGATURES))
    return "".join(char for char in apart if not unicodedata.combining(char)).casefold()


def is_being_copied(status: os.stat_result) -> bool:
    """Whether that file changed a moment ago."""
    return -1 < time.time() - status.st_mtime < limits.COPYING_SECONDS


class Entry(NamedTuple):
    """A file or a folder, as it was when its folder was read."""

    path: str  # from the outermost folder, names joined by "/"
    name: str
    key: str  # its plain name
    is_folder: bool
    changed: float  # st_mtime

    @property
    def folder(self):
        """The path of the folder that it is in; empty for the outermost."""
        return self.path.rpartition("/")[0]


class Listing(NamedTuple):
    """What is in a folder: its folders first, each kind in alphabetical order."""

    entries: list[Entry]
    left_out: int  # how many links, special files and unfit names there are


def _read(descriptor: int, path: str) -> Listing:
    """What is in the open folder at the path."""
    found, left_out = [], 0
    prefix = f"{path}/" if path else ""
    with os.scandir(descriptor) as entries:
        for entry in entries:
            is_folder = entry.is_dir(follow_symlinks=False)
            if is_fit(entry.name) and (is_folder or entry.is_file(follow_symlinks=False)):
                try:
                    changed = entry.stat(follow_symlinks=False).st_mtime
                except FileNotFoundError:
                    continue
                found.append(Entry(prefix + entry.name, entry.name, plain(entry.name), is_folder,
                                   changed))
            elif not entry.name.startswith("."):
                left_out += 1
    found.sort(key=lambda entry: (not entry.is_folder, entry.key, entry.name))
    return Listing(found, left_out)


def write_through(sent: UploadedFile) -> None:
    """Have all bytes of an uploaded file on the disk. Raises OSError."""
    sent.flush()
    os.fsync(sent.fileno())


def _linked(sent: UploadedFile, folder: int, name: str) -> int | None:
    """Give a nameless uploaded file a name in the open folder. Returns a descriptor of it, or None
    if it has to be copied."""
    sent.flush()
    try:
        os.link(f"/proc/self/fd/{sent.fileno()}", name, dst_dir_fd=folder)
    except OSError:  # another file system, one without nameless files, or no /proc
        return None
    return os.dup(sent.fileno())


def _copied(sent: UploadedFile, folder: int, name: str) -> int:
    """Copy an uploaded file into the open folder. Returns a descriptor of the copy."""
    descriptor = os.open(name, os.O_WRONLY | os.O_CREAT | os.O_EXCL | os.O_CLOEXEC, 0o600,
                         dir_fd=folder)
    with os.fdopen(os.dup(descriptor), "wb") as file:
        for chunk in sent.chunks():
            file.write(chunk)
    return descriptor


class Folder:
    """A folder, which may be missing, and all that is in it.

    Paths begin in it, and consist of names with "/" between them. No link is followed on the way:
    one could lead out of the folder.
    """

    def __init__(self, path: Path, rights: int):
        self._path = path
        self._rights = rights
        # Of each folder, when it last changed, what was in it, and until when that is cached: large
        # ones take long to read.
        self._cache: dict[str, tuple[int, Listing, float]] = {}

    @contextmanager
    def _opened(self, path):
        """A descriptor of the folder at the path. Raises OSError if there is none to be shown."""
        descriptor = os.open(self._path, _FOLDER)
        try:
            for name in path.split("/") if path else ():
                if not is_fit(name):
                    raise FileNotFoundError(errno.ENOENT, name)
                outer = descriptor
                descriptor = os.open(name, _FOLDER | os.O_NOFOLLOW, dir_fd=outer)
                os.close(outer)
            yield descriptor
        finally:
            os.close(descriptor)

    @contextmanager
    def _holding(self, path):
        """A descriptor of the folder that holds what is at the path, and its name there."""
        folder, _, name = path.rpartition("/")
        if not is_fit(name):
            raise FileNotFoundError(errno.ENOENT, name)
        with self._opened(folder) as descriptor:
            yield descriptor, name

    def listing(self, path: str = "") -> Listing:
        """What is in the folder at the path. Raises OSError if there is none to be shown."""
        try:
            with self._opened(path) as descriptor:
                changed = os.fstat(descriptor).st_mtime_ns
                cached = self._cache.get(path)
                if cached and cached[0] == changed and time.monotonic() < cached[2]:
                    return cached[1]
                found = _read(descriptor, path)
        except FileNotFoundError:
            if path:
                raise
            return Listing([], 0)
        # A folder that has just changed may change again within the same tick of its clock.
        if time.time_ns() - changed > 3_000_000_000:
            self._cache[path] = (changed, found, time.monotonic() + _CACHE_SECONDS)
        return found

    def walk(self, path: str = "") -> Iterator[Entry]:
        """Yields all that is in the folder at the path and in those below it."""
        pending = [path]
        while pending:
            try:
                entries = self.listing(pending.pop()).entries
            except OSError:
                continue  # it has gone, or may not be read
            yield from entries
            pending += [entry.path for entry in entries if entry.is_folder]

    def names(self) -> list[str]:
        """The names of the files right in the folder, in alphabetical order."""
        return [entry.name for entry in self.listing().entries if not entry.is_folder]

    def status(self, path: str) -> os.stat_result | None:
        """The status of the file or link itself; None if it has gone, or could not be there."""
        try:
            with self._holding(path) as (folder, name):
                return os.stat(name, dir_fd=folder, follow_symlinks=False)
        except OSError:
            return None

    def open(self, path: str) -> BinaryIO:
        """The file, open for reading. Raises OSError if there is none of that name to be given."""
        with self._holding(path) as (folder, name):
            # Without O_NONBLOCK, a FIFO would hold whoever opens it.
            descriptor = os.open(name, os.O_RDONLY | os.O_NOFOLLOW | os.O_NONBLOCK | os.O_CLOEXEC,
                                 dir_fd=folder)
        if not stat.S_ISREG(os.fstat(descriptor).st_mode):
            os.close(descriptor)
            raise FileNotFoundError(errno.ENOENT, name)
        return os.fdopen(descriptor, "rb")

    @contextmanager
    def _written(self, folder, sent):
        """The name of a hidden file in the open folder, which holds what was sent and is whole on
        the disk. What is left of it afterwards is removed."""
        part = f".{secrets.token_hex(8)}"
        try:
            descriptor = _linked(sent, folder, part) or _copied(sent, folder, part)
            try:
                with suppress(PermissionError):  # some file systems know no rights
                    os.fchmod(descriptor, self._rights)
                whole_since = time.time() - limits.COPYING_SECONDS
                os.utime(descriptor, (whole_since, whole_since))
                os.fsync(descriptor)
            finally:
                os.close(descriptor)
            yield part
        finally:
            with suppress(FileNotFoundError):
                os.unlink(part, dir_fd=folder)
        os.fsync(folder)

    def keep(self, name: str, sent: UploadedFile) -> None:
        """Keep an uploaded file whole or not at all, also when the power fails. Raises
        FileExistsError if the name is taken."""
        with self._opened("") as folder, self._written(folder, sent) as part:
            try:
                os.link(part, name, src_dir_fd=folder, dst_dir_fd=folder)
            except OSError as error:
                if error.errno not in _NO_LINKS:
                    raise
                flags = os.O_WRONLY | os.O_CREAT | os.O_EXCL | os.O_CLOEXEC
                os.close(os.open(name, flags, self._rights, dir_fd=folder))
                os.rename(part, name, src_dir_fd=folder, dst_dir_fd=folder)

    def replace(self, path: str, sent: UploadedFile) -> None:
        """Write a file that takes the place of the one at the path, whole or not at all."""
        with self._holding(path) as (folder, name), self._written(folder, sent) as part:
            self._check(folder, name)
            os.rename(part, name, src_dir_fd=folder, dst_dir_fd=folder)

    def remove(self, path: str) -> None:
        """Remove the file for good. Raises OSError if there is none of that name."""
        with self._holding(path) as (folder, name):
            self._check(folder, name)
            os.unlink(name, dir_fd=folder)

    @staticmethod
    def _check(folder, name):
        if not stat.S_ISREG(os.stat(name, dir_fd=folder, follow_symlinks=False).st_mode):
            raise FileNotFoundError(errno.ENOENT, name)

    def has_file(self, path: str) -> bool:
        """Whether there is a file of that name to be given."""
        status = self.status(path)
        return bool(status) and stat.S_ISREG(status.st_mode)

    def location(self, path: str) -> Path:
        """Where the file at the path is on the disk."""
        return self._path / path


OFFERED = Folder(settings.RESOURCES_DIR, 0o644)
