# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""Measures the time from a request to the first sample at the device, also for other players.

All players play the same file on the same device: the stopwatch plug-in behind ALSA's conversion, which
notes when the first sample was due. The players take turns, and figures are compared within a repetition.
Players that are not installed or play nothing are left out.
"""

import array
import json
import math
import os
import pathlib
import shutil
import signal
import statistics
import subprocess
import tempfile
import time
import wave

from latency.soundserver import SoundServer

RATE = 48000
SOUND_SECONDS, MUSIC_SECONDS = 0.06, 1.0
COLD_RUNS = 5  # of each player in a repetition
WARM_RUNS = 25
HOST_REQUESTS = 12
TIMEOUT = 60

OURS, FLOOR, CANBERRA = "tavo_play", "aplay", "libcanberra"
SERVER = "paplay, by PulseAudio"


def write_wave(path, seconds):
    """A cosine: its first sample is the loudest."""
    samples = array.array("h")
    for frame in range(round(RATE * seconds)):
        samples.extend(2 * [round(12000 * math.cos(2 * math.pi * 1000 * frame / RATE))])
    with wave.open(str(path), "wb") as file:
        file.setnchannels(2)
        file.setsampwidth(2)
        file.setframerate(RATE)
        file.writeframes(samples.tobytes())


def wait_for(process):
    """Waits until the process ends. Kills it after the timeout."""
    deadline = time.monotonic() + TIMEOUT
    while os.waitpid(process, os.WNOHANG)[0] == 0:
        if time.monotonic() > deadline:
            os.kill(process, signal.SIGKILL)
            os.waitpid(process, 0)
            return
        time.sleep(0.01)


class FirstSample:
    """The stopwatch, the sounds and the players."""

    def __init__(self, build):
        self.build = pathlib.Path(build)
        self.programs = self.build / "benchmarks"

    def run(self, repetitions, progress):
        """Medians in seconds, and ratios: see ratios_of()."""
        with tempfile.TemporaryDirectory(prefix="tavo-latency-") as folder:
            self.prepare(pathlib.Path(folder))
            with SoundServer(self.folder, self.environment) as server:
                if server.runs:
                    self.players[SERVER] = ["paplay", self.sound]
                    self.server_environment = server.environment
                seen = []
                for repetition in range(repetitions):
                    progress(f"repetition {repetition + 1} of {repetitions}: first sample")
                    seen.append(self.repetition())
        return {what: statistics.median(one[what] for one in seen)
                for what in seen[0] if all(what in one for one in seen)}

    def prepare(self, folder):
        self.folder = folder
        self.heard, self.requested = folder / "heard", folder / "requested"
        self.sound, self.music = str(folder / "sound.wav"), str(folder / "music.wav")
        write_wave(self.sound, SOUND_SECONDS)
        write_wave(self.music, MUSIC_SECONDS)
        configuration = folder / "asound.conf"
        configuration.write_text(
            "</usr/share/alsa/alsa.conf>\n"
            f'pcm_type.stopwatch {{ lib "{self.programs}/libstopwatch_pcm.so" }}\n'
            f'pcm.sound {{ type plug slave.pcm {{ type stopwatch heard "{self.heard}" }} }}\n'
            "pcm.music { type plug slave.pcm { type stopwatch } }\n")
        self.environment = dict(os.environ, ALSA_CONFIG_PATH=str(configuration), HOME=str(folder))
        self.write_host_configuration()
        players = {
            OURS: [str(self.programs / "tavo_play"), "sound", self.sound],
            FLOOR: ["aplay", "-q", "-D", "sound", self.sound],
            CANBERRA: [str(self.programs / "canberra_play"), "sound", self.sound],
            "gst-play-1.0": ["gst-play-1.0", "-q", "--no-interactive",
                             "--audiosink=alsasink device=sound", self.sound],
        }
        self.players = {name: command for name, command in players.items()
                        if shutil.which(command[0])}

    def write_host_configuration(self):
        self.host_configuration = self.folder / "host.json"
        self.host_configuration.write_text(json.dumps({"modules": [
            "powermanager",
            {"name": "player", "config": {"music": self.music, "mainDevice": "music",
                                          "notificationsDevice": "sound"}},
            "notifications",
            {"name": "latency", "config": {"sound": self.sound, "requested": str(self.requested),
                                           "count": HOST_REQUESTS}},
        ]}))

    def repetition(self):
        seen = {}
        for name in self.players:
            self.cold(name)  # fills the caches
        for _ in range(COLD_RUNS):
            for name in self.players:
                seen.setdefault(("cold", name), []).append(self.cold(name))
        result = {key: statistics.median(values) for key, values in seen.items()
                  if None not in values}
        for name in (OURS, CANBERRA):
            if ("cold", name) in result:
                result["warm", name] = statistics.median(self.warm(name)[1:])
        first, *others = self.requests()
        result["request", "first"] = first
        result["request", "warm"] = statistics.median(others)
        return {**result, **ratios_of(result)}

    def cold(self, name):
        """Seconds from the start of the process; None if nothing was heard."""
        self.heard.write_text("")
        command = self.players[name]
        nothing = os.open(os.devnull, os.O_RDWR)
        actions = [(os.POSIX_SPAWN_DUP2, nothing, stream) for stream in (0, 1, 2)]
        started = time.monotonic_ns()
        environment = self.server_environment if name == SERVER else self.environment
        process = os.posix_spawnp(command[0], command, environment, file_actions=actions)
        os.close(nothing)
        wait_for(process)
        moments = self.moments()
        if not moments and name == OURS:
            raise RuntimeError(f"{command[0]} played nothing")
        return (moments[0] - started) * 1e-9 if moments else None

    def warm(self, name):
        """Seconds from the call to the first sample, for several sounds in one process."""
        self.heard.write_text("")
        done = subprocess.run([*self.players[name], str(WARM_RUNS)], env=self.environment,
                              check=True, timeout=TIMEOUT, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        return self.since(map(int, done.stdout.split()), WARM_RUNS)

    def requests(self):
        """Seconds from a request in the host to the first sample, with ducking and acquire, while music
        plays."""
        self.heard.write_text("")
        subprocess.run([self.build / "bin" / "tavo-host", "--config", self.host_configuration],
                       env=self.environment, check=True, timeout=TIMEOUT, stdin=subprocess.DEVNULL,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        return self.since(map(int, self.requested.read_text().split()), HOST_REQUESTS)

    def moments(self):
        return [int(line) for line in self.heard.read_text().split()]

    def since(self, requested, count):
        result = [(heard - moment) * 1e-9 for moment, heard in zip(requested, self.moments())]
        if len(result) != count:
            raise RuntimeError(f"{len(result)} of {count} sounds were heard")
        return result


def ratios_of(seconds):
    """The ratios from the figures of one repetition."""
    result = {}
    floor = seconds.get(("cold", FLOOR))
    library = seconds.get(("warm", CANBERRA))
    for (kind, name), value in seconds.items():
        if kind == "cold" and floor:
            result["cold ratio", name] = value / floor
        elif kind != "cold" and library:
            result[f"{kind} ratio", name] = value / library
    return result
