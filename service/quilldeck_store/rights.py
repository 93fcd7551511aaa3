"""What a principal may reach: the tree of its own, a share, or an access id's folder."""
from __future__ import annotations

import sqlite3
from dataclasses import dataclass

from .accounts import Principal
from .wire import Failure, Form

DIRECTORY, FILE = 1, 2
ROOT = 0

_CHAIN = """
    WITH RECURSIVE chain(id, parent_id, owner_id, trashed, name, depth) AS (
        SELECT id, parent_id, owner_id, trashed, name, 0 FROM items WHERE id = ?
        UNION ALL
        SELECT i.id, i.parent_id, i.owner_id, i.trashed, i.name, c.depth + 1
        FROM items i JOIN chain c ON i.id = c.parent_id)
    SELECT id, owner_id, trashed, name FROM chain ORDER BY depth """


def chain(db: sqlite3.Connection, item_id: int) -> list[sqlite3.Row]:
    """The item and the folders above it, from the item upwards."""
    return db.execute(_CHAIN, (item_id,)).fetchall()


@dataclass(frozen=True)
class Scope:
    """One road to items: whose they are, below which folder, and whether to change them."""

    owner_id: int
    top: int
    full: bool

    @property
    def is_own(self) -> bool:
        """The whole tree of the asking user, Trash included."""
        return self.top == ROOT

    def item(self, db: sqlite3.Connection, item_id: int, kind: int) -> sqlite3.Row:
        """The item, if this road leads to it. Another's item reads like a missing one."""
        row = db.execute("SELECT * FROM items WHERE id = ? AND kind = ?", (item_id, kind)).fetchone()
        if row is None or row["owner_id"] != self.owner_id or not self._holds(db, item_id):
            word = "folder" if kind == DIRECTORY else "file"
            raise Failure("Not found", f"The {word} does not exist any more, or you have no access to it.")
        return row

    def _holds(self, db: sqlite3.Connection, item_id: int) -> bool:
        if self.is_own:
            return True
        links = chain(db, item_id)
        return (any(link["id"] == self.top for link in links)
                and not any(link["trashed"] for link in links))

    def directory(self, db: sqlite3.Connection, dir_id: int) -> sqlite3.Row | None:
        """A folder to list or to put something into; None is the owner's root."""
        if dir_id == ROOT and self.is_own:
            return None
        return self.item(db, dir_id, DIRECTORY)

    def require_full(self) -> None:
        """Refuses a change through a share or access that only lets look."""
        if not self.full:
            raise Failure("No permission", "This folder is shared with you for viewing only.")

    def require_below(self, row: sqlite3.Row) -> None:
        """Refuses to rename or take away the shared folder itself, which is its owner's to do."""
        if row["id"] == self.top:
            raise Failure("No permission", "Only the owner of a shared folder can rename or delete it.")


def scope(db: sqlite3.Connection, who: Principal, form: Form, prefix: str = "") -> Scope:
    """The road that a request names by its share or access parameters."""
    share_user, share, access = (f"{prefix}{name}" for name in
                                 ("share_user_id", "share_id", "access_dir_id"))
    if who.is_guest:
        if access in form and form.integer(access) != who.access_dir:
            raise Failure("No permission", "The access id does not open this folder.")
        return Scope(who.user_id, who.access_dir, who.access_full)
    if access in form:
        raise Failure("No permission", "This needs a guest session.")
    if share_user in form or share in form:
        row = db.execute("SELECT * FROM shares WHERE dir_id = ? AND owner_id = ? AND with_id = ?",
                         (form.integer(share), form.integer(share_user), who.user_id)).fetchone()
        if row is None:
            raise Failure("No permission", "This folder is not shared with you any more.")
        return Scope(row["owner_id"], row["dir_id"], row["mode"] == 1)
    return Scope(who.user_id, ROOT, True)


def own_scope(who: Principal) -> Scope:
    """The user's own tree, for requests that know no other."""
    if who.is_guest:
        raise Failure("No permission", "A guest cannot do this.")
    return Scope(who.user_id, ROOT, True)


def may_read(db: sqlite3.Connection, who: Principal, item_id: int) -> bool:
    """Whether any road leads the principal to this item."""
    links = chain(db, item_id)
    if not links:
        return False
    if not who.is_guest and links[0]["owner_id"] == who.user_id:
        return True
    if any(link["trashed"] for link in links):
        return False
    ids = [link["id"] for link in links]
    if who.is_guest:
        return who.access_dir in ids
    marks = ",".join("?" * len(ids))
    return db.execute(f"SELECT 1 FROM shares WHERE with_id = ? AND dir_id IN ({marks})",
                      (who.user_id, *ids)).fetchone() is not None
