# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""The table at the end, and the file of samples."""

import csv
import datetime
import os
import pathlib

REQUESTS = ("enqueue sound", "cancel sound", "open display", "cancel display", "acquire",
            "release", "standby", "resume", "revoke", "duck", "play music", "stop music",
            "set volume", "echo", "read rows", "garbage", "register")
EXPLAINED = {"standby": "standby (revokes everything)", "revoke": "revoke sent to the sounds only",
             "garbage": "random values to any node"}
RESPONSES = ("started", "finished", "cancelled", "failed")
FAULTS = {"kill": "sound server killed", "stall": "sound server stalled",
          "sink": "sound device taken away", "suspend": "sound device suspended"}
COLUMNS = ("phase", "t", "quiet", "rss", "pss", "private", "heap", "mapped", "fds", "threads",
           "sleeps", "cpu", "idle_sleeps", "idle_cpu")


def machine():
    memory = next(int(line.split()[1])
                  for line in pathlib.Path("/proc/meminfo").read_text().splitlines()
                  if line.startswith("MemTotal"))
    return f"{os.cpu_count()} cores, {memory / 1048576:.0f} GiB"


def clock_text(seconds):
    whole = round(seconds)
    return f"{whole // 3600}:{whole // 60 % 60:02}:{whole % 60:02}"


class Table:
    """A table with a column for each phase. A row calls a function for each phase."""

    def __init__(self, phases):
        self.phases = phases
        self.rows = [["", *(phase.name for phase in phases)]]

    def row(self, name, value):
        self.rows.append([name, *(str(value(phase)) for phase in self.phases)])

    def text(self):
        widths = [max(len(row[i]) for row in self.rows) for i in range(len(self.rows[0]))]
        lines = ["| " + " | ".join(
            cell.ljust(width) if i == 0 else cell.rjust(width)
            for i, (cell, width) in enumerate(zip(row, widths))) + " |" for row in self.rows]
        rule = "|" + "|".join(("-" * (width + 2)) if i == 0 else "-" * (width + 1) + ":"
                              for i, width in enumerate(widths)) + "|"
        return "\n".join([lines[0], rule, *lines[1:]])


def course(phase, key):
    """The values at the first and the last quiet point, and the maximum of all."""
    values = [sample[key] / (1024 if key == "heap" else 1) for sample in phase.quiet]
    form = "{:.1f}" if key == "heap" else "{:.0f}"
    shown = (values[0], values[-1], max(values)) if values else ()
    return " / ".join(form.format(value) for value in shown) or "-"


def answered(phase, kind):
    figures = phase.figures.get("requests", {}).get(kind)
    return f"{figures['accepted']} / {figures['refused']}" if figures else "-"


def total(phase, key):
    return sum(figures[key] for figures in phase.figures.get("requests", {}).values())


def slowest(phase):
    return max((figures["slowestMs"] for figures in phase.figures.get("requests", {}).values()),
               default=0.0)


def table(phases, faults):
    result = Table(phases)
    result.row("under load, h:mm:ss", lambda phase: clock_text(phase.loaded))
    result.row("speed of the host's clock", lambda phase: phase.factor)
    result.row("time that passed for the host", lambda phase: clock_text(phase.loaded * phase.factor))
    result.row("quiet points", lambda phase: len(phase.quiet))
    result.row("requests", lambda phase: total(phase, "sent"))
    result.row("answered: accepted / refused",
               lambda phase: f"{total(phase, 'accepted')} / {total(phase, 'refused')}")
    for kind in REQUESTS:
        result.row(f"- {EXPLAINED.get(kind, kind)}", lambda phase, kind=kind: answered(phase, kind))
    result.row("**unanswered at the end**", lambda phase: total(phase, "sent") -
               total(phase, "accepted") - total(phase, "refused"))
    result.row("slowest reply, ms of the host's time", lambda phase: f"{slowest(phase):.0f}")
    for kind in RESPONSES:
        result.row(f"sounds {kind}", lambda phase, kind=kind:
                   phase.figures.get("responses", {}).get(kind, "-"))
    result.row("displays shown / gone", lambda phase:
               f"{phase.figures.get('displaysShown', '-')} / {phase.figures.get('displaysGone', '-')}")
    for what in sorted({name for phase in phases for name in phase.figures.get("counts", {})}):
        result.row(what, lambda phase, what=what: phase.figures.get("counts", {}).get(what, 0))
    for fault, name in FAULTS.items():
        result.row(name, lambda phase, fault=fault:
                   faults[fault] if phase.name == "sound server" else "-")
    for key, name in (("heap", "heap in use, KiB"), ("rss", "RSS, KiB"), ("pss", "PSS, KiB"),
                      ("private", "private dirty, KiB"), ("fds", "file descriptors"),
                      ("threads", "threads"), ("idle_sleeps", "wake-ups in an idle second")):
        result.row(f"{name}: first / last / max", lambda phase, key=key: course(phase, key))
    result.row("**findings**", lambda phase: len(phase.findings))
    return result.text()


def report(command, seed, phases, faults, date=None):
    date = date or datetime.date.today().isoformat()
    lines = [f"`{command}`, seed {seed}, {date}, {machine()}", "", table(phases, faults), ""]
    for phase in phases:
        lines += [f"FINDING ({phase.name}): {finding}" for finding in phase.findings]
    return "\n".join(lines).rstrip() + "\n"


def write_samples(path, phases):
    with path.open("w", newline="") as file:
        writer = csv.DictWriter(file, COLUMNS, restval="")
        writer.writeheader()
        for phase in phases:
            writer.writerows(phase.samples)
