# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""What a run is expected to do: a JSON file beside the script that drives it.

{
  "music": {"attenuation": 20.0, "fade": 0.25},
  "notifications": {
    "<id>": {
      "label": "what the picture calls it",
      "sound": "<name in sounds.json>",     nothing is to be heard without one
      "ends": "finished",                   or cancelled, failed, refused
      "starts": true,                       false: no playback-started response is expected
      "loop": false,
      "interrupted_by": ["<id>"]            what pauses it; nothing, when left out
    }
  }
}
Attenuation is in dB, fade in seconds.
"""

import dataclasses
import json

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
class Expectations:
    attenuation: float
    fade: float
    notifications: dict

    def frequencies(self):
        return sorted({item.frequency for item in self.notifications.values() if item.frequency})


def parse(described, sounds):
    """described: the expectations file's content; sounds: that of sounds.json."""
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
    return Expectations(described["music"]["attenuation"], described["music"]["fade"], notifications)


def load(path, sounds_path):
    with open(path, encoding="utf-8") as file, open(sounds_path, encoding="utf-8") as sounds:
        return parse(json.load(file), json.load(sounds))
