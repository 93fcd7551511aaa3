"""Puts the parts together and runs them until a signal comes."""
from __future__ import annotations

import argparse
import asyncio
import contextlib
import errno
import ipaddress
import json
import logging
import os
import resource
import signal
import socket
import sqlite3
import sys
from pathlib import Path

from aiohttp import web

from . import certificate, demo
from .control import Control
from .faults import FaultList
from .ftp_process import FtpOptions, FtpProcess
from .door import KEPT_SECONDS, Doors
from .https_server import HttpsService, QuietAboutPeers, tls_context
from .request_log import RequestLog
from .store import Policy, Store, Transfer

COLLECT_SECONDS = 600
_log = logging.getLogger("quilldeck")


class StartError(Exception):
    """Why the service cannot start, in words for its host."""


def _listen(host: str | None, port: int, what: str) -> list[socket.socket]:
    """Listening sockets on one port: on both loopback addresses where no host is named."""
    for _ in range(20):
        sockets: list[socket.socket] = []
        try:
            for address in (host,) if host else ("127.0.0.1", "::1"):
                family = socket.AF_INET6 if ":" in address else socket.AF_INET
                try:
                    sockets.append(_bind(address, sockets[0].getsockname()[1] if sockets else port,
                                         family))
                except OSError as error:
                    # A machine without IPv6 serves on the other address alone.
                    if not sockets or error.errno == errno.EADDRINUSE:
                        raise
            return sockets
        except OSError as error:
            for opened in sockets:
                opened.close()
            if port or not sockets:
                raise StartError(f"Cannot listen for {what} on {host or 'localhost'} port {port}: "
                                 f"{os.strerror(error.errno)}. Is the service running already? "
                                 f"Another port can be named by --{what.lower()}-port.") from None
    raise StartError(f"Found no port that is free on both addresses for {what}.")


def _bind(address: str, port: int, family: int) -> socket.socket:
    opened = socket.socket(family, socket.SOCK_STREAM)
    try:
        opened.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        if family == socket.AF_INET6:
            opened.setsockopt(socket.IPPROTO_IPV6, socket.IPV6_V6ONLY, address != "::")
        opened.bind((address, port))
        opened.listen(128)
    except OSError:
        opened.close()
        raise
    return opened


def _address(public_host: str) -> str | None:
    """What clients are told to connect to for data; None where they see the real address."""
    if public_host == "localhost":
        return None
    try:
        return socket.gethostbyname(public_host)
    except OSError as error:
        raise StartError(f"Cannot find the address of {public_host}: {error.strerror}.") from None


def _write_ready_file(file: Path, facts: dict[str, object]) -> None:
    part = file.with_name(file.name + ".part")
    part.write_text(json.dumps(facts, indent=1) + "\n")
    os.replace(part, file)


async def _serve(options: argparse.Namespace, store: Store, service: HttpsService,
                 sockets: list[socket.socket], cert: Path, ftp: FtpProcess | None) -> int:
    loop = asyncio.get_running_loop()
    stop = asyncio.Event()
    code = 0
    for number in (signal.SIGTERM, signal.SIGINT):
        loop.add_signal_handler(number, stop.set)

    def ftp_ended(sentinel: int) -> None:
        nonlocal code
        loop.remove_reader(sentinel)
        _log.error("the FTP server has ended unexpectedly")
        code = 1
        stop.set()

    def renew_certificate() -> None:
        try:
            service.doors.context = tls_context(str(cert), options.tls_max)
            renewed = ftp is None or ftp.ask("certificate")["renewed"]
        except (OSError, TimeoutError) as error:
            _log.error("the certificate stays as it was: %s", error)
        else:
            _log.warning("certificate read again" if renewed else
                         "the FTP server cannot read the new certificate and keeps its old one")

    def hang_up() -> None:
        loop.run_in_executor(None, renew_certificate)

    loop.add_signal_handler(signal.SIGHUP, hang_up)
    if ftp:
        loop.add_reader(ftp.sentinel, ftp_ended, ftp.sentinel)
    http_log = logging.getLogger("quilldeck.http")
    http_log.addFilter(QuietAboutPeers())
    # The doors end what is idle; the library need not.
    runner = web.AppRunner(service.app, access_log=None, keepalive_timeout=2 * KEPT_SECONDS,
                           logger=http_log)
    await runner.setup()
    assert runner.server is not None
    service.doors.listen(sockets, runner.server)
    if options.ready_file:
        _write_ready_file(options.ready_file, {
            "pid": os.getpid(), "https_url": store.base_url, "ftp_url": store.transfer.url,
            "data": str(store.data), "incoming": str(store.contents.folder),
            "certificate": str(cert)})
    print(f"Quilldeck store: {store.base_url}, bytes at {store.transfer.url}, data in {store.data}",
          flush=True)
    while not stop.is_set():
        with contextlib.suppress(asyncio.TimeoutError):
            await asyncio.wait_for(stop.wait(), COLLECT_SECONDS)
        if not stop.is_set():
            try:
                await loop.run_in_executor(None, store.collect)
            except (OSError, sqlite3.Error):
                _log.exception("nothing was thrown away this time")
    if ftp:
        loop.remove_reader(ftp.sentinel)
    service.doors.close()
    await runner.server.shutdown(1)
    await runner.cleanup()
    return code


def _is_loopback(host: str | None) -> bool:
    try:
        return host in (None, "localhost") or ipaddress.ip_address(host or "").is_loopback
    except ValueError:
        return False


def _refuse_demo_accounts(options: argparse.Namespace, store: Store) -> None:
    """Everybody knows their passwords."""
    if _is_loopback(options.host):
        return
    db = store.db.connection()
    names = [f"{kind} {row['name']}" for kind, table in (("remove-access", "accesses"),
                                                         ("remove-user", "users"))
             for row in db.execute(f"SELECT name FROM {table} WHERE demo = 1")]
    if options.demo or names:
        store.close()
        raise StartError("Demo accounts are for this machine only, and --host opens the store to "
                         "others. " + (f"Use quilldeck_admin.py first: {', '.join(names)}."
                                       if names else "Leave --demo out."))


def run(options: argparse.Namespace) -> int:
    """Serves until SIGTERM or SIGINT; returns the exit code."""
    # A connection is a descriptor, and a transfer some more; the usual bound is for programs.
    _, most = resource.getrlimit(resource.RLIMIT_NOFILE)
    resource.setrlimit(resource.RLIMIT_NOFILE, (min(most, 16384), most))
    logging.basicConfig(level=logging.WARNING, format="%(asctime)s %(name)s: %(message)s")
    public_address = _address(options.public_host)
    store = Store(options.data, bool(options.transfer_host), Policy(
        options.quota, options.upload_limit, options.download_limit, not options.no_sign_up,
        options.keep_free))
    _refuse_demo_accounts(options, store)
    # The lock comes first: while the file server of a killed service lives, it has its port.
    https = _listen(options.host, options.https_port, "HTTPS")
    own_ftp = [] if options.transfer_host else _listen(options.host, options.ftp_port, "FTP")
    cert = certificate.ensure(options.data / "service.pem", options.public_host)
    try:
        doors = Doors(tls_context(str(cert), options.tls_max))
    except OSError as error:
        raise StartError(f"Cannot use {cert}, which needs a key and its certificates: {error}") from None
    store.base_url = f"https://{options.public_host}:{https[0].getsockname()[1]}"
    if options.demo:
        demo.ensure(store)
    if options.transfer_host:
        store.transfer = Transfer(options.transfer_host.rstrip("/"), options.transfer_user,
                                  options.transfer_password)
    else:
        store.transfer = Transfer(f"ftp://{options.public_host}:{own_ftp[0].getsockname()[1]}")
    store.db.close()
    ftp = None
    if own_ftp:
        ftp = FtpProcess(FtpOptions(options.data, cert, options.tls_max, public_address,
                                    options.passive_ports, options.keep_free), own_ftp, https)
        store.end_writers = ftp.end_writers
    faults = FaultList()
    log = RequestLog(options.test_control, options.request_log)
    control = Control(store, log, faults, ftp) if options.test_control else None
    try:
        return asyncio.run(_serve(options, store, HttpsService(store, log, control, faults, doors), https,
                                  cert, ftp))
    finally:
        if ftp:
            ftp.stop()
        if options.ready_file:
            options.ready_file.unlink(missing_ok=True)
        store.db.close()


def main() -> int:
    """The command's entry."""
    from .options import parse
    options = parse()
    try:
        return run(options)
    except (StartError, RuntimeError) as error:
        print(f"quilldeck_service: {error}", file=sys.stderr)
        return 1
