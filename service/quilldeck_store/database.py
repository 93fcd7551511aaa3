"""The metadata: one SQLite file, a connection for each thread."""
from __future__ import annotations

import contextlib
import sqlite3
import threading
from collections.abc import Iterator
from pathlib import Path

from .schema import SCHEMA, UPGRADES, VERSION


def insert(db: sqlite3.Connection, statement: str, values: tuple[object, ...]) -> int:
    """Runs an INSERT and returns the new row's number."""
    number = db.execute(statement, values).lastrowid
    assert number is not None
    return number


class Database:
    """Opens the metadata file and makes its tables when it is new.

    Safe on any thread: each has its own connection; writers wait for each other.
    """

    def __init__(self, path: Path, may_change: bool = False) -> None:
        """Only who has the data folder's lock may change the form of the metadata."""
        self._path = path
        self._local = threading.local()
        connection = self.connection()
        version = connection.execute("PRAGMA user_version").fetchone()[0]
        if may_change and version < VERSION:
            steps = SCHEMA if version == 0 else "".join(UPGRADES[version - 1:])
            connection.executescript(
                f"BEGIN IMMEDIATE; {steps} PRAGMA user_version = {VERSION}; COMMIT;")
        elif version != VERSION:
            raise RuntimeError(f"{path} was written by another version of this service "
                               f"(format {version}, this one reads {VERSION}).")

    def connection(self) -> sqlite3.Connection:
        """This thread's connection, outside of any transaction."""
        connection = getattr(self._local, "connection", None)
        if connection is None:
            connection = self._local.connection = self.open()
        return connection

    def open(self, one_thread: bool = True) -> sqlite3.Connection:
        """A connection that the caller owns; for many threads only with a lock of its own."""
        connection = sqlite3.connect(self._path, isolation_level=None, timeout=20,
                                     check_same_thread=one_thread)
        connection.row_factory = sqlite3.Row
        for pragma in ("journal_mode = WAL", "synchronous = FULL", "foreign_keys = ON",
                       "cache_size = -32768", "temp_store = MEMORY"):
            connection.execute(f"PRAGMA {pragma}")
        return connection

    @contextlib.contextmanager
    def transaction(self, write: bool) -> Iterator[sqlite3.Connection]:
        """A transaction that commits at the end and rolls back on any exception."""
        connection = self.connection()
        connection.execute("BEGIN IMMEDIATE" if write else "BEGIN")
        try:
            yield connection
        except BaseException:
            connection.execute("ROLLBACK")
            raise
        connection.execute("COMMIT")

    def close(self) -> None:
        """Closes this thread's connection and folds the journal into the file."""
        connection = self.connection()
        connection.execute("PRAGMA wal_checkpoint(TRUNCATE)")
        connection.close()
        del self._local.connection
