"""The data connection: whole TLS records in and out, and faults at a given byte."""
from __future__ import annotations

import contextlib
import errno
import os
import socket
import time
from typing import Any, BinaryIO

from pyftpdlib.handlers import DTPHandler, TLS_DTPHandler
from pyftpdlib.ioloop import RetryError
from pyftpdlib.log import logger

RECORD = 16384
BURST = 64
"""Records moved before the loop of this session looks at the control connection again."""


class Download:
    """A file on its way out, read record by record at its own position."""

    def __init__(self, file: BinaryIO) -> None:
        self.handle = file.fileno()
        self.position = file.tell()


class TransferFault:
    """A fault that waits for its byte in this transfer."""

    def __init__(self, fault: dict[str, str]) -> None:
        self.kind = fault["kind"]
        self.at = int(fault.get("bytes", "0"))
        self.lose = int(fault.get("lose", "0"))
        self.seconds = float(fault.get("seconds", "1"))


class _Records(DTPHandler):
    """Moves bytes in bursts instead of one chunk for each turn of the loop."""

    fault: TransferFault | None = None

    def handle_read(self) -> None:
        for _ in range(BURST):
            try:
                data = self.recv(RECORD)
            except RetryError:
                return
            except OSError:
                self.handle_error()
                return
            if not data:
                return
            try:
                self._store(data)
            except OSError as error:
                code = 552 if error.errno in (errno.EDQUOT, errno.ENOSPC) else 426
                self._break_line(f"{code} {error.strerror}")
                return
            if self._closed:
                return

    handle_read_event = handle_read

    def _store(self, data: bytes) -> None:
        if self.fault and self.tot_bytes_received + len(data) >= self.fault.at:
            first = self.fault.at - self.tot_bytes_received
            self.file_obj.write(data[:first])
            self.tot_bytes_received += first
            data = data[first:]
            if self._strike(self.fault):
                return
        self.file_obj.write(data)
        self.tot_bytes_received += len(data)

    def initiate_send(self) -> None:
        download = self.producer_fifo[0] if self.producer_fifo else None
        if not isinstance(download, Download):
            super().initiate_send()
            return
        for _ in range(BURST):
            length = RECORD
            if self.fault:
                left = self.fault.at - self.tot_bytes_sent
                if left <= 0:
                    if self._strike(self.fault):
                        return
                    continue
                length = min(length, left)
            data = os.pread(download.handle, length, download.position)
            if not data:
                if self.producer_fifo:
                    del self.producer_fifo[0]
                super().initiate_send()
                return
            sent = self.send(data)
            if self._closed:
                return
            download.position += sent
            if sent < len(data):
                return

    def _strike(self, fault: TransferFault) -> bool:
        """Carries the fault out; true when the transfer is over."""
        self.fault = None
        if fault.kind == "stall":
            time.sleep(fault.seconds)
            return False
        if fault.lose and self.receive:
            self.file_obj.lose(fault.lose)
        self._break_line("426 Connection broken")
        if fault.kind == "cut_control":
            self.cmd_channel.hang_up()
        return True

    def _break_line(self, reply: str) -> None:
        """Closes the connection without the farewell of TLS, and says so on the other one."""
        self._resp = (f"{reply}; {self.get_transmitted_bytes()} bytes moved.", logger.info)
        self._ssl_established = False
        self.close()

    def handle_close(self) -> None:
        ended = self.receive and getattr(self.file_obj, "ended", False)
        if ended and not self._closed:
            self._break_line("426 Another transfer to this location has begun")
            return
        super().handle_close()


class TransferChannel(TLS_DTPHandler, _Records):
    """One data connection of a session."""

    timeout = 600

    def __init__(self, sock: socket.socket, cmd_channel: object) -> None:
        with contextlib.suppress(OSError):
            # A last small record must not wait for the peer's acknowledgement.
            sock.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        super().__init__(sock, cmd_channel)
        self.cmd_channel.count_channel(1)

    def close(self) -> None:
        open_before = not self._closed
        super().close()
        if open_before and self._closed:
            self.cmd_channel.count_channel(-1)

    def readable(self) -> bool:
        # A client may shake hands before it sends the transfer command; the library would
        # take its first bytes for a disconnection.
        return self._ssl_accepting or self._ssl_want_read or self.receive or self._ssl_closing

    def handle_ssl_established(self) -> None:
        with contextlib.suppress(OSError):
            # A client that gathers small records waits with its farewell for our acknowledgement.
            self.socket.setsockopt(socket.IPPROTO_TCP, socket.TCP_QUICKACK, 1)
        if not self._initialized:
            # Bytes of an eager client wait in the socket until the command says what they are.
            self._wanted_io_events = 0
            self.modify_ioloop_events(0)

    def handle_error(self) -> None:
        # The library's own closes without a reply, and the client would wait for one.
        self.log_exception(self)
        self._break_line("426 Internal error")

    def enable_receiving(self, type: str, cmd: str) -> None:
        super().enable_receiving(type, cmd)
        upload = self.file_obj
        raw = self.socket
        upload.hang_up = lambda: _shut(raw)
        if upload.ended:
            _shut(raw)
        self.fault = self.cmd_channel.take_fault("up", upload.name)
        if self.fault and self.fault.at <= 0:
            self._strike(self.fault)

    def push_with_producer(self, producer: object) -> None:
        if isinstance(producer, Download):
            self.fault = self.cmd_channel.take_fault(
                "down", "/" + os.path.basename(self.file_obj.name))
        super().push_with_producer(producer)


def _shut(connection: Any) -> None:
    """Makes the session's own thread find its connection at an end."""
    with contextlib.suppress(OSError, ValueError):
        shutdown = getattr(connection, "sock_shutdown", None) or connection.shutdown
        shutdown(socket.SHUT_RDWR)
