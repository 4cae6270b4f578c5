"""What the test needs of a Markdown document: its commands, and all that it names.

Commands stand in blocks that are fenced as "console". A line that begins with "$ " is a command, which goes on in the
next line after a "\\" at its end; the lines up to the next command are what it prints. In those

  …   stands for any text within a line, and alone for any number of lines;
  a time, a date and an id stand for any other;
  ^C  at the beginning of a line is typed when what stands before it has been printed.

A comment <!-- test: ... --> sets the stage for the next block, and readers do not see it:

  before COMMAND       runs a command that the reader need not know; $SERVER is the site's folder on the server
  at "TEXT" COMMAND    the same, as soon as the block has printed the text
  ends with N          the exit status of the block's last command, when not 0
  goes on              the block's last command is left running beside the next blocks
  stop                 ends that with Ctrl-C; needs no block
"""
import dataclasses
import re

DIRECTIVE = re.compile(r"<!-- test: (.*) -->")
FENCE = re.compile(r"( *)```(\w*)$")
SPAN = re.compile(r"`([^`]+)`")
LINK = re.compile(r"\]\(([^)\s]+)\)")
QUOTED = re.compile(r'"([^"]+)"')
# What begins a line like these is a command, wherever it stands.
COMMAND_LIKE = re.compile(r"(\$ |zembrastel(-cli)? -|zembrastel-cli |scripts/\w+( |$))")


@dataclasses.dataclass
class Command:
    line: int
    text: str
    shown: list[str] = dataclasses.field(default_factory=list)
    status: int = 0
    goes_on: bool = False
    before: list[str] = dataclasses.field(default_factory=list)
    at: list[tuple[str, str]] = dataclasses.field(default_factory=list)


@dataclasses.dataclass
class Stop:
    line: int


class Document:
    def __init__(self, path):
        self.steps = []  # Commands and Stops, in order
        self.escaped = []  # (line, text): commands outside of the blocks that are run
        self.prose = ""  # the text without blocks and comments
        self.directives = []
        with open(path, encoding="utf8") as file:
            lines = enumerate(file.read().splitlines(), 1)
        for number, line in lines:
            if fence := FENCE.match(line):
                self.read_block(fence, number, lines)
            elif directive := DIRECTIVE.fullmatch(line.strip()):
                self.read_directive(number, directive[1])
            else:
                self.prose += line + "\n"
                self.look_for_escaped(number, line)

    def look_for_escaped(self, number, line):
        if line.startswith("    ") and COMMAND_LIKE.match(line.lstrip()):
            self.escaped.append((number, line.strip()))

    def read_directive(self, number, text):
        if text == "stop":
            self.steps.append(Stop(number))
        else:
            self.directives.append(text)

    def read_block(self, fence, number, lines):
        indent, language = len(fence[1]), fence[2]
        block = []
        for number, line in lines:
            if line.strip() == "```":
                break
            block.append((number, line[indent:]))
        if language != "console":
            self.escaped += [(number, line) for number, line in block if COMMAND_LIKE.match(line)]
            return
        commands = self.read_commands(block)
        for directive in self.directives:
            apply(directive, commands)
        self.directives = []
        self.steps += commands

    @staticmethod
    def read_commands(block):
        commands = []
        for number, line in block:
            if commands and commands[-1].text.endswith("\\"):
                commands[-1].text += "\n" + line
            elif line.startswith("$ "):
                commands.append(Command(number, line[2:]))
            elif not commands:
                raise SyntaxError(f"line {number}: a block of commands begins with one")
            else:
                commands[-1].shown.append(line)
        return commands

    def spans(self):
        """The texts in backticks."""
        return SPAN.findall(self.joined())

    def links(self):
        return LINK.findall(self.prose)

    def quoted(self):
        """The texts between double quotes, those in backticks aside."""
        return [text for paragraph in re.sub(SPAN, "", self.prose).split("\n\n")
                for text in QUOTED.findall(re.sub(r"\s*\n\s*", " ", paragraph))]

    def joined(self):
        return re.sub(r"\n(?!\n)", " ", self.prose)


def apply(directive, commands):
    kind, _, rest = directive.partition(" ")
    if kind == "before":
        commands[0].before.append(rest)
    elif kind == "at" and (parts := re.fullmatch(r'"([^"]*)" (.*)', rest)):
        commands[-1].at.append((parts[1], parts[2]))
    elif kind == "ends" and rest.startswith("with "):
        commands[-1].status = int(rest.removeprefix("with "))
    elif directive == "goes on":
        commands[-1].goes_on = True
    else:
        raise SyntaxError(f"there is no directive {directive!r}")


ANY = [
    (r"\d\d\d\d-\d\d-\d\dT\d\d:\d\d:\d\dZ", r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ"),
    (r"\d\d\d\d-\d\d-\d\d", r"\d{4}-\d\d-\d\d"),
    (r"\d\d:\d\d:\d\d", r"\d\d:\d\d:\d\d"),
    (r"[0-9A-F]{8}(?:-[0-9A-F]{4}){3}-[0-9A-F]{12}", r"[0-9A-F]{8}(?:-[0-9A-F]{4}){3}-[0-9A-F]{12}"),
    ("…", ".*"),
]
WILD = re.compile("|".join(f"({shown})" for shown, _ in ANY))


def line_pattern(shown):
    pattern, end = "", 0
    for found in WILD.finditer(shown):
        pattern += re.escape(shown[end:found.start()]) + ANY[found.lastindex - 1][1]
        end = found.end()
    return pattern + re.escape(shown[end:].rstrip()) + r"[ \t]*"


def pattern(shown):
    """What printed lines must match; each ends with a line feed."""
    return "".join(r"(?:[^\n]*\n)*?" if line == "…" else line_pattern(line) + r"\n" for line in shown)


def until_interrupt(shown):
    """The shown lines before the ^C that is to be typed, and whether there is one."""
    for index, line in enumerate(shown):
        if line.startswith("^C"):
            return shown[:index], True
    return shown, False
