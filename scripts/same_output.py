#!/usr/bin/env python3
"""Holds what two builds of pscv print and write against each other.

usage: scripts/same_output.py BEFORE AFTER      (build folders, such as build/release)

Runs the same commands with both: every key and its help, lists of functions, refused words,
option files and ini-files, dialogues, the course of a measurement, and the whole catalogue.
Console, listing, table, summary and other files must be the same byte for byte once what
differs between any two runs is masked: clocks, times, dates, addresses and the folders.
Status 0 when nothing differs, 1 when something does.
"""
import difflib
import os
import pathlib
import re
import subprocess
import sys
import tempfile

QUICK = ["-dMethod=Manual", "-dNumLoops=1"]
SMALL = ["-B", "-f=zmoiCanny_16s8u_C1R", "-dImageSize=32x32", "-dnumFigures=2x2"] + QUICK
FILES = ["-olist", "-rtable", "-usum"]
KEYS = "BAdiIPoOLJrRqQuUgnplfTmktFYHWSCsev@hcj?"

# A command is its keys, what it reads from the console, and files that exist before.
COMMANDS = [(["-h"],), (["-?"],), (["-hh"],), (["-??"],), (["-v"],), (["--help"],), (["--version"],),
            (["-e"],), (["-e+"],), (["-e-"],)]
COMMANDS += [([f"-?{key}"],) for key in KEYS]
COMMANDS += [(SMALL + [f"-{key}{argument}"],) for key in KEYS.replace("h", "").replace("?", "")
             for argument in ("", "x", "+", "-", "=1")]
COMMANDS += [
    (["foo", "-Xy", "--nothing", "-e"],),
    (SMALL + FILES + ["-LE"],), (SMALL + FILES + ["-LW"],), (SMALL + FILES + ["-LP"],),
    (SMALL + FILES + ["-LI"],), (SMALL + FILES + ["-LT"],), (SMALL + FILES + ["-LM"],),
    (SMALL + FILES + ["-LD"],),
    (SMALL + FILES + ["-LP", "-C"],), (SMALL + FILES + ["-LP", "-S"],),
    (SMALL + FILES + ["-LP", "-TSSE42"],), (SMALL + FILES + ["-LP", "-H"],),
    (SMALL + FILES + ["-LP", "-qnames"],), (SMALL + FILES + ["-LP", "-Q"],),
    (SMALL + FILES + ["-LP", "-Iwritten"],),
    (SMALL[:2] + FILES + ["-LP", "-iread", "-P"], "",
     {"read.ini": "Method = Manual\nNumLoops = 1\n[zmoiCanny_16s8u_C1R]\nImageSize = 32x32;0x0\n"}),
    (["-@keys"], "", {"keys": "-B -fCanny -LP -dMethod=Manual\n-dNumLoops=2 -dImageSize=16x16\n"}),
    (["-@missing"],),
    (SMALL + FILES + ["-LP", "-dImageSize=32x32;0x0;axb"],),
    (["-fCanny_16s", "-AM", "-LP"], "Manual\n3\n\n\n32x32\n2x2\n\n\n\n\n\n\n"),
    (["-fCanny_16s", "-LP"], "\n" * 40),
    (["-B", "-LP"] + FILES + QUICK,),
]

MASKS = [(re.compile(pattern), word) for pattern, word in [
    (r"(?<=[ =(])[0-9.e+-]+(?= clocks per )", "CLOCKS"),
    (r"\b\d\d:\d\d:\d\d\b", "HH:MM:SS"),
    (r"\b(Sun|Mon|Tue|Wed|Thu|Fri|Sat) [A-Z][a-z]{2} [ \d]\d HH:MM:SS \d{4}", "DATE"),
    (r"\b[A-Z][a-z]{2} [ \d]\d \d{4}\b", "DAY"),
    (r"0x[0-9a-f]{6,}", "ADDRESS"),
    (r"\bnLps=\d+", "nLps=N"),
    (r"'[^']*' +\| *$", "'"),
]]
# The levels beyond the results write counts and clocks of their own in many forms.
NUMBER = re.compile(r"(?<![A-Za-z_x])[0-9]+(\.[0-9]+)?(e[+-]?\d+)?")


def mask_table(text):
    """Replaces what was measured in the rows of a performance table, found by its title."""
    lines, places = [], []
    for line in text.split("\n"):
        cells = line.split(",")
        if cells[0] in ("funcBase", "function"):
            places = [i for i, name in enumerate(cells)
                      if name in ("Comment", "Clocks", "Time (usec)", "MFlops", "Time (sec.)")]
        elif places and len(cells) > places[-1]:
            for i in places:
                cells[i] = NUMBER.sub("#", cells[i])
        lines.append(",".join(cells))
    return "\n".join(lines)


def mask(text, folders, all_numbers):
    for folder, word in folders:
        text = text.replace(folder, word)
    # A box is filled up behind what is masked: its right edge moves with it.
    text = re.sub(r" *\|$", "|", text, flags=re.M)
    for pattern, word in MASKS:
        text = pattern.sub(word, text)
    if text.startswith(("Computer,", "funcBase,")):
        text = mask_table(text)
    text = re.sub(r"(PP_REG[A-Z_]*),[^,]*,", r"\1,#,", text)
    return NUMBER.sub("#", text) if all_numbers else text


def run(build, keys, typed="", files=None):
    """What one command prints and writes: a text for each name, masked."""
    with tempfile.TemporaryDirectory() as folder:
        for name, text in (files or {}).items():
            pathlib.Path(folder, name).write_text(text)
        program = str(pathlib.Path(build, "pscv").resolve())
        done = subprocess.run([program] + keys + [f"-l{folder}", f"-p{folder}"], input=typed.encode(),
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, cwd=folder,
                              env={**os.environ, "PSCV_FREQ_MHZ": "2600"}, timeout=600)
        folders = [(str(pathlib.Path(build).resolve()), "BUILD"), (folder, "FOLDER")]
        course = bool({"-LI", "-LT", "-LM", "-LD"} & set(keys))
        texts = {"console": done.stdout.decode(errors="replace"), "status": str(done.returncode)}
        for path in pathlib.Path(folder).iterdir():
            texts[path.name] = path.read_text(errors="replace")
        return {name: mask(text, folders, course) for name, text in texts.items()}


def main():
    if len(sys.argv) != 3 or not all(pathlib.Path(b, "pscv").is_file() for b in sys.argv[1:]):
        sys.exit(__doc__)
    differing = 0
    for command in COMMANDS:
        before, after = (run(build, *command) for build in sys.argv[1:])
        for name in sorted(before.keys() | after.keys()):
            one, two = (texts.get(name, "(no such file)\n") for texts in (before, after))
            if one == two:
                continue
            differing += 1
            print(f"{' '.join(command[0])}: {name} differs")
            shown = list(difflib.unified_diff(one.split("\n"), two.split("\n"), "before", "after",
                                              lineterm="", n=1))
            print("\n".join(line[:200] for line in shown[:40]))
    print(f"{len(COMMANDS)} commands, {differing} texts differ")
    sys.exit(1 if differing else 0)


if __name__ == "__main__":
    main()
