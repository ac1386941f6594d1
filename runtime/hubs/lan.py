"""This machine's addresses on local networks."""

import fcntl
import ipaddress
import os
import socket
import struct
from pathlib import Path

try:
    import ifaddr
except ImportError:  # then a network is served where it was started
    ifaddr = None

_GET_FLAGS = 0x8913  # SIOCGIFFLAGS
_LOOPBACK, _POINT_TO_POINT = 0x8, 0x10


def _flags(interface):
    request = struct.pack("16sH14x", os.fsencode(interface), 0)
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as any_socket:
        return struct.unpack("16sH14x", fcntl.ioctl(any_socket, _GET_FLAGS, request))[1]


def _has_default_route(interface):
    try:
        routes = Path("/proc/net/route").read_text("ascii", "replace").splitlines()
    except OSError:
        return False
    return any(fields[0] == interface and fields[1] == fields[7] == "00000000"
               for fields in map(str.split, routes))


def _leads_to_others(interface):
    try:
        return not _flags(interface) & (_LOOPBACK | _POINT_TO_POINT)
    except OSError:
        return False


def _ipv4_interfaces():
    """All IPv4 addresses of this machine: (name of the interface, address with its network)."""
    for adapter in ifaddr.get_adapters():
        for ip in adapter.ips:
            if isinstance(ip.ip, str):
                name = ip.nice_name.split(":")[0]  # also of an alias, NAME:NUMBER
                yield name, ipaddress.ip_interface(f"{ip.ip}/{ip.network_prefix}")


class LanAddresses:
    """The IPv4 addresses of the interfaces that lead to a local network: those with a device or a
    default route (a bridge of virtual machines or a container's has neither, and no tunnel counts),
    and the one that has, or had, the given address."""

    def __init__(self, given: str):
        self._given = ipaddress.ip_address(given)
        self._interfaces = set()  # that have had it

    def now(self) -> dict[str, ipaddress.IPv4Network]:
        """The addresses that there are now, each with its network."""
        if not ifaddr:
            alone = self._given.is_loopback or self._given.is_unspecified
            return {} if alone else {str(self._given): ipaddress.ip_network(self._given)}
        found = [(name, interface) for name, interface in _ipv4_interfaces()
                 if _leads_to_others(name)]
        self._interfaces.update(name for name, interface in found if interface.ip == self._given)
        return {str(interface.ip): interface.network for name, interface in found
                if name in self._interfaces or _has_default_route(name)
                or os.path.exists(f"/sys/class/net/{name}/device")}
