#!/usr/bin/python3
"""The name that visitors see of a network: the line in nom.txt beside manage.py.

The file is UTF-8, as an editor leaves it (with a BOM or without). Where it is missing or holds
nothing, the name is that of the network's directory. It is read each time, so that a change shows
without a restart.

As a program, without Django and without a line end: "names.py" prints the name of the network that
it is part of, in the ISO-8859-1 bytes that clients are given, and "names.py TEXT" the bytes that
stand for the text in the registry of networks.
"""

import codecs
import os
import re
import sys
import unicodedata
from pathlib import Path

try:
    from unidecode import unidecode
except ImportError:  # then letters that have no plain form are left out
    def unidecode(text):
        return unicodedata.normalize("NFKD", text).encode("ascii", "ignore").decode()

PROJECT = Path(__file__).resolve().parent.parent.parent
LONGEST = 100

# Not text: control characters, and bytes of file names that are not UTF-8.
_UNFIT = re.compile(r"[\x00-\x1f\x7f-\x9f\ud800-\udfff]+")

# The client's shell would take these for a pattern or a command of its echo.
_SHELL_CHARACTERS = str.maketrans("", "", "*?[]\\")

_LOOKALIKES = str.maketrans(
    {"œ": "oe", "Œ": "OE", "’": "'", "‘": "'", "“": '"', "”": '"', "–": "-", "—": "-", "€": "EUR"})


def clean(text: str) -> str:
    """The text on one line, without control characters, no longer than a name may be."""
    return " ".join(_UNFIT.sub(" ", text).split())[:LONGEST].rstrip()


def open_without_waiting(path, flags):
    """An opener for what could be a FIFO."""
    return os.open(path, flags | os.O_NONBLOCK)


def from_file(path: Path) -> str:
    """The name in a file: its first line that is not blank; empty if there is none. The programs in
    C++ have the same rule, in registered_networks.cpp."""
    try:
        with open(path, "rb", opener=open_without_waiting) as file:
            content = file.read(10 * LONGEST) or b""
    except OSError:
        return ""
    try:
        # What was read may end in the middle of a character.
        text = codecs.getincrementaldecoder("utf-8-sig")().decode(content)
    except UnicodeDecodeError:
        text = content.decode("cp1252", "replace").replace("\ufffd", " ")
    return next(filter(None, map(clean, re.split("[\n\r]", text))), "")


def display_name(project: Path = PROJECT) -> str:
    """The network's name, never empty."""
    return from_file(project / "nom.txt") or clean(project.name) or "Quorvale"


def _nearest(char):
    plain = unicodedata.normalize("NFKD", char).encode("latin-1", "ignore").decode("latin-1")
    return (plain or unidecode(char)).translate(_SHELL_CHARACTERS)


def latin_1(text: str) -> bytes:
    """The text in ISO-8859-1. Letters that it lacks are replaced by similar ones, or left out; no
    character that is special to the shell is added."""
    fit = _UNFIT.sub(" ", unicodedata.normalize("NFC", text)).translate(_LOOKALIKES)
    letters = (char if ord(char) < 256 else _nearest(char) for char in fit)
    return " ".join("".join(letters).split()).encode("latin-1", "ignore")


def latin_1_name(project: Path = PROJECT) -> bytes:
    """The network's name in ISO-8859-1. If nothing of it is left, the directory's."""
    return latin_1(display_name(project)) or latin_1(clean(project.name)) or b"Quorvale"


def registry_name(text: str) -> bytes:
    """The bytes that stand for a display name in the registry: ISO-8859-1 without the bar, which
    ends the name there, and with "&" doubled, for a button hides a single one. Maybe empty."""
    return b" ".join(latin_1(text).replace(b"|", b" ").split()).replace(b"&", b"&&")


if __name__ == "__main__":
    sys.stdout.buffer.write(registry_name(sys.argv[1]) if len(sys.argv) > 1 else latin_1_name())
