"""Requests about the account itself."""
from __future__ import annotations

import os

from .. import tree
from ..rights import own_scope
from ..wire import Failure, elements
from .table import Mode, Request, action

MAX_SETTING = 4096
MAX_SETTINGS = 1000


@action("get_user_notifications", mode=Mode.READ)
def get_user_notifications(request: Request) -> str:
    if request.who.is_guest:
        return ""
    rows = request.db.execute("SELECT title, text, url FROM notifications WHERE user_id = ? "
                              "ORDER BY id", (request.who.user_id,))
    return "".join("<Notification>" + elements(Title=row["title"], Text=row["text"], URL=row["url"])
                   + "</Notification>" for row in rows)


@action("get_storage_info", mode=Mode.READ)
def get_storage_info(request: Request) -> str:
    """Capacity 0 means no limit; what is free is then what the disk has."""
    quota, used = request.db.execute("SELECT quota, used FROM users WHERE id = ?",
                                     (request.who.user_id,)).fetchone()
    free = tree.free_space(request.db, request.who.user_id)
    if free is None:
        disk = os.statvfs(request.store.data)
        free = disk.f_bavail * disk.f_frsize
    return elements(Capacity=quota, SpaceUsed=used, SpaceFree=free)


@action("get_pro_settings", mode=Mode.READ)
def get_pro_settings(request: Request) -> str:
    owner = own_scope(request.who).owner_id
    rows = request.db.execute("SELECT name, value, type FROM settings WHERE user_id = ? "
                              "ORDER BY name", (owner,))
    return "".join("<ProSetting>" + elements(Name=row["name"], Value=row["value"], Type=row["type"])
                   + "</ProSetting>" for row in rows)


@action("set_pro_setting", "setting_name", "setting_value", "setting_type")
def set_pro_setting(request: Request) -> None:
    """Keeps the value as it was sent, once it reads as its type: 0 text, 1 integer, 2 float."""
    owner = own_scope(request.who).owner_id
    name, value = request.form.text("setting_name"), request.form.text("setting_value")
    kind = request.form.integer("setting_type")
    if not 0 < len(name) <= 255 or len(value) > MAX_SETTING:
        raise Failure("Wrong setting", "A setting needs a name, and a value that is not too long.")
    try:
        {0: str, 1: int, 2: float}[kind](value)
    except (KeyError, ValueError):
        raise Failure("Wrong setting", f"The value of '{name}' does not fit its type.") from None
    count, = request.db.execute("SELECT count(*) FROM settings WHERE user_id = ? AND name <> ?",
                                (owner, name)).fetchone()
    if count >= MAX_SETTINGS:
        raise Failure("Wrong setting", f"An account cannot have more than {MAX_SETTINGS} settings.")
    request.db.execute("INSERT INTO settings VALUES (?,?,?,?) ON CONFLICT(user_id, name) DO UPDATE "
                       "SET value = excluded.value, type = excluded.type", (owner, name, value, kind))
