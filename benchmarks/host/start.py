# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""Measures the start of the host, with a bare application as its floor, and the quiet host.

The time runs from just before the program is executed until its first reply, whose time the program
writes. Both use the monotonic clock, which all processes share.
"""

import contextlib
import json
import os
import pathlib
import signal
import statistics
import subprocess
import sys
import tempfile
import time
import wave

SOUND_SERVER = pathlib.Path(__file__).resolve().parents[2] / "scripts/sound-server"
ANSWER_DESCRIPTOR = 9  # the program's end of the pipe, to which it writes the time of the reply
STARTS = 20  # of each program in one repetition
SETTLE_SECONDS = 1
QUIET_SECONDS = 3


class Started:
    """A program that has started and answered."""

    def __init__(self, arguments):
        reading, writing = os.pipe()
        actions = [(os.POSIX_SPAWN_DUP2, writing, ANSWER_DESCRIPTOR),
                   (os.POSIX_SPAWN_OPEN, 2, "/dev/null", os.O_WRONLY, 0)]
        before = time.clock_gettime_ns(time.CLOCK_MONOTONIC)
        self.pid = os.posix_spawn(arguments[0], arguments, os.environ, file_actions=actions)
        os.close(writing)
        with open(reading) as answer:
            line = answer.readline()
        if not line:
            self.stop()
            raise RuntimeError(f"{arguments[0]} ended without an answer")
        self.seconds = (int(line) - before) * 1e-9

    def stop(self):
        os.kill(self.pid, signal.SIGTERM)
        os.waitpid(self.pid, 0)

    def switches(self):
        """How often threads of the program were switched to."""
        return sum(int(line.split()[1])
                   for status in self._of_threads("status") for line in status.splitlines()
                   if "ctxt_switches" in line)

    def private_bytes(self):
        """The program's own memory: all pages but the shared ones of files that every process maps (the C
        library). So the figure does not depend on what else runs."""
        common = self._files_of_every_process()
        total = 0
        for sizes, file in self._mappings(self.pid):
            private = sizes["Private_Clean"] + sizes["Private_Dirty"]
            total += private if file in common else sizes["Rss"]
        return total

    @staticmethod
    def _files_of_every_process():
        """The files that a program maps if it only needs the C library."""
        maps = subprocess.run(["cat", "/proc/self/maps"], check=True, stdout=subprocess.PIPE,
                              text=True).stdout
        return {fields[5] for fields in (line.split(maxsplit=5) for line in maps.splitlines())
                if len(fields) == 6 and fields[5].startswith("/")}

    @staticmethod
    def _mappings(process):
        """Each mapping of a process: its sizes in bytes, and its file's name."""
        for line in pathlib.Path(f"/proc/{process}/smaps").read_text().splitlines():
            name, *values = line.split(maxsplit=5)
            if not name.endswith(":"):
                sizes, file = {}, values[4] if len(values) == 5 else ""
            elif name == "VmFlags:":
                yield sizes, file
            elif values[-1] == "kB":
                sizes[name[:-1]] = int(values[0]) * 1024

    def _of_threads(self, name):
        return [file.read_text() for file in pathlib.Path(f"/proc/{self.pid}/task").glob(f"*/{name}")]


class HostStart:
    """The host of a build folder, and its floor."""

    def __init__(self, folder):
        self.folder = pathlib.Path(folder).resolve()

    def run(self, repetitions, progress):
        """Medians over all repetitions, and the maximum of the wake-ups."""
        seen = []
        for repetition in range(repetitions):
            progress(f"repetition {repetition + 1} of {repetitions}: the host's start")
            seen.append(self.measure())
        result = {what: statistics.median(figures[what] for figures in seen) for what in seen[0]}
        result["wakeUps"] = max(figures["wakeUps"] for figures in seen)
        return result

    def measure(self):
        """The figures of one repetition by name."""
        return {**self._starts(), **self._quiet(), **self._modules(), **self._with_music()}

    def _starts(self):
        seen = {"start": [], "startFloor": []}
        with self._host() as host:
            for _ in range(STARTS):
                for what, arguments in (("startFloor", self._floor()), ("start", host)):
                    program = Started(arguments)
                    seen[what].append(program.seconds)
                    program.stop()
        return {what: statistics.median(values) for what, values in seen.items()}

    def _quiet(self):
        floor = Started(self._floor())
        result = {"privateFloor": floor.private_bytes()}
        floor.stop()
        with self._host() as host:
            wake_ups, result["private"] = self._looked_at(host)
        return {**result, "wakeUps": wake_ups}

    @staticmethod
    def _looked_at(host):
        """Wake-ups per second, and memory in bytes, some time after the start."""
        program = Started(host)
        time.sleep(SETTLE_SECONDS)
        before = program.switches()
        time.sleep(QUIET_SECONDS)
        result = (program.switches() - before) / QUIET_SECONDS, program.private_bytes()
        program.stop()
        return result

    def _with_music(self):
        printed = subprocess.run(
            [SOUND_SERVER, sys.executable, __file__, str(self.folder)], check=True,
            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True).stdout
        return json.loads(printed)

    def look_at_music(self):
        """Figures of a host that plays music. This process must run under scripts/sound-server."""
        with tempfile.NamedTemporaryFile(suffix=".wav") as file:
            with wave.open(file, "wb") as sound:
                sound.setparams((2, 2, 48000, 0, "NONE", ""))
                sound.writeframes(bytes(4 * 48000))
            file.flush()
            with self._host({"music": file.name, "mainDevice": "main"}) as host:
                wake_ups, private = self._looked_at(host)
        if wake_ups == 0:
            raise RuntimeError("there was no music")
        return {"musicWakeUps": wake_ups, "musicPrivate": private}

    def _modules(self):
        """Seconds to load notifications as the first module, and after the player module."""
        alone, behind = [], []
        for _ in range(STARTS):
            alone.append(self._module_seconds(["notifications"]))
            behind.append(self._module_seconds(["powermanager", "player", "notifications"]))
        return {"module": statistics.median(alone), "moduleBehind": statistics.median(behind)}

    def _module_seconds(self, names):
        printed = subprocess.run(
            [self.folder / "benchmarks/tavo_module_start", *map(self._module, names)], check=True,
            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True).stdout
        return json.loads(printed)[-1] * 1e-6

    def _module(self, name):
        return str(self.folder / f"lib/tavo/modules/libtavo_{name}.so")

    def _floor(self):
        return [str(self.folder / "benchmarks/tavo_bare_application"), f"/dev/fd/{ANSWER_DESCRIPTOR}"]

    @contextlib.contextmanager
    def _host(self, player=None):
        """The arguments that start the host with a temporary configuration."""
        modules = ["powermanager", {"name": "player", "config": player or {}}, "notifications"]
        asking = {"name": "asking", "config": {"file": f"/dev/fd/{ANSWER_DESCRIPTOR}"}}
        configuration = {"modules": [*modules, asking],
                         "modulePath": [str(self.folder / "benchmarks")]}
        with tempfile.NamedTemporaryFile("w", suffix=".json") as file:
            json.dump(configuration, file)
            file.flush()
            yield [str(self.folder / "bin/tavo-host"), "--config", file.name]


if __name__ == "__main__":
    print(json.dumps(HostStart(sys.argv[1]).look_at_music()))
