"""The address that visitors type, and its picture for their phones."""

import ipaddress

from django.http import HttpRequest
from django.utils.safestring import mark_safe

try:
    import segno
except ImportError:  # the address is then shown without its picture
    segno = None


def is_local(address: str) -> bool:
    """Whether an address, with or without a port, can be reached from this machine alone."""
    host = address.rsplit(":", 1)[0] if address.rpartition(":")[2].isdecimal() else address
    if host == "localhost" or host.endswith(".localhost"):
        return True
    try:
        return ipaddress.ip_address(host.strip("[]")).is_loopback
    except ValueError:
        return False


def visitors_address(request: HttpRequest) -> str:
    """The address in digits, with its port, at which visitors reach this server: where this request
    did, unless that leads to this machine alone and visitors have another. Behind a web server that
    does not tell, what the browser asked for."""
    reached = request.META["SERVER_NAME"]
    if is_local(reached):
        reached = next(iter(request.META.get("quorvale.lan_addresses", ())), reached)
    try:
        ipaddress.ip_address(reached)
    except ValueError:
        return request.get_host()
    host = f"[{reached}]" if ":" in reached else reached
    return f"{host}:{request.META['SERVER_PORT']}"


def qr_code(text: str) -> str:
    """The text as a QR code, an SVG element; empty without the package that draws it, or if the
    text is too long for an address."""
    if not segno or len(text) > 300:
        return ""
    return mark_safe(segno.make(text, micro=False).svg_inline(omitsize=True, border=3))
