"""The command line."""
from __future__ import annotations

import argparse
from pathlib import Path


def size(text: str) -> int:
    """A count of bytes, with K, M, G or T for powers of 1024."""
    units = {"k": 1 << 10, "m": 1 << 20, "g": 1 << 30, "t": 1 << 40}
    unit = units.get(text[-1:].lower())
    return int(float(text[:-1]) * unit) if unit else int(text)


def _ports(text: str) -> range:
    low, _, high = text.partition("-")
    return range(int(low), int(high) + 1)


def parse(arguments: list[str] | None = None) -> argparse.Namespace:
    """Reads the service's arguments."""
    parser = argparse.ArgumentParser(
        prog="quilldeck_service.py",
        description="Quilldeck's local store: metadata over HTTPS, bytes over FTP with TLS.",
        epilog="Sizes may end in K, M, G or T. SIGTERM or Ctrl+C ends the service cleanly.")
    add = parser.add_argument
    add("--data", type=Path, default=Path("service-data"), metavar="DIR",
        help="folder for metadata, files and the certificate (default: %(default)s)")
    add("--https-port", type=int, default=8443, metavar="N", help="default 8443; 0 takes a free one")
    add("--ftp-port", type=int, default=2121, metavar="N", help="default 2121; 0 takes a free one")
    add("--host", metavar="ADDRESS", help="address to listen on (default: this machine only, "
        "127.0.0.1 and ::1; 0.0.0.0 or :: for all)")
    add("--public-host", default="localhost", metavar="NAME",
        help="the name that clients reach this machine by (default: %(default)s)")
    add("--passive-ports", type=_ports, metavar="LOW-HIGH",
        help="ports for FTP data connections (default: any free one)")
    add("--tls-max", choices=("1.2", "1.3"), default="1.3", help="highest TLS version to offer")
    add("--quota", type=size, default=10 << 30, metavar="BYTES",
        help="space of a new account, 0 for no limit (default: 10G)")
    add("--keep-free", type=size, default=256 << 20, metavar="BYTES",
        help="room on the disk that uploads leave alone (default: 256M)")
    add("--upload-limit", type=size, default=0, metavar="BYTES",
        help="speed limit a second that clients are told (default: none)")
    add("--download-limit", type=size, default=0, metavar="BYTES", help="the same for downloads")
    add("--no-sign-up", action="store_true", help="refuse new accounts made from the client")
    add("--demo", action="store_true", help="make the demo accounts and their files if not there")
    group = parser.add_argument_group("bytes served by another FTPS server, whose root is DIR/transfer")
    group.add_argument("--transfer-host", metavar="URL", help="such as ftp://localhost:990")
    group.add_argument("--transfer-user", metavar="U")
    group.add_argument("--transfer-password-file", type=Path, metavar="F",
                       help="its first line is the password; others cannot see it there")
    group = parser.add_argument_group("tests")
    group.add_argument("--ready-file", type=Path, metavar="F",
                       help="written as JSON once both ports serve")
    group.add_argument("--request-log", type=Path, metavar="F", help="append each request to F")
    group.add_argument("--test-control", action="store_true",
                       help="serve /_control: request log, faults, counters; never on a real store")
    options = parser.parse_args(arguments)
    if bool(options.transfer_host) != bool(options.transfer_user):
        parser.error("--transfer-host and --transfer-user go together")
    options.data = options.data.absolute()
    options.transfer_password = ""
    if options.transfer_password_file:
        try:
            options.transfer_password = options.transfer_password_file.read_text().split("\n")[0]
        except (OSError, UnicodeError) as error:
            parser.error(f"cannot read {options.transfer_password_file}: {error}")
    return options
