# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""A phase of the soak: a host that is loaded, brought to rest and inspected, again and again."""

import json
import queue
import time

from . import processes, verdict
from .host import Host

IDLE = 1.0  # seconds for which a host at rest is observed
SETTLE = 0.3
SAMPLES_APART = 2.0


class Stuck(Exception):
    """Something is still to come but nothing happens, or the host has ended."""


class Phase:
    """The findings are strings. The samples are dictionaries; "quiet" marks those of quiet points."""

    def __init__(self, name, factor, stuck_after, settings, folder, show):
        self.name = name
        self.factor = factor
        self.stuck_after = stuck_after
        self.settings = settings
        self.folder = folder
        self.show = show
        self.findings = []
        self.samples = []
        self.figures = {}
        self.loaded = 0.0  # seconds, by the clock on the wall
        self.log_lines = 0
        self.events = queue.Queue()
        self.begun = time.monotonic()
        self.host = None
        self.progress = (0, time.monotonic())
        self.next_sample = 0.0

    def run(self, seconds, interval, faults, interrupted):
        """`faults` is None or has harm() and rest()."""
        self.host = Host(self.settings.host, self.settings.configuration,
                         self.settings.environment, self.settings.socket, self.events.put)
        try:
            self.host.connect()
            self._take_until("ready")
            end = time.monotonic() + seconds
            while not interrupted.is_set() and (time.monotonic() < end or not self.quiet):
                self._load(min(interval, max(1.0, end - time.monotonic())), faults, interrupted)
                self._rest()
            status = self.host.end()
            if status != 0:
                self._find(f"the host ended with status {status} after SIGTERM")
        except Stuck as stuck:
            self._find(str(stuck), explain=True)
        finally:
            if faults is not None:
                faults.rest()
            self.host.kill()
            self.log_lines = self.host.log_lines
        for alarm in self.host.alarms:
            self._find("in the log: " + alarm)
        self.findings += verdict.judge(self.quiet)

    @property
    def quiet(self):
        return [sample for sample in self.samples if sample["quiet"]]

    def _load(self, seconds, faults, interrupted):
        self.host.say(do="load")
        if faults is not None:
            faults.harm()
        begin = time.monotonic()
        self.progress = (self.progress[0], begin)
        try:
            while time.monotonic() - begin < seconds and not interrupted.is_set():
                self._take(timeout=0.25)
                self._sample_now_and_then()
        finally:
            if faults is not None:
                faults.rest()
            self.loaded += time.monotonic() - begin

    def _rest(self):
        self.host.say(do="rest")
        self.progress = (self.progress[0], time.monotonic())
        quiet = self._take_until("quiet")
        self.figures = quiet["figures"]
        time.sleep(SETTLE)
        before = processes.sample(self.host.pid)
        time.sleep(IDLE)
        after = processes.sample(self.host.pid)
        if before is None or after is None:
            raise Stuck(self._ended())
        self._add(after, quiet=True, heap=quiet["heap"], mapped=quiet["mapped"],
                  idle_sleeps=after["sleeps"] - before["sleeps"],
                  idle_cpu=after["cpu"] - before["cpu"])
        if after["fds"] != self.quiet[0]["fds"]:
            (self.folder / f"descriptors-{len(self.quiet)}.txt").write_text(
                "\n".join(processes.descriptors(self.host.pid)) + "\n")

    def _take_until(self, wanted):
        while True:
            event = self._take(timeout=1.0)
            if event is not None and event["event"] == wanted:
                return event

    def _take(self, timeout):
        try:
            event = self.events.get(timeout=timeout)
        except queue.Empty:
            event = None
        if event is not None:
            self._note(event)
        if not self.host.is_running():
            raise Stuck(self._ended())
        if time.monotonic() - self.progress[1] > self.stuck_after:
            raise Stuck(f"nothing has gone on for {self.stuck_after:.0f} s; {self.awaited()}")
        return event

    def _note(self, event):
        kind = event["event"]
        if kind == "status":
            self.figures = event["figures"]
            self.last_status = event
            if event["progress"] != self.progress[0]:
                self.progress = (event["progress"], event["at"])
        elif kind == "violation":
            self._find(event["what"])
            self._write_actions(event["actions"])
        else:
            self.progress = (self.progress[0], event["at"])

    last_status = None

    def awaited(self):
        if self.last_status is None:
            return "the load module has said nothing"
        age = time.monotonic() - self.last_status["at"]
        return (f"awaited {age:.1f} s ago: {self.last_status['awaited'] or 'nothing'}; "
                f"{self.last_status['unanswered']} unanswered")

    def _ended(self):
        return f"the host ended by itself, with status {self.host.process.poll()}"

    def _sample_now_and_then(self):
        if time.monotonic() < self.next_sample:
            return
        self.next_sample = time.monotonic() + SAMPLES_APART
        sample = processes.sample(self.host.pid)
        if sample is not None:
            self._add(sample, quiet=False)
        self.show(self)

    def _add(self, sample, **more):
        sample.update(more, phase=self.name, t=round(time.monotonic() - self.begun, 2))
        self.samples.append(sample)

    def _find(self, what, explain=False):
        self.findings.append(what)
        if not explain:
            return
        if self.last_status is not None:
            self._write_actions(self.last_status["actions"])
        lines = [what, *processes.describe(self.host.pid), "", "The log's end:", *self.host.log]
        (self.folder / f"stuck-{self.name.replace(' ', '-')}.txt").write_text("\n".join(lines) + "\n")

    def _write_actions(self, actions):
        path = self.folder / f"actions-{self.name.replace(' ', '-')}.txt"
        with path.open("a") as file:
            file.write("\n".join(actions) + "\n----\n")

    def dump(self):
        return {"name": self.name, "factor": self.factor, "loaded": self.loaded,
                "findings": self.findings, "figures": self.figures, "logLines": self.log_lines}


def write_json(path, phases):
    path.write_text(json.dumps([phase.dump() for phase in phases], indent=2) + "\n")
