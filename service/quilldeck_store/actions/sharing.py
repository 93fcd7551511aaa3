"""Sharing: who, what, how."""
from __future__ import annotations

import sqlite3

from .. import invitations
from ..accounts import find_proven_address, is_email
from ..names import brief, key
from ..rights import DIRECTORY, chain, own_scope
from ..store import now
from ..wire import Failure, elements
from .table import Mode, Request, action


def _user_reply(request: Request, name: str, by_email: bool) -> str:
    """A number that sharings name the account by; an access id shows as what it is."""
    own_scope(request.who)
    row = (find_proven_address(request.db, name) if by_email else
           request.db.execute("SELECT id FROM users WHERE name_key = ?", (key(name),)).fetchone())
    if row:
        return elements(UserID=row["id"], UserAccessID="")
    access = not by_email and request.db.execute(
        "SELECT name FROM accesses WHERE name_key = ?", (key(name),)).fetchone()
    if access:
        return elements(UserID=0, UserAccessID=access["name"])
    raise Failure("User not found", f"There is no user '{brief(name)}'.")


@action("get_userid_by_name", "name", mode=Mode.READ)
def get_userid_by_name(request: Request) -> str:
    return _user_reply(request, request.form.get("name"), by_email=False)


@action("get_userid_by_email", "email", mode=Mode.READ)
def get_userid_by_email(request: Request) -> str:
    return _user_reply(request, request.form.get("email"), by_email=True)


@action("share_folder", "dir_id")
def share_folder(request: Request) -> None:
    """Shares with an account by its number, or invites an address."""
    item = own_scope(request.who).item(request.db, request.form.integer("dir_id"), DIRECTORY)
    if any(link["trashed"] for link in chain(request.db, item["id"])):
        raise Failure("Sharing failed", "A folder in the Trash cannot be shared.")
    if "sharewithuser_id" in request.form:
        share_with(request, item["id"], request.form.integer("sharewithuser_id"),
                   _mode(request.form.integer("sharemode")))
    else:
        invite(request, item, request.form.text("email"))


def _mode(value: int) -> int:
    if value not in (0, 1):
        raise Failure("Wrong request", "The share mode must be 0 (view) or 1 (full).")
    return value


def share_with(request: Request, dir_id: int, user_id: int, mode: int) -> None:
    """Adds a sharing; one that exists keeps its mode."""
    if user_id == request.who.user_id:
        raise Failure("Sharing failed", "A folder cannot be shared with its owner.")
    if not request.db.execute("SELECT 1 FROM users WHERE id = ?", (user_id,)).fetchone():
        raise Failure("User not found", "There is no such user.")
    request.db.execute("INSERT OR IGNORE INTO shares(dir_id, owner_id, with_id, mode, created) "
                       "VALUES (?,?,?,?,?)", (dir_id, request.who.user_id, user_id, mode, now()))


def invite(request: Request, item: sqlite3.Row, email: str) -> None:
    """Shares for viewing with the account that has proven the address, or writes to it."""
    if not is_email(email):
        raise Failure("Sharing failed", f"'{brief(email)}' is no e-mail address.")
    user = find_proven_address(request.db, email)
    if user:
        share_with(request, item["id"], user["id"], 0)
    else:
        invitations.invite(request.store, request.db, request.who.user_id, request.who.name, item,
                           email)


def _own_share(request: Request) -> int:
    own_scope(request.who)
    row = request.db.execute("SELECT id FROM shares WHERE id = ? AND owner_id = ?",
                             (request.form.integer("sharedfolder_id"),
                              request.who.user_id)).fetchone()
    if row is None:
        raise Failure("Not found", "This sharing does not exist any more.")
    return row["id"]


@action("change_folder_share_mode", "sharedfolder_id", "sharemode")
def change_folder_share_mode(request: Request) -> None:
    request.db.execute("UPDATE shares SET mode = ? WHERE id = ?",
                       (_mode(request.form.integer("sharemode")), _own_share(request)))


@action("delete_sharing_with_user", "sharedfolder_id")
def delete_sharing_with_user(request: Request) -> None:
    request.db.execute("DELETE FROM shares WHERE id = ?", (_own_share(request),))


@action("list_share_whith_users", "dir_id", mode=Mode.READ)
def list_share_with_users(request: Request) -> str:
    item = own_scope(request.who).item(request.db, request.form.integer("dir_id"), DIRECTORY)
    rows = request.db.execute("SELECT s.id, s.with_id, u.name, s.mode FROM shares s "
                              "JOIN users u ON u.id = s.with_id WHERE s.dir_id = ? ORDER BY s.id",
                              (item["id"],))
    return "".join("<ShareWithUser>" + elements(ID=row["id"], ShareWithUserID=row["with_id"],
                                                Name=row["name"], ShareMode=row["mode"])
                   + "</ShareWithUser>" for row in rows)


def _live_shares(request: Request, owner_id: int | None = None) -> list[sqlite3.Row]:
    """Sharings with the user whose folder is not in its owner's Trash."""
    rows = request.db.execute(
        "SELECT s.dir_id, s.owner_id, u.name FROM shares s JOIN users u ON u.id = s.owner_id "
        "JOIN items i ON i.id = s.dir_id WHERE s.with_id = ? AND s.owner_id = coalesce(?, s.owner_id) "
        "ORDER BY u.name_key, i.name_key", (request.who.user_id, owner_id)).fetchall()
    return [row for row in rows
            if not any(link["trashed"] for link in chain(request.db, row["dir_id"]))]


@action("has_share_folders", mode=Mode.READ)
def has_share_folders(request: Request) -> str:
    """The root itself is the answer."""
    return str(not request.who.is_guest and bool(_live_shares(request)))


@action("list_shared_users", mode=Mode.READ)
def list_shared_users(request: Request) -> str:
    own_scope(request.who)
    users = {row["owner_id"]: row["name"] for row in _live_shares(request)}
    return "".join(f"<UserSharedFolder>{elements(Name=name, UserID=number)}</UserSharedFolder>"
                   for number, name in users.items())


@action("list_shared_directories", "share_user_id", mode=Mode.READ)
def list_shared_directories(request: Request) -> str:
    own_scope(request.who)
    listing = request.listing()
    return "".join(listing.directory(row["dir_id"], "SharedDirectory")
                   for row in _live_shares(request, request.form.integer("share_user_id")))
