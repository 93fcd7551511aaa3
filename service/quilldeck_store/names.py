"""Which names a file or folder may bear, and when two of them clash."""
from __future__ import annotations

import re

from .wire import Failure

MAX_UNITS = 255
_FORBIDDEN = re.compile(r"[\x00-\x1f\x7f/\\]")
_HALF_PAIR = re.compile("[\ud800-\udfff]")
_PICTURES = {"jpg", "jpeg", "png", "gif", "bmp", "tif", "tiff", "webp"}
_MUSIC = {"mp3", "ogg", "oga", "opus", "flac", "wav", "m4a", "aac", "wma"}
_UPPER = str.maketrans({chr(c): chr(c + 32) for c in range(ord("A"), ord("Z") + 1)})


def check(name: str) -> str:
    """Returns `name`, or refuses it in words for the user.

    Slashes part the elements of paths, a backslash cannot end a value on the wire and
    names no file on Windows, and 255 UTF-16 units are what file systems take.
    """
    if not name.strip():
        raise Failure("Wrong name", "A name cannot be empty or only blanks.")
    if name in (".", ".."):
        raise Failure("Wrong name", f"'{name}' cannot be used as a name.")
    if _FORBIDDEN.search(name):
        raise Failure("Wrong name", "A name cannot hold slashes, backslashes or control characters.")
    if _HALF_PAIR.search(name):
        raise Failure("Wrong name", "The name holds half of a character and cannot be stored.")
    if len(name.encode("utf-16-le")) // 2 > MAX_UNITS:
        raise Failure("Wrong name", f"A name cannot be longer than {MAX_UNITS} characters.")
    return name


def key(name: str) -> str:
    """Two names clash when their keys are equal: only A to Z are folded, because the
    client looks names up in just this way."""
    return name.translate(_UPPER)


def brief(text: str) -> str:
    """A text from outside as a message repeats it."""
    return text if len(text) <= 80 else text[:79] + "…"


def media(name: str) -> int:
    """1 for a picture, 2 for music, else 0, from the name's extension."""
    extension = name.rpartition(".")[2].lower()
    return 1 if extension in _PICTURES else 2 if extension in _MUSIC else 0
