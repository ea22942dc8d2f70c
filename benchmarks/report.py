#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""Measures, prints the tables, and puts them into the document that has a place for them."""

import argparse
import pathlib
import sys

import measure
from host import start

BEGIN, END = "<!-- figures: made by scripts/bench -->", "<!-- end of the figures -->"

GOALS = {
    "soundEnqueue": {1000: 1.5, 10000: 2, 100000: 4.5},
    "soundCancel": {1000: 3, 10000: 4, 100000: 10},
    "displayOpen": {1000: 3, 10000: 4, 100000: 10},
    "displayCancel": {1000: 3, 10000: 4, 100000: 10},
}
NAMES = {
    "soundEnqueue": "sound enqueue",
    "soundCancel": "sound cancel (random id)",
    "displayOpen": "display open (message)",
    "displayCancel": "display cancel (random path)",
    "recordBuild": "record of six fields built",
    "recordRead": "record of six fields read",
    "queuedSound": "a queued sound",
    "openNotification": "an open display notification",
    "closedMessage": "a closed message's node",
}
MEMORY_GOALS = {"queuedSound": 1331, "openNotification": 1536, "closedMessage": 410}


def rated(value, goal, digits=2):
    if goal is None:
        return f"{value:.{digits}f}"
    return f"{value:.{digits}f} ({'goal' if value <= goal else '**over**'} {goal:g})"


def request_rows(ratios, threads):
    for what in measure.REQUESTS:
        cells = [rated(ratios[(what, (threads, size))],
                       GOALS[what].get(size) if threads == 1 else None)
                 for size in measure.SIZES]
        yield [NAMES[what], *cells]


def table(head, rows):
    lines = ["| " + " | ".join(head) + " |", "|" + "---|" * len(head)]
    lines += ["| " + " | ".join(row) + " |" for row in rows]
    return "\n".join(lines) + "\n"


def host_rows(host):
    def row(name, what, unit=1, goal=None, digits=2):
        floor = host.get(what + "Floor")
        return [name, rated(host[what] / unit, goal, digits),
                f"{host[what] / floor:.1f}" if floor else ""]

    yield row("executed until it answers, ms", "start", 1e-3, 15)
    yield row("notifications loaded and its worker made, ms", "module", 1e-3, 1)
    yield row("the same behind the player module, ms", "moduleBehind", 1e-3)
    yield row("memory of its own, quiet, MiB", "private", 2**20, 10)
    yield row("memory of its own, playing music, MiB", "musicPrivate", 2**20)
    yield row("wake-ups a second, quiet", "wakeUps", 1, 0, 0)
    yield row("wake-ups a second, playing music", "musicWakeUps", 1, None, 0)


def figures(ratios, floors, memory, host, arguments):
    sizes = [f"{size:,}" for size in measure.SIZES]
    one = [floors[f"{what}Floor/10000/1"] * 1e6 for what in measure.REQUESTS]
    parts = [
        f"Made by `scripts/bench` on {measure.today()}, {measure.machine()}; medians of "
        f"{arguments.repetitions} interleaved repetitions.\n",
        "Request to answer in one thread, as a multiple of the floor "
        f"({min(one):.2f} to {max(one):.2f} us in this run), by how many are queued in the end:\n",
        table(["operation", *sizes], request_rows(ratios, 1)),
        "The same from another thread, as a multiple of that floor across the same threads:\n",
        table(["operation", *sizes], request_rows(ratios, 2)),
        "Records, against the same hash by hand:\n",
        table(["operation", "ratio"],
              [[NAMES[what], rated(ratios[(what, None)], 1.3)] for what in measure.PAIRS]),
        "A routed request, against one among 10 nodes; a change told, against one subscriber:\n",
        table(["operation", "ratio"],
              [["route among 1,000", f"{ratios[('route', 1000)]:.2f}"],
               ["route among 100,000", rated(ratios[("route", 100000)], 1.5)],
               ["tell 10, each", f"{ratios[('tellRows', 10)]:.2f}"],
               ["tell 1,000, each", f"{ratios[('tellRows', 1000)]:.2f}"]]),
        f"Bytes of the heap for each of {arguments.count:,}:\n",
        table(["what", "bytes"],
              [[NAMES[what], rated(value, MEMORY_GOALS[what], 0)] for what, value in memory.items()]),
        "The host with its three modules; the floor is an application of Qt's core that answers one "
        "queued call:\n",
        table(["what", "seen", "multiple of the floor"], host_rows(host)),
    ]
    return "\n".join(parts)


def put(document, text):
    whole = document.read_text()
    before, rest = whole.split(BEGIN)
    after = rest.split(END)[1]
    document.write_text(f"{before}{BEGIN}\n{text}{END}{after}")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", required=True, help="the build folder")
    parser.add_argument("--repetitions", type=int, default=5)
    parser.add_argument("--count", type=int, default=100000, help="items for the memory figures")
    parser.add_argument("--document", type=pathlib.Path, help="put the figures in here")
    arguments = parser.parse_args()
    programs = measure.Programs(arguments.build)

    def progress(text):
        print(text, file=sys.stderr, flush=True)

    ratios, floors = measure.run(programs, arguments.repetitions, progress)
    host = start.HostStart(arguments.build).run(arguments.repetitions, progress)
    text = figures(ratios, floors, programs.memory(arguments.count), host, arguments)
    print(text)
    if arguments.document:
        put(arguments.document, text)


if __name__ == "__main__":
    main()
