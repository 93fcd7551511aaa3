"""The HTTPS service: five endpoints for clients, links for browsers and players."""
from __future__ import annotations

import asyncio
import functools
import logging
import ssl
import weakref
from collections.abc import Callable
from concurrent.futures import ThreadPoolExecutor

from aiohttp import web

from . import links, profile, thumbnails
from .actions import run
from .control import Control
from .faults import HTTP_KINDS, FaultList
from .request_log import RequestLog
from .store import Store
from .wire import Failure, Form, document, element, failure_document

PREFIX = "/v1"
"""What /qd_get_path.php answers; it stands before the path of all later requests."""

MAX_BODY = 1 << 20
GARBAGE = b"this is no document \xff\x00\xfe"
Body = Callable[[Store, Form], bytes]
_log = logging.getLogger("quilldeck")


def _get_path(store: Store, form: Form) -> bytes:
    return document(element("Path", PREFIX))


def _operations(store: Store, form: Form) -> bytes:
    return document(run(store, form))


def _email(store: Store, form: Form) -> bytes:
    return document(run(store, form, "share_folder"))


def _no_endpoint(store: Store, form: Form) -> bytes:
    raise Failure("Unknown request", "The store has no such service.")


class HttpsService:
    """Answers requests; bodies of actions run on a few threads of their own."""

    def __init__(self, store: Store, log: RequestLog, control: Control | None,
                 faults: FaultList) -> None:
        self._store = store
        self._log = log
        self._faults = faults
        self._threads = ThreadPoolExecutor(4, "request")
        self._connections = weakref.WeakKeyDictionary[ssl.SSLObject, int]()
        self.connection_count = 0
        self.app = web.Application(client_max_size=MAX_BODY)
        endpoints = {"/qd_get_path.php": _get_path, f"{PREFIX}/qd_operations.php": _operations,
                     f"{PREFIX}/qd_email.php": _email,
                     f"{PREFIX}/qd_profile.php": profile.new_profile,
                     f"{PREFIX}/qd_thumbnail.php": thumbnails.answer}
        for path, body in endpoints.items():
            self.app.router.add_post(path, functools.partial(self._post, body))
        if control:
            control.add_routes(self.app, self)
        self.app.router.add_post("/{path:.*}", functools.partial(self._post, _no_endpoint))
        links.add_routes(self.app, store, self._threads)

    def reset(self) -> None:
        """Begins the counts anew; connections that stay open count again when used."""
        self._log.reset()
        self._connections.clear()
        self.connection_count = 0

    @property
    def request_count(self) -> int:
        return self._log.count

    def _connection_number(self, request: web.Request) -> int:
        connection = request.get_extra_info("ssl_object")
        number = self._connections.get(connection)
        if number is None:
            self.connection_count += 1
            number = self._connections[connection] = self.connection_count
        return number

    async def _post(self, body: Body, request: web.Request) -> web.StreamResponse:
        try:
            raw = await request.read()
        except web.HTTPRequestEntityTooLarge:
            return _reply(failure_document(Failure("Wrong request", "The request is too long.")))
        form = Form(raw)
        self._log.add(self._connection_number(request), request.path, raw)
        fault = self._faults.take(HTTP_KINDS, path=request.path, action=form.get("action"))
        if fault and fault.get("when") != "after":
            spoilt = await self._spoil(fault, request)
            if spoilt is not None:
                return spoilt
        loop = asyncio.get_running_loop()
        try:
            data = await loop.run_in_executor(self._threads, body, self._store, form)
        except Failure as failure:
            data = failure_document(failure)
        except Exception:
            _log.exception("request failed: %s", form.get("action") or request.path)
            data = failure_document(Failure("Store error", "The store could not carry this out. "
                                            "Its log tells more."))
        if fault and fault.get("when") == "after":
            spoilt = await self._spoil(fault, request)
            if spoilt is not None:
                return spoilt
        return _reply(data)

    async def _spoil(self, fault: dict[str, str], request: web.Request) -> web.Response | None:
        """Does what a fault says; None lets the request go on."""
        kind = fault["kind"]
        if kind == "delay":
            await asyncio.sleep(float(fault.get("seconds", "1")))
            return None
        if kind == "error":
            return _reply(failure_document(Failure(
                fault.get("name", "Test"), fault.get("description", "An error on demand"),
                int(fault.get("type", "0")))))
        if kind == "garbage":
            return _reply(fault["body"].encode() if "body" in fault else GARBAGE)
        if request.transport:
            request.transport.abort()
        return _reply(b"")


def _reply(data: bytes) -> web.Response:
    kind = "image/jpeg" if data.startswith(b"\xff\xd8") else "text/xml; charset=utf-8"
    return web.Response(body=data, headers={"Content-Type": kind})


def tls_context(certificate: str, tls_max: str) -> ssl.SSLContext:
    """TLS 1.2 up to `tls_max`."""
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.minimum_version = ssl.TLSVersion.TLSv1_2
    context.maximum_version = ssl.TLSVersion.TLSv1_2 if tls_max == "1.2" else ssl.TLSVersion.TLSv1_3
    context.load_cert_chain(certificate)
    return context
