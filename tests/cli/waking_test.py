#!/usr/bin/python3
"""What a command that watches makes of a machine that wakes up or whose network is back, on a system bus of its own."""
import contextlib
import os
import signal
import socket
import subprocess
import sys
import tempfile
import time
import unittest

sys.path.append(os.path.join(os.path.dirname(os.path.realpath(__file__)), "../desktop"))
from gi.repository import GLib

from bus import PATIENCE, StandIn, bus_command

PROGRAM = os.environ["ZEMBRASTEL_CLI"]


class Login(StandIn):
    name = "org.freedesktop.login1"
    path = "/org/freedesktop/login1"
    description = """
      <interface name="org.freedesktop.login1.Manager">
        <signal name="PrepareForSleep"><arg type="b"/></signal>
      </interface>"""

    def prepare_for_sleep(self, begins):
        self.emit("PrepareForSleep", GLib.Variant("(b)", (begins,)))


class Network(StandIn):
    name = "org.freedesktop.NetworkManager"
    path = "/org/freedesktop/NetworkManager"
    description = """
      <interface name="org.freedesktop.NetworkManager">
        <property name="Version" type="s" access="read"/>
        <property name="State" type="u" access="read"/>
        <property name="Connectivity" type="u" access="read"/>
      </interface>"""
    Version = GLib.Variant("s", "1.42.4")
    NONE, FULL = 1, 4

    def __init__(self, address):
        self.connectivity = self.NONE
        super().__init__(address)

    @property
    def State(self):
        disconnected, connected_everywhere = 20, 70
        return GLib.Variant("u", connected_everywhere if self.connectivity == self.FULL else disconnected)

    @property
    def Connectivity(self):
        return GLib.Variant("u", self.connectivity)

    def turn(self, connectivity):
        self.connectivity = connectivity
        changed = {"State": self.State, "Connectivity": self.Connectivity}
        self.bus.emit_signal(None, self.path, "org.freedesktop.DBus.Properties", "PropertiesChanged",
                             GLib.Variant("(sa{sv}as)", (self.interface.name, changed, [])))


class WakingTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory(prefix="waking.", dir="/tmp")
        self.addCleanup(self.folder.cleanup)
        os.mkdir(self.path("site"))
        self.daemon = self.spawn(*bus_command(self.folder.name))
        self.address = self.daemon.stdout.readline().strip()
        self.environment = os.environ | {"DBUS_SYSTEM_BUS_ADDRESS": self.address, "HOME": self.folder.name,
                                         "DBUS_SESSION_BUS_ADDRESS": "unix:path=/nonexistent"}

    def path(self, name):
        return os.path.join(self.folder.name, name)

    def spawn(self, *command, **options):
        process = subprocess.Popen(["setpriv", "--pdeathsig", "TERM", "--", *command], stdin=subprocess.DEVNULL,
                                   stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, **options)
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.wait)
        self.addCleanup(process.terminate)
        return process

    def stand_in(self, kind):
        service = kind(self.address)
        self.addCleanup(self.end_service, service)
        service.appear()
        return service

    @staticmethod
    def end_service(service):
        with contextlib.suppress(GLib.Error):  # its bus has gone before it
            service.end()

    def watch(self):
        """The command, with a server to which nobody answers; it waits twice as long after each failure."""
        with socket.socket() as nobody:
            nobody.bind(("127.0.0.1", 0))
            port = nobody.getsockname()[1]
        with open(self.path("password"), "w", encoding="utf8") as file:
            file.write("x")
        state = ["--state", self.path("state")]
        subprocess.run([PROGRAM, "profile", "add", *state, "--name", "Site", "--host", "127.0.0.1", "--port", str(port),
                        "--username", "web", "--local-folder", self.path("site"), "--transport", "ftp"],
                       check=True, stdin=subprocess.DEVNULL, capture_output=True, env=self.environment)
        return self.spawn(PROGRAM, "watch", "Site", *state, "--password-file", self.path("password"),
                          env=self.environment)

    def wait_for_failures(self, command, count):
        told = []
        while len(told) < count:
            line = command.stdout.readline()
            self.assertTrue(line, "the command has ended")
            if "There is no answer from 127.0.0.1" in line or "There is no network connection." in line:
                told.append(line)

    def assert_tries_at_once(self, command, what):
        """The command is in a wait of ten seconds."""
        began = time.monotonic()
        what()
        self.wait_for_failures(command, 1)
        self.assertLess(time.monotonic() - began, 8, "it has waited for its retry to be due")

    def test_wake_up_retries_and_a_lost_bus_ends_nothing(self):
        login = self.stand_in(Login)
        command = self.watch()
        self.wait_for_failures(command, 2)
        login.prepare_for_sleep(True)
        self.assert_tries_at_once(command, lambda: login.prepare_for_sleep(False))
        self.daemon.terminate()
        self.daemon.wait()
        self.wait_for_failures(command, 1)
        command.send_signal(signal.SIGINT)
        self.assertEqual(command.wait(PATIENCE), 0)

    def test_network_that_comes_back_ends_the_wait_for_a_retry(self):
        network = self.stand_in(Network)
        command = self.watch()
        self.wait_for_failures(command, 2)
        self.assert_tries_at_once(command, lambda: network.turn(Network.FULL))


if __name__ == "__main__":
    unittest.main(verbosity=2)
