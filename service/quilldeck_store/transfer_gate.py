"""What a transfer account may read and write."""
from __future__ import annotations

import threading
from pathlib import Path

from .accounts import Principal, find_transfer_account, is_current
from .contents import EMPTY, Contents
from .database import Database
from .rights import may_read


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

    def writable(self, who: Principal, location: str) -> tuple[Path, int] | None:
        """The file of the account's own open upload, and its greatest size (below 0: any)."""
        with self._lock:
            row = is_current(self._db, who) and self._db.execute(
                "SELECT max_bytes FROM uploads WHERE location = ? AND account_id = ? "
                "AND closed_size IS NULL", (location, who.account_id)).fetchone()
        return (self._contents.file(location), row["max_bytes"]) if row else None
