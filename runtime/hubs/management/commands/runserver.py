"""Serves the network, in place of Django's own command and with the same options."""

import errno
import logging
import resource
import signal
import socket
import sys
import time

from django.conf import settings
from django.contrib.staticfiles.management.commands import runserver

from ... import names, processes, terminal
from ...server import Server
from ...servers import Servers

_REASONS = {
    errno.EACCES: "vous n'avez pas le droit de servir à ce port.",
    errno.EADDRINUSE: "ce port est déjà pris.",
    errno.EADDRNOTAVAIL: "cette adresse n'est pas, ou n'est plus, celle de cette machine.",
}


def allow_many_files():
    """Raise the limit of open files: a connection needs its own, one for what it sends or receives,
    and the database."""
    allowed, most = resource.getrlimit(resource.RLIMIT_NOFILE)
    resource.setrlimit(resource.RLIMIT_NOFILE, (max(allowed, min(most, 8192)), most))


def _end_orderly(_number, _frame):
    raise KeyboardInterrupt


class Command(runserver.Command):
    help = "Sert le réseau jusqu'à Ctrl+C. --verbosity 2 : une ligne par requête."

    def handle(self, *args, **options):
        # On a machine without a network, the programs give no address.
        if (options["addrport"] or "").startswith(":"):
            options["addrport"] = self.default_addr + options["addrport"]
        super().handle(*args, **options)

    def say(self, text):
        """Write for the operator."""
        sys.stdout.write(f"{text}\n")

    def give_up(self, reason):
        print(terminal.harmless(f"Le réseau n'a pas pu démarrer : {reason}"), file=sys.stderr)
        sys.exit(1)

    def run(self, **options):
        """Serve at once, without Django's second process that restarts the first."""
        with terminal.kept_flowing():
            self.serve(**options)

    def serve(self, **options):
        """Serve until the operator ends it."""
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            signal.signal(number, _end_orderly)
        servers = None
        try:
            allow_many_files()
            server = self.listen()
            server.set_app(self.get_handler(**options))  # sets the logging anew
            if options["verbosity"] < 2:  # a line a request hides what is meant for the operator
                logging.getLogger("django.server").setLevel(logging.ERROR)
            self.check()
            address, port = server.server_address[:2]
            name = names.display_name()
            self.say(f"Le réseau « {name} » est en marche. Pour l'arrêter : Ctrl+C.\n"
                     f"Adresse à donner aux visiteurs : http://{self.shown(address)}:{port}/")
            servers = Servers(server, name, self.say)
            servers.run()
        except KeyboardInterrupt:
            for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
                signal.signal(number, signal.SIG_IGN)
            if servers:
                servers.withdraw()
            self.say("Le réseau est arrêté.")

    def listen(self):
        """Returns the listening server; ends a network of this operator that holds the port."""
        deadline = time.monotonic() + 15
        while True:
            try:
                return Server((self.addr, int(self.port)), ipv6=self.use_ipv6)
            except socket.gaierror:
                self.give_up(f"« {self.addr} » n'est pas une adresse connue.")
            except OSError as error:
                if error.errno != errno.EADDRINUSE or time.monotonic() > deadline:
                    self.give_up(_REASONS.get(error.errno, error.strerror))
                self.make_room()

    def make_room(self):
        holder = None
        if not self.use_ipv6:
            holder = processes.holder(socket.gethostbyname(self.addr), int(self.port))
        if holder is None:
            time.sleep(0.1)  # it has just gone, or cannot be seen: the deadline decides
            return
        if not holder.network:
            self.give_up(f"le port {self.port} est pris par {processes.described(holder)}.")
        if holder.network == settings.BASE_DIR:
            self.say("Ce réseau était déjà en marche : il redémarre.")
        else:
            self.say(f"Le réseau « {names.display_name(holder.network)} » était en marche :"
                     " il est arrêté.")
        processes.end(holder.network)

    def shown(self, address):
        return f"[{address}]" if self.use_ipv6 else address
