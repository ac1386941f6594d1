#!/usr/bin/python3
"""Makes a project from the network template, runs its real server and asks it for everything."""

import ast
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
from urllib.parse import quote, urlencode

TEMPLATE = Path(__file__).resolve().parent.parent / "runtime"
ENVIRONMENT = {**os.environ, "PATH": "/usr/bin:/bin", "PYTHONDONTWRITEBYTECODE": "1"}


class TemplateTest(unittest.TestCase):
    def run_in(self, directory, *command):
        subprocess.run(command, cwd=directory, env=ENVIRONMENT, check=True,
                       stdout=subprocess.DEVNULL)

    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.project = Path(directory.name) / "Atelier"
        self.offered = self.project / "Atelier" / "ressources"
        self.run_in(directory.name, "django-admin", "startproject", "Atelier")
        self.run_in(TEMPLATE, "cp", "-r", "settings.py", "urls.py", "hubs", "ressources",
                    "templates", "static", self.project / "Atelier")
        self.settings = self.project / "Atelier" / "settings.py"
        (self.project / "nom.txt").write_text("L'été, 5 € – Łódź\n", "utf-8")
        self.cookies = {}

    def start_server(self):
        with socket.socket() as probe:
            probe.bind(("127.0.0.1", 0))
            self.port = probe.getsockname()[1]
        server = subprocess.Popen(
            ["python3", "manage.py", "runserver", f"127.0.0.1:{self.port}"], cwd=self.project,
            env=ENVIRONMENT, start_new_session=True, stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL)
        self.addCleanup(server.wait)
        self.addCleanup(os.killpg, server.pid, signal.SIGKILL)
        deadline = time.monotonic() + 60
        while time.monotonic() < deadline and server.poll() is None:
            try:
                return self.ask("/", method="HEAD")
            except ConnectionError:
                time.sleep(0.1)
        return self.fail("the server does not answer")

    def ask(self, path, body=None, kind="", method=None):
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=60)
        self.addCleanup(connection.close)
        cookies = "; ".join(f"{name}={value}" for name, value in self.cookies.items())
        connection.request(method or ("POST" if body else "GET"), path, body,
                           {"Cookie": cookies, "Content-Type": kind})
        answer = connection.getresponse()
        for cookie in answer.headers.get_all("Set-Cookie", ()):
            self.cookies.update([cookie.split(";")[0].split("=", 1)])
        return answer.status, answer.headers, answer.read()

    def send(self, name, content):
        part = "--B\r\nContent-Disposition: form-data; name="
        body = (f'{part}"csrfmiddlewaretoken"\r\n\r\n{self.cookies.get("csrf_Atelier", "")}\r\n'
                f'{part}"fichiers"; filename="{name}"\r\n\r\n{content}\r\n--B--\r\n')
        return self.ask("/depot/", body.encode(), "multipart/form-data; boundary=B")

    def test_visitors(self):
        (self.offered / "dossier").mkdir()
        for name in (".cache.txt", "Été 100% #1?.txt", "a\nb.txt", "dossier/x.txt", "\udce9.txt"):
            (self.offered / name).write_text("contenu")
        (self.offered / "lien.txt").symlink_to(self.settings)
        self.assertEqual(self.start_server()[0], 200)  # the database does not exist yet
        page = self.ask("/")[2].decode()
        self.assertIn("<h1>L&#x27;été, 5 € – Łódź</h1>", page)
        offered = re.findall('href="(/ressources/[^"]*)"', page)
        self.assertEqual(offered, ["/ressources/Bienvenue.txt",
                                   "/ressources/" + quote("Été 100% #1?.txt")])
        for path, header, value, body in [
                (offered[1], "Content-Disposition", "attachment; filename", b"contenu"),
                (offered[1], "X-Content-Type-Options", "nosniff", b"contenu"),
                ("/", "Content-Security-Policy", "default-src 'self'", page.encode()),
                ("/", "X-Frame-Options", "DENY", page.encode()),
                ("/_infos/kl/", "Content-Type", "text/plain; charset=ISO-8859-1",
                 b"L'\xe9t\xe9, 5 EUR - L\xf3dz")]:
            status, headers, received = self.ask(path)
            self.assertEqual((status, received), (200, body))
            self.assertEqual(headers[header][:len(value)], value)
        for path, expected in [
                ("/static/style.css", 200), ("/static/admin/css/base.css", 200), ("/admin/", 302),
                ("/static/../settings.py", 400), ("/static/%2e%2e/settings.py", 400),
                ("/settings.py", 404), ("/db.sqlite3", 404), ("/secret_key", 404),
                *((f"/ressources/{name}", 404) for name in (
                    "", ".", "..", "../settings.py", "%2e%2e/settings.py", "..%2fsettings.py",
                    "%00", "..%5csettings.py", "Bienvenue.txt%00", ".cache.txt", "lien.txt",
                    "%E9.txt", "dossier", "dossier%2fx.txt",
                    "a%0Ab.txt", quote(str(self.settings), ""), "x" * 300))]:
            self.assertEqual(self.ask(path)[0], expected, path)
        key = self.project / "secret_key"
        self.assertEqual((key.stat().st_mode & 0o777, len(key.read_text())), (0o600, 50))
        for number in range(10000):
            (self.offered / f"{number}.txt").touch()
        page = self.ask("/?page=2")[2].decode()
        self.assertEqual((page.count("/ressources/"), "Page 2 sur 201" in page), (50, True))

    def test_uploads(self):
        manage = ("python3", "manage.py")
        self.run_in(self.project, *manage, "check", "--deploy", "--fail-level", "WARNING")
        self.run_in(self.project, *manage, "migrate", "--verbosity", "0")
        for status, words, password in [
                (0, ("standard", "--", "zoé", "Zoé de Łódź"), "un mot de passe"),
                (0, ("super", "x"), "un mot de passe"), (0, ("invite", "hôte"), "un autre mot"),
                (4, ("super", "zoé"), "un mot de passe"), (4, ("super", "a b"), "un mot de passe"),
                (4, ("super", "a" * 151), "un mot de passe"), (4, ("super", ""), "un mot de passe"),
                (3, ("super", "ab"), ""), (3, ("super", "marguerite"), "marguerite1"),
                (3, ("super", "ab", "Marguerite Aubépine"), "aubépine1")]:
            refused = subprocess.run((*manage, "compte", *words), cwd=self.project, text=True,
                                     env=ENVIRONMENT, input=f"{password}\n", capture_output=True)
            self.assertEqual(refused.returncode, status, refused.stderr)
            self.assertRegex(refused.stderr, r"\A(([A-Z«][^\n]*\.\n)+)?\Z")
            self.assertEqual(bool(refused.stderr), status != 0)
        accounts = subprocess.run(
            (*manage, "shell", "-c", "from django.contrib.auth.models import User; print(list("
             "User.objects.values_list('username', 'first_name', 'last_name', 'is_staff',"
             " 'is_superuser')))"), cwd=self.project, env=ENVIRONMENT, capture_output=True).stdout
        self.assertEqual(ast.literal_eval(accounts.decode().splitlines()[-1]), [
            ("zoé", "Zoé de", "Łódź", True, False), ("x", "", "", True, True),
            ("hôte", "", "", False, False)])
        self.start_server()
        self.assertEqual(self.send("a.txt", "a")[0], 403)
        page = self.ask("/admin/login/")[2].decode()
        answer = self.send("a.txt", "a")
        self.assertEqual((answer[0], answer[1]["Location"]), (302, "/admin/login/?next=/depot/"))
        self.assertEqual(os.listdir(self.offered), ["Bienvenue.txt"])
        token = re.search('csrfmiddlewaretoken" value="(.*?)"', page)[1]
        login = {"csrfmiddlewaretoken": token, "username": "zoé", "password": "un mot de passe"}
        self.ask("/admin/login/", urlencode(login), "application/x-www-form-urlencoded")
        for name, content in [("Été 1.txt", "premier"), ("Été 1.txt", "second"), ("...", "rien"),
                              ("../../.caché.txt", "c")]:
            self.assertEqual(self.send(name, content)[1]["Location"], "/", name)
        self.assertEqual(sorted(os.listdir(self.offered)),
                         ["Bienvenue.txt", "caché.txt", "Été 1.txt"])
        self.assertEqual((self.offered / "Été 1.txt").read_text("utf-8"), "premier")
        self.assertIn("existe déjà : il n&#x27;a pas été remplacé", self.ask("/")[2].decode())


if __name__ == "__main__":
    unittest.main()
