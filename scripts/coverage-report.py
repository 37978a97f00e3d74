#!/usr/bin/env python3
"""Reads what `llvm-cov export` wrote and prints lines and branches by room.

    scripts/coverage-report.py [--check] EXPORT [FILE...]

Of the files or folders given the lines and branches that nothing reached are listed. --check compares with
scripts/coverage-exceptions.txt: the exit code is 1 where a room of GOALS misses its goal, a line that isn't reached
has no exception, or an exception stands for nothing that is missed. An exception excuses a line, or the branches of
a line that was reached.
"""
import argparse
import collections
import json
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
EXCEPTIONS = ROOT / "scripts" / "coverage-exceptions.txt"
ROOMS = ["stats", "kernels", "host", "models", "readers", "engine", "capi", "cli"]
# Rooms whose every line is reached or excepted, and the share of their branches that has to be.
GOALS = {"stats": 0.95, "kernels": 0.95, "models": 0.95, "readers": 0.95}


def line_counts(segments):
    """How often each line with code ran, as llvm-cov shows it: the most of the regions that begin on it, and of
    the one that reaches into it."""
    counts = {}
    by_line = collections.defaultdict(list)
    for line, _, count, has_count, is_entry, is_gap in segments:
        by_line[line].append((count, has_count, is_entry, is_gap))
    wrapped = None
    for line in range(min(by_line, default=1), max(by_line, default=0) + 1):
        here = by_line.get(line, [])
        starts = [count for count, has_count, is_entry, is_gap in here if has_count and is_entry and not is_gap]
        skipped = bool(here) and not here[0][1] and here[0][2]
        if not skipped and (starts or (wrapped and wrapped[1])):
            reaching = wrapped[0] if wrapped and wrapped[1] else 0
            counts[line] = max([reaching] + starts)
        if here:
            wrapped = here[-1]
    return counts


def simple_name(demangled):
    """`Sum` of `long a::B<c>::Sum<d>(e) const`, and of a lambda inside."""
    depth, name = 0, ""
    for letter in re.sub(r"\(anonymous namespace\)|__vector\(\d+\)", "", demangled):
        if letter == "(" and depth == 0:
            break
        depth += {"<": 1, ">": -1}.get(letter, 0)
        if depth == 0 and letter != ">":
            name += letter
    name = name.split("::")[-1].split(" ")[-1]
    return "lambda" if name == "operator" else name


class File:
    """What is known of a file; headers are compiled under more than one path."""

    def __init__(self, path):
        self.path = path
        self.text = (ROOT / path).read_text().splitlines()
        self.lines = collections.Counter()
        self.branches = {}

    def add(self, data):
        # Of a line of brackets alone what it closes tells as much.
        self.lines.update({line: count for line, count in line_counts(data["segments"]).items()
                           if re.search(r"\w", self.text[line - 1])})
        for line, column, _, _, true, false, *_ in data["branches"]:
            if "if constexpr" in self.text[line - 1]:  # each instance has one branch of it
                continue
            before = self.branches.get((line, column), (0, 0))
            self.branches[line, column] = (before[0] + true, before[1] + false)

    def missed_lines(self):
        return [line for line, count in sorted(self.lines.items()) if count == 0]

    def missed_branches(self):
        """Places of conditions with the outcome that they never had."""
        return [(line, column, outcome) for (line, column), counts in sorted(self.branches.items())
                for outcome, count in zip(("true", "false"), counts) if count == 0]

    def excuse(self, line):
        """Leaves the line and the branches on it out of the counts."""
        if self.lines[line] == 0:
            del self.lines[line]
        for (at, column), counts in list(self.branches.items()):
            if at == line and 0 in counts:
                del self.branches[at, column]

    def code(self, line):
        return self.text[line - 1].strip()


def own_path(name):
    """A file's path in the project; None of others."""
    path = pathlib.Path(name).resolve()
    return path.relative_to(ROOT) if path.is_relative_to(ROOT) else None


def read_export(path):
    data = json.load(open(path))["data"][0]
    files = {}
    for entry in data["files"]:
        own = own_path(entry["filename"])
        if own:
            files.setdefault(own, File(own)).add(entry)
    return [files[path] for path in sorted(files)], Functions(data["functions"])


class Functions:
    """Which function a line belongs to."""

    def __init__(self, functions):
        names = [function["name"].split(":")[-1] for function in functions]
        plain = subprocess.run(["c++filt"], input="\n".join(names), text=True, capture_output=True,
                               check=True).stdout.splitlines()
        self.spans = collections.defaultdict(set)
        for function, name in zip(functions, plain):
            first, _, last, *_ = function["regions"][0]
            self.spans[own_path(function["filenames"][0])].add((first, last, simple_name(name)))

    def at(self, file, line):
        found = [span for span in self.spans[file.path] if span[0] <= line <= span[1]]
        named = [span for span in found if span[2] != "lambda"] or found
        return max(named)[2] if named else "?"


def read_exceptions():
    """How often each `FILE FUNCTION: CODE` stands there, which has its reason indented below."""
    exceptions = collections.Counter()
    reasons = True
    for number, text in enumerate(EXCEPTIONS.read_text().splitlines(), 1):
        if text.startswith("#") or not text.strip():
            continue
        if text[0] != " ":
            if not reasons:
                sys.exit(f"{EXCEPTIONS}:{number}: the exception above has no reason")
            exceptions[text.rstrip()] += 1
        reasons = text[0] == " "
    if not reasons:
        sys.exit(f"{EXCEPTIONS}: the last exception has no reason")
    return exceptions


def share(part, whole):
    return 1.0 if whole == 0 else part / whole


def use_exceptions(files, functions):
    """Takes out of the counts what an exception stands for; the complaints about lines that have none, and about
    exceptions that nothing needs."""
    exceptions = read_exceptions()
    complaints = []
    for file in files:
        if file.path.parts[0] not in GOALS:
            continue
        missed = set(file.missed_lines())
        for line in sorted(missed | {line for line, _, _ in file.missed_branches()}):
            key = f"{file.path} {functions.at(file, line)}: {file.code(line)}"
            if exceptions[key] > 0:
                exceptions[key] -= 1
                file.excuse(line)
            elif line in missed:
                complaints.append(f"{file.path}:{line}: not reached, and no exception: {key}")
    complaints += [f"{EXCEPTIONS.relative_to(ROOT)}: what it excuses is reached: {key}"
                   for key, left in exceptions.items() if left > 0]
    return complaints


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("export")
    parser.add_argument("--check", action="store_true")
    parser.add_argument("listed", nargs="*")
    arguments = parser.parse_args()
    files, functions = read_export(arguments.export)
    complaints = use_exceptions(files, functions) if arguments.check else []

    print(f"{'room':10} {'lines':>7} {'reached':>8}   {'branches':>8} {'reached':>8}")
    for room in ROOMS:
        own = [file for file in files if file.path.parts[0] == room]
        lines = [count for file in own for count in file.lines.values()]
        branches = [side for file in own for counts in file.branches.values() for side in counts]
        reached = share(sum(side > 0 for side in branches), len(branches))
        print(f"{room:10} {len(lines):7} {share(sum(count > 0 for count in lines), len(lines)):8.2%}   "
              f"{len(branches):8} {reached:8.2%}")
        if arguments.check and reached < GOALS.get(room, 0):
            complaints.append(f"{room}/: {reached:.2%} of the branches are reached, fewer than {GOALS[room]:.0%}")
    for file in files:
        if any(file.path == pathlib.Path(name) or pathlib.Path(name) in file.path.parents
               for name in arguments.listed):
            for line in file.missed_lines():
                print(f"{file.path}:{line}: line      {file.code(line)}")
            for line, column, outcome in file.missed_branches():
                if file.lines.get(line):  # of a line that never ran there is nothing more to say
                    print(f"{file.path}:{line}:{column}: never {outcome:5} {file.code(line)}")
    for complaint in complaints:
        print(complaint, file=sys.stderr)
    return 1 if complaints else 0


sys.exit(main())
