#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""How far apart devices whose clocks are in step begin a sound that has a start time.

Usage: spread.py BUILD [DEVICES [SOUNDS]]

BUILD is the folder of a build with the target tavo_fleet_benchmark. Each of DEVICES (4) has a host and a sound device of
its own, which notes when the first sample is heard. All are on this machine, so they share one clock. They get SOUNDS (20)
sounds. Prints how late the first device was, and how much later the last one; the first sound of each host is
listed apart, because it loads what plays.
"""

import json
import math
import pathlib
import statistics
import struct
import subprocess
import sys
import time
import wave

from programs import free_port, processes_in_a_folder, start

RATE = 48000
SOUND_SECONDS = 0.2
AHEAD_SECONDS = 1.0
TIMEOUT = 30


def write_sound(file):
    with wave.open(str(file), "wb") as sound:
        sound.setparams((2, 2, RATE, 0, "NONE", ""))
        for i in range(int(RATE * SOUND_SECONDS)):
            value = int(8000 * math.cos(2 * math.pi * 440 * i / RATE))
            sound.writeframesraw(struct.pack("<hh", value, value))


class Device:
    def __init__(self, build, folder, name, port, processes):
        folder = folder / name
        folder.mkdir()
        self.heard = folder / "heard"
        self.heard.touch()
        write_sound(folder / "bell.wav")
        bus = f"unix:path={folder}/bus"
        (folder / "asound.conf").write_text(
            "</usr/share/alsa/alsa.conf>\n"
            f'pcm_type.stopwatch {{ lib "{build}/benchmarks/libstopwatch_pcm.so" }}\n'
            f'pcm.heard {{ type plug slave.pcm {{ type stopwatch heard "{self.heard}" }} }}\n')
        (folder / "host.json").write_text(json.dumps({"modules": [
            "powermanager",
            {"name": "player", "config": {"mainDevice": "null", "notificationsDevice": "heard"}},
            "notifications",
            {"name": "dbus", "config": {"bus": bus, "notifications": False}}]}))
        (folder / "fleet.json").write_text(json.dumps({
            "device": name, "store": f"{folder}/fleet.db", "allow": {"sounds": {"folder": str(folder)}},
            "broker": {"url": f"mqtt://127.0.0.1:{port}"}}))
        processes.append(start(folder, "bus", "dbus-daemon", "--session", "--nofork", "--address", bus,
                               "--print-address", text="unix:"))
        processes.append(start(folder, "host", build / "bin/tavo-host", "--config", folder / "host.json",
                               text="Serving org.tavo.Model1", ALSA_CONFIG_PATH=str(folder / "asound.conf")))
        processes.append(start(folder, "fleet", build / "bin/tavo-fleet", "--config", folder / "fleet.json",
                               "--bus", bus, text="the host is there"))

    def moments(self, count):
        """When the sounds were heard, in seconds since 1970."""
        end = time.monotonic() + TIMEOUT
        while len(lines := self.heard.read_text().split()) < count:
            if time.monotonic() > end:
                raise RuntimeError(f"{len(lines)} of {count} sounds were heard")
            time.sleep(0.02)
        difference = time.time_ns() - time.monotonic_ns()
        return (int(lines[-1]) + difference) * 1e-9


def show(what, rounds):
    for name, values in (("first device late by", [first for first, _ in rounds]),
                         ("spread", [last - first for first, last in rounds])):
        print(f"{what}: {name} {statistics.median(values) * 1e3:.1f} ms, at most {max(values) * 1e3:.1f} ms")


def run(build, folder, processes, devices, sounds):
    port = free_port()
    (folder / "mosquitto.conf").write_text(f"listener {port} 127.0.0.1\nallow_anonymous true\n")
    processes.append(start(folder, "broker", "mosquitto", "-c", folder / "mosquitto.conf", text="running"))
    fleet = [Device(build, folder, f"device-{i}", port, processes) for i in range(devices)]
    time.sleep(1)  # until all have subscribed
    rounds = []
    for count in range(1, sounds + 1):
        at = math.ceil((time.time() + AHEAD_SECONDS) * 1e3)
        call = json.dumps({"id": f"bell-{count}", "call": "sound", "sound": "bell", "at": at})
        subprocess.run(["mosquitto_pub", "-V", "5", "-q", "1", "-p", str(port), "-t", "tavo/v1/group/all/call",
                        "-m", call], check=True, timeout=TIMEOUT)
        late = [device.moments(count) - at * 1e-3 for device in fleet]
        rounds.append((min(late), max(late)))
        time.sleep(0.5)
    show("first sound", rounds[:1])
    show(f"{sounds - 1} further sounds, {devices} devices", rounds[1:])


def main():
    if not 2 <= len(sys.argv) <= 4:
        sys.exit(__doc__)
    devices = int(sys.argv[2]) if len(sys.argv) > 2 else 4
    sounds = int(sys.argv[3]) if len(sys.argv) > 3 else 20
    with processes_in_a_folder() as (folder, processes):
        run(pathlib.Path(sys.argv[1]).resolve(), folder, processes, devices, sounds)


if __name__ == "__main__":
    main()
