#!/usr/bin/python3
"""Draws src/resources/quilldeck.ico: a white quill over a small deck of sheets.

Needs Debian's python3-pil. Run it after a change of the drawing and commit the icon with it.
"""

import pathlib
from PIL import Image, ImageDraw

SIZES = (16, 20, 24, 32, 48, 256)
CANVAS = 2048  # drawn large and scaled down, as Pillow does not smooth its edges

BACK = (18, 62, 110, 255)
MIDDLE = (37, 104, 172, 255)
FRONT = (62, 142, 222, 255)
FEATHER = (255, 255, 255, 255)
NIB = (255, 200, 87, 255)


def curve(start, bend, end, steps=48):
    """Points of a quadratic Bezier curve, in hundredths of the canvas."""
    for step in range(steps + 1):
        t = step / steps
        yield tuple(((1 - t) ** 2 * a + 2 * t * (1 - t) * b + t * t * c) * CANVAS / 100
                    for a, b, c in zip(start, bend, end))


def drawing():
    image = Image.new("RGBA", (CANVAS, CANVAS), (0, 0, 0, 0))
    draw = ImageDraw.Draw(image)

    def sheet(left, top, right, bottom, colour):
        box = [side * CANVAS / 100 for side in (left, top, right, bottom)]
        draw.rounded_rectangle(box, radius=CANVAS * 0.09, fill=colour)

    sheet(22, 2, 98, 78, BACK)
    sheet(12, 12, 88, 88, MIDDLE)
    sheet(2, 22, 78, 98, FRONT)

    tip, root = (95, 6), (32, 72)
    vane = list(curve(tip, (88, 62), root)) + list(curve(root, (26, 22), tip))
    draw.polygon(vane, fill=FEATHER)
    draw.line(list(curve((84, 19), (56, 40), (30, 75))), fill=FRONT, width=CANVAS * 4 // 100)
    draw.polygon(list(curve((36, 64), (30, 74), (14, 89)))
                 + list(curve((14, 89), (34, 80), (40, 68))), fill=NIB)
    return image


def main():
    source = drawing()
    images = [source.resize((size, size), Image.Resampling.LANCZOS) for size in SIZES]
    target = pathlib.Path(__file__).parents[2] / "src" / "resources" / "quilldeck.ico"
    images[-1].save(target, sizes=[image.size for image in images], append_images=images[:-1])


if __name__ == "__main__":
    main()
