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

from .database import insert
from .names import key
from .wire import Failure

_SCRYPT = {"n": 1 << 14, "r": 8, "p": 1, "maxmem": 64 << 20}
_USER_NAME = re.compile(r"[A-Za-z][A-Za-z0-9._-]{1,31}")
_NOT_IN_EMAIL = set(" #!?&\\|/<>\n\r")
MIN_PASSWORD = 4
SESSION_IDLE_SECONDS = 180 * 86400


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
    """The same test of an address that the client makes."""
    if len(text) < 5 or _NOT_IN_EMAIL & set(text) or text.find("@") < 1:
        return False
    dot = text.find(".", text.find("@"))
    return dot >= 0 and dot < len(text) - 1


def create_user(db: sqlite3.Connection, name: str, password_hash: str, email: str,
                first_name: str, last_name: str, quota: int) -> int:
    """Adds an account and returns its number; sharings that wait for its address begin."""
    if not _USER_NAME.fullmatch(name):
        raise Failure("Wrong user name", "A user name has 2 to 32 letters, digits, dots, hyphens "
                      "or underscores and begins with a letter.")
    if _name_taken(db, name):
        raise Failure("User name taken", f"The user name '{name}' is taken.", kind=1)
    if email and db.execute("SELECT 1 FROM users WHERE email_key = ?", (key(email),)).fetchone():
        raise Failure("Address taken", f"There is already an account for '{email}'.", kind=1)
    now = int(time.time())
    user_id = insert(
        db, "INSERT INTO users(name, name_key, password, email, email_key, first_name, last_name, "
        "quota, created) VALUES (?,?,?,?,?,?,?,?,?)",
        (name, key(name), password_hash, email, key(email), first_name, last_name, quota,
         now))
    db.execute("INSERT INTO shares(dir_id, owner_id, with_id, mode, created) "
               "SELECT dir_id, owner_id, ?, 0, ? FROM invitations WHERE email_key = ?",
               (user_id, now, key(email)))
    db.execute("DELETE FROM invitations WHERE email_key = ?", (key(email),))
    return user_id


def create_access(db: sqlite3.Connection, name: str, password: str | None, dir_id: int,
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
               (name, key(name), None if password is None else hash_password(password), dir_id,
                owner_id, mode, int(time.time())))


def _name_taken(db: sqlite3.Connection, name: str) -> bool:
    return db.execute("SELECT 1 FROM users WHERE name_key = :k UNION ALL "
                      "SELECT 1 FROM accesses WHERE name_key = :k",
                      {"k": key(name)}).fetchone() is not None


def find_user(db: sqlite3.Connection, name: str) -> sqlite3.Row | None:
    """An account by its user name or its address."""
    return db.execute("SELECT * FROM users WHERE name_key = :k OR (email_key = :k AND :k <> '')",
                      {"k": key(name)}).fetchone()


def check_password(db: sqlite3.Connection, name: str, password: str) -> tuple[int | None, int | None]:
    """(account, None) or (None, access id's number) for the right name and password."""
    user = find_user(db, name)
    access = None if user else db.execute("SELECT * FROM accesses WHERE name_key = ?",
                                          (key(name),)).fetchone()
    if access and access["password"] is None and not password:
        return None, access["id"]
    stored = (user or access or {"password": None})["password"]
    # An unknown name costs as much time as a wrong password, so that names cannot be tried.
    if not password_fits(password, stored or _nobody()) or stored is None:
        raise Failure("Login failed", "The user name or the password is wrong.")
    return (user["id"], None) if user else (None, access["id"] if access else None)


def open_session(db: sqlite3.Connection, user_id: int | None, access_id: int | None, pc_id: str,
                 version: str) -> Principal:
    """Starts a session; the transfer account is made at the first one."""
    if not db.execute("SELECT 1 FROM transfer_accounts WHERE user_id IS ? AND access_id IS ?",
                      (user_id, access_id)).fetchone():
        login = f"u{user_id}" if user_id is not None else f"g{access_id}"
        db.execute("INSERT INTO transfer_accounts(login, password, link_key, user_id, access_id) "
                   "VALUES (?,?,?,?,?)",
                   (login, secrets.token_hex(16), secrets.token_hex(8), user_id, access_id))
    row = db.execute(_PRINCIPAL + "WHERE a.user_id IS ? AND a.access_id IS ?",
                     (user_id, access_id)).fetchone()
    # The number in front is what a reader of decimal numbers takes from the token.
    token = f"{user_id or 0}-{secrets.token_hex(16)}"
    now = int(time.time())
    db.execute("INSERT INTO sessions VALUES (?,?,?,?,?,?)",
               (token, row["account_id"], pc_id, version, now, now))
    return _principal(row, token)


def find_session(db: sqlite3.Connection, token: str, access_name: str) -> Principal:
    """The session that a request names by `user_id` and `user_id_access`."""
    row = db.execute(_PRINCIPAL + "JOIN sessions s ON s.account_id = a.id WHERE s.token = ?",
                     (token,)).fetchone()
    if row is None or (row["access_name"] or "") != access_name:
        raise Failure("Not signed in", "The session is not known here. Please sign in again.")
    return _principal(row, token)


def find_transfer_account(db: sqlite3.Connection, login: str, password: str) -> Principal | None:
    """The owner of a transfer account, for the right password."""
    row = db.execute(_PRINCIPAL + "WHERE a.login = ?", (login,)).fetchone()
    if row is None or not hmac.compare_digest(row["transfer_password"].encode(),
                                              password.encode("utf-8", "surrogateescape")):
        return None
    return _principal(row, "")


def find_by_link_key(db: sqlite3.Connection, link_key: str) -> Principal | None:
    """The account whose links carry this key."""
    row = db.execute(_PRINCIPAL + "WHERE a.link_key = ?", (link_key,)).fetchone()
    return row and _principal(row, "")


def touch_session(db: sqlite3.Connection, token: str) -> None:
    """Notes that the session is in use, once an hour at most."""
    now = int(time.time())
    db.execute("UPDATE sessions SET seen = ? WHERE token = ? AND seen < ?", (now, token, now - 3600))


def forget_idle_sessions(db: sqlite3.Connection) -> None:
    db.execute("DELETE FROM sessions WHERE seen < ?", (int(time.time()) - SESSION_IDLE_SECONDS,))
