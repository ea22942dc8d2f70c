#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""Counts the instructions of the main operations and compares them with the expected counts."""

import argparse
import json
import pathlib
import re
import subprocess
import sys

EXPECTED = pathlib.Path(__file__).resolve().parent / "expected.json"
# Of the program tavo_counted_requests, and of a whole host.
OPERATIONS = ["routed-request", "sound-enqueue", "sound-cancel", "display-open", "display-cancel"]
NOTIFY = "desktop-notify"
# The packages that the counts depend on.
PACKAGES = ["g++-12", "libc6", "liblog4cplus-2.0.5", "libqt5core5a", "libstdc++6", "valgrind"]
# Makes every machine and every run count the same. Without the first, the C library would choose how to
# copy memory by the processor.
ENVIRONMENT = {
    "GLIBC_TUNABLES": "glibc.cpu.hwcaps=-AVX2,-AVX_Fast_Unaligned_Load,-ERMS,-FSRM,-SSSE3,"
                      "-SSE4_1,-SSE4_2",
    "LD_BIND_NOW": "1",
    "QT_HASH_SEED": "0",
    # Qt would ask the processor for random numbers instead of the C library.
    "QT_NO_CPU_FEATURE": "rdrnd rdseed",
}


def count(program, operation, requests, profile):
    """Instructions per request. Keeps the profile for callgrind_annotate."""
    done = subprocess.run(
        ["valgrind", "--tool=callgrind", "--toggle-collect=counted_requests",
         f"--callgrind-out-file={profile}", program, operation, str(requests)],
        env=ENVIRONMENT, check=False, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
    collected = re.search(r"Collected : (\d+)", done.stderr)
    if done.returncode != 0 or not collected or int(collected[1]) == 0:
        sys.exit(f"{operation} can't be counted:\n{done.stderr}")
    return round(int(collected[1]) / requests)


def count_all(build, requests):
    profiles = pathlib.Path(build) / "instructions"
    profiles.mkdir(exist_ok=True)
    program = pathlib.Path(build) / "benchmarks" / "tavo_counted_requests"
    counts = {operation: count(program, operation, requests, profiles / f"{operation}.callgrind")
              for operation in OPERATIONS}
    sys.path.append(str(EXPECTED.parents[1]))
    import notify  # pylint: disable=import-outside-toplevel
    counts[NOTIFY] = notify.count(build, profiles / f"{NOTIFY}.callgrind", ENVIRONMENT)
    return counts


def versions():
    """The installed versions of the packages that the counts depend on."""
    done = subprocess.run(["dpkg-query", "-W", "-f", "${Package} ${Version}\n", *PACKAGES],
                          check=False, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    return dict(line.split(" ", 1) for line in done.stdout.splitlines())


def compare(expected, seen, tolerance):
    """Rows of (operation, expected, seen, difference in percent, verdict)."""
    rows = []
    for operation in expected | seen:
        if operation not in expected or operation not in seen:
            rows.append((operation, expected.get(operation), seen.get(operation), None, "unknown"))
            continue
        percent = 100 * (seen[operation] / expected[operation] - 1)
        verdict = "over" if percent > tolerance else "under" if percent < -tolerance else "ok"
        rows.append((operation, expected[operation], seen[operation], percent, verdict))
    return rows


def table(rows):
    lines = [f"{'operation':<16}{'expected':>10}{'seen':>10}{'difference':>12}  verdict"]
    for operation, expected, seen, percent, verdict in rows:
        difference = "-" if percent is None else f"{percent:+.2f} %"
        lines.append(f"{operation:<16}{expected or '-':>10}{seen or '-':>10}{difference:>12}  {verdict}")
    return "\n".join(lines)


def remarks(rows, tolerance, made_with, here):
    """Explains the verdicts other than ok, one line each."""
    verdicts = {row[-1] for row in rows} - {"ok"}
    if not verdicts:
        return []
    result = [f"A count may differ by {tolerance:g} %."]
    if "over" in verdicts:
        result.append("Over: a request takes more instructions. callgrind_annotate shows where.")
    if "under" in verdicts:
        result.append("Under: a request takes fewer instructions. Use --write to keep it so.")
    if "unknown" in verdicts:
        result.append("Unknown: the operation is not both expected and counted.")
    result += [f"The counts depend on {package}: it was {made_with.get(package, 'missing')} for the "
               f"expected counts and is {here.get(package, 'missing')} here."
               for package in PACKAGES if made_with.get(package) != here.get(package)]
    return result


def write(path, expected, seen):
    path.write_text(json.dumps(expected | {"made_with": versions(), "instructions": seen},
                               indent=4) + "\n")


def main(arguments):
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", required=True, help="the build folder")
    parser.add_argument("--expected", type=pathlib.Path, default=EXPECTED)
    parser.add_argument("--seen", type=pathlib.Path, help="compare these counts without counting")
    parser.add_argument("--write", action="store_true", help="replace the expected counts")
    options = parser.parse_args(arguments)
    expected = json.loads(options.expected.read_text())
    seen = (json.loads(options.seen.read_text()) if options.seen
            else count_all(options.build, expected["requests"]))
    rows = compare(expected["instructions"], seen, expected["tolerance_percent"])
    print(table(rows))
    if options.write:
        write(options.expected, expected, seen)
        return 0
    for line in remarks(rows, expected["tolerance_percent"], expected["made_with"], versions()):
        print(line, file=sys.stderr)
    return 0 if all(row[-1] == "ok" for row in rows) else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
