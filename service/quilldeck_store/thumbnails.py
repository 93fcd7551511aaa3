"""Small pictures of pictures."""
from __future__ import annotations

import io
import os
import warnings
from pathlib import Path

from PIL import Image, ImageOps, UnidentifiedImageError

from .accounts import find_session
from .rights import FILE, may_read
from .store import Store
from .wire import Failure, Form

SIDE = 256
Image.MAX_IMAGE_PIXELS = 100_000_000


def answer(store: Store, form: Form) -> bytes:
    """The JPEG for a file that the session may read, by whichever road."""
    with store.db.transaction(write=False) as db:
        who = find_session(db, form.get("user_id"), form.get("user_id_access"))
        file_id = form.integer("file_id")
        row = db.execute("SELECT i.media, i.owner_id, c.location FROM items i LEFT JOIN contents c "
                         "ON c.id = i.content_id WHERE i.id = ? AND i.kind = ?",
                         (file_id, FILE)).fetchone()
        shared = form.get("shared_user_id")
        if (row is None or not may_read(db, who, file_id)
                or shared and str(row["owner_id"]) != shared):
            raise Failure("Not found", "The file does not exist any more, or you have no access to it.")
    if row["media"] != 1 or row["location"] is None:
        raise Failure("No thumbnail", "There is no thumbnail for this kind of file.")
    cached = store.thumbnails / f"{row['location'][1:]}.jpg"
    try:
        return cached.read_bytes()
    except FileNotFoundError:
        data = _shrink(store.contents.file(row["location"]))
    store.thumbnails.mkdir(exist_ok=True)
    part = cached.with_suffix(f".{os.urandom(4).hex()}")
    part.write_bytes(data)
    os.replace(part, cached)
    return data


def _shrink(file: Path) -> bytes:
    """A JPEG with a JFIF header, upright, on white where the picture lets through."""
    try:
        with warnings.catch_warnings(), Image.open(file) as source:
            warnings.simplefilter("error", Image.DecompressionBombWarning)
            source.draft("RGB", (SIDE * 2, SIDE * 2))
            picture = ImageOps.exif_transpose(source)
            picture.thumbnail((SIDE, SIDE))
            layer = picture.convert("RGBA")
            sheet = Image.new("RGB", layer.size, "white")
            sheet.paste(layer, mask=layer)
    except (UnidentifiedImageError, OSError, ValueError, SyntaxError, Image.DecompressionBombError,
            Image.DecompressionBombWarning):
        raise Failure("No thumbnail", "The picture cannot be read.") from None
    out = io.BytesIO()
    sheet.save(out, "JPEG", quality=85)
    return out.getvalue()
