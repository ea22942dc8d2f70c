# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""Draws what the hosts used over time: heap, memory, descriptors and threads."""

from soundcheck.canvas import INK, MUTED, PANEL, RULE, Canvas

WIDTH, LEFT, RIGHT = 1000, 90, 40
TOP, LANE, GAP = 70, 110, 34
# Key, title, divisor, and whether to draw quiet points only: under load, the heap depends on the load.
LANES = (("heap", "Heap in use at the quiet points, KiB", 1024, True),
         ("rss", "Resident memory, KiB", 1, False),
         ("fds", "File descriptors", 1, False),
         ("threads", "Threads", 1, False))
COLOURS = ((46, 107, 182), (196, 90, 44))


class Lane:
    """A figure over time, of one host or of two that ran one after the other."""

    def __init__(self, canvas, top, spec, phases, length):
        self.canvas, self.top, self.length = canvas, top, length
        self.key, self.title, self.divisor, self.quiet_only = spec
        self.phases = phases
        values = [self.value(sample) for phase in phases for sample in self.shown(phase)]
        self.max = max(values, default=1)
        self.min = min([0] if self.max < 100 else values, default=0)

    def shown(self, phase):
        return [sample for sample in phase.samples if sample["quiet"] or not self.quiet_only]

    def value(self, sample):
        return sample[self.key] / self.divisor

    def x(self, moment):
        return LEFT + (WIDTH - LEFT - RIGHT) * moment / self.length

    def y(self, value):
        span = max(self.max - self.min, 1)
        return self.top + LANE - (LANE - 12) * (value - self.min) / span

    def draw(self):
        self.canvas.text(LEFT, self.top - 12, self.title, 12, INK)
        self.canvas.box(LEFT, self.top, WIDTH - RIGHT, self.top + LANE, fill=PANEL, outline=RULE)
        for value in (self.min, self.max):
            self.canvas.line([(LEFT, self.y(value)), (WIDTH - RIGHT, self.y(value))], RULE)
            self.canvas.text(LEFT - 8, self.y(value), f"{value:.0f}", 11, MUTED, "rm")
        begin = 0.0
        for phase, colour in zip(self.phases, COLOURS):
            points = [(self.x(begin + sample["t"]), self.y(self.value(sample)))
                      for sample in self.shown(phase)]
            if len(points) > 1:
                self.canvas.line(points, colour, 1.2)
            for sample in phase.quiet:
                self.canvas.dot(self.x(begin + sample["t"]), self.y(self.value(sample)), 2.2, colour)
            begin += phase.samples[-1]["t"] if phase.samples else 0


def draw(path, phases, title):
    length = max(sum(phase.samples[-1]["t"] for phase in phases if phase.samples), 1.0)
    height = TOP + len(LANES) * (LANE + GAP) + 20
    canvas = Canvas(WIDTH, height)
    canvas.text(LEFT, 22, title, 14, INK, bold=True)
    x = LEFT
    for phase, colour in zip(phases, COLOURS):
        canvas.dot(x + 4, 44, 4, colour)
        text = f"{phase.name}, clock {phase.factor} times as fast; dots: quiet points"
        canvas.text(x + 14, 44, text, 11, MUTED)
        x += 40 + canvas.width_of(text, 11)
    for number, spec in enumerate(LANES):
        Lane(canvas, TOP + 14 + number * (LANE + GAP), spec, phases, length).draw()
    bottom = TOP + 14 + len(LANES) * (LANE + GAP) - GAP + 14
    for part in range(5):
        moment = length * part / 4
        canvas.text(LEFT + (WIDTH - LEFT - RIGHT) * part / 4, bottom, f"{moment / 60:.1f} min", 11,
                    MUTED, "mm")
    canvas.save(path)
