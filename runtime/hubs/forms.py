"""The log-in form."""

import threading

from django.contrib.admin.forms import AdminAuthenticationForm
from django.core.exceptions import ValidationError

from . import limits
from .login_tries import LoginTries

_tries = LoginTries()
_checking = threading.BoundedSemaphore(limits.LOGINS_AT_ONCE)


class LoginForm(AdminAuthenticationForm):
    """Logs staff in, and slows down those who guess passwords.

    Tries are counted by account and address together: whoever guesses keeps neither the rest of a
    class behind the same router from its accounts, nor the account's owner from another address,
    the server's own at least.
    """

    error_messages = {
        **AdminAuthenticationForm.error_messages,
        "invalid_login": "Ce compte et ce mot de passe ne vont pas ensemble, ou ce compte n'est "
                         "pas celui d'un responsable.",
        "too_often": "Trop d'essais pour ce compte depuis votre machine. Attendez une minute, puis "
                     "recommencez.",
    }

    def __init__(self, *arguments, **options):
        super().__init__(*arguments, **options)
        self.fields["username"].label = "Pseudo"

    def clean(self):
        account = self.cleaned_data.get("username")
        if not account or not self.cleaned_data.get("password"):
            return super().clean()  # nothing is checked
        address = self.request.META["REMOTE_ADDR"]
        # Counted before the password is checked: tries may come at the same time.
        if _tries.add((address, account)) > limits.LOGIN_TRIES:
            raise ValidationError(self.error_messages["too_often"], code="too_often")
        with _checking:
            cleaned = super().clean()
        _tries.forget((address, account))
        return cleaned
