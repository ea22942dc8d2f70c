# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""What was on display in a run, when, and how each notification ended, as the timeline has it.

Events of a display notification (all with "id"):
  display sent          its open request was sent; "timeout" in seconds, 0 for none
  display opened        the open request was accepted
  display refused       the open request was answered with an error
  display shown         it came on display
  display hidden        it left the display, perhaps only until a more urgent one has ended
  display closing       a client closes it
  display cancelling    its cancel request was sent
  display closed        it left the queue; "kind" is expired, closed or cancelled, and missing if
                        a "display told" follows
  display told          its sender learned how it ended; "kind" as above
"""

import dataclasses

PREFIX = "display "
END_KINDS = ("expired", "closed", "cancelled")


@dataclasses.dataclass
class DisplayNotification:
    """What the timeline says of one display notification."""
    id: str
    timeout: float = 0.0
    sent: float | None = None
    opened: float | None = None
    asked: float | None = None  # when somebody closed or cancelled it
    told: float | None = None  # when its sender learned of its end
    closed: float | None = None
    outcome: str | None = None
    shown: list = dataclasses.field(default_factory=list)  # (begin, end) on display
    paused: list = dataclasses.field(default_factory=list)  # (begin, end) between two of those
    oddities: list = dataclasses.field(default_factory=list)  # what is wrong with its events

    @property
    def shown_for(self):
        return sum(until - since for since, until in self.shown)

    @property
    def asking(self):
        """How long the request to close or cancel it took, or 0 if unknown."""
        return self.told - self.asked if self.asked is not None and self.told is not None else 0.0

    def shown_before(self, moment):
        """How long it had been on display at that moment."""
        return sum(min(until, moment) - since for since, until in self.shown if since < moment)


class DisplayStory:
    """What the events say of the display."""

    def __init__(self, events):
        self.notifications = {}
        self.heads = []  # (id, begin, end), in their order
        self._head = None  # (id, since)
        for event in events:
            if event["event"].startswith(PREFIX):
                name = event["event"][len(PREFIX):]
                item = self.notifications.setdefault(event["id"], DisplayNotification(event["id"]))
                getattr(self, "_" + name, self._other)(item, event["t"], event)
        if self._head:
            self._end_head(events[-1]["t"])
        for item in self.notifications.values():
            item.paused = [(left, back) for (_, left), (back, _) in zip(item.shown, item.shown[1:])]

    def _other(self, item, moment, event):
        """Ignores other events."""

    def _sent(self, item, moment, event):
        item.sent, item.timeout = moment, event.get("timeout", 0.0)

    def _opened(self, item, moment, _):
        item.opened = moment

    def _refused(self, item, moment, _):
        item.outcome, item.closed = "refused", moment

    def _closing(self, item, moment, _):
        item.asked = moment

    _cancelling = _closing

    def _shown(self, item, moment, _):
        if item.closed is not None:
            item.oddities.append("shown after its end")
        if self._head:
            item.oddities.append(f"shown at the same time as {self._head[0]}")
            self._end_head(moment)
        self._head = (item.id, moment)

    def _hidden(self, item, moment, _):
        if not self._head or self._head[0] != item.id:
            item.oddities.append("hidden while not on display")
            return
        self._end_head(moment)

    def _closed(self, item, moment, event):
        kind = event.get("kind")
        if item.closed is not None:
            item.oddities.append("closed twice")
            return
        if self._head and self._head[0] == item.id:
            item.oddities.append("closed while on display")
            self._end_head(moment)
        item.closed = moment
        if kind is not None:
            self._end(item, kind)

    def _told(self, item, moment, event):
        item.told = moment
        self._end(item, event.get("kind"))

    def _end(self, item, kind):
        if item.outcome is not None:
            item.oddities.append(f"ended as {item.outcome} and as {kind}")
        if kind not in END_KINDS:
            item.oddities.append(f"closed in an unknown way: {kind}")
        item.outcome = kind

    def _end_head(self, moment):
        name, since = self._head
        self.heads.append((name, since, moment))
        self.notifications[name].shown.append((since, moment))
        self._head = None

    def shown_within(self, begin, end):
        """The ids of what is on display at some time between the two."""
        return [name for name, since, until in self.heads if since < end and until > begin]

    def max_gap(self):
        """The longest time during which the display was empty while something waited."""
        due = [(item.sent, item.closed) for item in self.notifications.values()
               if item.sent is not None and item.closed is not None and item.outcome != "refused"]
        edges = sorted({edge for span in due for edge in span} |
                       {edge for _, since, until in self.heads for edge in (since, until)})
        max_gap = gap = 0.0
        for begin, end in zip(edges, edges[1:]):
            middle = (begin + end) / 2
            wanted = any(since < middle < until for since, until in due)
            served = any(since < middle < until for _, since, until in self.heads)
            gap = gap + end - begin if wanted and not served else 0.0
            max_gap = max(max_gap, gap)
        return max_gap
