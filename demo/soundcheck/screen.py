# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""Who was on the screen when, as the pixels have it."""

import dataclasses
import json

from PIL import Image

from .check import Check

STRIPE = (5, 5)  # a pixel of each message's stripe
EMPTY = (0, 0, 0)
UNKNOWN = "something else"
SEEN_WITHIN = 0.5  # seconds from a change of the display's queue to the pixels


@dataclasses.dataclass
class Shot:
    """What the screen showed from one moment to the next."""
    begin: float
    end: float
    pixel: tuple
    file: object = None

    def message(self):
        """The picture without the empty part of the screen."""
        with Image.open(self.file) as image:
            return image.crop(image.getbbox())


@dataclasses.dataclass
class Seen:
    """A message, or something else, on the screen."""
    id: str
    begin: float
    end: float
    shots: list


def load(folder, end):
    """The shots of a folder that demo/screen.py has written. The last one lasts until the end."""
    lines = (folder / "screen.jsonl").read_text(encoding="utf-8").splitlines()
    entries = [json.loads(line) for line in lines]
    ends = [entry["t"] for entry in entries[1:]] + [end]
    shots = []
    for entry, until in zip(entries, ends):
        file = folder / entry["file"]
        with Image.open(file) as image:
            shots.append(Shot(entry["t"], until, image.getpixel(STRIPE), file))
    return shots


def seen(shots, expectations):
    """The messages that were on the screen, one after the other."""
    names = {item.colour: item.id for item in expectations.notifications.values()}
    spans = []
    before = EMPTY
    for shot in shots:
        if shot.pixel == before != EMPTY:
            spans[-1].end = shot.end
            spans[-1].shots.append(shot)
        elif shot.pixel != EMPTY:
            spans.append(Seen(names.get(shot.pixel, UNKNOWN), shot.begin, shot.end, [shot]))
        before = shot.pixel
    return spans


def check_screen(spans, story, expectations):
    """Compares the pixels with the display's queue."""
    order = [span.id for span in spans]
    heads = [name for name, _, _ in story.heads]
    yield Check("screen", "shows what is on display", order == heads, ", ".join(order),
                ", ".join(heads))
    for name in expectations.notifications:
        shown = [(begin, end) for head, begin, end in story.heads if head == name]
        on = [(span.begin, span.end) for span in spans if span.id == name]
        delays = [abs(moment - due) for span, head in zip(on, shown)
                  for moment, due in zip(span, head)]
        if shown or on:
            prompt = len(on) == len(shown) and max(delays) <= SEEN_WITHIN
            yield Check(f"screen {name}", "comes and goes with the display's queue", prompt,
                        f"{len(on)} times, at most {max(delays, default=0) * 1000:.0f} ms late",
                        f"{len(shown)} times, within {SEEN_WITHIN * 1000:.0f} ms")
