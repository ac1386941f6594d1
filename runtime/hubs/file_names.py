"""Which file names may be shown to visitors and taken from them. Needs no Django."""

import re
import unicodedata

# Control characters and surrogates, which stand for bytes that are not UTF-8; and what changes the
# direction of writing, which would make a program look like a picture.
_UNFIT_CHARACTERS = re.compile(
    r"[\x00-\x1f\x7f-\x9f\u202a-\u202e\u2066-\u2069\ud800-\udfff/]")


def is_fit(name: str) -> bool:
    """Whether what bears that name may be shown: it is visible and stays in its folder."""
    return bool(name) and name[0] != "." and not _UNFIT_CHARACTERS.search(name)


def clean(name: str) -> str:
    """The name under which a sent file is kept; empty if nothing fit is left of it."""
    return _UNFIT_CHARACTERS.sub("", unicodedata.normalize("NFC", name)).strip().lstrip(". ")
