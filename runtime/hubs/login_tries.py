"""How often somebody has tried to log in lately."""

import threading
import time
from collections.abc import Hashable

from . import limits


class LoginTries:
    """Counts tries by key, for LOGIN_PAUSE seconds from the first, however many keys there are.
    Each process of a server counts for itself. Thread-safe."""

    def __init__(self):
        self._counts = {}  # key: number of tries, and when they are forgotten; the oldest first
        self._lock = threading.Lock()

    def add(self, key: Hashable) -> int:
        """Count another try. Returns their number."""
        now = time.monotonic()
        with self._lock:
            for other in list(self._counts):
                if self._counts[other][1] > now:
                    break
                del self._counts[other]
            number, end = self._counts.get(key, (0, now + limits.LOGIN_PAUSE))
            self._counts[key] = number + 1, end
        return number + 1

    def forget(self, key: Hashable) -> None:
        """Reset the count of the key."""
        with self._lock:
            self._counts.pop(key, None)
