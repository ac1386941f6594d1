#!/usr/bin/python3
"""Usage: test_network.py PROGRAMS. The jobs of a network's life, by quorvale-network."""

import fcntl
import os
import shutil
import sqlite3
import stat
import subprocess
import sys
import tempfile
import unittest
import zipfile
from contextlib import chdir
from pathlib import Path

from quick_django import PROGRAMS, QUICK_DJANGO, place_template

SOURCE = Path(__file__).resolve().parent.parent
sys.dont_write_bytecode = True
sys.path.append(str(SOURCE / "apps/network"))
import registry  # noqa: E402

RECORDED = b"\xc9t\xe9|/Ete|\nnot a network\nForge|/Forge|"
# Ends the program before one of the steps that change something, as a kill does.
KILLS = """
import os, sys
steps = int(os.environ["STEPS"])
def count(frame, event, argument):
    global steps
    if (event == "c_call" and argument.__name__ in CHANGES
            and any(unit in frame.f_code.co_filename for unit in UNITS)):
        steps -= 1
        if steps < 0:
            os.kill(os.getpid(), 9)
UNITS = ("/registry.py", "/copies.py", "/pathlib", "/subprocess.py")
CHANGES = {"write", "fsync", "replace", "mkdir", "unlink", "fork_exec"}
sys.setprofile(count)
"""


class Network(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        directory = tempfile.TemporaryDirectory()
        cls.addClassCleanup(directory.cleanup)
        cls.made = Path(directory.name, "Tesquin")
        cls.made.mkdir()
        place_template(cls.made / ".modele")
        cls.path = f"{QUICK_DJANGO}:/usr/bin:/bin"
        for name in ("Été", "Forge"):
            subprocess.run([PROGRAMS / "quorvale-new", name], cwd=cls.made, check=True,
                           env={**os.environ, "PATH": cls.path}, stdout=subprocess.DEVNULL)

    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.root = Path(directory.name).resolve()
        self.work = self.new_work("Tesquin", RECORDED)
        self.project = self.work / "Ete"
        self.package = self.project / "Ete"
        self.copy = self.root / "copie"
        self.environment = {**os.environ, "LC_ALL": "C", "PYTHONUTF8": "0", "HOME": str(self.root),
                            "PATH": self.path}

    def new_work(self, name, recorded, ignore=None):
        work = self.root / name
        shutil.copytree(self.made, work, ignore=ignore)
        (work / "networks.data").write_bytes(recorded.replace(b"|/", b"|" + bytes(work) + b"/"))
        return work

    def run_it(self, *words, work=None, programs=PROGRAMS, **environment):
        done = subprocess.run([programs / "quorvale-network", *words], cwd=work or self.work,
                              env={**self.environment, **environment}, capture_output=True,
                              text=True, check=False)
        return done.returncode, done.stdout, done.stderr

    def done(self, *words, **options):
        status, out, err = self.run_it(*words, **options)
        self.assertEqual((status, err), (0, ""))
        return out

    def refused(self, reason, *words, **options):
        """Refused for that reason, in a line, with everything as before."""
        before = self.everything()
        status, out, err = self.run_it(*words, **options)
        self.assertEqual((status, out, err.count("\n")), (1, "", 1), err)
        self.assertIn(reason, err)
        self.assertEqual(self.everything(), before)

    def everything(self):
        return {path: path.lstat().st_ino for path in self.root.rglob("*")
                if path.suffix != ".lock" and self.copy not in (path, *path.parents)}

    def registry(self, work=None):
        work = work or self.work
        return (work / "networks.data").read_bytes().replace(bytes(work), b"")

    def serve(self):
        (self.project / "manage.py").write_text("import sys; print(flush=True); sys.stdin.read()")
        server = subprocess.Popen([sys.executable, "manage.py", "runserver"], cwd=self.project,
                                  stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self.addCleanup(server.communicate)
        server.stdout.readline()

    def test_command_line(self):
        for words in ((), ("lists",), ("copy", "Forge"), ("list", "a", "b"), ("remove", ""),
                      ("-x",)):
            status, out, err = self.run_it(*words)
            self.assertEqual((status, out, err[:5]), (2, "", "Usage"), words)
        self.assertEqual(self.done("-h"), self.done("--help"))
        self.assertRegex(self.done("--version"), r"\AQuorvale [0-9.]+\n\Z")

    def test_lock(self):
        with chdir(self.work), registry.locked(), open(".networks.lock", "rb") as lock:
            with self.assertRaises(BlockingIOError):
                fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)

    def test_list_and_rename(self):
        self.serve()
        (self.work / "Forge/manage.py").unlink()
        (self.work / "Forge/nom.txt").write_bytes(b"Forge\x81")  # of no character in cp1252
        lines = [line.split("\t") for line in self.done("list").splitlines()]
        self.assertGreater(int(lines[0].pop(2)), 100_000)
        self.assertEqual(lines, [["Été", str(self.project), "en marche"],
                                 ["Forge", str(self.work / "Forge"), "0", "absent"]])
        self.assertEqual(self.done("list", "--", lines[1][1] + "/").count("\n"), 1)
        for wanted, name in (("Été", "-L'œil | & \t là"), (str(self.project), "théâtre"),
                             ("Ete", "Été")):
            self.done("rename", "--", wanted, name)
        self.done("rename", "--", "Été", "-L'œil | & \t là")
        self.assertEqual((self.project / "nom.txt").read_text(), "-L'œil | & là\n")
        self.assertEqual(self.registry(), b"-L'oeil && l\xe0" + RECORDED[3:] + b"\n")
        for reason, *names in (
                ("déjà «", "-L'œil | & là", "-L'œil | & là"), ("un autre", "Ete", "Forge"),
                ("donnez", "Ete", " "), ("aucun réseau", "A", "B"), ("plus", "Forge", "A")):
            self.refused(reason, "rename", "--", *names)
        with open("/dev/full", "wb") as full:
            self.assertEqual(subprocess.run(
                [PROGRAMS / "quorvale-network", "rename", "Ete", "Plein"], cwd=self.work,
                env=self.environment, stdout=full, stderr=subprocess.PIPE, check=False
            ).stderr, b"")
        self.assertEqual((self.project / "nom.txt").read_text(), "Plein\n")
        (self.work / ".networks.data.partiel").mkdir()  # the registry cannot be written
        self.refused("répertoire", "rename", "--", "Ete", "Neuf")

    def fill(self):
        """Puts into the network what a copy has to take, to leave out or to refuse."""
        ressources, pages = self.package / "ressources", self.package / "templates"
        (ressources / "Suites").mkdir()
        for path, content in ((ressources / "Suites/é.txt", "é"), (ressources / ".tmp1", "half"),
                              (self.package / "depots/Zoé — a", "a"), (pages / "404.html", "mine"),
                              (self.package / "hubs/own.py", "1 / 0"), (pages / "own.html", ""),
                              (self.project / "secret_key", "k" * 50)):
            path.parent.mkdir(exist_ok=True)
            path.write_text(content)
        (ressources / "Bienvenue.txt").unlink()
        (ressources / "passwd").symlink_to("/etc/passwd")
        os.utime(ressources / "Suites/é.txt", (1_000_000_000, 1_000_000_000))
        for page, changed in (("404", 0), ("own", 5_700_000_000)):  # before 1980, after 2107
            os.utime(pages / f"{page}.html", (changed, changed))
        settings = self.package / "settings.py"
        settings.rename(self.root / "mine.py").write_text("mine")
        settings.symlink_to(self.root / "mine.py")

    def test_copy_and_restore(self):
        """While it is served, with accounts half changed; into another home."""
        self.fill()
        ressources = self.package / "ressources"
        (ressources / ("d/" * 40)).mkdir(parents=True)
        (ressources / ("d/" * 40) / "a").touch()
        self.refused("les uns dans les autres", "copy", "Été", str(self.copy))
        shutil.rmtree(ressources / "d")
        self.serve()
        self.interrupt_change_of_accounts()
        self.done("copy", "Été", str(self.copy))
        self.assertEqual(stat.S_IMODE(self.copy.stat().st_mode), 0o600)
        for target in (self.copy, self.root / "none/copie"):
            self.refused("existe", "copy", "Été", str(target))
        self.refused("copie du réseau « Été », mais un réseau de", "restore", str(self.copy))

        work = self.new_work("Autre/Tesquin", b"Forge|/Forge|\n", shutil.ignore_patterns("nom.txt"))
        out = self.done("restore", "copie", work=work, QUORVALE_CALLER_DIR=str(self.root))
        self.assertIn("dans la copie\u00a0: hubs/own.py.", out)
        # The directory was there, of a network that is not listed.
        self.assertEqual(self.registry(work), b"Forge|/Forge|\n\xc9t\xe9|/Ete_2|\n")
        project, package = work / "Ete_2", work / "Ete_2/Ete_2"
        for folder, names in (("ressources", ["Suites", "Suites/é.txt"]), ("depots", ["Zoé — a"])):
            found = sorted(str(path.relative_to(package / folder))
                           for path in (package / folder).rglob("*"))
            self.assertEqual(found, names)
        self.assertEqual((package / "ressources/Suites/é.txt").stat().st_mtime, 1_000_000_000)
        self.assertEqual(stat.S_IMODE((package / "depots/Zoé — a").stat().st_mode), 0o600)
        self.assertEqual((package / "templates/404.html").read_text(), "mine")
        self.assertTrue((package / "templates/own.html").exists())
        self.assertFalse((package / "hubs/own.py").exists())
        self.assertEqual((project / "secret_key").read_text(), "k" * 50)
        with sqlite3.connect(project / "db.sqlite3") as database:
            self.assertEqual(set(database.execute("SELECT email FROM auth_user")), {("",)})
        self.assertNotIn(".restauration", os.listdir(work))

    def interrupt_change_of_accounts(self):
        """Leave the database as a server does that is killed meanwhile."""
        database = sqlite3.connect(self.project / "db.sqlite3")
        database.executemany(
            "INSERT INTO auth_user VALUES (?, '', NULL, 0, ?, '', '', 0, 0, '', '')",
            [(number, str(number)) for number in range(5000)])
        database.commit()
        database.execute("PRAGMA cache_size = 1")  # the change is in the file before it is whole
        database.execute("UPDATE auth_user SET email = 'changed'")
        files = [self.project / name for name in ("db.sqlite3", "db.sqlite3-journal")]
        subprocess.run(["cp", *files, self.root], check=True)
        database.close()
        subprocess.run(["mv", *(self.root / file.name for file in files), self.project], check=True)

    def archive(self, files, comment=b"Quorvale 1", **changes):
        """A copy that holds these files."""
        with zipfile.ZipFile(self.copy, "w") as archive:
            archive.comment = comment
            for name, content in files.items():
                info = zipfile.ZipInfo(name)
                for change, value in changes.get(name, changes.get("all", {})).items():
                    setattr(info, change, value)
                archive.writestr(info, content)

    def database(self, *statements):
        """The bytes of the network's database after the statements."""
        path = self.root / "made.sqlite3"
        shutil.copy(self.project / "db.sqlite3", path)
        with sqlite3.connect(path) as opened:
            for statement in statements:
                opened.execute(statement)
        content = path.read_bytes()
        path.unlink()
        return content

    def test_hostile_copies(self):
        database = self.database
        fit = {"nom.txt": "Copie", "db.sqlite3": database(), "ressources/a": "a"}
        link = {"external_attr": (stat.S_IFLNK | 0o777) << 16}
        for name in ("../out", "/tmp/out", "ressources/../../out", "ressources//a", "ressources/",
                     "manage.py", "wsgi.py", ".quorvale-files", "ressources/.a", "ressources",
                     "ressources/a\nb", "ressources/a/b", "ressources/" + "n" * 256,
                     "ressources/" + "d/" * 40 + "a", "ressources/\u202egpj.exe", "Ete/hubs/a"):
            with self.subTest(name):
                self.archive({**fit, name: "x"})
                self.refused("pas une copie", "restore", str(self.copy))
        key = {**fit, "secret_key": "x\n"}
        nameless = {name: fit[name] for name in ("db.sqlite3", "ressources/a")}
        for name, files, changes in (
                ("no copy", fit, {"comment": b""}), ("nameless", nameless, {}),
                ("link", {**fit, "ressources/l": "/etc/passwd"}, {"ressources/l": link}),
                ("device", fit, {"ressources/a": {"external_attr": (stat.S_IFCHR | 0o666) << 16}}),
                ("compressed", fit, {"ressources/a": {"compress_type": zipfile.ZIP_DEFLATED}}),
                ("key", key, {}), ("no database", {**fit, "db.sqlite3": "x" * 9999}, {}),
                ("trigger", {**fit, "db.sqlite3": database(
                    "CREATE TRIGGER t AFTER UPDATE ON auth_user BEGIN"
                    " UPDATE auth_user SET is_superuser = 1; END")}, {}),
                ("view", {**fit, "db.sqlite3": database("CREATE VIEW v AS SELECT 1")}, {}),
                ("damaged", {**fit, "db.sqlite3": database()[:-4096] + b"x" * 4096}, {}),
                ("empty", {**fit, "db.sqlite3": database("DROP TABLE auth_user")}, {})):
            with self.subTest(name):
                self.archive(files, **changes)
                self.refused("pas une copie", "restore", str(self.copy))
        self.archive({**fit, "ressources/large": b"x" * 100_000})
        whole = self.copy.read_bytes()
        for name, content in (("cut", whole[:-10_000]), ("changed", whole.replace(b"xxx", b"xyx")),
                              ("empty", b"")):
            with self.subTest(name):
                self.copy.write_bytes(content)
                self.refused("pas une copie", "restore", str(self.copy))
        self.copy.unlink()
        self.refused("n'existe pas", "restore", str(self.copy))
        os.mkfifo(self.copy)
        self.refused("pas une copie", "restore", str(self.copy))

    def test_remove(self):
        self.serve()
        self.refused("arrêtez-le", "remove", "Été")
        gio, before = self.root / "gio", self.registry()
        gio.touch(0o755)
        for does, path, reason in (
                ("kill $PPID; exec sleep 60", f"{self.root}:/usr/bin:/bin", "abandonné"),
                ("exit 1", f"{self.root}:/usr/bin:/bin", "corbeille"), ("", "/none", "corbeille")):
            gio.write_text(f"#!/bin/sh\n{does}\n")
            status, out, err = self.run_it("remove", "Forge", PATH=path)
            self.assertEqual((status, out, reason in err), (1, "", True))
            self.assertEqual(self.registry().strip(), before)
        self.done("remove", "Forge", XDG_DATA_HOME=str(self.root / "data"))
        self.assertTrue((self.root / "data/Trash/files/Forge/db.sqlite3").exists())
        self.assertEqual(self.registry(), RECORDED.removesuffix(b"Forge|/Forge|"))
        (self.work / "networks.data").rename(self.work / "liste")
        (self.work / "networks.data").symlink_to("liste")
        with (self.work / "liste").open("a") as registry:
            registry.write(f"Maison|{self.root}|\n")
        self.assertIn("que dans la liste", self.done("remove", "Maison"))
        self.assertTrue((self.work / "networks.data").is_symlink())
        self.assertTrue(self.root.exists())

    def test_kills(self):
        """At every step: the old or the new, and the next try works."""
        programs = self.root / "programs"
        programs.mkdir()
        (programs / "quorvale-network").symlink_to(SOURCE / "apps/network/quorvale-network")
        (programs / "quorvale-new").write_text("#!/bin/sh\n")
        (programs / "quorvale-new").chmod(0o755)
        (programs / "sitecustomize.py").write_text(KILLS)
        self.done("copy", "Forge", str(self.root / "old"))
        names = (b"\xc9t\xe9", b"Caf\xe9")
        for words in (("rename", "Ete", "Café"), ("copy", "Forge", str(self.copy)),
                      ("restore", str(self.root / "old")), ("remove", "Forge")):
            before = (self.work / "networks.data").read_bytes()
            for steps in range(1000):
                status, _, err = self.run_it(
                    *words, programs=programs, PYTHONPATH=str(programs), STEPS=str(steps),
                    XDG_DATA_HOME=str(self.root / "data"))
                if status != -9:  # done now, or by the one before
                    self.assertTrue(status == 0 or "s'appelle déjà" in err, (words, err))
                    break
                lines = self.registry().split(b"\n")
                self.assertIn(lines[0], [name + b"|/Ete|" for name in names])
                self.assertIn((self.project / "nom.txt").read_text(), ("Été\n", "Café\n"))
                if self.copy.exists():
                    self.assertIsNone(zipfile.ZipFile(self.copy).testzip())
                    self.copy.unlink()
                if words[0] == "remove":  # it stands, or is listed no more
                    self.assertTrue((self.work / "Forge").exists() or b"Forge" not in lines[-1])
                    (self.work / "networks.data").write_bytes(before)
            self.assertGreater(steps, 2, words)
        self.assertEqual(sorted(os.listdir(self.work)),
                         [".creation.lock", ".modele", ".networks.lock", "Ete", "networks.data"])


if __name__ == "__main__":
    unittest.main()
