"""A network's names on the LAN, which phones and computers ask all machines for (mDNS)."""

import logging
import re
import socket
import threading
import time

from .names import unidecode

_SHARED_NAME = "quorvale"
_SECONDS_TO_WITHDRAW = 3
_MAX_CANDIDATES = 10
# How many records of other machines' announcements the library may keep
_MAX_RECORDS = 2000

_held = []  # the announcements that hold names


def host_name(display_name: str) -> str:
    """The first label of the network's own name: letters that every client can type."""
    plain = re.sub("[^a-z0-9]+", "-", unidecode(display_name).lower())
    return plain.strip("-")[:60].strip("-") or "reseau"


def service_name(display_name: str) -> str:
    """The display name as one label: without dots, of no more bytes than a label may have."""
    label = display_name.replace(".", " ").encode()[:60].decode(errors="ignore").strip()
    return label or "Quorvale"


def held_names() -> list[str]:
    """The names, with their port, at which this network is reached on the LAN."""
    return list(dict.fromkeys(name for announcement in _held for name in announcement.names))


def _forget_others(cache):
    """Bound what is kept of other machines' announcements. They are asked again when needed."""
    if sum(map(len, cache.cache.values())) > _MAX_RECORDS:
        cache.async_remove_records([record for records in cache.cache.values()
                                    for record in records])


class Announcement:
    """Answers for quorvale.local and a name of the network's own, and announces its web service, on
    the interface of one address. Tells the operator what visitors can type.

    OWN_ADDRESSES are all those of this machine: a name that is answered for there is free.
    """

    def __init__(self, address, port, display_name, say, own_addresses=()):
        self.address, self._port, self._say = address, port, say
        self._display_name = display_name
        self._own = {socket.inet_aton(own) for own in (address, *own_addresses)}
        self.names = []  # that are held, with their port
        self._zeroconf = None
        self._end = threading.Event()
        self._thread = threading.Thread(target=self._run, daemon=True)

    def start(self):
        """Returns at once: names are settled within seconds, while visitors are served."""
        _held.append(self)
        self._thread.start()

    def withdraw(self):
        """Tell the LAN that the names are no more."""
        _held.remove(self)
        self._end.set()
        self._thread.join(_SECONDS_TO_WITHDRAW)
        if self._zeroconf:
            closing = threading.Thread(target=self._zeroconf.close, daemon=True)
            closing.start()
            closing.join(_SECONDS_TO_WITHDRAW)

    def _run(self):
        try:
            import zeroconf
        except ImportError:
            self._say("Sans le paquet python3-zeroconf, le réseau n'a pas de nom en « .local ».")
            return
        logging.getLogger("zeroconf").setLevel(logging.CRITICAL)
        try:
            self._zeroconf = zeroconf.Zeroconf(interfaces=[self.address],
                                               ip_version=zeroconf.IPVersion.V4Only)
            threading.Thread(target=self._keep_small, daemon=True).start()
            self._register(zeroconf)
        except (OSError, zeroconf.Error):
            self._say("Ce réseau local ne porte pas les noms en « .local » : donnez l'adresse.")

    def _keep_small(self):
        while not self._end.wait(0.5):
            self._zeroconf.loop.call_soon_threadsafe(_forget_others, self._zeroconf.cache)

    def _register(self, zeroconf):
        free = (name for name in self._candidates() if not self._is_taken(zeroconf, name))
        own = next(free, None)
        if not own:
            self._say("Un appareil de ce réseau local répond à tous les noms : le réseau n'a pas de"
                      " nom en « .local », donnez l'adresse.")
            return
        shared_is_taken = self._is_taken(zeroconf, _SHARED_NAME)
        services = [(own, "_http", service_name(self._display_name))]
        if not shared_is_taken and own != _SHARED_NAME:
            # A host name needs a service that it belongs to.
            services.append((_SHARED_NAME, "_quorvale", own))
        for host, kind, instance in services:
            if self._end.is_set():
                return
            self._zeroconf.register_service(zeroconf.ServiceInfo(
                f"{kind}._tcp.local.", f"{instance}.{kind}._tcp.local.", port=self._port,
                addresses=[socket.inet_aton(self.address)], server=f"{host}.local."),
                allow_name_change=True)
            self.names.append(f"{host}.local:{self._port}")
            self._say(f"Aussi : http://{host}.local:{self._port}/")
        if shared_is_taken:
            self._say("Un autre réseau a déjà le nom quorvale.local : il le garde.")

    def _candidates(self):
        name = host_name(self._display_name)
        return [name, *(f"{name}-{number}" for number in range(2, _MAX_CANDIDATES + 1))]

    def _is_taken(self, zeroconf, host):
        """Whether another machine answers for the name, which is asked for three times."""
        name = f"{host}.local."
        for _ in range(3):
            question = zeroconf.DNSOutgoing(0)  # a query
            question.add_question(zeroconf.DNSQuestion(name, 1, 1))  # address, Internet
            self._zeroconf.send(question)
            time.sleep(0.25)
            answers = self._zeroconf.cache.entries_with_name(name)
            if any(getattr(answer, "address", None) not in (None, *self._own)
                   for answer in answers):
                return True
        return False
