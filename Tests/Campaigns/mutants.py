#!/usr/bin/env python3
"""Mutation testing: makes small faults in the libraries, one at a time, and asks the tests to notice each.

A mutant is one changed source file. It is compiled as the build compiled the file, linked into a library and a
test program of its own in a folder that goes again, and run by the tests; tree and build stay as they are. The
tests of the same name as the source run first, then all quick ones that use the library, and the slow ones when
nothing has noticed the mutant so far. A mutant that no test notices survives; one that does not compile is left
out and counts for nothing.

A sample can be tried in portions: `--from` says how many of the drawn mutants have been tried before. `--log` keeps
a line of JSON for each mutant, and `--retry` tries again those that survived in such a log.
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
    #: Programs that only see what the others let pass.
    last: tuple = ()


LIBRARIES = {
    "Core": Library("Core/", (), "libZelnorCore.so", ("ZelnorCoreTests", "ZelnorConfTests")),
    "Conf": Library("Conf/", (), "libZelnorConf.so", ("ZelnorConfTests", "ZelnorMediaTests")),
    "Media": Library("Media/", ("ZelnorMediaTests",), "libZelnorMedia.so", ("ZelnorMediaTests",),
                     ("ZelnorToolTests",)),
}

# A test that takes longer, in seconds, runs only on what the others let pass.
SLOW = 0.3

# More memory than any test needs, so that a mutant without end does not take the machine's.
MOST_MEMORY = 12 << 30

# More than any test writes into one file. A mutant that writes without end may do it into memory, where the limit
# above does not count, and would take the machine's.
LARGEST_FILE = 1 << 30


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


def sample(root, libraries, seed):
    """All mutants in an order that the seed draws, and how many they are."""
    everything = []
    for library in libraries:
        for path in sorted(root.glob(LIBRARIES[library].sources + "**/*.cpp")):
            everything += mutants_of(root, library, path)
    chosen = random.Random(seed)
    chosen.shuffle(everything)
    return everything, len(everything)


class Build:
    """The commands of a finished build, to be repeated with a file of ours in them."""

    def __init__(self, folder):
        self.folder = folder
        entries = json.loads((folder / "compile_commands.json").read_text())
        self.compile_commands = collections.defaultdict(list)
        for entry in entries:
            self.compile_commands[entry["file"]].append(shlex.split(entry["command"]))
        self.links = {}
        self.headers = {}
        self.headers_folder = tempfile.TemporaryDirectory()
        self.linker = ["-fuse-ld=lld"] if shutil.which("ld.lld") else []

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
                return linked, self.quick(words)
        sys.exit(f"{source} is not linked into {target}")

    def quick(self, words):
        """The command without optimisation; its precompiled header must be one without as well."""
        words = [word for word in words if word != "-Werror" and not word.endswith("ccache")] + ["-O0", "-w"]
        if "-include" in words:
            at = words.index("-include") + 1
            words[at] = self.precompiled(words[at])
        return words

    def precompiled(self, header):
        commands = self.compile_commands.get(header + ".cxx")
        if header not in self.headers and commands:
            copy = pathlib.Path(self.headers_folder.name, str(len(self.headers)), os.path.basename(header))
            copy.parent.mkdir()
            shutil.copy(header, copy)
            words = [word for word in commands[0] if word != "-Werror" and not word.endswith("ccache")]
            words[words.index("-o") + 1] = str(copy) + ".gch"
            subprocess.run(words + ["-O0", "-w"], cwd=self.folder, check=True)
            self.headers[header] = str(copy)
        return self.headers.get(header, header)

    def link(self, target, replaced, replacement, output):
        words = [str(replacement) if word == replaced else word for word in self.link_command(target)]
        words[words.index("-o") + 1] = str(output)
        return words + self.linker


def limits():
    os.setsid()
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    resource.setrlimit(resource.RLIMIT_AS, (MOST_MEMORY, MOST_MEMORY))
    resource.setrlimit(resource.RLIMIT_FSIZE, (LARGEST_FILE, LARGEST_FILE))


def run(words, folder, seconds, environment=None, output=subprocess.DEVNULL):
    """The exit status, or "timeout"."""
    process = subprocess.Popen(words, cwd=folder, env=environment, stdout=output,
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

    def __init__(self, root, build, excluded, hasty):
        self.root = root
        self.build = build
        self.excluded = excluded
        self.hasty = hasty
        self.seconds = {}
        self.slow = {}
        self.slow_seconds = {}

    def programs(self, library):
        return library.programs if self.hasty else library.programs + library.last

    def measure(self, programs):
        """How long each program and test takes without a fault; what fails then cannot judge."""
        for program in sorted(programs):
            with tempfile.TemporaryDirectory() as folder:
                report = pathlib.Path(folder, "times.json")
                status, failed = self.run_tests(self.build.folder / "bin" / program, "*", "", None, 900, report)
                if status != 0:
                    sys.exit(f"{program} fails without any fault ({failed or status}); --exclude leaves tests out")
                times = times_of(json.loads(report.read_text()))
            self.slow[program] = ":".join(sorted(test for test, time in times.items() if time > SLOW))
            self.seconds[program] = sum(time for time in times.values() if time <= SLOW)
            self.slow_seconds[program] = sum(times.values()) - self.seconds[program]

    def prove(self, library):
        """A source that is compiled and linked as a mutant is, but unchanged, must survive."""
        path = min((self.root / LIBRARIES[library].sources).glob("**/*.cpp"))
        text = path.read_text().split("\n")[0]
        hasty, self.hasty = self.hasty, True
        result, witness = self.judge(Mutant(library, str(path.relative_to(self.root)), 1, text, text))
        self.hasty = hasty
        if result != "survived":
            sys.exit(f"{path} counts as {result} without any fault ({witness})")

    def run_tests(self, program, only, besides, preloaded, seconds, report=None):
        """The exit status or "timeout", and the test that failed."""
        words = [str(program), "--gtest_brief=1", "--gtest_fail_fast",
                 f"--gtest_filter={only}-{':'.join(each for each in (self.excluded, besides) if each)}"]
        if report:
            words.append(f"--gtest_output=json:{report}")
        environment = dict(os.environ)
        if preloaded:
            environment["LD_PRELOAD"] = str(preloaded)
        with tempfile.TemporaryDirectory() as folder, tempfile.TemporaryFile() as output:
            # Tests that give up their rights go there as well.
            os.chmod(folder, 0o755)
            environment["TMPDIR"] = folder
            status = run(words, folder, seconds, environment, output)
            output.seek(0)
            failed = re.search(rb"^\[  FAILED  \] ([\w/]+\.[\w/]+)", output.read(), re.M)
            return status, failed.group(1).decode() if failed else ""

    def shared(self, library):
        """The library as a target of the build; the name without a version is a link."""
        return os.path.relpath(os.path.realpath(self.build.folder / "lib" / library.shared), self.build.folder)

    def judge(self, mutant):
        """"killed", "timeout", "survived" or "does not compile", and by which test."""
        # In the build, since a program looks for what belongs to it beside its folder.
        with tempfile.TemporaryDirectory(prefix="mutant-", dir=self.build.folder) as name:
            scratch = pathlib.Path(name)
            scratch.chmod(0o755)
            source = self.root / mutant.file
            changed = scratch / source.name
            lines = source.read_text().split("\n")
            lines[mutant.line - 1] = mutant.after
            changed.write_text("\n".join(lines))
            target = self.shared(LIBRARIES[mutant.library])
            replaced, words = self.build.object_and_compile(source, changed, scratch / "mutant.o", target)
            if run(words, self.build.folder, 300) != 0:
                return "does not compile", ""
            return self.ask_tests(mutant, replaced, scratch)

    def ask_tests(self, mutant, replaced, scratch):
        library = LIBRARIES[mutant.library]
        target = self.shared(library)
        shared = scratch / os.path.basename(target)
        if run(self.build.link(target, replaced, scratch / "mutant.o", shared), self.build.folder, 300) != 0:
            return "does not compile", ""
        # What the library loads when it needs it is looked for beside it.
        for beside in ("libZelnorFFmpeg.so.1", "libZelnorLog.so.1"):
            (scratch / beside).symlink_to(self.build.folder / "lib" / beside)
        programs = {}
        for program in self.programs(library):
            programs[program] = self.build.folder / "bin" / program
            if program in library.relinked:
                programs[program] = scratch / program
                words = self.build.link("bin/" + program, replaced, scratch / "mutant.o", programs[program])
                if run(words, self.build.folder, 300) != 0:
                    return "does not compile", ""
        for program, only, besides in self.rounds(mutant):
            # The machine may be busy with something else besides.
            seconds = 20 + 5 * (self.seconds if besides or not self.slow[program] else self.slow_seconds)[program]
            status, failed = self.run_tests(programs[program], only, besides, shared, seconds)
            if status != 0:
                return "timeout" if status == "timeout" else "killed", f"{program}: {failed or status}"
        return "survived", ""

    def rounds(self, mutant):
        """Which tests are asked, one after the other: program, filter, what is left out of it."""
        library = LIBRARIES[mutant.library]
        first = library.programs[0]
        own = suites_of(self.root, mutant.file)
        yield from [(first, own, self.slow[first])] if own else []
        for program in self.programs(library):
            yield program, "*", self.slow[program]
        for program in self.programs(library):
            if self.slow[program] and not self.hasty:
                yield program, self.slow[program], ""


def times_of(report):
    """How many seconds each test of a report of GoogleTest took."""
    return {f"{test['classname']}.{test['name']}": float(test["time"].rstrip("s"))
            for suite in report["testsuites"] for test in suite["testsuite"]}


def survivors(root, log):
    """Those that survived in a log, where their lines stand now."""
    for line in log.read_text().splitlines():
        known = json.loads(line)
        if known["result"] != "survived":
            continue
        mutant = Mutant(**{field.name: known[field.name] for field in dataclasses.fields(Mutant)})
        lines = (root / mutant.file).read_text().split("\n")
        places = [number for number, text in enumerate(lines, 1) if text == mutant.before]
        if places:
            yield dataclasses.replace(mutant, line=min(places, key=lambda number: abs(number - mutant.line)))
        else:
            print(f"not there any more: {mutant}")


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
    parser.add_argument("--from", type=int, default=0, dest="skipped", help="how many of the drawn ones are left out")
    parser.add_argument("--log", type=pathlib.Path, help="a file to which a line for each mutant is added")
    parser.add_argument("--retry", type=pathlib.Path, help="the log whose survivors are tried again")
    parser.add_argument("--hasty", action="store_true", help="leave out the slow tests and the last programs")
    options = parser.parse_args()

    root = pathlib.Path(__file__).resolve().parents[2]
    libraries = options.libraries.split(",")
    chosen, total = sample(root, libraries, options.seed)
    if options.retry:
        chosen = list(survivors(root, options.retry))
    chosen = [mutant for mutant in chosen if options.only in mutant.file and mutant.library in libraries]
    chosen = chosen[options.skipped :]
    chosen = chosen[: options.count] if options.count else chosen
    judge = Judge(root, Build(options.build.resolve()), options.exclude, options.hasty)
    judge.measure({program for library in libraries for program in judge.programs(LIBRARIES[library])})
    for library in sorted({mutant.library for mutant in chosen}):
        judge.prove(library)

    results = collections.Counter()
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        pending = {pool.submit(judge.judge, mutant): mutant for mutant in chosen}
        for done in concurrent.futures.as_completed(pending):
            result, witness = done.result()
            results[result] += 1
            if result == "survived":
                print(f"survived: {pending[done]}", flush=True)
            if options.log:
                with options.log.open("a") as log:
                    row = {"result": result, "witness": witness, **dataclasses.asdict(pending[done])}
                    log.write(json.dumps(row) + "\n")
    noticed = results["killed"] + results["timeout"]
    tried = noticed + results["survived"]
    percentage = 100.0 * noticed / tried if tried else 0.0
    print(f"campaign: {tried} mutants of {total} possible (seed {options.seed}), {noticed} killed "
          f"({results['timeout']} by their time), {results['survived']} survived, "
          f"{results['does not compile']} did not compile: {percentage:.1f} %")
    return 0 if percentage >= options.least else 1


if __name__ == "__main__":
    sys.exit(main())
