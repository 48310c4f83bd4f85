#!/usr/bin/env python3
"""Counts how many small faults the tests catch: plants one at a time in a copy of the tree under
build/mutants and runs the tests that the fault can reach.

    scripts/mutants.py                            100 faults in the newest commit
    scripts/mutants.py --tree COMMIT              in another commit, with that commit's tests
    scripts/mutants.py --compare A.jsonl B.jsonl  what one run caught and the other did not

Lines are drawn by a hash of the seed, the file's name and the line's text, so that code which two
commits share gets the same faults in both. A run that was stopped goes on where it was.
"""

import argparse
import hashlib
import io
import json
import os
import re
import resource
import shlex
import shutil
import subprocess
import sys
import tarfile
import time
from collections import Counter, defaultdict
from pathlib import Path

REPO = Path(__file__).resolve().parent.parent

# Folder: its part of the faults, and the folders of tests that its code reaches, nearest first.
SHARES = {
    "perflib/src": (0.45, ["perflib", "host", "perf", "cli"]),
    "perf": (0.15, ["perf", "cli"]),
    "zmo/src": (0.40, ["zmo", "perf", "cli"]),
}
# What the tests of a folder run: when none of it differs, they cannot see the fault.
PROGRAMS = {"perflib": ["tests/perflib_tests"], "host": ["tests/programs/host"],
            "cli": ["pscv", "tests/programs/host", "lib/*.so"], "perf": ["tests/module_tests", "lib/*.so"],
            "zmo": ["tests/zmo_tests", "lib/*.so"]}
TEST_CPU_SECONDS = 30  # ten times the slowest test
COMPILER_CPU_SECONDS = 600
FOLDER_SECONDS = 1800
CAUGHT, SURVIVED = "caught", "survived"
REJECTED, SAME_CODE = "does not compile", "same machine code"  # these two do not count

# ---- Faults

NO_CODE = (
    re.compile(r"""//[^\n]*|/\*.*?\*/|R"(\w*)\(.*?\)\1"|"(?:\\.|[^"\\\n])*"|"""
               r"""(?<![0-9A-Fa-f])'(?:\\.|[^'\\\n])+'""", re.S),
    re.compile(r"^[ \t]*#(?:[^\n]*\\\n)*[^\n]*", re.M),
    re.compile(r"\bstatic_assert\b[^;]*;"),
    re.compile(r"^\s*(?:template|using|typedef|friend|namespace)\b[^\n]*", re.M),
)


def code_lines(text):
    """The lines of a source, columns kept, with blanks for whatever is not code."""
    for pattern in NO_CODE:
        text = pattern.sub(lambda m: re.sub(r"[^\n]", " ", m.group()), text)
    return text.split("\n")


def replaced(pairs):
    table = dict(pair.split() for pair in pairs.split(","))
    return lambda m, line: [table[m.group()]]


def condition(m, line):
    """The condition of an if or while that is whole on the line, turned round and forced."""
    head, rest = line[:m.end()], line[m.end():]
    for c in (rest[:end.start()] for end in re.finditer(r"\)", rest)):
        if c.count("(") == c.count(")"):
            forms = [f"!({c})", f"({c}) && false"] + [f"({c}) || true"] * (m.group(1) != "while")
            return [head + form + rest[len(c):] for form in forms]
    return []


def swapped(m, line):
    name, first, second = m.groups()
    symmetric = first == second or name in ("min", "max", "swap", "anyNull")
    return [] if symmetric else [f"{name}({second}, {first}"]


def removed(m, line):
    return ["{}"] if m.group().count("(") == m.group().count(")") else []


# Binary operators have a blank on both sides in this tree, template brackets and references none.
BINARY = r"(?<=[\w)\]] )(?:%s)(?= |$)"
# What is looked for, and what may stand there instead (`condition` gives whole lines).
OPERATORS = {
    "relation": (BINARY % "<=|>=|==|!=|<|>", replaced("< <=,<= <,> >=,>= >,== !=,!= ==")),
    "arithmetic": (BINARY % r"[-+*/%&|]|[-+*/]=|<<|>>",
                   replaced("+ -,- +,* /,/ *,% *,& |,| &,+= -=,-= +=,*= /=,/= *=,<< >>,>> <<")),
    "step": (r"(?<!; )(?:\+\+|--)", replaced("++ --,-- ++")),
    "constant": (r"(?<![\w.'])\d+(?:\.\d+)?F?(?![\w.'])",
                 lambda m, line: [f"({m.group()} + 1)", f"({m.group()} - 1)"]),
    "negation": (r"!(?=[\w(])", lambda m, line: [""]),
    "truth": (r"\b(?:true|false)\b", replaced("true false,false true")),
    "connective": (BINARY % r"&&|\|\|", replaced("&& ||,|| &&")),
    "condition": (r"\b(if|if constexpr|while) \(", condition),
    "statement": (r"^\s*(?:[\w:.>()\[\]*-]+ (?:[-+*/%&|^]|<<|>>)?= .*|[\w:.>\[\]-]+\(.*\)|(?:\+\+|--)\S+);$",
                  removed),
    "return": (r"\breturn (?!true;|false;|0;|nullptr;|\{\};)\S.*;", lambda m, line: ["return {};"]),
    "arguments": (r"\b(\w+)\(([\w.>\[\]+*&-]+), ([\w.>\[\]+*&-]+)(?=[,)])", swapped),
}
STATEMENT_BEGINS_AFTER = re.compile(r"(?:[;{}:)]|\belse|\bdo)\s*$")


def faults_of_line(line, code, before):
    """All faults of one line, by operator: the line as it becomes."""
    faults = defaultdict(list)
    for name, (pattern, forms) in OPERATORS.items():
        if name == "statement" and not STATEMENT_BEGINS_AFTER.search(before):
            continue
        for m in re.finditer(pattern, code):
            for form in forms(m, line):
                faults[name].append(form if name == "condition" else line[:m.start()] + form + line[m.end():])
    return faults


def digest(*parts):
    return hashlib.sha256("\0".join(map(str, parts)).encode()).hexdigest()


def faults_of_file(root, share, path, seed):
    """One fault a line: its operator and place are drawn by the line's own hash."""
    text = path.read_text()
    seen, before = Counter(), ""
    for number, (line, code) in enumerate(zip(text.split("\n"), code_lines(text)), 1):
        faults = faults_of_line(line, code, before)
        before = code if code.strip() else before
        if not faults:
            continue
        seen[line.strip()] += 1
        key = digest(seed, share, path.name, line.strip(), seen[line.strip()])
        operator = min(faults, key=lambda name: digest(key, name))
        new = min(faults[operator], key=lambda form: digest(key, form.strip()))
        yield {"key": key[:16], "share": share, "file": str(path.relative_to(root)), "line": number,
               "operator": operator, "old": line, "new": new}


def draw(root, seed):
    """The faults of each share, in the order in which they are tried."""
    files = {share: [p for p in (root / share).rglob("*") if p.suffix in (".h", ".cpp")] for share in SHARES}
    return {share: sorted((f for p in files[share] for f in faults_of_file(root, share, p, seed)),
                          key=lambda f: (f["key"], f["file"])) for share in SHARES}


# ---- The copy of the tree


def limits(seconds):
    """For a process and what it starts: a fault may calculate, allocate or write without end."""
    for kind, most in ((resource.RLIMIT_CPU, seconds), (resource.RLIMIT_CORE, 0),
                       (resource.RLIMIT_AS, 16 << 30), (resource.RLIMIT_FSIZE, 2 << 30)):
        resource.setrlimit(kind, (most, most))


class Tree:
    def __init__(self, commit, options):
        self.root, self.jobs = options.work.resolve() / commit[:9], options.jobs
        self.build_under = shlex.split(options.build_under)
        self.extract(commit)
        launchers = {}
        if shutil.which("ccache"):  # makes it cheap to come back from a fault in a header
            launchers = {f"CMAKE_{language}_COMPILER_LAUNCHER": "ccache" for language in ("C", "CXX")}
        subprocess.run(["cmake", "--preset", "release", "-DPSCV_TESTS=ON", "-DPSCV_BENCH=OFF"], cwd=self.root,
                       env={**launchers, **os.environ}, check=True, stdout=subprocess.DEVNULL)
        self.clean, self.left_out = {}, {folder: [] for folder in PROGRAMS}
        # An older commit has tests in folders in which a newer one has a program alone.
        folders = [folder for folder in PROGRAMS if any((self.root / "tests" / folder).glob("*_test.cpp"))]
        if self.build(*folders):
            sys.exit(f"mutants.py: the tree does not build without a fault, see {self.root}/build/failed.log")
        for folder in folders:
            self.clean[folder] = self.programs(folder)
            while wrong := self.failing(folder, "--no-tests=error"):
                print(f"Left out, since it fails without a fault: {wrong}", flush=True)
                self.left_out[folder].append(re.sub(r"\W", ".", wrong.split()[1]) + "( |$)")

    def extract(self, commit):
        """Writes only what differs, so that little is built anew."""
        archive = subprocess.run(["git", "archive", commit], cwd=REPO, check=True, stdout=subprocess.PIPE)
        with tarfile.open(fileobj=io.BytesIO(archive.stdout)) as tar:
            for member in filter(tarfile.TarInfo.isfile, tar):
                path, data = self.root / member.name, tar.extractfile(member).read()
                if not path.exists() or path.read_bytes() != data:
                    path.parent.mkdir(parents=True, exist_ok=True)
                    path.write_bytes(data)

    def build(self, *folders):
        """None, or the verdict and its reason when the build ends the matter."""
        command = [*self.build_under, "cmake", "--build", "build/release", f"-j{self.jobs}",
                   "--target", *(f"tests/{folder}/all" for folder in folders)]
        done = subprocess.run(command, cwd=self.root, text=True, errors="replace", stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, preexec_fn=lambda: limits(COMPILER_CPU_SECONDS))
        if done.returncode == 0:
            return None
        (self.root / "build/failed.log").write_text(done.stdout)
        refused = re.search(r"\berror: |undefined reference|ld returned", done.stdout)
        return (REJECTED, "") if refused else (CAUGHT, "the build, which checks objects and lists tests")

    def programs(self, folder):
        files = sorted(p for name in PROGRAMS[folder] for p in (self.root / "build/release").glob(name))
        return [hashlib.sha256(p.read_bytes()).hexdigest() for p in files]

    def namesakes(self, folder, stem):
        """A pattern for the tests that are named as the source is; they run before the others."""
        stem, suites = stem.removesuffix("_kernels"), set()
        for path in (self.root / "tests" / folder).glob("*_test.cpp"):
            name = path.stem.removesuffix("_test")
            if name.startswith(stem) or stem.startswith(name):
                suites.update(re.findall(r"^TEST(?:_[FP])?\((\w+),", path.read_text(), re.M))
        return "|".join([*(rf"(^|/){suite}\." for suite in sorted(suites)), rf"/{stem}( |$)"])

    def failing(self, folder, *selection, but="^$"):
        """The first test that fails twice, or None."""
        command = ["ctest", "--test-dir", f"build/release/tests/{folder}", f"-j{self.jobs}",
                   "--stop-on-failure", "--repeat", "until-pass:2",
                   *selection, "-E", "|".join([but, *self.left_out[folder]])]
        process = subprocess.Popen(command, cwd=self.root, text=True, errors="replace", start_new_session=True,
                                   stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                   preexec_fn=lambda: limits(TEST_CPU_SECONDS))
        try:
            output, _ = process.communicate(timeout=FOLDER_SECONDS)
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, 9)
            process.communicate()
            return f"tests/{folder}: does not end"
        failed = re.search(r"^The following tests FAILED:\n\s*\d+ - (.*)", output, re.M)
        reason = failed.group(1).strip() if failed else "cannot run"
        return f"tests/{folder}: {reason}" if process.returncode else None

    def judge(self, fault):
        """Plants the fault and answers the verdict and what caught it."""
        path = self.root / fault["file"]
        text = path.read_text()
        lines = text.split("\n")
        lines[fault["line"] - 1] = fault["new"]
        path.write_text("\n".join(lines))
        try:
            return self.verdict(fault)
        finally:
            path.write_text(text)

    def verdict(self, fault):
        differs = False
        for folder in SHARES[fault["share"]][1]:
            if folder not in self.clean:
                continue
            if ended := self.build(folder):
                return ended
            if self.programs(folder) == self.clean[folder]:
                continue
            differs = True
            names = self.namesakes(folder, Path(fault["file"]).stem)
            if caught := self.failing(folder, "-R", names) or self.failing(folder, but=names):
                return CAUGHT, caught
        return (SURVIVED if differs else SAME_CODE), ""


# ---- Results


def read_results(path):
    head, *results = map(json.loads, path.read_text().splitlines())
    return head, results


def counts(results):
    verdicts = Counter(r["verdict"] for r in results)
    return verdicts[CAUGHT], verdicts[CAUGHT] + verdicts[SURVIVED]


def title(r):
    return f"{r['file']}:{r['line']}  {r['operator']}"


def change(r):
    return f"    - {r['old'].strip()}\n    + {r['new'].strip()}"


def report(head, results):
    """Totals, survivors with their change for a person to judge, then every fault."""
    yield f"Faults in {head['tree']}, seed {head['seed']}"
    for share in [*SHARES, ""]:
        yield "  {:<12} {:>3} of {:>3} caught".format(
            share or "all", *counts([r for r in results if share in ("", r["share"])]))
    verdicts = Counter(r["verdict"] for r in results)
    yield f"  not counted: {verdicts[REJECTED]} did not compile, {verdicts[SAME_CODE]} made the same machine code"
    by = Counter(re.split("[:,]", r["by"])[0] for r in results if r["verdict"] == CAUGHT)
    yield "  caught by " + ", ".join(f"{name}: {number}" for name, number in by.most_common())
    yield "\nSurvivors (one that changes no behaviour is no fault: judge)"
    yield from (f"{title(r)}\n{change(r)}" for r in results if r["verdict"] == SURVIVED)
    yield "\nAll"
    yield from (f"{title(r)}: {r['verdict']} {r['by']}" for r in results)


def compare(paths):
    first, second = (read_results(path)[1] for path in paths)
    for path, results in zip(paths, (first, second)):
        yield "{}: {} of {} caught".format(path, *counts(results))
    other = {r["key"]: r for r in second}
    both = [pair for r in first if counts(pair := [r, other.get(r["key"], {"verdict": ""})])[1] == 2]
    yield f"{len(both)} faults are counted in both; those with another verdict:"
    for old, new in both:
        if old["verdict"] != new["verdict"]:
            yield f"{title(new)}: {old['verdict']} {old['by']} -> {new['verdict']} {new['by']}\n{change(new)}"


# ---- The run


def next_fault(drawn, results, count):
    """The next one of the share that lags most; None when each has its number."""
    tried = {r["key"] for r in results}
    missing = {share: round(count * part) - counts([r for r in results if r["share"] == share])[1]
               for share, (part, _) in SHARES.items()}
    share = max(missing, key=lambda s: missing[s] / SHARES[s][0])
    return next((f for f in drawn[share] if f["key"] not in tried), None) if missing[share] > 0 else None


def run(options):
    commit = subprocess.run(["git", "rev-parse", f"{options.tree}^{{commit}}"], cwd=REPO, check=True, text=True,
                            stdout=subprocess.PIPE).stdout.strip()
    head, results = {"tree": commit, "seed": options.seed}, []
    path = options.results or options.work / f"{commit[:9]}.jsonl"
    path.parent.mkdir(parents=True, exist_ok=True)
    if path.exists():
        found, results = read_results(path)
        if found != head:
            sys.exit(f"mutants.py: {path} holds a run of {found}, not of {head}")
    else:
        path.write_text(json.dumps(head) + "\n")
    print(f"Seed {options.seed}, commit {commit}; results: {path} and {path.with_suffix('.txt')}", flush=True)
    tree = Tree(commit, options)
    drawn = draw(tree.root, options.seed)
    while fault := next_fault(drawn, results, options.count):
        start = time.monotonic()
        fault["verdict"], fault["by"] = tree.judge(fault)
        results.append(fault)
        with path.open("a") as stream:
            stream.write(json.dumps(fault) + "\n")
        path.with_suffix(".txt").write_text("\n".join(report(head, results)) + "\n")
        print("{}/{} caught; {}: {} {} ({:.0f} s)".format(
            *counts(results), title(fault), fault["verdict"], fault["by"], time.monotonic() - start), flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--tree", default="HEAD", metavar="COMMIT")
    parser.add_argument("--count", type=int, default=100)
    parser.add_argument("--seed", default="1")
    parser.add_argument("--work", type=Path, default=REPO / "build/mutants", help="folder of the copies")
    parser.add_argument("--results", type=Path, metavar="FILE.jsonl", help="default: beside the copy")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--build-under", default="", metavar="COMMAND", help="runs each build, as `flock FILE` does")
    parser.add_argument("--compare", nargs=2, type=Path, metavar="FILE.jsonl")
    options = parser.parse_args()
    if options.compare:
        print("\n".join(compare(options.compare)))
    else:
        run(options)


if __name__ == "__main__":
    main()
