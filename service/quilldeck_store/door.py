"""Who may connect for HTTPS, and for how long a silent or stalling connection is kept.

What a connection may do grows when a request on it has shown a session, or a valid link: before that
it is one of many that anybody can open, so its time is short and an address has few.
"""
from __future__ import annotations

import asyncio
import contextlib
import errno
import logging
import socket
import ssl
import time
from collections.abc import Callable, Coroutine, Iterator

from aiohttp import web

from .limits import Arrivals, network

HANDSHAKE_SECONDS = 10
SILENT_SECONDS = 20
KEPT_SECONDS = 600
REQUEST_SECONDS = 60
"""From the first byte of a request to its last."""
MAX_CONNECTIONS = 1000
MAX_OF_ADDRESS = 400
MAX_STRANGERS_OF_ADDRESS = 100
MAX_AHEAD = 1 << 19
"""Bytes that a peer may send while its last request is being carried out."""
_NO_ROOM = (errno.EMFILE, errno.ENFILE, errno.ENOBUFS, errno.ENOMEM)
_log = logging.getLogger("quilldeck")


class Door(asyncio.Protocol):
    """One connection: hands everything on to `inner`, and knows for how long it may be silent."""

    def __init__(self, doors: Doors, address: str, inner: asyncio.Protocol) -> None:
        self._doors = doors
        self.address = address
        self.signed_in = False
        self._inner = inner
        self._transport: asyncio.Transport | None = None
        self._busy = 0
        self._ahead = 0
        self._stalled_at = 0.0
        self._in_request = False
        self._deadline = time.monotonic() + SILENT_SECONDS

    def sign_in(self) -> None:
        """From now on the peer is no stranger."""
        if not self.signed_in:
            self.signed_in = True
            self._doors.arrivals.sign_in(self.address)

    @contextlib.contextmanager
    def busy(self) -> Iterator[None]:
        """While the store works on a request of this connection nobody waits for the peer."""
        self._busy += 1
        try:
            yield
        finally:
            self._busy -= 1
            self._ahead = 0
            self._in_request = False
            self._deadline = time.monotonic() + (KEPT_SECONDS if self.signed_in else SILENT_SECONDS)

    def has_waited_enough(self, now: float) -> bool:
        """Whether the peer was silent, or did not take what it asked for, for too long."""
        if self._stalled_at:
            return now > self._stalled_at + (KEPT_SECONDS if self.signed_in else REQUEST_SECONDS)
        return not self._busy and now > self._deadline

    @property
    def was_opened(self) -> bool:
        """Whether TLS was agreed on; from then on `connection_lost` counts its end."""
        return self._transport is not None

    def leave(self) -> None:
        """Is not counted any more."""
        self._doors.arrivals.leave(self.address, self.signed_in)

    def abort(self) -> None:
        """Ends the connection without waiting for the peer."""
        if self._transport:
            self._transport.abort()

    def connection_made(self, transport: asyncio.BaseTransport) -> None:
        assert isinstance(transport, asyncio.Transport)
        self._transport = transport
        self._doors.opened[transport] = self
        self._inner.connection_made(transport)

    def connection_lost(self, exc: Exception | None) -> None:
        assert self._transport is not None
        del self._doors.opened[self._transport]
        self.leave()
        self._inner.connection_lost(exc)

    def data_received(self, data: bytes) -> None:
        if self._busy:
            self._ahead += len(data)
            if self._ahead > MAX_AHEAD:
                self.abort()
                return
        elif not self._in_request:
            self._in_request = True
            self._deadline = time.monotonic() + REQUEST_SECONDS
        self._inner.data_received(data)

    def eof_received(self) -> bool | None:
        return self._inner.eof_received()

    def pause_writing(self) -> None:
        self._stalled_at = time.monotonic()
        self._inner.pause_writing()

    def resume_writing(self) -> None:
        self._stalled_at = 0.0
        self._inner.resume_writing()


class Doors:
    """Takes connections from listening sockets, as many as an address may have."""

    def __init__(self, context: ssl.SSLContext) -> None:
        self.context = context
        """For connections from now on; may be replaced by one with another certificate."""
        self.opened: dict[asyncio.BaseTransport, Door] = {}
        self.arrivals = Arrivals(MAX_CONNECTIONS, MAX_OF_ADDRESS, MAX_STRANGERS_OF_ADDRESS)
        self._tasks: set[asyncio.Task[None]] = set()

    def listen(self, sockets: list[socket.socket],
               make_inner: Callable[[], asyncio.Protocol]) -> None:
        """Begins to take connections, each with a protocol of its own."""
        for listening in sockets:
            listening.setblocking(False)
            self._start(self._accept(listening, make_inner))
        self._start(self._sweep())

    def of(self, request: web.BaseRequest) -> Door:
        """The connection that a request came by."""
        door = self.opened.get(request.transport) if request.transport else None
        if door is None:
            raise ConnectionResetError("the connection has ended")
        return door

    def close(self) -> None:
        """Takes no more connections."""
        for task in self._tasks:
            task.cancel()

    def _start(self, work: Coroutine[None, None, None]) -> None:
        task = asyncio.get_running_loop().create_task(work)
        self._tasks.add(task)
        task.add_done_callback(self._end)

    def _end(self, task: asyncio.Task[None]) -> None:
        self._tasks.discard(task)
        if not task.cancelled() and task.exception():
            _log.error("a connection's task failed", exc_info=task.exception())

    async def _accept(self, listening: socket.socket,
                      make_inner: Callable[[], asyncio.Protocol]) -> None:
        loop = asyncio.get_running_loop()
        while True:
            try:
                connection, peer = await loop.sock_accept(listening)
            except OSError as error:
                if error.errno in _NO_ROOM:
                    # Those that are open end some time.
                    _log.warning("cannot take a connection: %s", error)
                    await asyncio.sleep(1)
                continue
            address = network(peer[0])
            if not self.arrivals.enter(address):
                connection.close()
                continue
            self._start(self._greet(connection, Door(self, address, make_inner())))

    async def _greet(self, connection: socket.socket, door: Door) -> None:
        try:
            await asyncio.get_running_loop().connect_accepted_socket(
                lambda: door, connection, ssl=self.context, ssl_handshake_timeout=HANDSHAKE_SECONDS)
        except (OSError, asyncio.CancelledError):
            # Not a word of TLS, or too slow, or the store ends.
            if not door.was_opened:
                door.leave()
            connection.close()

    async def _sweep(self) -> None:
        while True:
            await asyncio.sleep(2)
            now = time.monotonic()
            for door in list(self.opened.values()):
                if door.has_waited_enough(now):
                    door.abort()
