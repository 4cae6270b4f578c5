"""The rows of the table, by subject. Each function yields Rows; its name, without underscores, is what --only takes.

Unless a row says otherwise, times are processor time, user and system, of a process of its own for each sample.
"""
import os
import shutil
import statistics
import time

from harness import MEGABYTE, Row, alternate, median_of, values


def ratio(name, what, target, mine, reference, key="own", reference_key=None, note=""):
    """A row for what is measured beside a reference."""
    mine, reference = values(mine, key), values(reference, reference_key or key)
    figure = statistics.median(mine) / statistics.median(reference)
    return Row(name, what, figure, "", target, {"samples": mine, "reference": reference}, note)


def paired_ratio(name, what, target, mine, reference, key="wall", note="", reference_key=None):
    """A row for what is measured in turn with its reference: the median of the ratios of the rounds, and their spread."""
    mine, reference = values(mine, key), values(reference, reference_key or key)
    ratios = [own / other for own, other in zip(mine, reference, strict=True)]
    spread = f"{min(ratios):.2f} to {max(ratios):.2f} in {len(ratios)} rounds"
    return Row(name, what, statistics.median(ratios), "", target, {"samples": mine, "reference": reference},
               f"{spread}; {note}")


def count_text(number):
    return f"{number:,}"


def find(bench, folder):
    return bench.measure("time", "--", "find", folder, "-type", "f", "-printf", "%s %T@ %i %P\\n")


def poll(bench, folder):
    """Its steady polls as one sample."""
    taken = bench.measure("poll", folder, "--polls", 3)
    return {**taken, "own": statistics.median(taken["own"]), "wall": statistics.median(taken["wall"])}


def files_of(bench, files, rounds):
    folder, text = bench.tree(files), f"{count_text(files)} files"
    alternate(1, lambda: find(bench, folder))  # so that all is in memory
    finds, scans, polls = alternate(
        rounds, lambda: find(bench, folder), lambda: bench.measure("scan", folder), lambda: poll(bench, folder))
    if {sample["files"] for sample in scans + polls} != {files}:
        raise RuntimeError("the scan has not found every file")
    yield ratio(f"scan {files}", f"first scan, {text} / find", 0.90, scans, finds, "own", "children")
    yield ratio(f"poll {files}", f"steady poll, {text} / find", 0.80, polls, finds, "own", "children")
    yield Row(f"memory {files}", f"current, previous and baseline, {text}", median_of(polls, "heap") / files,
              "bytes a file", 80, {"samples": values(polls, "heap")}, "given out by malloc, in mid poll")
    yield Row(f"allocations {files}", f"allocations in a steady poll, {text}", median_of(polls, "allocations") / files,
              "a file", 0.5, {"samples": values(polls, "allocations")}, "a few for each folder are none for each file")


def files(bench):
    yield from files_of(bench, bench.sizes.small, bench.sizes.rounds)
    yield from files_of(bench, bench.sizes.large, bench.sizes.fewest_rounds)


def rules(bench):
    folder = bench.tree(bench.sizes.small)
    with_rules, without = alternate(bench.sizes.many_rounds, lambda: bench.measure("scan", folder),
                                    lambda: bench.measure("scan", folder, "--no-rules"))
    yield ratio("rules", "scan with the default rules / without rules", 1.05, with_rules, without)


def watch(bench):
    for size, target in ((bench.sizes.small, 45), (bench.sizes.large, 300)):
        # The server's folder is empty, so that the comparison asks for one listing; all that it has of the local side
        # is there as ever. Then the watch polls, with everything in the baseline.
        state = bench.state(f"watch-{size}", bench.tree(size), remote=bench.server().remote(), options=["--enabled"])
        watching = bench.watch(state, 1)
        try:
            seconds = bench.sizes.poll_seconds * (2 if size > 100_000 else 1)
            samples, peak = watching.pss_during(seconds), watching.peak()
        finally:
            watching.end()
        shutil.rmtree(state)
        yield Row(f"watch {size}", f"resident memory of watch, {count_text(size)} files", max(samples) / MEGABYTE, "MB",
                  target, {"samples": samples, "peak since start": peak},
                  f"PSS, the most in {seconds:g} s of polls; median {statistics.median(samples) / MEGABYTE:.0f} MB, "
                  f"ever resident {peak / MEGABYTE:.0f} MB")


def state(bench):
    folder = bench.state("state", bench.tree(bench.sizes.small))
    saves = bench.measure("save", folder, "--rounds", bench.sizes.many_rounds)
    text = f"a state with {count_text(bench.sizes.small)} entries"
    yield Row("save", f"save of {text} / write, flush, rename",
              statistics.median(saves["wall"]) / statistics.median(saves["referenceWall"]), "", 2.0,
              {"samples": saves["wall"], "reference": saves["referenceWall"], "bytes": saves["bytes"],
               "processor": saves["own"], "reference processor": saves["referenceOwn"]},
              f"elapsed; {1000 * statistics.median(saves['wall']):.0f} ms for {saves['bytes'] / MEGABYTE:.1f} MB")
    loads, parses = alternate(bench.sizes.many_rounds, lambda: bench.measure("load", folder),
                              lambda: bench.measure("load", folder, "--nlohmann"))
    yield ratio("load", f"load of {text} / nlohmann::json::parse", 0.35, loads, parses,
                note=f"{1000 * median_of(loads, 'own'):.0f} ms")


def make_files(folder, count, folders=1, size=4096):
    """As the uploads make them in "new"."""
    for number in range(count):
        parent = os.path.join(folder, "new", "" if folders == 1 else str(number % folders))
        os.makedirs(parent, exist_ok=True)
        with open(os.path.join(parent, f"new-{number}.html"), "wb") as file:
            file.write(b"x" * size)


def upload(bench, local, count, server=None, folders=1):
    """One sample of the whole program uploading so many new files of 4 KB from the folder."""
    server = server or bench.server()
    state = bench.state("uploading", local, remote=server.remote(), server=server)
    try:
        return bench.measure("upload", state, "--count", count, "--bytes", 4096, "--folders", folders)
    finally:
        shutil.rmtree(os.path.join(local, "new"), ignore_errors=True)


def edited_upload(bench, local, count, server, folders=1):
    """The same for files that are on the server and were edited."""
    remote = server.remote()
    make_files(local, count, folders, size=4095)
    shutil.copytree(os.path.join(local, "new"), os.path.join(server.root, "site/new"))
    state = bench.state("editing", local, remote=remote, server=server)
    try:
        return bench.measure("upload", state, "--count", count, "--bytes", 4096, "--folders", folders)
    finally:
        shutil.rmtree(os.path.join(local, "new"), ignore_errors=True)


def bare_upload(bench, count, server=None):
    """The same as once: a curl for each file and another for its date."""
    server = server or bench.server()
    file = bench.path("file")
    with open(file, "wb") as made:
        made.write(b"x" * 4096)
    state = bench.state("bare", bench.fresh("work/nothing"), remote=server.remote(), server=server)
    taken = bench.measure("bare-uploads", state, file, "--count", count)
    return {**taken, "each": taken["wall"] / count}


def live_files(server):
    for folder, _, names in os.walk(os.path.join(server.root, "site")):
        yield from (os.path.join(folder, name) for name in names if not name.startswith("."))


def went_live(server):
    """The times, in order: a rename changes the inode's ctime."""
    return sorted(os.stat(file).st_ctime_ns / 1e9 for file in live_files(server))


def lftp_upload(bench, count, server, folders=1, edited=False):
    local, remote = bench.fresh("work/lftp-local"), server.remote()
    if edited:
        make_files(local, count, folders, size=4095)
        shutil.copytree(os.path.join(local, "new"), os.path.join(server.root, "site/new"))
    make_files(local, count, folders)
    taken = bench.measure("time", "--", *server.lftp(bench, f"mirror --reverse --no-perms {local} {remote}"))
    if len(list(live_files(server))) != count:
        raise RuntimeError("lftp has not sent every file")
    return taken


def each(samples, count):
    return [{**sample, "each": sample["wall"] / count} for sample in samples]


def uploads(bench):
    count, bare_count, sizes = bench.sizes.uploads, bench.sizes.bare_uploads, bench.sizes
    empty, full = bench.fresh("work/empty"), bench.tree(sizes.small)
    text = f"{count_text(count)} uploads"
    for kind, tls, bare_target, lftp_target in (("proftpd", False, 0.12, 3.0), ("vsftpd", False, 0.12, 3.0),
                                                ("proftpd", True, 0.08, 1.2), ("vsftpd", True, 0.08, 1.2)):
        server = bench.server(kind, tls)
        mine, lftp, bare = alternate(sizes.few_rounds, lambda: upload(bench, empty, count, server),
                                     lambda: lftp_upload(bench, count, server),
                                     lambda: bare_upload(bench, bare_count, server))
        name, how = f"{kind} TLS" if tls else kind, f"{kind}, {'TLS' if tls else 'plain'}"
        yield paired_ratio(f"uploads {name}", f"{text}, {how} / two curls each, one for the date", bare_target,
                           each(mine, count), bare, "each",
                           f"elapsed, per file of 4 KB; {bare_count} files by curl; {median_of(mine, 'wall'):.2f} s")
        yield paired_ratio(f"uploads {name} lftp", f"{text}, {how} / lftp mirror -R", lftp_target, mine, lftp,
                           note=f"elapsed, with temporary names; lftp {median_of(lftp, 'wall'):.2f} s")
        if not tls:
            mine, lftp = alternate(sizes.few_rounds, lambda: edited_upload(bench, empty, count, server),
                                   lambda: lftp_upload(bench, count, server, edited=True))
            yield paired_ratio(f"edited {name} lftp", f"{text} of edited files, {how} / lftp mirror -R", lftp_target,
                               mine, lftp, note=f"elapsed; {median_of(mine, 'wall'):.2f} s")
    into_full, into_empty = alternate(sizes.few_rounds, lambda: upload(bench, full, count),
                                      lambda: upload(bench, empty, count))
    yield ratio("uploads full", f"{text}, {count_text(sizes.small)} entries / empty state", 1.15, into_full, into_empty,
                "wall", note=f"elapsed; {median_of(into_full, 'saves'):.0f} saves")
    yield ratio("uploads processor", f"the program's own processor time in {text} / curl's", 0.5, into_empty,
                into_empty, "own", "children",
                note=f"{100 * median_of(into_full, 'own') / median_of(into_full, 'children'):.0f} % with "
                     f"{count_text(sizes.small)} entries")


def distant_uploads(bench):
    count, folders, round_trip = bench.sizes.distant_uploads, 5, 20
    empty = bench.fresh("work/empty")
    for kind in ("proftpd", "vsftpd"):
        server = bench.server(kind, False, round_trip)
        mine, lftp = alternate(bench.sizes.few_rounds, lambda: upload(bench, empty, count, server, folders),
                               lambda: lftp_upload(bench, count, server, folders))
        yield paired_ratio(f"distant uploads {kind}", f"{count} uploads in {folders} folders, {round_trip} ms away, "
                           f"{kind} / lftp mirror -R", 1.5, mine, lftp,
                           note=f"elapsed; {median_of(mine, 'wall'):.1f} and {median_of(lftp, 'wall'):.1f} s")


def edit(bench):
    """One published file that is edited, from the look that finds it stable until the server has renamed it."""
    server = bench.server()

    def edited():
        local, remote = bench.fresh("work/edited"), server.remote()
        make_files(local, 1, size=4095)
        shutil.copytree(os.path.join(local, "new"), os.path.join(server.root, "site/new"))
        state = bench.state("editing", local, remote=remote)
        taken = bench.measure("upload", state, "--count", 1, "--bytes", 4096)
        return {"live": went_live(server)[0] - taken["began"], **taken}

    mine, bare = alternate(bench.sizes.many_rounds, edited, lambda: bare_upload(bench, 1))
    yield ratio("edit", "one edited file, from stable to live / two curls", 1.1, mine, bare, "live", "wall",
                note=f"elapsed; {1000 * median_of(mine, 'live'):.0f} ms, with all that follows "
                     f"{1000 * median_of(mine, 'wall'):.0f} ms")


def batch(bench):
    count, server, empty = bench.sizes.batch, bench.server(), bench.fresh("work/empty")

    def spread():
        upload(bench, empty, count)
        times = went_live(server)
        if len(times) != count:
            raise RuntimeError("not every file went live")
        return times[-1] - times[0]

    samples, = alternate(bench.sizes.rounds, spread)
    yield Row("batch", f"from the first rename to the last of {count} files", statistics.median(samples), "s", 0.2,
              {"samples": samples})


def check(bench):
    # The server serves the very files that are local, so it has every folder and nothing newer.
    sizes, server = bench.sizes, bench.server()
    remote, local = server.remote(), os.path.join(server.root, "site")
    bench.measure("tree", local, "--files", sizes.check_files)
    state = bench.state("check", local, remote=remote)
    folders = (sizes.check_files + 11) // 12
    checks, bare, lftp = alternate(
        sizes.few_rounds, lambda: bench.measure("check", state),
        lambda: bench.measure("bare-listings", state, "--files", sizes.check_files, "--most", sizes.bare_folders),
        lambda: bench.measure("time", "--", *server.lftp(bench, f"mirror --dry-run --no-perms {remote} {local}")))
    text = f"server check of {folders} folders"
    yield ratio("check", f"{text} / two bare listings each", 0.12, each(checks, folders),
                each(bare, sizes.bare_folders), "each",
                note=f"elapsed, per folder; {sizes.bare_folders} folders by curl; "
                     f"{1000 * median_of(checks, 'wall') / folders:.2f} ms a folder")
    yield ratio("check lftp", f"{text} / lftp mirror --dry-run", 3.0, checks, lftp, "wall",
                note=f"elapsed; lftp {median_of(lftp, 'wall'):.2f} s")


def first_download(bench):
    count, server = bench.sizes.downloads, bench.server("proftpd", True)
    remote = server.remote()
    make_files(os.path.join(server.root, "site"), count)

    def download():
        local = bench.fresh("work/downloaded")
        state = bench.state("downloading", local, remote=remote, server=server, options=["--needs-download"])
        taken = bench.measure("download", state)
        if taken["files"] != count:
            raise RuntimeError("not every file came")
        return taken

    def by_lftp():
        local = bench.fresh("work/downloaded")
        return bench.measure("time", "--", *server.lftp(bench, f"mirror --no-perms {remote} {local}"))

    mine, lftp = alternate(bench.sizes.few_rounds, download, by_lftp)
    yield ratio("first download", f"first download of {count_text(count)} files, TLS / lftp mirror", 3.0, mine, lftp,
                "wall", note=f"elapsed; {median_of(mine, 'wall'):.2f} and {median_of(lftp, 'wall'):.2f} s")


def staging(bench):
    with bench.memory_folder(3 * bench.sizes.staged_bytes) as (folder, place):
        file, copy = os.path.join(folder, "large"), os.path.join(folder, "copy")
        with open(file, "wb") as made:
            block = os.urandom(10_000_000)
            for _ in range(bench.sizes.staged_bytes // len(block)):
                made.write(block)

        def stage():
            return bench.measure("stage", folder, "large", temporary=folder)

        def copy_file():
            try:
                return bench.measure("time", "--", "cp", "--reflink=auto", file, copy)
            finally:
                os.remove(copy)

        stages, copies = alternate(bench.sizes.rounds, stage, copy_file)
    yield ratio("staging", f"staging of {bench.sizes.staged_bytes / 1e9:g} GB / cp --reflink=auto", 1.1, stages, copies,
                "own", "children", note=place)


def listings(bench):
    for name, options in (("MLSD", ["--mlsd"]), ("LIST", [])):
        taken = bench.measure("parse", "--count", bench.sizes.lines, "--rounds", bench.sizes.many_rounds, *options)
        yield Row(f"listings {name}", f"{count_text(bench.sizes.lines)} lines of {name} / split, store the name",
                  statistics.median(taken["own"]) / statistics.median(taken["referenceOwn"]), "", 5,
                  {"samples": taken["own"], "reference": taken["referenceOwn"]},
                  f"{1e9 * statistics.median(taken['own']) / bench.sizes.lines:.0f} ns a line")


def idle(bench):
    sizes = bench.sizes
    whole = bench.path("idle")
    locals_ = [os.path.join(whole, str(number + 1)) for number in range(sizes.idle_profiles)]
    for folder in locals_:
        bench.measure("tree", folder, "--files", sizes.idle_files)
    remote = bench.server().remote()
    for number in range(len(locals_)):
        bench.server().remote(f"site/{number + 1}")
    watching = bench.watch(bench.state("idle-state", *locals_, remote=remote, options=["--enabled"]), len(locals_))
    try:
        before, began = watching.processor_seconds(), time.monotonic()
        time.sleep(sizes.idle_seconds)
        share = (watching.processor_seconds() - before) / (time.monotonic() - began)
    finally:
        watching.end()
        shutil.rmtree(whole)
    yield Row("idle", f"{sizes.idle_profiles} profiles of {count_text(sizes.idle_files)} files, idle", 100 * share,
              "% of a core", 3, {"samples": [share]}, f"watch, during {sizes.idle_seconds} s")


def start(bench):
    import desktop_rows
    folder = bench.state("start", bench.tree(bench.sizes.small), remote=bench.server().remote(), options=["--enabled"])
    text = f"{count_text(bench.sizes.small)} entries"
    runs, = alternate(bench.sizes.many_rounds,
                      lambda: bench.measure("time", "--", bench.command_line, "--state", folder, "profile", "list"))
    yield Row("profile list", f"exec of profile list, {text}", 1000 * median_of(runs, "wall"), "ms", 60,
              {"samples": values(runs, "wall")}, f"elapsed; processor {1000 * median_of(runs, 'children'):.0f} ms")
    paints = desktop_rows.first_paints(bench, folder, bench.sizes.rounds)
    yield Row("first paint", f"exec to first paint, {text}", 1000 * statistics.median(paints), "ms", 250,
              {"samples": paints}, "elapsed, on Xvfb")


def main_thread(bench):
    import desktop_rows
    turns = desktop_rows.turns_during_uploads(bench, bench.sizes.desktop_profiles)
    yield Row("main thread", f"longest event, {bench.sizes.desktop_profiles} profiles uploading", turns[0]["ms"], "ms",
              50, {"longest": turns[:20]}, turns[0]["event"])


SUBJECTS = {function.__name__.replace("_", " "): function
            for function in (files, rules, watch, state, uploads, distant_uploads, edit, batch, check,
                         first_download, staging, listings, idle, start, main_thread)}
