"""What a transfer account may read and write."""
from __future__ import annotations

import threading
from dataclasses import dataclass
from pathlib import Path

from . import tree
from .accounts import Principal, find_transfer_account, is_current
from .contents import EMPTY, Contents
from .database import Database
from .rights import may_read


@dataclass(frozen=True)
class Writable:
    """An upload that may be written: its file, whose space it fills, and how much of that the
    content fills which it is to replace."""

    path: Path
    owner_id: int
    replaces: int


class TransferGate:
    """Asks the metadata. Safe on any thread: sessions come and go with their threads, so
    they share one connection, and their questions are short."""

    def __init__(self, database: Database, contents: Contents) -> None:
        self._db = database.open(one_thread=False)
        self._lock = threading.Lock()
        self._contents = contents

    def sign_in(self, login: str, password: str) -> Principal | None:
        """The account's owner, for the right password."""
        with self._lock:
            return find_transfer_account(self._db, login, password)

    def readable(self, who: Principal, location: str) -> Path | None:
        """The file of a content: one that belongs to a file within the account's reach,
        now or until a short while ago, or that the account has open."""
        with self._lock:
            may = is_current(self._db, who) and self._may_read(who, location)
            return self._contents.file(location) if may else None

    def _may_read(self, who: Principal, location: str) -> bool:
        row = self._db.execute("SELECT id FROM contents WHERE location = ?", (location,)).fetchone()
        if row is None:
            return False
        key = {"content": row["id"], "account": who.account_id}
        if row["id"] == EMPTY or self._db.execute(
                "SELECT 1 FROM downloads WHERE account_id = :account AND content_id = :content",
                key).fetchone():
            return True
        items = self._db.execute("SELECT id FROM items WHERE content_id = :content UNION "
                                 "SELECT item_id FROM superseded WHERE content_id = :content", key)
        return any(may_read(self._db, who, item["id"]) for item in items.fetchall())

    def writable(self, who: Principal, location: str) -> Writable | None:
        """The account's own open upload."""
        with self._lock:
            row = is_current(self._db, who) and self._db.execute(
                "SELECT i.id, i.owner_id, i.size FROM uploads u JOIN items i ON i.id = u.item_id "
                "WHERE u.location = ? AND u.account_id = ? AND u.closed_size IS NULL",
                (location, who.account_id)).fetchone()
            if not row:
                return None
            others = self._db.execute("SELECT location FROM uploads WHERE item_id = ? "
                                      "AND closed_size IS NULL AND location <> ?",
                                      (row["id"], location)).fetchall()
        taken = sum(self._contents.size(other["location"]) for other in others)
        return Writable(self._contents.file(location), row["owner_id"], max(row["size"] - taken, 0))

    def room(self, owner_id: int) -> int | None:
        """The bytes that the owner's open uploads may still grow by together; None for no limit."""
        with self._lock:
            return tree.free_space(self._db, owner_id, self._contents)
