"""The metadata: one SQLite file, a connection for each thread."""
from __future__ import annotations

import contextlib
import sqlite3
import threading
from collections.abc import Iterator
from pathlib import Path

SCHEMA_VERSION = 1

# Dates are seconds since 1970-01-01 UTC, 0 for none. An item's owner is the account whose
# space it fills; parent_id 0 is the owner's root. Account ids start above 1000 and travel
# as 32-bit numbers.
SCHEMA = """
CREATE TABLE users (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    name TEXT NOT NULL, name_key TEXT NOT NULL UNIQUE, password TEXT NOT NULL,
    email TEXT NOT NULL, email_key TEXT NOT NULL,
    first_name TEXT NOT NULL DEFAULT '', last_name TEXT NOT NULL DEFAULT '',
    lang TEXT NOT NULL DEFAULT 'en', level TEXT NOT NULL DEFAULT '1',
    quota INTEGER NOT NULL, used INTEGER NOT NULL DEFAULT 0, created INTEGER NOT NULL,
    upload_limit INTEGER, download_limit INTEGER);
CREATE UNIQUE INDEX users_email ON users(email_key) WHERE email_key <> '';
INSERT INTO sqlite_sequence(name, seq) VALUES ('users', 1000);

CREATE TABLE accesses (
    id INTEGER PRIMARY KEY, name TEXT NOT NULL, name_key TEXT NOT NULL UNIQUE,
    password TEXT, dir_id INTEGER NOT NULL REFERENCES items(id) ON DELETE CASCADE,
    owner_id INTEGER NOT NULL REFERENCES users(id), mode INTEGER NOT NULL,
    created INTEGER NOT NULL);
CREATE TABLE transfer_accounts (
    id INTEGER PRIMARY KEY, login TEXT NOT NULL UNIQUE, password TEXT NOT NULL,
    link_key TEXT NOT NULL UNIQUE,
    user_id INTEGER UNIQUE REFERENCES users(id),
    access_id INTEGER UNIQUE REFERENCES accesses(id) ON DELETE CASCADE);
CREATE TABLE sessions (
    token TEXT PRIMARY KEY,
    account_id INTEGER NOT NULL REFERENCES transfer_accounts(id) ON DELETE CASCADE,
    pc_id TEXT NOT NULL, version TEXT NOT NULL,
    created INTEGER NOT NULL, seen INTEGER NOT NULL);

CREATE TABLE contents (
    id INTEGER PRIMARY KEY AUTOINCREMENT, location TEXT NOT NULL UNIQUE,
    size INTEGER NOT NULL, created INTEGER NOT NULL);
CREATE TABLE items (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    owner_id INTEGER NOT NULL REFERENCES users(id), parent_id INTEGER NOT NULL,
    kind INTEGER NOT NULL, name TEXT NOT NULL, name_key TEXT NOT NULL,
    description TEXT NOT NULL DEFAULT '', access INTEGER NOT NULL DEFAULT 0,
    price REAL NOT NULL DEFAULT 0, size INTEGER NOT NULL DEFAULT 0,
    content_id INTEGER REFERENCES contents(id), media INTEGER NOT NULL DEFAULT 0,
    home INTEGER NOT NULL DEFAULT 0, link_key TEXT NOT NULL,
    created INTEGER NOT NULL, modified INTEGER NOT NULL, accessed INTEGER NOT NULL DEFAULT 0,
    trashed INTEGER NOT NULL DEFAULT 0);
CREATE UNIQUE INDEX items_name ON items(owner_id, parent_id, name_key) WHERE trashed = 0;
CREATE INDEX items_listing ON items(owner_id, parent_id, kind, name_key) WHERE trashed = 0;
CREATE INDEX items_media ON items(parent_id, media) WHERE trashed = 0 AND media > 0;
CREATE INDEX items_parent ON items(parent_id);
CREATE INDEX items_trash ON items(owner_id) WHERE trashed > 0;
CREATE INDEX items_content ON items(content_id);
CREATE UNIQUE INDEX items_link ON items(link_key);

-- users.used is the sum of the sizes of all items of the account.
CREATE TRIGGER items_added AFTER INSERT ON items WHEN new.size <> 0 BEGIN
    UPDATE users SET used = used + new.size WHERE id = new.owner_id; END;
CREATE TRIGGER items_removed AFTER DELETE ON items WHEN old.size <> 0 BEGIN
    UPDATE users SET used = used - old.size WHERE id = old.owner_id; END;
CREATE TRIGGER items_changed AFTER UPDATE OF size, owner_id ON items BEGIN
    UPDATE users SET used = used - old.size WHERE id = old.owner_id;
    UPDATE users SET used = used + new.size WHERE id = new.owner_id; END;

CREATE TABLE uploads (
    location TEXT PRIMARY KEY, item_id INTEGER NOT NULL REFERENCES items(id) ON DELETE CASCADE,
    account_id INTEGER NOT NULL REFERENCES transfer_accounts(id) ON DELETE CASCADE,
    max_bytes INTEGER NOT NULL, opened INTEGER NOT NULL, closed_size INTEGER);
CREATE TABLE downloads (
    account_id INTEGER NOT NULL REFERENCES transfer_accounts(id) ON DELETE CASCADE,
    item_id INTEGER NOT NULL, content_id INTEGER NOT NULL REFERENCES contents(id),
    opened INTEGER NOT NULL);
CREATE INDEX downloads_item ON downloads(account_id, item_id);
CREATE INDEX downloads_content ON downloads(content_id);
CREATE TABLE superseded (
    content_id INTEGER NOT NULL REFERENCES contents(id), item_id INTEGER NOT NULL,
    at INTEGER NOT NULL);
CREATE INDEX superseded_content ON superseded(content_id);
-- A content that a file had stays for a while: a reader may be about to open it, and a
-- backup copies the metadata before the contents.
CREATE TRIGGER content_replaced AFTER UPDATE OF content_id ON items
    WHEN old.content_id IS NOT NULL AND old.content_id IS NOT new.content_id BEGIN
    INSERT INTO superseded VALUES (old.content_id, old.id, strftime('%s', 'now')); END;
CREATE TRIGGER content_dropped AFTER DELETE ON items WHEN old.content_id IS NOT NULL BEGIN
    INSERT INTO superseded VALUES (old.content_id, old.id, strftime('%s', 'now')); END;

CREATE TABLE shares (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    dir_id INTEGER NOT NULL REFERENCES items(id) ON DELETE CASCADE,
    owner_id INTEGER NOT NULL REFERENCES users(id),
    with_id INTEGER NOT NULL REFERENCES users(id),
    mode INTEGER NOT NULL, created INTEGER NOT NULL, UNIQUE (dir_id, with_id));
CREATE INDEX shares_with ON shares(with_id, owner_id);
CREATE TABLE invitations (
    dir_id INTEGER NOT NULL REFERENCES items(id) ON DELETE CASCADE,
    owner_id INTEGER NOT NULL REFERENCES users(id),
    email_key TEXT NOT NULL, created INTEGER NOT NULL, UNIQUE (dir_id, email_key));
CREATE TABLE notifications (
    id INTEGER PRIMARY KEY, user_id INTEGER NOT NULL REFERENCES users(id),
    title TEXT NOT NULL, text TEXT NOT NULL, url TEXT NOT NULL, created INTEGER NOT NULL);
CREATE TABLE settings (
    user_id INTEGER NOT NULL REFERENCES users(id), name TEXT NOT NULL,
    value TEXT NOT NULL, type INTEGER NOT NULL, PRIMARY KEY (user_id, name));
"""


def insert(db: sqlite3.Connection, statement: str, values: tuple[object, ...]) -> int:
    """Runs an INSERT and returns the new row's number."""
    number = db.execute(statement, values).lastrowid
    assert number is not None
    return number


class Database:
    """Opens the metadata file and makes its tables when it is new.

    Safe on any thread: each has its own connection; writers wait for each other.
    """

    def __init__(self, path: Path) -> None:
        self._path = path
        self._local = threading.local()
        connection = self.connection()
        version = connection.execute("PRAGMA user_version").fetchone()[0]
        if version == 0:
            connection.executescript(
                f"BEGIN IMMEDIATE; {SCHEMA} PRAGMA user_version = {SCHEMA_VERSION}; COMMIT;")
        elif version != SCHEMA_VERSION:
            raise RuntimeError(f"{path} was written by another version of this service "
                               f"(format {version}, this one reads {SCHEMA_VERSION}).")

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
