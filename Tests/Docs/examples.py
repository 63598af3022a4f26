#!/usr/bin/env python3
"""examples.py <zconf> <source tree> <scratch folder>: runs every example of the manual pages and of
Docs/json-output.md, and compares the JSON in the latter with what the commands write: the names and types of
its members, and all of it where the block says "exact". Every command with --json has an example there."""

import concurrent.futures
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys

ZCONF, SOURCE, SCRATCH = (pathlib.Path(argument).resolve() for argument in sys.argv[1:4])
SUBTITLES = "1\n00:00:00,200 --> 00:00:00,700\nHello\n"
# A preset with two mistakes, and one without.
FAULTY = '''{
  "film": {
    "container": "matroska",
    "$$STREAMS$$": {
      "video": { "name": "CODEC_ID_H246", "widht": 640 }
    }
  }
}
'''


def shell(folder, line):
    environment = dict(os.environ, PATH=f"{SCRATCH}/bin:{os.environ['PATH']}", LC_ALL="C.UTF-8",
                       XDG_DATA_HOME=f"{SCRATCH}/data", XDG_DATA_DIRS=f"{SCRATCH}/none")
    return subprocess.run(["bash", "-o", "pipefail", "-c", line], cwd=folder, env=environment, timeout=60,
                          stdin=subprocess.DEVNULL, capture_output=True, encoding="utf-8", check=False)


def make_fixture():
    """What the examples find in their folder."""
    shutil.rmtree(SCRATCH, ignore_errors=True)
    (SCRATCH / "bin").mkdir(parents=True)
    (SCRATCH / "bin/zconf").symlink_to(ZCONF)
    folder = SCRATCH / "fixture"
    folder.mkdir()
    (folder / "s.srt").write_text(SUBTITLES)
    (folder / "film.json").write_text(FAULTY)
    made = shell(folder,
                 "ffmpeg -v error -f lavfi -i testsrc2=s=160x120:r=25:d=1 -f lavfi -i sine=f=440:d=1 -i s.srt "
                 "-map 0 -map 1 -map 2 -c:v mpeg4 -c:a aac -c:s srt -metadata title='A holiday' "
                 "-metadata:s:a:0 language=deu holiday.mkv && rm s.srt && "
                 "zconf job new -p mp4-h264-aac -i holiday.mkv -t holiday.mp4 -o job.json")
    if made.returncode != 0:
        sys.exit("the fixture cannot be made: " + made.stderr)
    return folder


class Example:
    def __init__(self, line, status=0, kind=None, text=""):
        self.line, self.status, self.kind, self.text = line, status, kind, text


def examples_of_page(page):
    """The lines that begin with "$" between .EX and .EE; a comment before one tells its exit status."""
    examples, status, inside = [], 0, False
    for line in page.read_text().splitlines():
        inside = line == ".EX" or (inside and line != ".EE")
        if line.startswith('.\\" exit '):
            status = int(line.split()[-1])
        elif inside and line.startswith("$ "):
            plain = line[2:].replace("\\-", "-").replace("\\(dq", '"').replace("\\e", "\\")
            examples.append(Example(plain, status))
            status = 0
    return examples


def examples_of_document(document):
    """Blocks of "console" with lines after "$", each followed by a block of what the last line writes."""
    blocks = re.findall(r"^```(\S+) ?(.*)\n((?:.*\n)*?)```$", document.read_text(), re.MULTILINE)
    examples = []
    for (language, info, text), (kind, answer_info, answer) in zip(blocks, blocks[1:] + [("", "", "")]):
        if language != "console":
            continue
        lines = [line[2:] for line in text.splitlines()]
        status = int(info.split()[-1]) if info.startswith("exit") else 0
        examples.append([Example(line) for line in lines[:-1]] +
                        [Example(lines[-1], status, (kind + " " + answer_info).strip(), answer)])
    return examples


def kind_of(value):
    return "number" if isinstance(value, (int, float)) and not isinstance(value, bool) else type(value).__name__


def difference(said, found, place=""):
    """How what was found is not of the form that the document shows; empty: it is."""
    if kind_of(said) != kind_of(found):
        return f"{place}: the document has {kind_of(said)}, the answer {kind_of(found)}"
    if isinstance(said, dict):
        if list(said) != list(found):
            return f"{place}: the document has {list(said)}, the answer {list(found)}"
        return next(filter(None, (difference(said[key], found[key], f"{place}/{key}") for key in said)), "")
    if isinstance(said, list) and said:
        for some, others in ((found, said), (said, found)):
            for i, element in enumerate(some):
                pairs = [(other, element) if some is found else (element, other) for other in others]
                faults = [difference(a, b, f"{place}/{i}") for a, b in pairs]
                if all(faults):
                    return faults[0] if faults else f"{place}: the answer has no elements"
    elif isinstance(said, list) and found:
        return f"{place}: the document has no elements, the answer has"
    return ""


def complaint(example, output):
    if example.kind is None:
        return ""
    try:
        if example.kind == "jsonl":
            said, found = ([json.loads(line) for line in text.splitlines()] for text in (example.text, output))
        else:
            said, found = json.loads(example.text), json.loads(output)
    except ValueError as error:
        return f"not JSON: {error}\n{output}"
    if example.kind == "json exact":
        return "" if json.dumps(said) == json.dumps(found) else f"the answer is\n{output}"
    if example.kind not in ("json", "jsonl"):
        return f"no answer is shown, but '{example.kind}'"
    fault = difference(said, found)
    return fault and f"{fault}; the answer is\n{output}"


def run_all(fixture, name, examples):
    """Runs the examples of a document in a folder of their own, one after the other."""
    folder = SCRATCH / name
    shutil.copytree(fixture, folder)
    faults = []
    for example in examples:
        result = shell(folder, example.line)
        if result.returncode != example.status:
            faults.append(f"{name}: {example.line}: exit code {result.returncode}, expected {example.status}\n"
                          + result.stderr)
        elif fault := complaint(example, result.stdout):
            faults.append(f"{name}: {example.line}: {fault}")
    return faults


def main():
    fixture = make_fixture()
    pages = sorted((SOURCE / "Docs/man").glob("*.1"))
    documents = {page.name: examples_of_page(page) for page in pages}
    described = examples_of_document(SOURCE / "Docs/json-output.md")
    # Each is on its own, and starts from what the fixture has.
    documents.update({f"json-output.md.{i}": block for i, block in enumerate(described)})
    faults = []
    for page in pages:
        command = page.stem.replace("-", " ", 2 if re.match("zconf-(job|list|preset|batch)-", page.stem) else 1)
        if "\\-\\-json" in page.read_text().split(".SH OPTIONS")[1].split(".SH")[0]:
            if not any(block[-1].line.startswith(command + " ") for block in described):
                faults.append(f"json-output.md: there is no example of {command} --json")
    with concurrent.futures.ThreadPoolExecutor(2) as pool:
        for found in pool.map(lambda item: run_all(fixture, *item), documents.items()):
            faults += found
    count = sum(len(examples) for examples in documents.values())
    print(*faults, f"{count} examples", sep="\n")
    return 1 if faults or count < 40 else 0


sys.exit(main())
