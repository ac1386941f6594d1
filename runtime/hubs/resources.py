"""Folders of files: plain visible files in them, and nothing else, are shown, given and removed."""

import errno
import os
import re
import tempfile
import time
import unicodedata

from django.conf import settings

# Bytes that are no UTF-8 stand in names as surrogates. What turns the direction of writing around
# would make a program look like a picture.
_UNFIT_CHARACTERS = re.compile(
    r"[\x00-\x1f\x7f-\x9f\u202a-\u202e\u2066-\u2069\ud800-\udfff/]")

_CAUSES = {
    errno.ENOSPC: "il n'y a plus assez de place sur le disque",
    errno.EDQUOT: "il n'y a plus assez de place sur le disque",
    errno.ENAMETOOLONG: "son nom est trop long",
    errno.EACCES: "le répertoire ne peut pas être modifié",
    errno.EROFS: "le répertoire ne peut pas être modifié",
    errno.ENOENT: "le répertoire ou le fichier n'existe plus",
}


def is_fit(name):
    """Whether a file of that name may be shown: it is visible and stays in the folder."""
    return bool(name) and name[0] != "." and not _UNFIT_CHARACTERS.search(name)


def clean_name(name):
    """The name under which a sent file is kept; empty if nothing fit is left of it."""
    return _UNFIT_CHARACTERS.sub("", unicodedata.normalize("NFC", name)).strip().lstrip(". ")


def cause(error):
    """What an OSError means, in French: Python knows it only in the language of the system."""
    return _CAUSES.get(error.errno, f"erreur {error.errno} du système")


def _sorting_key(name):
    plain = unicodedata.normalize("NFKD", name).encode("ascii", "ignore").lower()
    return plain, name


class Folder:
    """The files of one folder, which may be missing."""

    def __init__(self, path, rights):
        self._path = path
        self._rights = rights
        # When the folder last changed, and the names of then: large folders take long to read.
        self._kept_names = (None, [])

    def names(self):
        """The names of the files, in alphabetical order whatever the accents."""
        try:
            changed = os.stat(self._path).st_mtime_ns
            kept_changed, kept = self._kept_names
            if kept_changed == changed:
                return kept
            with os.scandir(self._path) as entries:
                found = [entry.name for entry in entries
                         if is_fit(entry.name) and entry.is_file(follow_symlinks=False)]
        except FileNotFoundError:
            return []
        found.sort(key=_sorting_key)
        # A folder that has just changed may change again within the same tick of its clock.
        if time.time_ns() - changed > 3_000_000_000:
            self._kept_names = (changed, found)
        return found

    def status(self, name):
        """What os.lstat tells of the file; None if it has gone, or could not be there."""
        try:
            return os.lstat(self._path / name) if is_fit(name) else None
        except OSError:
            return None

    def open(self, name):
        """The file, open for reading. Raises OSError if there is none of that name to be given."""
        self._check(name)
        # A link could lead out of the folder.
        return open(self._path / name, "rb",
                    opener=lambda path, flags: os.open(path, flags | os.O_NOFOLLOW))

    def keep(self, name, chunks):
        """Write a new file whole or not at all. Raises FileExistsError if the name is taken."""
        descriptor, part = tempfile.mkstemp(prefix=".", dir=self._path)
        try:
            with os.fdopen(descriptor, "wb") as file:
                for chunk in chunks:
                    file.write(chunk)
                os.fchmod(descriptor, self._rights)
            os.link(part, self._path / name)
        finally:
            os.unlink(part)

    def remove(self, name):
        """Remove the file for good. Raises OSError if there is none of that name."""
        self._check(name)
        os.unlink(self._path / name)

    def _check(self, name):
        path = self._path / name
        if not is_fit(name) or path.is_symlink() or not path.is_file():
            raise FileNotFoundError(errno.ENOENT, name)


OFFERED = Folder(settings.RESOURCES_DIR, 0o644)
