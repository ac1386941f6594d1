"""The open connections of a server, and how many there may be."""

import collections
import socket
import threading

MAX_CONNECTIONS = 500
# A class behind one router has one address, and a browser opens up to six connections.
MAX_CONNECTIONS_PER_ADDRESS = 200
# Connections that were closed for others, but whose threads have not ended yet
_MAX_LEAVING = 100


class Connections:
    """Counts connections; where there are too many, closes the oldest of the address with most.
    Thread-safe."""

    def __init__(self):
        self._addresses = {}  # of each connection, the oldest first
        self._counts = collections.Counter()
        self._leaving = set()
        self._lock = threading.Lock()

    def add(self, connection: socket.socket, address: str) -> bool:
        """Returns whether the connection may stay."""
        with self._lock:
            if (self._counts[address] >= MAX_CONNECTIONS_PER_ADDRESS
                    or len(self._leaving) >= _MAX_LEAVING):
                return False
            self._addresses[connection] = address
            self._counts[address] += 1
            if len(self._addresses) > MAX_CONNECTIONS:
                self._close_one()
            return True

    def remove(self, connection: socket.socket) -> None:
        """Forget a connection, before it is closed; also one that was not allowed to stay."""
        with self._lock:
            self._leaving.discard(connection)
            self._forget(connection)

    def _forget(self, connection):
        address = self._addresses.pop(connection, None)
        if address is not None:
            self._counts[address] -= 1
            if not self._counts[address]:
                del self._counts[address]

    def _close_one(self):
        (most, _number), = self._counts.most_common(1)
        oldest = next(connection for connection, address in self._addresses.items()
                      if address == most)
        self._forget(oldest)
        self._leaving.add(oldest)
        try:
            oldest.shutdown(socket.SHUT_RDWR)  # its thread wakes and ends
        except OSError:
            pass
