# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""The picture of a run: what was heard and shown when."""

from . import canvas, checks, displaychecks, lanes

WIDTH = 1500
LEFT, RIGHT = 74, 28
HEAD, FOOT, GAP = 96, 58, 14
MUSIC = (70, 90, 125)
NOTIFICATIONS = (90, 98, 110)
COLOURS = [(37, 116, 207), (214, 69, 65), (22, 150, 105), (142, 84, 190), (217, 119, 6),
           (8, 145, 178), (190, 60, 130), (101, 130, 20)]
GREY = (150, 156, 166)
DEVICE = (70, 120, 100)


def colours(story, expected):
    """A colour for each notification, in their order; grey for those without a sound."""
    given, result = iter(COLOURS * len(story.notifications)), {}
    for name in story.notifications:
        known = expected.notifications.get(name)
        result[name] = next(given) if known and known.frequency else GREY
    return result


def notification_rows(story, expected, palette):
    rows = []
    together = {item.together for item in expected.display.notifications.values()}
    for item in story.notifications.values():
        known = expected.notifications.get(item.id)
        since = next(moment for moment in (item.sent, item.queued, item.started, item.ended)
                     if moment is not None)
        until = item.ended if item.ended is not None else story.end
        rows.append(lanes.Row(known.label if known else item.id, palette[item.id], since, until,
                              item.sounding, item.outcome or "",
                              linked=item.sent if item.id in together else None))
    return rows


def display_colours(story, expected, palette):
    """A message has the colour of its stripe on the screen, else that of the sound sent with it."""
    result = {}
    for name in story.display.notifications:
        known = expected.display.notifications.get(name)
        result[name] = known and known.colour or palette.get(known and known.together, GREY)
    return result


def display_rows(story, expected, palette):
    rows = []
    for item in story.display.notifications.values():
        known = expected.display.notifications.get(item.id)
        since = min(moment for moment in (item.sent, item.opened, *map(min, item.shown), story.end)
                    if moment is not None)
        until = item.closed if item.closed is not None else story.end
        rows.append(lanes.Row(known.label if known else item.id, palette[item.id], since, until,
                              item.shown, item.outcome or "", times_on_display(item, known),
                              item.sent if known and known.together else None))
    return rows


def times_on_display(item, expected):
    """A message's time on display: measured / requested."""
    if not item.shown:
        return ""
    wanted = displaychecks.requested(item, expected.outcome if expected else "expired")
    measured = displaychecks.spans(item)
    return measured if wanted is None else f"{measured} / {displaychecks.milliseconds(wanted)}"


def stains(track, story, expected, palette):
    """The stains of the notification device's curve: where a sound is due and audible."""
    sounds = checks.Sounds(track, expected)
    result = []
    for item in story.notifications.values():
        known = expected.notifications.get(item.id)
        if known and known.frequency and item.sounding:
            due = track.during(*checks.lifetime(item))
            mask = sounds.audible[known.frequency] & due
            result.append((known.label, palette[item.id], mask))
    return result


def build_lanes(tracks, story, expected, spans, axis):
    palette = colours(story, expected)
    ducked = [lanes.Shade(begin, end, f"ducked, {end - begin:.1f} s")
              for begin, end in story.ducked]
    stack = [
        lanes.LoudnessLane("Main audio", "loudness of the music, and when it was ducked",
                           tracks["main"], MUSIC, ducked),
        lanes.LoudnessLane("Notification device", "loudness, coloured by the sound that was heard",
                           tracks["notifications"], NOTIFICATIONS,
                           stains=stains(tracks["notifications"], story, expected, palette)),
        lanes.RowsLane("Sound notifications", "the responses to the requesters",
                       notification_rows(story, expected, palette)),
    ]
    if story.display.notifications:
        message_colours = display_colours(story, expected, palette)
        rows = display_rows(story, expected, message_colours)
        stack.append(lanes.RowsLane(
            "Display", "what was shown, and for how long: measured / requested, or until it was "
            "ended; dashed: sent together with a sound", rows, other_above=True))
    if spans:
        shots = [screen_shot(span, message_colours) for span in spans]
        stack.append(lanes.ShotsLane(
            "Screen", "what tavo-display showed, under the time of each picture", shots, axis))
    if expected.fleet.devices:
        stack.append(lanes.RowsLane(
            "Fleet", "two more devices, called through a broker: when each was online, and when it showed what was "
            "sent to both", fleet_rows(story, expected)))
    return stack


def fleet_rows(story, expected):
    """When each device was online; then each call to each device, which waits until it is answered."""
    rows = [lanes.Row(f"{label} · online", DEVICE, min(spans)[0] if spans else story.begin, story.end, spans)
            for device, label in expected.fleet.devices.items()
            for spans in [story.fleet.online.get(device, [])]]
    shown = [call for call in expected.fleet.calls.values() if call.outcome]
    for call, colour in zip(shown, COLOURS):
        for device, label in expected.fleet.devices.items():
            item = story.fleet.deliveries.get(f"{call.id} on {device}")
            if item is None or call.id not in story.fleet.called:
                continue
            until = story.end if item.ended is None else item.ended
            active = [] if item.answered is None else [(item.answered, until)]
            rows.append(lanes.Row(f"{call.label} · {label}", colour, story.fleet.called[call.id], until, active,
                                  item.ends[0][1] if item.ends else ""))
    return rows


def screen_shot(span, palette):
    """The middle one of a message's shots is neither its first nor its last."""
    shot = span.shots[len(span.shots) // 2]
    return lanes.PlacedShot(shot.begin, shot.message(), palette.get(span.id, GREY))


def draw_head(surface, story, failed):
    surface.text(LEFT, 30, "Tavo: sound and display notifications over music", 21, bold=True)
    verdict = (f"{failed} checks FAILED" if failed else "every check passed")
    surface.text(LEFT, 58, f"{len(story.notifications)} sounds and "
                           f"{len(story.display.notifications)} messages in "
                           f"{story.end - story.begin:.1f} s, {verdict}", 12.5,
                 (200, 40, 40) if failed else canvas.MUTED)
    draw_legend(surface, WIDTH - RIGHT, 58)


def draw_legend(surface, right, y):
    """Explains the signs, from right to left."""
    grey = (110, 118, 130)

    def entry(text, draw, sign):
        nonlocal right
        right -= surface.width_of(text, 11)
        surface.text(right, y, text, 11, canvas.MUTED)
        right -= sign + 7
        draw(right)
        right -= 20

    entry("failed or refused", lambda x: surface.cross(x + 5, y, 4.5, lanes.RowsLane.MARKS["failed"],
                                                       2.4), 10)
    entry("cancelled or closed", lambda x: surface.box(x, y - 4.5, x + 9, y + 4.5, radius=1.5,
                                             fill=lanes.RowsLane.MARKS["cancelled"]), 9)
    entry("finished or time over", lambda x: surface.dot(x + 5, y, 5, lanes.RowsLane.MARKS["finished"]), 10)
    entry("waiting or paused", lambda x: surface.box(x, y - 6, x + 26, y + 6, fill=(*grey, 60),
                                                     radius=4), 26)
    entry("sounding or shown", lambda x: surface.box(x, y - 6, x + 26, y + 6, fill=grey, radius=4), 26)
    entry("main audio ducked", lambda x: surface.box(x, y - 6, x + 26, y + 6,
                                                     fill=(*lanes.DUCKED, 50)), 26)


def draw(path, tracks, story, expected, spans, failed):
    begin = min(track.start for track in tracks.values())
    axis = lanes.TimeAxis(begin, max(track.end for track in tracks.values()), LEFT, WIDTH - RIGHT)
    stack = build_lanes(tracks, story, expected, spans, axis)
    height = HEAD + sum(lane.height + GAP for lane in stack) - GAP + FOOT
    surface = canvas.Canvas(WIDTH, height)
    draw_head(surface, story, failed)
    top = HEAD
    for lane in stack:
        lane.draw(surface, axis, top)
        top += lane.height + GAP
    lanes.draw_time_axis(surface, axis, top - GAP)
    surface.save(path)
