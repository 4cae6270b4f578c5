"""Checks that what documents name exists: paths, links, options, commands, names of the code, texts of the program."""
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


def check(programs):
    helps = {name: read_help(os.path.join(programs, name)) for name in ("zembrastel", "zembrastel-cli")}
    problems = list(commands_without_example(helps["zembrastel-cli"]))
    version = re.search(r"project\(zembrastel VERSION (\S+)", read("CMakeLists.txt"))[1]
    newest = re.search(r"^## \[(\d\S*)\]", read("CHANGELOG.md"), re.MULTILINE)[1]
    if newest != version:
        problems.append(f"CHANGELOG.md: the newest version is {newest}, the program's {version}")
    for name in sorted(os.path.relpath(file, SOURCE) for folder in ("", "docs/")
                       for file in glob.glob(os.path.join(SOURCE, folder + "*.md"))):
        document = Document(os.path.join(SOURCE, name))
        wrong = [*missing_paths(document), *broken_links(name, document), *unknown_options(document, helps)]
        wrong += unknown_texts(document) if name in FOR_USERS else []
        wrong += unknown_names(document) if name in FOR_DEVELOPERS else []
        problems += [f"{name}: {problem}" for problem in wrong]
    return problems


def exists(name):
    return os.path.exists(os.path.join(SOURCE, name))


def missing_paths(document):
    for word in " ".join(document.spans()).split():
        is_path = word.partition("/")[0] in FOLDERS and "/" in word
        is_placeholder = re.search(r"NAME|SUBJECT|\*", word)  # for a path that is yet to be made, or for many
        if is_path and not is_placeholder and not exists(word):
            yield f"there is no {word}"


def broken_links(name, document):
    for link in document.links():
        target, _, heading = link.partition("#")
        if "://" in target:
            continue
        file = os.path.join(os.path.dirname(name), target) if target else name
        if not exists(file) or (heading and heading not in headings(file)):
            yield f"the link to {link} leads nowhere"


def headings(name):
    titles = re.findall(r"^#+ (.*)$", read(name), re.MULTILINE)
    return [re.sub(r"[^\w\- ]", "", title.lower()).replace(" ", "-") for title in titles]


def read_help(program, command=()):
    """The texts of --help, by command: () is the program itself."""
    text = subprocess.run([program, *command, "--help"], capture_output=True, text=True, check=True,
                          env=os.environ | {"LANGUAGE": ""}).stdout
    listed = re.search(r"^Commands:\n((?: .*\n)+)", text, re.MULTILINE)
    texts = {command: text}
    for name in re.findall(r"^  ([a-z]\S*)", listed[1], re.MULTILINE) if listed else []:
        texts |= read_help(program, (*command, name))
    return texts


def options(texts, command):
    return {"-h", *re.findall(r"^ +(?:-h,)?(--[a-z-]+)", texts[()] + texts[command], re.MULTILINE)}


def problem_of(texts, words):
    """What is wrong with a command line, or nothing."""
    command = ()
    plain = [word for word in words if not word.startswith("-")]
    for word in plain:
        if (*command, word) in texts:
            command += (word,)
    if not command and plain and re.fullmatch(r"[a-z]+", plain[0]) and len(texts) > 1:
        return f"there is no command {plain[0]}"
    unknown = [word for word in words if word.startswith("-") and word not in options(texts, command)]
    return f"{' '.join(command) or 'the program'} has no {' '.join(unknown)}" if unknown else ""


def commands_without_example(texts):
    """The commands that the manual never runs."""
    steps = Document(os.path.join(SOURCE, "docs/MANUAL.md")).steps
    run = "\n".join(step.text for step in steps if isinstance(step, Command))
    groups = {command[:-1] for command in texts if command}
    for command in (" ".join(command) for command in texts if command not in groups):
        if not re.search(rf"zembrastel-cli( --\S+ \S+)* {command}( |$)", run, re.MULTILINE):
            yield f"docs/MANUAL.md: there is no example of {command}"


def unknown_options(document, helps):
    every = {option for texts in helps.values() for command in texts for option in options(texts, command)}
    every |= set(re.findall(r"--[a-z-]+", texts_of(("scripts", "bench", "tests/support"))))
    for span in document.spans():
        try:
            words = shlex.split(span)
        except ValueError:
            continue
        if len(words) > 1 and words[0] in helps:
            if problem := problem_of(helps[words[0]], words[1:]):
                yield f"`{span}`: {problem}"
        elif re.fullmatch(r"--[a-z-]+", words[0]) and words[0] not in every:
            yield f"`{span}`: nothing has this option"


@functools.cache
def texts_of(folders):
    text = ""
    for folder in folders:
        for file in filter(os.path.isfile, glob.glob(os.path.join(SOURCE, folder, "**"), recursive=True)):
            with open(file, encoding="utf8", errors="replace") as opened:
                text += opened.read()
    return text


@functools.cache
def program_texts():
    """All that the sources have between quotation marks, as the program prints it."""
    joined = re.sub(r'(?<!\\)"\s*\n\s*"', "", texts_of(("src",)))
    return "\n".join(re.findall(r'"((?:[^"\\\n]|\\.)*)"', joined)).replace('\\"', '"')


def unknown_texts(document):
    """Quoted texts that the program does not have; "…" stands for a part that varies."""
    for text in document.quoted():
        if any(piece.strip() not in program_texts() for piece in text.split("…") if piece.strip(" .")):
            yield f'the program nowhere says "{text}"'


def unknown_names(document):
    known = set(re.findall(r"\w+", texts_of(("src", "tests", "fuzz", "bench", "packaging", "scripts"))))
    known |= set(re.findall(r"\w+", read("CMakePresets.json")))
    for span in document.spans():
        unknown = [word for word in re.findall(r"[A-Za-z_]\w{2,}", span)
                   if word not in known and not exists(span) and "NAME" not in word]
        if unknown:
            yield f"nothing is called {', '.join(unknown)}, as in `{span}`"
