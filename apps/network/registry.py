"""The registry, networks.data in the working directory, which is the current one.

It has one network a line: name, bar, directory, bar. The name stands there in the bytes that a
button of the home screen shows: ISO-8859-1, "&" doubled. Lines of any other form are kept as they
are. The programs that change the registry, those in C++ too, take turns by one lock.
"""

import errno
import fcntl
import os
import shutil
import stat
import sys
from collections.abc import Iterable
from contextlib import contextmanager
from pathlib import Path
from typing import NamedTuple

_PREFIX = Path(__file__).resolve().parent.parent.parent
# Beside the installed programs, or in the source tree.
TEMPLATE = next(path for path in (_PREFIX / "share/quorvale", _PREFIX / "runtime")
                if path.is_dir())
sys.path.append(str(TEMPLATE / "hubs"))
import names  # noqa: E402
import processes  # noqa: E402

_REGISTRY = Path("networks.data")
_LOCK = ".networks.lock"

# What a network has of the template, besides the files that it offers
PAGES = ("templates", "static")
PROGRAMS = ("settings.py", "urls.py", "hubs")
# In the working directory and in each network: the checksums of the template's files as they came
RECORD = ".quorvale-files"

_CAUSES = {
    errno.ENOSPC: "il n'y a plus assez de place sur le disque",
    errno.EDQUOT: "il n'y a plus assez de place sur le disque",
    errno.EFBIG: "ce disque ne prend pas un fichier aussi gros",
    errno.ENOENT: "le fichier ou son répertoire n'existe pas",
    errno.EISDIR: "c'est un répertoire",
    errno.ENOTDIR: "le fichier ou son répertoire n'existe pas",
    errno.ENAMETOOLONG: "le nom est trop long",
    errno.EACCES: "vous n'en avez pas le droit",
    errno.EPERM: "vous n'en avez pas le droit",
    errno.EINVAL: "ce disque ne prend pas un fichier de ce nom",
    errno.EROFS: "rien ne peut être écrit sur ce disque",
}


class Network(NamedTuple):
    """A network of the registry."""

    number: int  # the index of its line
    name: str  # its display name
    recorded: bytes  # the registry's bytes for it
    directory: Path  # as it is recorded


class NotAFile(OSError):
    """Something else stands where the registry should be. Says so in French."""


def cause(error: OSError) -> str:
    """What an OSError means, in French."""
    if isinstance(error, NotAFile):
        return str(error)
    return _CAUSES.get(error.errno, f"erreur {error.errno} du système")


@contextmanager
def locked():
    """Keep other programs from changing the registry meanwhile."""
    descriptor = os.open(_LOCK, os.O_RDWR | os.O_CREAT | os.O_NOFOLLOW, 0o600)
    try:
        fcntl.flock(descriptor, fcntl.LOCK_EX)
        yield
    finally:
        os.close(descriptor)


def read() -> list[bytes]:
    """The lines of the registry, without their line feeds; none if there is no file."""
    try:
        with open(_REGISTRY, "rb", opener=names.open_without_waiting) as file:
            if not stat.S_ISREG(os.fstat(file.fileno()).st_mode):
                raise NotAFile(f"{_REGISTRY} n'est pas un fichier")
            content = file.read()
    except FileNotFoundError:
        content = b""
    return content.removesuffix(b"\n").split(b"\n") if content else []


def write(lines: Iterable[bytes]) -> None:
    """Replace the registry's lines, whole or not at all. The caller holds the lock."""
    replace_file(Path(os.path.realpath(_REGISTRY)), b"".join(line + b"\n" for line in lines))


def line(recorded: bytes, directory: Path) -> bytes:
    """The line of a network."""
    return recorded + b"|" + os.fsencode(directory) + b"|"


def networks(lines: Iterable[bytes]) -> list[Network]:
    """The networks of the registry's lines."""
    found = []
    for number, fields in enumerate(text.split(b"|") for text in lines):
        if len(fields) > 2 and b"\0" not in fields[1]:
            directory = Path(os.fsdecode(fields[1]))
            name = (names.from_file(directory / "nom.txt")
                    or names.clean(fields[0].decode("latin-1").replace("&&", "&"))
                    or names.display_name(directory))
            found.append(Network(number, name, fields[0], directory))
    return found


def recorded_name(name: str, directory: Path) -> bytes:
    """The bytes that stand for a display name in the registry; the directory's name if nothing is
    left of it."""
    return names.registry_name(name) or os.fsencode(directory.name)


def read_record(directory: Path) -> dict[str, str] | None:
    """The checksum of each of the template's files as it came, by the file's name; None if there is
    no record."""
    try:
        record = (directory / RECORD).read_text("utf-8", "surrogateescape")
    except OSError:
        return None
    lines = (line.split(None, 1) for line in record.splitlines())
    # An empty record is what a power cut left.
    return {line[1]: line[0] for line in lines if len(line) == 2} or None


def package_of(directory: Path) -> Path | None:
    """The package of a project, which has the network's pages and files. It was named after the
    directory, which may have been renamed since. The programs in C++ have the same rule, in
    registered_networks.cpp."""
    project = Path(os.path.realpath(directory))
    try:
        names = [project.name, *sorted(name for name in os.listdir(project) if name[0] != ".")]
    except OSError:
        return None
    return next((project / name for name in names if os.path.isdir(project / name / "hubs")), None)


def is_network(directory: Path) -> bool:
    """Whether the directory holds a network of this user."""
    package = package_of(directory)
    # Path's own methods raise for what may not be looked at.
    return (package is not None and os.path.isfile(package / "settings.py")
            and os.path.isfile(package.parent / "manage.py")
            and package.parent.stat().st_uid == os.geteuid())


def is_served(directory: Path) -> bool:
    """Whether this user serves the network of that directory."""
    project = Path(os.path.realpath(directory))
    return any(served == project for _process, served in processes.networks())


def sync(directory: Path) -> None:
    """Have the names in the directory on the disk."""
    descriptor = os.open(directory, os.O_RDONLY)
    try:
        os.fsync(descriptor)
    finally:
        os.close(descriptor)


def replace_file(path: Path, content: bytes) -> None:
    """Give a file new contents, whole or not at all. Two calls for one file must take turns."""
    part = path.with_name(f".{path.name}.partiel")
    try:
        with open(part, "wb") as file:
            file.write(content)
            file.flush()
            os.fsync(file.fileno())
        if path.exists():
            shutil.copymode(path, part)
        os.replace(part, path)
    except OSError:
        part.unlink(missing_ok=True)
        raise
    sync(path.parent)
