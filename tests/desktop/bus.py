"""D-Bus as the tests use it: connections, calls, and services that stand in for those of a desktop."""
import os
import re
import threading
import time

from gi.repository import Gio, GLib

BUS = "org.freedesktop.DBus"
PATIENCE = 30  # seconds, far longer than a busy machine takes: only what never comes takes all of them

CONFIGURATION = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
  "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:dir={folder}</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
"""

WITH_USER_NAME = os.path.join(os.path.dirname(os.path.realpath(__file__)), "../support/with_user_name")


def bus_command(folder):
    """Runs a bus of the test's own, with its files in the folder; its first line is its address."""
    configuration = os.path.join(folder, "bus.conf")
    # Unlike the system's, this one names no folder of services to start on demand.
    with open(configuration, "w", encoding="utf8") as file:
        file.write(CONFIGURATION.format(folder=folder))
    return [WITH_USER_NAME, "dbus-daemon", "--nofork", "--config-file=" + configuration, "--print-address=1"]


def wait_until(condition, what, seconds=PATIENCE):
    """The first value of the condition that counts as true; fails where there is none in time."""
    deadline = time.monotonic() + seconds
    while True:
        try:
            if value := condition():
                return value
        except GLib.Error as error:  # what is asked may just be going
            problem = f" ({error.message})"
        else:
            problem = ""
        if time.monotonic() > deadline:
            raise AssertionError(f"not within {seconds} seconds: {what}{problem}")
        time.sleep(0.01)


def connect(address):
    flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
    return Gio.DBusConnection.new_for_address_sync(address, flags, None, None)


def call(bus, owner, path, interface, method, signature="()", *arguments):
    """The values of the reply."""
    return bus.call_sync(owner, path, interface, method, GLib.Variant(signature, arguments), None,
                         Gio.DBusCallFlags.NONE, PATIENCE * 1000, None).unpack()


def has_owner(bus, name):
    return call(bus, BUS, "/", BUS, "NameHasOwner", "(s)", name)[0]


def read_property(bus, owner, path, interface, name):
    return call(bus, owner, path, "org.freedesktop.DBus.Properties", "Get", "(ss)", interface, name)[0]


class StandIn:
    """One object under a well-known name, there from appear() to vanish().

    It answers on a thread of its own: the program may ask while the test waits for the program.
    """
    name = path = description = None

    def __init__(self, address):
        self.interface = Gio.DBusNodeInfo.new_for_xml(f"<node>{self.description}</node>").interfaces[0]
        self.context = GLib.MainContext()
        self.loop = GLib.MainLoop(self.context)
        self.bus = None
        started = threading.Event()
        self.thread = threading.Thread(target=self.serve, args=(address, started))
        self.thread.start()
        started.wait()

    def serve(self, address, started):
        self.context.push_thread_default()
        self.bus = connect(address)
        self.bus.register_object(self.path, self.interface, self.take_call, self.take_question, None)
        self.listen()
        turning = GLib.idle_source_new()  # to end a loop that does not turn yet has no effect
        turning.set_callback(lambda *_: started.set())
        turning.attach(self.context)
        self.loop.run()

    def listen(self):
        """Subscribes to signals of others."""

    def take_call(self, _bus, sender, _path, _interface, method, arguments, invocation):
        invocation.return_value(getattr(self, method)(sender, *arguments))

    def take_question(self, _bus, _sender, _path, _interface, name):
        return getattr(self, name)

    def emit(self, signal, arguments=None):
        self.bus.emit_signal(None, self.path, self.interface.name, signal, arguments)

    def appear(self):
        call(self.bus, BUS, "/", BUS, "RequestName", "(su)", self.name, 0)

    def vanish(self):
        call(self.bus, BUS, "/", BUS, "ReleaseName", "(s)", self.name)

    def end(self):
        self.loop.quit()
        self.thread.join()
        self.bus.close_sync(None)


class Tray(StandIn):
    """Keeps the items of a desktop's tray and shows them: watcher and host in one."""
    name = "org.kde.StatusNotifierWatcher"
    path = "/StatusNotifierWatcher"
    description = """
      <interface name="org.kde.StatusNotifierWatcher">
        <method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
        <property name="RegisteredStatusNotifierItems" type="as" access="read"/>
        <property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
        <property name="ProtocolVersion" type="i" access="read"/>
        <signal name="StatusNotifierItemRegistered"><arg type="s"/></signal>
        <signal name="StatusNotifierHostRegistered"/>
      </interface>"""
    ProtocolVersion = GLib.Variant("i", 0)

    def __init__(self, address):
        self.items = []
        self.has_host = True
        self.was_asked = False
        self.icon_changes = 0
        super().__init__(address)

    @property
    def IsStatusNotifierHostRegistered(self):
        answer = GLib.Variant("b", self.has_host)
        self.was_asked = True  # who waits for this may change the answer
        return answer

    @property
    def RegisteredStatusNotifierItems(self):
        return GLib.Variant("as", self.items)

    def listen(self):
        self.bus.signal_subscribe(None, TrayEntry.INTERFACE, "NewIcon", None, None, Gio.DBusSignalFlags.NONE,
                                  self.count_icon_change)

    def count_icon_change(self, *_):
        self.icon_changes += 1

    def RegisterStatusNotifierItem(self, _sender, service):
        self.items.append(service)
        self.emit("StatusNotifierItemRegistered", GLib.Variant("(s)", (service,)))

    def vanish(self):
        super().vanish()
        self.items.clear()

    def find_host(self):
        self.has_host = True
        self.emit("StatusNotifierHostRegistered")

    def item(self):
        wait_until(lambda: self.items, "the tray has an item")
        return TrayEntry(self.bus, self.items[-1])


class TrayEntry:
    """An item in the tray, used as the desktop uses it for its user."""
    PATH, INTERFACE, MENU = "/StatusNotifierItem", "org.kde.StatusNotifierItem", "com.canonical.dbusmenu"

    def __init__(self, bus, owner):
        self.bus, self.owner = bus, owner

    def read(self, name):
        return read_property(self.bus, self.owner, self.PATH, self.INTERFACE, name)

    def activate(self):
        call(self.bus, self.owner, self.PATH, self.INTERFACE, "Activate", "(ii)", 0, 0)

    def call_menu(self, method, signature, *arguments):
        return call(self.bus, self.owner, self.read("Menu"), self.MENU, method, signature, *arguments)

    def entries(self):
        """Number and properties of each, from top to bottom."""
        self.call_menu("AboutToShow", "(i)", 0)
        _, (_, _, entries) = self.call_menu("GetLayout", "(iias)", 0, -1, [])
        return [(number, properties) for number, properties, _ in entries]

    def labels(self):
        """From top to bottom; "-" is a separator, and what cannot be clicked is in brackets."""
        return [self.shown(properties) for _, properties in self.entries() if properties.get("visible", True)]

    @staticmethod
    def shown(properties):
        if properties.get("type") == "separator":
            return "-"
        # A single "_" marks the letter after it for the keyboard.
        label = re.sub("_(.?)", r"\1", properties["label"])
        return label if properties.get("enabled", True) else f"({label})"

    def click(self, label):
        number, = (number for number, properties in self.entries() if self.shown(properties) == label)
        self.call_menu("Event", "(isvu)", number, "clicked", GLib.Variant("s", ""), 0)


class Portal(StandIn):
    """Serves the settings for a dark or light desktop and for high contrast."""
    name = "org.freedesktop.portal.Desktop"
    path = "/org/freedesktop/portal/desktop"
    description = """
      <interface name="org.freedesktop.portal.Settings">
        <method name="Read">
          <arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="v" direction="out"/>
        </method>
        <signal name="SettingChanged"><arg type="s"/><arg type="s"/><arg type="v"/></signal>
      </interface>"""
    NO_PREFERENCE, DARK, LIGHT = range(3)  # as the portal counts them

    def __init__(self, address, scheme):
        self.scheme = scheme
        self.contrast = 0
        super().__init__(address)

    @property
    def colour_scheme(self):
        return GLib.Variant("u", self.scheme)

    def Read(self, _sender, group, key):
        known = {"color-scheme": self.colour_scheme, "contrast": GLib.Variant("u", self.contrast)}
        value = known.get(key) if group == "org.freedesktop.appearance" else None
        return GLib.Variant("(v)", (GLib.Variant("v", value or GLib.Variant("b", True)),))

    def turn(self, scheme):
        self.scheme = scheme
        self.emit("SettingChanged",
                  GLib.Variant("(ssv)", ("org.freedesktop.appearance", "color-scheme", self.colour_scheme)))


    def set_contrast(self, contrast):
        self.contrast = contrast
        self.emit("SettingChanged",
                  GLib.Variant("(ssv)", ("org.freedesktop.appearance", "contrast", GLib.Variant("u", contrast))))


class Notifications(StandIn):
    """Remembers notifications instead of showing them."""
    name = "org.freedesktop.Notifications"
    path = "/org/freedesktop/Notifications"
    description = """
      <interface name="org.freedesktop.Notifications">
        <method name="GetCapabilities"><arg type="as" direction="out"/></method>
        <method name="Notify">
          <arg type="s" direction="in"/><arg type="u" direction="in"/><arg type="s" direction="in"/>
          <arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="as" direction="in"/>
          <arg type="a{sv}" direction="in"/><arg type="i" direction="in"/><arg type="u" direction="out"/>
        </method>
        <method name="CloseNotification"><arg type="u" direction="in"/></method>
        <signal name="ActionInvoked"><arg type="u"/><arg type="s"/></signal>
        <signal name="NotificationClosed"><arg type="u"/><arg type="u"/></signal>
      </interface>"""

    def __init__(self, address):
        self.shown = {}  # title and text by number
        self.count = 0
        super().__init__(address)

    def GetCapabilities(self, _sender):
        return GLib.Variant("(as)", (["actions", "body", "body-markup"],))

    def Notify(self, _sender, _program, replaced, _icon, title, text, _actions, _hints, _timeout):
        if not replaced:
            self.count += 1
        number = replaced or self.count
        self.shown[number] = (title, text)
        return GLib.Variant("(u)", (number,))

    def CloseNotification(self, _sender, number):
        self.shown.pop(number, None)

    def act(self, number):
        self.emit("ActionInvoked", GLib.Variant("(us)", (number, "default")))
