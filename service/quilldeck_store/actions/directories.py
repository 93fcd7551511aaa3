"""Actions on folders."""
from __future__ import annotations

import sqlite3

from .. import tree, uploads
from ..rights import DIRECTORY, FILE, ROOT, Scope, own_scope
from ..wire import Failure, element
from .table import Mode, Request, action

MAX_DESCRIPTION = 10_000


def checked_access(value: int) -> int:
    """0 private, 1 public, 2 hidden."""
    if value not in (0, 1, 2):
        raise Failure("Wrong request", "The access must be 0 (private), 1 (public) or 2 (hidden).")
    return value


def checked_description(request: Request) -> str:
    """The description parameter, within its bound."""
    text = request.form.text("description")
    if len(text) > MAX_DESCRIPTION:
        raise Failure("Description too long",
                      f"A description cannot be longer than {MAX_DESCRIPTION} characters.")
    return text


def _target(request: Request, kind: int, full: bool) -> tuple[sqlite3.Row, Scope]:
    """The item that `dir_id` or `file_id` names, and the road to it."""
    road = request.scope()
    if full:
        road.require_full()
    key = "dir_id" if kind == DIRECTORY else "file_id"
    return road.item(request.db, request.form.integer(key), kind), road


def directory(request: Request, full: bool) -> sqlite3.Row:
    """The folder of the request; `full` where it will be changed."""
    return _target(request, DIRECTORY, full)[0]


def file(request: Request, full: bool) -> sqlite3.Row:
    """The file of the request; `full` where it will be changed."""
    return _target(request, FILE, full)[0]


@action("list_dir", "dir_id", mode=Mode.READ)
def list_dir(request: Request) -> str:
    """A folder's content. A guest's root is the folder of the access id."""
    dir_id = request.form.integer("dir_id")
    road = request.scope()
    if request.who.is_guest and dir_id == ROOT:
        road.item(request.db, road.top, DIRECTORY)
        return request.listing().directory(road.top)
    row = road.directory(request.db, dir_id)
    return request.listing().folder(road.owner_id, row["id"] if row else ROOT)


@action("list_trash_dir", mode=Mode.READ)
def list_trash_dir(request: Request) -> str:
    return request.listing().trash(own_scope(request.who).owner_id)


@action("get_dir_path", "dir_id", mode=Mode.READ)
def get_dir_path(request: Request) -> str:
    road = request.scope()
    row = road.directory(request.db, request.form.integer("dir_id"))
    return element("Path", tree.path(request.db, row["id"], road.top) if row else "")


@action("set_dir_description", "dir_id", "description")
def set_dir_description(request: Request) -> None:
    request.db.execute("UPDATE items SET description = ? WHERE id = ?",
                       (checked_description(request), directory(request, full=True)["id"]))


@action("set_dir_access", "dir_id", "access")
def set_dir_access(request: Request) -> None:
    request.db.execute("UPDATE items SET access = ? WHERE id = ?",
                       (checked_access(request.form.integer("access")),
                        directory(request, full=True)["id"]))


def _rename(request: Request, kind: int) -> None:
    item, road = _target(request, kind, full=True)
    road.require_below(item)
    tree.rename(request.db, item, request.form.get("new_name"))


@action("rename_dir", "new_name", "dir_id")
def rename_dir(request: Request) -> None:
    _rename(request, DIRECTORY)


@action("rename_file", "new_name", "file_id")
def rename_file(request: Request) -> None:
    _rename(request, FILE)


def _delete(request: Request, kind: int, to_trash: bool) -> None:
    item, road = _target(request, kind, full=True)
    road.require_below(item)
    (tree.move_to_trash if to_trash else tree.remove)(request.db, item)


@action("move_dir_to_trash", "dir_id")
def move_dir_to_trash(request: Request) -> None:
    _delete(request, DIRECTORY, to_trash=True)


@action("move_file_to_trash", "file_id")
def move_file_to_trash(request: Request) -> None:
    _delete(request, FILE, to_trash=True)


@action("remove_dir", "dir_id")
def remove_dir(request: Request) -> None:
    _delete(request, DIRECTORY, to_trash=False)


@action("remove_file", "file_id")
def remove_file(request: Request) -> None:
    _delete(request, FILE, to_trash=False)


@action("restore_dir_from_trash", "dir_id")
def restore_dir_from_trash(request: Request) -> None:
    tree.restore(request.db, directory(request, full=True))


@action("restore_file_from_trash", "file_id")
def restore_file_from_trash(request: Request) -> None:
    tree.restore(request.db, file(request, full=True))


def _create(request: Request, kind: int) -> int:
    road = request.scope()
    road.require_full()
    parent = road.directory(request.db, request.form.integer("dir_id"))
    if parent and parent["trashed"]:
        raise Failure("Not found", f"The folder '{parent['name']}' is in the Trash.")
    return tree.create(request.db, road.owner_id, parent["id"] if parent else ROOT, kind,
                       request.form.get("name"),
                       checked_access(request.form.integer("dir_access")))


@action("create_dir", "dir_id", "dir_access", "name")
def create_dir(request: Request) -> str:
    return request.listing().directory(_create(request, DIRECTORY))


@action("create_file", "dir_id", "dir_access", "name", "size")
def create_file(request: Request) -> str:
    """A new file, empty until an upload of it is closed; `size` only asks for room."""
    road = request.scope()
    tree.require_space(request.db, road.owner_id, request.form.integer("size", low=0))
    return request.listing().file(_create(request, FILE))


@action("create_and_open_file", "dir_id", "dir_access", "name", "size")
def create_and_open_file(request: Request) -> str:
    """A new file with its upload open. It is seen, empty, from now on."""
    file_id = _create(request, FILE)
    item = request.db.execute("SELECT * FROM items WHERE id = ?", (file_id,)).fetchone()
    location = uploads.begin(request.store, request.db, request.who, item,
                             request.form.integer("size", low=0))
    return request.listing().file(file_id, location)
