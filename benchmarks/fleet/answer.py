#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""How long a device takes to answer a call that shows a message, beside a bare echo through the same broker.

Usage: answer.py BUILD

BUILD is the folder of a build with the target tavo_fleet_benchmark. Prints the time and the rate of both, with one call
at a time and with several, and how these compare: first with all programs on one processor, where no processor has to
be woken, and then on all. The numbers are the medians of several rounds, in which both take turns. At last it prints the
memory and the wake-ups of the device while nothing happens. Other work on the machine disturbs the times: as root,
"chrt --rr 10 answer.py BUILD" goes before it.
"""

import json
import os
import pathlib
import re
import statistics
import subprocess
import sys
import time

from programs import free_port, processes_in_a_folder, start

CALLS = {1: 500, 20: 2000, 50: 2000}  # in a round, by how many are under way at a time
ROUNDS = 5
IDLE_SECONDS = 31


def switches(pid):
    """How often the threads of a process have waited."""
    count = 0
    for task in pathlib.Path(f"/proc/{pid}/task").iterdir():
        for line in (task / "status").read_text().splitlines():
            if line.startswith("voluntary_ctxt_switches"):
                count += int(line.split()[1])
    return count


def memory(pid):
    """In MiB: what only this process uses, that and its share of what others use too, and all that it has mapped."""
    sizes = {}
    for line in pathlib.Path(f"/proc/{pid}/smaps_rollup").read_text().splitlines()[1:]:
        what, size = line.split(":")
        sizes[what] = int(size.split()[0]) / 1024
    return sizes["Private_Clean"] + sizes["Private_Dirty"], sizes["Pss"], sizes["Rss"]


def place(processes, processors):
    """Lets this program, which the others inherit it from, and all threads of the processes use these processors."""
    os.sched_setaffinity(0, processors)
    for process in processes:
        for task in pathlib.Path(f"/proc/{process.pid}/task").iterdir():
            os.sched_setaffinity(int(task.name), processors)


def compare(build, port, where, window, count):
    rounds = {"echo": [], "porch": []}
    for peer in [*rounds] * ROUNDS:
        line = subprocess.check_output([build / "benchmarks/tavo_round_trips", str(port), peer, str(count),
                                        str(window)], text=True)
        time_taken, rate, errors = (int(number) for number in re.findall(r" ([0-9]+)", line))
        if errors:
            sys.exit(line)
        rounds[peer].append((time_taken, rate))
    (echo_time, echo_rate), (time_taken, rate) = ([statistics.median(column) for column in zip(*rounds[peer])]
                                                  for peer in rounds)
    print(f"{where}, {window} at a time: {time_taken:.0f} us, {time_taken / echo_time:.1f} times the echo's "
          f"{echo_time:.0f} us; {rate:.0f} a second, {rate / echo_rate:.2f} of its {echo_rate:.0f}", flush=True)


def run(build, folder, processes):
    port = free_port()
    bus = f"unix:path={folder}/bus"
    (folder / "mosquitto.conf").write_text(
        f"listener {port} 127.0.0.1\nallow_anonymous true\nmax_queued_messages 0\nset_tcp_nodelay true\n")
    (folder / "host.json").write_text(json.dumps({"modules": [
        "powermanager",
        {"name": "player", "config": {"mainDevice": "null", "notificationsDevice": "null"}},
        "notifications",
        {"name": "dbus", "config": {"bus": bus, "limits": {
            "openNotifications": 100000, "totalOpenNotifications": 100000,
            "requestsPerSecond": 1000000, "storedBytes": 1 << 30,
            "totalStoredBytes": 1 << 30}}}]}))
    (folder / "fleet.json").write_text(json.dumps({
        "device": "porch", "store": f"{folder}/fleet.db",
        "broker": {"url": f"mqtt://127.0.0.1:{port}"}}))
    processes.append(start(folder, "bus", "dbus-daemon", "--session", "--nofork", "--address", bus,
                           "--print-address", text="unix:"))
    processes.append(start(folder, "broker", "mosquitto", "-c", folder / "mosquitto.conf", text="running"))
    processes.append(start(folder, "host", build / "bin/tavo-host", "--config", folder / "host.json",
                           text="Serving org.tavo.Model1"))
    device = start(folder, "device", build / "bin/tavo-fleet", "--config", folder / "fleet.json", "--bus", bus,
                   text="the host is there")
    processes.append(device)
    time.sleep(1)
    processors = os.sched_getaffinity(0)
    for where, used in {"one processor": {max(processors)}, f"all {len(processors)} processors": processors}.items():
        place(processes, used)
        for window, count in CALLS.items():
            compare(build, port, where, window, count)
    time.sleep(2)  # the last events are published
    before = switches(device.pid)
    time.sleep(IDLE_SECONDS)
    private, proportional, resident = memory(device.pid)
    print(f"idle: {(switches(device.pid) - before) / IDLE_SECONDS:.2f} wake-ups a second, "
          f"{private:.1f} MiB private, {proportional:.1f} MiB proportional, {resident:.1f} MiB resident")


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    with processes_in_a_folder() as (folder, processes):
        run(pathlib.Path(sys.argv[1]).resolve(), folder, processes)


if __name__ == "__main__":
    main()
