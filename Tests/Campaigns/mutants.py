#!/usr/bin/env python3
"""Mutation testing: makes small faults in the libraries, one at a time, and asks the tests to notice each.

A mutant is one changed source file. It is compiled as the build compiled the file, linked into a library and a
test program of its own, and run by the tests; neither the tree nor the build is touched. The tests of the same
name as the source run first, then all that use the library. A mutant that no test notices survives; one that
does not compile is left out and counts for nothing.
"""

import argparse
import collections
import concurrent.futures
import dataclasses
import json
import os
import pathlib
import random
import re
import resource
import shlex
import shutil
import signal
import subprocess
import sys
import tempfile
import time

# Stands for the text that was found, negated.
NEGATED = "!(...)"

# What is changed: a pattern in a line of code, and what stands there instead.
OPERATORS = [
    (r" == ", [" != "]),
    (r" != ", [" == "]),
    (r" < ", [" <= ", " >= "]),
    (r" > ", [" >= ", " <= "]),
    (r" <= ", [" < ", " > "]),
    (r" >= ", [" > ", " < "]),
    (r" && ", [" || "]),
    (r" \|\| ", [" && "]),
    (r" \+ (?!\")", [" - "]),
    (r" - ", [" + "]),
    (r" \* (?=\w+[;,) ])", [" / "]),
    (r" / ", [" * "]),
    (r" % ", [" / "]),
    (r"\+\+", ["--"]),
    (r" \+= (?!\")", [" -= "]),
    (r" -= ", [" += "]),
    (r"\btrue\b", ["false"]),
    (r"\bfalse\b", ["true"]),
    (r"(?<=[(,= ])0(?=[;,) ])", ["1"]),
    (r"(?<=[(,= ])1(?=[;,) ])", ["0", "2"]),
    (r"\bif \(!", ["if ("]),
    (r"(?<=\bif \()(?!!|const |auto )[^;]*(?=\)$)", [NEGATED]),
    (r"\breturn !", ["return "]),
    (r"\bcontinue;", ["break;"]),
    (r"\bbreak;", [";"]),
    # A statement that is left out: a call whose result nobody takes.
    (r"^\s+(?:[A-Za-z_][\w:]*(?:\.|->))?[A-Za-z_][\w:]*\([^;{}]*\);$", [";"]),
]

# What removes files or ends processes is not changed: a mutant must not harm the machine that it runs on. What
# only reserves memory changes no result.
LEFT_ALONE = re.compile(r"unlink|remove_all|rmdir|kill\(|killpg|reserve\(")


@dataclasses.dataclass(frozen=True)
class Library:
    """Which sources a library has, and which programs test them."""

    sources: str
    #: Programs that link the library's objects themselves.
    relinked: tuple = ()
    shared: str = ""
    programs: tuple = ()


LIBRARIES = {
    "Core": Library("Core/", (), "libZelnorCore.so", ("ZelnorCoreTests", "ZelnorConfTests")),
    "Conf": Library("Conf/", (), "libZelnorConf.so", ("ZelnorConfTests", "ZelnorMediaTests")),
    "Media": Library("Media/", ("ZelnorMediaTests",), "libZelnorMedia.so",
                     ("ZelnorMediaTests", "ZelnorToolTests")),
}


@dataclasses.dataclass(frozen=True)
class Mutant:
    library: str
    file: str
    line: int
    before: str
    after: str

    def __str__(self):
        return f"{self.file}:{self.line}: {self.before.strip()}  ->  {self.after.strip()}"


def code_lines(text):
    """The lines that hold code, by their number, with texts and comments blanked out to the same length."""

    def blank(match):
        return re.sub(r"[^\n]", "\x01", match.group(0))

    blanked = re.sub(r'"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])+\'|//[^\n]*|/\*.*?\*/', blank, text, flags=re.S)
    for number, line in enumerate(blanked.split("\n"), 1):
        if line.lstrip().startswith("#") or "static_assert" in line or "template" in line:
            continue
        yield number, line


def mutants_of(root, library, path):
    text = path.read_text()
    lines = text.split("\n")
    for number, code in code_lines(text):
        original = lines[number - 1]
        if LEFT_ALONE.search(original):
            continue
        for pattern, replacements in OPERATORS:
            for match in re.finditer(pattern, code):
                for replacement in replacements:
                    found = original[match.start(): match.end()]
                    new = f"!({found})" if replacement == NEGATED else replacement
                    changed = original[: match.start()] + new + original[match.end():]
                    yield Mutant(library, str(path.relative_to(root)), number, original, changed)


def sample(root, libraries, count, seed):
    """`count` mutants, drawn from the libraries by how much there is to change in each."""
    everything = []
    for library in libraries:
        for path in sorted(root.glob(LIBRARIES[library].sources + "**/*.cpp")):
            everything += mutants_of(root, library, path)
    chosen = random.Random(seed)
    chosen.shuffle(everything)
    return everything if count == 0 else everything[:count], len(everything)


class Build:
    """The commands of a finished build, to be repeated with a file of ours in them."""

    def __init__(self, folder):
        self.folder = folder
        entries = json.loads((folder / "compile_commands.json").read_text())
        self.compile_commands = collections.defaultdict(list)
        for entry in entries:
            self.compile_commands[entry["file"]].append(shlex.split(entry["command"]))
        self.links = {}

    def link_command(self, target):
        if target not in self.links:
            text = subprocess.run(["ninja", "-t", "commands", target], cwd=self.folder, check=True,
                                  capture_output=True, text=True).stdout.strip().split("\n")[-1]
            # ": && link && cd folder && what is done afterwards"
            self.links[target] = shlex.split(next(part for part in text.split(" && ") if " -o " in part))
        return self.links[target]

    def object_and_compile(self, source, changed, output, target):
        """The object file that the target links for the source, and how it is compiled from the changed one."""
        for words in self.compile_commands[str(source)]:
            at = words.index("-o") + 1
            linked = words[at]
            # Some sources are compiled once more for tests of their own.
            if linked in self.link_command(target):
                words = [str(changed) if word == str(source) else word for word in words]
                words[at] = str(output)
                words = [word for word in words if word != "-Werror" and not word.endswith("ccache")]
                return linked, words + ["-O0", "-w"]
        sys.exit(f"{source} is not linked into {target}")

    def link(self, target, replaced, replacement, output):
        words = [str(replacement) if word == replaced else word for word in self.link_command(target)]
        words[words.index("-o") + 1] = str(output)
        return words


def limits():
    os.setsid()
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def run(words, folder, seconds, environment=None):
    """The exit status, or "timeout"."""
    process = subprocess.Popen(words, cwd=folder, env=environment, stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL, stdin=subprocess.DEVNULL, preexec_fn=limits)
    try:
        return process.wait(timeout=seconds)
    except subprocess.TimeoutExpired:
        return "timeout"
    finally:
        try:
            os.killpg(process.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
        process.wait()


def suites_of(root, source):
    """A filter for the tests that have the name of the source."""
    stem = pathlib.Path(source).stem
    names = set()
    for path in root.glob("Tests/**/*Test.cpp"):
        if path.stem == stem + "Test":
            names |= set(re.findall(r"^(?:TEST|TEST_F|TEST_P|RC_GTEST_PROP)\((\w+),", path.read_text(), re.M))
    return ":".join(f"{name}.*:*/{name}.*" for name in sorted(names))


class Judge:
    """Compiles mutants and runs the tests on them."""

    def __init__(self, root, build, excluded):
        self.root = root
        self.build = build
        self.excluded = excluded
        self.seconds = {}

    def measure(self, programs):
        """How long each program takes without a fault; one that fails then cannot judge."""
        for program in sorted(programs):
            start = time.monotonic()
            status = self.run_tests(self.build.folder / "bin" / program, "", None, 900)
            if status != 0:
                sys.exit(f"{program} fails without any fault ({status}); --exclude leaves tests out")
            self.seconds[program] = time.monotonic() - start

    def run_tests(self, program, only, preloaded, seconds):
        words = [str(program), "--gtest_brief=1", "--gtest_fail_fast",
                 f"--gtest_filter={only or '*'}-{self.excluded}"]
        environment = dict(os.environ)
        if preloaded:
            environment["LD_PRELOAD"] = str(preloaded)
        with tempfile.TemporaryDirectory() as folder:
            # Tests that give up their rights go there as well.
            os.chmod(folder, 0o755)
            environment["TMPDIR"] = folder
            return run(words, folder, seconds, environment)

    def shared(self, library):
        """The library as a target of the build; the name without a version is a link."""
        return os.path.relpath(os.path.realpath(self.build.folder / "bin" / library.shared), self.build.folder)

    def judge(self, mutant):
        """"killed", "timeout", "survived" or "does not compile"."""
        with tempfile.TemporaryDirectory() as name:
            scratch = pathlib.Path(name)
            source = self.root / mutant.file
            changed = scratch / source.name
            lines = source.read_text().split("\n")
            lines[mutant.line - 1] = mutant.after
            changed.write_text("\n".join(lines))
            target = self.shared(LIBRARIES[mutant.library])
            replaced, words = self.build.object_and_compile(source, changed, scratch / "mutant.o", target)
            if run(words, self.build.folder, 300) != 0:
                return "does not compile"
            return self.ask_tests(mutant, replaced, scratch)

    def ask_tests(self, mutant, replaced, scratch):
        library = LIBRARIES[mutant.library]
        target = self.shared(library)
        shared = scratch / os.path.basename(target)
        if run(self.build.link(target, replaced, scratch / "mutant.o", shared), self.build.folder, 300) != 0:
            return "does not compile"
        programs = {}
        for program in library.programs:
            programs[program] = self.build.folder / "bin" / program
            if program in library.relinked:
                programs[program] = scratch / program
                words = self.build.link("bin/" + program, replaced, scratch / "mutant.o", programs[program])
                if run(words, self.build.folder, 300) != 0:
                    return "does not compile"
        own = suites_of(self.root, mutant.file)
        rounds = [(library.programs[0], own)] if own else []
        rounds += [(program, "") for program in library.programs]
        for program, only in rounds:
            status = self.run_tests(programs[program], only, shared, 3 * self.seconds[program] + 20)
            if status != 0:
                return "timeout" if status == "timeout" else "killed"
        return "survived"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=pathlib.Path, required=True, help="a finished build, made with Ninja")
    parser.add_argument("--count", type=int, default=300, help="mutants to try; 0 for all")
    parser.add_argument("--seed", type=int, default=1, help="which mutants are drawn")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--libraries", default="Core,Conf,Media")
    parser.add_argument("--least", type=float, default=95.0, help="the percentage that has to be killed")
    parser.add_argument("--exclude", default="", help="tests that are left out, as gtest_filter takes them")
    parser.add_argument("--only", default="", help="only mutants of files whose names hold this text")
    options = parser.parse_args()

    root = pathlib.Path(__file__).resolve().parents[2]
    libraries = options.libraries.split(",")
    chosen, total = sample(root, libraries, 0 if options.only else options.count, options.seed)
    chosen = [mutant for mutant in chosen if options.only in mutant.file]
    chosen = chosen[: options.count] if options.count else chosen
    judge = Judge(root, Build(options.build.resolve()), options.exclude)
    judge.measure({program for library in libraries for program in LIBRARIES[library].programs})

    results = {}
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        pending = {pool.submit(judge.judge, mutant): mutant for mutant in chosen}
        for done in concurrent.futures.as_completed(pending):
            results.setdefault(done.result(), []).append(pending[done])
            if done.result() == "survived":
                print(f"survived: {pending[done]}", flush=True)
    counts = {name: len(mutants) for name, mutants in results.items()}
    noticed = counts.get("killed", 0) + counts.get("timeout", 0)
    tried = noticed + counts.get("survived", 0)
    percentage = 100.0 * noticed / tried if tried else 0.0
    print(f"campaign: {tried} mutants of {total} possible (seed {options.seed}), {noticed} killed "
          f"({counts.get('timeout', 0)} by their time), {counts.get('survived', 0)} survived, "
          f"{counts.get('does not compile', 0)} did not compile: {percentage:.1f} %")
    return 0 if percentage >= options.least else 1


if __name__ == "__main__":
    sys.exit(main())
