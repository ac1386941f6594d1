"""How many visitors come, which the operator's window shows."""

import ipaddress
import threading
import time

from django.http import Http404, JsonResponse
from django.views.decorators.http import require_safe

from . import mdns, names

SECONDS = 5 * 60
_MAX_VISITORS = 10_000

_last_seen = {}  # by the visitor's address
_counting = threading.Lock()


def _is_own(request):
    """Whether a request comes from this machine, by its own network addresses."""
    address = request.META["REMOTE_ADDR"]
    try:
        return (ipaddress.ip_address(address).is_loopback
                or address in request.META.get("quorvale.lan_addresses", ()))
    except ValueError:
        return False


def note(request):
    """Count the sender of a request as a visitor, if it is another machine."""
    address = request.META["REMOTE_ADDR"]
    if _is_own(request) or not address:
        return
    with _counting:
        _last_seen.pop(address, None)  # the latest stand last
        _last_seen[address] = time.monotonic()
        while len(_last_seen) > _MAX_VISITORS:
            del _last_seen[next(iter(_last_seen))]


def count() -> int:
    """The number of machines that came within the last minutes."""
    start = time.monotonic() - SECONDS
    with _counting:
        return sum(seen >= start for seen in _last_seen.values())


def counted(get_response):
    """Middleware: note whoever asks for a page. Stands behind what finds the visitor's address."""
    def middleware(request):
        if not request.path_info.startswith("/_infos/"):  # a client's search is no visit
            note(request)
        return get_response(request)
    return middleware


@require_safe
def state(request):
    """The network's state, for programs of this machine: its name, the names at which it is reached
    on the LAN, and the number of its visitors."""
    if not _is_own(request):
        raise Http404
    response = JsonResponse({"name": names.display_name(), "names": mdns.held_names(),
                             "visitors": count()})
    response["Cache-Control"] = "no-store"
    return response
