"""A network's servers at the addresses of its machine, as these come and go."""

import errno
import selectors
import threading
import time

from .lan import LanAddresses
from .mdns import Announcement
from .server import Server

FOLLOW_SECONDS = 3
# Where a machine that is on no network serves itself, until there is one
ALONE = "127.0.1.1"


def _follows(address: str) -> bool:
    """Whether a network that is started at that address is served on all local networks of this
    machine, as they come and go."""
    return address == ALONE or address in LanAddresses(address).now()


class Servers:
    """Serves at the first server's address, and follows the machine's addresses if that is one of
    them on a local network. Answers there for names in .local. Says in French what changes."""

    def __init__(self, first, display_name, say):
        address, self._port = first.server_address[:2]
        self._first, self._display_name, self._say = first, display_name, say
        self._lan = LanAddresses(address) if first.is_ipv4 else None
        self._moves = first.is_ipv4 and _follows(address)
        self._selector = selectors.DefaultSelector()
        self._servers = {}  # by their addresses
        self._announcements = {}  # by their networks
        self._occupied = set()  # addresses where another program has the port
        self._add(address, first)

    def run(self):
        """Serve until an exception ends it."""
        next_look = 0
        while True:
            if time.monotonic() >= next_look:
                self._follow()
                next_look = time.monotonic() + FOLLOW_SECONDS
            for key, _events in self._selector.select(FOLLOW_SECONDS):
                key.fileobj.handle_request()

    def withdraw(self):
        """Tell the LAN that the names are no more."""
        for announcement in self._announcements.values():
            announcement.withdraw()

    def _add(self, address, server):
        server.socket.setblocking(False)  # whoever connected may have gone already
        self._selector.register(server, selectors.EVENT_READ)
        self._servers[address] = server

    def _follow(self):
        lan = self._lan.now() if self._lan else {}
        if self._moves:
            wanted = dict.fromkeys([*lan] or [ALONE])
            if self._first.server_address[0] == ALONE:
                wanted[ALONE] = None
            for address in [address for address in self._servers if address not in wanted]:
                self._close(address)
            for address in wanted:
                if address not in self._servers:
                    self._open(address)
        everywhere = "0.0.0.0" in self._servers
        for server in self._servers.values():
            server.lan_addresses = [
                address for address in lan if everywhere or address in self._servers]
        self._announce(lan)

    def _open(self, address):
        try:
            server = Server((address, self._port), like=self._first)
        except OSError as error:
            if error.errno == errno.EADDRINUSE and address not in self._occupied:
                self._occupied.add(address)
                self._say(f"À l'adresse {address}, le port {self._port} est déjà pris.")
            return
        self._occupied.discard(address)
        self._add(address, server)
        self._say(f"Visible de cette machine seulement, qui n'est sur aucun réseau local : "
                  f"http://{address}:{self._port}/" if address == ALONE else
                  f"Visible aussi à l'adresse http://{address}:{self._port}/")

    def _close(self, address):
        server = self._servers.pop(address)
        self._selector.unregister(server)
        server.server_close()  # its connections go on as long as they can
        if address != ALONE:
            self._say(f"L'adresse {address} n'est plus celle de cette machine.")

    def _announce(self, lan):
        """Have one announcement on each network where visitors reach a server."""
        reached = {}
        for address, network in lan.items():
            if address in self._servers:
                reached.setdefault(network, address)
        for network, announcement in list(self._announcements.items()):
            if reached.get(network) != announcement.address:
                del self._announcements[network]
                threading.Thread(target=announcement.withdraw, daemon=True).start()
        for network, address in reached.items():
            if network not in self._announcements:
                announcement = Announcement(address, self._port, self._display_name, self._say,
                                            own_addresses=lan)
                self._announcements[network] = announcement
                announcement.start()
