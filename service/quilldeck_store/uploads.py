"""The road of bytes into a file, and the opening of downloads."""
from __future__ import annotations

import os
import sqlite3
import threading

from . import tree
from .accounts import Principal
from .contents import CLOSING, GIVEN_UP, new_location
from .store import Store, now
from .wire import Failure

MAX_OPEN = 1000
"""Uploads to one owner's space, and downloads of one account, that are open at once."""
IDLE_SECONDS = 120
_commit_locks = [threading.Lock() for _ in range(16)]


def begin(store: Store, db: sqlite3.Connection, who: Principal, item: sqlite3.Row,
          announced: int) -> str:
    """Opens an upload of the file and returns its location; the old content stays."""
    if item["trashed"]:
        raise Failure("Open failed", f"'{item['name']}' is in the Trash.")
    disk = os.statvfs(store.data)
    if disk.f_bavail * disk.f_frsize < store.policy.keep_free + announced:
        raise Failure("Not enough space", "The disk of the store is full.")
    more = announced - item["size"]
    try:
        _require_room(store, db, item["owner_id"], more)
    except Failure:
        _drop_idle(store, db, item["owner_id"])
        _require_room(store, db, item["owner_id"], more)
    location = store.contents.start_upload()
    db.execute("INSERT INTO uploads(location, item_id, account_id, max_bytes, opened) "
               "VALUES (?,?,?,0,?)", (location, item["id"], who.account_id, now()))
    return location


def _require_room(store: Store, db: sqlite3.Connection, owner_id: int, more: int) -> None:
    tree.require_space(db, owner_id, more, store.contents)
    if len(_open_uploads(db, owner_id)) >= MAX_OPEN:
        raise Failure("Open failed", "Too many uploads are open. Please try again in a while.")


def _open_uploads(db: sqlite3.Connection, owner_id: int) -> list[str]:
    return [row["location"] for row in db.execute(
        "SELECT u.location FROM items i JOIN uploads u ON u.item_id = i.id "
        "WHERE i.owner_id = ? AND u.closed_size IS NULL", (owner_id,))]


def _drop_idle(store: Store, db: sqlite3.Connection, owner_id: int) -> None:
    """Gives up the owner's uploads that nobody writes any more, for who needs their room now."""
    for location in _open_uploads(db, owner_id):
        try:
            written = store.contents.file(location).stat().st_mtime
        except FileNotFoundError:
            written = 0
        if written < now() - IDLE_SECONDS:
            db.execute("UPDATE uploads SET closed_size = ? WHERE location = ?", (GIVEN_UP, location))


def commit(store: Store, who: Principal, file_id: int, location: str, size: int,
           modified: int) -> None:
    """Makes an upload the content of its file, or refuses and leaves both as they were.

    The bytes are on disk under the content's name before the metadata points to them; a
    crash between the two leaves the upload as it was, and a name that nobody refers to.
    A client that lost the answer asks again, and is told once more that all is well.
    """
    with _commit_locks[hash(location) % len(_commit_locks)]:
        _commit(store, who, file_id, location, size, modified)


def _commit(store: Store, who: Principal, file_id: int, location: str, size: int,
            modified: int) -> None:
    upload = store.db.connection().execute(
        "SELECT * FROM uploads WHERE location = ? AND item_id = ? AND account_id = ?",
        (location, file_id, who.account_id)).fetchone()
    if upload is None:
        raise Failure("Upload failed", "This upload does not belong to the file, or it is closed already.")
    if upload["closed_size"] == size:
        return
    if upload["closed_size"] not in (None, CLOSING):
        raise Failure("Upload failed", "This upload is closed already, with another size."
                      if upload["closed_size"] >= 0 else "The upload was given up meanwhile.")
    # From here on no transfer can open the location, and then the last one is ended. Who finds it
    # marked already comes after an attempt that could not even take its mark back.
    _mark(store, location, CLOSING)
    store.end_writers(location)
    try:
        _take(store, upload, size, modified)
    except BaseException:
        _mark(store, location, None)
        raise


def _mark(store: Store, location: str, closed_size: int | None) -> None:
    with store.db.transaction(write=True) as db:
        db.execute("UPDATE uploads SET closed_size = ? WHERE location = ?", (closed_size, location))


def _take(store: Store, upload: sqlite3.Row, size: int, modified: int) -> None:
    location = upload["location"]
    file = store.contents.file(location)
    try:
        arrived = file.stat().st_size
    except FileNotFoundError:
        raise Failure("Upload failed", "The uploaded bytes are not there any more.") from None
    if arrived != size:
        raise Failure("Upload failed", f"The file has {size} bytes, but {arrived} arrived. "
                      "Please upload it again.")
    content = new_location("f")
    store.contents.seal(location, content)
    try:
        with store.db.transaction(write=True) as db:
            _publish(store, db, upload, content, size, modified)
    except BaseException:
        store.contents.unseal(content)
        raise
    file.unlink(missing_ok=True)


def _publish(store: Store, db: sqlite3.Connection, upload: sqlite3.Row, content: str, size: int,
             modified: int) -> None:
    item = db.execute("SELECT * FROM items WHERE id = ?", (upload["item_id"],)).fetchone()
    if item is None:
        raise Failure("Upload failed", "The file was deleted in the meantime.")
    db.execute("UPDATE uploads SET closed_size = ? WHERE location = ?", (size, upload["location"]))
    tree.require_space(db, item["owner_id"], size - item["size"])
    number = db.execute("INSERT INTO contents(location, size, created) VALUES (?,?,?)",
                        (content, size, now())).lastrowid
    db.execute("UPDATE items SET content_id = ?, size = ?, modified = ? WHERE id = ?",
               (number, size, modified, item["id"]))


def open_download(db: sqlite3.Connection, who: Principal, item: sqlite3.Row) -> None:
    """Holds the file's present content until the download is closed."""
    db.execute("UPDATE items SET accessed = ? WHERE id = ?", (now(), item["id"]))
    if item["content_id"]:
        db.execute("DELETE FROM downloads WHERE rowid IN (SELECT rowid FROM downloads "
                   "WHERE account_id = ? ORDER BY opened DESC LIMIT -1 OFFSET ?)",
                   (who.account_id, MAX_OPEN))
        db.execute("INSERT INTO downloads VALUES (?,?,?,?)",
                   (who.account_id, item["id"], item["content_id"], now()))


def close_download(db: sqlite3.Connection, who: Principal, file_id: int) -> None:
    """Ends one of this account's downloads of the file."""
    db.execute("DELETE FROM downloads WHERE rowid = (SELECT rowid FROM downloads "
               "WHERE account_id = ? AND item_id = ? ORDER BY opened LIMIT 1)",
               (who.account_id, file_id))
