#!/usr/bin/python3
"""Starts Quilldeck's local store; --help tells the options."""
import sys

PACKAGES = {"aiohttp": "python3-aiohttp", "pyftpdlib": "python3-pyftpdlib",
            "OpenSSL": "python3-openssl", "cryptography": "python3-cryptography",
            "Cryptodome": "python3-pycryptodome", "PIL": "python3-pil"}


def main() -> int:
    """Runs the service, or says which packages it misses."""
    if sys.version_info < (3, 11):
        print("quilldeck_service: needs Python 3.11 or newer (Debian 12 has it as /usr/bin/python3).",
              file=sys.stderr)
        return 1
    missing = []
    for module, package in PACKAGES.items():
        try:
            __import__(module)
        except ImportError:
            missing.append(package)
    if missing:
        print("quilldeck_service: missing Python packages. On Debian, for /usr/bin/python3:\n"
              f"  apt-get install {' '.join(missing)}", file=sys.stderr)
        return 1
    from quilldeck_store.service import main as serve
    return serve()


if __name__ == "__main__":
    sys.exit(main())
