"""The networks that an operator serves on this machine, found in the process list.

The server of a network is a process of the operator's own, "python3 manage.py runserver ...",
however python and manage.py were named, whose working directory is the network's: it holds
manage.py, and beside it the folder that has hubs; or it has been removed. Under plain Django a
network has two such processes. Needs no Django.

As a program, "processes.py ADDRESS PORT" says in French who listens there; nothing if nobody can
be seen.
"""

import os
import pwd
import signal
import socket
import struct
import sys
import time
from collections.abc import Iterator, Sequence
from pathlib import Path
from typing import NamedTuple

_PROCESSES = Path("/proc")
_LISTENS = "0A"
_REMOVED = " (deleted)"  # the kernel's word for it


class Holder(NamedTuple):
    """Who listens at an address."""

    user: str
    program: str  # the start of the command line; empty if it cannot be read
    network: Path | None  # its directory, if it is one of this operator's


def _pids() -> list[int]:
    return [int(entry.name) for entry in _PROCESSES.iterdir() if entry.name.isdecimal()]


def _arguments(pid: int | None) -> list[bytes]:
    try:
        return (_PROCESSES / str(pid) / "cmdline").read_bytes().split(b"\0")[:-1]
    except OSError:
        return []


def _owner(pid: int | None) -> int | None:
    try:
        return (_PROCESSES / str(pid)).stat().st_uid
    except OSError:
        return None


def is_server_command(words: Sequence[bytes]) -> bool:
    """Whether a command line, given as its words, starts a network's server. The programs in C++
    have the same rule, in server_processes.cpp."""
    names = [os.path.basename(word) for word in words]
    if not names or not names[0].startswith(b"python") or b"manage.py" not in names:
        return False
    script = names.index(b"manage.py")
    return words[script + 1:script + 2] == [b"runserver"]


def _serves(pid: int | None) -> bool:
    return is_server_command(_arguments(pid))


def network(pid: int | None) -> Path | None:
    """The directory of the network that the process serves for this operator."""
    if _owner(pid) != os.getuid() or not _serves(pid):
        return None
    try:
        cwd = os.readlink(_PROCESSES / str(pid) / "cwd")
    except OSError:
        return None
    if cwd.endswith(_REMOVED) and not os.path.exists(cwd):
        return Path(cwd.removesuffix(_REMOVED))
    directory = Path(cwd)
    fit = os.path.isfile(directory / "manage.py") and any(directory.glob("*/hubs/__init__.py"))
    return directory if fit else None


def networks() -> list[tuple[int, Path]]:
    """The pids of all processes that serve a network for this operator, with its directory."""
    found = ((pid, network(pid)) for pid in _pids() if pid != os.getpid())
    return [(pid, directory) for pid, directory in found if directory]


def _occupies(listener: str, wanted: str) -> bool:
    """Whether a listener's address, in the kernel's hexadecimal, occupies the wanted IPv4 one."""
    number, = struct.unpack("=I", socket.inet_aton(wanted))
    return number == 0 or not listener.strip("0") or listener[-8:] == f"{number:08X}"


def _listeners(address: str, port: int) -> Iterator[tuple[str, int]]:
    """The inode and the user id of each socket that listens where the address is wanted."""
    for table in ("tcp", "tcp6"):
        try:
            lines = (_PROCESSES / "net" / table).read_text("ascii").splitlines()[1:]
        except OSError:
            continue
        for fields in map(str.split, lines):
            its_address, its_port = fields[1].split(":")
            if (fields[3] == _LISTENS and int(its_port, 16) == port
                    and _occupies(its_address, address)):
                yield fields[9], int(fields[7])


def _holds(pid: int, inode: str) -> bool:
    try:
        return any(os.readlink(descriptor) == f"socket:[{inode}]"
                   for descriptor in (_PROCESSES / str(pid) / "fd").iterdir())
    except OSError:
        return False


def _user(uid: int) -> str:
    try:
        return pwd.getpwuid(uid).pw_name
    except KeyError:
        return str(uid)


def holder(address: str, port: int) -> Holder | None:
    """Who listens where the IPv4 address is wanted; None if nobody can be seen there."""
    for inode, owner in _listeners(address, port):
        pid = next((pid for pid in _pids() if _holds(pid, inode)), None)
        if pid is None:  # another user's: a server of theirs is the best guess
            pid = next((pid for pid in _pids() if _owner(pid) == owner and _serves(pid)), None)
        program = " ".join(map(os.fsdecode, _arguments(pid)[:3]))
        return Holder(_user(owner), program, network(pid))
    return None


def described(found: Holder) -> str:
    """The holder in French, as it stands after "par"."""
    return f"l'utilisateur « {found.user} » ({found.program or 'programme inconnu'})"


def _ended(pid: int, seconds: float) -> bool:
    """Whether the server is gone within that time."""
    deadline = time.monotonic() + seconds
    while network(pid) and time.monotonic() < deadline:
        time.sleep(0.05)
    return not network(pid)


def end(directory: Path) -> None:
    """End the servers of this operator's network: by SIGTERM, after five seconds by SIGKILL."""
    servers = [pid for pid, its_directory in networks() if its_directory == directory]
    for number in (signal.SIGTERM, signal.SIGKILL):
        for pid in servers:
            if network(pid) == directory:
                try:
                    os.kill(pid, number)
                except ProcessLookupError:
                    pass
        if all([_ended(pid, 5) for pid in servers]):
            return


if __name__ == "__main__":
    listener = holder(sys.argv[1], int(sys.argv[2]))
    if listener:
        print(described(listener))
