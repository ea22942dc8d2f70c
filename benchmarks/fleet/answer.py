#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""How long a device takes to answer a call that shows a message, beside a bare echo through the same broker.

Usage: answer.py BUILD

BUILD is the folder of a build with the target tavo_fleet_benchmark. Prints the median time and the rate of both, and
the memory and the wake-ups of the device while nothing happens.
"""

import json
import pathlib
import socket
import subprocess
import sys
import tempfile
import time

SEQUENTIAL = 2000
MANY = 8000
WINDOW = 20
IDLE_SECONDS = 31


def free_port():
    with socket.socket() as listener:
        listener.bind(("127.0.0.1", 0))
        return listener.getsockname()[1]


def wait_for(file, text):
    for _ in range(1000):
        if text in file.read_text():
            return
        time.sleep(0.01)
    sys.exit(f"{file} has no {text!r}:\n{file.read_text()}")


def start(folder, name, *command, text=None, **environment):
    log = folder / f"{name}.log"
    process = subprocess.Popen(command, stdout=log.open("w"), stderr=subprocess.STDOUT,
                               env={"PATH": "/usr/sbin:/usr/bin:/bin", "QT_NO_GLIB": "1",
                                    "HOME": str(folder), **environment})
    if text:
        wait_for(log, text)
    return process


def switches(pid):
    """How often the threads of a process have waited."""
    count = 0
    for task in pathlib.Path(f"/proc/{pid}/task").iterdir():
        for line in (task / "status").read_text().splitlines():
            if line.startswith("voluntary_ctxt_switches"):
                count += int(line.split()[1])
    return count


def memory(pid):
    """The memory that only this process uses, in KiB."""
    rollup = pathlib.Path(f"/proc/{pid}/smaps_rollup").read_text().splitlines()
    return sum(int(line.split()[1]) for line in rollup if line.startswith("Private_"))


def resident(pid):
    for line in pathlib.Path(f"/proc/{pid}/status").read_text().splitlines():
        if line.startswith("VmRSS"):
            return int(line.split()[1])
    return 0


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
    for count, window in (SEQUENTIAL, 1), (MANY, WINDOW):
        for peer in "echo", "porch", "echo", "porch":
            print(f"window {window}:", subprocess.check_output(
                [build / "benchmarks/tavo_round_trips", str(port), peer, str(count), str(window)],
                text=True).strip(), flush=True)
    time.sleep(2)  # the last events are published
    before = switches(device.pid)
    time.sleep(IDLE_SECONDS)
    print(f"idle: {(switches(device.pid) - before) / IDLE_SECONDS:.2f} wake-ups a second, "
          f"{memory(device.pid) / 1024:.1f} MiB private, {resident(device.pid) / 1024:.1f} MiB resident")


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    processes = []
    with tempfile.TemporaryDirectory() as folder:
        try:
            run(pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(folder), processes)
        finally:
            for process in reversed(processes):
                process.terminate()
            for process in processes:
                process.wait()


if __name__ == "__main__":
    main()
