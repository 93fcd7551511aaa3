#!/usr/bin/python3
"""Looks after a Quilldeck store; may be used while the service runs. --help tells how."""
from __future__ import annotations

import argparse
import getpass
import sqlite3
import sys
from collections.abc import Callable
from pathlib import Path

from quilldeck_store import accounts, backup, tree
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


def _ask_password() -> str:
    """The hash of a password that is typed twice, or is the first line of what is piped in. To be
    asked outside of any transaction: nobody else could write while a person thinks."""
    if sys.stdin.isatty():
        password = getpass.getpass("Password: ")
        again = getpass.getpass("Once more: ")
    else:
        password = again = sys.stdin.readline().rstrip("\n")
    return accounts.hash_password(accounts.checked_new_password(password, again))


def add_user(store: Database, args: argparse.Namespace) -> None:
    if args.email and not accounts.is_email(args.email):
        raise Failure("Wrong address", f"'{args.email}' is no e-mail address.")
    password = _ask_password()
    with store.transaction(write=True) as db:
        # The host vouches for the address.
        accounts.create_user(db, args.name, password, args.email, "", "", args.quota, proven=True)


def remove_user(store: Database, args: argparse.Namespace) -> None:
    """Asks for the name again where a person sits at the terminal."""
    row = _user(store.connection(), args.name)
    if not args.yes:
        if not sys.stdin.isatty():
            raise Failure("Not confirmed", "This deletes all files of the account; confirm by --yes.")
        if input(f"Delete '{row['name']}' with {row['items']} files and folders, {row['used']} bytes? "
                 "Type the name again: ") != row["name"]:
            raise Failure("Not confirmed", "Nothing was deleted.")
    with store.transaction(write=True) as db:
        accounts.remove_user(db, row["id"])


def set_password(store: Database, args: argparse.Namespace) -> None:
    user = _user(store.connection(), args.name)["id"]
    password = _ask_password()
    with store.transaction(write=True) as db:
        accounts.set_password(db, user, password)


def set_limits(store: Database, args: argparse.Namespace) -> None:
    with store.transaction(write=True) as db:
        user = _user(db, args.name)["id"]
        for column in ("quota", "upload_limit", "download_limit"):
            if getattr(args, column) is not None:
                db.execute(f"UPDATE users SET {column} = ? WHERE id = ?", (getattr(args, column), user))


def add_access(store: Database, args: argparse.Namespace) -> None:
    password = _ask_password() if args.password else None
    with store.transaction(write=True) as db:
        owner = _user(db, args.owner)["id"]
        folder = tree.find_path(db, owner, args.folder)
        if folder == ROOT:
            raise Failure("Wrong folder", "An access id opens one folder, not the whole store.")
        accounts.create_access(db, args.id, password, folder, owner, int(args.full))


def remove_access(store: Database, args: argparse.Namespace) -> None:
    with store.transaction(write=True) as db:
        if not db.execute("DELETE FROM accesses WHERE name_key = ?", (key(args.id),)).rowcount:
            raise Failure("Not found", f"There is no access id '{args.id}'.")


def notify(store: Database, args: argparse.Namespace) -> None:
    with store.transaction(write=True) as db:
        rows = [_user(db, args.name)] if args.name else db.execute("SELECT id FROM users").fetchall()
        db.executemany("INSERT INTO notifications(user_id, title, text, url, created) VALUES (?,?,?,?,?)",
                       [(row["id"], args.title, args.text, args.url, now()) for row in rows])


def show(store: Database, args: argparse.Namespace) -> None:
    db = store.connection()
    for row in db.execute("SELECT * FROM users ORDER BY name_key"):
        print(f"user {row['name']}: number {row['id']}, {row['email'] or 'no address'}, "
              f"{row['used']} of {row['quota'] or 'unlimited'} bytes in {row['items']} items")
    for row in db.execute("SELECT x.*, u.name AS owner FROM accesses x JOIN users u ON u.id = x.owner_id"):
        print(f"access id {row['name']}: {row['owner']}'s folder '{tree.path(db, row['dir_id'])}', "
              f"{'full' if row['mode'] else 'view'}, "
              f"{'no password' if row['password'] is None else 'password'}")


def back_up(store: Database, args: argparse.Namespace) -> None:
    contents, copied = backup.back_up(args.data, args.target)
    print(f"backed up: {contents} contents, {copied} of them new")


def check(store: Database, args: argparse.Namespace) -> None:
    faults = backup.faults(args.data)
    if faults:
        raise Failure("Damaged store", "\n".join(["The store is not whole:", *faults]))
    print("the store is whole")


def _parse() -> argparse.Namespace:
    parser = argparse.ArgumentParser(description="Looks after a Quilldeck store.")
    parser.add_argument("--data", type=Path, default=Path("service-data"), metavar="DIR")
    commands = parser.add_subparsers(required=True, metavar="COMMAND")

    def command(name: str, function: Callable[[Database, argparse.Namespace], None], summary: str, *positional: str) -> argparse.ArgumentParser:
        sub = commands.add_parser(name, help=summary, description=summary)
        sub.set_defaults(function=function)
        for argument in positional:
            sub.add_argument(argument)
        return sub

    sub = command("add-user", add_user, "adds an account; asks for the password", "name")
    sub.add_argument("--email", default="", help="where the user can be invited and found by")
    sub.add_argument("--quota", type=size, default=10 << 30, help="bytes, K, M, G, T; 0: no limit")
    command("set-password", set_password, "sets a password and ends the user's sessions and links",
            "name")
    sub = command("remove-user", remove_user, "deletes an account with all its files", "name")
    sub.add_argument("--yes", action="store_true", help="without asking")
    sub = command("set-limits", set_limits, "sets quota and speed limits of an account", "name")
    for option in ("--quota", "--upload-limit", "--download-limit"):
        sub.add_argument(option, type=size)
    sub = command("add-access", add_access, "makes an access id that opens a folder to guests",
                  "id", "owner", "folder")
    sub.add_argument("--password", action="store_true",
                     help="asks for one; without it, whoever knows the id may come in")
    sub.add_argument("--full", action="store_true", help="guests may also change things")
    command("remove-access", remove_access, "ends an access id and its sessions", "id")
    sub = command("notify", notify, "tells users something at their next start", "title", "text")
    sub.add_argument("--url", default="")
    sub.add_argument("--name", help="one user only (default: all)")
    command("show", show, "lists accounts and access ids")
    sub = command("backup", back_up, "copies the store, while it runs, into a folder")
    sub.add_argument("target", type=Path, metavar="FOLDER", help="new, or that of an older backup")
    command("check", check, "tells whether all files are there that the store tells of")
    return parser.parse_args()


def main() -> int:
    """Carries out one command."""
    args = _parse()
    file = args.data / "store.sqlite"
    if not file.exists():
        print(f"quilldeck_admin: there is no store in {args.data}", file=sys.stderr)
        return 1
    try:
        args.function(Database(file), args)
    except (Failure, RuntimeError, OSError) as failure:
        print(f"quilldeck_admin: {failure}", file=sys.stderr)
        return 1
    except sqlite3.Error as error:
        print(f"quilldeck_admin: store.sqlite: {error}", file=sys.stderr)
        return 1
    except (EOFError, KeyboardInterrupt):
        print("\nquilldeck_admin: nothing was changed", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
