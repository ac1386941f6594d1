#!/usr/bin/python3
"""Makes a project from the network template, runs its real server and asks it for everything."""

import contextlib
import io
import json
import os
import re
import resource
import socket
import sqlite3
import subprocess
import time
import unittest
import zipfile
from urllib.parse import quote

from served_network import ENVIRONMENT, ServedNetworkTest, run_in


# Checks the settings, then calls "manage.py compte" in the same process as often as it reads words
# and a password, and prints the status, output and errors of each call. Starting Django takes far
# longer than a call.
COMPTE_CALLS = """
import contextlib, io, json, os, sys
from django.core.management import execute_from_command_line
os.environ["DJANGO_SETTINGS_MODULE"] = "Atelier.settings"
with contextlib.redirect_stdout(sys.stderr):
    execute_from_command_line(["manage.py", "check", "--deploy", "--fail-level=WARNING"])
done = []
for words, password in json.load(sys.stdin):
    sys.stdin, out, err, status = io.StringIO(password + "\\n"), io.StringIO(), io.StringIO(), 0
    with contextlib.redirect_stdout(out), contextlib.redirect_stderr(err):
        try:
            execute_from_command_line(["manage.py", "compte", *words])
        except SystemExit as end:
            status = end.code
    done.append((status, out.getvalue(), err.getvalue()))
json.dump(done, sys.stdout)
"""

# Asks for pages as machines of these addresses would, then for the network's state as each of them.
# Then, how many are known when only one is to be, and how many when their time has passed.
VISITS = """
import json, os, sys
import django
os.environ["DJANGO_SETTINGS_MODULE"] = "Atelier.settings"
django.setup()
from django.test import Client
def ask(path, address):
    return Client(HTTP_HOST="192.0.2.10").get(path, REMOTE_ADDR=address, **{
        "quorvale.lan_addresses": ("192.0.2.10",)})
for address in sys.argv[1:]:
    ask("/ressources/Bienvenue.txt", address)
    ask("/_infos/kl/", "192.0.2.99")
states = [ask("/_infos/etat/", address) for address in sys.argv[1:]]
from Atelier.hubs import visitors
visitors._MAX_VISITORS = 1
ask("/", "192.0.2.7")
most = visitors.count()
visitors.SECONDS = -1
json.dump([*(state.status_code if state.status_code != 200 else state.json()["visitors"]
             for state in states), most, visitors.count()], sys.stdout)
"""

STAFF_PAGES = ["/remis/", "/remis/secret.txt", "/remis/secret.txt/retirer", "/remis/tout.zip",
               "/remettre/ouverture/", "/remettre/vider/", "/depot/",
               "/supprimer/Bienvenue.txt", "/remplacer/Bienvenue.txt"]


class TemplateTest(ServedNetworkTest):
    def setUp(self):
        super().setUp()
        self.settings = self.project / "Atelier" / "settings.py"
        (self.project / "nom.txt").write_text("L'été, 5 € – Łódź؟\n" + "é" * 600, "utf-8")

    def test_count_of_visitors(self):
        senders = ["127.0.0.1", "192.0.2.10", "192.0.2.7", "192.0.2.8", "192.0.2.7"]
        said = self.output("", "-c", VISITS, *senders)
        self.assertEqual(json.loads(said), [2, 2, 404, 404, 404, 1, 0])

    def test_visitors(self):
        for name in (".cache.txt", "a.SVG", "Été 100% #1?.txt", "a\nb.txt", "\udce9.txt"):
            self.offer(name)
        (self.offered / "lien.txt").symlink_to(self.settings)
        self.start_server()  # the database does not exist yet
        page = self.ask("/")[2].decode()
        self.assertIn("<h1>L&#x27;été, 5 € – Łódź؟</h1>", page)
        offered = re.findall('href="(/ressources/[^"]*)">', page)
        self.assertEqual(offered, ["/ressources/a.SVG", "/ressources/Bienvenue.txt",
                                   "/ressources/" + quote("Été 100% #1?.txt")])
        for path, header, value, body in [
                (offered[2], "Content-Disposition", "inline; filename", b"contenu"),
                (offered[2], "Content-Type", "text/plain; charset=utf-8", b"contenu"),
                (offered[2], "Content-Security-Policy", "default-src 'none'", b"contenu"),
                (offered[0], "Content-Disposition", "attachment", b"contenu"),
                (offered[0], "Content-Type", "application/octet-stream", b"contenu"),
                (offered[0], "Content-Security-Policy", "default-src 'self'", b"contenu"),
                (offered[2], "X-Content-Type-Options", "nosniff", b"contenu"),
                ("/", "Content-Security-Policy", "default-src 'self'", page.encode()),
                ("/", "X-Frame-Options", "DENY", page.encode()),
                ("/_infos/kl/", "Content-Type", "text/plain; charset=ISO-8859-1",
                 b"L'\xe9t\xe9, 5 EUR - L\xf3dz")]:
            status, headers, received = self.ask(path)
            self.assertEqual((status, received), (200, body))
            self.assertEqual(headers[header][:len(value)], value)
        for number in range(120):
            (self.offered / f"{number}.txt").touch()
        (self.project / "nom.txt").write_text("\ufeff\n Neuf", "utf-8")
        self.ask("/")
        page = self.ask("/?page=2")[2].decode()
        self.assertEqual((page.count("<li>"), "Page 2 sur 3" in page), (50, True))
        self.assertIn("<h1>Neuf</h1>", page)

    def test_what_visitors_are_refused(self):
        for name in (".cache.txt", "a\nb.txt", "\udce9.txt"):
            self.offer(name)
        (self.offered / "lien.txt").symlink_to(self.settings)
        self.start_server()
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

    def test_names_and_address(self):
        name = self.project / "nom.txt"
        self.start_server()
        page = self.ask("/adresse/")[2].decode()
        self.assertEqual("http://127." in page, "ne marche que sur cette machine" in page)
        name.write_bytes("\nL'été à 5 €".encode("cp1252"))
        self.assertEqual(self.ask("/_infos/kl/")[2], "L'été à 5 EUR".encode("latin-1"))
        name.write_text("é" * 1000, "utf-8")
        self.assertEqual(self.ask("/_infos/kl/")[2], b"\xe9" * 100)
        name.unlink()
        os.mkfifo(name)
        self.assertEqual(self.ask("/_infos/kl/")[2], b"Atelier")

    def unzipped(self, path):
        """The names and contents in the archive, sent as it was announced."""
        status, headers, body = self.ask(path)
        self.assertEqual((status, headers["Content-Length"]), (200, str(len(body))))
        with zipfile.ZipFile(io.BytesIO(body)) as archive:
            self.assertIsNone(archive.testzip())
            return {name: archive.read(name) for name in archive.namelist()}

    def test_collecting(self):
        self.bound("HANDED_IN_AT_ONCE", 3)
        self.make_account()
        self.open_hand_in()
        (self.handed_in / ".caché.txt").touch()
        (self.handed_in / "lien.txt").symlink_to(self.settings)
        self.start_server()
        self.ask("/remettre/")
        answer = self.send("tout.zip", "a", "/remettre/", "fichier", [
            ("x.txt", "b"), ("X.TXT", "c"), ("de trop.txt", "d")])
        self.assertEqual(answer[1]["Location"], "/remettre/")
        answer = self.send("é.txt", "e", "/remettre/", "fichier", nom="Léa & co")
        self.assertEqual(answer[1]["Location"], "/remettre/?nom=L%C3%A9a+%26+co")
        page = self.ask(answer[1]["Location"])[2].decode()
        self.assertIn('value="Léa &amp; co"', page)
        self.assertIn("Pas plus de 3 fichiers à la fois", page)
        self.assertIn("» ont bien été remis", page)
        self.log_in("zoé", "un mot de passe")
        collected = self.unzipped("/remis/tout.zip")
        self.assertEqual(sorted(re.sub(r"\d{4}-\d\d-\d\d \d\dh\d\d", "DATE", name)
                                for name in collected), [
            "Léa & co — DATE — é.txt", "Sans nom — DATE — X.TXT",
            "Sans nom — DATE — tout (2).zip", "Sans nom — DATE — x (2).txt"])
        self.assertEqual(sorted(collected.values()), [b"a", b"b", b"c", b"e"])
        listed = re.findall("retirer.*Supprimer (.*)\"", self.ask("/remis/")[2].decode())
        self.assertEqual(listed[0], "Léa &amp; co — é.txt")
        self.assertEqual(sorted(listed[1:]), ["X.TXT", "tout (2).zip", "x.txt"])
        question = self.ask("/remettre/vider/")[2].decode()
        time.sleep(0.05)  # more than a tick of the file system's clock
        self.send("après.txt", "f", "/remettre/", "fichier")
        until = re.search('name="jusqu_a" value="([0-9]+)"', question)[1]
        self.send("", "", "/remettre/vider/", jusqu_a=until)
        self.assertEqual([file.name for file in self.handed_in.glob("[!.]*") if file.is_file()
                          and not file.is_symlink()], ["après.txt"])
        for wanted, status in [("oui", 200), ("non", 403)]:
            self.send("", "", "/remettre/ouverture/", ouverte=wanted)
            self.assertEqual(self.ask("/remettre/")[0], status, wanted)

    def test_folders(self):
        outside = self.project / "dehors"
        outside.mkdir()
        (outside / "x.txt").touch()
        for path in ("Cours/Été/L’œuvre.txt", "Cours/.caché.txt", ".caché/x.txt",
                     "Cours/a\nb/x.txt", "Cours/B.txt", "Cours/a#1.txt", "Cours/a\\..\\x.txt"):
            self.offer(path)
        self.bound("COPYING_SECONDS", 60)
        self.offer("Cours/arrive#1.txt", seconds_ago=0)
        (self.offered / "Cours" / "lien").symlink_to(outside)
        (self.offered / "Cours" / "lien.txt").symlink_to("B.txt")
        os.mkfifo(self.offered / "Cours" / "tube")
        self.start_server()
        links = 'href="(/ressources/[^"]*)">'
        self.assertEqual(re.findall(links, self.ask("/")[2].decode()),
                         ["/ressources/Cours/", "/ressources/Bienvenue.txt"])
        page = self.ask("/ressources/Cours/")[2].decode()
        self.assertEqual(re.findall(links, page), [
            "/ressources/Cours/" + quote("Été/"), "/ressources/Cours/a%231.txt",
            "/ressources/Cours/a%5C..%5Cx.txt", "/ressources/Cours/B.txt"])
        self.assertEqual((page.count("en cours de copie"), "4 éléments" in page), (1, False))
        for path, expected in [
                ("Cours/arrive%231.txt", 503), ("Cours", 302), ("Cours/B.txt", 200),
                (quote("Cours/Été/L’œuvre.txt"), 200), ("Cours%2FB.txt", 200),
                ("Cours/lien/x.txt", 404), ("Cours/lien/", 404), ("Cours/lien.txt", 404),
                ("Cours/tube", 404), ("Cours/B.txt/", 404), ("Cours//B.txt", 404),
                ("Cours/../Bienvenue.txt", 404), ("Cours/%2e%2e/Bienvenue.txt", 404),
                ("Cours/a%0Ab/x.txt", 404), (quote("Cours/.caché.txt"), 404),
                (quote(".caché/x.txt"), 404), (quote(".caché/"), 404), ("Absent/", 404)]:
            self.assertEqual(self.ask("/ressources/" + path)[0], expected, path)
        again = self.ask("/ressources/Cours/arrive%231.txt")[2]
        self.assertIn(b'<a href="/ressources/Cours/arrive%231.txt">Recommencer', again)
        for path in ("Cours/arrive", "Absent", "Cours/lien", ".caché", "Bienvenue.txt", ".."):
            self.assertEqual(self.ask(f"/archives/{quote(path)}.zip")[0], 404, path)
        self.assertEqual(self.unzipped("/archives/Cours.zip"), {
            f"Cours/{name}": b"contenu"
            for name in ("Été/L’œuvre.txt", "a_.._x.txt", "B.txt", "a#1.txt")})
        found = re.findall(links, self.ask("/?q=oeuvre+L%27")[2].decode())
        self.assertEqual(found, ["/ressources/" + quote("Cours/Été/L’œuvre.txt"),
                                 "/ressources/" + quote("Cours/Été/")])

    def test_folders_of_staff(self):
        work, other = self.offer("Cours/Été/L’œuvre.txt"), self.offer("Cours/B.txt")
        for name in ("lien", "lien.txt", "lien.odt"):
            (self.offered / "Cours" / name).symlink_to("B.txt")
        os.mkfifo(self.offered / "Cours" / "tube")
        self.make_account()
        self.start_server()
        self.log_in("zoé", "un mot de passe")
        for name, content, kept in [("neuf.odt", "neuf", "contenu"), ("neuf.TXT", "neuf", "neuf")]:
            self.send(name, content, "/remplacer/" + quote("Cours/Été/L’œuvre.txt"), "fichier")
            self.assertEqual(work.read_text("utf-8"), kept)
        self.assertEqual(os.listdir(work.parent), [work.name])
        self.assertIn("4 éléments", self.ask("/ressources/Cours/")[2].decode())
        answer = self.send("B.txt", "", "/supprimer/Cours/B.txt")
        self.assertEqual((answer[0], answer[1]["Location"]), (302, "/ressources/Cours/"))
        self.assertFalse(other.exists())

    def output(self, typed, *words):
        """What Python prints in the project, called with these words."""
        return subprocess.run(("python3", *words), cwd=self.project, env=ENVIRONMENT, input=typed,
                              stdout=subprocess.PIPE, text=True, check=True).stdout

    def test_accounts(self):
        run_in(self.project, "python3", "manage.py", "migrate", "--verbosity", "0")
        listed = "super\tx\t\nstandard\tzoé\tZoé de Łódź\n"
        self.output("un autre mot de passe\n", "manage.py", "compte", "standard", "--", "zoé",
                    "Zoé de Łódź")
        calls = [
            (0, ("super", "x"), "un mot de passe"), (0, ("invite", "hôte"), "un autre mot"),
            (4, ("super", "zoé"), "un mot de passe"), (4, ("super", "a b"), "un mot de passe"),
            (4, ("super", "a" * 151), "un mot de passe"), (4, ("super", ""), "un mot de passe"),
            (3, ("super", "ab"), ""), (3, ("super", "marguerite"), "marguerite1"),
            (3, ("super", "ab", "Marguerite Aubépine"), "aubépine1"), (0, ("liste",), ""),
            (3, ("mot-de-passe", "zoé"), "court"), (4, ("mot-de-passe", "a"), "un mot de passe"),
            (0, ("mot-de-passe", "zoé"), "un mot de passe"), (4, ("supprimer", "x"), ""),
            (0, ("supprimer", "hôte"), ""), (4, ("supprimer", "hôte"), ""), (0, ("liste",), "")]
        done = json.loads(self.output(json.dumps([call[1:] for call in calls]),
                                      "-c", COMPTE_CALLS))
        self.assertEqual(len(done), len(calls))
        for (wanted, words, _), (status, out, err) in zip(calls, done):
            self.assertEqual(status, wanted, (words, err))
            self.assertRegex(err, r"\A(([A-Z«][^\n]*\.\n)+)?\Z")
            self.assertEqual(bool(err), status != 0)
            self.assertEqual(bool(out), words == ("liste",))
        self.assertEqual([out for _, out, _ in done if out],
                         ["invite\thôte\t\n" + listed, listed])

    def test_uploads(self):
        self.bound("OFFERED_AT_ONCE", 2)
        self.make_account()
        self.start_server()
        answer = self.send("a.txt", "a")
        self.assertEqual((answer[0], b"Formulaire p" in answer[2]), (403, True))
        self.log_in("zoé", "un mot de passe")
        self.assertLessEqual({"csrf_Atelier", "session_Atelier"}, set(self.cookies))
        (self.offered / "lien.txt").symlink_to(self.project / "dehors.txt")
        os.utime(self.offered, (10**9, 10**9))  # its listing is kept until it changes
        self.ask("/")
        for name, content in [("Été 1.txt", "premier" * 20_000), ("Été 1.txt", "second"),
                              ("...", "rien"), ("../../.caché.txt", "c"), ("lien.txt", "lien")]:
            self.assertEqual(self.send(name, content)[1]["Location"], "/", name)
        self.send("...", "", more=[("lien.txt", ""), ("de trop.txt", "")])
        self.assertEqual(sorted(os.listdir(self.offered)),
                         ["Bienvenue.txt", "caché.txt", "lien.txt", "Été 1.txt"])
        self.assertTrue((self.offered / "lien.txt").is_symlink())
        self.assertFalse((self.project / "dehors.txt").exists())
        self.assertEqual((self.offered / "Été 1.txt").read_text("utf-8"), "premier" * 20_000)
        self.assertEqual((self.offered / "Été 1.txt").stat().st_mode & 0o777, 0o644)
        staff, self.cookies = self.cookies, {}
        self.ask("/")  # is kept for visitors
        self.cookies = staff
        page = self.ask("/")[2].decode()
        self.assertIn("existe déjà\xa0: il n&#x27;a pas été remplacé", page)
        self.assertIn("Été 1.txt</a>", page)
        self.assertEqual(self.ask("/supprimer/%00")[0], 404)

    def test_tries_to_log_in(self):
        self.make_account()
        self.start_server()
        self.assertEqual([self.log_in("zoé", "faux") for _ in range(4)], [(200, False)] * 4)
        self.assertEqual(self.log_in("zoé", "un mot de passe"), (302, False))
        self.cookies = {}
        tries = [self.log_in("zoé", "faux") for _ in range(6)] + [
            self.log_in("zoé", "un mot de passe"), self.log_in("luc", "faux")]
        self.assertEqual(tries, [(200, False)] * 5 + [(200, True)] * 2 + [(200, False)])
        self.address = "127.0.0.2"  # of the account's owner
        self.assertEqual(self.log_in("zoé", "un mot de passe"), (302, False))
        self.assertEqual(self.send("gros.txt", "a" * 150_000, "/")[0], 405)
        with contextlib.closing(sqlite3.connect(self.project / "db.sqlite3")) as database, database:
            database.execute("UPDATE auth_user SET is_staff = 0")  # a guest's account now
        self.assertEqual(self.send("gros.txt", "a" * 150_000, "/")[0], 413)

    def test_staff_alone(self):
        self.bound("HANDED_IN_FILES", 4)
        self.bound("HANDED_IN_BYTES", 200_000)
        self.make_account()
        self.handed_in.mkdir(0o700)
        (self.handed_in / "secret.txt").write_text("secret")
        self.start_server()
        self.log_in("inconnu", "faux")  # brings the token of forms
        for path in STAFF_PAGES:
            answer = self.ask(path)
            self.assertEqual((answer[0], answer[1]["Location"][:13]), (302, "/admin/login/"), path)
            for size in (1, 200_000):
                answer = self.send("a.txt", "a" * size, path)
                self.assertIn((answer[0], b"Votre connexion a pris fin" in answer[2]),
                              [(403, True), (405, False), (413, False)], path)
        self.assertEqual(answer[0], 403)  # of a form, whatever its size
        closed = [self.ask("/remettre/"), *(self.send("a.txt", "a" * size, "/remettre/", "fichier")
                                            for size in (1, 150_000))]
        self.assertEqual([answer[0] for answer in closed], [403, 403, 413])
        self.assertIn(b'<a href="/remettre/">Revenir au formulaire', closed[2][2])
        may_send = [f"/peut-envoyer/{page}/"
                    for page in ("POST/remettre", "POST/depot", "GET/depot")]
        self.assertEqual([self.ask(path)[0] for path in may_send], [403, 403, 204])
        self.open_hand_in()
        self.assertEqual([self.ask(path)[0] for path in may_send], [204, 403, 204])
        for name, content in [("devoir.txt", "1"), ("devoir.txt", "2" * 150_000),
                              ("gros.txt", "3" * 60_000), ("...", "4"),
                              ("Zoé — devoir.txt", "5" * 9), ("de trop.txt", "6")]:
            answer = self.send(name, content, "/remettre/", "fichier")
            self.assertEqual((answer[0], answer[1]["Location"]), (302, "/remettre/"), name)
        kept = {file.name: (file.stat().st_size, file.stat().st_mode & 0o777)
                for file in self.handed_in.glob("[!.]*")}
        self.assertEqual(kept, {"secret.txt": (6, 0o644), "devoir.txt": (1, 0o600),
                                "devoir (2).txt": (150_000, 0o600),
                                "Zoé - devoir.txt": (9, 0o600)})
        self.assertEqual(self.send("a.txt", "a" * (101 << 20), "/remettre/", "fichier")[0], 413)
        # What could not be read without an error is not read where there is no page.
        unreadable = 'a.txt"\r\nContent-Transfer-Encoding: base64\r\nX: "'
        self.assertEqual(self.send(unreadable, "a", "/nulle-part/")[0], 404)

    def test_cut(self):
        server = self.project / "Atelier" / "hubs" / "server.py"
        server.write_text(re.sub("STALL_SECONDS = .*", "STALL_SECONDS = 1", server.read_text()))
        self.open_hand_in()
        self.start_server(preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE,
                                                                (1 << 20, 1 << 20)))
        self.ask("/remettre/")
        self.send("a.txt", "a" * (2 << 20), "/remettre/", "fichier")
        self.assertIn("La suite n&#x27;a pas été prise", self.ask("/remettre/")[2].decode())
        for kind, body in [
                ("multipart/form-data; boundary=B", b'--B\r\nContent-Disposition: form-data; '
                 b'name="fichier"; filename="a.txt"\r\n\r\na\r\n--B\r\nContent-Disposition: fo'),
                ("application/x-www-form-urlencoded", b"csrfmiddlewaretoken=")]:
            answer = self.ask("/remettre/", body, kind, Content_Length="9999")
            self.assertEqual((answer[0], b"<h1>Envoi coup" in answer[2], b"cookie" in answer[2]),
                             (400, True, False))
        self.assertEqual(os.listdir(self.handed_in), [".ouverte"])

    def test_full_disk(self):
        self.bound("SPARE_BYTES", 1 << 60)
        self.open_hand_in()
        self.start_server()
        self.ask("/remettre/")
        self.send("a.txt", "a", "/remettre/", "fichier")
        self.assertIn("est presque plein", self.ask("/remettre/")[2].decode())
        self.assertEqual(os.listdir(self.handed_in), [".ouverte"])


if __name__ == "__main__":
    unittest.main()
