#!/usr/bin/python3
"""documents_test.py CASE BUILD SERVERS: the documents are true.

  follow:DOCUMENT    every command prints what the document shows, for a reader who goes from top to bottom (markdown.py)
  references         every path, link, option, name and text of the program that a document names exists

BUILD is the build folder, SERVERS the folder of the unpacked FTP servers. Run it inside
tests/support/with_secret_service. Ends with 1 if a document is wrong, and prints where and how.
"""
import os
import re
import sys

import not_run
import references
from markdown import Document, Stop, pattern, until_interrupt
from place import PASSWORD, SOURCE, Place
from terminal import Terminal

LIMIT = 60  # seconds, for each thing that is waited for

# What a reader types, by what is asked.
ANSWERS = [(r"[Pp]assword[^\n]*: ?", PASSWORD + "\n")]
TYPED = {"cat > ~/.config/zembrastel/password": PASSWORD + "\n\x04"}

# Run until they are stopped.
ENDLESS = re.compile(r"zembrastel( --background| --demo)?$|zembrastel-cli .*(watch\b|--follow\b)")


class Reader:
    """Follows one document."""

    def __init__(self, place, name):
        self.place, self.name = place, name
        self.running = None  # a Command, and its Terminal
        self.problems = []

    def complain(self, line, text):
        self.problems.append(f"{self.name}:{line}: {text}")

    def follow(self, document):
        for line, text in document.escaped:
            self.complain(line, f"a command outside of a console block: {text}")
        for step in document.steps:
            if isinstance(step, Stop):
                self.stop()
                continue
            for command in step.before:
                self.place.run(command)
            if self.running:
                self.running[1].read(0)
            if not_run.is_run(step.text):
                self.run(step)
            elif problem := not_run.problem(step.text):
                self.complain(step.line, problem)
        if self.running:
            self.stop()

    def run(self, command):
        terminal = Terminal(self.place.here(command.text), self.place.environment, self.place.home, ANSWERS)
        for typed, text in TYPED.items():
            if typed in command.text:
                terminal.child.send(text)
        shown, interrupts = until_interrupt(command.shown)
        for text, action in command.at:
            if terminal.read_until(lambda output, text=text: text in output, LIMIT):
                self.place.run(action)
        if command.goes_on or interrupts or ENDLESS.match(command.text):
            terminal.read_until(lambda output: re.match(pattern(shown), self.place.there(output) + "\n"), LIMIT)
            if command.goes_on:
                self.running = command, terminal
                return
            terminal.interrupt()
        self.finish(command, terminal)

    def stop(self):
        (command, terminal), self.running = self.running, None
        terminal.interrupt()
        command.shown = ["…"]
        self.finish(command, terminal)

    def finish(self, command, terminal):
        status = terminal.ended(LIMIT)
        printed = self.place.there(terminal.output()).rstrip("\n") + "\n"
        expected = pattern(command.shown) if command.shown else r"(?s:.*)"
        if status != command.status or not re.fullmatch(expected, printed):
            self.complain(command.line, f"$ {command.text}\n--- the document, with exit status {command.status}\n"
                          + "\n".join(command.shown) + f"\n+++ the program, with exit status {status}\n{printed}")


def main():
    case, build, servers = sys.argv[1:]
    programs = os.path.join(build, "bin")
    if case == "references":
        problems = references.check(programs)
    else:
        name = case.removeprefix("follow:")
        with Place(programs, servers) as place:
            reader = Reader(place, name)
            reader.follow(Document(os.path.join(SOURCE, name)))
            problems = reader.problems
    print("\n\n".join(problems))
    sys.exit(bool(problems))


if __name__ == "__main__":
    main()
