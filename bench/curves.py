"""How cost grows with the number of files, and what others take for the same job."""
import contextlib
import os
import shutil
import statistics
import subprocess
import sys

from harness import PASSWORD
from rows import find, poll

MOST_FILES_SENT = 10_000  # by any of them
MOST_FILES_UNCHANGED = 100_000  # compared by another program
MOST_FILES_CHECKED = 100_000  # compared by the program; the time for more is multiplied up
MOST_FILES_WITH_TLS = 10_000  # sent or compared by any of them


def median(samples):
    return statistics.median(samples) if isinstance(samples, list) else samples


def local_costs(bench, files):
    folder = bench.tree(files)
    find(bench, folder)  # so that all is in memory
    finding, polling = find(bench, folder), poll(bench, folder)
    scanning = bench.measure("scan", folder)
    state = bench.state("curve", folder)
    rounds = 9 if files <= 10_000 else 3
    save = bench.measure("save", state, "--rounds", rounds)
    load = [bench.measure("load", state)["own"] for _ in range(rounds)]
    nlohmann = [bench.measure("load", state, "--nlohmann")["own"] for _ in range(3)]
    return {"find": finding["children"], "scan": scanning["own"], "poll": polling["own"], "poll wall": polling["wall"],
            "heap": polling["heap"], "allocations": polling["allocations"], "save": median(save["wall"]),
            "save processor": median(save["own"]), "write": median(save["referenceWall"]), "bytes": save["bytes"],
            "load": median(load), "nlohmann": median(nlohmann)}


def resident(bench, files):
    state = bench.state("curve-watch", bench.tree(files), remote=bench.server().remote(), options=["--enabled"])
    watching = bench.watch(state, 1)
    try:
        return max(watching.pss_during(bench.sizes.poll_seconds * (2 if files > 100_000 else 1)))
    finally:
        watching.end()
        shutil.rmtree(state)


def first_upload(bench, files, server):
    """Elapsed seconds for all files of the folder, none of which the server has."""
    state = bench.state("curve-first", bench.tree(files), remote=server.remote(), server=server,
                        options=["--nothing-published"])
    taken = bench.measure("upload", state, "--count", 0, "--most", files)
    shutil.rmtree(state)
    return {"all": taken["wall"], "processor": taken["own"] + taken["children"]}


@contextlib.contextmanager
def served_tree(bench, files, server):
    """The folder of so many files, moved to where the server shows it: both sides have the very same."""
    remote, tree = server.remote(), bench.tree(files)
    local = os.path.join(server.root, "site")
    os.rmdir(local)
    os.rename(tree, local)
    try:
        yield local, remote
    finally:
        os.rename(local, tree)


def server_check(bench, files, server):
    """Elapsed seconds where the server has every folder and nothing newer."""
    measured = min(files, MOST_FILES_CHECKED)
    with served_tree(bench, measured, server) as (local, remote):
        state = bench.state("curve-check", local, remote=remote, server=server)
        taken = bench.measure("check", state)
    shutil.rmtree(state)
    return {"measured files": measured, "measured": taken["wall"], "all": taken["wall"] / measured * files}


def lftp(bench, local, remote, server):
    return server.lftp(bench, f"mirror --reverse --no-perms {local} {remote}", temporary_names=False)


def rclone(bench, local, remote, server):
    hidden = subprocess.run(["rclone", "obscure", PASSWORD], check=True, capture_output=True, text=True).stdout.strip()
    place = f":ftp,host=127.0.0.1,port={server.port},user=web,pass={hidden},explicit_tls={str(server.tls).lower()}:"
    return ["rclone", "copy", "--config", bench.path("rclone.conf"), "--retries", "1", "--low-level-retries",
            "1", local, place + remote]


def others(bench, files, server):
    """Elapsed and processor seconds of other programs for a first upload, and for a run that finds nothing to do."""
    taken = {}
    for name, command in (("lftp", lftp), ("rclone", rclone)):
        if shutil.which(name) is None:
            print(f"{name} is not installed, so it is left out: scripts/setup installs it.", file=sys.stderr)
            continue
        open(bench.path("rclone.conf"), "w", encoding="utf8").close()
        taken[name] = {}
        if files <= MOST_FILES_SENT:
            run = command(bench, bench.tree(files), server.remote(), server)
            taken[name]["first upload"] = timed(bench, run)
            taken[name]["unchanged"] = timed(bench, run)
        elif files <= MOST_FILES_UNCHANGED:
            with served_tree(bench, files, server) as (local, remote):
                taken[name]["unchanged"] = timed(bench, command(bench, local, remote, server))
    return taken


def with_server(bench, files, server):
    measured = {"server check": server_check(bench, files, server), "others": others(bench, files, server)}
    if files <= MOST_FILES_SENT:
        measured["first upload"] = first_upload(bench, files, server)
    return measured


def timed(bench, command):
    taken = bench.measure("time", "--", *command)
    return {"wall": taken["wall"], "processor": taken["children"]}


def measure(bench):
    curves = []
    for files in bench.sizes.curve:
        curve = {"files": files, **local_costs(bench, files), "resident": resident(bench, files),
                 **with_server(bench, files, bench.server())}
        if files <= MOST_FILES_WITH_TLS:
            # This rclone resumes no session, so it could not use a server that requires it.
            curve["tls"] = with_server(bench, files, bench.server("proftpd", True, 0, True))
        curves.append(curve)
        print(f"{files} files are measured.", file=sys.stderr)
    return {"curves": curves}
