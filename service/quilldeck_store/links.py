"""Links: `/l/…` for people, `/d/…` for programs that play or open a file."""
from __future__ import annotations

import mimetypes
import sqlite3
from urllib.parse import quote

from aiohttp import web
from aiohttp.abc import AbstractStreamWriter

from . import pages
from .accounts import find_by_link
from .door import Door, Doors
from .pools import Pools
from .rights import DIRECTORY, FILE, chain, may_read
from .store import Store

# Shown, but as from nowhere: no script, no form, no request to the store or to others.
_FILE_POLICY = ("sandbox; default-src 'none'; img-src 'self' data:; media-src 'self' data:; "
                "style-src 'unsafe-inline'; frame-ancestors 'none'; base-uri 'none'; form-action 'none'")
PUBLIC = 1


class _Bytes(web.FileResponse):
    """The file's content; ranges are served too, so that players can seek."""

    def __init__(self, store: Store, row: sqlite3.Row, door: Door) -> None:
        kind = mimetypes.guess_type(row["name"])[0] or "application/octet-stream"
        super().__init__(store.contents.file(row["location"] or store.empty_location), headers={
            "Content-Type": kind, "Content-Security-Policy": _FILE_POLICY,
            "Cache-Control": "private, no-cache",
            "Content-Disposition": f"inline; filename*=UTF-8''{quote(row['name'])}"})
        self._door = door

    async def prepare(self, request: web.BaseRequest) -> AbstractStreamWriter | None:
        # The library sends the whole file in here, after the handler's end.
        with self._door.busy():
            return await super().prepare(request)


_FILE = ("SELECT i.*, c.location FROM items i LEFT JOIN contents c ON c.id = i.content_id WHERE ")


def _direct(store: Store, account_id: int, signature: str, file_id: int) -> sqlite3.Row | None:
    with store.db.transaction(write=False) as db:
        who = find_by_link(db, account_id, file_id, signature)
        if who is None or not may_read(db, who, file_id):
            return None
        return db.execute(_FILE + "i.id = ? AND i.kind = ?", (file_id, FILE)).fetchone()


def _shown(store: Store, link_key: str) -> tuple[sqlite3.Row, list[sqlite3.Row]] | None:
    """A public or hidden item and, for a folder, its public files."""
    with store.db.transaction(write=False) as db:
        row = db.execute(_FILE + "i.link_key = ? AND i.access <> 0", (link_key,)).fetchone()
        if row is None or any(link["trashed"] for link in chain(db, row["id"])):
            return None
        files = db.execute("SELECT name, size, link_key FROM items WHERE parent_id = ? AND kind = ? "
                           "AND trashed = 0 AND access = ? ORDER BY name_key",
                           (row["id"], FILE, PUBLIC)).fetchall()
        return row, files if row["kind"] == DIRECTORY else []


def _folder(row: sqlite3.Row, files: list[sqlite3.Row]) -> web.Response:
    entries = [(f"/l/{file['link_key']}", file["name"], pages.size(file["size"])) for file in files]
    return pages.page(row["name"], pages.text(row["description"]) + (
        pages.links(entries) if entries else pages.text("There are no public files in this folder.")))


def add_routes(app: web.Application, store: Store, pools: Pools, doors: Doors) -> None:
    """Serves both kinds of links."""
    async def direct(request: web.Request) -> web.StreamResponse:
        match = request.match_info
        row = await pools.requests.run(_direct, store, int(match["account"]), match["signature"],
                                       int(match["id"]))
        if row is None:
            return pages.not_there()
        door = doors.of(request)
        door.sign_in()
        return _Bytes(store, row, door)

    async def shown(request: web.Request) -> web.StreamResponse:
        found = await pools.requests.run(_shown, store, request.match_info["key"])
        if found is None:
            return pages.not_there()
        row, files = found
        return (_Bytes(store, row, doors.of(request)) if row["kind"] == FILE
                else _folder(row, files))

    app.router.add_get("/d/{account:[1-9][0-9]{0,17}}-{signature:[0-9a-f]{32}}"
                       "/{id:[1-9][0-9]{0,17}}/{name:.*}", direct)
    app.router.add_get("/l/{key:[A-Za-z0-9_-]{1,64}}", shown)
