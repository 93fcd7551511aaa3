"""The FTP server, in a process of its own so that long listings do not slow transfers."""
from __future__ import annotations

import logging
import multiprocessing
import os
import signal
import socket
import threading
from dataclasses import dataclass
from multiprocessing.connection import Connection
from pathlib import Path
from typing import Any

from pyftpdlib.ioloop import IOLoop
from pyftpdlib.servers import ThreadedFTPServer

from .contents import Contents
from .database import Database
from .ftp_session import Services, Session, make_context
from .transfer_gate import TransferGate


@dataclass(frozen=True)
class FtpOptions:
    """What the server process is told."""

    data: Path
    certificate: Path
    tls_max: str
    public_address: str | None
    passive_ports: range | None


class FtpProcess:
    """The running server, as the process that started it sees it. Safe on any thread."""

    def __init__(self, options: FtpOptions, sockets: list[socket.socket],
                 not_for_child: list[socket.socket]) -> None:
        """Starts the server on listening sockets. To be called before any thread is started."""
        context = multiprocessing.get_context("fork")
        self._pipe, child_pipe = context.Pipe()
        self._lock = threading.Lock()
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

    def ask(self, *message: object) -> dict[str, int]:
        """Sends a message and waits for its answer: "stats", "reset", "fault" or "end".
        Only that of "stats" says something.
        """
        with self._lock:
            self._pipe.send(message)
            answer: dict[str, int] = self._pipe.recv()
        return answer

    def end_writers(self, location: str) -> None:
        """Ends what still writes to an upload location."""
        self.ask("end", location)

    def stop(self) -> None:
        """Ends the process; its transfers break."""
        self._process.terminate()
        self._process.join()
        self._pipe.close()


class _Server(ThreadedFTPServer):
    """A thread for each control connection; none of them holds the process up at its end."""

    def _start_task(self, *args: Any, **kwargs: Any) -> threading.Thread:
        return threading.Thread(*args, daemon=True, **kwargs)


def _serve(options: FtpOptions, sockets: list[socket.socket], not_ours: list[socket.socket],
           parent_pipe: Connection, pipe: Connection) -> None:
    signal.signal(signal.SIGINT, signal.SIG_IGN)
    # Uploads are written without buffers, so nothing is lost by ending at once.
    signal.signal(signal.SIGTERM, lambda *_: os._exit(0))
    parent_pipe.close()
    for foreign in not_ours:
        foreign.close()
    logging.getLogger("pyftpdlib").setLevel(logging.WARNING)
    Services.gate = TransferGate(Database(options.data / "store.sqlite"),
                                 Contents(options.data / "transfer", foreign=False))
    Session.ssl_context = make_context(str(options.certificate), options.tls_max)
    Session.passive_ports = options.passive_ports
    Session.masquerade_address = options.public_address
    loop = IOLoop()
    servers = [_Server(listening, Session, ioloop=loop) for listening in sockets]
    threading.Thread(target=_listen, args=(pipe,), daemon=True).start()
    servers[0].serve_forever(handle_exit=False)


def _listen(pipe: Connection) -> None:
    """Answers the parent's messages; ends the process when the parent is gone."""
    while True:
        try:
            kind, *values = pipe.recv()
        except EOFError:
            os._exit(1)
        answer: dict[str, int] = {}
        if kind == "end":
            Services.writers.end(values[0])
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
                answer = {name: Services.counts[name] for name in (
                    "ftp_sessions", "ftp_logins", "ftp_data_connections", "active_transfers")}
            answer["active_uploads"] = Services.writers.count
        pipe.send(answer)
