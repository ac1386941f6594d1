#!/usr/bin/python3
"""The server of a network: what it sends, holds out against, and never loses."""

import fcntl
import os
import pty
import re
import shutil
import signal
import socket
import subprocess
import sys
import termios
import time
import unittest
from pathlib import Path
from unittest import mock

from quick_django import QUICK_DJANGO, RUNTIME
from served_network import ServedNetworkTest, Visitor

sys.dont_write_bytecode = True
sys.path.append(str(RUNTIME))
from hubs import bodies, connections, mdns, processes  # noqa: E402, these need no Django

# Tells on the server's standard output in which order what is sent reaches the disk.
TOLD_DISK = """
_fsync, _link = os.fsync, os.link


def _told_fsync(descriptor):
    print("#folder" if stat.S_ISDIR(os.fstat(descriptor).st_mode) else "#data")
    _fsync(descriptor)


def _told_link(source, name, **folders):
    if not name.startswith("."):
        print("#link")
    if name == "b.txt":
        raise PermissionError(errno.EPERM, name)
    _link(source, name, **folders)


os.fsync, os.link = _told_fsync, _told_link
"""


class ServerTest(ServedNetworkTest):
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
                ({"Range": f"bytes={size - 2}-"}, 206, f"bytes {size - 2}-{size - 1}/{size}",
                 b"nd"),
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
        path = self.offer("Cours/journal.txt")
        head = "GET /%s HTTP/1.1\r\nHost: a\r\n\r\n"
        file, archive = "ressources/Cours/journal.txt", "archives/Cours.zip"
        self.start_server()
        for asked, change, whole in [(file, 2, True), (file, 0.5, False),
                                     (archive, 2, False), (archive, 0.5, False)]:
            path.write_bytes(bytes(32 << 20))
            os.utime(path, (10**9, 10**9))
            with socket.create_connection(("127.0.0.1", self.port), 60) as client:
                client.sendall((head % asked + head % "_infos/kl/").encode())
                with client.makefile("rb") as stream:
                    while (line := stream.readline()) != b"\r\n":
                        if line.startswith(b"Content-Length"):
                            size = int(line.split()[1])
                    os.truncate(path, int(size * change))
                    self.assertEqual(len(stream.read(size)) == size, whole)
                    self.assertEqual(stream.readline()[9:12] == b"200", whole)

    def test_slow_visitors(self):
        """Who says nothing is not waited for, nor who goes on sending what was refused."""
        hubs = self.project / "Atelier/hubs"
        for module, name in (("server.py", "IDLE_SECONDS"), ("bodies.py", "DRAIN_SECONDS")):
            text = (hubs / module).read_text("utf-8")
            (hubs / module).write_text(re.sub(f"(?m)^{name} = .*", f"{name} = 1", text), "utf-8")
        self.start_server()
        for head in ("", "POST / HTTP/1.1\r\nHost: a\r\nContent-Length: 200000\r\n\r\n"):
            begin = time.monotonic()
            with socket.create_connection(("127.0.0.1", self.port), 0.1) as client:
                client.sendall(head.encode())
                with self.assertRaises(ConnectionError):
                    while time.monotonic() < begin + 15:
                        try:
                            if not client.recv(4096):
                                raise ConnectionError
                        except TimeoutError:
                            if head:
                                client.sendall(b"a")

    def test_drain(self):
        """Where the server itself bounds no reading, it ends all the same."""
        last = time.monotonic() + 10

        def read(_size):
            self.assertLess(time.monotonic(), last)
            return b"a"
        with mock.patch.object(bodies, "DRAIN_SECONDS", 0.1):
            bodies.drain(read)

    def test_connections(self):
        """The oldest of the address with most gives way; what has ended counts no more."""
        kept, (first, *many, last) = connections.Connections(), [mock.Mock() for _ in range(5)]
        with mock.patch.multiple(connections, MAX_CONNECTIONS=4, MAX_CONNECTIONS_PER_ADDRESS=3,
                                 _MAX_LEAVING=1):
            stay = [kept.add(first, "a"), *(kept.add(each, "b") for each in [*many, mock.Mock()]),
                    kept.add(last, "c"), kept.add(mock.Mock(), "d")]
            self.assertEqual(stay, [True] * 4 + [False, True, False])
            closed = [each.shutdown.called for each in (first, *many, last)]
            self.assertEqual(closed, [False, True, False, False, False])
            for each in many:
                kept.remove(each)
            self.assertEqual([kept.add(mock.Mock(), "b") for _ in range(2)], [True, True])

    def test_names_that_answer(self):
        """A name for which only this machine answers, at another of its addresses, is free."""
        asked = mdns.Announcement("192.0.2.10", 8000, "A", print, ["198.51.100.44"])
        asked._zeroconf = mock.Mock()
        for address, is_taken in [("198.51.100.44", False), ("192.0.2.20", True)]:
            asked._zeroconf.cache.entries_with_name.return_value = [
                mock.Mock(address=socket.inet_aton(address))]
            with mock.patch("time.sleep"):
                self.assertEqual(asked._is_taken(mock.Mock(), "a"), is_taken, address)

    def hand_in(self, name, address):
        """Hands a file in from an address. Returns what the page says afterwards."""
        self.address = address
        self.send(name, "contenu", "/remettre/", "fichier")
        return self.ask("/remettre/")[2].decode()

    def wait_until_it_holds(self, wanted):
        """Waits until the server holds an unfinished file, or none any more."""
        nameless = ["find", f"/proc/{self.server.pid}/fd", "-lname", "*Atelier/#*"]
        for _ in range(600):
            found = subprocess.run(nameless, capture_output=True, check=False).stdout
            if bool(found) == wanted:
                return
            time.sleep(0.1)
        self.fail(f"an unfinished file: {not wanted}")

    def test_handing_in(self):
        """Each address has a share, of which what is still coming is a part; what is kept is whole
        on the disk, also where it cannot be linked."""
        self.bound("HANDED_IN_FILES_PER_ADDRESS", 3)
        self.bound("HANDED_IN_BYTES_PER_ADDRESS", 10 << 20)
        self.bound("HANDING_IN_PER_ADDRESS", 1)
        self.bound("HANDING_IN_PATIENCE", 1)
        resources = self.project / "Atelier" / "hubs" / "resources.py"
        resources.write_text(resources.read_text("utf-8") + TOLD_DISK)
        self.open_hand_in()
        with open(self.project / "log", "wb") as log:
            self.start_server(stdout=log)
        self.ask("/remettre/")
        pages = [self.hand_in("a\u2028b.txt", "127.0.0.1") for _ in range(4)]
        self.assertEqual(["autant qu&#x27;elle" in page for page in pages], [False] * 3 + [True])
        self.hand_in("b.txt", "127.0.0.2")
        self.assertEqual((self.handed_in / "b.txt").read_text(), "contenu")
        told = [line for line in (self.project / "log").read_text().split() if line[0] == "#"]
        kept = ["#data", "#data", "#link", "#folder"]
        self.assertEqual(told, kept * 3 + ["#data"] + kept)

        with socket.socket() as slow:
            slow.bind(("127.0.0.3", 0))
            slow.connect(("127.0.0.1", self.port))
            slow.sendall(b"POST /remettre/ HTTP/1.1\r\nHost: a\r\nContent-Length: 50000000\r\n"
                         b"Cookie: csrf_Atelier=%b\r\n" % self.cookies["csrf_Atelier"].encode() +
                         b"Content-Type: multipart/form-data; boundary=B\r\n\r\n"
                         b'--B\r\nContent-Disposition: form-data; name="fichier"; filename="c"\r\n'
                         b"\r\n" + bytes(1 << 20))
            self.wait_until_it_holds(True)
            self.assertIn("en même temps", self.hand_in("d.txt", "127.0.0.3"))
            self.hand_in("e.txt", "127.0.0.4")
            self.assertTrue((self.handed_in / "e.txt").exists())
            slow.sendall(bytes(11 << 20))  # more than the share has room for
            self.wait_until_it_holds(False)
        self.assertEqual(len(list(self.handed_in.glob("[!.]*"))), 5)

    def test_log_ins(self):
        self.bound("LOGINS_AT_ONCE", 1)
        self.make_account()
        self.start_server(address="")  # as on a machine without a network
        for _ in range(6):  # of which none is a try
            self.assertEqual(self.log_in("zoé", ""), (200, False))
        with socket.create_connection(("127.0.0.1", self.port), 60) as slow:
            slow.sendall(b"POST /admin/login/ HTTP/1.1\r\nHost: a\r\nContent-Length: 9\r\n"
                         b"Content-Type: application/x-www-form-urlencoded\r\n"
                         b"Cookie: csrf_Atelier=%b\r\n\r\n"
                         % self.cookies["csrf_Atelier"].encode())
            time.sleep(0.1)  # the next is meant to come later, and passes if it does not
            status, headers, _ = Visitor.log_in(self, "zoé")
            slow.setblocking(False)
            with self.assertRaises(BlockingIOError):  # the server has not given up on it
                slow.recv(1)
        self.assertEqual(status, 302)
        session, = (cookie for cookie in headers.get_all("Set-Cookie")
                    if cookie.startswith("session"))
        self.assertNotRegex(session, "expires|Max-Age")  # it ends with the browser
        for path, method, answer in [("/admin/logout/", "GET", 200), ("/remis/", "GET", 200),
                                     ("/admin/logout/", "POST", 302), ("/remis/", "GET", 302)]:
            token = {"X_CSRFToken": self.cookies["csrf_Atelier"]}
            self.assertEqual(self.ask(path, method=method, **token)[0], answer, (path, method))

    def test_terminal(self):
        """Ctrl+S stops nothing; a terminal that nobody reads holds neither pages nor the end."""
        ours, terminal = pty.openpty()
        self.start_server(verbosity=2, stdin=terminal, stdout=terminal, stderr=terminal,
                          preexec_fn=lambda: fcntl.ioctl(terminal, termios.TIOCSCTTY, 0))
        os.write(ours, b"\x13")
        self.ask("/?q=lu")
        said = b""
        while b"q=lu" not in said:
            said += os.read(ours, 4096)
        with socket.create_connection(("127.0.0.1", self.port), 60) as client:
            for _ in range(150):
                client.sendall(b"HEAD /_infos/kl/?%b HTTP/1.1\r\nHost: a\r\n\r\n" % (b"a" * 1000))
                answer = b""
                while not answer.endswith(b"\r\n\r\n"):
                    answer += client.recv(4096)
        self.server.terminate()
        self.server.wait(60)
        self.assertTrue(termios.tcgetattr(terminal)[0] & termios.IXON)

    def test_server_processes(self):
        """The programs' own rule is tested by the same table."""
        table = Path(__file__).with_name("server_command_lines")
        for line in table.read_bytes().splitlines():
            verdict, *words = line.split(b"|")
            self.assertEqual(processes.is_server_command(words), verdict == b"yes", line)
        deaf, other = (subprocess.Popen(  # what it is called decides, not what it does
            ("python3", "--follow", "manage.py", "runserver"), executable="/usr/bin/tail",
            cwd=directory, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
            preexec_fn=lambda: signal.signal(signal.SIGTERM, signal.SIG_IGN))
            for directory in (self.project, QUICK_DJANGO / "Atelier"))
        self.addCleanup(deaf.kill)
        self.addCleanup(other.kill)
        ended = processes._ended
        with mock.patch.object(processes, "_ended", lambda pid, _seconds: ended(pid, 0.1)):
            processes.end(self.project)
        self.assertEqual(deaf.wait(60), -signal.SIGKILL)
        self.assertIsNone(other.poll())
        self.start_server()
        self.ask("/_infos/kl/")  # all its modules are loaded then
        shutil.rmtree(self.project)
        self.assertIn(self.project, [directory for _, directory in processes.networks()])
        processes.end(self.project)
        self.server.wait(60)  # its files are closed a little after its command line is gone
        with socket.socket() as client:
            self.assertNotEqual(client.connect_ex(("127.0.0.1", self.port)), 0)


if __name__ == "__main__":
    unittest.main()
