#!/usr/bin/python3
"""documents_test.py CASE BUILD SERVERS: the documents say what is so.

  follow:DOCUMENT    every command in it does what it says, for a reader who goes from top to bottom (see markdown.py)
  references         every path, link, option, name and text of the program that a document names is there

BUILD is the build folder, SERVERS where the FTP servers were unpacked. To be run beside a secret service of its own:
tests/support/with_secret_service. Ends with 1 when a document is wrong, and says where and how.
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

# Go on until they are ended.
ENDLESS = re.compile(r"zembrastel( --background| --demo)?$|zembrastel-cli .*(watch\b|--follow\b)")


class Reader:
    """Follows one document."""

    def __init__(self, place, name, build):
        self.place = place
        self.name = name
        self.build = build
        self.running = None  # a Command, and its Terminal
        self.problems = []

    def complain(self, step, text):
        self.problems.append(f"{self.name}:{step.line}: {text}")

    def follow(self, document):
        self.problems += [f"{self.name}:{line}: a command outside of a console block: {text}"
                          for line, text in document.escaped]
        for step in document.steps:
            if isinstance(step, Stop):
                self.stop(step)
            else:
                for command in step.before:
                    self.place.run(command)
                self.carry_out(step)
        if self.running:
            self.stop(document.steps[-1])

    def carry_out(self, command):
        if self.running:
            self.running[1].take_in()
        problem = not_run.check(command.text, self.build, self.place)
        if problem is None:
            self.run(command)
        elif problem:
            self.complain(command, problem)

    def run(self, command):
        terminal = Terminal(self.place.here(command.text), self.place.environment, self.place.home, ANSWERS)
        for typed, text in TYPED.items():
            if typed in command.text:
                terminal.type(text)
        shown, interrupts = until_interrupt(command.shown)
        for text, action in command.at:
            if terminal.read_until(lambda output, text=text: text in output, LIMIT):
                self.place.run(action)
        if command.goes_on or interrupts or ENDLESS.match(command.text):
            matches = lambda output: re.match(pattern(shown), self.place.there(output))
            if not terminal.read_until(matches, LIMIT):
                self.complain(command, self.difference(command, terminal, "nothing yet"))
                terminal.close()
                return
            if command.goes_on:
                self.running = command, terminal
                return
            terminal.interrupt()
        self.finish(command, terminal)

    def stop(self, step):
        if not self.running:
            self.complain(step, "nothing is running that could be stopped")
            return
        (command, terminal), self.running = self.running, None
        terminal.interrupt()
        command.shown = []
        self.finish(command, terminal)

    def finish(self, command, terminal):
        status = terminal.ended(LIMIT)
        printed = self.place.there(terminal.output())
        if printed and not printed.endswith("\n"):
            printed += "\n"
        expected = pattern(command.shown) if command.shown else r"(?s:.*)"
        if status != command.status or not re.fullmatch(expected, printed):
            self.complain(command, self.difference(command, terminal, status))
        terminal.close()

    def difference(self, command, terminal, status):
        shown = "".join(line + "\n" for line in command.shown) or "(whatever)\n"
        return (f"$ {command.text}\n--- the document, which ends with {command.status}\n{shown}"
                f"+++ the program, which ended with {status}\n{self.place.there(terminal.output())}")


def follow(name, build, servers):
    place = Place(os.path.join(build, "bin"), servers)
    try:
        reader = Reader(place, name, build)
        reader.follow(Document(os.path.join(SOURCE, name)))
        return reader.problems
    finally:
        place.close()


def main():
    case, build, servers = sys.argv[1:]
    if case == "references":
        problems = references.check(os.path.join(build, "bin"))
    else:
        problems = follow(case.removeprefix("follow:"), build, servers)
    print("\n\n".join(problems))
    sys.exit(bool(problems))


if __name__ == "__main__":
    main()
