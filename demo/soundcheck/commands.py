# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""Checks what the typed commands printed and returned, as the timeline has it.

Events of a command (all with "id"):
  typed       it was started; "line" is what was typed
  printed     it printed "line", on its output or its error output
  returned    it ended; "status" is its exit status
"""

import dataclasses
import re

from .check import Check


@dataclasses.dataclass
class ExpectedCommand:
    id: str
    status: int
    prints: list  # a regular expression for each line

    def matches(self, lines):
        return len(lines) == len(self.prints) and all(map(re.fullmatch, self.prints, lines))


@dataclasses.dataclass
class Command:
    """What the timeline says of one command."""
    id: str
    lines: list = dataclasses.field(default_factory=list)
    statuses: list = dataclasses.field(default_factory=list)


def parse(described):
    return {name: ExpectedCommand(name, entry["exit"], entry["prints"])
            for name, entry in described.items()}


def follow(events):
    """The commands by their ids."""
    commands = {}
    for event in events:
        if event["event"] == "typed":
            commands.setdefault(event["id"], Command(event["id"]))
        elif event["event"] == "printed":
            commands[event["id"]].lines.append(event["line"])
        elif event["event"] == "returned":
            commands[event["id"]].statuses.append(event["status"])
    return commands


def check_lines(subject, lines, expected):
    """The lines are long, so they are shown only if the check fails."""
    passed = expected.matches(lines)
    measured, wanted = ((f"lines: {len(lines)}", f"lines: {len(lines)}") if passed else
                        (" | ".join(lines) or "nothing", " | ".join(expected.prints) or "nothing"))
    return Check(subject, "prints what it should", passed, measured, wanted)


def check_commands(commands, expectations):
    for expected in expectations.values():
        subject, command = f"command {expected.id}", commands.get(expected.id)
        if command is None:
            yield Check(subject, "was typed", False, "not in the timeline", "typed")
            continue
        status = ", ".join(map(str, command.statuses)) or "no end"
        yield Check(subject, "exits as it should", status == str(expected.status), status,
                    str(expected.status))
        yield check_lines(subject, command.lines, expected)
    for unexpected in sorted(set(commands) - set(expectations)):
        yield Check(f"command {unexpected}", "is expected", False, "in the timeline",
                    "not expected")
