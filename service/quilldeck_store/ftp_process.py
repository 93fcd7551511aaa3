"""The FTP server, in a process of its own so that long listings do not slow transfers."""
from __future__ import annotations

import logging
import multiprocessing
import os
import signal
import socket
import threading
import time
from collections.abc import Callable
from dataclasses import dataclass
from multiprocessing.connection import Connection
from pathlib import Path
from typing import Any

from OpenSSL import SSL
from pyftpdlib.ioloop import IOLoop
from pyftpdlib.servers import ThreadedFTPServer

from .contents import Contents
from .database import Database
from .ftp_session import Services, Session, make_context
from .limits import network
from .transfer_gate import TransferGate
from .wire import Failure
from .writers import WriterRegistry

ASK_SECONDS = 10
_log = logging.getLogger("quilldeck")


@dataclass(frozen=True)
class FtpOptions:
    """What the server process is told."""

    data: Path
    certificate: Path
    tls_max: str
    public_address: str | None
    passive_ports: range | None
    keep_free: int


class FtpProcess:
    """The running server, as the process that started it sees it. Safe on any thread."""

    def __init__(self, options: FtpOptions, sockets: list[socket.socket],
                 not_for_child: list[socket.socket]) -> None:
        """Starts the server on listening sockets. To be called before any thread is started."""
        context = multiprocessing.get_context("fork")
        self._pipe, child_pipe = context.Pipe()
        self._lock = threading.Lock()
        self._asked = 0
        self._process = context.Process(
            target=_serve, name="ftp",
            args=(options, sockets, [*not_for_child], self._pipe, child_pipe))
        self._process.start()
        child_pipe.close()
        for listening in sockets:
            listening.close()

    @property
    def sentinel(self) -> int:
        """Becomes readable when the process ends."""
        return self._process.sentinel

    def ask(self, *message: object) -> Any:
        """Sends a message and waits for its answer: "stats", "reset", "fault", "end" or
        "certificate". Raises `TimeoutError` when none comes."""
        deadline = time.monotonic() + ASK_SECONDS
        if not self._lock.acquire(timeout=ASK_SECONDS):
            raise TimeoutError("the FTP server does not answer")
        try:
            self._asked += 1
            self._pipe.send((self._asked, *message))
            while self._pipe.poll(max(deadline - time.monotonic(), 0)):
                number, answer = self._pipe.recv()
                # An earlier question may have been answered after it was given up.
                if number == self._asked:
                    return answer
            raise TimeoutError("the FTP server does not answer")
        finally:
            self._lock.release()

    def end_writers(self, location: str) -> None:
        """Ends what still writes to an upload location."""
        try:
            self.ask("end", location)
        except (TimeoutError, OSError, EOFError):
            raise Failure("Upload failed", "The transfer server does not answer. "
                          "Please try again in a moment.") from None

    def stop(self) -> None:
        """Ends the process; its transfers break."""
        self._process.terminate()
        self._process.join(ASK_SECONDS)
        self._process.kill()
        self._pipe.close()


class _Server(ThreadedFTPServer):
    """A thread for each control connection; none of them holds the process up at its end."""

    max_cons = 0  # counted by address here

    def handle_accept(self) -> None:
        try:
            super().handle_accept()
        except OSError as error:
            # Such as no descriptor left. The library would never accept again.
            _log.warning("cannot take a transfer connection: %s", error)
            time.sleep(0.5)

    def handle_accepted(self, sock: socket.socket, addr: tuple[str, int]) -> None:
        self._arriving, self._started = network(addr[0]), False
        if not Services.arrivals.enter(self._arriving):
            sock.close()
            return
        super().handle_accepted(sock, addr)
        if not self._started:
            Services.arrivals.leave(self._arriving, signed_in=False)

    def _start_task(self, target: Callable[..., None], args: tuple[Session],
                    name: str) -> threading.Thread:
        args[0].address, self._started = self._arriving, True
        return threading.Thread(target=target, args=args, name=name, daemon=True)

    def _loop(self, handler: Session) -> None:
        try:
            super()._loop(handler)
        except OSError as error:
            _log.warning("cannot serve a transfer connection: %s", error)
            handler.socket.close()
        finally:
            Services.arrivals.leave(handler.address, handler.signed_in)


def _serve(options: FtpOptions, sockets: list[socket.socket], not_ours: list[socket.socket],
           parent_pipe: Connection, pipe: Connection) -> None:
    signal.signal(signal.SIGINT, signal.SIG_IGN)
    # Uploads are written without buffers, so nothing is lost by ending at once.
    signal.signal(signal.SIGTERM, lambda *_: os._exit(0))
    parent_pipe.close()
    for foreign in not_ours:
        foreign.close()
    logging.getLogger("pyftpdlib").setLevel(logging.WARNING)
    # Hosts tell the service to read its certificate again by this signal; it passes that on.
    signal.signal(signal.SIGHUP, signal.SIG_IGN)
    Services.gate = TransferGate(Database(options.data / "store.sqlite"),
                                 Contents(options.data / "transfer", foreign=False))
    Services.writers = WriterRegistry(options.keep_free)
    Session.ssl_context = make_context(str(options.certificate), options.tls_max)
    Session.passive_ports = options.passive_ports
    Session.masquerade_address = options.public_address
    loop = IOLoop()
    servers = [_Server(listening, Session, ioloop=loop) for listening in sockets]
    threading.Thread(target=_listen, args=(pipe, options), daemon=True).start()
    servers[0].serve_forever(handle_exit=False)


def _renew(options: FtpOptions) -> bool:
    try:
        Session.ssl_context = make_context(str(options.certificate), options.tls_max)
    except SSL.Error:
        return False
    return True


def _listen(pipe: Connection, options: FtpOptions) -> None:
    """Answers the parent's messages; ends the process when the parent is gone, which may show
    itself at an answer, too: nothing else would let go of the data folder and the port."""
    try:
        while True:
            number, kind, *values = pipe.recv()
            pipe.send((number, _answer(kind, values, options)))
    except (EOFError, OSError):
        os._exit(1)


def _answer(kind: str, values: list[Any], options: FtpOptions) -> dict[str, int]:
    if kind == "end":
        Services.writers.end(values[0])
    elif kind == "certificate":
        return {"renewed": _renew(options)}
    elif kind == "fault":
        fault = values[0]
        if fault["kind"] == "cut_control" and "command" in fault:
            fault["kind"] = "cut_command"
        Services.faults.add(fault)
    elif kind == "reset":
        Services.faults.clear()
        with Services.lock:
            for name in ("ftp_logins", "ftp_data_connections"):
                Services.counts[name] = 0
    elif kind == "stats":
        with Services.lock:
            counts = {name: Services.counts[name] for name in (
                "ftp_sessions", "ftp_logins", "ftp_data_connections", "active_transfers")}
        return counts | {"active_uploads": Services.writers.count}
    return {}
