"""Actions on files."""
from __future__ import annotations

import math

from .. import tree, uploads
from ..rights import FILE, ROOT
from ..store import now
from ..wire import Failure, element
from .directories import checked_access, checked_description, file
from .table import Mode, Request, action

_LAST_DATE = 253402300799  # the end of the year 9999


@action("get_file_path", "file_id", mode=Mode.READ)
def get_file_path(request: Request) -> str:
    road = request.scope()
    row = road.item(request.db, request.form.integer("file_id"), FILE)
    return element("Path", tree.path(request.db, row["id"], road.top))


@action("set_file_description", "file_id", "description")
def set_file_description(request: Request) -> None:
    request.db.execute("UPDATE items SET description = ? WHERE id = ?",
                       (checked_description(request), file(request, full=True)["id"]))


@action("set_file_access", "file_id", "access")
def set_file_access(request: Request) -> None:
    request.db.execute("UPDATE items SET access = ? WHERE id = ?",
                       (checked_access(request.form.integer("access")),
                        file(request, full=True)["id"]))


@action("set_file_price", "file_id", "price")
def set_file_price(request: Request) -> None:
    try:
        price = float(request.form.get("price"))
    except ValueError:
        price = math.nan
    if not 0 <= price < 1e12:
        raise Failure("Wrong price", "A price is a number from 0 up.")
    request.db.execute("UPDATE items SET price = ? WHERE id = ?",
                       (price, file(request, full=True)["id"]))


@action("set_file_date", "file_id", "file_datetime")
def set_file_date(request: Request) -> None:
    date = request.form.integer("file_datetime", low=0, high=_LAST_DATE)
    request.db.execute("UPDATE items SET modified = ? WHERE id = ?",
                       (date, file(request, full=True)["id"]))


@action("copy_file", "dst_dir_id", "src_file_id", "move")
def copy_file(request: Request) -> None:
    """Copies or moves inside the store; each side has its own share or access parameters."""
    target = request.scope("dst_")
    target.require_full()
    parent = target.directory(request.db, request.form.integer("dst_dir_id"))
    if parent and parent["trashed"]:
        raise Failure("Not found", f"The folder '{parent['name']}' is in the Trash.")
    parent_id = parent["id"] if parent else ROOT
    source = request.scope("src_")
    item = source.item(request.db, request.form.integer("src_file_id"), FILE)
    if request.form.get("move") == "1":
        source.require_full()
        tree.move_file(request.db, item, target.owner_id, parent_id)
    else:
        tree.copy_file(request.db, item, target.owner_id, parent_id)


@action("open_file_upload", "file_id", "size")
def open_file_upload(request: Request) -> str:
    location = uploads.begin(request.store, request.db, request.who, file(request, full=True),
                             request.form.integer("size", low=0))
    return element("TempLocation", location)


@action("close_file_upload", "file_id", "temp_location", "file_time", "file_size", mode=Mode.OWN)
def close_file_upload(request: Request) -> str:
    item = file(request, full=True)
    date = request.form.integer("file_time")
    uploads.commit(request.store, request.who, item["id"], request.form.get("temp_location"),
                   request.form.integer("file_size", low=0),
                   date if 0 < date <= _LAST_DATE else now())
    return request.listing().content(item["id"])


@action("open_file_download", "file_id")
def open_file_download(request: Request) -> str:
    item = file(request, full=False)
    uploads.open_download(request.db, request.who, item)
    return request.listing().content(item["id"])


@action("close_file_download", "file_id")
def close_file_download(request: Request) -> None:
    """Never refused: the file may be gone by now, and its content is let go all the same."""
    uploads.close_download(request.db, request.who, request.form.integer("file_id"))
