# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""Runs the benchmark programs, interleaved, and gives medians of ratios.

A ratio is taken within one process, between an operation and its floor; then the median over the
repetitions is. So a machine that is slow for a while, or all the time, changes little.
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

    def times(self, pattern, least_seconds):
        """Seconds an item of every benchmark that matches, by the benchmark's name."""
        printed = self._output("tavo_benchmark", f"--benchmark_filter=^({pattern})",
                               f"--benchmark_min_time={least_seconds}", "--benchmark_format=json")
        result = {}
        for run in json.loads(printed)["benchmarks"]:
            name = run["name"].removesuffix("/manual_time")
            rate = run.get("items_per_second")
            result[name] = 1 / rate if rate else run["real_time"] * 1e-9
        return result

    def memory(self, count):
        """Bytes of the heap for each of so many, by what they are."""
        figures = json.loads(self._output("tavo_memory_use", str(count)))
        return {name: value for name, value in figures.items() if name != "count"}

    def _output(self, program, *arguments):
        done = subprocess.run([self.folder / "benchmarks" / program, *arguments], check=True,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        return done.stdout


def jobs():
    """What is run in each repetition, as (name, pattern, least seconds)."""
    for request in REQUESTS:
        for threads in (1, 2):
            yield (f"{request}, {threads} thread{'s' * (threads > 1)}",
                   rf"{request}(Floor)?/[0-9]+/{threads}/", 0.2)
    yield "records", "record", 0.2
    yield "routing", "route", 0.2
    yield "reports", "tellRows", 0.2


def ratios_of(times):
    """The ratios that one process's figures give, by (what, variant)."""
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
            least = 10 if what == "route" else 1
            result[(what, int(arguments[0]))] = value / times[f"{what}/{least}"]
    return result


def run(programs, repetitions, progress):
    """Ratios and floors over all repetitions: (medians by what and variant, median floors)."""
    seen, floors = {}, {}
    for repetition in range(repetitions):
        for name, pattern, least_seconds in jobs():
            progress(f"repetition {repetition + 1} of {repetitions}: {name}")
            times = programs.times(pattern, least_seconds)
            for key, ratio in ratios_of(times).items():
                seen.setdefault(key, []).append(ratio)
            for key, value in times.items():
                if "Floor" in key:
                    floors.setdefault(key, []).append(value)
    return ({key: statistics.median(values) for key, values in seen.items()},
            {key: statistics.median(values) for key, values in floors.items()})


def machine():
    """The machine in a few words."""
    pages = os.sysconf("SC_PHYS_PAGES") * os.sysconf("SC_PAGE_SIZE")
    return f"{os.cpu_count()} cores, {round(pages / 2**30)} GiB"


def today():
    return time.strftime("%Y-%m-%d")
