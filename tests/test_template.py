#!/usr/bin/python3
"""Makes a project from the network template, runs its real server and asks it for everything."""

import ast
import http.client
import os
import re
import socket
import subprocess
import unittest
from urllib.parse import quote, urlencode

from served_network import ENVIRONMENT, ServedNetworkTest


class TemplateTest(ServedNetworkTest):
    def setUp(self):
        super().setUp()
        self.settings = self.project / "Atelier" / "settings.py"
        (self.project / "nom.txt").write_text("L'été, 5 € – Łódź؟\n" + "é" * 600, "utf-8")
        self.cookies, self.address = {}, "127.0.0.1"

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

    def test_visitors(self):
        for name in (".cache.txt", "Été 100% #1?.txt", "a\nb.txt", "\udce9.txt"):
            self.offer(name)
        (self.offered / "lien.txt").symlink_to(self.settings)
        self.start_server()  # the database does not exist yet
        page = self.ask("/")[2].decode()
        self.assertIn("<h1>L&#x27;été, 5 € – Łódź؟</h1>", page)
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
                    "%E9.txt", "a%0Ab.txt", quote(str(self.settings), ""), "x" * 300))]:
            self.assertEqual(self.ask(path)[0], expected, path)
        for head, status in [
                ("Transfer-Encoding: chunked\r\n\r\n0", b"411"),
                ("Content-Length: 1\r\nContent-Length: 2", b"400"), ("A: " + "b" * 40000, b"431"),
                ("Expect: 100-continue\r\nContent-Length: 200000", b"413")]:
            with socket.create_connection(("127.0.0.1", self.port), 60) as client:
                client.sendall(f"POST / HTTP/1.1\r\nHost: a\r\n{head}\r\n\r\n".encode())
                self.assertEqual(client.recv(12)[9:], status, head[:40])
        key = self.project / "secret_key"
        self.assertEqual((key.stat().st_mode & 0o777, len(key.read_text())), (0o600, 50))
        for number in range(10000):
            (self.offered / f"{number}.txt").touch()
        (self.project / "nom.txt").write_text("\ufeff\n Neuf", "utf-8")
        self.ask("/")
        page = self.ask("/?page=2")[2].decode()
        self.assertEqual((page.count("/ressources/"), "Page 2 sur 201" in page), (50, True))
        self.assertIn("<h1>Neuf</h1>", page)

    def test_transfers(self):
        film, path = self.offered / "film.bin", "/ressources/film.bin"
        with film.open("wb") as file:
            file.write(b"0123456789")
            file.truncate(5 << 30)
            file.seek(5 << 30)
            file.write(b"end")
        os.utime(film, (10**9, 10**9))
        size = film.stat().st_size
        self.start_server()
        status, headers, body = self.ask(path, method="HEAD")
        self.assertEqual((status, headers["Content-Length"], body), (200, str(size), b""))
        etag, modified = headers["ETag"], headers["Last-Modified"]
        for asked, status, came, body in [
                ({"Range": "bytes=2-4"}, 206, f"bytes 2-4/{size}", b"234"),
                ({"Range": f"bytes={size - 2}-"}, 206, f"bytes {size - 2}-{size - 1}/{size}", b"nd"),
                ({"Range": "bytes=-3"}, 206, f"bytes {size - 3}-{size - 1}/{size}", b"end"),
                ({"Range": f"bytes={size}-"}, 416, f"bytes */{size}", b""),
                ({"Range": "bytes=0-0", "If-Range": etag}, 206, f"bytes 0-0/{size}", b"0"),
                ({"Range": "bytes=0-0", "If-Range": modified}, 206, f"bytes 0-0/{size}", b"0"),
                ({"Range": "bytes=0-0", "If-None-Match": etag}, 304, None, b""),
                ({"If-Modified-Since": modified}, 304, None, b"")]:
            answer = self.ask(path, **asked)
            self.assertEqual((answer[0], answer[1]["Content-Range"], answer[2]),
                             (status, came, body), asked)
        for asked in [{"Range": "bytes=0-1,3-4"}, {"Range": "bytes=4-2"}, {"Range": "bytes=-"},
                      {"Range": "bytes=0-0", "If-Range": '"other"'}]:
            answer = self.ask(path, method="HEAD", **asked)
            self.assertEqual((answer[0], answer[1]["Content-Length"]), (200, str(size)), asked)

    def test_files_that_change_while_they_are_sent(self):
        """The bytes that were announced come, and then the next answer; or the connection ends."""
        path = self.offered / "journal.txt"
        head = b"GET /%b HTTP/1.1\r\nHost: a\r\n\r\n"
        self.start_server()
        for change, whole in [(2, True), (0.5, False)]:
            path.write_bytes(bytes(32 << 20))
            os.utime(path, (10**9, 10**9))
            with socket.create_connection(("127.0.0.1", self.port), 60) as client:
                client.sendall(head % b"ressources/journal.txt")
                with client.makefile("rb") as stream:
                    while (line := stream.readline()) != b"\r\n":
                        if line.startswith(b"Content-Length"):
                            size = int(line.split()[1])
                    os.truncate(path, int(size * change))
                    self.assertEqual(len(stream.read(size)) == size, whole)
                    client.sendall(head % b"_infos/kl/")
                    self.assertEqual(stream.readline()[9:12] == b"200", whole)

    def test_folders(self):
        outside = self.project / "dehors"
        outside.mkdir()
        (outside / "x.txt").touch()
        for path in ("Cours/Été/L’œuvre.txt", "Cours/.caché.txt", ".caché/x.txt", "Cours/a\nb/x.txt",
                     "Cours/B.txt", "Cours/a#1.txt"):
            self.offer(path)
        self.bound("COPYING_SECONDS", 60)
        self.offer("Cours/arrive.txt", seconds_ago=0)
        (self.offered / "Cours" / "lien").symlink_to(outside)
        (self.offered / "Cours" / "lien.txt").symlink_to("B.txt")
        os.mkfifo(self.offered / "Cours" / "tube")
        self.make_account()
        self.start_server()
        links = 'href="(/ressources/[^"]*)"'
        self.assertEqual(re.findall(links, self.ask("/")[2].decode()),
                         ["/ressources/Cours/", "/ressources/Bienvenue.txt"])
        page = self.ask("/ressources/Cours/")[2].decode()
        self.assertEqual(re.findall(links, page), [
            "/ressources/Cours/" + quote("Été/"), "/ressources/Cours/a%231.txt",
            "/ressources/Cours/B.txt"])
        self.assertEqual((page.count("en cours de copie"), "4 éléments" in page), (1, False))
        for path, expected in [
                ("Cours/arrive.txt", 503), ("Cours", 302), ("Cours/B.txt", 200),
                (quote("Cours/Été/L’œuvre.txt"), 200), ("Cours%2FB.txt", 200),
                ("Cours/lien/x.txt", 404), ("Cours/lien/", 404), ("Cours/lien.txt", 404),
                ("Cours/tube", 404), ("Cours/B.txt/", 404), ("Cours//B.txt", 404),
                ("Cours/../Bienvenue.txt", 404), ("Cours/%2e%2e/Bienvenue.txt", 404),
                ("Cours/a%0Ab/x.txt", 404), (quote("Cours/.caché.txt"), 404),
                (quote(".caché/x.txt"), 404), (quote(".caché/"), 404), ("Absent/", 404)]:
            self.assertEqual(self.ask("/ressources/" + path)[0], expected, path)
        found = re.findall(links, self.ask("/?q=oeuvre+L%27")[2].decode())
        self.assertEqual(found, ["/ressources/" + quote("Cours/Été/L’œuvre.txt"),
                                 "/ressources/" + quote("Cours/Été/")])
        self.log_in("zoé", "un mot de passe")
        self.assertIn("4 éléments", self.ask("/ressources/Cours/")[2].decode())
        answer = self.send("B.txt", "", "/supprimer/Cours/B.txt")
        self.assertEqual((answer[0], answer[1]["Location"]), (302, "/ressources/Cours/"))
        self.assertFalse((self.offered / "Cours" / "B.txt").exists())

    def bound(self, name, value):
        file = self.project / "Atelier" / "hubs" / "limits.py"
        file.write_text(re.sub(f"(?m)^{name} = .*", f"{name} = {value}", file.read_text("utf-8")))

    def log_in(self, account, password):
        token = re.search('csrfmiddlewaretoken" value="(.*?)"', self.ask("/admin/login/")[2].decode())
        login = {"csrfmiddlewaretoken": token[1], "username": account, "password": password}
        answer = self.ask("/admin/login/", urlencode(login), "application/x-www-form-urlencoded")
        return answer[0], "Attendez une minute" in answer[2].decode()

    def test_uploads(self):
        manage = ("python3", "manage.py")
        self.manage("check", "--deploy", "--fail-level", "WARNING")
        self.manage("migrate", "--verbosity", "0")
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
        answer = self.send("a.txt", "a")
        self.assertEqual((answer[0], b"Formulaire p" in answer[2]), (403, True))
        self.assertEqual([self.log_in("zoé", "faux") for _ in range(4)], [(200, False)] * 4)
        self.assertEqual(self.log_in("zoé", "un mot de passe"), (302, False))
        for name, content in [("Été 1.txt", "premier" * 20_000), ("Été 1.txt", "second"),
                              ("...", "rien"), ("../../.caché.txt", "c")]:
            self.assertEqual(self.send(name, content)[1]["Location"], "/", name)
        self.assertEqual(sorted(os.listdir(self.offered)),
                         ["Bienvenue.txt", "caché.txt", "Été 1.txt"])
        self.assertEqual((self.offered / "Été 1.txt").read_text("utf-8"), "premier" * 20_000)
        staff, self.cookies = self.cookies, {}
        self.ask("/")  # is kept for visitors
        self.cookies = staff
        page = self.ask("/")[2].decode()
        self.assertIn("existe déjà\xa0: il n&#x27;a pas été remplacé", page)
        self.assertEqual(self.ask("/supprimer/%00")[0], 404)
        self.cookies = {}
        tries = [self.log_in("zoé", "faux") for _ in range(6)] + [
            self.log_in("zoé", "un mot de passe"), self.log_in("luc", "faux")]
        self.assertEqual(tries, [(200, False)] * 5 + [(200, True)] * 2 + [(200, False)])
        self.address = "127.0.0.2"  # of the account's owner
        self.assertEqual(self.log_in("zoé", "un mot de passe"), (302, False))

    def test_staff_alone(self):
        self.bound("HANDED_IN_FILES", 4)
        self.bound("HANDED_IN_BYTES", 200_000)
        self.make_account()
        self.handed_in.mkdir(0o700)
        (self.handed_in / "secret.txt").write_text("secret")
        self.start_server()
        self.log_in("inconnu", "faux")  # brings the token of forms
        for path in ["/remis/", "/remis/secret.txt", "/remis/secret.txt/retirer", "/depot/",
                     "/remettre/ouverture/", "/supprimer/Bienvenue.txt"]:
            for answer in [self.ask(path), self.send("a.txt", "a", path)]:
                self.assertIn((answer[0], (answer[1]["Location"] or "")[:13]),
                              [(302, "/admin/login/"), (405, "")], path)
        closed = [self.ask("/remettre/"), self.send("a.txt", "a", "/remettre/", "fichier"),
                  self.send("a.txt", "a" * 150_000, "/remettre/", "fichier")]
        self.assertEqual([answer[0] for answer in closed], [403, 403, 413])
        (self.handed_in / ".ouverte").touch()
        sent = [("devoir.txt", "1"), ("devoir.txt", "2" * 150_000), ("gros.txt", "3" * 60_000),
                ("...", "4"), ("Zoé — devoir.txt", "5" * 9), ("de trop.txt", "6")]
        for name, content in sent:
            answer = self.send(name, content, "/remettre/", "fichier")
            self.assertEqual((answer[0], answer[1]["Location"]), (302, "/remettre/"), name)
        kept = {file.name: (file.stat().st_size, file.stat().st_mode & 0o777)
                for file in self.handed_in.iterdir() if file.name != ".ouverte"}
        self.assertEqual(kept, {"secret.txt": (6, 0o644), "devoir.txt": (1, 0o600),
                                "devoir (2).txt": (150_000, 0o600),
                                "Zoé - devoir.txt": (9, 0o600)})
        self.assertEqual(self.send("a.txt", "a" * (101 << 20), "/remettre/", "fichier")[0], 413)
        # A file that could not be read without an error is not read where there is no page.
        unreadable = 'a.txt"\r\nContent-Transfer-Encoding: base64\r\nX: "'
        self.assertEqual(self.send(unreadable, "a", "/nulle-part/")[0], 404)

    def test_full_disk(self):
        self.bound("SPARE_BYTES", 1 << 60)
        self.handed_in.mkdir(0o700)
        (self.handed_in / ".ouverte").touch()
        self.start_server()
        self.ask("/remettre/")
        self.send("a.txt", "a", "/remettre/", "fichier")
        self.assertIn("est presque plein", self.ask("/remettre/")[2].decode())
        self.assertEqual(os.listdir(self.handed_in), [".ouverte"])


if __name__ == "__main__":
    unittest.main()
