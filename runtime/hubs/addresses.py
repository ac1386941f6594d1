"""The address that visitors type, and its picture for their phones."""

import ipaddress
import socket

from django.utils.safestring import mark_safe

try:
    import segno
except ImportError:  # the address is then shown without its picture
    segno = None


def is_local(address):
    """Whether an address, with a port or without, leads nowhere from other machines."""
    host = address.rsplit(":", 1)[0] if address.rpartition(":")[2].isdecimal() else address
    if host == "localhost" or host.endswith(".localhost"):
        return True
    try:
        return ipaddress.ip_address(host.strip("[]")).is_loopback
    except ValueError:
        return False


def _lan_address():
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as route:
        try:
            route.connect(("192.0.2.1", 9))  # looks up the way and sends nothing
        except OSError:
            return None
        return route.getsockname()[0]


def visitors_address(request):
    """The address of this server, as the request has it unless that leads to this machine alone
    and the server listens to others too. With its port."""
    asked = request.get_host()
    if not is_local(asked) or request.META["SERVER_NAME"] not in ("0.0.0.0", "::"):
        return asked
    address = _lan_address()
    return f"{address}:{request.META['SERVER_PORT']}" if address else asked


def qr_code(text):
    """The text as a QR code, an SVG element; empty without the package that draws it, or for more
    than an address has."""
    if not segno or len(text) > 300:
        return ""
    return mark_safe(segno.make(text, micro=False).svg_inline(omitsize=True, border=3))
