"""The pages of a network."""

import os
import stat
from datetime import datetime, timezone
from urllib.parse import urlencode

from django.conf import settings
from django.contrib import admin, messages
from django.http import Http404, HttpResponse
from django.shortcuts import redirect, render
from django.urls import reverse
from django.views.decorators.http import require_http_methods, require_safe

from . import (addresses, archives, file_names, handed_in, limits, lists, mdns, names, resources,
               shown, uploads)
from .page_cache import same_for_visitors
from .refusals import staff_only
from .transfers import send_file

_DISK_IS_FULL = "Le disque du serveur est presque plein\xa0: rien n'a été enregistré."


def network_name():
    """The network's name, as pages show it."""
    return names.display_name()


@require_safe
@same_for_visitors
def index(request):
    """The landing page. A visitor without a session needs no database for it."""
    return render(request, "index.html", {
        **lists.context(request),
        "network_name": network_name(),
        "spare_bytes": uploads.spare_bytes,
        "most_files": upload.most_files,
        "hand_in_is_open": handed_in.is_open(),
        "handed_in": handed_in.FOLDER.names,
    })


@require_safe
def display_name(_request):
    """The display name for the clients, which read it byte by byte as ISO-8859-1."""
    return HttpResponse(names.latin_1_name(),
                        content_type="text/plain; charset=ISO-8859-1")


@require_safe
def address(request):
    """The network's address in large letters, to be projected in a room."""
    shown = addresses.visitors_address(request)
    return render(request, "address.html", {
        "network_name": network_name(),
        "address": shown,
        "is_local": addresses.is_local(shown),
        "names": mdns.held_names(),
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


def _file_answer(request, file, name):
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
    return _file_answer(request, file, os.path.basename(path))


def _named(files):
    shown = [file if len(file) <= 60 else f"{file[:59]}…" for file in files[:3]]
    more = len(files) - len(shown)
    return (", ".join(f"«\xa0{file}\xa0»" for file in shown)
            + (f" et {more} autre{'s' if more > 1 else ''}" if more > 0 else ""))


def _tell(request, level, files, one, several):
    """Add a message: the names of the files, and what is said of one, or of several."""
    if files:
        messages.add_message(request, level, f"{_named(files)} {several if files[1:] else one}")


def _sent(request, field):
    """The files that came in the field of a form. Tells why there are none, or not all."""
    if getattr(request, "form_is_cut", False):
        messages.error(request, "L'envoi a été coupé\xa0: rien n'a été enregistré.")
        return []
    if getattr(request, "disk_is_full", False):
        messages.error(request, _DISK_IS_FULL)
        return []
    files = request.FILES.getlist(field)
    if hasattr(request, "no_room"):
        messages.error(request, f"La suite n'a pas été prise\xa0: {request.no_room}.")
        return files
    if getattr(request, "too_many_files", False):
        messages.error(request, f"Pas plus de {len(files)} fichiers à la fois\xa0: les autres "
                                "n'ont pas été pris.")
    elif not files:
        messages.error(request, "Aucun fichier n'a été choisi.")
    return files


def _archive(name, files):
    if not archives.are_possible():
        raise Http404
    return archives.answer(name, files)


def _in_archive(path):
    outer = len(path) - len(os.path.basename(path))
    for entry in resources.OFFERED.walk(path):
        status = None if entry.is_folder else resources.OFFERED.status(entry.path)
        if status and not resources.is_being_copied(status):
            yield resources.OFFERED.location(entry.path), entry.path[outer:]


@require_safe
def folder_archive(_request, path):
    """An offered folder with all that is in it, as one zip."""
    try:
        resources.OFFERED.listing(path)
    except OSError as error:
        raise Http404 from error
    return _archive(f"{os.path.basename(path)}.zip", _in_archive(path))


@require_http_methods(["GET", "HEAD", "POST"])
@staff_only
def upload(request):
    """Take new files into the folder of offered files; those that are there stay as they are."""
    if request.method != "POST":  # a log-in that had run out leads here
        return redirect("index")
    kept, there, unfit, failed = [], [], [], {}
    for file in _sent(request, "fichiers"):
        name = file_names.clean(file.name)
        try:
            if not name:
                unfit.append(file.name)
                continue
            resources.OFFERED.keep(name, file)
            kept.append(name)
        except FileExistsError:
            there.append(name)
        except OSError as error:
            failed.setdefault(resources.cause(error), []).append(name)
    _tell(request, messages.SUCCESS, kept, "est maintenant proposé.", "sont maintenant proposés.")
    _tell(request, messages.ERROR, there, "existe déjà\xa0: il n'a pas été remplacé.",
          "existent déjà\xa0: ils n'ont pas été remplacés.")
    _tell(request, messages.ERROR, unfit, "n'est pas un nom qui convient.",
          "ne sont pas des noms qui conviennent.")
    for cause, lost in failed.items():
        _tell(request, messages.ERROR, lost, f"n'a pas pu être enregistré\xa0: {cause}.",
              f"n'ont pas pu être enregistrés\xa0: {cause}.")
    return redirect("index")


upload.most_files = limits.OFFERED_AT_ONCE


def _list_address(page, path):
    """The address of the list that a file is in: a page, or an offered folder's."""
    folder = os.path.dirname(path)
    return reverse("folder", args=[folder]) if folder else reverse(page)


@require_http_methods(["GET", "HEAD", "POST"])
@staff_only
def remove(request, name, folder, back):
    """Remove a file of the folder, after a question."""
    if not folder.has_file(name):
        raise Http404
    file, list_address = os.path.basename(name), _list_address(back, name)
    if request.method != "POST":
        return render(request, "remove.html", {"name": file, "back": list_address})
    try:
        folder.remove(name)
        messages.success(request, f"«\xa0{file}\xa0» a été supprimé.")
    except OSError as error:
        messages.error(request, f"«\xa0{file}\xa0» n'a pas pu être supprimé\xa0: "
                                f"{resources.cause(error)}.")
    return redirect(list_address)


@require_http_methods(["GET", "HEAD", "POST"])
@staff_only
def replace(request, path):
    """Put a new file in the place of an offered one, whole or not at all."""
    if not resources.OFFERED.has_file(path):
        raise Http404
    name, extension = os.path.basename(path), os.path.splitext(path)[1]
    if request.method != "POST":
        return render(request, "replace.html", {
            "name": name, "extension": extension, "back": _list_address("index", path),
            "spare_bytes": uploads.spare_bytes()})
    for file in _sent(request, "fichier")[:1]:
        if os.path.splitext(file.name)[1].lower() != extension.lower():
            wanted = f"en «\xa0{extension}\xa0»" if extension else "sans extension"
            messages.error(request, f"«\xa0{name}\xa0» n'a pas été remplacé\xa0: le nouveau "
                                    f"fichier doit avoir un nom {wanted}.")
            break
        try:
            resources.OFFERED.replace(path, file)
            messages.success(request, f"«\xa0{name}\xa0» a été remplacé.")
        except OSError as error:
            messages.error(request, f"«\xa0{name}\xa0» n'a pas été remplacé\xa0: "
                                    f"{resources.cause(error)}.")
    return redirect(_list_address("index", path))


@require_safe
def may_send(request, method, page):
    """Tells a reverse proxy whether to take the body of a request: 204 or 403, without content."""
    allowed = (method != "POST" or request.user.is_staff
               or page.startswith("remettre/") and handed_in.is_open())
    return HttpResponse(status=204 if allowed else 403)


@require_http_methods(["GET", "HEAD", "POST"])
def hand_in(request):
    """Take a file from a visitor without an account, where staff has opened that."""
    if not handed_in.is_open():
        return render(request, "hand_in_closed.html", status=403)
    if request.method == "POST":
        return _receive(request)
    return render(request, "hand_in.html", {
        "most_bytes": limits.HANDED_IN_FILE_BYTES, "most_files": limits.HANDED_IN_AT_ONCE,
        "sender_length": handed_in.SENDER_LENGTH,
        "sender": request.GET.get("nom", "")[:handed_in.SENDER_LENGTH],
    })


def _hand_in_limit(_request):
    return limits.HANDED_IN_FILE_BYTES + settings.BODY_LIMIT if handed_in.is_open() else 0


hand_in.body_limit = _hand_in_limit
hand_in.most_files = limits.HANDED_IN_AT_ONCE
hand_in.hand_in = handed_in.hand_in_of


def _receive(request):
    sender = request.POST.get("nom", "")
    kept, refused = [], {}
    for file in _sent(request, "fichier"):
        try:
            kept.append(handed_in.receive(file, sender, request.META["REMOTE_ADDR"]))
        except handed_in.Refused as reason:
            refused.setdefault(str(reason), []).append(file.name)
        except OSError as error:
            refused.setdefault(resources.cause(error), []).append(file.name)
    _tell(request, messages.SUCCESS, kept, "a bien été remis. Merci\xa0!",
          "ont bien été remis. Merci\xa0!")
    for reason, files in refused.items():
        _tell(request, messages.ERROR, files, f"n'a pas été remis\xa0: {reason}.",
              f"n'ont pas été remis\xa0: {reason}.")
    # The name stays in the form for the next files.
    again = f"?{urlencode({'nom': sender[:handed_in.SENDER_LENGTH]})}" if sender else ""
    return redirect(reverse("hand_in") + again)


@require_http_methods(["GET", "HEAD", "POST"])
@staff_only
def open_hand_in(request):
    """Open the handing in for visitors, or close it."""
    if request.method == "POST":
        try:
            handed_in.set_open(request.POST.get("ouverte") == "oui")
        except OSError as error:
            messages.error(request, f"Rien n'a changé\xa0: {resources.cause(error)}.")
    return redirect("index")


@require_safe
@staff_only
def list_handed_in(request):
    """What visitors have handed in, the latest first."""
    return render(request, "handed_in.html", {
        "hand_in_is_open": handed_in.is_open(),
        "can_archive": archives.are_possible(),
        "files": [(name, *handed_in.parts(name), status.st_size,
                   datetime.fromtimestamp(status.st_mtime, timezone.utc))
                  for name, status in handed_in.files()],
    })


@require_safe
@staff_only
def handed_in_archive(_request):
    """All that has been handed in, as one zip."""
    return _archive("Fichiers remis.zip", handed_in.in_archive())


@require_http_methods(["GET", "HEAD", "POST"])
@staff_only
def remove_all_handed_in(request):
    """Remove all that had been handed in when the question was asked."""
    if request.method != "POST":
        files = handed_in.files()
        return render(request, "remove_all.html", {
            "files": len(files), "until": files[0][1].st_ctime_ns if files else 0})
    try:
        until = request.POST.get("jusqu_a", "")
        number = handed_in.remove_until(int(until) if until.isdecimal() else 0)
        messages.success(request, f"{number} fichier{'s' if number > 1 else ''} supprimé"
                                  f"{'s' if number > 1 else ''}.")
    except OSError as error:
        messages.error(request, "Tout n'a pas pu être supprimé\xa0: "
                                f"{resources.cause(error)}.")
    return redirect("handed_in")


@require_safe
@staff_only
def download_handed_in(request, name):
    """One file that has been handed in."""
    return _file_answer(request, _opened(handed_in.FOLDER, name), name)


@require_http_methods(["GET", "HEAD", "POST"])
def log_out(request):
    """Log out, by a button: a link or a picture of some page must not do it."""
    if request.method == "POST":
        return admin.site.logout(request)
    return render(request, "logout.html") if request.user.is_staff else redirect("index")
