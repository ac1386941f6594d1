"""The accounts of the network: creates and lists them, changes their passwords, removes them.

A password is the first line of standard input. A list has one account per line: role, pseudonym and
name, separated by tabs. Why something was refused stands on standard error, in French, one reason
per line.
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
    help = ("Crée, liste, change et supprime les comptes ;"
            " un mot de passe est lu sur l'entrée standard")

    def add_arguments(self, parser):
        jobs = {"liste": self.list_all, "mot-de-passe": self.change_password,
                "supprimer": self.remove}
        parser.set_defaults(jobs=jobs)
        parser.add_argument("action", choices=(*ROLES, *jobs), metavar="ACTION",
                            help=", ".join((*ROLES, *jobs)))
        parser.add_argument("pseudo", nargs="?", default="")
        parser.add_argument("nom", nargs="?", default="")

    def handle(self, *, action, pseudo, nom, jobs, **options):
        # Refusals are read by a person, whatever language the session has.
        with translation.override("fr"):
            try:
                with transaction.atomic():
                    if action in ROLES:
                        self.make(action, pseudo, nom)
                    else:
                        jobs[action](pseudo)
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
        try:
            user.full_clean(exclude=["password"])
        except ValidationError as error:
            self.refuse(error.messages, PSEUDONYM_REFUSED)
        self.give_password(user)

    def give_password(self, user):
        password = sys.stdin.readline().rstrip("\n")
        try:
            password_validation.validate_password(password, user)
        except ValidationError as error:
            self.refuse(error.messages, PASSWORD_REFUSED)
        user.set_password(password)
        user.save()

    def find(self, pseudo):
        try:
            return get_user_model().objects.get(username=pseudo)
        except get_user_model().DoesNotExist:
            self.refuse([f"Le compte « {pseudo} » n'existe pas."], PSEUDONYM_REFUSED)

    def list_all(self, _pseudo):
        for user in get_user_model().objects.order_by("username"):
            role = "super" if user.is_superuser else "standard" if user.is_staff else "invite"
            name = " ".join(user.get_full_name().split())
            self.stdout.write(f"{role}\t{user.username}\t{name}")

    def change_password(self, pseudo):
        self.give_password(self.find(pseudo))

    def remove(self, pseudo):
        user = self.find(pseudo)
        others = get_user_model().objects.exclude(pk=user.pk)
        if user.is_superuser and not others.filter(is_superuser=True, is_active=True).exists():
            self.refuse([f"« {pseudo} » est le dernier super-utilisateur du réseau : il n'est pas"
                         " supprimé."], PSEUDONYM_REFUSED)
        user.delete()
