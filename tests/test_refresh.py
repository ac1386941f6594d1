"""What quorvale-start makes of the networks that exist, with a small template of its own."""

import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SOURCE = Path(__file__).resolve().parent.parent
START = SOURCE / "apps/start"
OLD = {"settings.py": "NETWORK_NAME = PACKAGE\n", "urls.py": "", "hubs/__init__.py": "",
       "hubs/processes.py": (SOURCE / "runtime/hubs/processes.py").read_text(),
       "hubs/views.py": "page = 1\n", "templates/deux mots.html": "1", "static/a.css": "1",
       "networks.data": "", "ressources/Bienvenue.txt": "1"}
NEW = {"settings.py": "NEW = True\n", "urls.py": "from .hubs.views import page\n",
       "hubs/views.py": "page = 2\n", "hubs/names.py": "", "templates/deux mots.html": "2",
       "static/a.css": "2", "ressources/Bienvenue.txt": "2"}
MANAGE = "import sys; import Atelier.urls\n"
BROKEN = "page_of_mine = 1\n"


class Refresh(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.root = Path(os.path.realpath(directory.name))
        for folder, name in (("bin", "quorvale-start"), ("libexec/quorvale", "refresh_networks")):
            (self.root / folder).mkdir(parents=True)
            (self.root / folder / name).write_bytes((START / name).read_bytes())
            (self.root / folder / name).chmod(0o755)
        (self.root / "bin/quorvale-true").symlink_to("/bin/true")
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

    def start(self):
        return subprocess.run(["bin/quorvale-start", "true"], cwd=self.root, check=True, text=True,
                              env={**os.environ, "QUORVALE_DIR": str(self.root / "Tesquin")},
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT).stdout

    def upgrade(self):
        self.write(self.root / "share/quorvale", NEW)
        said = self.start()
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
                self.assertIn("static/a.css", said)
                self.assertNotIn("Gardés", said)
                self.assertEqual(self.start(), "")
        kept = sorted((self.project / ".anciens").glob("*/static/a.css"))
        self.assertEqual([path.read_text() for path in kept], ["1", "2"][-len(kept):])

    def test_what_the_operator_did_stays(self):
        page, style = self.package / "templates/deux mots.html", self.package / "static"
        (self.package / "hubs/__init__.py").unlink()
        self.start()  # from then on, any missing file is known to be removed
        page.write_text("mine")
        style.rename(self.project / "mine")
        style.symlink_to(self.project / "mine")
        said = self.upgrade()
        self.assertEqual((page.read_text(), self.now("static/a.css")), ("mine", "1"))
        self.assertFalse((self.package / "hubs/__init__.py").exists())
        self.assertIn("changés\u00a0: static/a.css, templates/deux mots.html.", said)
        self.assertEqual(self.now("hubs/views.py"), NEW["hubs/views.py"])
        self.assertEqual(self.start(), "")

    def test_name_in_settings(self):
        for line, name in (('"Atelier de l\'été"  # le mien', "Atelier de l'été\n"),
                           ("open('/etc/hostname').read()", None), ("PACKAGE", None)):
            with self.subTest(line):
                self.doCleanups()
                self.setUp()
                self.write(self.package, {"settings.py": f"NETWORK_NAME = {line}\n"})
                self.upgrade()
                path = self.project / "nom.txt"
                self.assertEqual(path.read_text() if path.exists() else None, name)
                self.assertEqual("NEW" in self.now("settings.py"), "open" not in line)

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
                self.assertFalse((self.package / "hubs/names.py").exists())

    def test_network_in_use(self):
        self.write(self.project, {"manage.py": "import sys; print(flush=True); sys.stdin.read()"})
        with subprocess.Popen([sys.executable, "manage.py", "runserver"], cwd=self.project,
                              stdin=subprocess.PIPE, stdout=subprocess.PIPE) as server:
            server.stdout.readline()
            self.assertIn("servi en ce moment", self.upgrade())
            self.assertEqual(self.now("urls.py"), "")
            server.stdin.close()
        self.write(self.project, {"manage.py": MANAGE})
        self.assertIn("mis à jour\u00a0: ", self.start())
        self.assertEqual(self.now("urls.py"), NEW["urls.py"])


if __name__ == "__main__":
    unittest.main()
