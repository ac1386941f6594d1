"""Commands that copy what Django made once, for tests of what becomes of it: Django itself takes a
second and a half of processor time for each network."""

import shutil
import subprocess
from pathlib import Path

RUNTIME = Path(__file__).resolve().parent.parent / "runtime"
PARTS = ("settings.py", "urls.py", "hubs", "ressources", "templates", "static")
COMMANDS = {
    # startproject NAME
    "django-admin": """/bin/cp -rT '{0}/made' "$2" && mv "$2/made" "$2/$2" &&
exec sed -i "s/made/$2/g" "$2/manage.py" "$2/$2"/*.py""",
    # manage.py migrate, which leaves a restored database and key; all others go to Python
    "python3": """[ "$2" != migrate ] || [ -e db.sqlite3 ] ||
    exec /bin/cp '{0}/whole/db.sqlite3' '{0}/whole/secret_key' .
exec /usr/bin/python3 "$@\"""",
}


def place_template(directory):
    directory.mkdir(exist_ok=True)
    for part in PARTS:
        copy = shutil.copytree if (RUNTIME / part).is_dir() else shutil.copy
        copy(RUNTIME / part, directory / part)


def make_commands(directory):
    """Has Django make a project in the directory. Returns the paths of the commands."""
    subprocess.run(("django-admin", "startproject", "made"), cwd=directory, check=True)
    whole = shutil.copytree(directory / "made", directory / "whole")
    place_template(whole / "made")
    subprocess.run(("/usr/bin/python3", "manage.py", "migrate", "--verbosity", "0"), cwd=whole,
                   check=True)
    for name, script in COMMANDS.items():
        (directory / name).write_text(f"#!/bin/sh\n{script.format(directory)}\n")
        (directory / name).chmod(0o755)
    return [directory / name for name in COMMANDS]
