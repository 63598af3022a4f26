#!/usr/bin/env python3
"""headers.py <source tree> <folder> <header>...: writes what doxygen reads of the headers into the folder.

A comment is that of all declarations below it up to the next blank line or comment, as people read it, and the rows
of a vocabulary are members that tell their texts. Lines keep their numbers."""

import pathlib
import re
import sys

ROOT, FOLDER = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2])
# A definition on several lines, before the rows that it is for.
BROKEN = re.compile(r'( *#define ZELNOR_\w+\((?:.*\\\n)+.*)\n(?= *#include "Conf/Interfaces/Vocabulary/)')
DEFINE = re.compile(r" *#define ZELNOR_(\w+)\(([\w, .]+)\) (.*)")
INCLUDE = re.compile(r' *#include "(Conf/Interfaces/Vocabulary/\w+\.def)"')
ROW = re.compile(r"ZELNOR_(\w+)\((.*)\)(?: *//.*)?$")


def members(include, kinds):
    """The rows of a vocabulary as what `kinds` makes of them: parameters and the text behind them, by kind."""
    for line in (ROOT / include).read_text().splitlines():
        row = ROW.match(line)
        if row and row[1] in kinds:
            parameters, body = kinds[row[1]]
            values = dict(zip(parameters, row[2].split(", ")))
            text = next((value for value in values.values() if value.startswith('"')), f'"{row[2].split(", ")[0]}"')
            yield f"/** The text {text}. */ " + re.sub(r"\w+", lambda word: values.get(word[0], word[0]), body)


def expanded(lines):
    """The lines with the vocabulary in its place."""
    kinds, goes_on = {}, False
    for line in lines:
        if goes_on:
            # Without its beginning, doxygen would take the rest of a definition for declarations.
            goes_on = line.endswith("\\")
            yield ""
            continue
        define, include = DEFINE.match(line), INCLUDE.match(line)
        goes_on = bool(define) and line.endswith("\\")
        # What is added up is not a member.
        if define and not define[3].startswith(("+", "\\")):
            kinds[define[1]] = (define[2].split(", "), define[3])
            if define[1] == "TEXT":
                # A container is a text where nothing else is said of it.
                kinds["CONTAINER"] = kinds["TEXT"]
            yield ""
        elif include and kinds:
            yield " ".join(members(include[1], kinds))
            kinds = {}
        else:
            yield "" if define or include else line


def shared(lines):
    """The lines with each comment before all declarations that it is about."""
    comment, indent, ends, is_first = [], "", True, True
    for line in lines:
        text = line.strip()
        if not text:
            comment = []
        elif text.startswith("///") and not text.startswith("///<"):
            if not is_first or not comment:
                comment, is_first = [], True
                indent = line[:len(line) - len(line.lstrip())]
            comment.append(text[3:])
            ends = True
        elif not text.startswith(("//", "#", "{", "}")):
            begins = ends and line.startswith(indent) and not line[len(indent):].startswith(" ")
            if comment and begins and not is_first and "///<" not in line and not text.endswith(":"):
                about = re.split(r"\\(?:param|throw|returns)", " ".join(comment))[0]
                line = f"{indent}/** {about} */ {text}"
            is_first = False
            ends = text.split(" //")[0].rstrip().endswith((";", "}"))
        elif text.startswith("}"):
            ends = True
        yield line


def enumerations(lines):
    """The lines with what is said behind an enumeration before it, where doxygen looks for it."""
    said = []
    for i, line in enumerate(lines):
        if re.match(r" *enum ", line):
            said.append(i)
        end = re.match(r"( *\};) *///< (.*)", line)
        if end and said:
            lines[said[-1]] = f"/** {end[2]} */ {lines[said[-1]]}"
            lines[i] = end[1]
    return lines


def joined(match):
    return re.sub(r" *\\\n *", " ", match[1]) + "\n" * (1 + match[1].count("\n"))


def main():
    for header in sys.argv[3:]:
        header = pathlib.Path(header).resolve().relative_to(ROOT)
        lines = BROKEN.sub(joined, (ROOT / header).read_text()).splitlines()
        copy = FOLDER / header
        copy.parent.mkdir(parents=True, exist_ok=True)
        copy.write_text("\n".join(shared(expanded(enumerations(lines)))) + "\n")


main()
