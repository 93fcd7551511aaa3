"""A copy of a store that runs, and whether a store is whole."""
from __future__ import annotations

import contextlib
import fcntl
import os
import shutil
import sqlite3
from collections.abc import Iterator
from pathlib import Path

from .contents import EMPTY, LOCATION, sync_folder
from .schema import VERSION
from .wire import Failure

_REFERRED = (f"SELECT c.id, c.location, c.size FROM contents c WHERE c.id = {EMPTY} "
             "OR c.id IN (SELECT content_id FROM items)")


@contextlib.contextmanager
def nothing_thrown_away(data: Path, wait: bool = True) -> Iterator[bool]:
    """While this lasts no content is deleted from the store in `data`. With `wait` False it is the
    other side, who deletes: it gets False at once where somebody copies."""
    with (data / "collect.lock").open("a") as file:
        try:
            fcntl.flock(file, fcntl.LOCK_SH if wait else fcntl.LOCK_EX | fcntl.LOCK_NB)
        except BlockingIOError:
            yield False
        else:
            yield True


def _open(file: Path) -> sqlite3.Connection:
    if not file.is_file():
        raise Failure("No store", f"There is no store in {file.parent}.")
    db = sqlite3.connect(file, isolation_level=None, timeout=20)
    version, = db.execute("PRAGMA user_version").fetchone()
    if version != VERSION:
        raise Failure("Wrong version", f"{file} has format {version}, and this program knows {VERSION}.")
    return db


def back_up(data: Path, target: Path) -> tuple[int, int]:
    """Copies the store into `target`, over an older backup of it if one is there; returns how many
    contents there are and how many had to be copied.

    The backup that was there stays whole until the new metadata takes its place in one step, and
    what only it needed is deleted after that.
    """
    if (target / "lock").exists():
        raise Failure("Wrong folder", f"{target} is a store itself, and no backup.")
    files = target / "transfer"
    files.mkdir(mode=0o700, parents=True, exist_ok=True)
    target.chmod(0o700)
    if not (target / "store.sqlite").exists() and any(files.iterdir()):
        raise Failure("Wrong folder", f"{files} holds files that are no backup.")
    part = target / "store.sqlite.part"
    part.unlink(missing_ok=True)
    with nothing_thrown_away(data):
        with contextlib.closing(_open(data / "store.sqlite")) as source, \
                contextlib.closing(sqlite3.connect(part, isolation_level=None)) as copy:
            part.chmod(0o600)
            source.backup(copy)
            rows = _lean(copy)
        copied = sum(_copy(data / "transfer" / location[1:], files / location[1:], size)
                     for _, location, size in rows)
    sync_folder(files)
    with part.open("rb") as handle:
        os.fsync(handle.fileno())
    os.replace(part, target / "store.sqlite")
    sync_folder(target)
    wanted = {location[1:] for _, location, _ in rows}
    for entry in list(os.scandir(files)):
        if LOCATION.fullmatch("/" + entry.name) and entry.name not in wanted:
            os.unlink(entry.path)
    return len(rows), copied


def _lean(copy: sqlite3.Connection) -> list[tuple[int, str, int]]:
    """Takes from the metadata what is of the hour only; returns the contents that files have."""
    copy.execute("PRAGMA journal_mode = DELETE")
    copy.execute("BEGIN")
    for table in ("uploads", "downloads", "superseded"):
        copy.execute(f"DELETE FROM {table}")
    rows = copy.execute(_REFERRED).fetchall()
    copy.execute(f"DELETE FROM contents WHERE id NOT IN (SELECT id FROM ({_REFERRED}))")
    copy.execute("COMMIT")
    return rows


def _copy(source: Path, target: Path, size: int) -> bool:
    """Brings one content over, on disk; False where it is there already, since it never changes."""
    with contextlib.suppress(FileNotFoundError):
        if target.stat().st_size == size:
            return False
    part = target.with_suffix(".part")
    shutil.copyfile(source, part)
    with part.open("rb+") as handle:
        os.fchmod(handle.fileno(), 0o600)
        os.fsync(handle.fileno())
        if os.fstat(handle.fileno()).st_size != size:
            raise Failure("Damaged store", f"{source} has not the size that the metadata tells.")
    os.replace(part, target)
    return True


def faults(data: Path) -> list[str]:
    """What is wrong with the store in `data`, in words; an empty list for a whole one."""
    found = []
    with nothing_thrown_away(data), contextlib.closing(_open(data / "store.sqlite")) as db:
        found += [f"store.sqlite: {row[0]}" for row in db.execute("PRAGMA integrity_check")
                  if row[0] != "ok"]
        found += [f"store.sqlite: a row of {row[0]} refers to none of {row[2]}"
                  for row in db.execute("PRAGMA foreign_key_check")]
        found += [f"account {row[0]}: its used space is noted as {row[1]} and is {row[2]}"
                  for row in db.execute(
                      "SELECT u.name, u.used, coalesce(sum(i.size), 0) AS real FROM users u "
                      "LEFT JOIN items i ON i.owner_id = u.id GROUP BY u.id HAVING u.used <> real")]
        for _, location, size in db.execute(_REFERRED):
            file = data / "transfer" / location[1:]
            there = file.stat().st_size if file.is_file() else None
            if there != size:
                found.append(f"{file}: " + ("missing" if there is None else
                                            f"{there} bytes instead of {size}"))
    return found
