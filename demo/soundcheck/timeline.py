# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""The timeline of a run, and what it says of each notification.

A timeline is a file of JSON lines, {"t": seconds on the monotonic clock, "event": ..., "id": ...}.
Events of a sound notification (with "id"):
  sent              its enqueue request was sent; optional
  queued            its enqueue request was accepted
  refused           its enqueue request was answered with an error
  started           its playback-started response came
  paused, resumed   optional; without them, the last one started is taken to play, and the one before
                    it to go on when that one ends
  ended             its end response came; "kind" is finished, cancelled or failed
Events without an id: ducked, restored (the main audio), acquired, released (the audio resource).
displaystory.py has the events of the display, commands.py those of the commands, and fleet.py those of the
fleet. Other events are ignored.
"""

import dataclasses
import json

from . import commands, displaystory, fleet

END_KINDS = ("finished", "cancelled", "failed")


@dataclasses.dataclass
class Notification:
    """What the timeline says of one notification."""
    id: str
    sent: float | None = None
    queued: float | None = None
    started: float | None = None
    ended: float | None = None
    outcome: str | None = None
    sounding: list = dataclasses.field(default_factory=list)  # (begin, end) when it is to be heard
    paused: list = dataclasses.field(default_factory=list)  # (begin, end) between two of those
    oddities: list = dataclasses.field(default_factory=list)  # what is wrong with its events


class Story:
    """What the events say of the notifications."""

    def __init__(self, events):
        self.events = sorted(events, key=lambda event: event["t"])
        if not self.events:
            raise ValueError("the timeline is empty")
        self.begin = self.events[0]["t"]
        self.end = self.events[-1]["t"]
        self.notifications = {}
        self.ducked = []  # (begin, end)
        self.acquired = []
        self._playing = []  # ids that started and did not end; the last one sounds
        self._held = set()  # ids that an event says are paused
        self._sounding = None  # (id, since)
        self._open = {}
        for event in self.events:
            self._follow(event)
        self._close_spans()
        self.display = displaystory.DisplayStory(self.events)
        self.commands = commands.follow(self.events)
        self.fleet = fleet.FleetStory(self.events)

    def _follow(self, event):
        name, moment = event["event"], event["t"]
        if name in ("ducked", "acquired"):
            self._open.setdefault(name, moment)
        elif name in ("restored", "released"):
            opened = {"restored": "ducked", "released": "acquired"}[name]
            if opened in self._open:
                getattr(self, opened).append((self._open.pop(opened), moment))
        elif name in ("sent", "queued", "refused", "started", "paused", "resumed", "ended"):
            getattr(self, "_" + name)(self._notification(event["id"]), moment, event)
            self._sound(moment)

    def _notification(self, name):
        return self.notifications.setdefault(name, Notification(name))

    def _sent(self, item, moment, _):
        item.sent = moment

    def _queued(self, item, moment, _):
        if item.queued is not None:
            item.oddities.append("queued twice")
        item.queued = moment

    def _refused(self, item, moment, _):
        # A refused second request with the same id does not affect the queued notification.
        if item.queued is None:
            item.outcome, item.ended = "refused", moment

    def _started(self, item, moment, _):
        if item.started is not None:
            item.oddities.append("started twice")
            return
        if item.ended is not None:
            item.oddities.append("started after its end")
        item.started = moment
        self._playing.append(item.id)

    def _paused(self, item, _moment, _):
        self._held.add(item.id)

    def _resumed(self, item, _moment, _):
        self._held.discard(item.id)
        if item.id in self._playing:
            self._playing.remove(item.id)
            self._playing.append(item.id)

    def _ended(self, item, moment, event):
        kind = event.get("kind")
        if item.ended is not None:
            item.oddities.append("ended twice")
            return
        if kind not in END_KINDS:
            item.oddities.append(f"ended in an unknown way: {kind}")
        item.ended, item.outcome = moment, kind
        if item.id in self._playing:
            self._playing.remove(item.id)

    def _sound(self, moment):
        """Notes which notification should be heard from this moment on."""
        audible = [name for name in self._playing if name not in self._held]
        now = audible[-1] if audible else None
        before = self._sounding[0] if self._sounding else None
        if now == before:
            return
        if before is not None:
            self.notifications[before].sounding.append((self._sounding[1], moment))
        self._sounding = (now, moment) if now is not None else None

    def _close_spans(self):
        for name, opened in self._open.items():
            getattr(self, name).append((opened, self.end))
        if self._sounding:
            name, since = self._sounding
            self.notifications[name].sounding.append((since, self.end))
        for item in self.notifications.values():
            item.paused = [(left, back) for (_, left), (back, _)
                           in zip(item.sounding, item.sounding[1:])]

    def sounding_within(self, begin, end):
        """The ids of what should be heard at some time between the two."""
        return [item.id for item in self.notifications.values()
                if any(since < end and until > begin for since, until in item.sounding)]


def load(path):
    with open(path, encoding="utf-8") as file:
        return Story([json.loads(line) for line in file if line.strip()])
