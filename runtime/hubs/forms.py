"""The form of logging in."""

from hashlib import sha256

from django.contrib.admin.forms import AdminAuthenticationForm
from django.core.cache import cache
from django.core.exceptions import ValidationError

from . import limits


class LoginForm(AdminAuthenticationForm):
    """Logs staff in; slow to those who guess.

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

    def clean(self):
        account = self.cleaned_data.get("username", "")
        key = sha256(f"{self.request.META['REMOTE_ADDR']} {account}".encode()).hexdigest()
        # Counted before the password is looked at: tries may come at the same time.
        cache.add(key, 0, limits.LOGIN_PAUSE)
        try:
            tries = cache.incr(key)
        except ValueError:  # the pause has ended this very moment
            tries = 1
        if tries > limits.LOGIN_TRIES:
            raise ValidationError(self.error_messages["too_often"], code="too_often")
        cleaned = super().clean()
        if self.get_user():  # a form without a password is not looked at either
            cache.delete(key)
        return cleaned
