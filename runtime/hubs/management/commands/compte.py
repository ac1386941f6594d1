"""Creates an account of the network. Its password is the first line of standard input.

Why an account was refused stands on standard error, in French, a reason a line.
"""

import sys

from django.contrib.auth import get_user_model, password_validation
from django.core.exceptions import ValidationError
from django.core.management.base import BaseCommand
from django.db import DatabaseError, transaction
from django.utils import translation

ROLES = {
    "super": {"is_superuser": True, "is_staff": True},
    "standard": {"is_staff": True},
    "invite": {},
}
FAILED = 1
PASSWORD_REFUSED = 3
PSEUDONYM_REFUSED = 4


class Command(BaseCommand):
    help = "Crée un compte ; son mot de passe est lu sur l'entrée standard"

    def add_arguments(self, parser):
        parser.add_argument("role", choices=ROLES)
        parser.add_argument("pseudo")
        parser.add_argument("nom", nargs="?", default="")

    def handle(self, *, role, pseudo, nom, **options):
        # Refusals are read by a person, whatever language the session has.
        with translation.override("fr"):
            try:
                self.make(role, pseudo, nom)
            except DatabaseError:
                self.refuse(["La base de données du réseau n'est pas prête."], FAILED)

    def refuse(self, reasons, status):
        # A CommandError would put its own name first.
        self.stderr.write("\n".join(reasons))
        sys.exit(status)

    def make(self, role, pseudo, nom):
        model = get_user_model()
        *first, last = nom.split() or [""]
        user = model(
            username=model.normalize_username(pseudo),
            first_name=" ".join(first)[:model._meta.get_field("first_name").max_length],
            last_name=last[:model._meta.get_field("last_name").max_length], **ROLES[role])
        password = sys.stdin.readline().rstrip("\n")
        with transaction.atomic():
            try:
                user.full_clean(exclude=["password"])
            except ValidationError as error:
                self.refuse(error.messages, PSEUDONYM_REFUSED)
            try:
                password_validation.validate_password(password, user)
            except ValidationError as error:
                self.refuse(error.messages, PASSWORD_REFUSED)
            user.set_password(password)
            user.save()
