"""Why a form was not taken, with the way back to it."""

from functools import wraps

from django.contrib.admin.views.decorators import staff_member_required
from django.shortcuts import render


def too_large(request, view):
    """The page for a body that is refused unread, for its size. Where a form is for staff alone,
    their log-in has ended."""
    if getattr(view, "for_staff", False):
        return session_ended(request)
    return render(request, "413.html", status=413)


def session_ended(request):
    """The page for staff whose log-in has ended while a form was open."""
    return render(request, "session_ended.html", status=403)


def form_refused(request, **_reason):
    """The page for a form whose token does not fit, or did not come for the sending broke off."""
    has_nothing = request.content_type == "application/x-www-form-urlencoded" and not request.POST
    if has_nothing or getattr(request, "form_is_cut", False):
        return render(request, "form_cut.html", status=400)
    return render(request, "403_csrf.html", status=403)


def staff_only(view):
    """Let staff alone use the view. Others who ask for it are led to the log-in."""
    protected = staff_member_required(view)

    @wraps(view)
    def checked(request, *args, **kwargs):
        if request.method == "POST" and not request.user.is_staff:
            return session_ended(request)
        return protected(request, *args, **kwargs)
    checked.for_staff = True
    return checked
