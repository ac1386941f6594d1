"""A cache of pages that are the same for all visitors."""

import functools
import threading
import time

from django.conf import settings
from django.contrib.messages.storage.cookie import CookieStorage
from django.http import HttpResponse
from django.utils.cache import patch_vary_headers

_CACHE_SECONDS = 1
_MAX_PAGES = 64

_cache = {}  # address of a page: its bytes, and when they expire
_rendering = threading.Lock()


def _fresh(address):
    body, end = _cache.get(address, (None, 0))
    return body if time.monotonic() < end else None


def _store(address, body):
    now = time.monotonic()
    for other in [key for key, (_, end) in _cache.items() if end <= now]:
        del _cache[other]
    if len(_cache) < _MAX_PAGES:
        _cache[address] = (body, now + _CACHE_SECONDS)


def _answer(body):
    response = HttpResponse(body)
    patch_vary_headers(response, ("Cookie",))
    return response


def _is_personal(request):
    own = (settings.SESSION_COOKIE_NAME, settings.CSRF_COOKIE_NAME, CookieStorage.cookie_name)
    return any(name in request.COOKIES for name in own)


def same_for_visitors(view):
    """Cache what the view answers for a second, for visitors who send none of our cookies. Answers
    that are for one visitor (with a form's token or a cookie) are not cached."""
    @functools.wraps(view)
    def cached_view(request, **kwargs):
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
                    _store(address, body)
        return _answer(body)
    return cached_view
