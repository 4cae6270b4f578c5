"""A command on a terminal of its own, as a person sees it."""
import fcntl
import os
import pty
import re
import select
import signal
import struct
import subprocess
import termios
import time

PIECE = re.compile(r"\x1b\[K|\x1b\[[0-9;?]*[A-Za-z]|\x1b\][^\x07]*\x07|\r|[^\r\x1b]+|\x1b")
ERASE = "\x1b[K"
WIDTH = 200  # columns, so that nothing is wrapped
PATIENCE = 30  # seconds


def as_seen(text):
    """What stands on the screen at last: without colours, and without what was written over or erased."""
    return "\n".join(line_as_seen(line) for line in text.replace("\r\n", "\n").split("\n"))


def line_as_seen(text):
    line, column = "", 0
    for piece in PIECE.findall(text):
        if piece == "\r":
            column = 0
        elif piece == ERASE:
            line = line[:column]
        elif not piece.startswith("\x1b"):
            line = line[:column] + piece + line[column + len(piece):]
            column += len(piece)
    return line


class Terminal:
    """`answers` are pairs of a pattern, which the end of the output may match, and what is then typed, once each."""

    def __init__(self, command, environment, folder, answers):
        self.raw = b""
        self.answers = list(answers)
        self.master, slave = pty.openpty()
        fcntl.ioctl(slave, termios.TIOCSWINSZ, struct.pack("HHHH", 50, WIDTH, 0, 0))

        def own_terminal():
            os.setsid()
            fcntl.ioctl(0, termios.TIOCSCTTY, 0)

        # pylint: disable-next=consider-using-with,subprocess-popen-preexec-fn
        self.process = subprocess.Popen(["bash", "-c", command], stdin=slave, stdout=slave, stderr=slave, cwd=folder,
                                        env=environment, preexec_fn=own_terminal)
        os.close(slave)

    def output(self):
        return as_seen(self.raw.decode("utf8", "replace"))

    def read(self, seconds):
        """Takes in what comes within that time, at most once. False when nothing can come any more."""
        if not select.select([self.master], [], [], seconds)[0]:
            return True
        try:
            more = os.read(self.master, 65536)
        except OSError:  # nobody has the other end open
            return False
        self.raw += more
        for answer in self.answers:
            if re.search(answer[0] + r"\Z", self.output()):
                self.type(answer[1])
                self.answers.remove(answer)
                break
        return bool(more)

    def take_in(self):
        """All that has been printed by now, so that who prints need not wait for a reader."""
        while select.select([self.master], [], [], 0)[0] and self.read(0):
            pass

    def type(self, text):
        os.write(self.master, text.encode())

    def interrupt(self):
        """Types Ctrl-C, once the program is ready for one: it blocks the signal, to take it in its own way."""
        end = time.monotonic() + PATIENCE
        while self.process.poll() is None and not self.blocks(signal.SIGINT) and time.monotonic() < end:
            self.read(0.02)
        self.type("\x03")

    def blocks(self, number):
        try:
            with open(f"/proc/{self.process.pid}/status", encoding="utf8") as file:
                blocked = next(line for line in file if line.startswith("SigBlk:"))
        except (FileNotFoundError, ProcessLookupError):
            return False
        return int(blocked.split()[1], 16) >> (number - 1) & 1 == 1

    def read_until(self, condition, seconds):
        """False when the program ended, or the time, before the condition held of the output."""
        end = time.monotonic() + seconds
        while not condition(self.output()):
            if time.monotonic() > end or not self.read(0.1):
                return condition(self.output())
        return True

    def ended(self, seconds):
        """The exit status, or nothing when the program does not end."""
        self.read_until(lambda _: False, seconds)
        try:
            return self.process.wait(PATIENCE)
        except subprocess.TimeoutExpired:
            return None

    def close(self):
        if self.process.poll() is None:
            self.process.kill()
            self.process.wait()
        os.close(self.master)
