"""The bytes: flat files below one folder, as the transfer host sees them.

`/f…` is the content of files, never changed once it is there and shared by copies;
`/u…` is an upload on its way. A name is 32 random hexadecimal digits, so that to know
a location is to have been told it.
"""
from __future__ import annotations

import contextlib
import os
import re
import secrets
import shutil
import sqlite3
import time
from pathlib import Path

from .database import insert

LOCATION = re.compile(r"/[fu][0-9a-f]{32}")
EMPTY = 1
"""The number of the content that all empty files share."""
CLOSING = -1
"""The closed size of an upload that is being closed."""
GIVEN_UP = -2
"""The closed size of an upload whose room was needed."""
KEEP_SUPERSEDED = 86400
KEEP_OPEN_DOWNLOAD = 7 * 86400
KEEP_IDLE_UPLOAD = 2 * 86400
KEEP_ORPHAN = 7 * 86400
"""A file that the metadata does not know may belong to metadata that a host is about to restore."""

# Replaced contents may fill an owner's quota once more, and then the oldest go before their time.
_BEYOND_QUOTA = """
    DELETE FROM superseded WHERE rowid IN (
        SELECT number FROM (
            SELECT s.rowid AS number, u.quota, sum(c.size) OVER (
                PARTITION BY s.owner_id ORDER BY s.at DESC, s.rowid DESC) AS total
            FROM superseded s JOIN contents c ON c.id = s.content_id
            JOIN users u ON u.id = s.owner_id)
        WHERE quota > 0 AND total > quota) """


def new_location(letter: str) -> str:
    return f"/{letter}{secrets.token_hex(16)}"


def sync_folder(folder: Path) -> None:
    """Waits until the names in the folder are on disk."""
    handle = os.open(folder, os.O_RDONLY | os.O_DIRECTORY)
    try:
        os.fsync(handle)
    finally:
        os.close(handle)


def sync_file(file: Path) -> None:
    """Waits until the bytes of the file are on disk: a rename may be there before them."""
    with open(file, "rb") as handle:
        os.fsync(handle.fileno())


class Contents:
    """The folder of transfer locations.

    With `foreign` a file server of another user serves the folder, and gets the rights
    to read contents and write uploads.
    """

    def __init__(self, folder: Path, foreign: bool) -> None:
        self.folder = folder
        self._foreign = foreign
        folder.mkdir(parents=True, exist_ok=True)
        folder.chmod(0o711 if foreign else 0o700)
        if foreign:
            # What was there before another server took over is its to serve, too.
            for file in folder.iterdir():
                file.chmod(0o644 if file.name.startswith("f") else 0o666)

    def file(self, location: str) -> Path:
        """The file behind a location that the store itself has given out."""
        return self.folder / location[1:]

    def size(self, location: str) -> int:
        """The bytes that are there, 0 for none at all."""
        try:
            return self.file(location).stat().st_size
        except FileNotFoundError:
            return 0

    def start_upload(self) -> str:
        """A new empty upload location."""
        location = new_location("u")
        handle = os.open(self.file(location), os.O_WRONLY | os.O_CREAT | os.O_EXCL, 0o600)
        if self._foreign:
            os.fchmod(handle, 0o666)
        os.close(handle)
        return location

    def seal(self, upload: str, content: str) -> None:
        """Gives the upload's bytes the content's name, too; both are on disk before anybody is told.

        The upload keeps its own name until the metadata has taken the content, so that an end
        in between leaves an upload that can be closed again.
        """
        source, target = self.file(upload), self.file(content)
        if self._foreign:
            # A dying session of the other server may still hold the upload open and write.
            shutil.copyfile(source, target)
            target.chmod(0o644)
            sync_file(target)
        else:
            sync_file(source)
            os.link(source, target)
        sync_folder(self.folder)

    def unseal(self, content: str) -> None:
        """Takes `seal` back after the metadata refused the content."""
        self.file(content).unlink()

    def empty(self, db: sqlite3.Connection) -> str:
        """The one location of all empty files."""
        row = db.execute("SELECT location FROM contents WHERE id = ?", (EMPTY,)).fetchone()
        if row:
            return row["location"]
        location = new_location("f")
        self.file(location).touch(0o644 if self._foreign else 0o600)
        sync_folder(self.folder)
        db.execute("INSERT INTO contents VALUES (?, ?, 0, ?)", (EMPTY, location, int(time.time())))
        return location

    def add(self, db: sqlite3.Connection, source: Path) -> tuple[int, int]:
        """Copies a local file in; returns the content's number and size."""
        location = new_location("f")
        shutil.copyfile(source, self.file(location))
        self.file(location).chmod(0o644 if self._foreign else 0o600)
        sync_file(self.file(location))
        sync_folder(self.folder)
        size = self.file(location).stat().st_size
        number = insert(db, "INSERT INTO contents(location, size, created) VALUES (?,?,?)",
                        (location, size, int(time.time())))
        return number, size

    def names(self) -> set[str]:
        """The files that are there; to be asked before the transaction of `collect`."""
        return {entry.name for entry in os.scandir(self.folder)}

    def collect(self, db: sqlite3.Connection, names: set[str]) -> list[Path]:
        """Forgets what nobody needs any more and returns those of the files `names` to delete
        once the transaction is through."""
        now = int(time.time())
        db.execute("DELETE FROM downloads WHERE opened < ?", (now - KEEP_OPEN_DOWNLOAD,))
        db.execute("DELETE FROM superseded WHERE at < ?", (now - KEEP_SUPERSEDED,))
        db.execute(_BEYOND_QUOTA)
        dead = {row["location"] for row in db.execute(
            "SELECT location FROM uploads WHERE closed_size >= 0 OR closed_size = ?", (GIVEN_UP,))}
        for row in db.execute("SELECT location FROM uploads WHERE opened < ?",
                              (now - KEEP_IDLE_UPLOAD,)).fetchall():
            file = self.file(row["location"])
            if not file.exists() or file.stat().st_mtime < now - KEEP_IDLE_UPLOAD:
                db.execute("DELETE FROM uploads WHERE location = ?", (row["location"],))
                dead.add(row["location"])
        unused = ("id <> ? AND id NOT IN (SELECT content_id FROM items WHERE content_id IS NOT NULL) "
                  "AND id NOT IN (SELECT content_id FROM downloads) "
                  "AND id NOT IN (SELECT content_id FROM superseded)")
        dead |= {row["location"] for row in db.execute(
            f"DELETE FROM contents WHERE {unused} RETURNING location", (EMPTY,))}
        known = {row[0] for row in db.execute(
            "SELECT location FROM contents UNION ALL SELECT location FROM uploads")}
        return [self.folder / name for name in names
                if "/" + name in dead or ("/" + name not in known and self._is_orphan(name, now))]

    def _is_orphan(self, name: str, now: int) -> bool:
        """Whether a file that the metadata does not know is ours and has been so for long."""
        if not LOCATION.fullmatch("/" + name):
            return False
        with contextlib.suppress(FileNotFoundError):
            return (self.folder / name).stat().st_ctime < now - KEEP_ORPHAN
        return False
