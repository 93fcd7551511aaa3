"""A private vsftpd over a folder: TLS everywhere, required session reuse, loopback only.

Its one user is vsftpd's anonymous one with a list of allowed passwords. That needs no account, no
PAM service and so no change to the machine.
"""
from __future__ import annotations

import os
import random
import secrets
import socket
import subprocess
import time
from pathlib import Path

PROGRAM = "/usr/sbin/vsftpd"
USER = "ftp"
# Whom a session runs as: a system user of every Debian, and one whose home exists, as the server
# passes through it on its way to the root.
ACCOUNT = "daemon"


def free_port() -> int:
    """A port that nothing listens on, below those that the kernel gives to outgoing connections."""
    while True:
        port = random.randrange(20000, 30000)
        with socket.socket() as probe:
            try:
                probe.bind(("127.0.0.1", port))
                return port
            except OSError:
                continue


class Vsftpd:
    """The server's settings at once, the process from `start` to `stop`."""

    def __init__(self, folder: Path, tls_max: str) -> None:
        self._folder = folder
        self._tls_max = tls_max
        self._process: subprocess.Popen[bytes] | None = None
        self.port = free_port()
        self.user = USER
        self.password = secrets.token_hex(16)
        self.url = f"ftp://localhost:{self.port}"

    def start(self, root: Path) -> None:
        """Serves the files in `root`; raises when the server does not come up."""
        # Sessions run as somebody who has to pass through, but may list nothing.
        self._folder.chmod(0o711)
        empty = self._folder / "empty"
        empty.mkdir()
        passwords = self._folder / "passwords"
        passwords.write_text(self.password + "\n")
        certificate = self._folder / "certificate.pem"
        subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt",
                        "ec_paramgen_curve:prime256v1", "-nodes", "-days", "30", "-subj",
                        "/CN=localhost", "-keyout", certificate, "-out", f"{certificate}.crt"],
                       check=True, capture_output=True)
        settings = {
            "listen": "YES", "listen_ipv6": "NO", "listen_address": "127.0.0.1",
            "listen_port": self.port, "background": "NO", "port_enable": "NO",
            "local_enable": "NO", "anonymous_enable": "YES", "ftp_username": ACCOUNT,
            "nopriv_user": "nobody", "secure_email_list_enable": "YES",
            "email_password_file": passwords, "anon_root": root,
            "anon_world_readable_only": "NO", "write_enable": "YES", "anon_upload_enable": "YES",
            "anon_other_write_enable": "YES", "dirlist_enable": "NO",
            "ssl_enable": "YES", "allow_anon_ssl": "YES", "force_anon_logins_ssl": "YES",
            "force_anon_data_ssl": "YES", "require_ssl_reuse": "YES", "ssl_ciphers": "HIGH",
            "rsa_cert_file": f"{certificate}.crt", "rsa_private_key_file": certificate,
            "secure_chroot_dir": empty, "xferlog_enable": "YES", "log_ftp_protocol": "YES",
            "vsftpd_log_file": self._folder / "vsftpd.log",
            # Name spaces and system call filters need rights that a container often lacks.
            "seccomp_sandbox": "NO", "isolate": "NO", "isolate_network": "NO",
            "max_per_ip": 0,
        }
        if os.geteuid() != 0:
            settings["run_as_launching_user"] = "YES"
        config = self._folder / "vsftpd.conf"
        config.write_text("".join(f"{name}={value}\n" for name, value in settings.items()))
        # This vsftpd has no option for the version; OpenSSL's own settings do.
        openssl = self._folder / "openssl.cnf"
        openssl.write_text("openssl_conf = all\n[all]\nssl_conf = tls\n[tls]\n"
                           f"system_default = limit\n[limit]\nMaxProtocol = TLSv{self._tls_max}\n")
        self._process = subprocess.Popen([PROGRAM, config], stdin=subprocess.DEVNULL,
                                         start_new_session=True,
                                         env={**os.environ, "OPENSSL_CONF": str(openssl)})
        deadline = time.monotonic() + 10
        while True:
            try:
                socket.create_connection(("127.0.0.1", self.port), 1).close()
                return
            except OSError:
                if self._process.poll() is not None or time.monotonic() > deadline:
                    raise RuntimeError(f"vsftpd did not start on port {self.port}") from None
                time.sleep(0.02)

    def stop(self) -> None:
        """Ends the server and the sessions that it forked."""
        if self._process is None:
            return
        try:
            os.killpg(self._process.pid, 15)
        except ProcessLookupError:
            pass
        self._process.wait()
