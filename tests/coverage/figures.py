#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""Counts the lines and branches of src/ that the tests of a coverage build have run.

Reads the counters below BUILD/counters and prints a table a file and a table a folder, and what has not
been run although tests/coverage/uncovered.txt gives no reason. A branch is one outcome, true or false,
of a condition in the source; instances of a template count as one. The exit status is 1 when a total is
below its limit, or with --check when something has no reason.
"""

import argparse
import collections
import fnmatch
import json
import os
import pathlib
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
REASONS = ROOT / "tests" / "coverage" / "uncovered.txt"
INSTRUMENTED = b"__llvm_covmap"


def binaries_of(build):
    """The programs and libraries that carry a map of their source."""
    found = []
    for folder in ("bin", "lib", "tests"):
        for path in sorted((build / folder).rglob("*")):
            if path.is_file() and not path.is_symlink() and os.access(path, os.X_OK):
                content = path.read_bytes()
                if content.startswith(b"\x7fELF") and INSTRUMENTED in content:
                    found.append(path)
    return found


def holds_code(text):
    return any(map(str.isalnum, text)) and not text.lstrip().startswith("//")


def lines_of(file):
    """{line number: count}, of lines that hold more than a brace or a comment"""
    starts = collections.defaultdict(list)
    for line, _, count, has_count, is_entry, is_gap in file["segments"]:
        starts[line].append((count, has_count, is_entry, is_gap))
    result = {}
    before = (0, False, False, False)  # what holds where the line begins
    for number, text in enumerate(pathlib.Path(file["filename"]).read_text().splitlines(), 1):
        counts = [before[0]] if before[1] and not before[3] else []
        for index, (count, has_count, is_entry, is_gap) in enumerate(starts[number]):
            # Behind a call that may not return, such as an assertion, there is a gap with a count of
            # its own up to the next statement, which begins with no region of its own.
            follows_gap = index == 0 and before[3]
            if has_count and not is_gap and (is_entry or follows_gap):
                counts.append(count)
        if counts and holds_code(text):
            result[number] = max(counts)
        if starts[number]:
            before = starts[number][-1]
    return result


def branches_of(file):
    """{line number: {place of the outcome: count}}"""
    result = collections.defaultdict(collections.Counter)
    for line, column, last_line, last_column, true, false, *_ in file["branches"]:
        result[line][column, last_line, last_column, True] += true
        result[line][column, last_line, last_column, False] += false
    return result


class Coverage:
    """What llvm-cov tells of the source files below src/."""

    def __init__(self, build):
        self.profile = build / "counters" / "all.profdata"
        counters = sorted((build / "counters").glob("*.profraw"))
        if not counters:
            sys.exit(f"{build / 'counters'} has no counters: scripts/coverage writes them")
        subprocess.run(["llvm-profdata-14", "merge", "-sparse", "-o", self.profile, *counters],
                       check=True)
        first, *others = binaries_of(build)
        self.arguments = [first, *(f"-object={other}" for other in others),
                          f"-instr-profile={self.profile}"]
        self.sources = sorted(path for path in (ROOT / "src").rglob("*")
                              if path.suffix in (".cpp", ".h"))

    def cov(self, command, *options):
        run = subprocess.run(["llvm-cov-14", command, *options, *self.arguments, *self.sources],
                             check=False, capture_output=True, text=True)
        # Inline functions that an object doesn't use have no counters there; that is all it means.
        sys.stderr.writelines(line for line in run.stderr.splitlines(True)
                              if "functions have mismatched data" not in line)
        run.check_returncode()
        return run.stdout

    def files(self):
        """{file: (its lines, its branches)}"""
        exported = json.loads(self.cov("export", "-skip-functions"))["data"][0]["files"]
        return {os.path.relpath(file["filename"], ROOT): (lines_of(file), branches_of(file))
                for file in exported}

    def write_pages(self, folder):
        self.cov("show", "-format=html", f"-output-dir={folder}", "-show-branches=count",
                 "-show-instantiations=false", "-project-title=Tavo")


class Sum:
    def __init__(self):
        self.lines = self.lines_run = self.branches = self.branches_run = 0

    def add(self, lines, branches):
        outcomes = [count for line in branches.values() for count in line.values()]
        self.lines += len(lines)
        self.lines_run += sum(count > 0 for count in lines.values())
        self.branches += len(outcomes)
        self.branches_run += sum(count > 0 for count in outcomes)

    @staticmethod
    def share(part, whole):
        return 100.0 * part / whole if whole else 100.0

    def line_share(self):
        return self.share(self.lines_run, self.lines)

    def branch_share(self):
        return self.share(self.branches_run, self.branches)

    def text(self, name):
        return (f"{name:<52} {self.lines_run:>5} of {self.lines:<5} {self.line_share():>5.1f} %"
                f"   {self.branches_run:>5} of {self.branches:<5} {self.branch_share():>5.1f} %")


def print_table(title, files, name_of):
    table = collections.defaultdict(Sum)
    for path, counts in files.items():
        table[name_of(path)].add(*counts)
    print(f"\n{title:<52} {'lines':>14} {'':>7}   {'branches':>14}")
    for name in sorted(table):
        print(table[name].text(name))
    return table


class Reasons:
    """The list of what is not covered: 'file: source text -> reason', * stands for anything.

    Where a line says too little by itself, the source text is 'the line before | the line'.
    """

    def __init__(self):
        self.rules = []
        self.used = set()
        for text in REASONS.read_text().splitlines():
            if text and not text.startswith("#"):
                place, arrow, reason = text.rpartition(" -> ")
                file, colon, source = place.partition(": ")
                if not (arrow and colon and reason):
                    sys.exit(f"{REASONS}: not 'file: source text -> reason': {text}")
                self.rules.append((file, source.replace("[", "[[]"), text))

    def explain(self, file, before, source):
        found = [text for where, pattern, text in self.rules
                 if fnmatch.fnmatchcase(file, where)
                 and any(fnmatch.fnmatchcase(each, pattern)
                         for each in (source, f"{before} | {source}"))]
        self.used.update(found)
        return bool(found)

    def unused(self):
        return [text for _, _, text in self.rules if text not in self.used]


def uncovered(files):
    """Yields file, line number, source text before and at it, and what has not been run."""
    for path, (lines, branches) in sorted(files.items()):
        source = (ROOT / path).read_text().splitlines()
        for number in sorted(lines.keys() | branches.keys()):
            missing = [f"column {place[0]} is never {str(place[-1]).lower()}"
                       for place, count in sorted(branches.get(number, {}).items()) if count == 0]
            before, text = (each.strip() for each in source[number - 2:number])
            if lines.get(number, 1) == 0:
                yield path, number, before, text, "never run"
            elif missing:
                yield path, number, before, text, ", ".join(missing)


def print_uncovered(files):
    """Returns whether all of it has a reason."""
    reasons = Reasons()
    explained, unexplained = 0, []
    for path, number, before, text, what in uncovered(files):
        if reasons.explain(path, before, text):
            explained += 1
        else:
            unexplained.append(f"  {path}:{number}: {what}: {text}")
    print(f"\nNot covered, for a reason in {REASONS.relative_to(ROOT)}: {explained} lines")
    print(f"Not covered, without a reason: {len(unexplained)} lines")
    print("\n".join(unexplained + [f"  nothing left to explain: {text}"
                                   for text in reasons.unused()]))
    return not unexplained


def arguments():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--pages", type=pathlib.Path, help="write HTML pages to this folder")
    parser.add_argument("--check", action="store_true")
    parser.add_argument("--fail-under-line", type=float, default=0, metavar="PERCENT")
    parser.add_argument("--fail-under-branch", type=float, default=0, metavar="PERCENT")
    return parser.parse_args()


def main():
    given = arguments()
    coverage = Coverage(given.build.resolve())
    files = coverage.files()
    if given.pages:
        coverage.write_pages(given.pages)
    print_table("File", files, lambda path: path)
    print_table("Folder", files, os.path.dirname)
    total = print_table("Total", files, lambda path: "src")["src"]
    all_explained = print_uncovered(files)
    below = (total.line_share() < given.fail_under_line
             or total.branch_share() < given.fail_under_branch)
    if below:
        print("A total is below its limit", file=sys.stderr)
    return int(below or (given.check and not all_explained))


if __name__ == "__main__":
    sys.exit(main())
