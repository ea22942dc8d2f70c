# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""Starts the host, beside a bare application as its floor, and looks at it while it is quiet.

The clock starts right before the program is executed; the program writes the time of its first answer.
Both are of the monotonic clock, which is the same in all processes.
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
ANSWER_DESCRIPTOR = 9  # the program's end of the pipe that the answer's time comes through
STARTS = 20  # of each program in one repetition
SETTLE_SECONDS = 1
QUIET_SECONDS = 3


class Started:
    """A program that has been started, and has answered."""

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
        """How often a thread has been given a processor."""
        return sum(int(line.split()[1])
                   for status in self._of_threads("status") for line in status.splitlines()
                   if "ctxt_switches" in line)

    def private_bytes(self):
        """Memory of its own. Every page counts, but for those of a file that every process has (the C
        library) where they are shared: otherwise the figure would depend on who else runs."""
        common = self._files_of_every_process()
        total = 0
        for sizes, file in self._mappings(self.pid):
            private = sizes["Private_Clean"] + sizes["Private_Dirty"]
            total += private if file in common else sizes["Rss"]
        return total

    @staticmethod
    def _files_of_every_process():
        """The files that a program has mapped that needs nothing but the C library."""
        maps = subprocess.run(["cat", "/proc/self/maps"], check=True, stdout=subprocess.PIPE,
                              text=True).stdout
        return {fields[5] for fields in (line.split(maxsplit=5) for line in maps.splitlines())
                if len(fields) == 6 and fields[5].startswith("/")}

    @staticmethod
    def _mappings(process):
        """Every mapping of a process as its sizes in bytes and the file's name."""
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
    """The host, and what is beside it, of one build folder."""

    def __init__(self, folder):
        self.folder = pathlib.Path(folder).resolve()

    def run(self, repetitions, progress):
        """Medians over all repetitions, but of the wake-ups the most."""
        seen = []
        for repetition in range(repetitions):
            progress(f"repetition {repetition + 1} of {repetitions}: the host's start")
            seen.append(self.measure())
        result = {what: statistics.median(figures[what] for figures in seen) for what in seen[0]}
        result["wakeUps"] = max(figures["wakeUps"] for figures in seen)
        return result

    def measure(self):
        """Figures of one repetition, by what they are."""
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
        """Wake-ups a second and bytes, some time after the answer."""
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
        """Figures of a host that plays music to a sound server, which this process must run with."""
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
        """Seconds that notifications took behind the platform's library, and behind the player."""
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
        """The arguments that start the host with a configuration of its own."""
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
