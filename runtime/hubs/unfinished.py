"""How much room files take while they are being handed in."""

import threading
from collections.abc import Callable

from . import limits

_changed = threading.Condition()
_open = []  # the hand-ins under way in this process


class NoRoom(Exception):
    """What is handed in has no room. Says why in French."""


class HandIn:
    """What one request hands in. Bounds its bytes as they come, together with those of all others.

    KEPT is a function of an address: the bytes that everybody has handed in, and those from the
    address.
    """

    def __init__(self, address: str, kept: Callable[[str], tuple[int, int]]):
        self._address, self._kept = address, kept
        self._bytes = 0
        self._others_open = None  # those that were when KEPT was last called

    def begin(self):
        """Wait until the address may hand in. Raises NoRoom. Does nothing when called again."""
        with _changed:
            if self in _open:
                return
            if not _changed.wait_for(self._may_begin, limits.HANDING_IN_PATIENCE):
                raise NoRoom("trop de fichiers viennent en même temps de votre adresse, recommencez"
                             " dans un moment")
            _open.append(self)

    def _may_begin(self):
        of_address = sum(other._address == self._address for other in _open)
        return of_address < limits.HANDING_IN_PER_ADDRESS

    def add(self, number):
        """Count bytes that have come. Raises NoRoom."""
        with _changed:
            self._bytes += number
            others = list(_open)
        if others != self._others_open:  # one that has ended is among what is kept
            self._others_open = others
            self._everybody, self._own = self._kept(self._address)
        coming = sum(other._bytes for other in others)
        of_address = sum(other._bytes for other in others if other._address == self._address)
        if (self._everybody + coming > limits.HANDED_IN_BYTES
                or self._own + of_address > limits.HANDED_IN_BYTES_PER_ADDRESS):
            raise NoRoom("il n'y a plus de place pour d'autres fichiers, prévenez le responsable")

    def end(self):
        """The files are kept, or gone."""
        with _changed:
            if self in _open:
                _open.remove(self)
                _changed.notify_all()
