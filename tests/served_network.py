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

from quick_django import QUICK_DJANGO

sys.path.append(str(Path(__file__).resolve().parent.parent / "trial"))
from visitor import Visitor  # noqa: E402  (of the folder that was just added)

ENVIRONMENT = {**os.environ, "PATH": "/usr/bin:/bin", "PYTHONDONTWRITEBYTECODE": "1"}


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
    def setUp(self):
        Visitor.__init__(self, "127.0.0.1")
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.project = shutil.copytree(QUICK_DJANGO / "Atelier", Path(directory.name, "Atelier"),
                                       ignore=shutil.ignore_patterns("db.sqlite3", "secret_key"))
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
        shutil.copy(QUICK_DJANGO / "Atelier/db.sqlite3", self.project)

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
