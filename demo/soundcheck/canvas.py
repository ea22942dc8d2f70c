# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""A drawing surface with smooth edges: the picture is drawn large and scaled down at the end."""

from PIL import Image, ImageDraw, ImageFont

SCALE = 3
FONTS = "/usr/share/fonts/truetype/dejavu/"
INK = (38, 44, 54)
MUTED = (112, 121, 134)
RULE = (225, 229, 235)
PAPER = (255, 255, 255)
PANEL = (250, 251, 253)


class Canvas:
    def __init__(self, width, height):
        self.size = (width, height)
        self.image = Image.new("RGB", (width * SCALE, height * SCALE), PAPER)
        self.pen = ImageDraw.Draw(self.image, "RGBA")  # blends colours that have an alpha
        self._fonts = {}

    def font(self, size, bold=False):
        key = (size, bold)
        if key not in self._fonts:
            name = "DejaVuSans-Bold.ttf" if bold else "DejaVuSans.ttf"
            self._fonts[key] = ImageFont.truetype(FONTS + name, round(size * SCALE))
        return self._fonts[key]

    def width_of(self, text, size, bold=False):
        return self.font(size, bold).getlength(text) / SCALE

    def text(self, x, y, text, size=12, fill=INK, anchor="lm", bold=False, halo=None):
        """The anchor is Pillow's: l, m or r, then a, m or s. A halo keeps lines away from the text."""
        self.pen.text((x * SCALE, y * SCALE), text, font=self.font(size, bold), fill=fill,
                      anchor=anchor, stroke_width=3 * SCALE if halo else 0, stroke_fill=halo)
        if halo:  # again, as Pillow draws text with a stroke too bold
            self.text(x, y, text, size, fill, anchor, bold)

    def line(self, points, fill, width=1.0):
        self.pen.line([(x * SCALE, y * SCALE) for x, y in points], fill=fill,
                      width=max(1, round(width * SCALE)), joint="curve")

    def dashes(self, x, top, bottom, fill, width=1.0, dash=4):
        y = top
        while y < bottom:
            self.line([(x, y), (x, min(y + dash, bottom))], fill, width)
            y += 2 * dash

    def area(self, points, fill):
        self.pen.polygon([(x * SCALE, y * SCALE) for x, y in points], fill=fill)

    def box(self, left, top, right, bottom, fill=None, outline=None, radius=0, width=1.0):
        self.pen.rounded_rectangle(
            (left * SCALE, top * SCALE, max(left, right) * SCALE, bottom * SCALE), radius * SCALE,
            fill=fill, outline=outline, width=round(width * SCALE) if outline else 0)

    def dot(self, x, y, radius, fill, outline=None):
        self.pen.ellipse([(x - radius) * SCALE, (y - radius) * SCALE, (x + radius) * SCALE,
                          (y + radius) * SCALE], fill=fill, outline=outline, width=SCALE)

    def cross(self, x, y, radius, fill, width=2.0):
        for slope in (-1, 1):
            self.line([(x - radius, y - slope * radius), (x + radius, y + slope * radius)], fill,
                      width)

    def paste(self, left, top, width, image):
        size = (round(width * SCALE), round(width * SCALE * image.height / image.width))
        self.image.paste(image.resize(size, Image.LANCZOS), (round(left * SCALE), round(top * SCALE)))

    def save(self, path):
        self.image.resize(self.size, Image.LANCZOS).save(path, optimize=True)
