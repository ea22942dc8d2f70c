#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""How long a device takes to answer a call that shows a message, beside a bare echo through the same broker.

Usage: answer.py BUILD

BUILD is the folder of a build with the target tavo_fleet_benchmark. Prints the median time and the rate of both, with
one call at a time and with several, how these compare, and the memory and the wake-ups of the device while nothing
happens. Other work on the machine disturbs the times: as root, "chrt --rr 10 answer.py BUILD" goes before it.
"""

import json
import pathlib
import re
import statistics
import subprocess
import sys
import time

from programs import free_port, processes_in_a_folder, start

CALLS = {1: 2000, 20: 8000, 50: 8000}  # by how many are under way at a time
ROUNDS = 2
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
    sums = {"Private": 0, "Pss": 0, "Rss": 0}
    for line in pathlib.Path(f"/proc/{pid}/smaps_rollup").read_text().splitlines()[1:]:
        what = line.split(":")[0].removesuffix("_Clean").removesuffix("_Dirty")
        if what in sums:
            sums[what] += int(line.split()[1]) / 1024
    return [f"{sum:.1f}" for sum in sums.values()]


def compare(build, port, window, count):
    seen = {"echo": [], "porch": []}
    for peer in [*seen] * ROUNDS:
        line = subprocess.check_output([build / "benchmarks/tavo_round_trips", str(port), peer, str(count),
                                        str(window)], text=True).strip()
        print(f"window {window}: {line}", flush=True)
        seen[peer].append([float(number) for number in re.findall(r"[0-9]+", line)[:2]])
    (echo_time, echo_rate), (time_taken, rate) = ([statistics.mean(column) for column in zip(*seen[peer])]
                                                  for peer in seen)
    print(f"window {window}: {time_taken / echo_time:.1f} times the echo's time, {rate / echo_rate:.2f} of its rate")


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
    for window, count in CALLS.items():
        compare(build, port, window, count)
    time.sleep(2)  # the last events are published
    before = switches(device.pid)
    time.sleep(IDLE_SECONDS)
    private, proportional, resident = memory(device.pid)
    print(f"idle: {(switches(device.pid) - before) / IDLE_SECONDS:.2f} wake-ups a second, "
          f"{private} MiB private, {proportional} MiB proportional, {resident} MiB resident")


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    with processes_in_a_folder() as (folder, processes):
        run(pathlib.Path(sys.argv[1]).resolve(), folder, processes)


if __name__ == "__main__":
    main()
