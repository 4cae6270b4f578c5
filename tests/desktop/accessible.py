"""A program through assistive technology, read and operated as by a screen reader."""
from bus import BUS, call, read_property, wait_until

INTERFACE = "org.a11y.atspi.Accessible"
ACTIVE, FOCUSED, SENSITIVE, SHOWING = 1, 12, 24, 25  # bits of the state


def programs(bus):
    """All that take part."""
    return Accessible(bus, "org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root").children()


class Accessible:
    """A program, window or control. Each question is asked anew."""

    def __init__(self, bus, owner, path):
        self.bus, self.owner, self.path = bus, owner, path

    def ask(self, interface, method, signature="()", *arguments):
        return call(self.bus, self.owner, self.path, interface, method, signature, *arguments)

    def children(self):
        return [Accessible(self.bus, owner, path) for owner, path in self.ask(INTERFACE, "GetChildren")[0]]

    def pid(self):
        return call(self.bus, BUS, "/", BUS, "GetConnectionUnixProcessID", "(s)", self.owner)[0]

    def name(self):
        return read_property(self.bus, self.owner, self.path, INTERFACE, "Name")

    def description(self):
        return read_property(self.bus, self.owner, self.path, INTERFACE, "Description")

    def role(self):
        return self.ask(INTERFACE, "GetRoleName")[0]

    def has(self, state):
        return bool(self.ask(INTERFACE, "GetState")[0][0] >> state & 1)

    def length(self):
        """How many characters it holds, also in a password field."""
        return read_property(self.bus, self.owner, self.path, "org.a11y.atspi.Text", "CharacterCount")

    def place(self):
        """On the screen: left, top, width and height."""
        return self.ask("org.a11y.atspi.Component", "GetExtents", "(u)", 0)[0]

    def focus(self):
        self.ask("org.a11y.atspi.Component", "GrabFocus")

    def press(self):
        """Does what a click does, once the control is not grey."""
        wait_until(lambda: self.has(SENSITIVE), f"“{self.name()}” can be pressed")
        names = [name for name, *_ in self.ask("org.a11y.atspi.Action", "GetActions")[0]]
        number = next(number for number, name in enumerate(names) if name in ("Press", "Toggle"))
        self.ask("org.a11y.atspi.Action", "DoAction", "(i)", number)

    def shown(self):
        """All that can be seen of it, from top to bottom."""
        if self.has(SHOWING):
            yield self
            for child in self.children():
                yield from child.shown()

    def look_for(self, role, name, match=str.__eq__):
        return next((each for each in self.shown() if match(each.name(), name) and each.role() == role), None)

    def find(self, role, name, match=str.__eq__):
        return wait_until(lambda: self.look_for(role, name, match), f"{role} “{name}” is shown")

    def press_button(self, name):
        self.find("push button", name).press()

    def describe(self):
        return "".join(f"{each.role()} “{each.name()}”\n" for each in self.shown() if each.name())
