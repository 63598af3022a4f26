#!/usr/bin/env python3
"""Compares the JSON Schemas with `zconf validate`: schemas.py <zconf> <source tree> [<documents>]

What a schema refuses, validation refuses. What validation refuses and a schema does not is one of the things that
Docs/job-document.md says a schema cannot tell. Documents are those of the tree, changed at random, and made at random.
"""
import copy
import glob
import json
import os
import random
import re
import subprocess
import sys
import tempfile

import jsonschema

# Faults of these kinds are about several values at once, or about the installed FFmpeg.
KINDS = {"topology", "structure", "encoder", "container"}
# What the readers ask beyond kinds, ranges and names.
REASONS = [
    r"a rational whose reduced form",
    r"nested deeper than 512",
    r"a number that is not a 64-bit integer",  # 1.0 is an integer for a schema
    r"found a number, which counts as 0",
    r"appears more than once",
    r"the name of a tag is a visible text",
    r"^expected FFmpeg's name of",
    r"^expected the name or the number of a pixel format",
    r"^expected a positive rational",  # signs and sizes of both numbers
    r"^expected a rate as",
    r"^expected a number from -1 on",  # of a rational
    r"^expected a time after",
    r"^a chapter has",
    r"is listed twice",
    r"says that stream \d+ is left out",
    r"^expected (a video|an audio|a subtitle) codec, as",  # codecs that this FFmpeg does not have, and text of bitmaps
    r"^a link to a raw stream does not have a record",
    r"found an object with 2 members$",  # the name of the schema is not at the beginning
    r"^missing; ",  # what is used together
    r"cannot be set by a job or a preset$",
]
# Lists that the schemas look into.
LISTS = {"vertices", "edges", "$$STREAMS$$"}
VALUES = [None, True, False, 0, 1, -1, 2, 64, 65535, 65536, 2**31 - 1, 2**31, 2**32, 2**63 - 1, 2**63, -2**63, 1.5, "", "x", "a\0b",
          "auto", "-1", "-5", "4abc", "mp4", "STEREO", "VBR", "keep", "tv", "CODEC_ID_AAC", "CODEC_ID_H264", [1, 2], [1, 0], [-1, 3],
          [30000, 1001], [1, 2, 3], [{"a": 1}, {"a": 2}], [{"": 0}], [], {}, {"a": 1}, {"": {"start": 0, "end": 5}}, {"a=b": "c"},
          {"crf": 23}, [[1]], {"a": {"b": [True]}}]


def golden(source):
    documents = []
    for name in sorted(glob.glob(source + "/Presets/*.json") + glob.glob(source + "/Tests/Fuzz/Corpus/*/*.json")):
        if os.path.getsize(name) < 4000:
            try:
                with open(name, encoding="utf-8") as file:
                    documents.append(json.load(file))
            except ValueError:
                pass
    return [document for document in documents if isinstance(document, dict)] + [GOOD_JOB]


GOOD_JOB = {
    "vertices": [
        {"id": 1, "data": {"data": {"source": {"$$TYPE_ID$$": "sourceFile", "filePath": "in.mkv"}}}},
        {"id": 2, "data": {"data": {"target": {"container": "mp4", "filePath": "out.mp4", "metadata": {"title": "One"},
                                               "chapters": [{"": {"start": 0, "end": 5, "title": "a"}}]}}}},
        {"id": 3, "data": {"data": {"streamRaw": {"id": 0}}}},
        {"id": 4, "data": {"data": {"streamRaw": {"id": 1}}}},
    ],
    "edges": [
        {"from": 1, "to": 3},
        {"from": 3, "to": 2, "data": {"data": {"format_codec_video": {"codec_id": "CODEC_ID_H264", "frameRateRatio": [25, 1]}}}},
        {"from": 1, "to": 4},
        {"from": 4, "to": 2, "data": {"data": {"format_codec_audio": {"codec_id": "CODEC_ID_AAC", "layout": "STEREO"}}}},
    ],
}


def places(value, found):
    found.append(value)
    for child in value.values() if isinstance(value, dict) else value if isinstance(value, list) else []:
        places(child, found)
    return found


def changed(document, keys, chance):
    document = copy.deepcopy(document)
    for _ in range(chance.randint(1, 3)):
        groups = [value for value in places(document, []) if isinstance(value, (dict, list)) and value]
        if not groups:
            return document
        group = chance.choice(groups)
        key = chance.choice(list(group) if isinstance(group, dict) else range(len(group)))
        action = chance.randrange(5)
        if action == 0:
            del group[key]
        elif action == 1 and isinstance(group, dict):
            group[chance.choice(keys)] = group.pop(key)
        elif action == 2 and isinstance(group, dict):
            group[chance.choice(keys)] = copy.deepcopy(chance.choice(VALUES))
        else:
            group[key] = copy.deepcopy(chance.choice(VALUES))
    return document


def candidates(schema, definitions):
    """Values that a schema's own words suggest, good ones and bad ones."""
    if "$ref" in schema:
        return candidates(definitions[schema["$ref"].rsplit("/", 1)[1]], definitions)
    values = list(schema.get("enum", []))[:50]
    for part in schema.get("anyOf", []) + schema.get("allOf", []):
        values += candidates(part, definitions)
    if "minimum" in schema:
        values += [schema["minimum"], schema["minimum"] - 1, schema["maximum"], schema["maximum"] + 1]
    if schema.get("type") == "string":
        values += ["eng", "bt709", "yuv420p"]
    return values


def made(schema, chance):
    """A preset with settings of the vocabulary."""
    definitions = schema["$defs"]
    streams = {}
    for name, kind, codec in [("video", "video", "CODEC_ID_H264"), ("audio", "audio", "CODEC_ID_AAC")]:
        stream = {"codec_id": codec}
        settings = definitions[kind]["anyOf"][0]["properties"]
        for key in chance.sample(sorted(settings), chance.randint(0, 3)):
            known = candidates(settings[key], definitions)
            stream[key] = chance.choice(known) if known and chance.random() < 0.9 else copy.deepcopy(chance.choice(VALUES))
        streams[name] = stream
    return {"p": {"container": "matroska", "$$STREAMS$$": streams}}


def verdicts(program, documents, folder):
    """What validation says of each document."""
    found = []
    for first in range(0, len(documents), 500):
        names = []
        for number, document in enumerate(documents[first:first + 500]):
            names.append(os.path.join(folder, f"{number}.json"))
            with open(names[-1], "w", encoding="ascii") as file:
                json.dump(document, file)
        answer = subprocess.run([program, "validate", "--json", *names], stdout=subprocess.PIPE, check=False)
        found += json.loads(answer.stdout)
    return found


def is_in_records(document, pointer):
    """Whether a fault is about a group that is written as an array of records, which the schemas do not look into."""
    value, key = document, ""
    for step in pointer.split("/")[1:]:
        if isinstance(value, list) and key not in LISTS:
            return True
        key = step.replace("~1", "/").replace("~0", "~")
        value = value[int(key)] if isinstance(value, list) else value[key]
    return isinstance(value, list) and key not in LISTS


def unexplained(document, fault):
    return not (fault["fault"] in KINDS or any(re.search(reason, fault["text"]) for reason in REASONS) or
                is_in_records(document, fault["pointer"]))


def compare(document, verdict, schemas):
    kind = verdict["kind"]
    if kind == "unknown":
        return None
    fits = schemas[kind].is_valid(document)
    if not fits and verdict["valid"]:
        error = next(schemas[kind].iter_errors(document))
        return f"the schema refuses what validation takes: {error.message[:200]} at {list(error.absolute_path)}"
    if fits and not verdict["valid"]:
        for fault in verdict["faults"]:
            if unexplained(document, fault):
                return f"the schema takes what validation refuses: {fault['pointer']}: {fault['text']}"
    return None


def run(program, source, count):
    schemas, raw = {}, {}
    for kind in ["job", "preset"]:
        with open(f"{source}/Schemas/{kind}.schema.json", encoding="utf-8") as file:
            raw[kind] = json.load(file)
        jsonschema.Draft202012Validator.check_schema(raw[kind])
        schemas[kind] = jsonschema.Draft202012Validator(raw[kind])
    chance = random.Random(1)
    documents = golden(source)
    keys = sorted({key for document in documents for value in places(document, []) if isinstance(value, dict) for key in value})
    good = [document for document in documents if len(json.dumps(document)) < 1500]
    while len(documents) < count:
        documents.append(made(raw["preset"], chance) if len(documents) % 3 == 0 else changed(chance.choice(good), keys, chance))
    with tempfile.TemporaryDirectory() as folder:
        answers = verdicts(program, documents, folder)
    findings = 0
    for document, verdict in zip(documents, answers, strict=True):
        finding = compare(document, verdict, schemas)
        if finding:
            findings += 1
            print(f"{finding}\n  {json.dumps(document)[:1500]}")
    valid = sum(verdict["valid"] for verdict in answers)
    print(f"campaign: {len(documents)} documents, {valid} valid, {findings} findings")
    return 1 if findings else 0


def main():
    program, source = sys.argv[1:3]
    count = int(sys.argv[3]) if len(sys.argv) > 3 else int(os.environ.get("ZELNOR_CAMPAIGN_RUNS", "2000"))
    sys.exit(run(program, source, count))


if __name__ == "__main__":
    main()
