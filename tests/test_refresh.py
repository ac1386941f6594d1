"""What quorvale-start makes of the networks that exist, with a small template of its own."""

import fcntl
import os
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SOURCE = Path(__file__).resolve().parent.parent
PROGRAMS = {"bin": ["apps/start/quorvale-start"],
            "libexec/quorvale": ["apps/start/refresh_files", "apps/network/adoption.py",
                                 "apps/network/registry.py", "tools/first_on_path"]}
OLD = {"settings.py": "NEW = False\n", "urls.py": "", "hubs/__init__.py": "",
       **{f"hubs/{unit}.py": (SOURCE / f"runtime/hubs/{unit}.py").read_text()
          for unit in ("names", "processes")},
       "hubs/views.py": "page = 1\n", "templates/deux mots.html": "1", "static/a.css": "1",
       "networks.data": "", "ressources/Bienvenue.txt": "1"}
NEW = {"settings.py": "NEW = True\n", "urls.py": "from .hubs.views import page\n",
       "hubs/views.py": "page = 2\n", "hubs/later.py": "", "templates/deux mots.html": "2",
       "static/a.css": "2", "ressources/Bienvenue.txt": "2"}
MANAGE = "import sys; import Atelier.urls\n"
BROKEN = "page_of_mine = 1\n"


class Refresh(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.root = Path(os.path.realpath(directory.name))
        for folder, names in PROGRAMS.items():
            (self.root / folder).mkdir(parents=True)
            for name in names:
                shutil.copy(SOURCE / name, self.root / folder)
        (self.root / "bin/quorvale-true").symlink_to("/bin/true")
        (self.root / "bin/quorvale-env").symlink_to("/usr/bin/env")
        (self.root / "bin/quorvale-desk").write_text('#!/bin/sh\npwd; echo "$QUORVALE_NOTICE"\n')
        (self.root / "bin/quorvale-desk").chmod(0o755)
        self.write(self.root / "share/quorvale", OLD)
        self.work = self.root / "Tesquin"
        self.project = self.work / "Atelier"
        self.package = self.project / "Atelier"
        self.start()
        self.assertEqual((self.work / "networks.data").read_text(), "")
        self.write(self.package, OLD)
        self.write(self.work, {"networks.data": f"Atelier|{self.project}|\nAutre|/{'x' * 300}|\n"})
        self.write(self.project, {"manage.py": MANAGE})

    def write(self, directory, files):
        for name, content in files.items():
            (directory / name).parent.mkdir(parents=True, exist_ok=True)
            (directory / name).write_text(content)

    def start(self, *before, program="true", path=os.environ["PATH"], status=0):
        """Start a program, by the command BEFORE it. Return what is said."""
        words = (*before, "bin/quorvale-start", *program.split())
        run = subprocess.run(words, cwd=self.root, check=False, text=True,
                             stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                             env={**os.environ, "PATH": path, "QUORVALE_DIR": str(self.work)})
        self.assertEqual(run.returncode, status, run.stdout)
        return run.stdout

    def upgrade(self, **options):
        self.write(self.root / "share/quorvale", NEW)
        said = self.start(**options)
        self.assertEqual((self.work / "networks.data").read_text().count("|"), 4)
        return said

    def now(self, name):
        return (self.package / name).read_text()

    def test_unchanged(self):
        self.addCleanup(NEW.update, {"static/a.css": NEW["static/a.css"]})
        for recorded in (False, True):  # a network's first start, and a later one
            with self.subTest(recorded=recorded):
                if recorded:
                    NEW["static/a.css"] = "3"
                said = self.upgrade()
                for name in NEW:
                    self.assertEqual(self.now(name), OLD[name] if "ress" in name else NEW[name])
                    self.assertEqual((self.package / name).stat().st_mode & 0o777,
                                     (self.root / "share/quorvale" / name).stat().st_mode & 0o777)
                self.assertIn("static/a.css", said)
                self.assertNotIn("Gardés", said)
                self.assertEqual(self.start(), "")
        kept = sorted((self.project / ".anciens").glob("*/static/a.css"))
        self.assertEqual([path.read_text() for path in kept], ["1", "2"][-len(kept):])

    def test_what_the_operator_did_stays(self):
        page, style = self.package / "templates/deux mots.html", self.package / "static"
        self.start()  # from then on, any missing file is known to be removed
        (self.package / "hubs/__init__.py").unlink()
        page.write_text("mine")
        style.rename(self.project / "mine")
        style.symlink_to(self.project / "mine")
        said = self.upgrade()
        self.assertEqual((page.read_text(), self.now("static/a.css")), ("mine", "1"))
        self.assertFalse((self.package / "hubs/__init__.py").exists())
        self.assertIn("changés\u00a0: static/a.css, templates/deux mots.html.", said)
        self.assertEqual(self.now("hubs/views.py"), NEW["hubs/views.py"])
        self.assertEqual(self.start(), "")

    def test_nothing_is_half_done(self):
        unfit, kept = self.package / "hubs/views.py", self.project / ".anciens"
        for name, spoil, word in (("unfit", lambda: unfit.write_text(BROKEN), "démarrerait"),
                                  ("unwritable", lambda: kept.write_text(""), "n'ont pas pu")):
            with self.subTest(name):
                self.doCleanups()
                self.setUp()
                unfit, kept = self.package / "hubs/views.py", self.project / ".anciens"
                spoil()
                self.assertIn(word, self.upgrade())
                self.assertEqual(self.now("static/a.css"), "1")
                self.assertFalse((self.package / "hubs/later.py").exists())

    def test_one_that_cannot_be_written_stops_no_other(self):
        self.write(self.work, {"Suite/manage.py": ""})
        self.write(self.work / "Suite/Suite", OLD)
        self.start()  # lists it
        self.write(self.project, {".anciens": ""})
        self.write(self.root / "share/quorvale", NEW)
        self.assertIn("n'ont pas pu", self.start())
        style = self.work / "Suite/Suite/static/a.css"
        self.assertEqual(style.read_text(), NEW["static/a.css"])

    def test_what_a_power_cut_left(self):
        self.start()
        for file in ("urls.py", "settings.py", "hubs/__init__.py"):
            for directory in (self.work / ".modele", self.package):
                (directory / file).write_text("")
        said = self.start()
        self.assertIn("mis à jour\u00a0: settings.py.", said)
        for directory in (self.work / ".modele", self.package):
            self.assertEqual((directory / "settings.py").read_text(), OLD["settings.py"])

    def test_python_without_django(self):
        (self.root / "other").mkdir()
        (self.root / "other/python3").symlink_to("/bin/false")
        said = self.upgrade(path=f"{self.root}/other:{os.environ['PATH']}")
        self.assertIn(f"Django manque à {self.root}/other/python3", said)
        self.assertEqual(self.now("urls.py"), "")
        self.assertIn("mis à jour\u00a0: ", self.start())

    def test_directory_that_cannot_be_written(self):
        in_namespace = ("unshare", "--map-root-user", "--mount", "sh", "-euc")
        read_only = 'mount --bind Tesquin Tesquin; mount -o remount,bind,ro Tesquin; exec "$@"'
        full = ('mount -t tmpfs -o size=64k tmpfs Tesquin; cat /dev/zero >Tesquin/zeros || true; '
                'exec "$@"')
        self.write(self.root / "share/quorvale", {"style.qss": "x" * 5000})
        for name, script, directory in (("read-only", read_only, self.work),
                                        ("full", full, self.root / "share/quorvale")):
            with self.subTest(name):
                said = self.start(*in_namespace, script, "", program="desk")
                self.assertIn(f"Le répertoire {self.work} n'a pas pu", said)
                # The program is told what the operator is told.
                self.assertEqual(said.count("Rien ne peut être écrit"), 2)
                self.assertIn(str(directory), said.splitlines())
        self.assertFalse((self.work / "style.qss").exists())
        self.assertEqual(list(self.work.glob("tmp*")), [])
        self.write(self.root / "share/quorvale", {"neuf/a.css": "1"})
        (self.work / "neuf").write_text("")  # stands in the way of a folder
        self.assertIn("n'a pas pu", self.start())
        (self.work / "neuf").unlink()
        self.assertEqual(self.start(), "")
        self.assertTrue((self.work / "neuf/a.css").exists())

    def test_directory_that_others_hold(self):
        descriptor = os.open(self.work, os.O_RDONLY)
        self.addCleanup(os.close, descriptor)
        fcntl.flock(descriptor, fcntl.LOCK_SH)
        self.assertIn("tenu par un autre", self.start())

    def test_root_in_the_directory_of_another(self):
        if os.getuid():
            self.skipTest("needs root")
        os.chown(self.work, 65534, 65534)
        self.assertIn("sans sudo", self.start(status=1))

    def test_wrong_words(self):
        for words, reason in (("nothing", "nothing » n'existe pas"), ("--admin", "--admin »"),
                              ("start", "start »"), ("guide x", "Mot en trop : « x »")):
            said = self.start(program=words, status=2)
            self.assertEqual((said[:5], reason in said.splitlines()[-1]), ("Usage", True), words)

    def test_platform(self):
        for settings, platform in ((["DISPLAY=:9"], "xcb"), (["-u", "DISPLAY"], "wayland"),
                                   (["DISPLAY=:9", "QT_QPA_PLATFORM=minimal"], "minimal")):
            with self.subTest(platform):
                said = self.start("env", "-u", "QT_QPA_PLATFORM", *settings, program="env")
                self.assertIn(f"\nQT_QPA_PLATFORM={platform}\n", said)

    def test_networks_are_adopted(self):
        for name in ("Moved", "Unlisted", ".hidden", "Taken", "No network"):
            self.write(self.work, {f"{name}/manage.py": MANAGE, f"{name}/nom.txt": f"À {name}\n"})
            self.write(self.work / name / name, OLD if " " not in name else {})
        self.write(self.work, {"Taken/nom.txt": "Atelier"})
        (self.work / "Unlisted/Unlisted").rename(self.work / "Unlisted/Earlier")
        (self.work / "link").symlink_to("Atelier")
        (self.work / "networks.data").write_bytes(
            f"Atelier|{self.project}|\nno network\nthé|/gone/Moved|".encode())
        said = self.start(program="desk")
        self.assertEqual(said.count("À Moved » : retrouvé"), 2)  # here, and in the window
        self.assertEqual(said.count("À Unlisted » : trouvé"), 2)
        self.assertEqual((self.work / "networks.data").read_bytes().replace(bytes(self.work), b""),
                         b"Atelier|/Atelier|\nno network\n\xc0 Moved|/Moved|\n"
                         b"\xc0 Unlisted|/Unlisted|\n")
        self.assertEqual(self.start(), "")

    def test_networks_that_no_terminal_can_reach(self):
        self.work = self.work.rename(self.root / "Tesquin (2)")
        before = (self.work / "networks.data").read_text()
        self.assertIn(f"Les réseaux de {self.work} ne peuvent pas être repris", self.start())
        self.assertEqual((self.work / "networks.data").read_text(), before)

    def test_network_in_use(self):
        self.write(self.project, {"manage.py": "import sys; print(flush=True); sys.stdin.read()"})
        with subprocess.Popen([sys.executable, "manage.py", "runserver"], cwd=self.project,
                              stdin=subprocess.PIPE, stdout=subprocess.PIPE) as server:
            server.stdout.readline()
            self.assertIn("il est en marche", self.upgrade())
            self.assertEqual(self.now("urls.py"), "")
            server.stdin.close()
        self.write(self.project, {"manage.py": MANAGE})
        self.assertIn("mis à jour\u00a0: ", self.start())
        self.assertEqual(self.now("urls.py"), NEW["urls.py"])


if __name__ == "__main__":
    unittest.main()
