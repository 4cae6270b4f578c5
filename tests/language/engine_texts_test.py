#!/usr/bin/python3
"""engine_texts_test.py SRC: the engine still says what the faces translate; users would read other words in English."""
import pathlib
import re
import sys

LITERAL = re.compile(r'"((?:[^"\\\n]|\\.)*)"')
src = pathlib.Path(sys.argv[1])


def literals(code):  # adjacent ones are one text
    return LITERAL.findall(re.sub(r'"\s*(\+\s*)?\n\s*(\+\s*)?"', "", code))


said = {", "}
for file in (file for layer in ("platform", "model", "transport", "sync", "app", "cli", "ui/main.cpp")
             for file in [src / layer, *(src / layer).rglob("*.[ch]*")] if file.is_file()):
    whole = "\n".join(literals(file.read_text()))
    for piece in re.split(r"\{\d\}|\n", whole) + re.split(r"\{\d\}|\n|, |(?<=\.) ", whole):  # and their parts
        said |= {piece.strip(" "), piece[:1].upper() + piece[1:]} - {""}


def is_said(words):  # in one piece, or put together
    words = words.rstrip(" ").lstrip(" 0123456789")
    return not words or any(words.startswith(piece) and is_said(words[len(piece):]) for piece in said)


code = [(src / "language" / name).read_text().split("constexpr std::")[1].split("// Mistakes on")[0]
        for name in ("engine_texts.cpp", "diagnosis_texts.cpp")]
texts = literals("".join(code))
lost = [text for text in texts if not all(map(is_said, re.split(r"%text|%\d", text)))]
print(*lost, sep="\n")
sys.exit(1 if lost or len(texts) < 300 else 0)
