"""Who may come in: accounts, access ids for guests, sessions, transfer accounts."""
from __future__ import annotations

import functools
import hashlib
import hmac
import os
import re
import secrets
import sqlite3
import time
from dataclasses import dataclass

from .database import Database, insert
from .names import key
from .wire import Failure

_SCRYPT = {"n": 1 << 14, "r": 8, "p": 1, "maxmem": 64 << 20}
_USER_NAME = re.compile(r"[A-Za-z][A-Za-z0-9._-]{1,31}")
_NOT_IN_EMAIL = set(" #!?&\\|/<>\n\r,;:\"()[]")
MIN_PASSWORD = 4
MAX_PASSWORD = 256
SESSION_IDLE_SECONDS = 180 * 86400
MAX_SESSIONS = 1000
"""Of one account; a new one beyond it ends the one that was unused for longest."""


@dataclass(frozen=True)
class Principal:
    """Who asks: an account's user, or a guest who came by an access id."""

    token: str
    account_id: int
    transfer_login: str
    transfer_password: str
    link_key: str
    user_id: int
    """The account; for a guest the owner of the folder that the access id opens."""
    name: str
    lang: str
    level: str
    quota: int
    upload_limit: int | None
    download_limit: int | None
    access_name: str
    """The access id of a guest session, else empty."""
    access_dir: int
    access_full: bool

    @property
    def is_guest(self) -> bool:
        return self.access_name != ""


@dataclass(frozen=True)
class Proof:
    """Whose password was right, and the hash that it fitted."""

    user_id: int | None
    access_id: int | None
    """Exactly one of the two is a number."""
    password: str | None

    def confirm(self, db: sqlite3.Connection) -> None:
        """Throws if the password was changed, or the account removed, since it was checked: the
        hash takes a while, and what the old password opens must end with it."""
        table = "users" if self.user_id is not None else "accesses"
        row = db.execute(f"SELECT password FROM {table} WHERE id = ?",
                         (self.access_id if self.user_id is None else self.user_id,)).fetchone()
        if row is None or row["password"] != self.password:
            raise Failure("Login failed", "The user name or the password is wrong.")


_PRINCIPAL = """
    SELECT a.id AS account_id, a.login, a.password AS transfer_password, a.link_key,
           u.id AS user_id, u.name AS user_name, u.lang, u.level, u.quota, u.upload_limit,
           u.download_limit, x.name AS access_name, x.dir_id, x.mode
    FROM transfer_accounts a LEFT JOIN accesses x ON x.id = a.access_id
    JOIN users u ON u.id = coalesce(a.user_id, x.owner_id) """


def _principal(row: sqlite3.Row, token: str) -> Principal:
    access = row["access_name"] or ""
    return Principal(
        token=token, account_id=row["account_id"], transfer_login=row["login"],
        transfer_password=row["transfer_password"], link_key=row["link_key"],
        user_id=row["user_id"], name=access or row["user_name"], lang=row["lang"],
        level=row["level"], quota=row["quota"], upload_limit=row["upload_limit"],
        download_limit=row["download_limit"], access_name=access,
        access_dir=row["dir_id"] or 0, access_full=row["mode"] == 1)


def hash_password(password: str) -> str:
    """A salted scrypt hash, as text."""
    salt = os.urandom(16)
    digest = hashlib.scrypt(password.encode("utf-8", "surrogatepass"), salt=salt, **_SCRYPT)
    return f"scrypt${salt.hex()}${digest.hex()}"


def password_fits(password: str, stored: str) -> bool:
    """Compares in constant time."""
    _, salt, digest = stored.split("$")
    found = hashlib.scrypt(password.encode("utf-8", "surrogatepass"),
                           salt=bytes.fromhex(salt), **_SCRYPT)
    return hmac.compare_digest(found.hex(), digest)


@functools.cache
def _nobody() -> str:
    """A hash that no password fits."""
    return hash_password(secrets.token_hex())


def is_email(text: str) -> bool:
    """The test of an address that the client makes, kept to what is one address in a letter."""
    if not 5 <= len(text) <= 254 or not text.isascii() or not text.isprintable():
        return False
    if _NOT_IN_EMAIL & set(text) or text.find("@") < 1 or text.count("@") > 1:
        return False
    dot = text.find(".", text.find("@"))
    return dot >= 0 and dot < len(text) - 1


def create_user(db: sqlite3.Connection, name: str, password_hash: str, email: str,
                first_name: str, last_name: str, quota: int, proven: bool = False) -> int:
    """Adds an account and returns its number. Who has `proven` to receive letters at the address
    takes it from an account that only claimed it."""
    if not _USER_NAME.fullmatch(name):
        raise Failure("Wrong user name", "A user name has 2 to 32 letters, digits, dots, hyphens "
                      "or underscores and begins with a letter.")
    if _name_taken(db, name):
        raise Failure("User name taken", f"The user name '{name}' is taken.", kind=1)
    if email and proven:
        db.execute("UPDATE users SET email = '', email_key = '' WHERE email_key = ? "
                   "AND email_proven = 0", (key(email),))
    if email and db.execute("SELECT 1 FROM users WHERE email_key = ?", (key(email),)).fetchone():
        raise Failure("Address taken", f"There is already an account for '{email}'.", kind=1)
    now = int(time.time())
    return insert(
        db, "INSERT INTO users(name, name_key, password, email, email_key, first_name, last_name, "
        "quota, created, email_proven) VALUES (?,?,?,?,?,?,?,?,?,?)",
        (name, key(name), password_hash, email, key(email), first_name, last_name, quota, now,
         int(proven and email != "")))


def set_password(db: sqlite3.Connection, user_id: int, password_hash: str) -> None:
    """Sets the password and ends what the old one opened: sessions, transfers, direct links."""
    db.execute("UPDATE users SET password = ?, demo = 0 WHERE id = ?", (password_hash, user_id))
    mine = "(SELECT id FROM transfer_accounts WHERE user_id = ?)"
    db.execute(f"DELETE FROM sessions WHERE account_id IN {mine}", (user_id,))
    db.execute(f"UPDATE transfer_accounts SET password = ?, link_key = ? WHERE id IN {mine}",
               (secrets.token_hex(16), secrets.token_hex(16), user_id))


def remove_user(db: sqlite3.Connection, user_id: int) -> None:
    """Deletes the account with all that is its own; contents go when nobody reads them any more."""
    for table, column in (("transfer_accounts", "user_id"), ("accesses", "owner_id"),
                          ("shares", "owner_id"), ("shares", "with_id"), ("invitations", "owner_id"),
                          ("items", "owner_id"), ("notifications", "user_id"),
                          ("settings", "user_id"), ("users", "id")):
        db.execute(f"DELETE FROM {table} WHERE {column} = ?", (user_id,))


def create_access(db: sqlite3.Connection, name: str, password_hash: str | None, dir_id: int,
                  owner_id: int, mode: int) -> None:
    """Adds an access id that opens one folder to guests; without a password anyone who
    knows the id may come in."""
    if not _USER_NAME.fullmatch(name):
        raise Failure("Wrong access id", "An access id has 2 to 32 letters, digits, dots, hyphens "
                      "or underscores and begins with a letter.")
    if _name_taken(db, name):
        raise Failure("Access id taken", f"'{name}' is already in use.", kind=1)
    db.execute("INSERT INTO accesses(name, name_key, password, dir_id, owner_id, mode, created) "
               "VALUES (?,?,?,?,?,?,?)",
               (name, key(name), password_hash, dir_id, owner_id, mode, int(time.time())))


def _name_taken(db: sqlite3.Connection, name: str) -> bool:
    return db.execute("SELECT 1 FROM users WHERE name_key = :k UNION ALL "
                      "SELECT 1 FROM accesses WHERE name_key = :k",
                      {"k": key(name)}).fetchone() is not None


def find_user(db: sqlite3.Connection, name: str) -> sqlite3.Row | None:
    """An account by its user name or its address."""
    return db.execute("SELECT * FROM users WHERE name_key = :k OR (email_key = :k AND :k <> '')",
                      {"k": key(name)}).fetchone()


def find_proven_address(db: sqlite3.Connection, email: str) -> sqlite3.Row | None:
    """The account whose user has proven to receive letters at the address."""
    return db.execute("SELECT * FROM users WHERE email_key = ? AND email_proven = 1 AND email <> ''",
                      (key(email),)).fetchone()


def checked_new_password(password: str, again: str) -> str:
    """A password to be set, when it was given twice and is neither short nor long."""
    if password != again:
        raise Failure("Wrong password", "The two passwords differ.")
    if not MIN_PASSWORD <= len(password) <= MAX_PASSWORD:
        raise Failure("Wrong password",
                      f"A password needs {MIN_PASSWORD} to {MAX_PASSWORD} characters.")
    return password


def check_password(db: sqlite3.Connection, name: str, password: str) -> Proof:
    """Slow on purpose. What the proof then opens confirms it in its own transaction."""
    user = find_user(db, name)
    access = None if user else db.execute("SELECT * FROM accesses WHERE name_key = ?",
                                          (key(name),)).fetchone()
    if len(password) > MAX_PASSWORD:
        raise Failure("Login failed", "The user name or the password is wrong.")
    if access and access["password"] is None and not password:
        return Proof(None, access["id"], None)
    stored = (user or access or {"password": None})["password"]
    # An unknown name costs as much time as a wrong password, so that names cannot be tried.
    if not password_fits(password, stored or _nobody()) or stored is None:
        raise Failure("Login failed", "The user name or the password is wrong.")
    return Proof(user["id"] if user else None, access["id"] if access else None, stored)


def open_session(db: sqlite3.Connection, user_id: int | None, access_id: int | None, pc_id: str,
                 version: str) -> Principal:
    """Starts a session; the transfer account is made at the first one."""
    if not db.execute("SELECT 1 FROM transfer_accounts WHERE user_id IS ? AND access_id IS ?",
                      (user_id, access_id)).fetchone():
        login = f"u{user_id}" if user_id is not None else f"g{access_id}"
        db.execute("INSERT INTO transfer_accounts(login, password, link_key, user_id, access_id) "
                   "VALUES (?,?,?,?,?)",
                   (login, secrets.token_hex(16), secrets.token_hex(16), user_id, access_id))
    row = db.execute(_PRINCIPAL + "WHERE a.user_id IS ? AND a.access_id IS ?",
                     (user_id, access_id)).fetchone()
    # The number in front is what a reader of decimal numbers takes from the token.
    token = f"{user_id or 0}-{secrets.token_hex(16)}"
    now = int(time.time())
    db.execute("INSERT INTO sessions VALUES (?,?,?,?,?,?)",
               (token, row["account_id"], pc_id, version, now, now))
    db.execute("DELETE FROM sessions WHERE token IN (SELECT token FROM sessions WHERE account_id = ? "
               "ORDER BY seen DESC, created DESC LIMIT -1 OFFSET ?)", (row["account_id"], MAX_SESSIONS))
    return _principal(row, token)


def find_session(database: Database, token: str, access_name: str) -> Principal:
    """The session that a request names by `user_id` and `user_id_access`; to ask for it is to use
    it, which is noted once an hour."""
    now = int(time.time())
    db = database.connection()
    session = db.execute("SELECT account_id, seen FROM sessions WHERE token = ? AND seen >= ?",
                         (token, now - SESSION_IDLE_SECONDS)).fetchone()
    row = session and db.execute(_PRINCIPAL + "WHERE a.id = ?", (session["account_id"],)).fetchone()
    if row is None or (row["access_name"] or "") != access_name:
        raise Failure("Not signed in", "The session is not known here. Please sign in again.")
    if session["seen"] < now - 3600:
        with database.transaction(write=True) as db:
            db.execute("UPDATE sessions SET seen = ? WHERE token = ?", (now, token))
    return _principal(row, token)


def find_transfer_account(db: sqlite3.Connection, login: str, password: str) -> Principal | None:
    """The owner of a transfer account, for the right password."""
    row = db.execute(_PRINCIPAL + "WHERE a.login = ?", (login,)).fetchone()
    if row is None or not hmac.compare_digest(row["transfer_password"].encode(),
                                              password.encode("utf-8", "surrogateescape")):
        return None
    return _principal(row, "")


def is_current(db: sqlite3.Connection, who: Principal) -> bool:
    """Whether a transfer session that was opened as `who` would still be let in."""
    return db.execute("SELECT 1 FROM transfer_accounts WHERE id = ? AND password = ?",
                      (who.account_id, who.transfer_password)).fetchone() is not None


def sign_link(link_key: str, file_id: int) -> str:
    """What a direct link to the file carries as its proof: a keyed digest, quick enough for each
    file of a long listing."""
    return hashlib.blake2b(b"%d" % file_id, key=link_key.encode(), digest_size=16).hexdigest()


def find_by_link(db: sqlite3.Connection, account_id: int, file_id: int,
                 signature: str) -> Principal | None:
    """The account that a direct link to the file was made for, if it really was."""
    row = db.execute(_PRINCIPAL + "WHERE a.id = ?", (account_id,)).fetchone()
    if row is None or not hmac.compare_digest(sign_link(row["link_key"], file_id), signature):
        return None
    return _principal(row, "")


def forget_idle_sessions(db: sqlite3.Connection) -> None:
    db.execute("DELETE FROM sessions WHERE seen < ?", (int(time.time()) - SESSION_IDLE_SECONDS,))
