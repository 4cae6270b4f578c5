"""The commands in documents that the test does not run, each with the reason, and what is checked in their place.

All others are run. A check returns what is wrong, or nothing.
"""
import glob
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


def script(words, _context):
    """That it is there, and knows the options and arguments."""
    name, arguments = words[0], words[1:]
    if not os.access(path(name), os.X_OK):
        return f"{name} is not there, or cannot be run"
    text = read(name)
    unknown = [word for word in arguments if word.startswith("-") and not re.search(rf"{word}(?![\w-])", text)]
    if unknown:
        return f"{name} knows no {' '.join(unknown)}"
    plain = [word for word in arguments if not word.startswith("-") and not word.isdigit()]
    known = {"scripts/test": presets, "scripts/fuzz": fuzz_targets, "bench/run": bench_subjects}.get(name, list)()
    unknown = [word for word in plain if word not in known]
    return f"{name} takes no {' '.join(unknown)}" if unknown else ""


def presets():
    return [preset["name"] for preset in json.loads(read("CMakePresets.json"))["configurePresets"]]


def fuzz_targets():
    return os.listdir(path("fuzz/corpus"))


def bench_subjects():
    names = re.search(r"for function in \(([^)]*)\)", read("bench/rows.py"))[1]
    return [name.replace("_", " ") for name in re.findall(r"\w+", names)]


def preset(words, _context):
    """That CMake has the preset that is named, and that the target is one."""
    name = words[words.index("--preset") + 1]
    if name not in presets():
        return f"there is no preset {name}"
    for target in words[words.index("--target") + 1:] if "--target" in words else []:
        if not re.search(rf"\b(add_executable|add_custom_target)\({target}\b", all_of_cmake()):
            return f"there is no target {target}"
    return ""


def all_of_cmake():
    files = glob.glob(path("**", "CMakeLists.txt"), recursive=True) + glob.glob(path("tests/torture/*.cmake"))
    return "".join(read(os.path.relpath(file, SOURCE)) for file in files if "/build/" not in file).replace(
        "${layer}_tests", " ".join(f"add_executable({layer}_tests" for layer in os.listdir(path("tests"))))


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


def packages(words, _context):
    """That scripts/package makes what is installed."""
    return "" if all(word.startswith("./build/packages/") for word in words[3:]) and (
        "folder=build/packages" in read("scripts/package")) else "scripts/package makes no such package"


def removed_packages(words, _context):
    """That these are the packages that are made."""
    unknown = [word for word in words[3:] if f"PACKAGE_NAME {word})" not in read("packaging/CMakeLists.txt")]
    return f"there is no package {' '.join(unknown)}" if unknown else ""


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


def is_there(words, _context):
    return "" if shutil.which(words[0]) else f"there is no program {words[0]}"


def manual(words, _context):
    return "" if glob.glob(path("packaging", words[-1] + ".[1-8]")) else f"there is no manual page {words[-1]}"


def cloned(words, _context):
    return "" if len(words) == 2 and words[1] in ("zembrastel", "~/zembrastel") else "that is not where the source is"


NOT_RUN = [
    (r"scripts/(setup|test|torture|fuzz|package|screenshots|lint|format)\b", script,
     "installs packages, builds, or runs for minutes"),
    (r"scripts/try\b", script, "builds; scripts/test runs it to the end"),
    (r"bench/(run|curves|plot)\b", script, "builds, and measures for minutes"),
    (r"cmake --(preset|build)\b", preset, "configures and builds"),
    (r"ctest\b", tests_chosen, "would run this test among others"),
    (r"sudo apt install\b", packages, "needs root, and changes the machine"),
    (r"sudo apt remove\b", removed_packages, "the same"),
    (r"systemctl --user\b", unit, "needs a systemd that runs for the user"),
    (r"journalctl --user\b", unit, "the same"),
    (r"loginctl enable-linger$", is_there, "changes the machine"),
    (r"man\b", manual, "is for reading; the manual pages have tests of their own"),
    (r"cd\b", cloned, "each command has a shell of its own"),
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
