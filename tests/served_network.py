"""A network made from the template and served on a port of this machine, for the tests."""

import contextlib
import os
import re
import shutil
import socket
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

from quick_django import place_template

sys.path.append(str(Path(__file__).resolve().parent.parent / "trial"))
from visitor import Visitor  # noqa: E402  (of the folder that was just added)

ENVIRONMENT = {**os.environ, "PATH": "/usr/bin:/bin", "PYTHONDONTWRITEBYTECODE": "1",
               "DJANGO_SUPERUSER_PASSWORD": "un mot de passe"}

# A hash that takes no time: the trials of the programs make accounts with the real one.
QUICK_HASHER = """
PASSWORD_HASHERS = ["django.contrib.auth.hashers.MD5PasswordHasher"]
"""

# Two commands of manage.py in one process.
PREPARE_DATABASE = """
import os
os.environ["DJANGO_SETTINGS_MODULE"] = "Atelier.settings"
from django.core.management import execute_from_command_line as run
run(["manage.py", "migrate", "--verbosity=0"])
run(["manage.py", "createsuperuser", "--no-input", "--username=zoé", "--email=z@localhost"])
"""


def own_port():
    """Returns a free port that nobody else is going to take: it lies below those from which
    connections leave, and the number of the process sets the tests apart."""
    for port in range(10000 + os.getpid() % 20000, 32768):
        with contextlib.suppress(OSError), socket.socket() as probe:
            probe.bind(("127.0.0.1", port))
            return port
    raise OSError("no free port")


def run_in(directory, *command):
    subprocess.run(command, cwd=directory, env=ENVIRONMENT, check=True, stdout=subprocess.DEVNULL)


class ServedNetworkTest(unittest.TestCase, Visitor):
    @classmethod
    def setUpClass(cls):
        """Make the network that each test gets a copy of, and the database with an account."""
        directory = tempfile.TemporaryDirectory()
        cls.addClassCleanup(directory.cleanup)
        cls.made = Path(directory.name, "Atelier")
        run_in(directory.name, "django-admin", "startproject", "Atelier")
        place_template(cls.made / "Atelier")
        with open(cls.made / "Atelier" / "settings.py", "a", encoding="utf-8") as settings:
            settings.write(QUICK_HASHER)
        whole = shutil.copytree(cls.made, Path(directory.name, "whole"))
        run_in(whole, "python3", "-c", PREPARE_DATABASE)
        cls.accounts = whole / "db.sqlite3"

    def setUp(self):
        Visitor.__init__(self, "127.0.0.1")
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.project = shutil.copytree(self.made, Path(directory.name, "Atelier"))
        self.offered = self.project / "Atelier" / "ressources"
        self.handed_in = self.project / "Atelier" / "depots"
        self.offer("Bienvenue.txt")

    def offer(self, path, content="contenu", seconds_ago=600):
        file = self.offered / path
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(content, "utf-8")
        then = time.time() - seconds_ago
        os.utime(file, (then, then))
        return file

    def open_hand_in(self):
        self.handed_in.mkdir(0o700, exist_ok=True)
        (self.handed_in / ".ouverte").touch()

    def make_account(self):
        shutil.copy(self.accounts, self.project)

    def start_server(self, verbosity=1, address="127.0.0.1", **options):
        self.port = self.port or own_port()
        said = self.project.with_name("server.log")
        with said.open("wb") as log:
            self.server = subprocess.Popen(
                ["python3", "manage.py", "runserver", f"{address}:{self.port}",
                 f"--verbosity={verbosity}"], cwd=self.project, env=ENVIRONMENT,
                start_new_session=True, **{"stdout": log, "stderr": subprocess.STDOUT, **options})
        self.addCleanup(self.end_server)
        deadline = time.monotonic() + 60
        while time.monotonic() < deadline and self.server.poll() is None:
            with socket.socket() as client:
                if client.connect_ex(("127.0.0.1", self.port)) == 0:
                    return
            time.sleep(0.1)
        self.fail(f"the server does not answer: {said.read_text('utf-8')[-1000:]}")

    def end_server(self):
        self.server.terminate()
        try:
            self.server.wait(20)
        except subprocess.TimeoutExpired:
            self.server.kill()
            self.server.wait()

    def bound(self, name, value):
        file = self.project / "Atelier" / "hubs" / "limits.py"
        file.write_text(re.sub(f"(?m)^{name} = .*", f"{name} = {value}", file.read_text("utf-8")))

    def log_in(self, account, password="un mot de passe"):
        status, _, page = super().log_in(account, password)
        return status, "Attendez une minute" in page.decode()
