"""Pages that are the same for all visitors are not rendered anew for each of them."""

import functools
import threading
import time

from django.conf import settings
from django.contrib.messages.storage.cookie import CookieStorage
from django.http import HttpResponse
from django.utils.cache import patch_vary_headers

_KEPT_SECONDS = 1
_MAX_PAGES = 64

_kept = {}  # address of a page: its bytes, and when they expire
_rendering = threading.Lock()


def _fresh(address):
    body, end = _kept.get(address, (None, 0))
    return body if time.monotonic() < end else None


def _keep(address, body):
    now = time.monotonic()
    for other in [key for key, (_, end) in _kept.items() if end <= now]:
        del _kept[other]
    if len(_kept) < _MAX_PAGES:
        _kept[address] = (body, now + _KEPT_SECONDS)


def _answer(body):
    response = HttpResponse(body)
    patch_vary_headers(response, ("Cookie",))
    return response


def _is_personal(request):
    own = (settings.SESSION_COOKIE_NAME, settings.CSRF_COOKIE_NAME, CookieStorage.cookie_name)
    return any(name in request.COOKIES for name in own)


def same_for_visitors(view):
    """Keep what the view answers for a second, for visitors who send none of our cookies. Answers
    that are for one visitor (with a form's token or a cookie) are not kept."""
    @functools.wraps(view)
    def kept_view(request, **kwargs):
        if _is_personal(request):
            return view(request, **kwargs)
        address = (request.META.get("HTTP_HOST"), request.path, request.META["QUERY_STRING"])
        body = _fresh(address)
        if body is None:
            with _rendering:  # the others wait for the one page
                body = _fresh(address)
                if body is None:
                    response = view(request, **kwargs)
                    if (response.status_code != 200 or response.cookies
                            or "CSRF_COOKIE" in request.META):
                        return response
                    body = response.content
                    _keep(address, body)
        return _answer(body)
    return kept_view
