# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""What a run should do, read from a JSON file:

{
  "music": {"attenuation": 20.0, "fade": 0.25},
  "notifications": {
    "<id>": {
      "label": "what the picture calls it",
      "sound": "<name in sounds.json>",     without it, nothing may be heard
      "ends": "finished",                   or cancelled, failed, refused
      "starts": true,                       false: it gets no playback-started response
      "loop": false,
      "interrupted_by": ["<id>"]            what pauses it; nothing by default
    }
  },
  "display": {                              without it, nothing may be shown
    "tolerance": 0.02,                      of the time on display
    "order": ["<id>"],                      what is on display, one after the other
    "notifications": {
      "<id>": {
        "label": "what the picture calls it",
        "title": "its title on the screen",
        "colour": "#2574cf",                of its stripe on the screen; unique
        "ends": "expired",                  or closed, cancelled
        "shown": true,                      false: it ends before its turn
        "interrupted_by": ["<id>"],         what pre-empts it
        "together": "<id>"                  the sound that is sent at the same time
      }
    }
  },
  "fleet": {                                without it, nothing may be called
    "devices": {"<name>": "what the picture calls it"},
    "calls": {                              to all devices
      "<id>": {
        "label": "what the picture calls it",
        "answer": "shown",                  or done
        "ends": "expired",                  or closed; without it, nothing is shown
        "late": ["<device>"]                what is cut off when it is called, and catches up
      }
    }
  },
  "commands": {                             without it, nothing may be typed
    "<id>": {
      "exit": 0,                            the exit status
      "prints": ["..."]                     what it prints, a regular expression for each line
    }
  }
}
Attenuation is in dB, fade and tolerance in seconds.
"""

import dataclasses
import json

from PIL import ImageColor

from . import commands, displaystory, fleet

OUTCOMES = ("finished", "cancelled", "failed", "refused")


@dataclasses.dataclass
class ExpectedNotification:
    id: str
    label: str
    outcome: str
    starts: bool
    loop: bool
    interrupted_by: list
    frequency: float | None = None  # None: it makes no sound
    length: float | None = None


@dataclasses.dataclass
class ExpectedDisplayNotification:
    id: str
    label: str
    outcome: str
    shown: bool
    interrupted_by: list
    together: str | None
    colour: tuple | None


@dataclasses.dataclass
class ExpectedDisplay:
    tolerance: float = 0.0
    order: list = dataclasses.field(default_factory=list)
    notifications: dict = dataclasses.field(default_factory=dict)


@dataclasses.dataclass
class Expectations:
    attenuation: float
    fade: float
    notifications: dict
    display: ExpectedDisplay
    commands: dict
    fleet: fleet.ExpectedFleet

    def frequencies(self):
        return sorted({item.frequency for item in self.notifications.values() if item.frequency})


def parse(described, sounds):
    """Takes the contents of the file with the expectations and of sounds.json."""
    notifications = {}
    for name, entry in described["notifications"].items():
        outcome = entry["ends"]
        if outcome not in OUTCOMES:
            raise ValueError(f"{name} can't end as {outcome}")
        item = ExpectedNotification(
            id=name, label=entry.get("label", name), outcome=outcome,
            starts=entry.get("starts", outcome in ("finished", "cancelled")),
            loop=entry.get("loop", False), interrupted_by=entry.get("interrupted_by", []))
        if "sound" in entry:
            sound = sounds["notifications"][entry["sound"]]
            item.frequency, item.length = sound["frequency"], sound["length"]
        notifications[name] = item
    return Expectations(described["music"]["attenuation"], described["music"]["fade"],
                        notifications, parse_display(described.get("display"), notifications),
                        commands.parse(described.get("commands", {})),
                        fleet.parse(described.get("fleet")))


def parse_display(described, sounds):
    if described is None:
        return ExpectedDisplay()
    notifications = {}
    for name, entry in described["notifications"].items():
        item = ExpectedDisplayNotification(
            id=name, label=entry.get("label", name), outcome=entry["ends"],
            shown=entry.get("shown", True), interrupted_by=entry.get("interrupted_by", []),
            together=entry.get("together"),
            colour=ImageColor.getrgb(entry["colour"]) if "colour" in entry else None)
        if item.outcome not in displaystory.END_KINDS:
            raise ValueError(f"display {name} can't end as {item.outcome}")
        if item.together is not None and item.together not in sounds:
            raise ValueError(f"display {name} can't be sent together with {item.together}")
        notifications[name] = item
    return ExpectedDisplay(described["tolerance"], described["order"], notifications)


def load(path, sounds_path):
    with open(path, encoding="utf-8") as file, open(sounds_path, encoding="utf-8") as sounds:
        return parse(json.load(file), json.load(sounds))
