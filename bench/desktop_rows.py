"""Measurements of the desktop program, on the desktop that its tests run on."""
import os
import subprocess
import sys
import time

from harness import SOURCE


def desktop_of(bench):
    """The tests' desktop module, told which programs are meant, and a desktop with a keyring, the same for all."""
    if bench.desktop is None:
        os.environ |= {"ZEMBRASTEL": bench.binary("zembrastel"), "ZEMBRASTEL_CLI": bench.command_line,
                       "ZEMBRASTEL_SERVERS_DIR": bench.servers}
        sys.path.append(os.path.join(SOURCE, "tests/desktop"))
        import desktop as module
        opened = module.Desktop()
        bench.ends.callback(opened.end)
        bench.desktop = module, opened
    return bench.desktop


def store_passwords(bench, desktop, state):
    subprocess.run([bench.program, "passwords", state], env=desktop.environment, check=True, stdout=subprocess.DEVNULL)


def first_paints(bench, state, rounds):
    """Seconds from exec until the first window is painted, for each round."""
    module, desktop = desktop_of(bench)
    store_passwords(bench, desktop, state)
    report = desktop.path("first paint")
    environment = {name: value for name, value in desktop.environment.items()
                   if name != "QT_LINUX_ACCESSIBILITY_ALWAYS_ON"}
    environment |= {"LD_PRELOAD": bench.library("bench/libfirst_paint.so"), "FIRST_PAINT_FILE": report}
    taken = []
    for _ in range(rounds):
        began = time.monotonic_ns()
        process = subprocess.Popen([bench.binary("zembrastel"), "--state", state], env=environment,
                                   stdin=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        try:
            painted = module.wait_until(lambda: module.read("", report), "the window is painted", 30)
        finally:
            process.terminate()
            process.wait()
        os.remove(report)
        taken.append((int(painted.split()[0]) - began) / 1e9)
    return taken


def turns_during_uploads(bench, profiles):
    """The turns of the main thread of more than a millisecond since the window was there, the longest first."""
    files_before, files_new = 100, 3
    locals_ = [bench.path("desktop", str(number + 1)) for number in range(profiles)]
    for local in locals_:
        bench.measure("tree", local, "--files", files_before)
    remote = bench.server().remote()
    folders = [os.path.join(bench.server().root, "site", str(number + 1)) for number in range(profiles)]
    for number in range(profiles):
        bench.server().remote(f"site/{number + 1}")
    state = bench.state("desktop-state", *locals_, remote=remote, options=["--enabled"])
    for local in locals_:
        os.mkdir(os.path.join(local, "new"))
        for number in range(files_new):
            with open(os.path.join(local, "new", f"new-{number}.html"), "wb") as file:
                file.write(b"x" * 4096)

    def all_uploaded():
        return all(os.path.exists(os.path.join(folder, "new", f"new-{files_new - 1}.html")) for folder in folders)

    module, desktop = desktop_of(bench)
    store_passwords(bench, desktop, state)
    times = desktop.path("event times")
    usual = dict(desktop.environment)
    desktop.environment |= {"LD_PRELOAD": bench.library("bench/libevent_times.so"), "EVENT_TIMES_FILE": times,
                            "EVENT_TIMES_LEAST": "1", "EVENT_TIMES_DISPLAY": str(desktop.server.pid)}
    program = module.Program(desktop, "--state", state)
    desktop.environment = usual
    program.window(seconds=60)
    start_events = len((module.read("", times) or b"").splitlines())
    module.wait_until(all_uploaded, "every profile has uploaded", 240)
    lines = (module.read("", times) or b"").decode("utf8", "replace").splitlines()[start_events:]
    module.Desktop.stop(program.process)
    turns = []
    for line in lines:
        milliseconds, _, event = line.split(" ", 2)
        turns.append({"ms": float(milliseconds), "event": event})
    return sorted(turns, key=lambda turn: -turn["ms"]) or [{"ms": 1.0, "event": "none took a millisecond"}]
