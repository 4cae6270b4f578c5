"""That what documents name is there: paths, links, options, commands, names of the code and texts of the program."""
import functools
import glob
import os
import re
import shlex
import subprocess

from markdown import Command, Document
from place import SOURCE, read

FOR_USERS = ["README.md", "docs/MANUAL.md"]
FOR_DEVELOPERS = ["docs/ARCHITECTURE.md", "CONTRIBUTING.md"]
FOLDERS = ("bench", "docs", "fuzz", "packaging", "scripts", "src", "tests")
PLACEHOLDER = re.compile(r"NAME|SUBJECT|\*")  # in a path that is yet to be made, or of many


def check(programs):
    helps = {name: Help(os.path.join(programs, name)) for name in ("zembrastel", "zembrastel-cli")}
    problems = list(commands_without_example(helps["zembrastel-cli"]))
    for name in documents():
        document = Document(os.path.join(SOURCE, name))
        wrong = [*missing_paths(document), *broken_links(name, document), *unknown_options(document, helps)]
        if name in FOR_USERS:
            wrong += unknown_texts(document)
        if name in FOR_DEVELOPERS:
            wrong += unknown_names(document)
        problems += [f"{name}: {problem}" for problem in wrong]
    return problems + versions_that_differ()


def versions_that_differ():
    version = re.search(r"project\(zembrastel VERSION (\S+)", read("CMakeLists.txt"))[1]
    newest = re.search(r"^## \[(\d\S*)\]", read("CHANGELOG.md"), re.MULTILINE)[1]
    return [] if newest == version else [f"CHANGELOG.md: the newest version is {newest}, the program's {version}"]


def documents():
    return sorted(os.path.relpath(file, SOURCE) for folder in (".", "docs")
                  for file in glob.glob(os.path.join(SOURCE, folder, "*.md")))


def missing_paths(document):
    for span in document.spans():
        for word in span.split():
            folder, slash, _ = word.partition("/")
            if slash and folder in FOLDERS and not PLACEHOLDER.search(word) and not there(word):
                yield f"there is no {word}"


def there(name):
    return os.path.exists(os.path.join(SOURCE, name))


def broken_links(name, document):
    for link in document.links():
        target, _, heading = link.partition("#")
        if "://" in target:
            continue
        file = os.path.join(os.path.dirname(name), target) if target else name
        if not there(file):
            yield f"the link to {link} leads nowhere"
        elif heading and heading not in headings(file):
            yield f"the link to {link} leads to no heading"


def headings(name):
    titles = re.findall(r"^#+ (.*)$", read(name), re.MULTILINE)
    return [re.sub(r"[^\w\- ]", "", title.lower()).replace(" ", "-") for title in titles]


class Help:
    """What a program's --help tells of it and of its commands."""

    def __init__(self, program):
        self.program = program
        self.texts = {}
        self.collect(())

    def collect(self, command):
        text = subprocess.run([self.program, *command, "--help"], capture_output=True, text=True, check=True).stdout
        self.texts[command] = text
        listed = re.search(r"^Commands:\n((?: .*\n)+)", text, re.MULTILINE)
        for name in re.findall(r"^  ([a-z]\S*)", listed[1], re.MULTILINE) if listed else []:
            self.collect((*command, name))

    def leaves(self):
        """The commands that have none below them."""
        above = {command[:-1] for command in self.texts if command}
        return [command for command in self.texts if command not in above]

    def options(self, command):
        own = re.findall(r"^ +(?:-h,)?(--[a-z-]+)", self.texts[()] + self.texts[command], re.MULTILINE)
        return {"-h", *own}

    def all_options(self):
        return set().union(*(self.options(command) for command in self.texts))

    def problem(self, words):
        """Of a command line that is written down."""
        plain = [word for word in words if not word.startswith("-")]
        command = ()
        for word in plain:
            if (*command, word) in self.texts:
                command += (word,)
        if not command and plain and re.fullmatch(r"[a-z]+", plain[0]) and len(self.texts) > 1:
            return f"there is no command {plain[0]}"
        unknown = [word for word in words if word.startswith("-") and word not in self.options(command)]
        return f"{' '.join(command) or self.program} has no {' '.join(unknown)}" if unknown else None


def commands_without_example(program):
    """The commands that the manual runs nowhere."""
    steps = Document(os.path.join(SOURCE, "docs/MANUAL.md")).steps
    run = "\n".join(step.text for step in steps if isinstance(step, Command))
    for command in map(" ".join, program.leaves()):
        if not re.search(rf"zembrastel-cli( --\S+ \S+)* {command}( |$)", run, re.MULTILINE):
            yield f"docs/MANUAL.md: there is no example of {command}"


def unknown_options(document, helps):
    every = helps["zembrastel"].all_options() | helps["zembrastel-cli"].all_options()
    for span in document.spans():
        try:
            words = shlex.split(span)
        except ValueError:
            continue
        if len(words) > 1 and words[0] in helps:
            if problem := helps[words[0]].problem(words[1:]):
                yield f"`{span}`: {problem}"
        elif re.fullmatch(r"--[a-z-]+", words[0]) and words[0] not in every | options_of_scripts():
            yield f"`{span}`: nothing has this option"


@functools.cache
def options_of_scripts():
    return set(re.findall(r"--[a-z-]+", texts_of(("scripts", "bench", "tests/support"))))


@functools.cache
def texts_of(folders):
    files = [file for folder in folders for file in glob.glob(os.path.join(SOURCE, folder, "**"), recursive=True)]
    text = ""
    for file in filter(os.path.isfile, files):
        try:
            with open(file, encoding="utf8") as opened:
                text += opened.read()
        except UnicodeDecodeError:
            pass  # a picture, or a fuzz target's input
    return text


@functools.cache
def program_texts():
    """All that the sources have between quotation marks, as the program says it."""
    joined = re.sub(r'(?<!\\)"\s*\n\s*"', "", texts_of(("src",)))
    return "\n".join(re.findall(r'"((?:[^"\\\n]|\\.)*)"', joined)).replace('\\"', '"')


def unknown_texts(document):
    """Texts of the program that it does not have; "…" stands for what varies in one."""
    for text in document.quoted():
        pieces = [piece.strip() for piece in text.split("…") if piece.strip(" .")]
        if any(piece not in program_texts() for piece in pieces):
            yield f'the program nowhere says "{text}"'


def unknown_names(document):
    known = set(re.findall(r"\w+", texts_of(("src", "tests", "fuzz", "bench", "packaging", "scripts"))))
    known |= set(re.findall(r"\w+", read("CMakePresets.json")))
    for span in document.spans():
        unknown = [word for word in re.findall(r"[A-Za-z_]\w{2,}", span)
                   if word not in known and not there(span) and "NAME" not in word]
        if unknown:
            yield f"nothing is called {', '.join(unknown)}, as in `{span}`"
