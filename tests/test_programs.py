#!/usr/bin/python3
"""Usage: test_programs.py PROGRAMS. Calls the programs as an operator does, with fake commands."""

import os
import pty
import shlex
import shutil
import signal
import sqlite3
import subprocess
import tempfile
import termios
import time
import unittest
from pathlib import Path

from quick_django import COMMANDS, PARTS, PROGRAMS, copy_commands, place_template

LAUNCH = "cd {} && python3 manage.py runserver 10.0.0.7:8000 ; exec bash"


class Programs(unittest.TestCase):
    def setUp(self, folder="Réseaux"):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.work = Path(directory.name, folder).resolve()
        (self.work / "bin").mkdir(parents=True)
        # Accents hold in a session of any encoding.
        self.environment = {**os.environ, "LC_ALL": "C", "PYTHONUTF8": "0",
                            "PATH": f"{self.work}/bin:/usr/bin:/bin"}

    def start(self, *command):
        process = subprocess.Popen(command, cwd=self.work, env=self.environment, text=True,
                                   start_new_session=True, stdin=subprocess.PIPE,
                                   stdout=subprocess.PIPE)
        self.addCleanup(process.communicate)
        self.addCleanup(subprocess.run, ("pkill", "-KILL", "-s", str(process.pid)))
        return process

    def fake(self, command, script):
        path = self.work / "bin" / command
        path.write_text(f"#!/bin/sh\n{script}\n")
        path.chmod(0o755)

    def place_template(self):
        place_template(self.work)
        copy_commands(self.work / "bin")

    def program(self, name, *arguments, typed=""):
        """The program's status, output and errors, when it and all it started have ended."""
        done = subprocess.run([PROGRAMS / f"quorvale-{name}", *arguments], cwd=self.work, text=True,
                              env=self.environment, input=typed, capture_output=True)
        return done.returncode, done.stdout, done.stderr

    def test_usage(self):
        programs = ("client", "setup", "django", "new", "stop", "desk", "wait")
        for name in programs:
            self.environment["QT_QPA_PLATFORM"] = "none"  # help needs no display
            status, out, err = self.program(name, "--help")
            self.assertEqual((status, err), (0, ""))
            self.assertRegex(out, rf"\AUsage\u00a0: quorvale-{name}\b")
            self.assertEqual(self.program(name, "-h"), (0, out, ""))
            self.assertRegex(self.program(name, "--version")[1], r"\AQuorvale [0-9.]+\n\Z")
        self.environment["QT_QPA_PLATFORM"] = "offscreen"
        for name in programs:
            for words, reason in [
                    (("a", "b", ""), "Mot en trop"), (("--admin", "", "a"), ""),
                    (("--né",), "L'option «\u00a0né\u00a0» n'existe pas."),
                    (("--help=a",), "ne prend pas de valeur"), (("--end", "a"), ""),
                    (("--admin=a", "--admin", "b", "c"), ""),
                    (("-Roche",), "«\u00a0Roche\u00a0» n'existe pas."), (("",), "")]:
                status, out, err = self.program(name, *words)
                self.assertEqual((status, out, err[:5]), (2, "", "Usage"), (name, words))
                self.assertIn(reason, err)

    def test_start_up_order(self):
        self.fake("xdg-open", 'echo "$*" >asked')
        os.mkfifo(self.work / "networks.data")
        os.mkfifo(self.work / "asked")
        process = self.start(PROGRAMS / "quorvale")
        # The program waits for the registry's first line: no window is there yet.
        self.assertEqual((self.work / "asked").read_text(), "quorvale.local:8000\n")
        (self.work / "networks.data").write_text("A|/d/a|\n")
        self.assertEqual(process.stdout.readline(), "A|/d/a|\n")
        self.assertIsNone(process.poll())

    def test_django(self):
        self.fake("gnome-terminal", "printf '%s|' $$ \"$@\" >called")
        status, out, err = self.program("django", b"/\xe9 \xc3\xa9")
        pid, call = (self.work / "called").read_text("latin-1").split("|", 1)
        self.assertEqual(
            call, "--|bash|-c|cd /é Ã© && python3 manage.py runserver; exec bash|")
        said = f"Le serveur Django a été lancé dans un nouveau terminal (PID {pid}).\n"
        self.assertEqual((status, out, err), (0, said, ""))
        self.environment["PATH"] = "/nowhere"
        status, out, err = self.program("django", "/a")
        self.assertEqual((status, out.count("\n"), err),
                         (0, 1, "Erreur : impossible de lancer le terminal.\n"))

    def serve(self, name, before="", launch=LAUNCH):
        project = self.work / name
        project.mkdir(exist_ok=True)
        # Django's server is two processes.
        (project / "manage.py").write_text(
            f"import os, signal, time\n{before}\nos.fork()\nprint(flush=True)\ntime.sleep(600)\n")
        terminal = self.start("bash", "-c", launch.format(project))
        self.assertEqual(terminal.stdout.readline() + terminal.stdout.readline(), "\n\n")
        return terminal

    def stop_in_vain(self):
        """Begins to stop a server that no signal ends: the first process of a namespace."""
        project = self.work / "elsewhere/a"
        project.mkdir(parents=True)
        (project.parent / "networks.data").write_text(f"A|{project}|\n")
        (project / "manage.py").write_text(
            "import os, signal, subprocess\nsignal.signal(signal.SIGINT, signal.SIG_IGN)\n"
            f"os._exit(subprocess.call('{PROGRAMS}/quorvale-stop', cwd='..', stderr=1))")
        return self.start("unshare", "--map-root-user", "--pid", "--fork", "--mount-proc", "sh",
                          "-c", f"cd {project} && exec python3 manage.py runserver")

    def stops(self, out, err, *names):
        self.assertEqual(self.program("stop", *names), (0 if out else 1, out, err))

    def test_stop(self):
        in_vain = self.stop_in_vain()
        terminal = self.serve("a", "signal.signal(2, lambda *_: open('ended', 'w') and exit())")
        commands = ["python3 manage.py migrate", "-a editor python3 manage.py runserver"]
        if os.getuid() == 0:  # of somebody else
            commands += ["setpriv --reuid=65534 --clear-groups --inh-caps=+dac_override "
                         "--ambient-caps=+dac_override python3 manage.py runserver"]
        others = [self.serve("a", launch="cd {} && exec " + command) for command in commands]
        shell = self.serve("b", launch="cd {} && python3 manage.py runserver; exec cat")
        deaf = self.serve("deaf", "for s in 2, 15: signal.signal(s, signal.SIG_IGN)")
        (self.work / "link").symlink_to("a")
        (self.work / "a/nom.txt").write_text("Réseau a\n")
        (self.work / "b/nom.txt").write_text(" \n")
        (self.work / "networks.data").write_text("".join(
            f"{name}|{self.work}/{directory}|\n" for name, directory in
            [("A", "link"), ("B&&B", "b"), ("D", "deaf"), ("none", "none")]))
        a, b, d = (f"Le réseau «\u00a0{name}\u00a0» est arrêté.\n"
                   for name in ("Réseau a", "B&B", "D"))
        nothing = "Rien n'a été arrêté.\n"
        self.stops("", "Aucun réseau ne s'appelle «\u00a0c\u00a0» ici.\n", "c")
        self.stops(a, "", "Réseau a")
        self.assertTrue((self.work / "a/ended").exists())
        terminal.wait(60)
        self.stops("", nothing, "link")
        self.stops(b, "", "b")
        shell.stdin.write("still here\n")
        shell.stdin.flush()
        self.assertEqual(shell.stdout.readline(), "still here\n")
        terminal = self.serve("a")
        shutil.rmtree(self.work / "deaf")
        self.stops(a + d, "")
        terminal.wait(60)
        deaf.wait(60)
        self.stops("", nothing)
        self.assertEqual([other.poll() for other in others], [None] * len(others))
        said = in_vain.stdout.read()
        self.assertEqual((in_vain.wait(60), said), (
            1, f"Le réseau «\u00a0A\u00a0» n'a pas pu être arrêté.\n{nothing}"))

    def test_new(self):
        """With accents, and with the reasons why the administrator is refused."""
        self.place_template()
        for status, account, password in [(3, "anne", "court"), (4, "anne/", "Tres-Long-77"),
                                          (0, "-h", "Tres-Long-77")]:
            if status == 0:  # by Django itself
                for command in COMMANDS:
                    (self.work / "bin" / command).unlink()
            done = self.program("new", "--admin", account, "--", "Été", typed=password)
            self.assertEqual((done[0], bool(done[2])), (status, status != 0), done[2])
            self.assertEqual("est créé" in done[1], status == 0)
        self.assertEqual(self.program("new", "|")[0], 0)
        self.assertEqual((self.work / "networks.data").read_bytes().replace(
            bytes(self.work), b""), b"\xc9t\xe9|/Ete|\nReseau|/Reseau|\n")
        self.assertEqual((self.work / "Ete/nom.txt").read_text(), "Été\n")
        with sqlite3.connect(self.work / "Ete/db.sqlite3") as database:
            accounts = database.execute("SELECT username, is_superuser FROM auth_user")
            self.assertEqual(accounts.fetchall(), [("-h", 1)])
        for part in PARTS:
            self.assertTrue((self.work / "Ete/Ete" / part).exists(), part)

    def test_failed_command_stops_no_other(self):
        self.place_template()
        self.fake("django-admin", "false")
        self.fake("cp", f"echo \"$*\" >>{shlex.quote(str(self.work))}/log")
        self.assertEqual(self.program("new", "Forge")[0], 1)
        self.assertEqual(len((self.work / "log").read_text().splitlines()), len(PARTS))

    def test_password_is_not_echoed(self):
        ours, terminal = pty.openpty()
        for typed in (b"", b"Tres-Long-77\n"):
            process = subprocess.Popen(
                [PROGRAMS / "quorvale-new", "--admin", "anne", "Forge"], cwd=self.work,
                env=self.environment, stdin=terminal, stdout=terminal, stderr=terminal)
            deadline = time.monotonic() + 10
            while termios.tcgetattr(terminal)[3] & termios.ECHO and time.monotonic() < deadline:
                time.sleep(0.01)
            if typed:
                os.write(ours, typed)
            else:
                process.terminate()
            # There is no template.
            self.assertEqual(process.wait(60), 1 if typed else -signal.SIGTERM)
            self.assertNotIn(b"Tres-Long-77", os.read(ours, 4096))
            self.assertTrue(termios.tcgetattr(terminal)[3] & termios.ECHO)

    def test_new_refused(self):
        """Nothing is left of what was made."""
        for name, before, reason, *folder in [
                (" ", "", "donnez-lui un nom"), ("Forge", "ln -s nowhere Forge", "existe déjà"),
                ("Été & Cœur", "printf '\\311t\\351 && Coeur|/d|' >networks.data",
                 "enregistré dans"),
                ("Forge", "mkdir networks.data", "pas un fichier lisible"),
                ("Forge", "rm -r static", "manque ici"),
                ("Forge", "echo '[ $1 = urls.py ] || command -p cp $*' >bin/cp", "être copié"),
                # By somebody else, meanwhile.
                ("Forge", "touch networks.data; echo 'echo \"Forge|/d|\" >../networks.data; "
                          "command -p cp $*' >bin/cp", "déjà enregistré.\n"),
                ("Forge", "", "prendrait pas tel quel", "a b"),
                ("Forge", "", "prendrait pas tel quel", "a;b"),
                ("Forge", "echo 'flock -n ../.creation.lock true && command -p django-admin $*'"
                          " >bin/django-admin", "n'a pas pu être créé"),
                ("Forge", "rm bin/python3; echo 'import os; os.kill(os.getppid(), 15); 1/0'"
                          " >>settings.py", "base de données"),
                ("Forge", "rm hubs/management/commands/compte.py", "administrateur")]:
            with self.subTest(name + before):
                self.setUp(*folder)
                self.place_template()
                subprocess.run(before + "\nchmod -f +x bin/*", cwd=self.work, shell=True)
                locks = {".creation.lock", ".networks.lock"}
                files = locks.union(os.listdir(self.work))
                status, _, err = self.program("new", "--admin", "anne", name, typed="Tres-Long-77")
                self.assertEqual((status, reason in err), (1, True), err)
                self.assertEqual(locks.union(os.listdir(self.work)), files)

    def test_new_after_a_kill(self):
        """What was half made is in nobody's way."""
        self.place_template()
        for command in ("django-admin", "cp", "diff", "sync"):
            with self.subTest(command):
                self.fake(command, "kill -9 0")
                self.start(PROGRAMS / "quorvale-new", "Été").wait(60)
                self.assertFalse((self.work / "networks.data").exists())
                (self.work / "bin" / command).unlink()
                copy_commands(self.work / "bin")
        (self.work / "Ete").rename(self.work / "whole")  # as it was when its place was to be synced
        self.assertTrue((self.work / "whole/db.sqlite3").exists())
        self.assertEqual(self.program("new", "Été")[0], 0)
        self.assertFalse((self.work / ".creation").exists())


if __name__ == "__main__":
    unittest.main()
