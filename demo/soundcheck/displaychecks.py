# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""Checks what was on display against what was requested."""

from .check import Check, columns

HEARD = "sounds for its whole length"
HEARD_UNTIL_END = "sounds until its end"
SHOWN = "is on display for its time"
FIGURES = (HEARD, HEARD_UNTIL_END, SHOWN)  # what a sound and a message could disturb in each other
FIRST_SHOWN_WITHIN = 0.3  # seconds; starting a sound may block the module for 0.25 s


def milliseconds(seconds):
    return f"{seconds * 1000:.1f} ms"


def spans(item):
    """Its time on display, as a sum if it was shown more than once."""
    parts = " + ".join(f"{(until - since) * 1000:.1f}" for since, until in item.shown) or "0.0"
    return (f"{parts} = " if len(item.shown) > 1 else "") + milliseconds(item.shown_for)


def requested(item, outcome):
    """How long it should have been on display; None if nobody closed or cancelled it."""
    if outcome == "expired":
        return item.timeout
    return None if item.asked is None else item.shown_before(item.asked)


def difference(item, wanted):
    """How much longer than requested it was shown. A command may end it at any time while it runs."""
    late = item.shown_for - wanted
    return late if late < 0 else max(0.0, late - item.asking)


def check_time(subject, item, expected, tolerance):
    wanted = requested(item, expected.outcome)
    if wanted is None:
        yield Check(subject, f"is {expected.outcome}", False, "nobody requested it", "requested")
        return
    until = f" to {milliseconds(wanted + item.asking)}" if item.asking else ""
    yield Check(subject, SHOWN, abs(difference(item, wanted)) <= tolerance,
                spans(item), f"{milliseconds(wanted)}{until} ± {tolerance * 1000:.0f} ms")


def check_waiting(subject, item, expected, tolerance):
    """Checks one that ends before its turn."""
    yield Check(subject, "is never on display", not item.shown, milliseconds(item.shown_for), "0 ms")
    if expected.outcome in ("closed", "cancelled"):
        prompt = (item.asked is not None and item.closed is not None
                  and 0 <= item.closed - item.asked <= tolerance)
        after = ("nobody requested it" if item.asked is None else "never" if item.closed is None
                 else f"after {milliseconds(item.closed - item.asked)}")
        yield Check(subject, f"goes when {expected.outcome}", prompt, after,
                    f"within {tolerance * 1000:.0f} ms")


def check_notification(item, expected, story, tolerance):
    subject = f"display {item.id}"
    outcome = item.outcome or "no end"
    yield Check(subject, "ends as it should", outcome == expected.outcome, outcome,
                expected.outcome)
    if item.oddities:
        yield Check(subject, "is seen in the right order", False, ", ".join(item.oddities), "right")
    if not expected.shown:
        yield from check_waiting(subject, item, expected, tolerance)
        return
    yield from check_time(subject, item, expected, tolerance)
    by = [name for since, until in item.paused for name in story.shown_within(since, until)]
    if by or expected.interrupted_by:
        yield Check(subject, "is interrupted", by == expected.interrupted_by,
                    "by " + (", ".join(by) or "nothing"),
                    "by " + (", ".join(expected.interrupted_by) or "nothing"))


def check_display(story, expectations):
    expected_ones = expectations.notifications
    for expected in expected_ones.values():
        item = story.notifications.get(expected.id)
        if item is None or item.sent is None:
            yield Check(f"display {expected.id}", "was requested", False, "not in the timeline",
                        "sent")
        else:
            yield from check_notification(item, expected, story, expectations.tolerance)
    for unexpected in sorted(set(story.notifications) - set(expected_ones)):
        yield Check(f"display {unexpected}", "is expected", False, "in the timeline",
                    "not expected")
    if expected_ones:
        heads = [name for name, _, _ in story.heads]
        yield Check("display", "shows them in their order", heads == expectations.order,
                    ", ".join(heads), ", ".join(expectations.order))
        gap = story.max_gap()
        yield Check("display", "is not empty while one is due", gap <= FIRST_SHOWN_WITHIN,
                    f"at most {milliseconds(gap)}", f"at most {FIRST_SHOWN_WITHIN * 1000:.0f} ms")


def overlap(first, second):
    """For how long spans of both lists overlap."""
    return sum(max(0.0, min(end, until) - max(begin, since))
               for begin, end in first for since, until in second)


def check_pairs(story, expectations, results):
    """Checks that a sound and a message that are sent together do not disturb each other."""
    for expected in expectations.display.notifications.values():
        item = story.display.notifications.get(expected.id)
        sound = story.notifications.get(expected.together)
        if expected.together is None or item is None or sound is None:
            continue
        subject = f"{sound.id} + {item.id}"
        tolerance = expectations.display.tolerance
        apart = abs(item.sent - sound.sent) if None not in (item.sent, sound.sent) else None
        yield Check(subject, "are sent together", apart is not None and apart <= tolerance,
                    "not both sent" if apart is None else f"{milliseconds(apart)} apart",
                    f"within {tolerance * 1000:.0f} ms")
        both = overlap(sound.sounding, item.shown)
        yield Check(subject, "are on at the same time", both > 0, milliseconds(both), "some time")
        own = [check for check in results if check.subject in (sound.id, f"display {item.id}")]
        figures = [check for check in own if check.statement in FIGURES]
        failed = sum(not check.passed for check in own)
        yield Check(subject, "do not disturb each other", not failed,
                    " and ".join([check.measured for check in figures] +
                                 [f"{failed} failed checks"] * bool(failed)),
                    " and ".join(check.expected for check in figures))


def request(item, wanted):
    """What was requested, in readable form."""
    time = milliseconds(item.timeout) if item.timeout > 0 else "no limit"
    if item.asked is None or wanted is None:
        return time
    until = f" to {milliseconds(wanted + item.asking)}" if item.asking else ""
    return f"{time}, ended after {milliseconds(wanted)}{until}"


def table(story, expectations, begin):
    """What was on display, when and for how long, as lines of text with aligned columns."""
    rows = [("shown", "from - to, in seconds", "measured", "requested", "difference", "end")]
    differences = []
    for item in story.notifications.values():
        expected = expectations.notifications.get(item.id)
        wanted = requested(item, expected.outcome if expected else "expired")
        if wanted is not None and item.shown:
            differences.append(difference(item, wanted))
        rows.append((
            item.id,
            ", ".join(f"{since - begin:.3f} - {until - begin:.3f}" for since, until in item.shown)
            or "never",
            spans(item),
            request(item, wanted),
            f"{differences[-1] * 1000:+.1f} ms" if wanted is not None and item.shown else "",
            item.outcome or "none"))
    lines = columns(rows)
    if differences:
        worst = max(differences, key=abs)
        lines += ["", f"Times on display differ from the requested ones by "
                      f"{abs(worst) * 1000:.1f} ms at most "
                      f"(allowed: {expectations.tolerance * 1000:.0f} ms)"]
    return lines
