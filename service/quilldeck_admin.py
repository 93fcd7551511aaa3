#!/usr/bin/python3
"""Looks after a Quilldeck store; may be used while the service runs. --help tells how."""
from __future__ import annotations

import argparse
import getpass
import sqlite3
import sys
from pathlib import Path

from quilldeck_store import accounts, tree
from quilldeck_store.database import Database
from quilldeck_store.names import key
from quilldeck_store.options import size
from quilldeck_store.rights import ROOT
from quilldeck_store.store import now
from quilldeck_store.wire import Failure


def _user(db: sqlite3.Connection, name: str) -> sqlite3.Row:
    row = accounts.find_user(db, name)
    if row is None:
        raise Failure("Not found", f"There is no user '{name}'.")
    return row


def _ask_password(given: str | None) -> str:
    password = getpass.getpass("Password: ") if given is None else given
    if len(password) < accounts.MIN_PASSWORD:
        raise Failure("Wrong password", f"A password needs at least {accounts.MIN_PASSWORD} characters.")
    return password


def add_user(db: sqlite3.Connection, args: argparse.Namespace) -> None:
    password = accounts.hash_password(_ask_password(args.password))
    accounts.create_user(db, args.name, password, args.email, "", "", args.quota)


def set_password(db: sqlite3.Connection, args: argparse.Namespace) -> None:
    """Sets the password and ends the user's sessions."""
    user = _user(db, args.name)["id"]
    db.execute("UPDATE users SET password = ? WHERE id = ?",
               (accounts.hash_password(_ask_password(args.password)), user))
    db.execute("DELETE FROM sessions WHERE account_id IN "
               "(SELECT id FROM transfer_accounts WHERE user_id = ?)", (user,))


def set_limits(db: sqlite3.Connection, args: argparse.Namespace) -> None:
    user = _user(db, args.name)["id"]
    for column in ("quota", "upload_limit", "download_limit"):
        if getattr(args, column) is not None:
            db.execute(f"UPDATE users SET {column} = ? WHERE id = ?", (getattr(args, column), user))


def add_access(db: sqlite3.Connection, args: argparse.Namespace) -> None:
    owner = _user(db, args.owner)["id"]
    folder = tree.find_path(db, owner, args.folder)
    if folder == ROOT:
        raise Failure("Wrong folder", "An access id opens one folder, not the whole store.")
    accounts.create_access(db, args.id, args.password, folder, owner, int(args.full))


def remove_access(db: sqlite3.Connection, args: argparse.Namespace) -> None:
    if not db.execute("DELETE FROM accesses WHERE name_key = ?", (key(args.id),)).rowcount:
        raise Failure("Not found", f"There is no access id '{args.id}'.")


def notify(db: sqlite3.Connection, args: argparse.Namespace) -> None:
    rows = [_user(db, args.name)] if args.name else db.execute("SELECT id FROM users").fetchall()
    db.executemany("INSERT INTO notifications(user_id, title, text, url, created) VALUES (?,?,?,?,?)",
                   [(row["id"], args.title, args.text, args.url, now()) for row in rows])


def show(db: sqlite3.Connection, args: argparse.Namespace) -> None:
    for row in db.execute("SELECT * FROM users ORDER BY name_key"):
        print(f"user {row['name']}: number {row['id']}, {row['email'] or 'no address'}, "
              f"{row['used']} of {row['quota'] or 'unlimited'} bytes")
    for row in db.execute("SELECT x.*, u.name AS owner FROM accesses x JOIN users u ON u.id = x.owner_id"):
        print(f"access id {row['name']}: {row['owner']}'s folder '{tree.path(db, row['dir_id'])}', "
              f"{'full' if row['mode'] else 'view'}, "
              f"{'no password' if row['password'] is None else 'password'}")


def _parse() -> argparse.Namespace:
    parser = argparse.ArgumentParser(description="Looks after a Quilldeck store.")
    parser.add_argument("--data", type=Path, default=Path("service-data"), metavar="DIR")
    commands = parser.add_subparsers(required=True, metavar="COMMAND")

    def command(name: str, function: object, summary: str, *positional: str) -> argparse.ArgumentParser:
        sub = commands.add_parser(name, help=summary, description=summary)
        sub.set_defaults(function=function)
        for argument in positional:
            sub.add_argument(argument)
        return sub

    sub = command("add-user", add_user, "adds an account; asks for the password", "name")
    sub.add_argument("--email", default="")
    sub.add_argument("--password")
    sub.add_argument("--quota", type=size, default=10 << 30, help="bytes, K, M, G, T; 0: no limit")
    sub = command("set-password", set_password, "sets a password and ends the user's sessions", "name")
    sub.add_argument("--password")
    sub = command("set-limits", set_limits, "sets quota and speed limits of an account", "name")
    for option in ("--quota", "--upload-limit", "--download-limit"):
        sub.add_argument(option, type=size)
    sub = command("add-access", add_access, "makes an access id that opens a folder to guests",
                  "id", "owner", "folder")
    sub.add_argument("--password", help="without one, whoever knows the id may come in")
    sub.add_argument("--full", action="store_true", help="guests may also change things")
    command("remove-access", remove_access, "ends an access id and its sessions", "id")
    sub = command("notify", notify, "tells users something at their next start", "title", "text")
    sub.add_argument("--url", default="")
    sub.add_argument("--name", help="one user only (default: all)")
    command("show", show, "lists accounts and access ids")
    return parser.parse_args()


def main() -> int:
    """Carries out one command."""
    args = _parse()
    file = args.data / "store.sqlite"
    if not file.exists():
        print(f"quilldeck_admin: there is no store in {args.data}", file=sys.stderr)
        return 1
    try:
        with Database(file).transaction(write=True) as db:
            args.function(db, args)
    except Failure as failure:
        print(f"quilldeck_admin: {failure.description}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
