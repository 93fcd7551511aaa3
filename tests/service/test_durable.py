"""What is accepted stays, whatever moment the process ends at."""
from __future__ import annotations

import contextlib
import os
import shutil
import signal
import sqlite3
import sys
import tempfile
import time
import unittest
from collections.abc import Callable
from pathlib import Path
from types import FrameType
from unittest import mock

from quilldeck_store import accounts, tree, uploads
from quilldeck_store.accounts import Principal
from quilldeck_store.actions.session import login
from quilldeck_store.actions.table import Request
from quilldeck_store.rights import FILE
from quilldeck_store.store import Caller, Policy, Store
from quilldeck_store.wire import Failure, Form

OLD, NEW = b"old content", b"the new content"
STEPS = {"execute", "fsync", "link", "open", "stat", "unlink", "chmod"}
"""What a close does outside of its own memory."""


class Close(unittest.TestCase):
    """An upload that waits to be closed over a file that has a content, in a folder by itself."""

    def setUp(self) -> None:
        self.top = Path(tempfile.mkdtemp(prefix="quilldeck-store-"))
        self.addCleanup(shutil.rmtree, self.top)
        self.folder = self.top / "whole"
        self.opened: list[Store] = []
        self.addCleanup(self.close)
        store = self.open(self.folder)
        with store.db.transaction(write=True) as db:
            user = accounts.create_user(db, "user", "scrypt$$", "", "", "", 1000)
            who = accounts.open_session(db, user, None, "", "")
            self.file = tree.create(db, user, 0, FILE, "f", 0)
        self.token = who.token
        self.take(store, self.begin(store, OLD), OLD)
        self.location = self.begin(store, NEW)
        self.close()

    def open(self, folder: Path) -> Store:
        self.opened.append(Store(folder, False, Policy(1000, 0, 0, True)))
        return self.opened[-1]

    def close(self) -> None:
        while self.opened:
            self.opened.pop().close()

    def who(self, store: Store) -> Principal:
        return accounts.find_session(store.db, self.token, "")

    def begin(self, store: Store, data: bytes) -> str:
        with store.db.transaction(write=True) as db:
            item = db.execute("SELECT * FROM items WHERE id = ?", (self.file,)).fetchone()
            location = uploads.begin(store, db, self.who(store), item, len(data))
        store.contents.file(location).write_bytes(data)
        return location

    def take(self, store: Store, location: str, data: bytes) -> None:
        uploads.commit(store, self.who(store), self.file, location, len(data), 1)

    def content(self, store: Store) -> bytes:
        location, = store.db.connection().execute(
            "SELECT location FROM contents c JOIN items i ON i.content_id = c.id").fetchone()
        return store.contents.file(location).read_bytes()

    def run_to(self, folder: Path, step: int) -> bool:
        """Closes the upload in a process that kills itself before that step; false at the end."""
        child = os.fork()
        if child == 0:
            store = Store(folder, False, Policy(1000, 0, 0, True))
            left = step

            def count(frame: FrameType, event: str, function: object) -> None:
                nonlocal left
                if event == "c_call" and getattr(function, "__name__", "") in STEPS:
                    left -= 1
                    if left < 0:
                        os.kill(os.getpid(), signal.SIGKILL)
            sys.setprofile(count)
            self.take(store, self.location, NEW)
            sys.setprofile(None)
            os._exit(0)
        return os.waitpid(child, 0)[1] != 0

    def test_a_kill_at_any_step_leaves_the_old_or_the_new(self) -> None:
        step, seen, running = 0, [], True
        while running:
            folder = self.top / f"killed before {step}"
            shutil.copytree(self.folder, folder)
            running = self.run_to(folder, step)
            store = self.open(folder)
            with self.subTest(step=step):
                seen.append(self.content(store))
                self.take(store, self.location, NEW)
                self.assertEqual(self.content(store), NEW)
                self.assertFalse(store.contents.file(self.location).exists())
            self.close()
            step += 1
        self.assertGreater(step, 12)
        self.assertEqual(seen, sorted(seen), "first always the old, then always the new")
        self.assertEqual({seen[0], seen[-1]}, {OLD, NEW})

    def traced(self, store: Store, body: Callable[[], None]) -> list[str]:
        names: list[str] = []

        def note(frame: FrameType, event: str, function: object) -> None:
            if event == "c_call":
                names.append(getattr(function, "__name__", ""))
        store.db.connection().set_trace_callback(names.append)
        sys.setprofile(note)
        try:
            body()
        finally:
            sys.setprofile(None)
        return names

    def test_bytes_are_on_disk_before_the_metadata_tells_of_them(self) -> None:
        store = self.open(self.folder)
        self.assertEqual(store.db.connection().execute("PRAGMA synchronous").fetchone()[0], 2)
        names = self.traced(store, lambda: self.take(store, self.location, NEW))
        order = [name for name in names if name in ("fsync", "link", "COMMIT")]
        self.assertEqual(order, ["COMMIT", "fsync", "link", "fsync", "COMMIT"])

    def test_a_refused_close_keeps_the_upload(self) -> None:
        store = self.open(self.folder)
        with store.db.transaction(write=True) as db:
            db.execute("UPDATE users SET quota = 5")
        with self.assertRaisesRegex(Failure, "space"):
            self.take(store, self.location, NEW)
        self.assertEqual(self.content(store), OLD)
        self.assertEqual(len(store.contents.names()), 3, "nothing is left of the attempt")
        store.policy = Policy(1000, 0, 0, True, keep_free=1 << 60)
        with self.assertRaisesRegex(Failure, "disk"):
            self.begin(store, b"")
        with store.db.transaction(write=True) as db:
            db.execute("UPDATE users SET quota = 1000")
            db.execute("UPDATE uploads SET closed_size = -1")
        self.take(store, self.location, NEW)
        self.assertEqual(self.content(store), NEW)

    def test_what_is_thrown_away_and_when(self) -> None:
        store = self.open(self.folder)
        self.take(store, self.location, NEW)
        orphan = store.contents.file("/f" + "0" * 32)
        orphan.touch()

        def left(*changes: str) -> int:
            with store.db.transaction(write=True) as db:
                for change in changes:
                    db.execute(change)
            store.collect()
            return len(store.contents.names() - {orphan.name, store.empty_location[1:]})
        hour = "UPDATE superseded SET at = at - 3600"
        self.assertEqual(left(*[hour] * 23), 2, "a day is not over yet")
        account, content = store.db.connection().execute(
            "SELECT t.id, s.content_id FROM transfer_accounts t, superseded s").fetchone()
        hold = f"INSERT INTO downloads VALUES ({account}, 1, {content}, {int(time.time()) - 600000})"
        self.assertEqual(left(hour, hour, hold), 2, "a download has it open")
        self.assertEqual(left("UPDATE downloads SET opened = opened - 10000"), 1, "open for a week")
        self.assertEqual(self.content(store), NEW)
        self.assertTrue(orphan.exists(), "the metadata that knows it may yet come back")

    def test_contents_without_their_metadata(self) -> None:
        (self.folder / "store.sqlite").rename(self.top / "kept.sqlite")
        before = set((self.folder / "transfer").iterdir())
        with self.assertRaisesRegex(RuntimeError, "missing"):
            self.open(self.folder)
        self.assertEqual(before, set((self.folder / "transfer").iterdir()))
        shutil.copy(self.top / "kept.sqlite", self.folder / "store.sqlite")
        self.assertEqual(self.content(self.open(self.folder)), OLD)

    def test_a_password_changed_while_it_is_checked_opens_nothing(self) -> None:
        store = self.open(self.folder)
        with store.db.transaction(write=True) as db:
            user = accounts.create_user(db, "late", accounts.hash_password("old one"), "", "", "", 0)
        fits = accounts.password_fits

        def overtaken(password: str, stored: str) -> bool:
            with store.db.transaction(write=True) as db:
                accounts.set_password(db, user, accounts.hash_password("new one"))
            return fits(password, stored)

        request = Request(store, Form(b"user=late&pass=old%20one"), Caller("127.0.0.1"),
                          store.db.connection(), self.who(store))
        with mock.patch.object(accounts, "password_fits", overtaken), self.assertRaises(Failure):
            login(request)
        self.assertEqual(store.db.connection().execute("SELECT count(*) FROM sessions").fetchone()[0], 1)

    def test_metadata_of_the_first_form_is_taken_over(self) -> None:
        added = {"users": ("email_proven", "demo", "items"), "accesses": ("demo",),
                 "superseded": ("owner_id",)}
        indexes = ("uploads_item", "uploads_open", "sessions_account")
        triggers = ("items_added", "items_removed", "items_changed", "content_replaced",
                    "content_dropped")
        back = [f"DROP INDEX {name};" for name in indexes]
        back += [f"DROP TRIGGER {name};" for name in triggers]
        back += [f"ALTER TABLE {table} DROP COLUMN {column};"
                 for table, columns in added.items() for column in columns]
        back += [f"CREATE TRIGGER {name} AFTER DELETE ON settings BEGIN SELECT 1; END;"
                 for name in triggers]
        with contextlib.closing(sqlite3.connect(self.folder / "store.sqlite")) as db:
            before = sorted(db.execute("SELECT type, name, sql FROM sqlite_schema").fetchall())
            key = db.execute("SELECT link_key FROM transfer_accounts").fetchone()
            db.executescript("".join(back) + "PRAGMA user_version = 1;")
        store = self.open(self.folder)
        db = store.db.connection()
        self.assertEqual(self.content(store), OLD)
        self.assertEqual(db.execute("SELECT items FROM users").fetchone()[0], 1)
        self.assertNotEqual(tuple(db.execute("SELECT link_key FROM transfer_accounts").fetchone()), key)
        after = db.execute("SELECT type, name, sql FROM sqlite_schema").fetchall()
        self.assertEqual([row[:2] for row in before], sorted(tuple(row)[:2] for row in after))
        self.take(store, self.location, NEW)
        self.assertEqual(db.execute("SELECT used FROM users").fetchone()[0], len(NEW))


if __name__ == "__main__":
    unittest.main()
