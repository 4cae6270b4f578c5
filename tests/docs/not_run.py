"""The commands in documents that the test does not run, each with the reason. All others are run.

Of scripts and presets it still checks that they are there and know the options.
"""
import os
import re

from place import SOURCE, read

NOT_RUN = [
    (r"scripts/|bench/", "installs packages, builds, or takes minutes"),
    (r"cmake --|ctest\b", "configures, builds, or would run this test among others"),
    (r"sudo apt |loginctl enable-linger$", "changes the machine"),
    (r"systemctl --user\b|journalctl --user\b", "needs a systemd that runs for the user"),
    (r"man\b", "is for reading; the manual pages have tests of their own"),
    (r"cd\b", "each command has a shell of its own"),
]


def is_run(command):
    return not any(re.match(beginning, command) for beginning, _ in NOT_RUN)


def problem(command):
    """What is wrong with a command that is not run, or nothing."""
    words = command.split("#")[0].split()
    if words[0].startswith(("scripts/", "bench/")):
        if not os.access(os.path.join(SOURCE, words[0]), os.X_OK):
            return f"{words[0]} is not there, or cannot be run"
        text = read(words[0])
        unknown = [word for word in words[1:] if word.startswith("-") and not re.search(rf"{word}(?![\w-])", text)]
        return f"{words[0]} has no {' '.join(unknown)}" if unknown else ""
    if "--preset" in words and f'"name": "{words[words.index("--preset") + 1]}"' not in read("CMakePresets.json"):
        return "there is no such preset"
    return "" if "systemctl" not in words or words[-1] == "zembrastel-watch" else "there is no such unit"
