"""Small pictures of pictures."""
from __future__ import annotations

import io
import os
import warnings
from pathlib import Path

from PIL import Image, ImageOps, UnidentifiedImageError

from .accounts import find_session
from .contents import sync_file
from .rights import FILE, may_read
from .store import Caller, Store
from .wire import Failure, Form

SIDE = 256
MAX_PIXELS = 25_000_000
# What a browser shows; the library also knows formats that start other programs.
_FORMATS = ("JPEG", "PNG", "GIF", "BMP", "TIFF", "WEBP")
# The library refuses twice its bound and warns from it on; ours is looked at before it decodes.
Image.MAX_IMAGE_PIXELS = MAX_PIXELS
warnings.simplefilter("ignore", Image.DecompressionBombWarning)


class Missing(Exception):
    """A thumbnail that has to be made first, which is slow and wants much memory."""

    def __init__(self, picture: Path, cached: Path) -> None:
        super().__init__()
        self.picture = picture
        self.cached = cached


def answer(store: Store, form: Form, caller: Caller) -> bytes:
    """The JPEG for a file that the session may read, by whichever road; raises `Missing`."""
    who = find_session(store.db, form.get("user_id"), form.get("user_id_access"))
    caller.signed_in = True
    file_id = form.integer("file_id")
    shared = form.get("shared_user_id")
    with store.db.transaction(write=False) as db:
        row = db.execute("SELECT i.media, i.owner_id, c.location FROM items i LEFT JOIN contents c "
                         "ON c.id = i.content_id WHERE i.id = ? AND i.kind = ?",
                         (file_id, FILE)).fetchone()
        if (row is None or not may_read(db, who, file_id)
                or shared and str(row["owner_id"]) != shared):
            raise Failure("Not found", "The file does not exist any more, or you have no access to it.")
    if row["media"] != 1 or row["location"] is None:
        raise Failure("No thumbnail", "There is no thumbnail for this kind of file.")
    cached = store.thumbnails / f"{row['location'][1:]}.jpg"
    try:
        return _checked(cached.read_bytes())
    except FileNotFoundError:
        raise Missing(store.contents.file(row["location"]), cached) from None


def make(missing: Missing) -> bytes:
    """The thumbnail, kept for the next time; of a picture that cannot be read, that is kept."""
    missing.cached.parent.mkdir(exist_ok=True)
    if missing.cached.exists():
        return _checked(missing.cached.read_bytes())
    data = _shrink(missing.picture)
    part = missing.cached.with_suffix(f".{os.urandom(4).hex()}")
    part.write_bytes(data)
    # An empty file means a picture that cannot be read, so a power cut must not leave one.
    sync_file(part)
    os.replace(part, missing.cached)
    return _checked(data)


def _checked(data: bytes) -> bytes:
    if not data:
        raise Failure("No thumbnail", "The picture cannot be read, or is too large.")
    return data


def _shrink(file: Path) -> bytes:
    """A JPEG with a JFIF header, upright, on white where the picture lets through; nothing for
    what is no picture, or has too many pixels."""
    try:
        with Image.open(file, formats=_FORMATS) as source:
            if source.width * source.height > MAX_PIXELS:
                return b""
            source.draft("RGB", (SIDE * 2, SIDE * 2))
            source.thumbnail((SIDE, SIDE))
            layer = ImageOps.exif_transpose(source).convert("RGBA")
            sheet = Image.new("RGB", layer.size, "white")
            sheet.paste(layer, mask=layer)
    except (UnidentifiedImageError, OSError, ValueError, SyntaxError, KeyError, IndexError,
            TypeError, OverflowError, Image.DecompressionBombError):
        return b""
    out = io.BytesIO()
    sheet.save(out, "JPEG", quality=85)
    return out.getvalue()
