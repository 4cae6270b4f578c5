"""What every measurement needs: the programs, trees, states and servers, samples in turn, and the table's rows."""
import collections
import contextlib
import fcntl
import glob
import json
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

SOURCE = os.path.realpath(os.path.join(os.path.dirname(os.path.realpath(__file__)), ".."))
SUPPORT = os.path.join(SOURCE, "tests/support")
PASSWORD = "s3cret"
MEGABYTE = 1e6

# `figure` is to be `target` at most; without a target it is only told. `samples` are all values that it was made from.
Row = collections.namedtuple("Row", "name what figure unit target samples note", defaults=[None, {}, ""])


class Sizes:
    """How much is measured."""

    def __init__(self, quick, rounds):
        self.quick = quick
        self.small, self.large = (1200, 6000) if quick else (100_000, 1_000_000)
        self.rounds = 1 if quick else rounds
        self.few_rounds = 1 if quick else max(1, (rounds + 1) // 2)  # of what takes long
        self.fewest_rounds = 1 if quick else max(1, rounds // 2)  # of what takes longest
        self.many_rounds = 3 if quick else 3 * rounds
        self.uploads = 3 if quick else 200
        self.check_files = 36 if quick else 6000  # in 500 folders
        self.staged_bytes = 10_000_000 if quick else 1_000_000_000
        self.lines = 1000 if quick else 100_000
        self.idle_profiles, self.idle_files, self.idle_seconds = (2, 120, 2.5) if quick else (10, 10_000, 14)
        self.desktop_profiles = 2 if quick else 100
        self.poll_seconds = 2.5 if quick else 7  # how long the polls of a watch are looked at
        self.curve = (100, 500) if quick else (1000, 10_000, 100_000, 1_000_000)
        self.curve_samples = 5 if quick else 300  # uploads and folders; the time for all is then multiplied up


def median_of(samples, key):
    return statistics.median(sample[key] for sample in samples)


def values(samples, key):
    return [sample[key] for sample in samples]


def alternate(rounds, *kinds):
    """Each kind is called once a round; the list of what it gave, for each."""
    taken = [[] for _ in kinds]
    for _ in range(rounds):
        for samples, kind in zip(taken, kinds):
            samples.append(kind())
    return taken


class Bench:
    """One run. All that it starts ends with it; the trees in the scratch folder are kept for the next one."""

    def __init__(self, build, servers, scratch, sizes):
        self.build, self.servers, self.scratch, self.sizes = build, servers, scratch, sizes
        self.program = self.binary("zembrastel_bench")
        self.command_line = self.binary("zembrastel-cli")
        self.ends = contextlib.ExitStack()
        os.makedirs(scratch, exist_ok=True)
        self.lock = os.open(os.path.join(scratch, "lock"), os.O_RDWR | os.O_CREAT | os.O_CLOEXEC, 0o600)
        try:
            fcntl.flock(self.lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
        except BlockingIOError:
            sys.exit(f"Another run is measuring in {scratch}.")
        self.work = self.fresh("work")
        os.makedirs(self.path("temporary"))
        self.environment = {**os.environ, "LC_ALL": "C.UTF-8", "TMPDIR": self.path("temporary")}
        self.served = None
        self.desktop = None  # of desktop_rows

    def binary(self, name):
        return os.path.join(self.build, "bin", name)

    def library(self, pattern):
        return glob.glob(os.path.join(self.build, pattern))[0]

    def path(self, *names):
        return os.path.join(self.scratch, "work", *names)

    def fresh(self, name):
        folder = os.path.join(self.scratch, name)
        shutil.rmtree(folder, ignore_errors=True)
        os.makedirs(folder)
        return folder

    def end(self):
        self.ends.close()
        shutil.rmtree(self.work, ignore_errors=True)

    def measure(self, *arguments, temporary=None):
        """The figures of one process of zembrastel_bench."""
        command = [self.program, *map(str, arguments)]
        environment = {**self.environment, "TMPDIR": temporary} if temporary else self.environment
        done = subprocess.run(command, env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, text=True,
                              check=True)
        return json.loads(done.stdout)

    @contextlib.contextmanager
    def memory_folder(self, size):
        """A folder in memory, where a disk that is busy counts for nothing, or else in the scratch folder; which."""
        memory = "/dev/shm"
        roomy = os.path.isdir(memory) and shutil.disk_usage(memory).free > size
        with tempfile.TemporaryDirectory(prefix="zembrastel-bench-", dir=memory if roomy else self.path()) as folder:
            yield folder, "in memory" if roomy else "on the disk"

    def tree(self, files):
        """A folder of so many files, kept from run to run."""
        folder, complete = (os.path.join(self.scratch, f"tree-{files}{end}") for end in ("", ".complete"))
        if not (os.path.exists(complete) and os.path.isdir(folder)):
            shutil.rmtree(folder, ignore_errors=True)
            os.makedirs(folder)
            self.measure("tree", folder, "--files", files)
            open(complete, "w", encoding="utf8").close()
        shutil.rmtree(os.path.join(folder, "new"), ignore_errors=True)  # of a run that was killed
        return folder

    def state(self, name, *locals_, remote="/site", options=()):
        """A state folder in which all files of the local folders are published, or as the options say."""
        folder = self.fresh(os.path.join("work", name))
        self.measure("state", folder, "--local", *locals_, "--port", self.server().port, "--remote", remote, *options)
        return folder

    def server(self):
        if self.served is None:
            self.served = Server(self)
        return self.served

    def watch(self, state, profiles):
        """zembrastel-cli watch, once all its profiles poll."""
        return Watch(self, state, profiles)


class Server:
    """A real FTP server on loopback, which serves the folder `root`."""

    def __init__(self, bench):
        # The quickest of those that know MLSD: what the server takes, it takes from both sides of a ratio.
        kind = "proftpd"
        self.kind = kind
        self.root = bench.path("server")
        os.makedirs(self.root)
        os.chmod(bench.path(), 0o755)
        process = subprocess.Popen([os.path.join(SUPPORT, "ftp_server.py"), kind, "--servers", bench.servers,
                                    "--show-hidden", self.root],
                                   stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        bench.ends.callback(self.stop, process)
        self.port = process.stdout.readline().strip()
        login = process.stdout.readline().strip()
        if not self.port:
            raise RuntimeError("the server did not start")
        self.prefix = "" if login == "/" else login

    @staticmethod
    def stop(process):
        process.stdin.close()
        process.stdout.close()
        process.wait()

    def remote(self, folder="site"):
        """How a client names the folder; made anew, empty, and open to the server's user."""
        made = os.path.join(self.root, folder)
        shutil.rmtree(made, ignore_errors=True)
        os.makedirs(made)
        os.chmod(made, 0o777)
        return f"{self.prefix}/{folder}"


class Watch:
    def __init__(self, bench, state, profiles):
        password = bench.path("password")
        with open(os.open(password, os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o600), "w", encoding="utf8") as file:
            file.write(PASSWORD)
        command = [bench.command_line, "--state", state, "--json", "--password-file", password, "watch"]
        self.process = subprocess.Popen(command, env=bench.environment, stdin=subprocess.DEVNULL,
                                        stdout=subprocess.PIPE, text=True)
        self.log = []
        try:
            self.wait_for_polls(profiles)
        except BaseException:
            self.end()
            raise

    def wait_for_polls(self, profiles):
        polling = set()
        while len(polling) < profiles:
            line = self.process.stdout.readline()
            if not line:
                raise RuntimeError("watch has ended: " + "".join(self.log[-3:]))
            self.log.append(line)
            told = json.loads(line)
            if told.get("title") == "Watching":
                polling.add(told["id"])
            elif told.get("title") not in (None, "Starting", "Checking server", "Paused"):
                raise RuntimeError("not what was to be watched: " + line)

    def pss(self):
        """Bytes."""
        with open(f"/proc/{self.process.pid}/smaps_rollup", encoding="ascii") as file:
            return next(int(line.split()[1]) * 1024 for line in file if line.startswith("Pss:"))

    def peak(self):
        """The most that was ever resident, in bytes."""
        with open(f"/proc/{self.process.pid}/status", encoding="utf8") as file:
            return next(int(line.split()[1]) * 1024 for line in file if line.startswith("VmHWM:"))

    def processor_seconds(self):
        total = 0
        for path in glob.glob(f"/proc/{self.process.pid}/task/*/schedstat"):
            with contextlib.suppress(FileNotFoundError, ProcessLookupError), open(path, encoding="ascii") as file:
                total += int(file.read().split()[0])
        return total / 1e9

    def pss_during(self, seconds):
        """Samples, taken all the time, during several polls and the pauses between them."""
        samples, end = [], time.monotonic() + seconds
        while time.monotonic() < end:
            samples.append(self.pss())
            time.sleep(0.05)
        return samples

    def end(self):
        self.process.terminate()
        self.process.stdout.close()
        self.process.wait()
