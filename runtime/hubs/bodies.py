"""What is left of a request's body when the page does not read it."""

import time
from collections.abc import Callable

PIECE = 64 * 1024
DRAIN_SECONDS = 5


def drain(read: Callable[[int], bytes]) -> None:
    """Read on for DRAIN_SECONDS at most, so that a client that is still sending gets to see the
    answer. READ takes a number of bytes; what it returns is dropped, and its errors are ignored."""
    end = time.monotonic() + DRAIN_SECONDS
    try:
        while time.monotonic() < end and read(PIECE):
            pass
    except OSError:
        pass
