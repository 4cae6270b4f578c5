"""A desktop of its own for a test: X server, session bus, keyring and accessibility bus, and what runs on them.

Nothing outside is seen or touched: display, buses and home folder are the test's own and go with it.
"""
import contextlib
import glob
import os
import shutil
import signal
import subprocess
import tempfile
import time

from Xlib import X, XK
from Xlib.display import Display
from Xlib.error import BadWindow
from Xlib.protocol.event import ClientMessage

from accessible import ACTIVE, FOCUSED, SHOWING, programs
from bus import PATIENCE, WITH_USER_NAME, bus_command, call, connect, has_owner, wait_until

SUPPORT = os.path.join(os.path.dirname(os.path.realpath(__file__)), "../support")
PROGRAM = os.environ["ZEMBRASTEL"]
COMMAND_LINE = os.environ["ZEMBRASTEL_CLI"]
SERVERS = os.environ["ZEMBRASTEL_SERVERS_DIR"]


class Desktop:
    """One person's session. All that is started on it ends with it, in reverse order."""

    def __init__(self, with_keyring=True):
        self.ends = []
        self.programs = []
        self.keyring = None
        self.folder = tempfile.mkdtemp(prefix="desktop.", dir="/tmp")  # sockets allow no long path
        self.ends.append(lambda: shutil.rmtree(self.folder, ignore_errors=True))
        os.mkdir(self.path("run"), 0o700)
        self.environment = {name: value for name, value in os.environ.items()
                            if not name.startswith(("XDG_", "QT_", "DBUS_", "AT_SPI_", "WAYLAND_"))}
        self.environment |= {"HOME": self.folder, "XDG_RUNTIME_DIR": self.path("run"), "LC_ALL": "C.UTF-8",
                             "LANGUAGE": "", "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1"}
        try:
            self.start_display()
            self.start_bus()
            if with_keyring:
                self.start_keyring()
            self.start_accessibility()
        except BaseException:
            self.end()
            raise

    def path(self, *names):
        return os.path.join(self.folder, *names)

    def spawn(self, name, command, **options):
        """Starts a process that ends with the desktop, and also when the test is killed."""
        with open(self.path(name + ".log"), "ab") as log:
            options = {"stdin": subprocess.DEVNULL, "stdout": log, "stderr": log, "env": self.environment,
                       "cwd": self.folder, **options}
            process = subprocess.Popen(["setpriv", "--pdeathsig", "TERM", "--", *command], **options)
        self.ends.append(lambda: self.stop(process))
        return process

    @staticmethod
    def stop(process):
        for stream in filter(None, (process.stdin, process.stdout)):
            stream.close()
        if process.poll() is None:
            process.terminate()
            process.send_signal(signal.SIGCONT)
        try:
            process.wait(5)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()

    def log(self, name):
        with open(self.path(name + ".log"), encoding="utf8", errors="replace") as file:
            return file.read()

    def end(self):
        while self.ends:
            self.ends.pop()()

    def start_display(self):
        reading, writing = os.pipe()
        self.server = self.spawn("display", ["Xvfb", "-displayfd", str(writing), "-screen", "0", "1280x1024x24",
                                             "-nolisten", "tcp", "-noreset"], pass_fds=[writing])
        os.close(writing)
        with os.fdopen(reading) as numbers:
            self.environment["DISPLAY"] = ":" + numbers.readline().strip()
        self.display = Display(self.environment["DISPLAY"])
        self.ends.append(self.display.close)

    def start_bus(self):
        daemon = self.spawn("bus", bus_command(self.path("run")), stdout=subprocess.PIPE, text=True)
        self.address = daemon.stdout.readline().strip()
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = self.address
        self.bus = connect(self.address)
        self.ends.append(lambda: self.bus.close_sync(None))

    def start_keyring(self):
        self.keyring = self.spawn("keyring", ["gnome-keyring-daemon", "--foreground", "--unlock",
                                              "--components=secrets"], stdin=subprocess.PIPE)
        self.keyring.stdin.write(b"test")
        self.keyring.stdin.close()
        wait_until(lambda: has_owner(self.bus, "org.freedesktop.secrets"), "the keyring is there")

    def start_accessibility(self):
        self.spawn("accessibility", [WITH_USER_NAME, "/usr/libexec/at-spi-bus-launcher", "--launch-immediately"])
        wait_until(lambda: has_owner(self.bus, "org.a11y.Bus"), "the accessibility bus is there")
        self.accessibility = connect(call(self.bus, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress")[0])
        self.ends.append(lambda: self.accessibility.close_sync(None))
        programs(self.accessibility)  # to ask the registry is to start it

    def stand_in(self, kind, *arguments):
        """A service on the session bus, which goes before the bus does."""
        service = kind(self.address, *arguments)
        self.ends.append(service.end)
        return service

    def call_keyring(self, method, signature, *arguments):
        return call(self.bus, "org.freedesktop.secrets", "/org/freedesktop/secrets", "org.freedesktop.Secret.Service",
                    method, signature, *arguments)

    def count_passwords(self):
        return sum(len(items) for items in self.call_keyring("SearchItems", "(a{ss})", {}))

    def lock_keyring(self):
        self.call_keyring("Lock", "(ao)", ["/org/freedesktop/secrets/collection/login"])

    def press_keys(self, *keys):
        """Each is the name of a key symbol, or "ctrl+" with one."""
        down, up, both = 0, 1, 2
        control = self.display.keysym_to_keycode(XK.XK_Control_L)
        for key in keys:
            name = key.removeprefix("ctrl+")
            with_control = name != key
            if with_control:
                self.make_key_event(control, down)
            self.make_key_event(self.display.keysym_to_keycode(XK.string_to_keysym(name)), both)
            if with_control:
                self.make_key_event(control, up)

    def type_into(self, field, text):
        """Replaces what the field holds."""
        field.focus()
        wait_until(lambda: field.has(FOCUSED), f"“{field.name()}” has the keyboard")
        self.press_keys("ctrl+a")
        whole_text = 4
        self.make_key_event(0, whole_text, text)
        wait_until(lambda: field.length() == len(text), f"“{field.name()}” holds what was typed")

    def make_key_event(self, code, kind, text=""):
        call(self.accessibility, "org.a11y.atspi.Registry", "/org/a11y/atspi/registry/deviceeventcontroller",
             "org.a11y.atspi.DeviceEventController", "GenerateKeyboardEvent", "(isu)", code, text, kind)

    def frames(self, title):
        """The windows of this title as a window manager has them, of which there is none here."""
        found = []
        for window in self.display.screen().root.query_tree().children:
            with contextlib.suppress(BadWindow):  # it has just gone
                if window.get_wm_name() == title and window.get_attributes().map_state == X.IsViewable:
                    found.append(window)
        return found

    def has_menu(self):
        """Is a menu open? The window manager of a desktop is not asked about those."""
        for window in self.display.screen().root.query_tree().children:
            with contextlib.suppress(BadWindow):  # it has just gone
                attributes = window.get_attributes()
                if attributes.map_state == X.IsViewable and attributes.override_redirect:
                    return True
        return False

    def close_window(self, title):
        """As the button in its frame does."""
        protocols, delete = (self.display.intern_atom(name) for name in ("WM_PROTOCOLS", "WM_DELETE_WINDOW"))
        window, = self.frames(title)
        window.send_event(ClientMessage(window=window, client_type=protocols, data=(32, [delete, 0, 0, 0, 0])))
        self.display.flush()

    def give_keyboard_to(self, title):
        for window in self.frames(title):
            window.set_input_focus(X.RevertToParent, X.CurrentTime)
        self.display.flush()

    def pixels(self, left, top, width, height):
        """Blue, green, red and nothing, again and again."""
        return self.display.screen().root.get_image(left, top, width, height, X.ZPixmap, 0xFFFFFFFF).data

    def take_picture(self, path):
        """A PPM file of the whole screen."""
        width, height = self.display.screen().width_in_pixels, self.display.screen().height_in_pixels
        shown, colours = self.pixels(0, 0, width, height), bytearray(3 * width * height)
        colours[0::3], colours[1::3], colours[2::3] = shown[2::4], shown[1::4], shown[0::4]
        with open(path, "wb") as file:
            file.write(b"P6 %d %d 255\n" % (width, height) + colours)


class Program:
    """The desktop program as it runs on a desktop."""

    def __init__(self, desktop, *arguments):
        self.desktop = desktop
        desktop.programs.append(self)
        self.name = f"program {len(desktop.programs)}"
        # A parent may ignore the end of its children and allow core dumps.
        self.process = desktop.spawn(self.name, ["env", "--ignore-signal=CHLD", PROGRAM, *arguments])

    def exit_status(self, seconds=PATIENCE):
        """Once it has ended."""
        return self.process.wait(seconds)

    def end(self, how, seconds=PATIENCE):
        """Sends the signal; the exit status."""
        self.process.send_signal(how)
        return self.exit_status(seconds)

    def root(self):
        """Nothing before it is up."""
        return next((each for each in programs(self.desktop.accessibility) if each.pid() == self.process.pid), None)

    def windows(self):
        """Those that can be seen."""
        root = self.root()
        return [window for window in root.children() if window.has(SHOWING)] if root else []

    def window(self, title="Zembrastel", seconds=PATIENCE):
        """The window of this title, once it is there and has the keyboard."""
        def find():
            assert self.process.poll() is None, f"the program has ended with {self.process.returncode}"
            return next((window for window in self.windows() if window.name() == title), None)

        window = wait_until(find, f"the window “{title}” is shown", seconds)
        wait_until(lambda: window.has(ACTIVE) or self.desktop.give_keyboard_to(title),
                   f"the window “{title}” has the keyboard")
        return window

    def wait_until_closed(self, title="Zembrastel"):
        wait_until(lambda: title not in [each.name() for each in self.windows()], f"the window “{title}” is closed")

    def transfers(self):
        """The process ids of the curls that it has started."""
        listings = glob.glob(f"/proc/{self.process.pid}/task/*/children")
        children = [int(pid) for listing in listings for pid in (read("", listing) or b"").split()]
        return [pid for pid in children if read(f"/proc/{pid}", "comm") == b"curl\n"]


class Site:
    """A local folder, and the folder on a real server where it is to be published."""

    def __init__(self, desktop, *server_options, server="ftp_server.py", encrypted=True,
                 certificate="server.pem"):
        self.desktop = desktop
        self.local, self.remote = desktop.path("website"), desktop.path("server/site")
        for folder in (self.local, self.remote):
            os.makedirs(folder)
        command = [os.path.join(SUPPORT, server), *server_options]
        if server == "ftp_server.py":
            command += ["proftpd", "--servers", SERVERS]
        self.profile = ["--transport", "ftps" if encrypted else "ftp"]
        if encrypted:
            certificates = desktop.path("certificates")
            subprocess.run([os.path.join(SUPPORT, "make_certificates"), certificates], check=True, capture_output=True)
            command += ["--tls", "explicit", "--cert", os.path.join(certificates, certificate)]
            desktop.environment["CURL_CA_BUNDLE"] = os.path.join(certificates, "ca.pem")
        process = desktop.spawn("server", [*command, desktop.path("server")], stdin=subprocess.PIPE,
                                stdout=subprocess.PIPE, text=True)
        self.port = process.stdout.readline().strip()
        self.remote_folder = process.stdout.readline().strip().rstrip("/") + "/site"

    def add_profile(self, name="Site"):
        """As one that is watched from the next start on, with its password in the keyring."""
        password = self.desktop.path("password")
        with open(os.open(password, os.O_WRONLY | os.O_CREAT, 0o600), "w", encoding="utf8") as file:
            file.write("s3cret")
        subprocess.run([COMMAND_LINE, "--password-file", password, "profile", "add", "--enabled", "--name", name,
                        "--host", "localhost", "--port", self.port, "--username", "web", "--remote-folder",
                        self.remote_folder, "--local-folder", self.local, *self.profile],
                       env=self.desktop.environment, check=True, stdout=subprocess.DEVNULL)
        os.remove(password)


def write(folder, name, data, newer_by=0):
    path = os.path.join(folder, name)
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "wb") as file:
        file.write(data)
    if newer_by:
        os.utime(path, 2 * (time.time() + newer_by,))


def read(folder, name):
    """Nothing where there is no such file."""
    try:
        with open(os.path.join(folder, name), "rb") as file:
            return file.read()
    except (FileNotFoundError, ProcessLookupError):
        return None
