#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""Calls devices while their broker, their programs and their network are killed at random, and accounts for
every call: answered, and carried out once. scripts/soak --fleet runs this."""

import argparse
import collections
import concurrent.futures
import json
import pathlib
import random
import subprocess
import sys
import tempfile
import threading
import time

from fleet.devices import Broker, Device
from fleet.proxy import Proxy

CALLS_PER_ROUND = 40  # to each device
TIME_LIMIT = 120  # seconds for the answer to a call


class Faults(threading.Thread):
    """Kills and disturbs between resume() and pause(). One thread for all: what it has started ends with it."""

    def __init__(self, seed, broker, devices, proxy, counts):
        super().__init__(daemon=True)
        self.random = random.Random(seed)
        self.broker, self.devices, self.proxy, self.counts = broker, devices, proxy, counts
        self.active = threading.Event()
        self.acting = threading.Lock()
        self.error = None

    def run(self):
        kinds = (self._kill_broker, self._kill_device, self._kill_device, self._cut, self._cut,
                 self._stall, self._delay)
        try:
            while self.active.wait():
                time.sleep(self.random.uniform(0.2, 2.0))
                with self.acting:
                    if self.active.is_set():
                        self.random.choice(kinds)()
        except (OSError, RuntimeError) as error:
            self.error = error

    def resume(self):
        self.active.set()

    def pause(self):
        """Waits until everything is repaired."""
        self.active.clear()
        with self.acting:
            self.proxy.heal()
        if self.error:
            raise self.error

    def _pause(self, longest):
        time.sleep(self.random.uniform(0.0, longest))

    def _kill_broker(self):
        self.counts["kills of the broker"] += 1
        self.broker.kill()
        self._pause(1.0)
        self.broker.start()

    def _kill_device(self):
        self.counts["kills of a device"] += 1
        device = self.random.choice(self.devices)
        device.kill()
        self._pause(1.0)
        device.start()

    def _cut(self):
        self.counts["cuts of the network"] += 1
        self.proxy.cut()

    def _stall(self):
        self.counts["stalls of the network"] += 1
        self.proxy.stall(True)
        self._pause(12.0)  # longer than the keep-alive, now and then
        self.proxy.stall(False)

    def _delay(self):
        self.counts["changes of the delay"] += 1
        self.proxy.delay = self.random.choice((0.0, 0.01, 0.1, 0.3))


class Calls:
    """Calls devices with tavo fleet, several at a time."""

    def __init__(self, build, port):
        self.command = [build / "bin/tavo", "fleet", "--broker", f"mqtt://127.0.0.1:{port}",
                        "--reply-timeout", str(TIME_LIMIT), "--json"]
        self.pool = concurrent.futures.ThreadPoolExecutor(8)

    def show(self, device, call_id):
        return self.pool.submit(self._call, "shown", device, call_id, [
            "show", "--timeout", "0", "--id", call_id, "Soak", call_id])

    def cancel(self, device, call_id, target):
        return self.pool.submit(self._call, "done", device, call_id,
                                ["cancel", "--id", call_id, target])

    def _call(self, expected, device, call_id, arguments):
        """What is wrong with the answer; nothing if it is good."""
        run = subprocess.run(self.command + ["--device", device] + arguments, check=False,
                             capture_output=True, text=True, timeout=TIME_LIMIT + 60)
        try:
            row = json.loads(run.stdout)["devices"][0]
        except (ValueError, LookupError):
            return f"{call_id}: {run.stderr.strip() or run.stdout}"
        # A cancel may find its target ended: by itself, before tavo-fleet was killed.
        is_good = run.returncode == 0 or row.get("done") is False
        if is_good and expected in row and row["device"] == device:
            return None
        return f"{call_id}: {row}"


def check_messages(device, expected, findings):
    """Every message that was answered is there, once; no other is there."""
    found = device.messages()
    for text in expected:
        if found[text] != 1:
            findings.append(f"{device.name}: {text} is there {found[text]} times")
    for text in set(found) - set(expected):
        findings.append(f"{device.name}: {text} is there, {found[text]} times")


def run_round(number, devices, calls, shown, findings):
    """Shows messages, and cancels those of the round before. Returns what is shown now."""
    futures, now = [], collections.defaultdict(list)
    for index in range(CALLS_PER_ROUND):
        for device in devices:
            call_id = f"{device.name}-{number}-{index}"
            futures.append(calls.show(device.name, call_id))
            now[device.name].append(call_id)
            if index < len(shown[device.name]):
                target = shown[device.name][index]
                futures.append(calls.cancel(device.name, f"cancel-{target}", target))
    for future in futures:
        finding = future.result()
        if finding:
            findings.append(finding)
    return now, len(futures)


def soak(options, folder):
    broker = Broker(folder)
    broker.start()
    proxy = Proxy(broker.port)
    devices = [Device(name, options.build / "bin", folder, proxy.port) for name in ("hall", "porch")]
    for device in devices:
        device.start()
    calls = Calls(options.build, proxy.port)
    counts, findings = collections.Counter(), []
    shown = collections.defaultdict(list)
    faults = Faults(options.seed, broker, devices, proxy, counts)
    faults.start()
    end, number, total = time.monotonic() + options.seconds, 0, 0
    while time.monotonic() < end and not findings:
        faults.resume()
        shown, done = run_round(number, devices, calls, shown, findings)
        faults.pause()
        total += done
        number += 1
        for device in devices:
            check_messages(device, shown[device.name], findings)
        print(f"round {number}: {total} calls answered, findings: {len(findings)}", flush=True)
    return total, counts, findings


def main():
    parser = argparse.ArgumentParser(prog="scripts/soak --fleet", description=__doc__)
    parser.add_argument("seconds", type=float)
    parser.add_argument("--seed", type=int, default=random.SystemRandom().randrange(2 ** 31))
    parser.add_argument("--build", type=pathlib.Path, required=True)
    options = parser.parse_args()
    print(f"seed {options.seed}", flush=True)
    with tempfile.TemporaryDirectory(prefix="tavo-fleet-", ignore_cleanup_errors=True) as name:
        folder = pathlib.Path(name)
        total, counts, findings = soak(options, folder)
        if findings:
            for log in sorted(folder.glob("**/*.log")):
                print(f"--- {log}:\n{log.read_text(errors='replace')[-4000:]}")
    print(f"{total} calls, each answered and carried out once" if not findings else
          "\n".join(findings))
    for what, count in sorted(counts.items()):
        print(f"{count:6} {what}")
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main())
