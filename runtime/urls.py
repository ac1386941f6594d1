"""The addresses of a network's pages."""

from django.contrib import admin
from django.contrib.staticfiles.views import serve
from django.urls import path
from django.utils.functional import lazy

from .hubs import views

admin.site.site_header = admin.site.site_title = lazy(views.network_name, str)()

urlpatterns = [
    path("", views.index, name="index"),
    path("ressources/<str:name>", views.download, name="download"),
    path("depot/", views.upload, name="upload"),
    path("_infos/kl/", views.display_name),
    path("admin/", admin.site.urls),
    # Debug mode is off, which says no more than that pages show no internals.
    path("static/<path:path>", serve, {"insecure": True}),
]
