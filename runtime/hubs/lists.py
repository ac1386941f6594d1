"""The list of offered files: which are asked for, in which order, a page at a time."""

from datetime import datetime, timezone
from itertools import islice
from urllib.parse import urlencode

from django.core.paginator import Paginator

from . import archives, resources
from .resources import OFFERED

FILES_PER_PAGE = 50

# From how many files on the page has a field to search them
_MANY = 20

_LONGEST_QUERY = 100


def _matching(query):
    words = resources.plain(query).split()
    found = [entry for entry in OFFERED.walk() if all(word in entry.key for word in words)]
    found.sort(key=lambda entry: (not entry.is_folder, entry.key, entry.path))
    return found


def _latest_first(entries):
    return sorted(entries, key=lambda entry: (not entry.is_folder, -entry.changed))


def _are_many():
    files = (entry for entry in OFFERED.walk() if not entry.is_folder)
    return len(list(islice(files, _MANY))) == _MANY


def _row(entry):
    status = OFFERED.status(entry.path)
    return {
        "entry": entry,
        "status": status,
        "changed": status and datetime.fromtimestamp(status.st_mtime, timezone.utc),
        "is_being_copied": status and resources.is_being_copied(status),
    }


def context(request, folder=""):
    """What files.html shows: the files of the folder, or those of all folders that the request
    asks for. Raises OSError if there is no such folder."""
    query = request.GET.get("q", "").strip()[:_LONGEST_QUERY]
    by_date = request.GET.get("ordre") == "date"
    listing = OFFERED.listing(folder)
    entries = _matching(query) if query else listing.entries
    if by_date:
        entries = _latest_first(entries)
    page = Paginator(entries, FILES_PER_PAGE).get_page(request.GET.get("page"))
    asked = {"q": query} if query else {}
    return {
        "query": query,
        "by_date": by_date,
        "by_name_address": "?" + urlencode(asked),
        "by_date_address": "?" + urlencode({**asked, "ordre": "date"}),
        "page_address": "?" + urlencode({**asked, **({"ordre": "date"} if by_date else {}),
                                         "page": ""}),
        "page": page,
        "rows": [_row(entry) for entry in page],
        "can_archive": archives.are_possible(),
        "left_out": listing.left_out,
        "can_search": bool(query) or _are_many(),
    }
