#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""Loads hosts with random requests and faults, and watches them. scripts/soak runs this."""

import argparse
import json
import os
import pathlib
import random
import shlex
import shutil
import signal
import sys
import tempfile
import threading
import types

from soakwatch import faults, phase, picture, report, sounds, web

ROOT = pathlib.Path(__file__).resolve().parents[2]
ACCELERATED = 0.7  # of the time; the rest is for the sound server
MIN_QUIET_POINTS = 14  # in a phase
MAX_LOAD = 60.0  # seconds between two quiet points
MIN_LOOK = 1.5  # seconds that a quiet point takes
FAULTS_PLANTED = ("memory", "descriptors", "threads", "answer", "sound")


def parse(arguments):
    parser = argparse.ArgumentParser(prog="scripts/soak", description=__doc__.splitlines()[0])
    parser.add_argument("hours", type=float, metavar="HOURS")
    parser.add_argument("--seed", type=int, default=random.SystemRandom().randrange(2 ** 31 - 5000))
    parser.add_argument("--factor", type=int, default=20)
    parser.add_argument("--build", type=pathlib.Path, required=True)
    parser.add_argument("--output", type=pathlib.Path, required=True)
    parser.add_argument("--log", default="ERROR")
    parser.add_argument("--only", choices=("accelerated", "server"))
    parser.add_argument("--plant", default="")
    parser.add_argument("--stuck-after", type=float, default=0)
    options = parser.parse_args(arguments)
    if not 0 < options.hours < 10000 or not 1 <= options.factor <= 100 or options.seed < 0:
        parser.error("HOURS must be positive, the factor from 1 to 100, and the seed not negative")
    if not set(filter(None, options.plant.split(","))) <= set(FAULTS_PLANTED):
        parser.error("the faults that can be planted are " + ", ".join(FAULTS_PLANTED))
    return options


def scripted_devices(folder, build):
    """Devices without hardware that use the host's clock and fail now and then."""
    path = folder / "asound.conf"
    path.write_text("</usr/share/alsa/alsa.conf>\n"
                    f'pcm_type.scripted {{ lib "{build}/lib/libscripted_pcm.so" }}\n' + "".join(
                        f'pcm.{name} {{ type scripted behaviour "moody" heard "/dev/null" }}\n'
                        for name in ("main", "notifications")))
    return path


def settings(options, name, factor, folder, environment, http):
    """The settings of a phase's host."""
    here = folder / name
    here.mkdir()
    sounds.make_sounds(here / "sounds", options.seed)
    socket = here / "socket"
    load = {"socket": str(socket), "sounds": str(here / "sounds"), "seed": options.seed,
            "http": http, "statusMs": 1000 * factor, "planted": options.plant}
    configuration = here / "host.json"
    configuration.write_text(json.dumps({
        "log": {"level": options.log},
        "sounds": {"httpTimeout": 2000},
        "modules": [
            {"name": "powermanager", "config": {"revokeTimeout": 100}},
            {"name": "player", "config": {
                "mainDevice": "main", "notificationsDevice": "notifications",
                "music": str(here / "sounds" / "music.wav")}},
            "notifications",
            {"name": "soak", "library": str(options.build / "tests/modules/libtavo_soak.so"),
             "config": load}]}))
    # The threads' caches of free memory would count as used.
    environment = dict(environment, GLIBC_TUNABLES="glibc.malloc.tcache_count=0")
    return types.SimpleNamespace(host=str(options.build / "bin/tavo-host"), socket=socket,
                                 configuration=configuration, environment=environment)


class Progress:
    """Prints a line about the progress. On a terminal, the line is updated."""

    def __init__(self, total):
        self.total = total
        self.before = 0.0
        self.calls = 0

    def show(self, running):
        self.calls += 1
        if not sys.stdout.isatty() and self.calls % 15 != 1:
            return
        sample = running.samples[-1]
        line = (f"{report.clock_text(self.before + running.loaded)} of "
                f"{report.clock_text(self.total)} {running.name}: "
                f"{report.total(running, 'sent')} requests, RSS {sample.get('rss', 0)} KiB, "
                f"{sample['fds']} descriptors, {sample['threads']} threads, "
                f"{len(running.quiet)} quiet points, {len(running.findings)} findings")
        print(f"\r\033[K{line}" if sys.stdout.isatty() else line,
              end="" if sys.stdout.isatty() else "\n", flush=True)


def run_phase(name, factor, seconds, options, folder, made, harm, progress, interrupted):
    stuck_after = options.stuck_after or (20.0 if harm is None else 60.0)
    running = phase.Phase(name, factor, stuck_after, made, options.output, progress.show)
    interval = max(1.0, min(MAX_LOAD, seconds / MIN_QUIET_POINTS - MIN_LOOK))
    running.run(seconds, interval, harm, interrupted)
    progress.before += running.loaded
    return running


def soak(options, folder, interrupted):
    total = options.hours * 3600
    progress = Progress(total)
    http = web.Server(folder, options.seed)
    phases, counts = [], {}
    if options.only != "server":
        http.folder = folder / "accelerated" / "sounds"
        made = settings(options, "accelerated", options.factor, folder, dict(
            os.environ, ALSA_CONFIG_PATH=str(scripted_devices(folder, options.build)),
            LD_PRELOAD=str(options.build / "tests/libsoak_clock.so"),
            SOAK_CLOCK_FACTOR=str(options.factor)), http.address)
        seconds = total if options.only else total * ACCELERATED
        phases.append(run_phase("accelerated", options.factor, seconds, options, folder, made, None,
                                progress, interrupted))
    if options.only != "accelerated" and not interrupted.is_set():
        runtime = folder / "server-runtime"
        runtime.mkdir(mode=0o700)
        server = faults.FaultySoundServer(str(runtime), options.seed)
        try:
            http.folder = folder / "server" / "sounds"
            made = settings(options, "server", 1, folder, server.environment, http.address)
            seconds = total if options.only else total * (1 - ACCELERATED)
            phases.append(run_phase("sound server", 1, seconds, options, folder, made, server,
                                    progress, interrupted))
        finally:
            server.end()
        counts = server.counts
    return phases, counts


def main():
    options = parse(sys.argv[1:])
    options.build = options.build.resolve()
    shutil.rmtree(options.output, ignore_errors=True)
    options.output.mkdir(parents=True)
    options.output = options.output.resolve()
    interrupted = threading.Event()
    for number in (signal.SIGINT, signal.SIGTERM):
        signal.signal(number, lambda received, frame: interrupted.set())
    command = "scripts/soak " + shlex.join(
        argument for argument in sys.argv[1:] if not argument.startswith(("--build=", "--output=")))
    print(f"Seed {options.seed}", flush=True)
    folder = pathlib.Path(tempfile.mkdtemp(prefix="tavo-soak-"))
    try:
        phases, counts = soak(options, folder, interrupted)
    finally:
        shutil.rmtree(folder, ignore_errors=True)
    counts = counts or dict.fromkeys(report.FAULTS, "-")
    text = report.report(command, options.seed, phases, counts)
    (options.output / "table.md").write_text(text)
    report.write_samples(options.output / "samples.csv", phases)
    phase.write_json(options.output / "figures.json", phases)
    picture.draw(options.output / "soak.png", phases, f"{command}, seed {options.seed}")
    print(("\n" if sys.stdout.isatty() else "") + text, end="")
    print(f"Table, samples and details of findings: {options.output}")
    return 1 if any(each.findings for each in phases) else 0


if __name__ == "__main__":
    sys.exit(main())
