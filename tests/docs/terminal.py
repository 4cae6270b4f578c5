"""A command on a terminal of its own, as a person sees it."""
import os
import re
import select
import signal
import time

import pexpect
import pyte

WIDTH = 200  # columns, as the program sees it
PATIENCE = 30  # seconds


class Terminal:
    """`answers` are pairs of a pattern, which the end of the output may match, and what is then typed, once each."""

    def __init__(self, command, environment, folder, answers):
        self.answers = list(answers)
        self.screen = pyte.Screen(5 * WIDTH, 1000)  # so large that no line is wrapped, and none scrolls away
        self.stream = pyte.Stream(self.screen)
        self.child = pexpect.spawn("bash", ["-c", command], env=environment, cwd=folder, dimensions=(50, WIDTH),
                                   encoding="utf8", codec_errors="replace")
        self.child.delaybeforesend = None

    def output(self):
        rows = (self.screen.buffer[number] for number in range(self.screen.cursor.y + 1))
        lines = ("".join(row[column].data for column in range(max(row, default=-1) + 1)) for row in rows)
        return "\n".join(line.rstrip() for line in lines)

    def read(self, seconds):
        """Reads once, for at most that time. False after the end of the output."""
        try:
            self.stream.feed(self.child.read_nonblocking(65536, seconds))
        except pexpect.TIMEOUT:
            return True
        except pexpect.EOF:
            self.read_rest()
            return False
        for answer in [each for each in self.answers if re.search(each[0] + r"\Z", self.output())][:1]:
            self.child.send(answer[1])
            self.answers.remove(answer)
        return True

    def read_rest(self):
        """Reads what a program printed just before it ended: pexpect may notice the end first."""
        while select.select([self.child.child_fd], [], [], 0)[0]:
            try:
                rest = os.read(self.child.child_fd, 65536)
            except OSError:
                return
            if not rest:
                return
            self.stream.feed(rest.decode(errors="replace"))

    def read_until(self, condition, seconds):
        """False if the output, or the time, ends before the condition holds of the output."""
        end = time.monotonic() + seconds
        while not condition(self.output()):
            if time.monotonic() > end or not self.read(0.1):
                return condition(self.output())
        return True

    def interrupt(self):
        """Types Ctrl-C as soon as the program blocks the signal, which it handles itself."""
        end = time.monotonic() + PATIENCE
        while self.child.isalive() and not self.blocks(signal.SIGINT) and time.monotonic() < end:
            self.read(0.02)
        self.child.sendintr()

    def blocks(self, number):
        try:
            with open(f"/proc/{self.child.pid}/status", encoding="utf8") as file:
                blocked = re.search(r"SigBlk:\s*(\w+)", file.read())[1]
        except (FileNotFoundError, ProcessLookupError):
            return False
        return int(blocked, 16) >> (number - 1) & 1 == 1

    def ended(self, seconds):
        """The exit status; None if the output does not end."""
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            if not self.read(0.1):
                self.child.wait()
                break
        self.child.close(force=True)
        return self.child.exitstatus
