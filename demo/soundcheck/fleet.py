# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""Checks when the devices of a fleet were online, and what became of the calls to them.

Events:
  fleet online       the device "id" is connected to the broker
  fleet away         it is not
  fleet reconnected  its network is back
  fleet called       the call "id" is made
  fleet answered     "id" is "<call> on <device>"; "kind" is shown, done or refused. A repeated call is answered
                     again
  fleet ended        the end of what was shown; "id" as above, "kind" is expired or closed
"""

import dataclasses

from .check import Check

PREFIX = "fleet "


@dataclasses.dataclass
class ExpectedCall:
    id: str
    label: str
    answer: str
    outcome: str | None  # None: nothing is shown, so nothing ends
    late: list  # the devices that are cut off when it is made


@dataclasses.dataclass
class ExpectedFleet:
    devices: dict = dataclasses.field(default_factory=dict)  # their labels
    calls: dict = dataclasses.field(default_factory=dict)


@dataclasses.dataclass
class Delivery:
    """What the timeline says of a call to one device."""
    answers: list = dataclasses.field(default_factory=list)  # (moment, kind)
    ends: list = dataclasses.field(default_factory=list)

    @property
    def answered(self):
        return self.answers[0][0] if self.answers else None

    @property
    def ended(self):
        return self.ends[0][0] if self.ends else None


class FleetStory:
    """What the events say of the fleet."""

    def __init__(self, events):
        self.online = {}  # device: (begin, end)
        self.reconnected = {}  # device: moments
        self.called = {}  # call: moment
        self.deliveries = {}  # "<call> on <device>"
        since = {}
        for event in events:
            if not event["event"].startswith(PREFIX) or "id" not in event:
                continue
            name, moment, subject = event["event"][len(PREFIX):], event["t"], event["id"]
            if name == "online":
                since.setdefault(subject, moment)
                self.online.setdefault(subject, [])
            elif name == "away" and subject in since:
                self.online[subject].append((since.pop(subject), moment))
            elif name == "reconnected":
                self.reconnected.setdefault(subject, []).append(moment)
            elif name == "called":
                self.called[subject] = moment
            elif name in ("answered", "ended"):
                delivery = self.deliveries.setdefault(subject, Delivery())
                getattr(delivery, {"answered": "answers", "ended": "ends"}[name]).append(
                    (moment, event["kind"]))
        for device, begin in since.items():
            self.online[device].append((begin, events[-1]["t"]))

    def back(self, device, moment):
        """When the device, which was away at that moment, was reconnected. None if it was not away."""
        if any(begin <= moment < end for begin, end in self.online.get(device, [])):
            return None
        return next((back for back in self.reconnected.get(device, []) if back > moment), None)


def parse(described):
    if described is None:
        return ExpectedFleet()
    calls = {name: ExpectedCall(name, entry.get("label", name), entry.get("answer", "shown"),
                                entry.get("ends"), entry.get("late", []))
             for name, entry in described["calls"].items()}
    return ExpectedFleet(described["devices"], calls)


def kinds(entries):
    return ", ".join(kind for _, kind in entries) or "nothing"


def check_delivery(subject, delivery, expected):
    answers = {kind for _, kind in delivery.answers}
    yield Check(subject, "is answered", answers == {expected.answer}, kinds(delivery.answers),
                expected.answer)
    ends = [kind for _, kind in delivery.ends]
    wanted = [expected.outcome] if expected.outcome else []
    yield Check(subject, "ends once, as it should", ends == wanted, kinds(delivery.ends),
                ", ".join(wanted) or "nothing")


def check_lateness(name, device, delivery, expected, story):
    """Checks that the device catches up if it was cut off, and that no other device waits for it."""
    called, answered = story.called.get(name), delivery.answered
    backs = {late: story.back(late, called) for late in expected.late} if called else {}
    subject = f"fleet {name} on {device}"
    if device in expected.late:
        back = backs.get(device)
        passed = None not in (back, answered) and answered > back
        yield Check(subject, "is answered when the device is back", passed,
                    "it was not cut off, or did not answer" if None in (back, answered) else
                    f"after {answered - back:+.2f} s", "afterwards")
    elif expected.late:
        back = min((back for back in backs.values() if back is not None), default=None)
        passed = None not in (back, answered) and answered < back
        yield Check(subject, "does not wait for other devices", passed,
                    "no device was away" if back is None else "no answer" if answered is None else
                    f"answered {back - answered:.2f} s before they were back", "before they are back")


def check_fleet(story, expectations):
    expected_ones = {}
    for expected in expectations.calls.values():
        for device in expectations.devices:
            name = f"{expected.id} on {device}"
            expected_ones[name] = expected
            delivery = story.deliveries.get(name, Delivery())
            yield from check_delivery(f"fleet {name}", delivery, expected)
            yield from check_lateness(expected.id, device, delivery, expected, story)
    for unexpected in sorted(set(story.deliveries) - set(expected_ones)):
        yield Check(f"fleet {unexpected}", "is expected", False, "in the timeline", "not expected")
