"""What is done to every request and every answer of a network."""

import math
import threading

from django.conf import settings
from django.http import StreamingHttpResponse
from django.urls import reverse

from . import limits, refusals
from .bodies import drain


def visitors_own_address(get_response):
    """Take the visitor's address, and the one at which they reached this machine, from a web server
    that passes requests on through a Unix socket. Requests over the network have these already."""
    def middleware(request):
        if not request.META.get("REMOTE_ADDR"):
            request.META["REMOTE_ADDR"] = request.META.get("HTTP_X_REAL_IP", "")
            reached, _, port = request.META.get("HTTP_X_SERVER_ADDRESS", "").rpartition(":")
            if reached:
                request.META.update(SERVER_NAME=reached.strip("[]"), SERVER_PORT=port)
        return get_response(request)
    return middleware


def _announced_size(request):
    """The size of the body in bytes; infinite if the header is not a number."""
    size = request.META.get("CONTENT_LENGTH") or "0"
    return int(size) if size.isdecimal() and len(size) < 20 else math.inf


class _Queues:
    """Where the requests of one address wait for each other, so that a hundred of them delay
    another address by a few at most. Addresses that share a queue by chance do so, too."""

    def __init__(self, at_once):
        self._queues = [threading.BoundedSemaphore(at_once) for _ in range(64)]

    def of(self, request):
        """A context in which the request has its turn."""
        return self._queues[hash(request.META["REMOTE_ADDR"]) % len(self._queues)]


def searches_queued(get_response):
    """The searches of one address wait for each other: each keeps a processor busy."""
    queues = _Queues(1)

    def middleware(request):
        if request.method not in ("GET", "HEAD") or not request.GET.get("q"):
            return get_response(request)
        with queues.of(request):
            return get_response(request)
    return middleware


def log_ins_queued(get_response):
    """The log-ins of one address wait for each other before anything is done for them."""
    queues = _Queues(limits.LOGINS_AT_ONCE)

    def middleware(request):
        if (request.method != "POST" or request.path != reverse("admin:login")
                or _announced_size(request) > settings.BODY_LIMIT):
            return get_response(request)
        try:
            request.body  # it may come slowly: nobody waits for that
        except OSError:
            pass  # the form is incomplete, and is told so
        with queues.of(request):
            return get_response(request)
    return middleware


def own_content_only(get_response):
    """Let pages load nothing from other servers."""
    def middleware(request):
        response = get_response(request)
        response.setdefault("Content-Security-Policy", "default-src 'self'; base-uri 'none'; "
                            "form-action 'self'; frame-ancestors 'none'; object-src 'none'")
        return response
    return middleware


def no_body_for_head(get_response):
    """Leave the body out of the answer to HEAD: some servers would send it."""
    def middleware(request):
        response = get_response(request)
        if request.method == "HEAD":
            if response.streaming:
                response.streaming_content = ()
            else:
                response.content = b""
        return response
    return middleware


def _page_and_rest(request, page):
    """The page. Then reads on for a while where that is safe: a web server that is still passing
    the body on would take the closed connection for an error, and not pass the page on."""
    yield page
    if request.META.get("wsgi.input_terminated"):
        drain(request.META["wsgi.input"].read)


def _refused(request, view):
    page = refusals.too_large(request, view)
    return StreamingHttpResponse(_page_and_rest(request, page.content), status=page.status_code,
                                 headers={"Content-Length": str(len(page.content))})


class BodiesBounded:
    """Refuse what visitors send, by its announced size, before a byte of it is read or written.

    Staff may send files of any size. Everybody else may send settings.BODY_LIMIT bytes, or what the
    page itself says: the attribute body_limit of its view, a function of the request.

    Sets most_files, the number of files that may be in the body: one, or the attribute most_files
    of the view. Where it is not set, none is read: Django reads forms for its error pages, too.

    Sets hand_in for visitors, if the view has that attribute, a function of the request: it bounds
    what is handed in while it comes.

    Stands after the authentication and before whatever reads forms (the CSRF check does).
    """

    def __init__(self, get_response):
        self.get_response = get_response

    def __call__(self, request):
        try:
            return self.get_response(request)
        finally:
            if hasattr(request, "hand_in"):
                request.hand_in.end()

    def process_view(self, request, view, _arguments, _keywords):
        size = _announced_size(request)
        if size == 0:
            return None
        if not request.user.is_staff:
            if size > settings.BODY_LIMIT and not (hasattr(view, "body_limit")
                                                   and size <= view.body_limit(request)):
                return _refused(request, view)
            if hasattr(view, "hand_in"):
                request.hand_in = view.hand_in(request)
        request.most_files = getattr(view, "most_files", 1)
        return None
