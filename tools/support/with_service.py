#!/usr/bin/python3
"""Runs a command beside a fresh store and returns the command's exit code.

    with_service.py [--vsftpd] [--tls-max 1.2|1.3] [--keep] -- COMMAND [ARGUMENTS]

The store lives on free ports in a temporary folder, with the demo data and test control. The
command finds it by its environment:

    QUILLDECK_TEST_HTTPS_URL   https://localhost:N
    QUILLDECK_TEST_FTP_URL     ftp://localhost:M
    QUILLDECK_TEST_READY       path of the ready file (JSON)
    QUILLDECK_TEST_TLS_MAX     1.2 or 1.3

With --vsftpd there is a second store, whose bytes travel through vsftpd:

    QUILLDECK_TEST_VSFTPD_HTTPS_URL, QUILLDECK_TEST_VSFTPD_READY   that store
    QUILLDECK_TEST_VSFTPD_URL, ..._USER, ..._PASSWORD              its file server

--keep leaves the temporary folder with the logs, and says where.
"""
from __future__ import annotations

import argparse
import json
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from collections.abc import Sequence
from pathlib import Path

from vsftpd import Vsftpd

SERVICE = Path(__file__).resolve().parents[2] / "service" / "quilldeck_service.py"
START_SECONDS = 60


class Store:
    """A store in `folder`, which may be that of one that has ended. It serves when the constructor
    returns. `prefix` is put before its command.
    """

    def __init__(self, folder: Path, *options: str, prefix: Sequence[str] = (),
                 demo: bool = True) -> None:
        folder.mkdir(exist_ok=True)
        folder.chmod(0o711)
        self.ready_file = folder / "ready.json"
        self.ready_file.unlink(missing_ok=True)
        self._log_file = folder / "service.log"
        with open(self._log_file, "wb") as log:
            self.process = subprocess.Popen(
                [*prefix, "/usr/bin/python3", SERVICE, "--data", folder / "data", "--https-port", "0",
                 "--ftp-port", "0", "--ready-file", self.ready_file,
                 *(["--demo", "--test-control"] if demo else []), *options], stdin=subprocess.DEVNULL, stdout=log, stderr=log)
        deadline = time.monotonic() + START_SECONDS
        while not self.ready_file.exists():
            if self.process.poll() is not None or time.monotonic() > deadline:
                self.stop()
                raise RuntimeError("the store did not start:\n" + self._log_file.read_text())
            time.sleep(0.02)
        self.facts = json.loads(self.ready_file.read_text())

    def stop(self) -> bool:
        """Ends the store; False when it did not end well."""
        if self.process.poll() is not None:
            # Some tests end their store. Where one did not, this tells why nothing answered.
            print("with_service: the store had ended before its user:\n"
                  + self._log_file.read_text(), file=sys.stderr)
        self.process.terminate()
        try:
            code = self.process.wait(15)
        except subprocess.TimeoutExpired:
            self.process.kill()
            code = self.process.wait()
        if code not in (0, -signal.SIGTERM):
            print(f"with_service: the store ended with {code}:\n" + self._log_file.read_text(),
                  file=sys.stderr)
        return code in (0, -signal.SIGTERM)


def run(command: list[str], folder: Path, vsftpd: bool, tls_max: str) -> int:
    """Starts everything, runs the command, ends everything."""
    environment = dict(os.environ, QUILLDECK_TEST_TLS_MAX=tls_max)
    stores = []
    server = None
    well = True
    try:
        first = Store(folder / "store", "--tls-max", tls_max)
        stores.append(first)
        environment |= {"QUILLDECK_TEST_HTTPS_URL": first.facts["https_url"],
                        "QUILLDECK_TEST_FTP_URL": first.facts["ftp_url"],
                        "QUILLDECK_TEST_READY": str(first.ready_file)}
        if vsftpd:
            (folder / "vsftpd").mkdir()
            server = Vsftpd(folder / "vsftpd", tls_max)
            password = folder / "vsftpd-password"
            password.touch(0o600)
            password.write_text(server.password)
            second = Store(folder / "vsftpd-store", "--tls-max", tls_max, "--transfer-host",
                           server.url, "--transfer-user", server.user, "--transfer-password-file",
                           str(password))
            stores.append(second)
            server.start(Path(second.facts["incoming"]))
            environment |= {"QUILLDECK_TEST_VSFTPD_HTTPS_URL": second.facts["https_url"],
                            "QUILLDECK_TEST_VSFTPD_READY": str(second.ready_file),
                            "QUILLDECK_TEST_VSFTPD_URL": server.url,
                            "QUILLDECK_TEST_VSFTPD_USER": server.user,
                            "QUILLDECK_TEST_VSFTPD_PASSWORD": server.password}
        code = subprocess.call(command, env=environment)
    finally:
        if server:
            server.stop()
        for store in stores:
            well = store.stop() and well
    # A signal's number would otherwise wrap to something that looks like success.
    code = 128 - code if code < 0 else code
    return code or (0 if well else 1)


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--vsftpd", action="store_true")
    parser.add_argument("--tls-max", choices=["1.2", "1.3"], default="1.3")
    parser.add_argument("--keep", action="store_true")
    parser.add_argument("command", nargs="+")
    arguments = parser.parse_args()
    # Ended from outside, we still end what we started.
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(143))
    folder = Path(tempfile.mkdtemp(prefix="quilldeck-store."))
    folder.chmod(0o711)
    try:
        return run(arguments.command, folder, arguments.vsftpd, arguments.tls_max)
    except RuntimeError as error:
        print(f"with_service: {error}", file=sys.stderr)
        return 1
    finally:
        if arguments.keep:
            print(f"with_service: kept {folder}", file=sys.stderr)
        else:
            shutil.rmtree(folder, ignore_errors=True)


if __name__ == "__main__":
    sys.exit(main())
