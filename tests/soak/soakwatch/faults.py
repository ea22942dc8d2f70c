# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""Faults of the sound server: it is killed, suspended for a while, or loses a device."""

import importlib.machinery
import importlib.util
import os
import pathlib
import random
import signal
import subprocess
import threading

ROOT = pathlib.Path(__file__).resolve().parents[3]
CALM = (1.0, 6.0)  # seconds between two faults
FAULTS = ("kill", "kill", "stall", "sink", "sink", "suspend")


def _sound_server():
    loader = importlib.machinery.SourceFileLoader("sound_server",
                                                  str(ROOT / "scripts" / "sound-server"))
    module = importlib.util.module_from_spec(importlib.util.spec_from_loader(loader.name, loader))
    loader.exec_module(module)
    return module


sound_server = _sound_server()


class FaultySoundServer:
    """A private sound server, and a thread that causes faults until rest() is called."""

    def __init__(self, folder, seed):
        self.folder = folder
        self.dice = random.Random(seed)
        self.counts = dict.fromkeys(("kill", "stall", "sink", "suspend"), 0)
        self.resting = threading.Event()
        self.thread = None
        self._start()

    @property
    def environment(self):
        return self.server.environment

    def _start(self):
        self.server = sound_server.Server(self.folder)
        self.server.wait_until_ready()

    def harm(self):
        self.resting.clear()
        self.thread = threading.Thread(target=self._run, daemon=True)
        self.thread.start()

    def rest(self):
        """Stops the faults. When this returns, the server works."""
        self.resting.set()
        if self.thread is not None:
            self.thread.join()

    def end(self):
        self.rest()
        sound_server.end(self.server.process)

    def _run(self):
        while not self.resting.wait(self.dice.uniform(*CALM)):
            fault = self.dice.choice(FAULTS)
            self.counts[fault] += 1
            getattr(self, "_" + fault)()

    def _pause(self, minimum, maximum):
        self.resting.wait(self.dice.uniform(minimum, maximum))

    def _kill(self):
        self.server.process.kill()
        self.server.process.wait()
        self._pause(0, 2)
        self._start()

    def _stall(self):
        os.kill(self.server.process.pid, signal.SIGSTOP)
        self._pause(0.1, 3)
        os.kill(self.server.process.pid, signal.SIGCONT)

    def _sink(self):
        sink = self.dice.choice(("notif", "main"))
        modules = self._pactl("list", "short", "modules").splitlines()
        for module in modules:
            number, _, rest = module.partition("\t")
            if f"sink_name={sink} " in rest:
                self._pactl("unload-module", number)
        self._pause(0, 1.5)
        self._pactl("load-module", "module-null-sink", f"sink_name={sink}", "format=s16le",
                    f"rate={sound_server.RATE}", f"channels={sound_server.CHANNELS}",
                    "norewinds=1")

    def _suspend(self):
        self._pactl("suspend-sink", "notif", "1")
        self._pause(0.05, 1)
        self._pactl("suspend-sink", "notif", "0")

    def _pactl(self, *arguments):
        return subprocess.run(["pactl", *arguments], env=self.environment, text=True, timeout=20,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.DEVNULL, check=False).stdout
