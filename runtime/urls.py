"""The addresses of a network's pages."""

from django.contrib import admin
from django.contrib.staticfiles.views import serve
from django.urls import path
from django.utils.functional import lazy
from django.views.generic import RedirectView

from .hubs import handed_in, resources, views, visitors
from .hubs.forms import LoginForm

admin.site.site_header = admin.site.site_title = lazy(views.network_name, str)()
admin.site.login_form = LoginForm
admin.site.login_template = "login.html"

OFFERED = {"folder": resources.OFFERED, "back": "index"}
HANDED_IN = {"folder": handed_in.FOLDER, "back": "handed_in"}

urlpatterns = [
    path("", views.index, name="index"),
    path("adresse/", views.address, name="address"),
    path("ressources/<path:path>/", views.folder_page, name="folder"),
    path("ressources/<path:path>", views.download, name="download"),
    path("archives/<path:path>.zip", views.folder_archive, name="folder_archive"),
    path("remplacer/<path:path>", views.replace, name="replace"),
    path("supprimer/<path:name>", views.remove, OFFERED, name="remove"),
    path("depot/", views.upload, name="upload"),
    path("remettre/", views.hand_in, name="hand_in"),
    path("peut-envoyer/<str:method>/<path:page>", views.may_send),
    path("remettre/ouverture/", views.open_hand_in, name="open_hand_in"),
    path("remis/", views.list_handed_in, name="handed_in"),
    path(f"remis/{handed_in.ARCHIVE}", views.handed_in_archive, name="handed_in_archive"),
    path("remettre/vider/", views.remove_all_handed_in, name="remove_all_handed_in"),
    path("remis/<str:name>", views.download_handed_in, name="download_handed_in"),
    path("remis/<str:name>/retirer", views.remove, HANDED_IN, name="remove_handed_in"),
    path("favicon.ico", RedirectView.as_view(url="/static/logo.svg")),  # for files that are shown
    path("_infos/kl/", views.display_name),
    path("_infos/etat/", visitors.state),
    path("admin/logout/", views.log_out),
    path("admin/", admin.site.urls),
    # Debug mode is off for the sake of error pages; files are sent from here all the same.
    path("static/<path:path>", serve, {"insecure": True}),
]
