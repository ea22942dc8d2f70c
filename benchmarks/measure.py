# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""Runs the benchmark programs in turns and computes medians of ratios.

Each ratio compares an operation with its floor in the same process; the result is the median of all
repetitions. So a machine that is slow, or slow for a while, changes little.
"""

import json
import os
import pathlib
import statistics
import subprocess
import time

SIZES = [1, 1000, 10000, 100000]
REQUESTS = ["soundEnqueue", "soundCancel", "displayOpen", "displayCancel"]
RECORDS = [f"record{kind}{step}" for kind in ("Sound", "Message", "Response")
           for step in ("Build", "Read")]
PAIRS = {name: name + "ByHand" for name in RECORDS}


class Programs:
    """The built programs of one build folder."""

    def __init__(self, folder):
        self.folder = pathlib.Path(folder)

    def times(self, pattern, min_seconds):
        """The seconds that an item takes in each benchmark that matches, by the benchmark's name."""
        printed = self._output("tavo_benchmark", f"--benchmark_filter=^({pattern})",
                               f"--benchmark_min_time={min_seconds}", "--benchmark_format=json")
        result = {}
        for run in json.loads(printed)["benchmarks"]:
            name = run["name"].removesuffix("/manual_time")
            rate = run.get("items_per_second")
            result[name] = 1 / rate if rate else run["real_time"] * 1e-9
        return result

    def memory(self, count):
        """The bytes of heap that each of `count` items takes, by their kind."""
        figures = json.loads(self._output("tavo_memory_use", str(count)))
        return {name: value for name, value in figures.items() if name != "count"}

    def _output(self, program, *arguments):
        done = subprocess.run([self.folder / "benchmarks" / program, *arguments], check=True,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        return done.stdout


def jobs():
    """What each repetition runs, as (name, pattern, minimum of seconds)."""
    for request in REQUESTS:
        for threads in (1, 2):
            yield (f"{request}, {threads} thread{'s' * (threads > 1)}",
                   rf"{request}(Floor)?/[0-9]+/{threads}/", 0.2)
    yield "records", "record", 0.2
    yield "routing", "route", 0.2
    yield "reports", "tellRows", 0.2


def ratios_of(times):
    """The ratios from the figures of one process, by (what, variant)."""
    result = {}
    for name, value in times.items():
        what, *arguments = name.split("/")
        if what in REQUESTS:
            size, threads = map(int, arguments)
            floor = times[f"{what}Floor/10000/{threads}"]
            result[(what, (threads, size))] = value / floor
        elif what in PAIRS:
            result[(what, None)] = value / times[PAIRS[what]]
        elif what in ("route", "tellRows"):
            smallest = 10 if what == "route" else 1
            result[(what, int(arguments[0]))] = value / times[f"{what}/{smallest}"]
    return result


def run(programs, repetitions, progress):
    """Medians over all repetitions: (ratios by what and variant, floors by name)."""
    seen, floors = {}, {}
    for repetition in range(repetitions):
        for name, pattern, min_seconds in jobs():
            progress(f"repetition {repetition + 1} of {repetitions}: {name}")
            times = programs.times(pattern, min_seconds)
            for key, ratio in ratios_of(times).items():
                seen.setdefault(key, []).append(ratio)
            for key, value in times.items():
                if "Floor" in key:
                    floors.setdefault(key, []).append(value)
    return ({key: statistics.median(values) for key, values in seen.items()},
            {key: statistics.median(values) for key, values in floors.items()})


def machine():
    """A short description of the machine."""
    pages = os.sysconf("SC_PHYS_PAGES") * os.sysconf("SC_PAGE_SIZE")
    return f"{os.cpu_count()} cores, {round(pages / 2**30)} GiB"


def today():
    return time.strftime("%Y-%m-%d")
