#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""How a broker and tavo fleet do with thousands of devices: fleet.py BUILD [COUNT]

Connects COUNT (10000) simulated devices to a mosquitto, lists and calls them, and kills them all at once. Fails
unless every state, answer and will has arrived.
"""

import json
import pathlib
import resource
import socket
import subprocess
import sys
import tempfile
import time

TIME_LIMIT = "60"


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def memory_of(process):
    """In KiB."""
    for line in pathlib.Path(f"/proc/{process.pid}/status").read_text().splitlines():
        if line.startswith("VmRSS:"):
            return int(line.split()[1])
    raise RuntimeError("no VmRSS")


def start_broker(folder, port):
    configuration = pathlib.Path(folder) / "mosquitto.conf"
    configuration.write_text(f"user root\nlistener {port} 127.0.0.1\nallow_anonymous true\n"
                             "max_queued_messages 0\n")
    process = subprocess.Popen(["/usr/sbin/mosquitto", "-c", configuration],
                               stderr=subprocess.DEVNULL)
    while True:
        try:
            socket.create_connection(("127.0.0.1", port), 1).close()
            return process
        except OSError:
            time.sleep(0.02)


class Devices:
    """Processes with simulated devices. Each device needs three file descriptors."""

    def __init__(self, build, port, count):
        share = 5000
        self.processes = [subprocess.Popen(
            [build / "benchmarks/tavo_simulated_fleet", str(port), str(first),
             str(min(share, count - first))], stdout=subprocess.PIPE, text=True)
            for first in range(0, count, share)]

    def time_of_next_step(self):
        return max(float(process.stdout.readline().split()[1]) for process in self.processes)

    def kill(self):
        for process in self.processes:
            process.kill()


def timed(command):
    begin = time.monotonic()
    output = subprocess.run(command, check=True, capture_output=True, timeout=120).stdout
    return time.monotonic() - begin, json.loads(output)


def main():
    build = pathlib.Path(sys.argv[1])
    count = int(sys.argv[2]) if len(sys.argv) > 2 else 10000
    hard = resource.getrlimit(resource.RLIMIT_NOFILE)[1]
    resource.setrlimit(resource.RLIMIT_NOFILE, (hard, hard))
    port = free_port()
    with tempfile.TemporaryDirectory() as folder:
        broker = start_broker(folder, port)
        before = memory_of(broker)
        devices = Devices(build, port, count)
        for what in ("connected", "states at the broker"):
            print(f"{what}: {devices.time_of_next_step():.2f} s")
        print(f"memory of the broker: {(memory_of(broker) - before) / count:.1f} KiB a device")

        fleet = [build / "bin/tavo", "fleet", "--broker", f"mqtt://127.0.0.1:{port}", "--json",
                 "--reply-timeout", TIME_LIMIT]
        seconds, listed = timed(fleet + ["list"])
        online = sum(device["online"] and "display" in device["state"]
                     for device in listed["devices"])
        print(f"tavo fleet list: {online} of {count} states, {seconds:.2f} s")
        seconds, called = timed(fleet + ["show", "--group", "all", "Water", "Room 301"])
        print(f"tavo fleet show: {called['answered']} of {count} answers, {seconds:.2f} s")

        wills = subprocess.Popen(["mosquitto_sub", "-V", "5", "-q", "1", "-p", str(port), "-R", "-C", str(count),
                                  "-t", "tavo/v1/+/online"], stdout=subprocess.PIPE)
        time.sleep(3)  # it does not say when it has subscribed, and gets all the retained ones first
        begin = time.monotonic()
        devices.kill()
        gone = wills.communicate(timeout=120)[0].split().count(b"0")
        print(f"wills: {gone} of {count}, {time.monotonic() - begin:.2f} s")
        broker.terminate()
        broker.wait()
    return 0 if online == called["answered"] == gone == count else 1


if __name__ == "__main__":
    sys.exit(main())
