"""The control connection: which commands there are, and what a session may reach."""
from __future__ import annotations

import contextlib
import os
import threading
from collections import Counter
from typing import Any, BinaryIO

from OpenSSL import SSL
from pyftpdlib.authorizers import AuthenticationFailed
from pyftpdlib.filesystems import AbstractedFS, FilesystemError
from pyftpdlib.handlers import FileProducer, PassiveDTP, TLS_FTPHandler

from .accounts import Principal
from .contents import LOCATION
from .faults import FaultList
from .ftp_data import Download, TransferChannel, TransferFault
from .limits import Arrivals
from .transfer_gate import TransferGate
from .writers import Upload, WriterRegistry

# Nothing can be listed, renamed or deleted here, and no connection goes out from here.
_COMMANDS = ("ABOR ALLO APPE AUTH CWD EPSV FEAT HELP MODE NOOP OPTS PASS PASV PBSZ PROT PWD QUIT "
             "REIN REST RETR SIZE STOR STRU SYST TYPE USER XPWD").split()


_ACCEPT_MOVING_WRITE_BUFFER = 2  # OpenSSL's number; the library does not name it
IDLE_SECONDS = 600
STRANGER_SECONDS = 30
"""For who has not signed in, whatever is said meanwhile."""
MAX_SESSIONS = 500
MAX_OF_ADDRESS = 400
MAX_STRANGERS_OF_ADDRESS = 100


class Services:
    """What all sessions of the server share; filled once, before it serves."""

    gate: TransferGate
    writers: WriterRegistry
    arrivals = Arrivals(MAX_SESSIONS, MAX_OF_ADDRESS, MAX_STRANGERS_OF_ADDRESS)
    faults = FaultList()
    counts: Counter[str] = Counter()
    lock = threading.Lock()

    @classmethod
    def count(cls, name: str, by: int = 1) -> None:
        with cls.lock:
            cls.counts[name] += by


class Authorizer:
    """Transfer accounts out of the metadata, in the form that the library asks for."""

    def validate_authentication(self, username: str, password: str, handler: Session) -> None:
        who = Services.gate.sign_in(username, password)
        if who is None:
            raise AuthenticationFailed("Authentication failed.")
        handler.principal = who

    def get_home_dir(self, username: str) -> str:
        return "/"

    def get_msg_login(self, username: str) -> str:
        return "Signed in."

    def get_msg_quit(self, username: str) -> str:
        return "Goodbye."

    def has_perm(self, username: str, perm: str, path: str | None = None) -> bool:
        return True

    def impersonate_user(self, username: str, password: str) -> None:
        pass

    def terminate_impersonation(self, username: str) -> None:
        pass


class Locations(AbstractedFS):
    """The flat room of transfer locations; a path here is a location, never a file's path."""

    def ftp2fs(self, ftppath: str) -> str:
        return self.ftpnorm(ftppath)

    def fs2ftp(self, fspath: str) -> str:
        return fspath

    def realpath(self, path: str) -> str:
        return path

    def validpath(self, path: str) -> bool:
        return True

    def open(self, filename: str, mode: str) -> BinaryIO | Upload:
        """A content to read, or an upload to write; an older writer of it ends."""
        who: Principal = self.cmd_channel.principal
        if LOCATION.fullmatch(filename):
            if mode == "rb":
                path = Services.gate.readable(who, filename)
                if path:
                    return path.open("rb", buffering=0)
            else:
                upload = Services.writers.open(filename, Services.gate, who, append="a" in mode)
                if upload:
                    return upload
        raise FilesystemError("No such location, or it is not yours")

    def isfile(self, path: str) -> bool:
        try:
            self.getsize(path)
        except (OSError, FilesystemError):
            return False
        return True

    def getsize(self, path: str) -> int:
        """The size of what is really stored: a transfer that still writes it ends first."""
        who: Principal = self.cmd_channel.principal
        if LOCATION.fullmatch(path):
            found = Services.gate.writable(who, path)
            if found:
                Services.writers.end(path)
                return os.stat(found.path).st_size
            readable = Services.gate.readable(who, path)
            if readable:
                return os.stat(readable).st_size
        raise FilesystemError("No such location, or it is not yours")


class PassiveListener(PassiveDTP):
    """The port of a data connection to come."""

    def del_channel(self, map: object = None) -> None:
        # The library closes the socket with which it finds the address family before it takes it
        # from the poller. By then its number may stand for a plain file of another session.
        with contextlib.suppress(PermissionError):
            super().del_channel(map)


class Session(TLS_FTPHandler):
    """One control connection. TLS is required on it and on its data connections."""

    tls_control_required = True
    tls_data_required = True
    authorizer = Authorizer()
    abstracted_fs = Locations
    dtp_handler = TransferChannel
    passive_dtp = PassiveListener
    banner = "Quilldeck store."
    timeout = 0  # not in the constructor, which runs on the thread of all others
    auth_failed_timeout = 1
    proto_cmds = {name: TLS_FTPHandler.proto_cmds[name] for name in _COMMANDS}
    principal: Principal
    address = ""
    """Whom the session counts for."""
    signed_in = False
    _patience: Any = None

    def add_channel(self, map: object = None, events: int | None = None) -> None:
        super().add_channel(map, events)
        if self.ioloop is not self.server.ioloop and not self.timeout:
            self._start_clocks()

    def _start_clocks(self) -> None:
        """Begins to count the time, now that the session has come to its own thread."""
        self.timeout = IDLE_SECONDS
        self._idler = self.ioloop.call_later(self.timeout, self.handle_timeout,
                                             _errback=self.handle_error)
        self._patience = self.ioloop.call_later(STRANGER_SECONDS, self._end_stranger,
                                                _errback=self.handle_error)

    def _end_stranger(self) -> None:
        if not self.signed_in:
            self.handle_timeout()
            # Not even the farewell is waited for: the peer may never have begun with TLS.
            self.hang_up()

    def close(self) -> None:
        if self._patience is not None and not self._patience.cancelled:
            self._patience.cancel()
        super().close()

    def secure_connection(self, ssl_context: SSL.Context) -> None:
        # Commands that came in clear behind AUTH are not taken for what comes under TLS.
        self.ac_in_buffer = b""
        super().secure_connection(ssl_context)

    def pre_process_command(self, line: str, cmd: str, arg: str) -> None:
        if cmd not in self.proto_cmds and cmd[-4:] == "STAT":
            # The library reads any command that ends so as STAT, and then misses it in our table.
            self.respond("502 There is no status here.")
            return
        super().pre_process_command(line, cmd, arg)
    # Where REST asked the next transfer to begin; the library's own.
    _restart_position: int

    def on_connect(self) -> None:
        Services.count("ftp_sessions")

    def on_disconnect(self) -> None:
        Services.count("ftp_sessions", -1)

    def on_login(self, username: str) -> None:
        Services.count("ftp_logins")
        if not self.signed_in:
            self.signed_in = True
            Services.arrivals.sign_in(self.address)

    def ftp_CWD(self, path: str) -> None:
        if path == "/":
            self.respond("250 There is only this folder.")
        else:
            self.respond("550 No such folder.")

    def ftp_STOR(self, file: str, mode: str = "w") -> str | None:
        if self._restart_position:
            self._restart_position = 0
            self.respond("504 Uploads go on with APPE, at the end of what is there.")
            return None
        return super().ftp_STOR(file, mode)

    def push_dtp_data(self, data: object, isproducer: bool = False, file: BinaryIO | None = None,
                      cmd: str | None = None) -> None:
        if isinstance(data, FileProducer) and file:
            data = Download(file)
        super().push_dtp_data(data, isproducer, file, cmd)

    def take_fault(self, direction: str, location: str) -> TransferFault | None:
        """The fault for a transfer that begins now; `direction` is "up" or "down"."""
        cut = "cut_upload" if direction == "up" else "cut_download"
        fault = Services.faults.take({cut, "cut_control", "stall"}, direction=direction,
                                     path=location)
        return TransferFault(fault) if fault else None

    def process_command(self, cmd: str, *args: str, **kwargs: str) -> None:
        if Services.faults.take({"cut_command"}, command=cmd):
            self.hang_up()
            return
        super().process_command(cmd, *args, **kwargs)

    def hang_up(self) -> None:
        """Drops the line without a word."""
        self._ssl_established = False
        self.close()

    def count_channel(self, by: int) -> None:
        """Tells of a data connection that opens or has closed."""
        Services.count("active_transfers", by)
        if by > 0:
            Services.count("ftp_data_connections")


def make_context(certificate: str, tls_max: str) -> SSL.Context:
    """TLS 1.2 up to `tls_max`; a data connection may resume its control connection's session."""
    context = SSL.Context(SSL.TLS_SERVER_METHOD)
    context.set_min_proto_version(SSL.TLS1_2_VERSION)
    context.set_max_proto_version(SSL.TLS1_2_VERSION if tls_max == "1.2" else SSL.TLS1_3_VERSION)
    context.set_options(SSL.OP_NO_COMPRESSION | SSL.OP_NO_RENEGOTIATION)
    context.use_certificate_chain_file(certificate)
    context.use_privatekey_file(certificate)
    # A record that did not fit into the socket of a slow reader is read from the file anew.
    context.set_mode(_ACCEPT_MOVING_WRITE_BUFFER)
    context.set_session_id(b"quilldeck transfer")
    return context
