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
        self.uploads = 5 if quick else 1000
        self.bare_uploads = 2 if quick else 50  # of a curl for each step, which takes minutes for all
        self.distant_uploads = 10 if quick else 100  # over a long line, in 5 folders
        self.batch = 5 if quick else 60  # goes live together
        self.downloads = 5 if quick else 1000
        self.check_files = 36 if quick else 6000  # in 500 folders
        self.bare_folders = 3 if quick else 100
        self.staged_bytes = 10_000_000 if quick else 1_000_000_000
        self.lines = 1000 if quick else 100_000
        self.idle_profiles, self.idle_files, self.idle_seconds = (2, 120, 2.5) if quick else (10, 10_000, 14)
        self.desktop_profiles = 2 if quick else 100
        self.poll_seconds = 2.5 if quick else 7  # how long the polls of a watch are looked at
        self.curve = (100, 500) if quick else (1000, 10_000, 100_000, 1_000_000)


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
        subprocess.run([os.path.join(SUPPORT, "make_certificates"), self.path("certificates")], check=True)
        self.authority = self.path("certificates", "ca.pem")
        self.environment = {**os.environ, "LC_ALL": "C.UTF-8", "TMPDIR": self.path("temporary"),
                            "CURL_CA_BUNDLE": self.authority, "SSL_CERT_FILE": self.authority}
        self.running = {}  # servers
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

    def state(self, name, *locals_, remote="/site", server=None, options=()):
        """A state folder in which all files of the local folders are published, or as the options say."""
        folder = self.fresh(os.path.join("work", name))
        server = server or self.server()
        self.measure("state", folder, "--local", *locals_, "--host", server.host, "--port", server.port, "--username",
                     server.user, "--remote", remote, *(["--tls"] if server.tls else []), *options)
        return folder

    def server(self, *how):
        if how not in self.running:
            self.running[how] = Server(self, len(self.running), *how)
        return self.running[how]

    def watch(self, state, profiles):
        """zembrastel-cli watch, once all its profiles poll."""
        return Watch(self, state, profiles)


class Server:
    """A real FTP server on loopback, which serves the folder `root`, without TLS or with explicit TLS.

    proftpd is the quickest of those that know MLSD: what the server takes, it takes from both sides of a ratio. With
    TLS it requires that a session is reused, and so does vsftpd, unless the server takes any session. Behind a relay it
    is so many milliseconds away, there and back.
    """

    def __init__(self, bench, number, kind="proftpd", tls=False, round_trip=0, any_session=False):
        self.kind, self.tls = kind, tls
        self.user = "anonymous" if kind == "vsftpd" else "web"
        self.root = bench.path(f"server-{number}")
        os.makedirs(self.root)
        os.chmod(bench.path(), 0o755)
        options = ["--tls", "explicit", "--cert", bench.path("certificates", "server.pem")] if tls else []
        options += ["--set", "TLSOptions NoSessionReuseRequired"] if any_session else []
        if round_trip:
            orders, self.port, first, last = self.start(bench, 3, "relay.py", "--delay", str(round_trip / 2))
            options += ["--passive", first, last]
        _, port, login = self.start(bench, 2, "ftp_server.py", kind, "--servers", bench.servers, "--show-hidden",
                                    *options, self.root)
        self.host = "127.0.0.1"
        if round_trip:
            self.host = "127.0.0.2"
            orders.write(f"server {port}\n")
            orders.flush()
        else:
            self.port = port
        self.prefix = "" if login == "/" else login

    @staticmethod
    def start(bench, lines, program, *arguments):
        """Its standard input, which ends it, and the first lines of what it prints."""
        process = subprocess.Popen([os.path.join(SUPPORT, program), *arguments], stdin=subprocess.PIPE,
                                   stdout=subprocess.PIPE, text=True)
        bench.ends.callback(Server.stop, process)
        printed = [process.stdout.readline().strip() for _ in range(lines)]
        if not all(printed):
            raise RuntimeError(f"{program} did not start")
        return process.stdin, *printed

    @staticmethod
    def stop(process):
        process.stdin.close()
        process.stdout.close()
        process.wait()

    def lftp(self, bench, command, temporary_names=True):
        """The words that have lftp do that through one connection."""
        settings = {"cmd:fail-exit": "yes", "net:max-retries": "1", "net:connection-limit": "1",
                    "xfer:use-temp-file": "yes" if temporary_names else "no", "ftp:ssl-allow": str(self.tls).lower(),
                    "ftp:ssl-force": str(self.tls).lower(), "ssl:ca-file": bench.authority}
        steps = [f"set {name} {value}" for name, value in settings.items()]
        steps += [f"open ftp://{self.user}:{PASSWORD}@{self.host}:{self.port}", command]
        return ["lftp", "-c", "; ".join(steps)]

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
