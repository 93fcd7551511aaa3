"""The HTTPS service: five endpoints for clients, links for browsers and players."""
from __future__ import annotations

import asyncio
import functools
import logging
import ssl
import weakref
from collections.abc import Awaitable, Callable

from aiohttp import web
from aiohttp.http_exceptions import HttpProcessingError

from . import answers, links, pages, profile, thumbnails
from .actions import needs_hash, run
from .control import Control
from .door import REQUEST_SECONDS, Doors
from .faults import HTTP_KINDS, FaultList
from .names import brief
from .pools import Pools
from .request_log import RequestLog
from .store import Caller, Store
from .wire import Failure, Form, document, element, failure_document

PREFIX = "/v1"
"""What /qd_get_path.php answers; it stands before the path of all later requests."""

MAX_BODY = 1 << 18
GARBAGE = b"this is no document \xff\x00\xfe"
Handler = Callable[[web.Request], Awaitable[web.StreamResponse]]
Body = Callable[[Store, Form, Caller], bytes]
_log = logging.getLogger("quilldeck")


def _get_path(store: Store, form: Form, caller: Caller) -> bytes:
    return document(element("Path", PREFIX))


def _operations(store: Store, form: Form, caller: Caller) -> bytes:
    return document(run(store, form, caller))


def _email(store: Store, form: Form, caller: Caller) -> bytes:
    return document(run(store, form, caller, "share_folder"))


def _no_endpoint(store: Store, form: Form, caller: Caller) -> bytes:
    raise Failure("Unknown request", "The store has no such service.")


class HttpsService:
    """Answers requests; bodies of actions run on a few threads of their own."""

    def __init__(self, store: Store, log: RequestLog, control: Control | None,
                 faults: FaultList, doors: Doors) -> None:
        self._store = store
        self._log = log
        self._faults = faults
        self.doors = doors
        self._pools = Pools()
        self._connections: weakref.WeakKeyDictionary[object, int] = weakref.WeakKeyDictionary()
        self.connection_count = 0
        self.app = web.Application(client_max_size=MAX_BODY, middlewares=[self._at_work])
        self.app.on_response_prepare.append(_add_headers)
        endpoints = {"/qd_get_path.php": _get_path, f"{PREFIX}/qd_operations.php": _operations,
                     f"{PREFIX}/qd_email.php": _email,
                     f"{PREFIX}/qd_profile.php": profile.new_profile,
                     f"{PREFIX}/qd_thumbnail.php": thumbnails.answer}
        for path, body in endpoints.items():
            self.app.router.add_post(path, functools.partial(self._post, body))
        if control:
            control.add_routes(self.app, self)
        answers.add_routes(self.app, store, self._pools, doors)
        self.app.router.add_post("/{path:.*}", functools.partial(self._post, _no_endpoint))
        links.add_routes(self.app, store, self._pools, doors)
        self.app.router.add_get("/", _front)

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

    @web.middleware
    async def _at_work(self, request: web.Request, handler: Handler) -> web.StreamResponse:
        """Around every request: what goes wrong becomes a page, and the connection is in use."""
        with self.doors.of(request).busy():
            try:
                return await handler(request)
            except (web.HTTPNotFound, web.HTTPMethodNotAllowed):
                return pages.not_there()
            except web.HTTPException as refusal:
                return pages.page(refusal.reason, "", refusal.status)
            except Failure as failure:
                return pages.page(failure.name, pages.text(failure.description), 503)
            except ConnectionError:
                raise
            except Exception:
                _log.exception("page failed: %s", request.method)
                return pages.page("Something went wrong", pages.text("Please try again later."), 500)

    async def _post(self, body: Body, request: web.Request) -> web.StreamResponse:
        door = self.doors.of(request)
        try:
            if (request.content_length or 0) > MAX_BODY:
                raise web.HTTPRequestEntityTooLarge(MAX_BODY, request.content_length or 0)
            raw = await asyncio.wait_for(request.read(), REQUEST_SECONDS)
        except web.HTTPRequestEntityTooLarge:
            return _reply(failure_document(Failure("Wrong request", "The request is too long.")))
        except asyncio.TimeoutError:
            raise ConnectionResetError("the request did not end in time") from None
        self._log.add(self._connection_number(request), request.path, raw)
        try:
            form = Form(raw)
        except Failure as failure:
            return _reply(failure_document(failure))
        fault = self._faults.take(HTTP_KINDS, path=request.path, action=form.get("action"))
        if fault and fault.get("when") != "after":
            spoilt = await self._spoil(fault, request)
            if spoilt is not None:
                return spoilt
        caller = Caller(door.address, door.signed_in)
        data = await self._carry_out(body, form, caller)
        if caller.signed_in:
            door.sign_in()
        if fault and fault.get("when") == "after":
            spoilt = await self._spoil(fault, request)
            if spoilt is not None:
                return spoilt
        return _reply(data)

    async def _carry_out(self, body: Body, form: Form, caller: Caller) -> bytes:
        hashes = body is profile.new_profile or (body is _operations and
                                                 needs_hash(form.get("action")))
        pool = self._pools.hashes if hashes else self._pools.requests
        try:
            try:
                return await pool.run(body, self._store, form, caller)
            except thumbnails.Missing as missing:
                return await self._pools.pictures.run(thumbnails.make, missing)
        except Failure as failure:
            return failure_document(failure)
        except UnicodeEncodeError:
            # Half of a character, in a text that is only looked for.
            return failure_document(Failure("Wrong text", "The text holds half of a character."))
        except Exception:
            _log.exception("request failed: %s", brief(form.get("action")))
            return failure_document(Failure("Store error", "The store could not carry this out. "
                                            "Its log tells more."))

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


async def _front(request: web.Request) -> web.StreamResponse:
    return pages.page("A Quilldeck store", pages.text(
        "Files are kept here for the people who have an account. "
        "They see them as a drive, by the Quilldeck program."))


async def _add_headers(request: web.Request, response: web.StreamResponse) -> None:
    shown = "Content-Security-Policy" in response.headers
    response.headers.update(pages.COMMON if shown else {"Server": pages.COMMON["Server"]})


class QuietAboutPeers(logging.Filter):
    """Keeps what peers do wrong out of the log; what the store does wrong stays."""

    def filter(self, record: logging.LogRecord) -> bool:
        # Our own assertions never come here: the library's do, where a peer that sent several
        # requests at once is gone before the last is looked at.
        cause = record.exc_info[1] if record.exc_info else None
        return not isinstance(cause, (HttpProcessingError, ConnectionError, asyncio.TimeoutError,
                                      AssertionError))


def tls_context(certificate: str, tls_max: str) -> ssl.SSLContext:
    """TLS 1.2 up to `tls_max`."""
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.minimum_version = ssl.TLSVersion.TLSv1_2
    context.maximum_version = ssl.TLSVersion.TLSv1_2 if tls_max == "1.2" else ssl.TLSVersion.TLSv1_3
    context.load_cert_chain(certificate)
    return context
