"""Links: `/l/…` for people, `/d/…` for programs that play or open a file."""
from __future__ import annotations

import asyncio
import html
import mimetypes
import sqlite3
from concurrent.futures import ThreadPoolExecutor
from urllib.parse import quote

from aiohttp import web

from .accounts import find_by_link_key
from .rights import DIRECTORY, FILE, chain, may_read
from .store import Store


def _bytes_of(store: Store, row: sqlite3.Row) -> web.StreamResponse:
    """The file's content; ranges are served too, so that players can seek."""
    kind = mimetypes.guess_type(row["name"])[0] or "application/octet-stream"
    return web.FileResponse(store.contents.file(row["location"] or store.empty_location), headers={
        "Content-Type": kind, "X-Content-Type-Options": "nosniff",
        "Content-Security-Policy": "sandbox",
        "Content-Disposition": f"inline; filename*=UTF-8''{quote(row['name'])}"})


_FILE = ("SELECT i.*, c.location FROM items i LEFT JOIN contents c ON c.id = i.content_id WHERE ")


def _direct(store: Store, link_key: str, file_id: int) -> sqlite3.Row | None:
    with store.db.transaction(write=False) as db:
        who = find_by_link_key(db, link_key)
        if who is None or not may_read(db, who, file_id):
            return None
        return db.execute(_FILE + "i.id = ? AND i.kind = ?", (file_id, FILE)).fetchone()


def _public(store: Store, link_key: str) -> tuple[sqlite3.Row, list[sqlite3.Row]] | None:
    """A public or hidden item and, for a folder, its public files.

    A file can be reached when it, or the folder that it lies in, is not private.
    """
    with store.db.transaction(write=False) as db:
        row = db.execute(_FILE + "i.link_key = ?", (link_key,)).fetchone()
        if row is None or any(link["trashed"] for link in chain(db, row["id"])):
            return None
        parent = db.execute("SELECT access FROM items WHERE id = ?", (row["parent_id"],)).fetchone()
        if not row["access"] and not (row["kind"] == FILE and parent and parent["access"]):
            return None
        files = db.execute("SELECT name, size, link_key FROM items WHERE parent_id = ? AND kind = ? "
                           "AND trashed = 0 ORDER BY name_key", (row["id"], FILE)).fetchall()
        return row, files if row["kind"] == DIRECTORY else []


def _page(row: sqlite3.Row, files: list[sqlite3.Row]) -> web.Response:
    title = html.escape(row["name"])
    lines = "".join(f'<li><a href="/l/{file["link_key"]}">{html.escape(file["name"])}</a> '
                    f'({file["size"]} bytes)</li>' for file in files)
    return web.Response(content_type="text/html", charset="utf-8", text=(
        f"<!doctype html><meta charset=utf-8><title>{title}</title><h1>{title}</h1>"
        f"<p>{html.escape(row['description'])}</p><ul>{lines}</ul>"))


def add_routes(app: web.Application, store: Store, threads: ThreadPoolExecutor) -> None:
    """Serves both kinds of links."""
    async def direct(request: web.Request) -> web.StreamResponse:
        row = await asyncio.get_running_loop().run_in_executor(
            threads, _direct, store, request.match_info["key"], int(request.match_info["id"]))
        if row is None:
            raise web.HTTPNotFound(text="There is no such file, or it is not shared with you any more.")
        return _bytes_of(store, row)

    async def public(request: web.Request) -> web.StreamResponse:
        found = await asyncio.get_running_loop().run_in_executor(
            threads, _public, store, request.match_info["key"])
        if found is None:
            raise web.HTTPNotFound(text="There is nothing here, or it is private.")
        row, files = found
        return _bytes_of(store, row) if row["kind"] == FILE else _page(row, files)

    app.router.add_get("/d/{key}/{id:[0-9]{1,18}}/{name:.*}", direct)
    app.router.add_get("/l/{key}", public)
