"""The commands in documents that the test does not run, each with the reason, and what is checked in their place.

All others are run. A check returns what is wrong, or nothing.
"""
import json
import os
import re
import shlex
import shutil
import subprocess

from place import PASSWORD, SOURCE, read, write
from terminal import Terminal

LIMIT = 60  # seconds


def path(*names):
    return os.path.join(SOURCE, *names)


def anything(_words, _context):
    return ""


def script(words, _context):
    """That it is there, and knows the options and arguments."""
    name, arguments = words[0], words[1:]
    if not os.access(path(name), os.X_OK):
        return f"{name} is not there, or cannot be run"
    text = read(name)
    unknown = [word for word in arguments if word.startswith("-") and not re.search(rf"{word}(?![\w-])", text)]
    if unknown:
        return f"{name} knows no {' '.join(unknown)}"
    return ""


def presets():
    return [preset["name"] for preset in json.loads(read("CMakePresets.json"))["configurePresets"]]


def preset(words, _context):
    """That CMake has the preset that is named."""
    name = words[words.index("--preset") + 1]
    if name not in presets():
        return f"there is no preset {name}"
    return ""


def tests_chosen(words, context):
    """That the preset is there, and that the expression chooses a test."""
    if problem := preset(words, context):
        return problem
    if "-R" not in words:
        return ""
    expression = words[words.index("-R") + 1]
    listed = subprocess.run(["ctest", "--test-dir", context.build, "-N", "-R", expression], capture_output=True,
                            text=True, check=False).stdout
    return "" if re.search(r"Total Tests: [1-9]", listed) else f"no test is chosen by {expression}"


def unit_file(build):
    with open(os.path.join(build, "packaging/zembrastel-watch.service"), encoding="utf8") as file:
        return file.read()


def unit(words, context):
    """That the unit is ours; and when it is started, that its command line publishes with its credential."""
    if words[-1] != "zembrastel-watch":
        return f"there is no unit {words[-1]}"
    return start_unit(context) if "--now" in words else ""


def start_unit(context):
    text = unit_file(context.build)
    name, source = re.search(r"LoadCredential=(\w+):(.*)", text).groups()
    source = source.replace("%E", os.path.join(context.place.home, ".config"))
    if os.stat(source).st_mode & 0o077:
        return f"{source} can be read by others"
    credentials = os.path.join(context.place.folder, "credentials")
    with open(source, encoding="utf8") as file:
        write(os.path.join(credentials, name), file.read())
    line = re.search(r"ExecStart=(\S+) (.*)", text)
    environment = context.place.environment | {"CREDENTIALS_DIRECTORY": credentials}
    environment["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=/nonexistent"  # a machine without a desktop
    terminal = Terminal(f"{os.path.basename(line[1])} {line[2]}", environment, context.place.home, [])
    live = terminal.read_until(lambda output: "Uploaded " in output, LIMIT)
    terminal.interrupt()
    status = terminal.ended(LIMIT)
    printed = terminal.output()
    terminal.close()
    shutil.rmtree(credentials)
    if live and status == 0 and PASSWORD not in printed:
        return ""
    return f"the unit's command line ended with {status}, having printed\n{printed}"


NOT_RUN = [
    (r"scripts/(setup|test|faults|torture|fuzz|package|screenshots|lint|format)\b", script,
     "installs packages, builds, or runs for minutes"),
    (r"scripts/try\b", script, "builds; scripts/test runs it to the end"),
    (r"bench/(run|curves|plot)\b", script, "builds, and measures for minutes"),
    (r"cmake --(preset|build)\b", preset, "configures and builds"),
    (r"ctest\b", tests_chosen, "would run this test among others"),
    (r"sudo apt install\b", anything, "needs root, and changes the machine"),
    (r"sudo apt remove\b", anything, "the same"),
    (r"systemctl --user\b", unit, "needs a systemd that runs for the user"),
    (r"journalctl --user\b", unit, "the same"),
    (r"loginctl enable-linger$", anything, "changes the machine"),
    (r"man\b", anything, "is for reading; the manual pages have tests of their own"),
    (r"cd\b", anything, "each command has a shell of its own"),
]


class Context:
    def __init__(self, build, place):
        self.build = build
        self.place = place


def check(command, build, place):
    """None for a command that is to be run; else what is wrong with it, or nothing."""
    for beginning, checking, _ in NOT_RUN:
        if re.match(beginning, command):
            return checking(shlex.split(command.replace("\\\n", " "), comments=True), Context(build, place))
    return None
