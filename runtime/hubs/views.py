"""The pages of a network."""

from django.conf import settings
from django.contrib import messages
from django.contrib.admin.views.decorators import staff_member_required
from django.core.paginator import Paginator
from django.http import FileResponse, Http404, HttpResponse
from django.shortcuts import redirect, render
from django.views.decorators.http import require_POST, require_safe

from . import names, resources
from .kept_pages import same_for_visitors

FILES_PER_PAGE = 50

# Settings of older networks hold their name.
_OLD_NAME = getattr(settings, "NETWORK_NAME", None)


def network_name():
    """The network's name, as pages show it."""
    return names.display_name(otherwise=_OLD_NAME)


@require_safe
@same_for_visitors
def index(request):
    """The landing page. A visitor without a session needs no database for it."""
    page = Paginator(resources.names(), FILES_PER_PAGE).get_page(request.GET.get("page"))
    files = [(name, resources.size(name)) for name in page]
    return render(request, "index.html", {
        "network_name": network_name(), "page": page, "files": files,
    })


@require_safe
def display_name(_request):
    """The display name for the clients, which read it byte by byte as ISO-8859-1."""
    return HttpResponse(names.latin_1_name(otherwise=_OLD_NAME),
                        content_type="text/plain; charset=ISO-8859-1")


@require_safe
def download(_request, name):
    """One offered file."""
    try:
        file = resources.open_offered(name)
    except OSError as error:
        raise Http404 from error
    return FileResponse(file, as_attachment=True, filename=name)


@require_POST
@staff_member_required
def upload(request):
    """Take new files into the folder of offered files; those that are there stay as they are."""
    sent = request.FILES.getlist("fichiers")
    if not sent:
        messages.error(request, "Aucun fichier n'a été choisi.")
    for file in sent:
        name = resources.clean_name(file.name)
        if not name:
            messages.error(request, f"Le nom « {file.name} » ne convient pas.")
            continue
        try:
            resources.keep(name, file.chunks())
            messages.success(request, f"« {name} » est maintenant proposé.")
        except FileExistsError:
            messages.error(request, f"Un fichier « {name} » existe déjà : il n'a pas été remplacé.")
        except OSError as error:
            messages.error(request, f"« {name} » n'a pas pu être enregistré ({error.strerror}).")
    return redirect("index")
