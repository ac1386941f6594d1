"""The folder of offered files: plain visible files in it, and nothing else, are offered."""

import os
import re
import tempfile
import time
import unicodedata

from django.conf import settings

# Bytes that are no UTF-8 stand in names as surrogates.
_UNFIT_CHARACTERS = re.compile(r"[\x00-\x1f\x7f-\x9f\ud800-\udfff/]")

# When the folder last changed, and the sorted names of then: large folders take long to read.
_kept_names = (None, [])


def is_fit(name):
    """Whether a file of that name may be offered: it is visible and stays in the folder."""
    return bool(name) and name[0] != "." and not _UNFIT_CHARACTERS.search(name)


def _sorting_key(name):
    plain = unicodedata.normalize("NFKD", name).encode("ascii", "ignore").lower()
    return plain, name


def names():
    """The names of the offered files, in alphabetical order whatever the accents."""
    global _kept_names
    try:
        changed = os.stat(settings.RESOURCES_DIR).st_mtime_ns
        if _kept_names[0] == changed:
            return _kept_names[1]
        with os.scandir(settings.RESOURCES_DIR) as entries:
            found = [entry.name for entry in entries
                     if is_fit(entry.name) and entry.is_file(follow_symlinks=False)]
    except FileNotFoundError:
        return []
    found.sort(key=_sorting_key)
    # A folder that has just changed may change again within the same tick of its clock.
    if time.time_ns() - changed > 3_000_000_000:
        _kept_names = (changed, found)
    return found


def size(name):
    """The file's size in bytes; None if it has gone."""
    try:
        return os.lstat(settings.RESOURCES_DIR / name).st_size
    except OSError:
        return None


def open_offered(name):
    """The file, open for reading. Raises OSError if no such file is offered."""
    path = settings.RESOURCES_DIR / name
    if not is_fit(name) or not path.is_file():
        raise FileNotFoundError(name)
    # A link could lead out of the folder.
    return open(path, "rb", opener=lambda path, flags: os.open(path, flags | os.O_NOFOLLOW))


def clean_name(name):
    """The name under which a sent file is kept; empty if nothing fit is left of it."""
    return _UNFIT_CHARACTERS.sub("", unicodedata.normalize("NFC", name)).strip().lstrip(". ")


def keep(name, chunks):
    """Write a new file whole or not at all. Raises FileExistsError if the name is taken."""
    descriptor, part = tempfile.mkstemp(prefix=".", dir=settings.RESOURCES_DIR)
    try:
        with os.fdopen(descriptor, "wb") as file:
            for chunk in chunks:
                file.write(chunk)
            os.fchmod(descriptor, 0o644)
        os.link(part, settings.RESOURCES_DIR / name)
    finally:
        os.unlink(part)
