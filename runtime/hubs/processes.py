"""The networks that an operator serves on this machine, found in the process list.

The server of a network is a process of the operator's own, "python3 manage.py runserver ...",
however python and manage.py were named, whose working directory is the network's: it holds
manage.py, and beside it the folder that has hubs; or it has been removed. Under plain Django a
network has two such processes. Needs no Django.

As a program, "processes.py ADDRESS PORT" says in French who listens there; nothing if nobody can
be seen.
"""

import collections
import os
import pwd
import signal
import socket
import struct
import sys
import time
from pathlib import Path

_PROCESSES = Path("/proc")
_LISTENS = "0A"
_REMOVED = " (deleted)"  # the kernel's word for it

# Who listens at an address: the name of the user, the start of the command line if it can be read,
# and the directory if it is a network of this operator.
Holder = collections.namedtuple("Holder", "user program network")


def _numbers():
    return [int(entry.name) for entry in _PROCESSES.iterdir() if entry.name.isdecimal()]


def _arguments(process):
    try:
        return (_PROCESSES / str(process) / "cmdline").read_bytes().split(b"\0")[:-1]
    except OSError:
        return []


def _owner(process):
    try:
        return (_PROCESSES / str(process)).stat().st_uid
    except OSError:
        return None


def is_server_command(words):
    """Whether a command line, given as its words in bytes, starts a network's server. The programs
    that are not in Python decide it by the same rule."""
    names = [os.path.basename(word) for word in words]
    if not names or not names[0].startswith(b"python") or b"manage.py" not in names:
        return False
    script = names.index(b"manage.py")
    return words[script + 1:script + 2] == [b"runserver"]


def _serves(process):
    return is_server_command(_arguments(process))


def network(process):
    """The directory of the network that the process serves for this operator, or None."""
    if _owner(process) != os.getuid() or not _serves(process):
        return None
    try:
        directory = os.readlink(_PROCESSES / str(process) / "cwd")
    except OSError:
        return None
    if directory.endswith(_REMOVED) and not os.path.exists(directory):
        return Path(directory.removesuffix(_REMOVED))
    directory = Path(directory)
    fit = os.path.isfile(directory / "manage.py") and any(directory.glob("*/hubs/__init__.py"))
    return directory if fit else None


def networks():
    """All processes that serve a network for this operator: (process, directory)."""
    found = ((process, network(process)) for process in _numbers() if process != os.getpid())
    return [(process, directory) for process, directory in found if directory]


def _occupies(listener, wanted):
    """Whether a listener's address, in the kernel's hexadecimal, occupies the wanted IPv4 one."""
    wanted, = struct.unpack("=I", socket.inet_aton(wanted))
    return wanted == 0 or not listener.strip("0") or listener[-8:] == f"{wanted:08X}"


def _listeners(address, port):
    """The sockets that listen where the address is wanted: (inode, user number)."""
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


def _holds(process, inode):
    try:
        return any(os.readlink(descriptor) == f"socket:[{inode}]"
                   for descriptor in (_PROCESSES / str(process) / "fd").iterdir())
    except OSError:
        return False


def _user(number):
    try:
        return pwd.getpwuid(number).pw_name
    except KeyError:
        return str(number)


def holder(address, port):
    """Who listens where the IPv4 address is wanted; None if nobody can be seen there."""
    for inode, owner in _listeners(address, port):
        process = next((number for number in _numbers() if _holds(number, inode)), None)
        if process is None:  # another user's: a server of theirs is the best guess
            process = next((number for number in _numbers()
                            if _owner(number) == owner and _serves(number)), None)
        program = " ".join(map(os.fsdecode, _arguments(process)[:3]))
        return Holder(_user(owner), program, network(process))
    return None


def described(found):
    """The holder in French, as it stands after "par"."""
    return f"l'utilisateur « {found.user} » ({found.program or 'programme inconnu'})"


def _ended(process, seconds):
    """Whether the process is gone within that time."""
    deadline = time.monotonic() + seconds
    while network(process) and time.monotonic() < deadline:
        time.sleep(0.05)
    return not network(process)


def end(directory):
    """End the servers of this operator's network: by SIGTERM, after five seconds by SIGKILL."""
    servers = [process for process, its_directory in networks() if its_directory == directory]
    for number in (signal.SIGTERM, signal.SIGKILL):
        for process in servers:
            if network(process) == directory:
                try:
                    os.kill(process, number)
                except ProcessLookupError:
                    pass
        if all([_ended(process, 5) for process in servers]):
            return


if __name__ == "__main__":
    listener = holder(sys.argv[1], int(sys.argv[2]))
    if listener:
        print(described(listener))
