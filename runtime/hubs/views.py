"""The pages of a network."""

import os
import stat
from datetime import datetime, timezone

from django.conf import settings
from django.contrib import messages
from django.contrib.admin.views.decorators import staff_member_required
from django.http import Http404, HttpResponse
from django.shortcuts import redirect, render
from django.urls import reverse
from django.views.decorators.http import require_http_methods, require_safe

from . import addresses, handed_in, limits, lists, names, resources, shown
from .kept_pages import same_for_visitors
from .transfers import send_file

# Settings of older networks hold their name.
_OLD_NAME = getattr(settings, "NETWORK_NAME", None)

_DISK_IS_FULL = "Le disque du serveur est presque plein\xa0: rien n'a été enregistré."


def network_name():
    """The network's name, as pages show it."""
    return names.display_name(otherwise=_OLD_NAME)


@require_safe
@same_for_visitors
def index(request):
    """The landing page. A visitor without a session needs no database for it."""
    return render(request, "index.html", {
        **lists.context(request),
        "network_name": network_name(),
        "hand_in_is_open": handed_in.is_open(),
        "handed_in": handed_in.FOLDER.names,
    })


@require_safe
def display_name(_request):
    """The display name for the clients, which read it byte by byte as ISO-8859-1."""
    return HttpResponse(names.latin_1_name(otherwise=_OLD_NAME),
                        content_type="text/plain; charset=ISO-8859-1")


@require_safe
def address(request):
    """The network's address in large letters, to be projected in a room."""
    shown = addresses.visitors_address(request)
    return render(request, "address.html", {
        "network_name": network_name(),
        "address": shown,
        "is_local": addresses.is_local(shown),
        "code": addresses.qr_code(f"http://{shown}/"),
    })


@require_safe
@same_for_visitors
def folder_page(request, path):
    """The files and folders in an offered folder."""
    *outer, name = path.split("/")
    try:
        listed = lists.context(request, path)
    except OSError as error:
        raise Http404 from error
    return render(request, "folder.html", {
        **listed,
        "folder": path,
        "name": name,
        "outer": [("/".join(outer[:end]), outer[end - 1]) for end in range(1, len(outer) + 1)],
    })


def _opened(folder, path):
    try:
        return folder.open(path)
    except OSError as error:
        raise Http404 from error


def _given(request, file, name):
    kind = shown.content_type(name)
    if not kind:
        return send_file(request, file, name)
    response = send_file(request, file, name, kind, inline=True)
    response["Content-Security-Policy"] = shown.POLICY
    return response


@require_safe
def download(request, path):
    """One offered file. A folder's name leads to the folder's page."""
    status = resources.OFFERED.status(path)
    if status and stat.S_ISDIR(status.st_mode):
        return redirect("folder", path)
    file = _opened(resources.OFFERED, path)
    if resources.is_being_copied(os.fstat(file.fileno())):
        file.close()
        response = render(request, "being_copied.html", status=503)
        response["Retry-After"] = "2"
        return response
    return _given(request, file, os.path.basename(path))


@require_http_methods(["GET", "HEAD", "POST"])
@staff_member_required
def upload(request):
    """Take new files into the folder of offered files; those that are there stay as they are."""
    if request.method != "POST":  # a log-in that had run out leads here
        return redirect("index")
    sent = request.FILES.getlist("fichiers")
    if getattr(request, "disk_is_full", False):
        messages.error(request, _DISK_IS_FULL)
    elif not sent:
        messages.error(request, "Aucun fichier n'a été choisi.")
    for file in sent:
        _offer(request, file)
    return redirect("index")


def _offer(request, file):
    name = resources.clean_name(file.name)
    if not name:
        messages.error(request, f"Le nom «\xa0{file.name}\xa0» ne convient pas.")
        return
    try:
        resources.OFFERED.keep(name, file.chunks())
        messages.success(request, f"«\xa0{name}\xa0» est maintenant proposé.")
    except FileExistsError:
        messages.error(request, f"Un fichier «\xa0{name}\xa0» existe déjà\xa0: il n'a pas été "
                                "remplacé.")
    except OSError as error:
        messages.error(request, f"«\xa0{name}\xa0» n'a pas pu être enregistré\xa0: "
                                f"{resources.cause(error)}.")


def _list_address(page, path):
    """The address of the list that a file is in: a page, or an offered folder's."""
    folder = os.path.dirname(path)
    return reverse("folder", args=[folder]) if folder else reverse(page)


@require_http_methods(["GET", "HEAD", "POST"])
@staff_member_required
def remove(request, name, folder, back):
    """Remove a file of the folder, once it has been asked whether that is meant."""
    status = folder.status(name)
    if not status or not stat.S_ISREG(status.st_mode):
        raise Http404
    if request.method != "POST":
        return render(request, "remove.html", {
            "name": os.path.basename(name), "back": _list_address(back, name)})
    try:
        folder.remove(name)
        messages.success(request, f"«\xa0{os.path.basename(name)}\xa0» a été supprimé.")
    except OSError as error:
        messages.error(request, f"«\xa0{os.path.basename(name)}\xa0» n'a pas pu être supprimé\xa0: "
                                f"{resources.cause(error)}.")
    return redirect(_list_address(back, name))


@require_http_methods(["GET", "HEAD", "POST"])
def hand_in(request):
    """Take a file from a visitor without an account, where staff has opened that."""
    if not handed_in.is_open():
        return render(request, "hand_in_closed.html", status=403)
    if request.method == "POST":
        _receive(request)
        return redirect("hand_in")
    return render(request, "hand_in.html", {
        "most_bytes": limits.HANDED_IN_FILE_BYTES, "sender_length": handed_in.SENDER_LENGTH,
    })


def _hand_in_limit(_request):
    return limits.HANDED_IN_FILE_BYTES + settings.BODY_LIMIT if handed_in.is_open() else 0


hand_in.body_limit = _hand_in_limit


def _receive(request):
    file = request.FILES.get("fichier")
    if getattr(request, "disk_is_full", False):
        messages.error(request, _DISK_IS_FULL)
        return
    if not file:
        messages.error(request, "Aucun fichier n'a été choisi.")
        return
    try:
        name = handed_in.receive(file, request.POST.get("nom", ""))
        messages.success(request, f"«\xa0{name}\xa0» a bien été remis. Merci\xa0!")
    except handed_in.Refused as reason:
        messages.error(request, f"Ce fichier n'a pas été remis\xa0: {reason}.")
    except OSError as error:
        messages.error(request, f"Ce fichier n'a pas été remis\xa0: {resources.cause(error)}.")


@require_http_methods(["GET", "HEAD", "POST"])
@staff_member_required
def open_hand_in(request):
    """Open the handing in for visitors, or close it."""
    if request.method == "POST":
        try:
            handed_in.set_open(request.POST.get("ouverte") == "oui")
        except OSError as error:
            messages.error(request, f"Rien n'a changé\xa0: {resources.cause(error)}.")
    return redirect("index")


@require_safe
@staff_member_required
def list_handed_in(request):
    """What visitors have handed in, the latest first."""
    files = [(name, status) for name in handed_in.FOLDER.names()
             if (status := handed_in.FOLDER.status(name))]
    files.sort(key=lambda file: file[1].st_mtime, reverse=True)
    return render(request, "handed_in.html", {
        "hand_in_is_open": handed_in.is_open(),
        "files": [(name, *handed_in.parts(name), status.st_size,
                   datetime.fromtimestamp(status.st_mtime, timezone.utc))
                  for name, status in files],
    })


@require_safe
@staff_member_required
def download_handed_in(request, name):
    """One file that has been handed in."""
    return _given(request, _opened(handed_in.FOLDER, name), name)
