"""Invitations of people by letter: the code in the letter is what proves the address."""
from __future__ import annotations

import hashlib
import os
import secrets
import sqlite3
import time
from email.headerregistry import Address
from email.message import EmailMessage
from pathlib import Path

from .accounts import find_proven_address
from .names import key
from .rights import chain
from .store import Store, now
from .wire import Failure

KEEP_SECONDS = 30 * 86400
MAX_WAITING = 100
"""Invitations of one account that wait for their answer."""


def _digest(code: str) -> str:
    return hashlib.sha256(code.encode("utf-8", "surrogatepass")).hexdigest()


def invite(store: Store, db: sqlite3.Connection, owner_id: int, sender: str, item: sqlite3.Row,
           address: str) -> None:
    """Writes to the address, unless a letter about the folder is on its way already."""
    forget_old(db)
    if db.execute("SELECT 1 FROM invitations WHERE dir_id = ? AND email_key = ?",
                  (item["id"], key(address))).fetchone():
        return
    waiting, = db.execute("SELECT count(*) FROM invitations WHERE owner_id = ?",
                          (owner_id,)).fetchone()
    if waiting >= MAX_WAITING:
        raise Failure("Sharing failed", f"{MAX_WAITING} of your invitations wait for an answer. "
                      "Please invite others when those are answered.")
    code = secrets.token_urlsafe(24)
    db.execute("INSERT INTO invitations(dir_id, owner_id, email, email_key, code, created) "
               "VALUES (?,?,?,?,?,?)",
               (item["id"], owner_id, address, key(address), _digest(code), now()))
    _write(store.outbox, sender, item["name"], address, f"{store.base_url}/i/{code}")


def forget_old(db: sqlite3.Connection) -> None:
    db.execute("DELETE FROM invitations WHERE created < ?", (now() - KEEP_SECONDS,))


def find(db: sqlite3.Connection, code: str) -> sqlite3.Row | None:
    """The invitation of a letter's code, with names of the sender and the folder, while it may
    still be answered."""
    row = db.execute("SELECT v.*, u.name AS sender, i.name AS folder FROM invitations v "
                     "JOIN users u ON u.id = v.owner_id JOIN items i ON i.id = v.dir_id "
                     "WHERE v.code = ? AND v.created >= ?",
                     (_digest(code), now() - KEEP_SECONDS)).fetchone()
    if row and any(link["trashed"] for link in chain(db, row["dir_id"])):
        return None
    return row


def accept(db: sqlite3.Connection, invitation: sqlite3.Row, user_id: int) -> None:
    """Begins the sharing with the account of whoever had the letter."""
    if user_id == invitation["owner_id"]:
        raise Failure("Sharing failed", "This folder is your own.")
    proven = find_proven_address(db, invitation["email"])
    if proven is None:
        db.execute("UPDATE users SET email_proven = 1 WHERE id = ? AND email_key = ?",
                   (user_id, invitation["email_key"]))
    db.execute("INSERT OR IGNORE INTO shares(dir_id, owner_id, with_id, mode, created) "
               "VALUES (?,?,?,0,?)", (invitation["dir_id"], invitation["owner_id"], user_id, now()))
    end(db, invitation)


def end(db: sqlite3.Connection, invitation: sqlite3.Row) -> None:
    """Forgets an invitation that was answered."""
    db.execute("DELETE FROM invitations WHERE id = ?", (invitation["id"],))


def _write(outbox: Path, sender: str, folder: str, address: str, url: str) -> None:
    """Puts a letter into the outbox, whence the host's own mail system takes it: whole under its
    name, or not there."""
    letter = EmailMessage()
    letter["To"] = Address(addr_spec=address)
    letter["Subject"] = f"{sender} shares the folder '{' '.join(folder.split())}' with you"
    letter.set_content(
        f"{sender} wants to share the folder '{folder}' with you on Quilldeck.\n\n"
        f"To see it, or to say no, open this page within {KEEP_SECONDS // 86400} days:\n{url}\n\n"
        "The page is for you alone: whoever opens it can take the folder in your place.\n")
    outbox.mkdir(mode=0o700, exist_ok=True)
    name = f"{time.time_ns()}-{secrets.token_hex(4)}"
    part = outbox / f".{name}.part"
    with os.fdopen(os.open(part, os.O_WRONLY | os.O_CREAT | os.O_EXCL, 0o600), "wb") as out:
        out.write(letter.as_bytes())
        out.flush()
        os.fsync(out.fileno())
    os.replace(part, outbox / f"{name}.eml")
