#!/usr/bin/python3
"""Usage: quick_django.py PROGRAMS. Has Django make a network once, for the tests of what becomes of
networks: Django itself takes a second of processor time for each.

The build calls it. In the directory tests/quick_django of PROGRAMS it leaves the network Atelier,
with an account in its database, and two commands that copy what Django made.
"""

import os
import shutil
import subprocess
import sys
from pathlib import Path

RUNTIME = Path(__file__).resolve().parent.parent / "runtime"
PARTS = ("settings.py", "urls.py", "hubs", "ressources", "templates", "static")
PROGRAMS = Path(sys.argv.pop()).resolve()
QUICK_DJANGO = PROGRAMS / "tests/quick_django"
COMMANDS = {
    # startproject NAME
    "django-admin": """/bin/cp -rT '{0}/made' "$2" && mv "$2/made" "$2/$2" &&
exec sed -i "s/made/$2/g" "$2/manage.py" "$2/$2"/*.py""",
    # manage.py migrate, which leaves a restored database and key; all others go to Python
    "python3": """[ "$2" != migrate ] || [ -e db.sqlite3 ] ||
    exec /bin/cp '{0}/empty/db.sqlite3' '{0}/empty/secret_key' .
exec /usr/bin/python3 "$@\"""",
}

# A hash that takes no time: the trials of the programs make accounts with the real one.
QUICK_HASHER = """
PASSWORD_HASHERS = ["django.contrib.auth.hashers.MD5PasswordHasher"]
"""

# Two commands of manage.py in one process.
PREPARE_DATABASE = """
import os, shutil
os.environ["DJANGO_SETTINGS_MODULE"] = "Atelier.settings"
from django.core.management import execute_from_command_line as run
run(["manage.py", "migrate", "--verbosity=0"])
for name in ("db.sqlite3", "secret_key"):
    shutil.copy(name, "../empty")
run(["manage.py", "createsuperuser", "--no-input", "--username=zoé", "--email=z@localhost"])
"""


def place_template(directory):
    directory.mkdir(exist_ok=True)
    for part in PARTS:
        copy = shutil.copytree if (RUNTIME / part).is_dir() else shutil.copy
        copy(RUNTIME / part, directory / part)


def copy_commands(directory):
    for name in COMMANDS:
        shutil.copy(QUICK_DJANGO / name, directory)


def make(*command, cwd=QUICK_DJANGO):
    subprocess.run(command, cwd=cwd, check=True, stdout=subprocess.DEVNULL, env={
        **os.environ, "PATH": "/usr/bin:/bin", "DJANGO_SUPERUSER_PASSWORD": "un mot de passe"})


def main():
    shutil.rmtree(QUICK_DJANGO, ignore_errors=True)
    (QUICK_DJANGO / "empty").mkdir(parents=True)
    make("django-admin", "startproject", "made")
    for name, script in COMMANDS.items():
        (QUICK_DJANGO / name).write_text(f"#!/bin/sh\n{script.format(QUICK_DJANGO)}\n")
        (QUICK_DJANGO / name).chmod(0o755)
    network = QUICK_DJANGO / "Atelier"
    make("./django-admin", "startproject", network.name)
    place_template(network / network.name)
    with open(network / network.name / "settings.py", "a", encoding="utf-8") as settings:
        settings.write(QUICK_HASHER)
    make("/usr/bin/python3", "-Bc", PREPARE_DATABASE, cwd=network)
    (QUICK_DJANGO / "complete").touch()


if __name__ == "__main__":
    main()
