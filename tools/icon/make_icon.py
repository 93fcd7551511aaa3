#!/usr/bin/python3
"""Draws the icons and the menu's bitmap of src/resources.

quilldeck.ico is a white quill over a small deck of sheets, items.ico the deck alone, sync.ico two
arrows that follow each other, bound.ico those in the corner that overlays have, and sync.bmp the
arrows once more for menus. Needs Debian's python3-pil. Run it after a change of a drawing and commit
what it made.
"""
from __future__ import annotations

import io
import math
import pathlib
import struct
from collections.abc import Callable, Iterator

from PIL import Image, ImageDraw

# What the shell's views ask for on screens of 100, 125, 150 and 200 %.
SIZES = (16, 20, 24, 32, 40, 48, 64, 96, 128, 256)
SMALLEST_PNG = 64  # readers of icons may know the plain form only for the classic sizes
Point = tuple[float, float]
Colour = tuple[int, int, int, int]

CANVAS = 2048  # drawn large and scaled down, as Pillow does not smooth its edges

BACK = (18, 62, 110, 255)
MIDDLE = (37, 104, 172, 255)
FRONT = (62, 142, 222, 255)
FEATHER = (255, 255, 255, 255)
NIB = (255, 200, 87, 255)
BOUND = (24, 140, 72, 255)
NOTHING = (255, 0, 255)  # in bitmaps, which have no alpha
MENU_BITMAP = 13


def curve(start: Point, bend: Point, end: Point, steps: int = 48) -> Iterator[Point]:
    """Points of a quadratic Bezier curve, in hundredths of the canvas."""
    for step in range(steps + 1):
        t = step / steps
        x, y = (((1 - t) ** 2 * a + 2 * t * (1 - t) * b + t * t * c) * CANVAS / 100
                for a, b, c in zip(start, bend, end))
        yield x, y


def deck(draw: ImageDraw.ImageDraw) -> None:
    def sheet(left: int, top: int, right: int, bottom: int, colour: Colour) -> None:
        box = [side * CANVAS / 100 for side in (left, top, right, bottom)]
        draw.rounded_rectangle(box, radius=CANVAS * 0.09, fill=colour)

    sheet(22, 2, 98, 78, BACK)
    sheet(12, 12, 88, 88, MIDDLE)
    sheet(2, 22, 78, 98, FRONT)


def quill(draw: ImageDraw.ImageDraw) -> None:
    tip, root = (95, 6), (32, 72)
    vane = list(curve(tip, (88, 62), root)) + list(curve(root, (26, 22), tip))
    draw.polygon(vane, fill=FEATHER)
    draw.line(list(curve((84, 19), (56, 40), (30, 75))), fill=FRONT, width=CANVAS * 4 // 100)
    draw.polygon(list(curve((36, 64), (30, 74), (14, 89)))
                 + list(curve((14, 89), (34, 80), (40, 68))), fill=NIB)


def lines(draw: ImageDraw.ImageDraw) -> None:
    for y, right in ((42, 66), (58, 66), (74, 46)):
        draw.line([(14 * CANVAS / 100, y * CANVAS / 100), (right * CANVAS / 100, y * CANVAS / 100)],
                  fill=FEATHER, width=CANVAS * 6 // 100)


def arrows(draw: ImageDraw.ImageDraw, centre: Point, radius: float, colour: Colour) -> None:
    """Two arrows around `centre`, each along nearly half of a circle."""
    x, y = centre
    width = radius * 0.34
    box = [side * CANVAS / 100 for side in (x - radius, y - radius, x + radius, y + radius)]
    for start in (20, 200):
        draw.arc(box, start, start + 115, fill=colour, width=round(width * CANVAS / 100))
        angle = math.radians(start + 112)
        along = (-math.sin(angle), math.cos(angle))
        out = (math.cos(angle), math.sin(angle))
        middle = radius - width / 2
        head = [(x + out[0] * (middle + side) + along[0] * ahead,
                 y + out[1] * (middle + side) + along[1] * ahead)
                for side, ahead in ((width * 1.25, 0), (-width * 1.25, 0), (0, width * 2.1))]
        draw.polygon([(px * CANVAS / 100, py * CANVAS / 100) for px, py in head], fill=colour)


def badge(draw: ImageDraw.ImageDraw) -> None:
    draw.ellipse([side * CANVAS / 100 for side in (1, 49, 51, 99)], fill=FEATHER)
    draw.ellipse([side * CANVAS / 100 for side in (4, 52, 48, 96)], fill=BOUND)
    arrows(draw, (26, 74), 15, FEATHER)


def drawing(*parts: Callable[[ImageDraw.ImageDraw], None]) -> Image.Image:
    image = Image.new("RGBA", (CANVAS, CANVAS), (0, 0, 0, 0))
    draw = ImageDraw.Draw(image)
    for part in parts:
        part(draw)
    return image


def circle(draw: ImageDraw.ImageDraw) -> None:
    arrows(draw, (50, 50), 44, FRONT)


def plain(image: Image.Image) -> bytes:
    """An image in the form of a device-independent bitmap: bottom up, then the mask."""
    width, height = image.size
    blue_first = image.transpose(Image.Transpose.FLIP_TOP_BOTTOM).tobytes("raw", "BGRA")
    # Pixels have an alpha of their own; who does not know that takes the empty mask.
    mask = bytes((width + 31) // 32 * 4 * height)
    header = struct.pack("<IiiHHIIiiII", 40, width, height * 2, 1, 32, 0,
                         len(blue_first) + len(mask), 0, 0, 0, 0)
    return header + blue_first + mask


def packed(image: Image.Image) -> bytes:
    data = io.BytesIO()
    image.save(data, "PNG", optimize=True)
    return data.getvalue()


def icon_file(images: list[Image.Image]) -> bytes:
    """The bytes of an .ico with these images."""
    parts = [packed(image) if image.width >= SMALLEST_PNG else plain(image) for image in images]
    directory = struct.pack("<HHH", 0, 1, len(parts))
    offset = len(directory) + 16 * len(parts)
    for image, part in zip(images, parts):
        # 256 does not fit into the byte of a side and is written as 0.
        directory += struct.pack("<BBBBHHII", image.width % 256, image.height % 256, 0, 0, 1, 32,
                                 len(part), offset)
        offset += len(part)
    return directory + b"".join(parts)


def menu_bitmap(source: Image.Image) -> bytes:
    """A picture for menus in three bytes a pixel; what is not drawn has the colour of nothing."""
    image = source.resize((MENU_BITMAP, MENU_BITMAP), Image.Resampling.LANCZOS)
    flat = Image.new("RGB", image.size, NOTHING)
    opaque = image.getchannel("A").point(lambda alpha: 255 if alpha > 127 else 0)
    flat.paste(image.convert("RGB"), mask=opaque)
    data = io.BytesIO()
    flat.save(data, "BMP")
    return data.getvalue()


def main() -> None:
    resources = pathlib.Path(__file__).parents[2] / "src" / "resources"
    for name, parts in (("quilldeck", (deck, quill)), ("items", (deck, lines)),
                        ("sync", (circle,)), ("bound", (badge,))):
        source = drawing(*parts)
        images = [source.resize((size, size), Image.Resampling.LANCZOS) for size in SIZES]
        (resources / f"{name}.ico").write_bytes(icon_file(images))
    (resources / "sync.bmp").write_bytes(menu_bitmap(drawing(circle)))


if __name__ == "__main__":
    main()
