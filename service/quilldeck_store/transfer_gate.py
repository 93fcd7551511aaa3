"""What a transfer account may read and write."""
from __future__ import annotations

from pathlib import Path

from .accounts import Principal, find_transfer_account
from .contents import Contents
from .database import Database
from .rights import may_read


class TransferGate:
    """Asks the metadata, on the calling thread's own connection."""

    def __init__(self, database: Database, contents: Contents) -> None:
        self._database = database
        self._contents = contents

    def sign_in(self, login: str, password: str) -> Principal | None:
        """The account's owner, for the right password."""
        return find_transfer_account(self._database.connection(), login, password)

    def readable(self, who: Principal, location: str) -> Path | None:
        """The file of a content: one that belongs to a file within the account's reach,
        now or until a short while ago, or that the account has open."""
        db = self._database.connection()
        content = db.execute("SELECT id, size FROM contents WHERE location = ?", (location,)).fetchone()
        if content is None:
            return None
        number = content["id"]
        allowed = number == 1 or db.execute(
            "SELECT 1 FROM downloads WHERE account_id = ? AND content_id = ?",
            (who.account_id, number)).fetchone() or any(
                may_read(db, who, row[0]) for row in db.execute(
                    "SELECT id FROM items WHERE content_id = :c UNION "
                    "SELECT item_id FROM superseded WHERE content_id = :c", {"c": number}).fetchall())
        return self._contents.file(location) if allowed else None

    def writable(self, who: Principal, location: str) -> tuple[Path, int] | None:
        """The file of the account's own open upload, and its greatest size (below 0: any)."""
        row = self._database.connection().execute(
            "SELECT max_bytes FROM uploads WHERE location = ? AND account_id = ? "
            "AND closed_size IS NULL",
            (location, who.account_id)).fetchone()
        return (self._contents.file(location), row["max_bytes"]) if row else None
