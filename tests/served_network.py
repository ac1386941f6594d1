"""A network made from the template and served on a port of this machine, for the tests."""

import http.client
import os
import re
import signal
import socket
import subprocess
import tempfile
import time
import unittest
from pathlib import Path
from urllib.parse import urlencode

TEMPLATE = Path(__file__).resolve().parent.parent / "runtime"
ENVIRONMENT = {**os.environ, "PATH": "/usr/bin:/bin", "PYTHONDONTWRITEBYTECODE": "1",
               "DJANGO_SUPERUSER_PASSWORD": "un mot de passe"}


class ServedNetworkTest(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.project = Path(directory.name) / "Atelier"
        self.offered = self.project / "Atelier" / "ressources"
        self.handed_in = self.project / "Atelier" / "depots"
        self.cookies, self.address = {}, "127.0.0.1"
        self.run_in(directory.name, "django-admin", "startproject", "Atelier")
        self.run_in(TEMPLATE, "cp", "-a", "settings.py", "urls.py", "hubs", "ressources",
                    "templates", "static", self.project / "Atelier")
        self.offer("Bienvenue.txt")

    def run_in(self, directory, *command):
        subprocess.run(command, cwd=directory, env=ENVIRONMENT, check=True,
                       stdout=subprocess.DEVNULL)

    def offer(self, path, content="contenu", seconds_ago=600):
        file = self.offered / path
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(content, "utf-8")
        then = time.time() - seconds_ago
        os.utime(file, (then, then))
        return file

    def manage(self, *arguments):
        self.run_in(self.project, "python3", "manage.py", *arguments)

    def make_account(self):
        self.manage("migrate", "--verbosity", "0")
        self.manage("createsuperuser", "--no-input", "--username", "zoé", "--email", "z@localhost")

    def start_server(self):
        with socket.socket() as probe:
            probe.bind(("127.0.0.1", 0))
            self.port = probe.getsockname()[1]
        self.server = subprocess.Popen(
            ["python3", "manage.py", "runserver", f"127.0.0.1:{self.port}"], cwd=self.project,
            env=ENVIRONMENT, start_new_session=True, stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL)
        self.addCleanup(self.server.wait)
        self.addCleanup(os.killpg, self.server.pid, signal.SIGKILL)
        deadline = time.monotonic() + 60
        while time.monotonic() < deadline and self.server.poll() is None:
            with socket.socket() as client:
                if client.connect_ex(("127.0.0.1", self.port)) == 0:
                    return
            time.sleep(0.1)
        self.fail("the server does not answer")

    def ask(self, path, body=None, kind="", method=None, **headers):
        connection = http.client.HTTPConnection("127.0.0.1", self.port, 60, (self.address, 0))
        self.addCleanup(connection.close)
        cookies = "; ".join(f"{name}={value}" for name, value in self.cookies.items())
        connection.request(method or ("POST" if body else "GET"), path, body, {
            "Cookie": cookies, "Content-Type": kind,
            "X-Real-IP": os.urandom(8).hex(),  # which nobody may choose himself
            **{name.replace("_", "-"): value for name, value in headers.items()}})
        answer = connection.getresponse()
        for cookie in answer.headers.get_all("Set-Cookie", ()):
            self.cookies.update([cookie.split(";")[0].split("=", 1)])
        return answer.status, answer.headers, answer.read()

    def send(self, name, content, path="/depot/", field="fichiers"):
        part = "--B\r\nContent-Disposition: form-data; name="
        body = (f'{part}"csrfmiddlewaretoken"\r\n\r\n{self.cookies.get("csrf_Atelier", "")}\r\n'
                f'{part}"{field}"; filename="{name}"\r\n\r\n{content}\r\n--B--\r\n')
        return self.ask(path, body.encode(), "multipart/form-data; boundary=B")

    def bound(self, name, value):
        file = self.project / "Atelier" / "hubs" / "limits.py"
        file.write_text(re.sub(f"(?m)^{name} = .*", f"{name} = {value}", file.read_text("utf-8")))

    def log_in(self, account, password):
        token = re.search('csrfmiddlewaretoken" value="(.*?)"', self.ask("/admin/login/")[2].decode())
        login = {"csrfmiddlewaretoken": token[1], "username": account, "password": password}
        answer = self.ask("/admin/login/", urlencode(login), "application/x-www-form-urlencoded")
        return answer[0], "Attendez une minute" in answer[2].decode()
