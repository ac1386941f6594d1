"""Copies of networks: one file with the accounts and the files of a network, made while it is
served or not, from which it can be restored in any working directory.

A copy is a ZIP archive, nothing in it compressed. It holds nom.txt, secret_key, db.sqlite3, the
files below the folders ressources and depots, and those of the template's files that the operator
changed or added. Neither hidden files nor links are in it.

Whoever restores a copy may have it from anybody, so no program is taken from it: the network gets
the template's, and the operator's changes to those (settings.py, urls.py, hubs) stay in the copy.
"""

import errno
import fcntl
import hashlib
import os
import re
import resource
import shutil
import sqlite3
import stat
import subprocess
import time
import zipfile
from collections.abc import Iterator
from contextlib import closing, contextmanager
from pathlib import Path

import registry  # first: it finds the template's units
from file_names import is_fit

_FORMAT = b"Quorvale 1"
_DATABASE = "db.sqlite3"
_FILES = ("nom.txt", "secret_key", _DATABASE)
_VISITORS_FOLDERS = ("ressources", "depots")
_MAX_FILES = 100_000
# What an archive can hold
_FIRST_DATE, _LAST_DATE = (1980, 1, 1, 0, 0, 0), (2107, 12, 31, 23, 59, 58)
_MAX_DEPTH = 32
_MEMORY_BYTES = 512 * 2**20
# What stays free on the disk
_SPARE_BYTES = 100 * 2**20
_KEY = re.compile(rb"[\x21-\x7e]{20,200}")
_UNUSABLE = "ce n'est pas une copie de réseau, ou elle est abîmée"


class Refused(Exception):
    """Says in French why nothing was done."""


@contextmanager
def _claimed(path, flags, what):
    """The descriptor of a file that no other program has claimed."""
    descriptor = os.open(path, flags | os.O_NOFOLLOW, 0o600)
    try:
        fcntl.flock(descriptor, fcntl.LOCK_EX | fcntl.LOCK_NB)
        yield descriptor
    except BlockingIOError:
        raise Refused(f"une autre {what} est en cours") from None
    finally:
        os.close(descriptor)


def _accounts(path: Path) -> bytes:
    """A snapshot of the database, whoever writes to it meanwhile."""
    try:
        with closing(sqlite3.connect(f"{path.resolve().as_uri()}?mode=rw", uri=True)) as database, \
                closing(sqlite3.connect(":memory:")) as copy:
            database.backup(copy)
            return copy.serialize()
    except sqlite3.Error:
        raise Refused("sa base de données n'a pas pu être lue") from None


def _files(folder: Path) -> Iterator[Path]:
    """The plain files below a folder that are visible and not Python's cache."""
    for path, folders, files in os.walk(folder):
        folders[:] = [name for name in folders
                      if is_fit(name) and name != "__pycache__"]
        for name in filter(is_fit, files):
            if stat.S_ISREG(os.lstat(os.path.join(path, name)).st_mode):
                yield Path(path, name)


def _changed_files(project: Path, package: Path) -> Iterator[Path]:
    """The files of the network that neither came with it nor are the template's."""
    came = registry.read_record(project) or {}
    for part in (*registry.PAGES, *registry.PROGRAMS):
        paths = [package / part] if (package / part).is_file() else _files(package / part)
        for path in paths:
            name, content = path.relative_to(package), path.read_bytes()
            release = registry.TEMPLATE / name
            if (hashlib.sha256(content).hexdigest() != came.get(str(name))
                    and not (release.is_file() and release.read_bytes() == content)):
                yield path


def _add(archive: zipfile.ZipFile, name: str, source: Path) -> None:
    """Put a file into the archive; a link, or one that has gone meanwhile, is left out. Raises
    Refused for what would not be restored."""
    if not _is_allowed(zipfile.ZipInfo(name)):
        raise Refused(f"« {name} » est dans trop de dossiers, les uns dans les autres")
    if len(archive.infolist()) == _MAX_FILES:
        raise Refused("il a trop de fichiers pour une copie")
    try:
        descriptor = os.open(source, os.O_RDONLY | os.O_NOFOLLOW | os.O_NONBLOCK)
    except OSError as error:
        if error.errno in (errno.ENOENT, errno.ELOOP):
            return
        raise
    with open(descriptor, "rb") as file:
        changed = time.localtime(os.fstat(descriptor).st_mtime)[:6]
        fit = max(_FIRST_DATE, min(changed, _LAST_DATE))
        with archive.open(zipfile.ZipInfo(name, fit), "w", force_zip64=True) as member:
            shutil.copyfileobj(file, member)


def _fill(archive: zipfile.ZipFile, network: registry.Network) -> None:
    project = Path(os.path.realpath(network.directory))
    package = registry.package_of(project)
    archive.comment = _FORMAT
    archive.writestr("nom.txt", f"{network.name}\n")
    archive.writestr(_DATABASE, _accounts(project / _DATABASE))
    _add(archive, "secret_key", project / "secret_key")
    for folder in _VISITORS_FOLDERS:
        for path in _files(package / folder):
            _add(archive, str(path.relative_to(package)), path)
    for path in _changed_files(project, package):
        _add(archive, str(path.relative_to(package)), path)


def _publish(source: Path, target: Path) -> None:
    """Give a file its name. Replaces nothing."""
    subprocess.run(["mv", "--no-clobber", "--no-target-directory", "--", source, target],
                   check=False, stderr=subprocess.DEVNULL)
    if os.path.lexists(source):
        raise Refused(f"« {target} » existe déjà" if os.path.lexists(target) else
                      f"« {target} » n'a pas pu être écrit")
    registry.sync(target.parent)


def make(network: registry.Network, target: Path) -> None:
    """Copy a network into a new file, whole or not at all. Raises Refused and OSError."""
    if os.path.lexists(target):
        raise Refused(f"« {target} » existe déjà")
    part = target.with_name(f".{target.name}.partiel")
    with _claimed(part, os.O_RDWR | os.O_CREAT, "copie dans ce fichier") as descriptor:
        try:
            with open(descriptor, "w+b", closefd=False) as file:
                file.truncate()
                with zipfile.ZipFile(file, "w") as archive:
                    _fill(archive, network)
                file.flush()
                os.fsync(descriptor)
            _publish(part, target)
        finally:
            part.unlink(missing_ok=True)


def _is_allowed(info: zipfile.ZipInfo) -> bool:
    """Whether a copy may hold that file."""
    first, *others = info.filename.split("/")
    known = (first in _FILES + registry.PROGRAMS if not others else
             first in _VISITORS_FOLDERS + registry.PAGES + registry.PROGRAMS)
    kind = stat.S_IFMT(info.external_attr >> 16)
    return (known and len(others) < _MAX_DEPTH and kind in (0, stat.S_IFREG)
            and all(is_fit(name) and len(os.fsencode(name)) < 256 for name in others)
            and info.compress_type == zipfile.ZIP_STORED and info.file_size == info.compress_size
            and not info.flag_bits & 1)  # not encrypted


def _checked(archive: zipfile.ZipFile, size: int) -> list[zipfile.ZipInfo]:
    """The files of a copy of SIZE bytes. Raises Refused for a copy that make() would not make, and
    OSError if the disk has no room for it."""
    files = archive.infolist()
    held = {info.filename for info in files}
    # Nothing is compressed: there cannot be more in it than its own size.
    if (archive.comment != _FORMAT or not held.issuperset(("nom.txt", _DATABASE))
            or len(held) != len(files) or len(files) > _MAX_FILES
            or not all(map(_is_allowed, files)) or sum(info.file_size for info in files) > size):
        raise Refused(_UNUSABLE)
    if size + _SPARE_BYTES > shutil.disk_usage(".").free:
        raise OSError(errno.ENOSPC, os.strerror(errno.ENOSPC))
    return files


def _check_accounts(path: Path) -> None:
    """Raises Refused for a database with anything but tables and indices, which is all that Django
    makes: a trigger or a view would act on its own."""
    with closing(sqlite3.connect(f"{path.resolve().as_uri()}?mode=ro", uri=True)) as database:
        database.execute("PRAGMA trusted_schema = OFF")
        kinds = [row[0] for row in database.execute(
            "SELECT type || CASE WHEN sql LIKE 'create virtual%' THEN ' virtual' ELSE '' END"
            " FROM sqlite_master")]
        found = database.execute("SELECT 1 FROM sqlite_master WHERE name = 'auth_user'").fetchone()
        if (not found or not {"table", "index"}.issuperset(kinds)
                or database.execute("PRAGMA quick_check").fetchall() != [("ok",)]):
            raise Refused(_UNUSABLE)


def _extract_file(archive: zipfile.ZipFile, info: zipfile.ZipInfo, target: Path) -> None:
    target.parent.mkdir(parents=True, exist_ok=True)
    for_all = info.filename.partition("/")[0] in (*registry.PAGES, "ressources", "nom.txt")
    with archive.open(info) as member, open(target, "xb") as file:
        shutil.copyfileobj(member, file)
        os.fchmod(file.fileno(), 0o644 if for_all else 0o600)
    changed = time.mktime((*info.date_time, 0, 0, -1))
    os.utime(target, (changed, changed))


@contextmanager
def _memory_bounded():
    """Bounds the memory of this process: an archive's table of contents may be as large as the
    disk."""
    limits = resource.getrlimit(resource.RLIMIT_AS)
    resource.setrlimit(resource.RLIMIT_AS, (_MEMORY_BYTES, limits[1]))
    try:
        yield
    finally:
        resource.setrlimit(resource.RLIMIT_AS, limits)


def _extract(source: Path, contents: Path) -> list[str]:
    """Lay the files of a copy out below CONTENTS: in "projet" what goes into the project's
    directory, in "paquet" what goes into its package. Returns the names of those left out."""
    left_out = []
    (contents / "paquet/ressources").mkdir(parents=True)
    opener = registry.names.open_without_waiting
    with _memory_bounded(), open(source, "rb", opener=opener) as file, \
            zipfile.ZipFile(file) as archive:
        for info in _checked(archive, os.fstat(file.fileno()).st_size):
            if info.filename == "nom.txt":
                _extract_file(archive, info, contents / info.filename)
            elif info.filename in _FILES:
                _extract_file(archive, info, contents / "projet" / info.filename)
            elif info.filename.split("/")[0] not in registry.PROGRAMS:
                _extract_file(archive, info, contents / "paquet" / info.filename)
            else:
                left_out.append(info.filename)
    key = contents / "projet/secret_key"
    if key.exists() and not _KEY.fullmatch(key.read_bytes()):
        raise Refused(_UNUSABLE)
    _check_accounts(contents / "projet" / _DATABASE)
    return left_out


def _create(contents: Path, new: Path, descriptor: int) -> str:
    """Have the network created with these contents by NEW, the program that creates networks. It
    inherits the descriptor, and with it the lock. Returns the display name."""
    name = registry.names.display_name(contents)
    done = subprocess.run([new, "--contents", contents, "--", name], stdin=subprocess.DEVNULL,
                          capture_output=True, pass_fds=[descriptor], check=False)
    if done.returncode != 0:
        said = done.stderr.decode("utf-8", "replace").strip().splitlines()
        reason = said[-1].removeprefix(f"Réseau « {name} » : ").rstrip(".") if said else (
            "il n'a pas pu être créé")
        raise Refused(f"c'est une copie du réseau « {name} », mais {reason}")
    return name


def restore(source: Path, new: Path) -> tuple[str, list[str]]:
    """Create the network of a copy by NEW, the program that creates networks: it is whole before it
    is listed. Returns its display name, and the files of the copy that were left out. Raises
    Refused and OSError."""
    contents = Path(".restauration")
    contents.mkdir(mode=0o700, exist_ok=True)
    with _claimed(contents, os.O_RDONLY, "restauration") as descriptor:
        try:
            for left in contents.iterdir():  # by a restoration that was killed
                shutil.rmtree(left) if left.is_dir() else left.unlink()
            left_out = _extract(source, contents)
            return _create(contents, new, descriptor), left_out
        except (zipfile.BadZipFile, sqlite3.Error, EOFError, FileExistsError, NotADirectoryError,
                IsADirectoryError, MemoryError, NotImplementedError, OverflowError, ValueError):
            raise Refused(_UNUSABLE) from None
        finally:
            shutil.rmtree(contents)
