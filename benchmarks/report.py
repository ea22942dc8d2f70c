#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""Runs all measurements, prints the tables, and updates them in a document."""

import argparse
import pathlib
import sys

import measure
import picture
from dbus import notify
from host import start
from latency import firstsample

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
    "recordSoundBuild": "a sound, six fields, built",
    "recordSoundRead": "a sound, six fields, read",
    "recordMessageBuild": "a message, five fields, built",
    "recordMessageRead": "a message, five fields, read",
    "recordResponseBuild": "a response, two fields, built",
    "recordResponseRead": "a response, two fields, read",
    "queuedSound": "a queued sound",
    "openNotification": "an open display notification",
    "closedMessage": "a closed message's node",
}
MEMORY_GOALS = {"queuedSound": 1331, "openNotification": 1536, "closedMessage": 410}
# What is shown, its key, its unit, its goal and its digits.
HOST_FIGURES = [
    ("executed until it answers, ms", "start", 1e-3, 15, 2),
    ("notifications loaded and its worker made, ms", "module", 1e-3, 1, 2),
    ("the same after the player module, ms", "moduleBehind", 1e-3, None, 2),
    ("private memory, quiet, MiB", "private", 2**20, 10, 2),
    ("private memory, playing music, MiB", "musicPrivate", 2**20, None, 2),
    ("wake-ups a second, quiet", "wakeUps", 1, 0, 0),
    ("wake-ups a second, playing music", "musicWakeUps", 1, None, 0),
]
OURS, FLOOR, CANBERRA = firstsample.OURS, firstsample.FLOOR, firstsample.CANBERRA
WARM_NAMES = {
    ("warm", OURS): "`SimplePlayer::play()`",
    ("warm", CANBERRA): "libcanberra's `ca_context_play_full()`",
    ("request", "warm"): "request in the host",
    ("request", "first"): "the first request in a host",
}
FIRST_SAMPLE_GOALS = {
    ("warm ratio", OURS): 1.2,
    ("request", "warm"): 5e-3,
    ("cold ratio", OURS): 1,
}
# What is shown, its key, its unit, its goal and its digits.
BUS_FIGURES = [
    ("many at once with 100,000 open, against 1,000 open", ("growth", None), 1, 2, 2),
    ("each of 10,000 closed, against opened", ("closeAll", 10000), 1, 2, 2),
    ("each of 100,000 closed, against opened", ("closeAll", 100000), 1, 2, 2),
    ("executed until it owns its name, against the bare server", ("start", None), 1, 2, 2),
    ("maximum wait of another client during 1 MiB bodies, ms", ("ping", "tavo"), 1e-3, 20, 1),
    ("the same of the bare server, ms", ("ping", "bare"), 1e-3, None, 1),
    ("one of 10,000 closed, us", ("closeOne", 10000), 1e-6, None, 0),
    ("one of 100,000 closed, us", ("closeOne", 100000), 1e-6, None, 0),
    ("memory of each of 100,000, KiB", ("memory", 100000), 1024, None, 2),
]
BUS_GOALS = {10000: 2}


def rated(value, goal, digits=2, unit=""):
    if goal is None:
        return f"{value:.{digits}f}{unit}"
    return f"{value:.{digits}f}{unit} ({'goal' if value <= goal else '**over**'} {goal:g})"


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
    for name, what, unit, goal, digits in HOST_FIGURES:
        floor = host.get(what + "Floor")
        yield [name, rated(host[what] / unit, goal, digits),
               f"{host[what] / floor:.1f}" if floor else ""]


def first_sample_row(name, heard, key):
    goal = FIRST_SAMPLE_GOALS.get(key)
    ratio = heard.get((f"{key[0]} ratio", key[1]))
    ratio_goal = FIRST_SAMPLE_GOALS.get((f"{key[0]} ratio", key[1]))
    return [name, rated(heard[key] * 1e3, goal and goal * 1e3, unit=" ms"),
            "" if ratio is None else rated(ratio, ratio_goal)]


def warm_rows(heard):
    return [first_sample_row(name, heard, key) for key, name in WARM_NAMES.items() if key in heard]


def cold_players(heard):
    """The players measured from process start, sorted by time."""
    return sorted((key for key in heard if key[0] == "cold"), key=heard.get)


def cold_rows(heard):
    return [first_sample_row(f"`{key[1]}`" if key[1] == OURS else key[1], heard, key)
            for key in cold_players(heard)]


def bus_rows(bus):
    for name, what in (("many at once", "many"), ("one after the other", "single")):
        yield [name, *(rated(bus[(what, size)], BUS_GOALS.get(size)) for size in notify.SIZES)]


def server_rows(bus, peers):
    """The servers with 10,000 open, the fastest first. A slow peer may have opened fewer."""
    size = notify.PEER_SIZE
    servers = {
        "bare server": {"opened": size, "each": bus[("opening", "bare", size)],
                        "single": bus[("single", "bare", size)], "memory": None},
        "`tavo-host`": {"opened": size, "each": bus[("opening", "tavo", size)],
                        "single": bus[("single", "tavo", size)], "memory": bus[("memory", size)]},
        **peers}
    for name, seen in sorted(servers.items(), key=lambda server: server[1]["each"]):
        memory = "" if seen["memory"] is None else f"{seen['memory'] / 1024:.1f}"
        yield [name, f"{seen['opened']:,.0f}", f"{1 / seen['each']:,.0f}",
               f"{seen['single'] * 1e6:,.0f}", memory]


def shares(ratios, memory, host, bus, heard):
    """Every figure that has a goal, as (name, share of the goal)."""
    for what, goals in GOALS.items():
        for size, goal in goals.items():
            yield f"{NAMES[what]}, {size:,}", ratios[(what, (1, size))] / goal
    for what in measure.PAIRS:
        yield NAMES[what], ratios[(what, None)] / 1.3
    yield "route among 100,000", ratios[("route", 100000)] / 1.5
    for what, value in memory.items():
        yield f"memory of {NAMES[what]}", value / MEMORY_GOALS[what]
    for name, what, unit, goal, _ in HOST_FIGURES:
        if goal:
            yield f"host: {name.rpartition(', ')[0]}", host[what] / unit / goal
    for what, name in (("many", "Notify, many at once"), ("single", "Notify, one by one")):
        for size, goal in BUS_GOALS.items():
            yield f"{name}, {size:,} open", bus[(what, size)] / goal
    for name, what, unit, goal, _ in BUS_FIGURES:
        if goal:
            yield f"D-Bus: {name.partition(', ')[0]}", bus[what] / unit / goal
    names = {("warm ratio", OURS): "play() to first sample, against libcanberra",
             ("request", "warm"): "request to first sample",
             ("cold ratio", OURS): "process start to first sample, against aplay"}
    for key, goal in FIRST_SAMPLE_GOALS.items():
        if key in heard:
            yield names[key], heard[key] / goal


def figures(ratios, floors, memory, host, bus, peers, heard, arguments):
    sizes = [f"{size:,}" for size in measure.SIZES]
    one = [floors[f"{what}Floor/10000/1"] * 1e6 for what in measure.REQUESTS]
    parts = [
        f"Measured by `scripts/bench` on {measure.today()}, {measure.machine()}; medians of "
        f"{arguments.repetitions} interleaved repetitions.\n",
        "Request to reply in one thread, as a multiple of the floor "
        f"({min(one):.2f} to {max(one):.2f} us in this run), by how many are queued in the end:\n",
        table(["operation", *sizes], request_rows(ratios, 1)),
        "The same from another thread, as a multiple of that floor across the same threads:\n",
        table(["operation", *sizes], request_rows(ratios, 2)),
        "Records, against the same hash by hand:\n",
        table(["operation", "ratio"],
              [[NAMES[what], rated(ratios[(what, None)], 1.3)] for what in measure.PAIRS]),
        "A routed request, against one among 10 nodes; a reported change, against one subscriber:\n",
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
        "`Notify` across a bus, as a multiple of a bare server's time, by how many are open:\n",
        table(["calls", *sizes], bus_rows(bus)),
        "The other figures of desktop notifications:\n",
        table(["what", "seen"], [[name, rated(bus[what] / unit, goal, digits)]
                                 for name, what, unit, goal, digits in BUS_FIGURES]),
        f"Servers, opening {notify.PEER_SIZE:,}:\n",
        table(["server", "opened", "a second", "us a call at the end", "KiB each"],
              server_rows(bus, peers)),
        "To the first sample at the device, in a process that has played before; the ratio is to "
        "libcanberra's ALSA driver:\n",
        table(["from", "seen", "ratio"], warm_rows(heard)),
        "From the start of the process to the first sample; the ratio is to aplay:\n",
        table(["player", "seen", "ratio"], cold_rows(heard)),
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
    parser.add_argument("--document", type=pathlib.Path, help="update the figures in this file")
    arguments = parser.parse_args()
    programs = measure.Programs(arguments.build)

    def progress(text):
        print(text, file=sys.stderr, flush=True)

    ratios, floors = measure.run(programs, arguments.repetitions, progress)
    host = start.HostStart(arguments.build).run(arguments.repetitions, progress)
    bus, peers = notify.Notifications(arguments.build).run(arguments.repetitions, progress)
    heard = firstsample.FirstSample(arguments.build).run(arguments.repetitions, progress)
    memory = programs.memory(arguments.count)
    text = figures(ratios, floors, memory, host, bus, peers, heard, arguments)
    print(text)
    if arguments.document:
        put(arguments.document, text)
        picture.draw(arguments.document.with_suffix(".png"), shares(ratios, memory, host, bus, heard),
                     [(key[1], heard[key]) for key in cold_players(heard)])


if __name__ == "__main__":
    main()
