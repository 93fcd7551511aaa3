#!/usr/bin/python3
"""Draws the pictures and plays the tunes of the demo; its output is kept beside it.

Needs python3-pil, vorbis-tools, lame and flac. All of it is our own.
"""
from __future__ import annotations

import math
import random
import shutil
import struct
import subprocess
import wave
from pathlib import Path

from PIL import Image, ImageChops, ImageDraw, ImageFilter

HERE = Path(__file__).parent
RATE = 44100
NOTES = {name: 440 * 2 ** ((i - 9) / 12) for i, name in enumerate("C c D d E F f G g A a B".split())}
Colour = tuple[int, int, int]


def blend(a: Colour, b: Colour, t: float) -> Colour:
    red, green, blue = (round(x + (y - x) * t) for x, y in zip(a, b))
    return red, green, blue


def ridge(rng: random.Random, width: int, height: float, rough: float) -> list[float]:
    """A line of hills by halving: each middle is moved up or down by less and less."""
    points, step = [height, height], rough
    while len(points) < width:
        points = [p for a, b in zip(points, points[1:])
                  for p in (a, (a + b) / 2 + rng.uniform(-step, step))] + points[-1:]
        step *= 0.55
    return points[:width]


def landscape(seed: int, top: Colour, low: Colour, hills: Colour, sun: Colour,
              size: tuple[int, int] = (1600, 1067)) -> Image.Image:
    rng = random.Random(seed)
    width, height = size
    picture = Image.new("RGB", size)
    draw = ImageDraw.Draw(picture)
    horizon = int(height * 0.68)
    for y in range(horizon):
        draw.line((0, y, width, y), blend(top, low, y / horizon))
    glow = Image.new("RGB", size)
    x, y, r = rng.randint(width // 4, width * 3 // 4), int(height * 0.4), height // 14
    ImageDraw.Draw(glow).ellipse((x - r, y - r, x + r, y + r), sun)
    picture = ImageChops.add(picture, glow.filter(ImageFilter.GaussianBlur(r / 3)))
    draw = ImageDraw.Draw(picture)
    for layer in range(4):
        colour = blend(low, hills, (layer + 1) / 4)
        line = ridge(rng, width, height * (0.48 + 0.06 * layer), height * (0.13 - 0.02 * layer))
        for column, at in enumerate(line):
            draw.line((column, at, column, horizon), colour)
    mirror = picture.crop((0, horizon - (height - horizon), width, horizon))
    mirror = mirror.transpose(Image.Transpose.FLIP_TOP_BOTTOM).filter(ImageFilter.GaussianBlur(3))
    picture.paste(Image.blend(mirror, Image.new("RGB", mirror.size, hills), 0.35), (0, horizon))
    draw = ImageDraw.Draw(picture)
    for _ in range(400):
        y, x = rng.randint(horizon, height - 1), rng.randint(0, width)
        length = (y - horizon) // 3 + 6
        draw.line((x, y, x + length, y), blend(picture.getpixel((min(x, width - 1), y)), (255, 255, 255), 0.25))
    return picture


def julia(size: int, c: complex) -> Image.Image:
    """A Julia set in slow colours."""
    picture = Image.new("RGB", (size, size))
    pixels = picture.load()
    for py in range(size):
        for px in range(size):
            z, n = complex(px - size / 2, py - size / 2) * 3 / size, 0
            while abs(z) < 4 and n < 90:
                z, n = z * z + c, n + 1
            pixels[px, py] = (n * 2 % 256, n * 5 % 256, (60 + n * 7) % 256) if n < 90 else (12, 8, 30)
    return picture


def ball(frames: int, size: int) -> list[Image.Image]:
    """A ball that jumps."""
    pictures = []
    for frame in range(frames):
        picture = Image.new("RGB", (size, size), (238, 240, 225))
        draw = ImageDraw.Draw(picture)
        at = abs(math.sin(math.pi * frame / frames))
        y, r = size * (0.78 - 0.55 * at), size * 0.1
        shade = r * (1.3 - at)
        draw.ellipse((size / 2 - shade, size * 0.87, size / 2 + shade, size * 0.91), (200, 200, 180))
        draw.ellipse((size / 2 - r, y - r, size / 2 + r, y + r), (205, 60, 50))
        draw.ellipse((size / 2 - r * 0.5, y - r * 0.6, size / 2 - r * 0.1, y - r * 0.2), (250, 190, 180))
        pictures.append(picture)
    return pictures


def tea() -> Image.Image:
    """A cup of tea, with see-through surroundings."""
    picture = Image.new("RGBA", (640, 520), (0, 0, 0, 0))
    draw = ImageDraw.Draw(picture)
    draw.ellipse((90, 400, 550, 480), (180, 190, 205, 255))
    draw.ellipse((450, 220, 570, 340), outline=(70, 110, 160, 255), width=22)
    draw.pieslice((140, 20, 500, 440), 0, 180, (85, 130, 185, 255))
    draw.ellipse((140, 195, 500, 265), (225, 232, 240, 255))
    draw.ellipse((160, 205, 480, 255), (165, 95, 40, 255))
    for x in (250, 320, 390):
        draw.line([(x + 14 * math.sin(y / 16), y) for y in range(60, 190, 4)], (120, 130, 140, 130), 7)
    return picture


def tune(melody: str, beat: float, colour: tuple[float, ...], repeats: int = 1) -> list[float]:
    """Notes as "A4:1": name, octave, beats; "-" rests. Partials fade the faster the higher."""
    events, at = [], 0.0
    for token in (melody.split() * repeats):
        pitch, _, beats = token.partition(":")
        if pitch != "-":
            events.append((at, NOTES[pitch[0]] * 2.0 ** (int(pitch[1]) - 4)))
        at += float(beats or 1) * beat
    out = [0.0] * int((at + 2) * RATE)
    for start, frequency in events:
        first = int(start * RATE)
        for i in range(min(int(2.2 * RATE), len(out) - first)):
            t = i / RATE
            out[first + i] += sum(a * math.sin(2 * math.pi * frequency * (k + 1) * t) * math.exp(-(2 + k) * t)
                                  for k, a in enumerate(colour)) * min(1, t * 200)
    loudest = max(abs(v) for v in out)
    return [v * 0.8 / loudest for v in out]


def write_wave(file: Path, left: list[float], echo: float = 0.13) -> Path:
    """Stereo: the right side hears itself a moment later."""
    delay = int(echo * RATE)
    with wave.open(str(file), "wb") as out:
        out.setparams((2, 2, RATE, 0, "NONE", ""))
        out.writeframes(b"".join(
            struct.pack("<hh", round(v * 32000),
                        round((v * 0.7 + (left[i - delay] if i >= delay else 0) * 0.3) * 32000))
            for i, v in enumerate(left)))
    return file


def encode(command: list[str], source: Path, target: Path) -> None:
    subprocess.run([*command, str(source), *(["-o"] if command[0] != "lame" else []), str(target)],
                   check=True, capture_output=True)


EVENING = "E4:2 G4 A4 B4:2 A4 G4 E4:2 D4 E4 G4:4 A4:2 B4 D5 E5:2 D5 B4 A4:2 G4 A4 E4:4"
WALK = "C4 E4 G4 E4 F4 A4 C5 A4 G4 B4 D5 B4 C5:2 G4:2 A4 C5 E5 C5 F4 A4 C5 A4 D4 f4 A4 f4 G4:2 -:2"
BELL = "E5:2 C5:2 D5:2 G4:4"


def main() -> None:
    files, upload = HERE / "files", HERE / "upload"
    for folder in ("pictures", "music", "documents"):
        (files / folder).mkdir(parents=True, exist_ok=True)
    for folder in ("Pictures/Île d'été", "Music", "Notes & lists"):
        (upload / folder).mkdir(parents=True, exist_ok=True)
    views = {
        files / "pictures/dusk.jpg": (1, (40, 34, 84), (244, 146, 96), (30, 24, 52), (255, 220, 150)),
        files / "pictures/morning.jpg": (2, (110, 170, 225), (250, 226, 190), (38, 74, 70), (255, 250, 220)),
        files / "pictures/night.jpg": (3, (6, 8, 28), (38, 52, 92), (8, 12, 24), (220, 225, 240)),
        files / "pictures/autumn.jpg": (4, (150, 170, 190), (235, 205, 160), (110, 58, 28), (255, 240, 200)),
        upload / "Pictures/Lake at noon.jpg": (5, (60, 130, 215), (205, 228, 240), (34, 84, 60), (255, 255, 235)),
        upload / "Pictures/Île d'été/Plage.jpg": (6, (50, 160, 200), (250, 236, 200), (96, 110, 70), (255, 250, 210)),
        upload / "Pictures/Île d'été/夕焼け.jpg": (7, (60, 30, 80), (250, 110, 80), (40, 16, 40), (255, 190, 120)),
    }
    for file, view in views.items():
        landscape(*view).save(file, quality=84 if files in file.parents else 94)
    julia(480, complex(-0.8, 0.156)).save(files / "pictures/julia.png", optimize=True)
    julia(300, complex(0.285, 0.01)).save(upload / "Pictures/Fractal #2.png", optimize=True)
    tea().save(files / "pictures/tea.png", optimize=True)
    for target, size in ((files / "pictures/ball.gif", 200), (upload / "Pictures/ball.gif", 160)):
        first, *rest = ball(18, size)
        first.save(target, save_all=True, append_images=rest, duration=60, loop=0)
    landscape(8, (230, 230, 235), (250, 250, 250), (150, 150, 160), (60, 60, 40), (1240, 827)).save(
        files / "documents/plan.pdf", resolution=150)
    evening = write_wave(HERE / "e.wav", tune(EVENING, 0.42, (1, 0.5, 0.3, 0.12), 2))
    walk = write_wave(HERE / "w.wav", tune(WALK, 0.24, (1, 0.2, 0.35, 0.05, 0.1), 2))
    bell = write_wave(files / "music/bell.wav", tune(BELL, 0.09, (1, 0.7, 0.2, 0.4)))
    encode(["oggenc", "-Q", "-q", "3"], evening, files / "music/evening.ogg")
    encode(["lame", "--quiet", "-b", "112"], walk, files / "music/walk.mp3")
    encode(["flac", "-s", "-f"], bell, files / "music/bell.flac")
    encode(["oggenc", "-Q", "-q", "1"], walk, upload / "Music/Walk (slow) – live.ogg")
    encode(["lame", "--quiet", "-b", "96"], evening, upload / "Music/Evening, take 2.mp3")
    shutil.copy(bell, upload / "Music/Bell.wav")
    shutil.copy(files / "documents/recipe.html", upload / "Notes & lists/Plum cake.html")
    evening.unlink()
    walk.unlink()


if __name__ == "__main__":
    main()
