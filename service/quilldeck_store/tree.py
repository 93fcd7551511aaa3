"""Changes of the tree of items: create, rename, Trash, restore, remove, copy, move."""
from __future__ import annotations

import secrets
import sqlite3
import time

from . import names
from .contents import Contents
from .database import insert
from .rights import DIRECTORY, FILE, ROOT, chain
from .wire import Failure

MAX_ITEMS = 1_000_000


def _clash(name: str) -> Failure:
    return Failure("Name already exists", f"There is already an item named '{name}' in this folder.",
                   kind=1)


def require_free_name(db: sqlite3.Connection, owner_id: int, parent_id: int, name: str,
                      except_id: int = 0) -> None:
    """Refuses a name that a living item of the folder has, but for the item itself."""
    if db.execute("SELECT 1 FROM items WHERE owner_id = ? AND parent_id = ? AND name_key = ? "
                  "AND trashed = 0 AND id <> ?",
                  (owner_id, parent_id, names.key(name), except_id)).fetchone():
        raise _clash(name)


def create(db: sqlite3.Connection, owner_id: int, parent_id: int, kind: int, name: str,
           access: int) -> int:
    """A new empty folder or file; returns its number."""
    names.check(name)
    require_free_name(db, owner_id, parent_id, name)
    if db.execute("SELECT items FROM users WHERE id = ?", (owner_id,)).fetchone()[0] >= MAX_ITEMS:
        raise Failure("Too many items", f"An account cannot have more than {MAX_ITEMS} files and folders.")
    now = int(time.time())
    return insert(
        db, "INSERT INTO items(owner_id, parent_id, kind, name, name_key, access, media, link_key, "
        "created, modified) VALUES (?,?,?,?,?,?,?,?,?,?)",
        (owner_id, parent_id, kind, name, names.key(name), access,
         names.media(name) if kind == FILE else 0, secrets.token_urlsafe(12), now, now))


def rename(db: sqlite3.Connection, item: sqlite3.Row, name: str) -> None:
    """Gives the item a new name in its folder."""
    names.check(name)
    if item["home"]:
        raise Failure("Rename failed", "The home folder cannot be renamed.")
    if item["trashed"]:
        raise Failure("Rename failed", "An item in the Trash cannot be renamed. Please restore it first.")
    require_free_name(db, item["owner_id"], item["parent_id"], name, item["id"])
    db.execute("UPDATE items SET name = ?, name_key = ?, media = ? WHERE id = ?",
               (name, names.key(name), names.media(name) if item["kind"] == FILE else 0, item["id"]))


def move_to_trash(db: sqlite3.Connection, item: sqlite3.Row) -> None:
    """Marks the item; what lies in a folder goes and comes back with it."""
    if item["home"]:
        raise Failure("Delete failed", "The home folder cannot be deleted.")
    if not item["trashed"]:
        db.execute("UPDATE items SET trashed = ? WHERE id = ?", (int(time.time()), item["id"]))


def restore(db: sqlite3.Connection, item: sqlite3.Row) -> None:
    """Brings the item back to where it was, or to the root where that folder is gone."""
    if not item["trashed"]:
        raise Failure("Restore failed", f"'{item['name']}' is not in the Trash.")
    links = chain(db, item["id"])[1:]
    reachable = item["parent_id"] == ROOT or links and not any(link["trashed"] for link in links)
    parent_id = item["parent_id"] if reachable else ROOT
    require_free_name(db, item["owner_id"], parent_id, item["name"])
    db.execute("UPDATE items SET trashed = 0, parent_id = ? WHERE id = ?", (parent_id, item["id"]))


_BELOW = """
    WITH RECURSIVE below(id) AS (
        SELECT :id UNION ALL
        SELECT i.id FROM items i JOIN below b ON i.parent_id = b.id WHERE i.trashed = 0) """


def remove(db: sqlite3.Connection, item: sqlite3.Row) -> None:
    """Deletes the item for good, with all that lies in it.

    What was put into the Trash by itself stays there: it was not seen in the folder any
    more when the folder was deleted, and comes back to the root when restored.
    """
    if item["home"]:
        raise Failure("Delete failed", "The home folder cannot be deleted.")
    db.execute(_BELOW + "DELETE FROM items WHERE id IN below", {"id": item["id"]})


def require_space(db: sqlite3.Connection, owner_id: int, more: int,
                  contents: Contents | None = None) -> None:
    """Refuses `more` bytes that the owner's quota does not hold; with `contents` beside the uploads
    that are open."""
    free = free_space(db, owner_id, contents)
    if free is not None and max(free, 0) < more:
        raise Failure("Not enough space", "There is not enough free space in the store for this file.")


def free_space(db: sqlite3.Connection, owner_id: int, contents: Contents | None = None) -> int | None:
    """Bytes that the account may still fill, or None where it has no limit; with `contents` less
    what its open uploads hold beyond what they replace, which may be more than there is."""
    quota, used = db.execute("SELECT quota, used FROM users WHERE id = ?", (owner_id,)).fetchone()
    if not quota:
        return None
    free = max(quota - used, 0)
    if contents:
        growth: dict[int, int] = {}
        for row in db.execute("SELECT u.location, i.id, i.size FROM items i JOIN uploads u "
                              "ON u.item_id = i.id WHERE i.owner_id = ? AND u.closed_size IS NULL",
                              (owner_id,)):
            # Of several uploads to one file only one will take its content's room.
            before = growth.get(row["id"], -row["size"])
            growth[row["id"]] = before + contents.size(row["location"])
        free -= sum(max(count, 0) for count in growth.values())
    return free


def copy_file(db: sqlite3.Connection, item: sqlite3.Row, owner_id: int, parent_id: int) -> None:
    """A second file over the same content; no byte is copied."""
    require_free_name(db, owner_id, parent_id, item["name"])
    require_space(db, owner_id, item["size"])
    new_id = create(db, owner_id, parent_id, FILE, item["name"], item["access"])
    db.execute("UPDATE items SET (description, price, size, content_id, modified, accessed) = "
               "(SELECT description, price, size, content_id, modified, accessed FROM items "
               "WHERE id = ?) WHERE id = ?", (item["id"], new_id))


def move_file(db: sqlite3.Connection, item: sqlite3.Row, owner_id: int, parent_id: int) -> None:
    """The same file, its number kept, in another folder; out of the Trash too."""
    require_free_name(db, owner_id, parent_id, item["name"], item["id"])
    if owner_id != item["owner_id"]:
        require_space(db, owner_id, item["size"])
    db.execute("UPDATE items SET owner_id = ?, parent_id = ?, trashed = 0 WHERE id = ?",
               (owner_id, parent_id, item["id"]))


def path(db: sqlite3.Connection, item_id: int, top: int = ROOT) -> str:
    """Names from the root, or from the top of a share, down to the item, parted by "/"."""
    parts = []
    for link in chain(db, item_id):
        parts.append(link["name"])
        if link["id"] == top:
            break
    return "/".join(reversed(parts))


def find_path(db: sqlite3.Connection, owner_id: int, text: str) -> int:
    """The folder at a path of the owner's tree, for the administrator's commands."""
    current = ROOT
    for name in filter(None, text.split("/")):
        row = db.execute("SELECT id FROM items WHERE owner_id = ? AND parent_id = ? AND name_key = ? "
                         "AND kind = ? AND trashed = 0",
                         (owner_id, current, names.key(name), DIRECTORY)).fetchone()
        if row is None:
            raise Failure("Not found", f"There is no folder '{name}' in '{text}'.")
        current = row["id"]
    return current
