"""The operator's terminal, which neither visitors' text nor a key pressed by mistake may stop."""

import contextlib
import io
import logging
import os
import re
import stat
import sys
import termios


def harmless(text: str) -> str:
    """The text, with every control character but line ends and tabs written out."""
    return re.sub(r"[\x00-\x08\x0b-\x1f\x7f-\x9f]", lambda char: f"\\x{ord(char[0]):02x}", text)


class Formatter(logging.Formatter):
    """Formats log records harmlessly."""

    def format(self, record):
        return harmless(super().format(record))


class Handler(logging.StreamHandler):
    """Writes log records to what is the standard error when they come."""

    def __init__(self):
        logging.Handler.__init__(self)

    @property
    def stream(self):
        return sys.stderr


class Output(io.TextIOBase):
    """Writes text to a descriptor. A terminal or pipe that takes no more is not waited for: what
    does not fit is lost. So is everything where nobody is left to read."""

    def __init__(self, descriptor: int, encoding: str):
        self._encoding = encoding
        self._descriptor = descriptor
        kind = os.fstat(descriptor).st_mode
        if stat.S_ISCHR(kind) or stat.S_ISFIFO(kind):
            with contextlib.suppress(OSError):
                # Opened anew: the shell that started this program is to go on waiting.
                self._descriptor = os.open(f"/proc/self/fd/{descriptor}",
                                           os.O_WRONLY | os.O_NONBLOCK | os.O_NOCTTY)

    def writable(self):
        return True

    def isatty(self):
        return os.isatty(self._descriptor)

    def write(self, text):
        with contextlib.suppress(OSError):
            os.write(self._descriptor, text.encode(self._encoding, "backslashreplace"))
        return len(text)


def _set_stops(descriptor: int, wanted: bool) -> bool:
    """Let Ctrl+S stop the terminal, or not. Returns whether it did before."""
    if not os.isatty(descriptor) or os.tcgetpgrp(descriptor) != os.getpgrp():
        return False  # a program in the background may not
    attributes = termios.tcgetattr(descriptor)
    before = bool(attributes[0] & termios.IXON)
    attributes[0] = attributes[0] & ~termios.IXON | (termios.IXON if wanted else 0)
    termios.tcsetattr(descriptor, termios.TCSANOW, attributes)
    return before


@contextlib.contextmanager
def kept_flowing():
    """A context in which standard output and error wait for no terminal, and Ctrl+S stops none."""
    streams = sys.stdout, sys.stderr
    stopped = False
    with contextlib.suppress(OSError, termios.error):
        sys.stdout, sys.stderr = (Output(stream.fileno(), stream.encoding) for stream in streams)
        stopped = _set_stops(streams[1].fileno(), False)
    try:
        yield
    finally:
        if stopped:
            with contextlib.suppress(OSError, termios.error):
                _set_stops(streams[1].fileno(), True)
        sys.stdout, sys.stderr = streams
