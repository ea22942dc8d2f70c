# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""The lanes of the picture, one below the other."""

import dataclasses
import math

import numpy as np

from . import canvas

DUCKED = (245, 158, 11)


@dataclasses.dataclass
class TimeAxis:
    """Maps a moment to its place across the picture. Shared by all lanes."""
    begin: float
    end: float
    left: float
    right: float

    def x(self, moment):
        share = (moment - self.begin) / (self.end - self.begin)
        return self.left + min(max(share, 0.0), 1.0) * (self.right - self.left)

    def ticks(self):
        """At most 25 whole seconds, counted from the beginning."""
        duration = self.end - self.begin
        step = next(step for step in (1, 2, 5, 10, 30, 60, 300, 3600) if duration / step <= 25)
        return [(self.begin + second, second) for second in range(0, math.floor(duration) + 1, step)]


class Lane:
    """A panel with a title. Subclasses have draw_content() and content_height."""

    HEAD = 30
    title = ""
    subtitle = ""
    content_height = 0

    @property
    def height(self):
        return self.HEAD + self.content_height

    def draw(self, surface, axis, top):
        surface.text(axis.left, top + self.HEAD / 2, self.title, 13.5, bold=True)
        offset = surface.width_of(self.title, 13.5, bold=True) + 12
        surface.text(axis.left + offset, top + self.HEAD / 2 + 0.5, self.subtitle, 11, canvas.MUTED)
        begin, end = top + self.HEAD, top + self.height
        surface.box(axis.left, begin, axis.right, end, fill=canvas.PANEL)
        for moment, _ in axis.ticks():
            surface.line([(axis.x(moment), begin), (axis.x(moment), end)], canvas.RULE)
        self.draw_content(surface, axis, begin, end)
        surface.box(axis.left, begin, axis.right, end, outline=(203, 209, 218))

    def draw_content(self, surface, axis, top, bottom):
        raise NotImplementedError


@dataclasses.dataclass
class Shade:
    """A labelled span of a lane's background."""
    begin: float
    end: float
    label: str
    colour: tuple = DUCKED


class LoudnessLane(Lane):
    """A device's loudness over time."""

    QUIETEST, LOUDEST, STEP = -60, 0, 10

    def __init__(self, title, subtitle, track, colour, shades=(), stains=(), height=170):
        """Stains fill the curve: (label, colour, mask over the track's moments)."""
        self.title, self.subtitle, self.content_height = title, subtitle, height
        self.track, self.colour, self.shades, self.stains = track, colour, shades, stains

    def draw_content(self, surface, axis, top, bottom):
        def y(level):
            share = (level - self.QUIETEST) / (self.LOUDEST - self.QUIETEST)
            return bottom - np.clip(share, 0, 1) * (bottom - top)

        for shade in self.shades:
            left, right = axis.x(shade.begin), axis.x(shade.end)
            surface.box(left, top, right, bottom, fill=(*shade.colour, 34))
            for edge in (left, right):
                surface.dashes(edge, top, bottom, (*shade.colour, 200))
            surface.text((left + right) / 2, top + 12, shade.label, 11, (166, 97, 0), "mm")
        for level in range(self.QUIETEST, self.LOUDEST + 1, self.STEP):
            if self.QUIETEST < level < self.LOUDEST:
                surface.line([(axis.left, y(level)), (axis.right, y(level))], canvas.RULE)
            surface.text(axis.left - 8, y(level), str(level).replace("-", "−"), 10.5, canvas.MUTED,
                         "rm")
        surface.text(axis.left - 8, top - 13, "dBFS", 10.5, canvas.MUTED, "rm")
        self._draw_curve(surface, axis, y)

    def _draw_curve(self, surface, axis, y):
        shown = self.track.during(axis.begin, axis.end)
        if np.count_nonzero(shown) < 2:
            return
        points = list(zip([axis.x(moment) for moment in self.track.times[shown]],
                          y(self.track.loudness()[shown])))
        base = float(y(self.QUIETEST))
        surface.area([(points[0][0], base), *points, (points[-1][0], base)], (*self.colour, 46))
        for label, colour, mask in self.stains:
            for run in runs(mask[shown]):
                self._draw_stain(surface, points[run], base, label, colour)
        surface.line(points, self.colour, 1.1)

    def _draw_stain(self, surface, points, base, label, colour):
        if len(points) < 2:
            return
        (left, _), (right, _) = points[0], points[-1]
        surface.area([(left, base), *points, (right, base)], (*colour, 190))
        if surface.width_of(label, 10.5) < right - left - 6:
            top = min(y for _, y in points)
            surface.text((left + right) / 2, top - 9, label, 10.5, colour, "mm")


def runs(mask):
    """The slices in which the mask is set."""
    edges = np.flatnonzero(np.diff(np.concatenate(([0], mask.astype(np.int8), [0]))))
    return [slice(begin, end) for begin, end in zip(edges[::2], edges[1::2])]


@dataclasses.dataclass
class Row:
    """A row of a RowsLane: something that waits, is active at times, and ends."""
    label: str
    colour: tuple
    since: float
    until: float
    active: list  # (begin, end)
    end_mark: str = ""  # one of RowsLane.MARKS
    note: str = ""
    linked: float | None = None  # when it was sent together with a row of another lane


class RowsLane(Lane):
    """Shows each of several things in a row of its own."""

    ROW, BAR = 27, 15
    MARKS = {"finished": (22, 128, 82), "expired": (22, 128, 82), "cancelled": (100, 110, 125),
             "closed": (100, 110, 125), "failed": (200, 40, 40), "refused": (200, 40, 40)}

    def __init__(self, title, subtitle, rows, other_above=False):
        """other_above: whether the lane with the linked rows is above this one."""
        self.title, self.subtitle, self.rows, self.other_above = title, subtitle, rows, other_above
        self.content_height = self.ROW * max(1, len(rows)) + 8

    def draw_content(self, surface, axis, top, bottom):
        middles = [top + 4 + self.ROW * (number + 0.5) for number in range(len(self.rows))]
        for middle, row in zip(middles, self.rows):
            if row.linked is not None:
                begin, end = (top, middle) if self.other_above else (middle, bottom)
                surface.dashes(axis.x(row.linked), begin, end, row.colour, 1.4)
        for middle, row in zip(middles, self.rows):
            self._draw_row(surface, axis, middle, row)

    def _draw_row(self, surface, axis, middle, row):
        half = self.BAR / 2
        left, right = axis.x(row.since), axis.x(row.until)
        surface.box(left, middle - half, right, middle + half, fill=(*row.colour, 50), radius=4)
        for begin, end in row.active:
            surface.box(axis.x(begin), middle - half, axis.x(end), middle + half, fill=row.colour,
                        radius=4)
        self._draw_mark(surface, right, middle, row.end_mark)
        text = " · ".join(part for part in (row.label, row.note, row.end_mark) if part)
        width = surface.width_of(text, 11)
        if right + 14 + width < axis.right - 6:
            surface.text(right + 14, middle, text, 11, halo=canvas.PANEL)
        elif left - 8 - width > axis.left:
            surface.text(left - 8, middle, text, 11, anchor="rm", halo=canvas.PANEL)
        else:
            surface.text(left + 8, middle, text, 11, fill=canvas.PAPER)

    def _draw_mark(self, surface, x, y, mark):
        if mark in ("failed", "refused"):
            surface.cross(x + 3, y, 4.5, self.MARKS[mark], 2.4)
        elif mark in ("cancelled", "closed"):
            surface.box(x - 1, y - 4.5, x + 8, y + 4.5, fill=self.MARKS[mark], radius=1.5)
        elif mark in ("finished", "expired"):
            surface.dot(x + 3, y, 5, self.MARKS[mark], canvas.PAPER)


@dataclasses.dataclass
class PlacedShot:
    """A picture of the screen and when it was taken."""
    moment: float
    image: object
    colour: tuple


class ShotsLane(Lane):
    """Pictures of the screen, each with its left edge at its time, in as many rows as they need."""

    WIDTH, GAP, CAPTION = 232, 10, 16

    def __init__(self, title, subtitle, shots, axis):
        self.title, self.subtitle = title, subtitle
        self.places = []  # (shot, left edge, row)
        ends = []  # of the last picture in each row
        for shot in shots:
            left = min(axis.x(shot.moment), axis.right - self.WIDTH - self.GAP)
            row = next((row for row, end in enumerate(ends) if end + self.GAP <= left), len(ends))
            ends[row:row + 1] = [left + self.WIDTH]
            self.places.append((shot, left, row))
        self.row_height = self.CAPTION + self.GAP + max(self._height(shot) for shot in shots)
        self.content_height = self.row_height * len(ends) + self.GAP

    def _height(self, shot):
        return round(shot.image.height * self.WIDTH / shot.image.width)

    def draw_content(self, surface, axis, top, bottom):
        tops = [top + self.GAP + self.row_height * row for _, _, row in self.places]
        for (shot, _, _), upper in zip(self.places, tops):
            surface.dashes(axis.x(shot.moment), top, upper, shot.colour, 1.4)
        for (shot, left, _), upper in zip(self.places, tops):
            surface.text(left, upper + self.CAPTION / 2, f"{shot.moment - axis.begin:.2f} s", 10.5,
                         shot.colour, bold=True, halo=canvas.PANEL)
            surface.paste(left, upper + self.CAPTION, self.WIDTH, shot.image)


def draw_time_axis(surface, axis, y):
    for moment, second in axis.ticks():
        surface.line([(axis.x(moment), y), (axis.x(moment), y + 5)], canvas.MUTED)
        surface.text(axis.x(moment), y + 16, str(second), 10.5, canvas.MUTED, "mm")
    surface.text((axis.left + axis.right) / 2, y + 36, "seconds since the recording began", 11.5,
                 canvas.MUTED, "mm")
