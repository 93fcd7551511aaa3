"""Test control: the request log, faults and counters, over the service's own port."""
from __future__ import annotations

import asyncio
from typing import TYPE_CHECKING
from urllib.parse import parse_qsl

from aiohttp import web

from .faults import HTTP_KINDS, TRANSFER_KINDS, FaultList
from .ftp_process import FtpProcess
from .request_log import RequestLog
from .store import Store

if TYPE_CHECKING:
    from .https_server import HttpsService


class Control:
    """Endpoints below /_control; only there when the service was started for tests."""

    def __init__(self, store: Store, log: RequestLog, faults: FaultList,
                 ftp: FtpProcess | None) -> None:
        self._store = store
        self._log = log
        self._faults = faults
        self._ftp = ftp

    def add_routes(self, app: web.Application, service: HttpsService) -> None:
        self._service = service
        app.router.add_get("/_control/log", self._get_log)
        app.router.add_post("/_control/reset", self._reset)
        app.router.add_post("/_control/fault", self._fault)
        app.router.add_get("/_control/stats", self._stats)

    async def _ask_ftp(self, *message: object) -> dict[str, int]:
        if self._ftp is None:
            return {}
        return await asyncio.get_running_loop().run_in_executor(None, self._ftp.ask, *message)

    async def _get_log(self, request: web.Request) -> web.Response:
        return web.Response(body=self._log.since(int(request.query.get("since", "0"))),
                            content_type="text/plain")

    async def _reset(self, request: web.Request) -> web.Response:
        self._service.reset()
        self._faults.clear()
        await self._ask_ftp("reset")
        return web.Response(text="ok")

    async def _fault(self, request: web.Request) -> web.Response:
        fault = dict(parse_qsl((await request.read()).decode(), keep_blank_values=True))
        kind = fault.get("kind")
        try:
            for name in ("bytes", "lose", "seconds", "type"):
                float(fault.get(name, "0"))
            if kind in HTTP_KINDS:
                self._faults.add(fault)
            elif kind in TRANSFER_KINDS and self._ftp:
                await self._ask_ftp("fault", fault)
            else:
                raise ValueError(f"unknown kind '{kind}'")
        except ValueError as error:
            return web.Response(status=400, text=f"{error}\n")
        return web.Response(text="ok")

    async def _stats(self, request: web.Request) -> web.Response:
        db = self._store.db.connection()
        stats = {"https_connections": self._service.connection_count,
                 "requests": self._service.request_count}
        for name, rows in {"sessions": "sessions", "contents": "contents",
                           "open_uploads": "uploads WHERE closed_size IS NULL",
                           "open_downloads": "downloads"}.items():
            stats[name] = db.execute(f"SELECT count(*) FROM {rows}").fetchone()[0]
        stats.update(await self._ask_ftp("stats"))
        return web.Response(text="".join(f"{name} {value}\n" for name, value in stats.items()))
