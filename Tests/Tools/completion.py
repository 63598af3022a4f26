#!/usr/bin/env python3
"""completion.py <zconf> <source tree> <scratch folder> bash|zsh|fish: types command lines into the shell and
compares what it completes, with the script found where an installation puts it."""

import os
import pathlib
import pty
import re
import select
import shutil
import subprocess
import sys
import termios
import time

ZCONF, SOURCE, SCRATCH = (pathlib.Path(argument).resolve() for argument in sys.argv[1:4])
SHELL = sys.argv[4]
SCRIPTS = SOURCE / "Tools/zconf/Completion"
PLACES = {"bash": ("bash-completion/completions/zconf", "zconf.bash"), "zsh": ("zsh/vendor-completions/_zconf", "_zconf"),
          "fish": ("fish/vendor_completions.d/zconf.fish", "zconf.fish")}
# Names of files, each of which is completed from its first letters.
HOSTILE = ["sp ace.mkv", "quo'te\".mkv", "dollar$(touch pwned).mkv", "tick`touch pwned`.mkv", "new\nline.mkv",
           "semi;touch pwned.mkv", "-dash.mkv", "back\\slash.mkv", "st*r.mkv", "~tilde.mkv"]


def listed(*words):
    output = subprocess.run([ZCONF, "list", *words], capture_output=True, encoding="utf-8", check=True).stdout
    return [line.split()[0] for line in output.splitlines()]


def starting(names, start):
    return {name for name in names if name.startswith(start)}


def cases():
    """Lines, and the words that can stand where they end."""
    codecs = listed("codecs")
    return {
        "zconf jo": {"job"},
        "zconf job ": {"new", "show", "check", "draw", "run", "verify", "diff"},
        "zconf job run --verif": {"--verify"},
        "zconf job run --verify ": {"quick", "full", "off"},
        "zconf job run --verify=f": {"full"},
        "zconf job run 1:2=3.json --verify ": {"quick", "full", "off"},
        "zconf job draw -f ": {"dot", "svg", "png", "pdf", "html"},
        "zconf convert a b --copy video,a": {"video,audio"},
        "zconf convert a b -p mp4-": starting(listed("presets"), "mp4-"),
        "zconf bitrate --codec CODEC_ID_H26": starting(codecs, "CODEC_ID_H26"),
        "zconf bitrate --codec h26": {name[9:].lower() for name in starting(codecs, "CODEC_ID_H26")},
        "zconf explain --container=matr": starting(listed("formats"), "matr"),
        "zconf explain YUV420P1": starting(listed("pixel-formats"), "YUV420P1"),
        "zconf list sample-formats S16": starting(listed("sample-formats"), "S16"),
        "zconf preset new --set vid": {"video."},
        "zconf preset new --set ": {"video.", "audio.", "subtitles_video.", "subtitles_text.", "container=", "metadata."},
        "zconf preset new --set video.bit": {"video.bitrate=", "video.bitrate_mode="},
        "zconf convert a b --set=video.bit": {"video.bitrate=", "video.bitrate_mode="},
        "zconf convert a b --set audio[1].lay": {"audio[1].layout="},
        "zconf convert a b --set audio[1].layout=STEREO_": {"STEREO_DOWNMIX"},
        "zconf convert a b --set=audio.layout=STEREO_": {"STEREO_DOWNMIX"},
        "zconf job new --set container=m4": {"m4v", "m4a"},
        "zconf job new --set video.bitrate=": set(),
        "zconf help job dr": {"draw"},
        "zconf help li": {"list"},
        "zconf dance ": set(),
        "zconf probe $(touch pwned) --js": {"--json"},
        "zconf probe 'a b' \"$(touch pwned)\" --js": {"--json"},
    }


class Terminal:
    """A shell at a terminal, whose line is written to a file by Control-X D, and replaced by all completions by
    Control-X A."""

    def __init__(self, arguments, folder, environment, setup):
        self.record = folder.parent / "lines"
        self.record.write_text("")
        self.count = 0
        self.master, slave = pty.openpty()
        termios.tcsetwinsize(slave, (50, 2000))
        self.process = subprocess.Popen(arguments, stdin=slave, stdout=slave, stderr=slave, cwd=folder,
                                        env=environment | {"RECORD": str(self.record)}, start_new_session=True)
        os.close(slave)
        (folder.parent / "setup").write_text(setup)
        self.type(f"source {folder.parent}/setup\r")
        self.line()

    def type(self, text):
        os.write(self.master, text.encode())

    def line(self):
        """The line that the shell shows then."""
        self.type("\x18d")
        self.count += 1
        end = time.monotonic() + 20
        while time.monotonic() < end:
            if select.select([self.master], [], [], 0.002)[0]:
                os.read(self.master, 65536)
            lines = self.record.read_bytes().split(b"\0")
            if len(lines) > self.count:
                return lines[self.count - 1].decode()
        sys.exit(f"{SHELL} does not answer")

    def completed(self, line):
        self.type(line + "\t")
        return self.line()

    def candidates(self, line):
        self.type(line + "\x18a")
        return self.line()

    def close(self):
        self.process.kill()
        self.process.wait()


BASH = r"""
PS1= HISTFILE=
source /usr/share/bash-completion/bash_completion
record() { printf '%s\0' "$READLINE_LINE" >>"$RECORD"; READLINE_LINE= READLINE_POINT=0; }
bind -x '"\C-xd": record'
bind '"\C-xa": insert-completions'
bind 'set completion-query-items 0'
bind 'set bell-style none'
"""

ZSH = r"""
PS1= HISTFILE=
fpath=("$PLACE" $fpath)
autoload -Uz compinit && compinit -D -u
record() { print -rn -- "$BUFFER"$'\0' >>"$RECORD"; BUFFER= }
zle -N record
bindkey '^Xd' record
zstyle ':completion:all-matches:*' completer _all_matches _complete
zstyle ':completion:all-matches:*' insert true
zle -C all-matches complete-word _generic
bindkey '^Xa' all-matches
unsetopt list_beep auto_list auto_menu
LISTMAX=10000
"""

FISH = r"""
set fish_complete_path $PLACE $fish_complete_path
for line in (string split0 < $LINES_FILE)
    complete --do-complete $line
    printf '\0'
end
"""


class TypedShell:
    """bash and zsh."""

    def __init__(self, folder, environment):
        arguments = ["bash", "--norc", "--noprofile", "-i"] if SHELL == "bash" else ["zsh", "-f", "-i"]
        self.terminal = Terminal(arguments, folder, environment, BASH if SHELL == "bash" else ZSH)

    def words(self, lines):
        """What can stand at the end of each line."""
        for line in lines:
            # Zsh quotes what stands before as well.
            text = re.sub(r"\\(.)", r"\1", self.terminal.candidates(line))
            start = line[:max(line.rfind(" "), line.rfind("=")) + 1]
            assert text.startswith(start), f"{line} became {text}"
            kept = start.split(" ")[-1]
            found = {word.removeprefix(kept) for word in text[len(start):].split()}
            # The word stays when nothing fits.
            yield set() if text == line else found

    def file(self, line):
        """The name that the shell makes of the last word, as a program is given it."""
        completed = self.terminal.completed(line)
        self.terminal.type("printf '%s\\0' " + completed[len("zconf probe "):].replace("\n", "\x16\n")
                           + f"> {SCRATCH}/name\r")
        self.terminal.line()
        return (SCRATCH / "name").read_bytes().decode()[:-1]

    def close(self):
        self.terminal.close()


class Fish:
    def __init__(self, folder, environment):
        self.folder, self.environment = folder, environment

    def complete(self, lines):
        (SCRATCH / "lines").write_bytes("\0".join(lines).encode())
        result = subprocess.run(["fish", "--no-config", "-c", FISH], cwd=self.folder, check=True, capture_output=True,
                                env=self.environment | {"LINES_FILE": str(SCRATCH / "lines")}, encoding="utf-8")
        assert not result.stderr, result.stderr
        return result.stdout.split("\0")[:len(lines)]

    def words(self, lines):
        for line, answer in zip(lines, self.complete(lines)):
            prefix = line[line.rfind(" ") + 1:line.rfind("=") + 1]
            yield {text.split("\t")[0].removeprefix(prefix) for text in answer.splitlines()}

    def file(self, line):
        return self.complete([line])[0].removesuffix("\n")

    def close(self):
        pass


def main():
    shutil.rmtree(SCRATCH, ignore_errors=True)
    folder = SCRATCH / "folder"
    folder.mkdir(parents=True)
    (SCRATCH / "bin").mkdir()
    (SCRATCH / "bin/zconf").symlink_to(ZCONF)
    place, script = PLACES[SHELL]
    (SCRATCH / "share" / place).parent.mkdir(parents=True)
    shutil.copy(SCRIPTS / script, SCRATCH / "share" / place)
    for name in HOSTILE:
        (folder / name).touch()
    environment = {"PATH": f"{SCRATCH}/bin:/usr/bin:/bin", "HOME": str(SCRATCH), "TERM": "dumb", "LC_ALL": "C.UTF-8",
                   "XDG_DATA_DIRS": f"{SCRATCH}/share:/usr/share", "PLACE": str((SCRATCH / "share" / place).parent)}
    shell = Fish(folder, environment) if SHELL == "fish" else TypedShell(folder, environment)
    faults = []
    expected = cases()
    for (line, words), found in zip(expected.items(), shell.words(list(expected))):
        if found != words:
            faults.append(f"{line!r}: expected {sorted(words)}, found {sorted(found)}")
    for name in HOSTILE:
        # "-" begins an option, and "~" a user's folder.
        start = "./" + name[0] if name[0] in "-~" else name[0:2]
        found = shell.file("zconf probe " + start)
        if found.removeprefix("./") != name:
            faults.append(f"{start!r}: expected {name!r}, found {found!r}")
    # What is typed on has no blank behind it; fish sees to that by itself.
    for word in ["video.", "container="] if SHELL != "fish" else []:
        found = shell.terminal.completed("zconf preset new --set " + word[:3])
        if found != "zconf preset new --set " + word:
            faults.append(f"{word[:3]!r} became {found!r}")
    shell.close()
    if (folder / "pwned").exists():
        faults.append("a name was evaluated")
    print(*faults, sep="\n")
    return 1 if faults else 0


sys.exit(main())
