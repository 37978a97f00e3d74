#!/usr/bin/python3
"""Mutates one expression at a time and sees whether a test notices.

    scripts/mutate.py [--rooms ROOM...] [--count N] [--seed TEXT] [--only FILE...] [--jobs N]
                      [--again | --survivors]

A build for each mutant would take days. So a source is compiled once with all of its mutants: each mutated expression
becomes a function of tests/mutants/mutants.h, which asks for the number that the environment names. The compile
commands and everything that isn't mutated are those of build/coverage. Each test program runs once to record which
mutants each test reaches, and then once or twice a mutant, with the tests that reach it.

Which mutants are drawn depends on the seed and on their own code alone, so that a change elsewhere draws the same.
--again judges what build/mutants holds once more, of the rooms that it was made for: after a change of the tests.
--survivors does so with those alone that weren't killed and aren't listed: after tests were added.

The exit code is 1 where fewer than 90 of a hundred are killed, or one that survives isn't in
tests/mutants/survivors.txt with its reason.
"""
import argparse
import collections
import concurrent.futures
import hashlib
import itertools
import json
import os
import pathlib
import pickle
import re
import resource
import shlex
import shutil
import subprocess
import sys
import time

from clang.cindex import CursorKind, Index, TypeKind

ROOT = pathlib.Path(__file__).resolve().parent.parent
BUILD = ROOT / "build" / "coverage"
MADE = ROOT / "build" / "mutants"
TREE = MADE / "tree"
MUTANTS = ROOT / "tests" / "mutants"
GOAL = 0.90
ALIVE = ("survived", "not reached")
# Of the runs: nobody waits for them.
NICENESS = int(os.environ.get("VELSCORE_NICENESS", "19"))
# The test programs that judge a room's mutants. A program is linked with the mutants of all rooms that it judges.
JUDGES = {
    "kernels": ["kernels_tests", "models_tests"],
    "models": ["models_tests"],
    "readers": ["readers_tests"],
    "engine": ["engine_tests"],
}
# How many mutants of a room are drawn. What computes is asked more closely than its share of the code.
DRAWN = {"kernels": 160, "models": 500, "readers": 140, "engine": 700}
# Test sources that hold code of the room's headers, compiled anew.
TEMPLATE_TESTS = {"kernels_tests": "tests/kernels/", "models_tests": "tests/models/"}

BINARY = {"<": ("Less", ["<=", ">="]), "<=": ("LessEqual", ["<", ">"]), ">": ("Greater", [">=", "<="]),
          ">=": ("GreaterEqual", [">", "<"]), "==": ("Equal", ["!="]), "!=": ("Unequal", ["=="]),
          "+": ("Plus", ["-"]), "-": ("Minus", ["+"]), "*": ("Times", ["/"]), "/": ("Over", ["*"]),
          "%": ("Modulo", ["*"])}
NUMBERS = {TypeKind.INT, TypeKind.UINT, TypeKind.LONG, TypeKind.ULONG, TypeKind.LONGLONG, TypeKind.ULONGLONG,
           TypeKind.SHORT, TypeKind.USHORT, TypeKind.DOUBLE, TypeKind.FLOAT, TypeKind.LONGDOUBLE, TypeKind.CHAR_S,
           TypeKind.UCHAR, TypeKind.SCHAR, TypeKind.CHAR_U}
# Of a template: what the instances have.
OPEN = {TypeKind.DEPENDENT, TypeKind.UNEXPOSED}
VECTORS = {TypeKind.VECTOR}
COMPARED = NUMBERS | OPEN | VECTORS | {TypeKind.BOOL, TypeKind.ENUM, TypeKind.POINTER, TypeKind.NULLPTR}

# Of the compile commands: warnings, and what counts lines.
IGNORED = ("-W", "-fcoverage", "-fprofile")

Mutant = collections.namedtuple("Mutant", "file line function code change")


class Site:
    """A place with its edits and its mutants, which have consecutive numbers from `first` on."""

    def __init__(self, file, offset, line, function, code, edits, changes):
        self.file, self.offset, self.line, self.function = file, offset, line, function
        self.code, self.edits, self.changes = code, edits, changes
        self.first = 0

    def mutants(self):
        return [Mutant(self.file, self.line, self.function, self.code, change) for change in self.changes]


def kind_of(cursor):
    """Of its type."""
    return cursor.type.get_canonical().kind


def node(cursor):
    """The kind of a cursor; None of one that Python's table of them doesn't have."""
    try:
        return cursor.kind
    except ValueError:
        return None


class Walk:
    """Finds the sites of a translation unit that lie in the wanted files."""

    def __init__(self, unit, wanted, seen):
        self.seen, self.sites = seen, []
        names = {}
        tops = []
        for cursor in unit.cursor.get_children():
            file = cursor.location.file
            name = file and file.name
            if name not in names:
                names[name] = name and os.path.realpath(name)
            if names[name] in wanted:
                tops.append((names[name], cursor))
        self.names = names
        for self.name, cursor in tops:
            self.file, self.text = wanted[self.name]
            self.function = ""
            self.visit(cursor, None, False)

    def visit(self, cursor, parent, inside):
        """inside: in the body of a function that runs, where an expression can be mutated."""
        kind = node(cursor)
        if kind in (CursorKind.STATIC_ASSERT, CursorKind.ENUM_DECL, CursorKind.PARM_DECL, CursorKind.TYPE_REF,
                    CursorKind.TEMPLATE_REF, CursorKind.DECL_REF_EXPR):
            return
        outer = self.function
        if kind in (CursorKind.FUNCTION_DECL, CursorKind.CXX_METHOD, CursorKind.FUNCTION_TEMPLATE,
                    CursorKind.CONSTRUCTOR, CursorKind.DESTRUCTOR, CursorKind.CONVERSION_FUNCTION):
            if self.says_constexpr(cursor):
                return
            self.function = cursor.spelling.split("<")[0]
        if kind == CursorKind.VAR_DECL and self.says_constexpr(cursor):
            return
        children = list(cursor.get_children())
        if kind == CursorKind.IF_STMT and self.says_if_constexpr(cursor):
            children = children[1:]
        elif inside:
            self.mutate(cursor, parent)
        if kind == CursorKind.CASE_STMT:
            children = children[1:]
        if kind == CursorKind.VAR_DECL and cursor.type.kind == TypeKind.CONSTANTARRAY:
            children = [child for child in children if node(child) != CursorKind.INTEGER_LITERAL]
        for child in children:
            within = inside or node(child) == CursorKind.COMPOUND_STMT
            if node(child) in (CursorKind.INTEGER_LITERAL, CursorKind.FLOATING_LITERAL) and \
                    kind == CursorKind.MEMBER_REF_EXPR:
                continue  # a template's argument
            self.visit(child, cursor, within)
        self.function = outer

    def says_constexpr(self, cursor):
        start = cursor.extent.start.offset
        head = self.text[start:cursor.location.offset].decode()
        return "constexpr" in head or "consteval" in head

    def says_if_constexpr(self, cursor):
        return re.match(rb"if\s+constexpr\b", self.text[cursor.extent.start.offset:]) is not None

    def span(self, cursor):
        start, end = cursor.extent.start, cursor.extent.end
        if start.file is None or self.names.get(start.file.name) != self.name or end.offset <= start.offset:
            return None
        return start.offset, end.offset

    def add(self, cursor, edits, *changes):
        span = self.span(cursor)
        place = (self.name, cursor.extent.start.offset, cursor.extent.end.offset, changes)
        if span is None or place in self.seen:
            return
        self.seen.add(place)
        line = cursor.extent.start.line
        code = self.text.splitlines()[line - 1].decode().strip()
        self.sites.append(Site(self.file, span[0], line, self.function, code, edits, list(changes)))

    def wrap(self, cursor, function, change):
        span = self.span(cursor)
        if span:
            self.add(cursor, [(span[0], 0, f"::velmutants::{function}(@0, "), (span[1], 0, ")")], change)

    def shown(self, cursor):
        span = self.span(cursor)
        text = " ".join(self.text[span[0]:span[1]].decode().split()) if span else ""
        return text if len(text) <= 60 else text[:57] + "..."

    def operator(self, cursor):
        """Of a binary operator: its text and place, and both operands."""
        children = list(cursor.get_children())
        if len(children) != 2 or not all(self.span(child) for child in children):
            return None
        begin, end = self.span(children[0])[1], self.span(children[1])[0]
        between = self.text[begin:end].decode()
        # Operands may begin with a bracket that isn't theirs to show.
        found = re.fullmatch(r"[\s)]*(\S+?)[\s(]*", re.sub(r"//[^\n]*", "", between))
        if found is None or "(" in between or ")" in between:
            return None
        return found.group(1), begin + between.index(found.group(1)), children

    def mutate(self, cursor, parent):
        kind = node(cursor)
        if kind == CursorKind.BINARY_OPERATOR:
            self.mutate_binary(cursor)
        elif kind == CursorKind.COMPOUND_ASSIGNMENT_OPERATOR:
            found = self.operator(cursor)
            if found and found[0] in ("+=", "-=") and kind_of(cursor) in NUMBERS | OPEN | VECTORS:
                right = found[2][1]
                self.wrap(right, "Negated", f"{found[0]} {self.shown(right)} takes the other sign")
        elif kind == CursorKind.UNARY_OPERATOR:
            span = self.span(cursor)
            sign = span and self.text[span[0]:span[0] + 1]
            if sign == b"-" and self.text[span[0] + 1:span[0] + 2] != b"-":
                self.wrap(cursor, "Negated", f"{self.shown(cursor)} without its sign")
        elif kind in (CursorKind.INTEGER_LITERAL, CursorKind.FLOATING_LITERAL):
            self.wrap(cursor, "Constant", f"{self.shown(cursor)} + 1")
        elif kind in (CursorKind.IF_STMT, CursorKind.WHILE_STMT, CursorKind.CONDITIONAL_OPERATOR):
            condition = next(cursor.get_children(), None)
            if condition is not None and (node(condition) is None or node(condition).is_expression()):
                self.wrap(condition, "Not", f"not ({self.shown(condition)})")
        elif kind == CursorKind.RETURN_STMT:
            value = next(cursor.get_children(), None)
            if value is not None and kind_of(value) == TypeKind.BOOL:
                self.wrap(value, "Not", f"return not ({self.shown(value)})")
            elif value is not None and kind_of(value) in NUMBERS | {TypeKind.DEPENDENT}:
                self.wrap(value, "Returned", f"return 0 or 1 for {self.shown(value)}")
        if parent is not None:
            self.delete(cursor, parent)

    def mutate_binary(self, cursor):
        found = self.operator(cursor)
        if found is None:
            return
        operator, place, (left, right) = found
        if operator in ("&&", "||"):
            function, word = ("OrTrue", "true") if operator == "&&" else ("AndFalse", "false")
            for operand in (left, right):
                self.wrap(operand, function, f"{word} for {self.shown(operand)} of {operator}")
        elif operator in BINARY:
            allowed = COMPARED if operator in ("==", "!=", "<", "<=", ">", ">=") else NUMBERS | OPEN | VECTORS
            span = self.span(cursor)
            if span and kind_of(left) in allowed and kind_of(right) in allowed:
                function, others = BINARY[operator]
                self.add(cursor, [(span[0], 0, f"::velmutants::{function}(@0, "), (place, len(operator), ","),
                                  (span[1], 0, ")")],
                         *[f"{other} for {operator} in {self.shown(cursor)}" for other in others])

    def delete(self, cursor, parent):
        """Without a statement: a call, an assignment, a jump."""
        removable = node(cursor) in (CursorKind.CALL_EXPR, CursorKind.COMPOUND_ASSIGNMENT_OPERATOR,
                                    CursorKind.CXX_THROW_EXPR, CursorKind.BREAK_STMT, CursorKind.CONTINUE_STMT)
        if node(cursor) == CursorKind.BINARY_OPERATOR:
            found = self.operator(cursor)
            removable = found is not None and found[0] == "="
        if node(cursor) == CursorKind.RETURN_STMT:
            removable = next(cursor.get_children(), None) is None
        if node(cursor) == CursorKind.UNEXPOSED_EXPR:  # with cleanups around it
            removable = True
        span = self.span(cursor)
        if not removable or span is None:
            return
        end = span[1]
        while self.text[end:end + 1].isspace():
            end += 1
        if self.text[end:end + 1] != b";":
            return
        change = f"without {self.shown(cursor)}"
        head = "if (!::velmutants::On(@0)) "
        if node(parent) == CursorKind.COMPOUND_STMT:
            self.add(cursor, [(span[0], 0, head)], change)
        elif node(parent) in (CursorKind.IF_STMT, CursorKind.FOR_STMT, CursorKind.WHILE_STMT,
                             CursorKind.CXX_FOR_RANGE_STMT) and not self.is_in_head(cursor, parent):
            self.add(cursor, [(span[0], 0, "{ " + head), (end + 1, 0, " }")], change)

    def is_in_head(self, cursor, parent):
        """Of a loop: what begins or ends it, rather than its body."""
        return node(parent) == CursorKind.FOR_STMT and cursor != list(parent.get_children())[-1]


class Source:
    """A source of the build with its compile command."""

    def __init__(self, entry):
        self.path = pathlib.Path(entry["file"])
        self.file = str(self.path.relative_to(ROOT))
        self.words = shlex.split(entry["command"])
        self.object = self.words[self.words.index("-o") + 1]

    def parse_arguments(self):
        return [word for word in self.words[1:self.words.index("-o")] if not word.startswith(IGNORED)] + ["-w"]

    def compile_command(self, target):
        tree = TREE / self.file
        words = [word for word in self.words if not word.startswith(IGNORED)]
        words[words.index("-o") + 1] = str(target)
        words[words.index("-c") + 1] = str(tree if tree.exists() else self.path)
        # Whoever runs off the end of a function whose last statement is gone goes on.
        return words[:1] + [f"-I{TREE}", "-include", str(MUTANTS / "mutants.h"), "-w", "-fno-strict-return",
                            "-ferror-limit=0", f"-iquote{self.path.parent}"] + words[1:]


def read_sources():
    entries = json.loads((BUILD / "compile_commands.json").read_text())
    sources = []
    for entry in entries:
        path = pathlib.Path(entry["file"])
        if path.is_relative_to(ROOT) and not path.is_relative_to(ROOT / "build") and path.suffix == ".cpp":
            sources.append(Source(entry))
    return sources


def room_of(file):
    return file.split("/")[0]


def files_of(rooms, only):
    tracked = subprocess.run(["git", "ls-files", "--", *[f"{room}/" for room in rooms]], cwd=ROOT, text=True,
                             capture_output=True, check=True).stdout.split()
    return [file for file in tracked if file.endswith((".cpp", ".h", ".inc"))
            and (not only or any(file.startswith(name) for name in only))]


def find_sites(sources, only):
    rooms = {room_of(source.file) for source in sources}
    wanted = {os.path.realpath(ROOT / file): (file, (ROOT / file).read_bytes()) for file in files_of(rooms, only)}
    index, seen, sites = Index.create(), set(), []
    for source in sources:
        unit = index.parse(str(source.path), args=source.parse_arguments())
        errors = [d for d in unit.diagnostics if d.severity >= 3]
        if errors:
            sys.exit(f"{source.file} can't be parsed: {errors[0]}")
        sites += Walk(unit, wanted, seen).sites
    return sorted(sites, key=lambda site: (site.file, site.offset))


def draw(sites, counts, seed):
    """Of each room the sites with the smallest hashes, until their mutants are enough; numbered in their order."""
    alike = collections.Counter()
    keyed = []
    for site in sites:
        key = "\t".join([seed, site.file, site.function, site.code, *site.changes])
        alike[key] += 1
        keyed.append((hashlib.sha256(f"{key}\t{alike[key]}".encode()).digest(), site))
    drawn, mutants = [], collections.Counter()
    for _, site in sorted(keyed, key=lambda pair: pair[0]):
        room = room_of(site.file)
        if mutants[room] < counts[room]:
            drawn.append(site)
            mutants[room] += len(site.changes)
    number = 1
    for site in sorted(drawn, key=lambda site: (site.file, site.offset)):
        site.first = number
        number += len(site.changes)
    return sorted(drawn, key=lambda site: site.first)


def write_mutated(file, sites):
    """The file with its sites, in the tree; lines stay where they are."""
    text = (ROOT / file).read_bytes()
    edits = []
    for site in sites:
        opens = (site.offset, site.edits[-1][0])
        for number, (place, length, new) in enumerate(site.edits):
            # At one place what ends comes before what begins, the inner end before the outer one and the outer
            # beginning before the inner one. Of one width the operator is inside: its comma is between its own
            # brackets.
            ends = number == len(site.edits) - 1 and number > 0
            width = opens[1] - opens[0]
            statement = new.startswith(("if (!", "{ if"))
            order = (0, width) if ends else (1, 0 if statement else 1, -width, len(site.edits))
            edits.append((place, order, length, new.replace("@0", str(site.first)).encode()))
    made, position = [], 0
    for place, _, length, new in sorted(edits, key=lambda edit: (edit[0], edit[1])):
        made += [text[position:place], new]
        position = place + length
    path = TREE / file
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(b"".join(made) + text[position:])


def mentioned(output):
    """The places of mutated files in a compiler's errors; of an error elsewhere the first of its notes."""
    places = set()
    told = False  # the last error
    for line in output.splitlines():
        found = re.match(r"(.+?):(\d+):\d+: (fatal error|error|note):", line)
        if not found:
            continue
        told = told and found.group(3) == "note"
        if not told and found.group(1).startswith(str(TREE)):
            places.add((str(pathlib.Path(found.group(1)).relative_to(TREE)), int(found.group(2))))
            told = True
    return places


def compile_source(source, target):
    target.parent.mkdir(parents=True, exist_ok=True)
    ran = subprocess.run(source.compile_command(target), cwd=BUILD, text=True, capture_output=True)
    return ran.returncode, ran.stderr


def compile_all(sources, sites, jobs):
    """Compiles the sources; sites that don't compile are left out. Returns those that do, and the objects."""
    by_file = collections.defaultdict(list)
    for site in sites:
        by_file[site.file].append(site)
    for file, own in by_file.items():
        write_mutated(file, own)
    left = {source.file: source for source in sources}
    while left:
        spoilt = set()
        with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
            targets = {file: MADE / "objects" / source.object for file, source in left.items()}
            ran = {file: pool.submit(compile_source, source, targets[file]) for file, source in left.items()}
        again = {}
        for file, future in ran.items():
            code, output = future.result()
            if code == 0:
                continue
            again[file] = left[file]
            # A statement may begin above the line that is complained of.
            for name, line in mentioned(output):
                near = [site for site in by_file[name] if site.line <= line]
                spoilt |= {id(site) for site in near if site.line == max(n.line for n in near)}
            if not mentioned(output):
                sys.exit(f"{file} can't be compiled:\n{output[:2000]}")
        changed = set()
        for file, own in by_file.items():
            kept = [site for site in own if id(site) not in spoilt]
            if len(kept) < len(own):
                by_file[file] = kept
                write_mutated(file, kept)
                changed.add(file)
        if again and not changed:
            sys.exit("these can't be compiled: " + ", ".join(again))
        # A header's sites are gone in all sources; what compiled with them keeps numbers that nobody asks for.
        left = again
    return sorted((site for own in by_file.values() for site in own), key=lambda site: site.first)


def compile_tests(sources, jobs):
    """Compiles the sources of tests that compiled with the mutants before."""
    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        targets = [MADE / "objects" / source.object for source in sources]
        for code, output in pool.map(compile_source, sources, targets):
            if code != 0:
                sys.exit(output)


def link(program, sources):
    """The test program with the mutated objects in front, so that those of the libraries aren't taken."""
    commands = subprocess.run(["ninja", "-C", str(BUILD), "-t", "commands", f"bin/{program}"], text=True,
                              capture_output=True, check=True).stdout.splitlines()
    command = next(line for line in reversed(commands) if f"-o bin/{program} " in line)
    command = command.removeprefix(": && ").split(" && ")[0]
    mutated = {source.object: str(MADE / "objects" / source.object) for source in sources}
    words = [word for word in shlex.split(command) if word not in mutated]
    target = MADE / "bin" / program
    target.parent.mkdir(parents=True, exist_ok=True)
    words[words.index("-o") + 1] = str(target)
    recorder = MADE / "recorder.o"
    if not recorder.exists():
        subprocess.run(["clang++", "-std=c++20", "-O1", f"-I{ROOT}", "-c", str(MUTANTS / "recorder.cpp"), "-o",
                        str(recorder)], check=True)
    subprocess.run(words[:1] + [*mutated.values(), str(recorder)] + words[1:], cwd=BUILD, check=True)


def limits():
    os.nice(NICENESS)
    resource.setrlimit(resource.RLIMIT_AS, (6 << 30, 6 << 30))
    resource.setrlimit(resource.RLIMIT_FSIZE, (1 << 30, 1 << 30))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def run_program(program, environment, timeout, *arguments):
    """The exit code, or None where the time ran out."""
    scratch = MADE / "scratch"
    scratch.mkdir(parents=True, exist_ok=True)
    variables = dict(os.environ, LLVM_PROFILE_FILE="/dev/null", LD_LIBRARY_PATH=str(BUILD / "lib"),
                     TMPDIR=str(scratch), VELSCORE_TEST_ROWS="20000", **environment)
    process = subprocess.Popen([str(MADE / "bin" / program), "--gtest_brief=1", *arguments], cwd=ROOT,
                               env=variables, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL, preexec_fn=limits, start_new_session=True)
    try:
        return process.wait(timeout)
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, 9)
        process.wait()
        return None


def record(program, jobs, timeout=3600):
    """The tests of a program that reach each mutant, fastest first, with their seconds; each job has a share of them."""
    logs = [MADE / f"{program}.{job}.reached" for job in range(jobs)]

    def run(job):
        return run_program(program, {"VELSCORE_MUTANTS_RECORD": str(logs[job]), "GTEST_TOTAL_SHARDS": str(jobs),
                                     "GTEST_SHARD_INDEX": str(job)}, timeout)
    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        codes = list(pool.map(run, range(jobs)))
    if any(code != 0 for code in codes):
        sys.exit(f"{program} fails without a mutant (exit codes {codes}): {MADE / 'bin' / program}")
    reaching = collections.defaultdict(list)
    for line in [line for log in logs for line in log.read_text().splitlines()]:
        name, milliseconds, *ids = line.split()
        for number in ids:
            reaching[int(number)].append((int(milliseconds) / 1000, name))
    return {number: sorted(tests) for number, tests in reaching.items()}


# The quickest tests go first, and the others of those that reach the mutant only when they don't see it. What reads
# every document is reached by tests of minutes: a mutant that is listed has the first of them alone.
FIRST = 12
MOST_SECONDS = 200
MOST_SECONDS_OF_LISTED = 20
# Of a filter: the kernel takes 131,072 bytes in one argument.
MOST_BYTES = 100_000


def groups_of(tests):
    """The first few tests, then as many at a time as a filter has room for."""
    yield tests[:FIRST]
    group, size = [], 0
    for test in tests[FIRST:]:
        if size > MOST_BYTES:
            yield group
            group, size = [], 0
        group.append(test)
        size += len(test[1]) + 1
    if group:
        yield group


def kills(program, number, tests, most_seconds):
    """How the program notices a mutant: failed, crashed, too long, or not at all."""
    spent = itertools.accumulate(duration for duration, _ in tests)
    tests = [test for test, total in zip(tests, spent) if total <= most_seconds] or tests[:1]
    for group in groups_of(tests):
        seconds = sum(duration for duration, _ in group)
        code = run_program(program, {"VELSCORE_MUTANT": str(number)}, 20 + 10 * seconds, "--gtest_fail_fast",
                           "--gtest_filter=" + ":".join(name for _, name in group))
        if code != 0:
            return "too long" if code is None else "failed" if code == 1 else "crashed"
    return None


def judge(site, variant, reached, known, listed):
    """The outcome of a mutant, unless it is known."""
    number = site.first + variant
    is_listed = key_of(site.mutants()[variant]) in listed
    if number in known:
        return known[number]
    judges = JUDGES[room_of(site.file)]
    seen = False
    for program in judges:
        tests = reached[program].get(site.first, [])
        seen = seen or bool(tests)
        most_seconds = MOST_SECONDS_OF_LISTED if is_listed else MOST_SECONDS
        found = kills(program, number, tests, most_seconds) if tests else None
        if found:
            return found
    return "survived" if seen else "not reached"


def key_of(mutant):
    return f"{mutant.file} {mutant.function}: {mutant.code}  =>  {mutant.change}"


def read_survivors():
    """Lines of `FILE FUNCTION: CODE  =>  CHANGE`, each with its reason indented below."""
    survivors, last = {}, None
    for text in (MUTANTS / "survivors.txt").read_text().splitlines():
        if text.startswith("#") or not text.strip():
            continue
        if text[0] == " ":
            survivors[last] += text.strip()
        else:
            last = text.rstrip()
            survivors[last] = ""
    for key, reason in survivors.items():
        if not reason:
            sys.exit(f"tests/mutants/survivors.txt: no reason below: {key}")
    return survivors


def refuse_stale(rooms, sites):
    """Ends where a listed survivor of the rooms is no mutant of their sources any more."""
    there = {key_of(mutant) for site in sites for mutant in site.mutants()}
    stale = [key for key in read_survivors() if room_of(key) in rooms and key not in there]
    if stale:
        sys.exit("\n".join(["tests/mutants/survivors.txt: the sources have no such mutant:", *stale]))


def report(outcomes, listed):
    """Prints the figures; true when the goal is met."""
    unlisted = []
    print(f"{'room':10} {'mutants':>8} {'killed':>8} {'share':>8} {'not reached':>12} {'listed':>7}")
    rooms = sorted({room_of(mutant.file) for mutant, _ in outcomes})
    good = True
    for room in rooms + ["all"]:
        own = [(mutant, outcome) for mutant, outcome in outcomes if room in (room_of(mutant.file), "all")]
        alive = [mutant for mutant, outcome in own if outcome in ALIVE]
        killed = len(own) - len(alive)
        known = sum(key_of(mutant) in listed for mutant in alive)
        share = killed / max(1, len(own))
        print(f"{room:10} {len(own):8} {killed:8} {share:8.1%} "
              f"{sum(outcome == 'not reached' for _, outcome in own):12} {known:7}")
        if room == "all":
            good = share >= GOAL
            unlisted = [(mutant, outcome) for mutant, outcome in own
                        if outcome in ALIVE and key_of(mutant) not in listed]
    for mutant, outcome in unlisted:
        print(f"{mutant.file}:{mutant.line}: {outcome}: {key_of(mutant)}")
    return good and not unlisted


def known_outcomes(sites, listed):
    """By number, those of the last run whose mutant was killed or is listed; it may not have come to the end."""
    mutants = [(site.first + variant, mutant) for site in sites for variant, mutant in enumerate(site.mutants())]
    outcomes = [line.rsplit("\t", 1)[1] for line in (MADE / "outcomes.tsv").read_text().splitlines()]
    return {number: outcome for (number, mutant), outcome in zip(mutants, outcomes)
            if outcome not in ALIVE or key_of(mutant) in listed}


def count(sites):
    return sum(len(site.changes) for site in sites)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--rooms", nargs="+", default=list(JUDGES), choices=list(JUDGES))
    parser.add_argument("--only", nargs="+", default=[], metavar="FILE")
    parser.add_argument("--count", type=int, metavar="N", help="mutants of each room")
    parser.add_argument("--seed", default="velscore")
    parser.add_argument("--jobs", type=int, default=1)
    parser.add_argument("--again", action="store_true")
    parser.add_argument("--survivors", action="store_true")
    arguments = parser.parse_args()
    began = time.time()
    sources = read_sources()
    # Of a source that several targets compile that of its room; the plug-in's entry is in no test program.
    mutated = [source for source in sources if room_of(source.file) in arguments.rooms
               and room_of(source.object) == room_of(source.file) and source.file != "readers/entry.cpp"]
    programs = sorted({program for room in arguments.rooms for program in JUDGES[room]})
    tests = {program: [source for source in sources if source.file.startswith(TEMPLATE_TESTS.get(program, "-"))]
             for program in programs}
    if arguments.again or arguments.survivors:
        sites = pickle.loads((MADE / "sites").read_bytes())
        compile_tests([source for own in tests.values() for source in own], arguments.jobs)
    else:
        shutil.rmtree(MADE, ignore_errors=True)
        MADE.mkdir(parents=True)
        all_sites = find_sites(mutated, arguments.only)
        if not arguments.only:
            refuse_stale(arguments.rooms, all_sites)
        counts = {room: arguments.count or DRAWN[room] for room in arguments.rooms}
        drawn = draw(all_sites, counts, arguments.seed)
        print(f"{count(all_sites)} mutants of {len(all_sites)} places; {count(drawn)} drawn "
              f"({time.time() - began:.0f} s)", flush=True)
        sites = compile_all(mutated + [source for own in tests.values() for source in own], drawn, arguments.jobs)
        print(f"{count(drawn) - count(sites)} don't compile ({time.time() - began:.0f} s)", flush=True)
        (MADE / "sites").write_bytes(pickle.dumps(sites))
    reached = {}
    for program in programs:
        rooms = [room for room in arguments.rooms if program in JUDGES[room]]
        link(program, [source for source in mutated if room_of(source.file) in rooms] + tests[program])
        reached[program] = record(program, arguments.jobs)
        print(f"{program} recorded ({time.time() - began:.0f} s)", flush=True)

    listed = read_survivors()
    known = known_outcomes(sites, listed) if arguments.survivors else {}
    log = (MADE / "outcomes.tsv").open("w")
    outcomes = []
    with concurrent.futures.ThreadPoolExecutor(arguments.jobs) as pool:
        futures = [(mutant, pool.submit(judge, site, variant, reached, known, listed))
                   for site in sites for variant, mutant in enumerate(site.mutants())]
        for mutant, future in futures:
            if future.exception():
                pool.shutdown(cancel_futures=True)
            outcomes.append((mutant, future.result()))
            print(*mutant, outcomes[-1][1], sep="\t", file=log, flush=True)
    print(f"judged ({time.time() - began:.0f} s)", flush=True)
    return 0 if report(outcomes, listed) else 1


sys.exit(main())
