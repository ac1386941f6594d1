"""Text for the operator's terminal, which what visitors wrote must not steer."""

import logging
import re


def harmless(text):
    """The text, with every control character but line ends and tabs written out."""
    return re.sub(r"[\x00-\x08\x0b-\x1f\x7f-\x9f]", lambda char: f"\\x{ord(char[0]):02x}", text)


class Formatter(logging.Formatter):
    """Formats log records harmlessly."""

    def format(self, record):
        return harmless(super().format(record))
