# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""Draws the results: each figure as a share of its goal, and how soon each player is heard."""

from soundcheck.canvas import INK, MUTED, PANEL, RULE, Canvas

WIDTH, LEFT, RIGHT = 1000, 370, 70
TOP, ROW, BAR, GAP = 56, 21, 13, 56
SCALE = 1.14  # relative to the maximum, which leaves space for its figure
MET, MISSED, OURS, OTHERS = (46, 107, 182), (196, 90, 44), (46, 107, 182), (168, 176, 188)


class Panel:
    """Bars one below the other, on one scale."""

    def __init__(self, canvas, top, title, maximum):
        self.canvas, self.top, self.maximum = canvas, top, maximum
        canvas.text(20, top - 20, title, 14, INK, bold=True)

    def x(self, value):
        return LEFT + (WIDTH - LEFT - RIGHT) * value / self.maximum

    def ground(self, count):
        self.canvas.box(LEFT, self.top, WIDTH - RIGHT, self.top + count * ROW, fill=PANEL,
                        outline=RULE)

    def bar(self, number, name, value, text, colour):
        y = self.top + (number + 0.5) * ROW
        self.canvas.text(LEFT - 10, y, name, 11, INK, "rm")
        self.canvas.box(LEFT, y - BAR / 2, self.x(value), y + BAR / 2, fill=colour)
        self.canvas.text(self.x(value) + 6, y, text, 11, MUTED, halo=PANEL)


def draw(path, shares, players):
    """Shares are (name, share of the goal); players are (name, seconds from process start)."""
    shares = list(shares)
    canvas = Canvas(WIDTH, TOP + (len(shares) + len(players)) * ROW + GAP + 20)
    panel = Panel(canvas, TOP, "Each figure as a share of its goal",
                  max(1.0, *(share for _, share in shares)) * SCALE)
    panel.ground(len(shares))
    canvas.dashes(panel.x(1), TOP, TOP + len(shares) * ROW, INK)
    for number, (name, share) in enumerate(shares):
        panel.bar(number, name, share, f"{share:.2f}", MET if share <= 1 else MISSED)
    canvas.text(panel.x(1), TOP - 8, "goal", 11, INK, "mm")
    panel = Panel(canvas, TOP + len(shares) * ROW + GAP,
                  "From process start to the first sample at the device",
                  max((seconds for _, seconds in players), default=1.0) * SCALE)
    panel.ground(len(players))
    for number, (name, seconds) in enumerate(players):
        panel.bar(number, name, seconds, f"{seconds * 1e3:.1f} ms",
                  OURS if name == "tavo_play" else OTHERS)
    canvas.save(path)
