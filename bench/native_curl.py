#!/usr/bin/python3
"""native_curl.py URL NAME [MEGABYTES]: the figures of this machine's own curl against the store at
URL, for comparison with those under Wine. NAME is the file server's in the report."""
from __future__ import annotations

import base64
import hashlib
import re
import subprocess
import sys
import tempfile
import urllib.parse
from pathlib import Path

from Cryptodome.Cipher import Blowfish

USER = PASSWORD = "demo"


def field(reply: str, name: str) -> str:
    """The text of the first element of that name."""
    found = re.search(f"<{name}>(.*?)</{name}>", reply)
    if not found:
        raise RuntimeError(f"the store answered without {name}: {reply}")
    return found.group(1)


class Store:
    """A session, and the transfer account that its login tells."""

    def __init__(self, url: str) -> None:
        self._url = url
        self._identity = [("user_id", ""), ("user_id_access", ""), ("user_lang", ""),
                          ("user_level", "")]
        reply = self.request(("action", "login"), ("user", USER), ("pass", PASSWORD),
                             ("version", "1.3.14.1"), ("pro_version", ""), ("pcid", "native-curl"))
        user_id = field(reply, "UserID")
        self._identity[0] = ("user_id", user_id)
        key = hashlib.md5((USER + PASSWORD + user_id).encode()).hexdigest()[:24].encode()
        data = Blowfish.new(key, Blowfish.MODE_ECB).decrypt(base64.b64decode(field(reply, "Data")))
        account = data.rstrip(b"\0").decode()
        self.host = field(account, "Host")
        self.login = field(account, "User") + ":" + field(account, "Pass")

    def request(self, *params: tuple[str, str]) -> str:
        body = urllib.parse.urlencode([*params, *self._identity], quote_via=urllib.parse.quote)
        return subprocess.run(["curl", "-sk", self._url + "/v1/qd_operations.php", "--data-binary",
                               body], check=True, capture_output=True, text=True).stdout

    def transfer(self, *options: str) -> float:
        """Bytes per second of one transfer."""
        done = subprocess.run(["curl", "-sSk", "--ssl-reqd", "-u", self.login, "-w",
                               "%{stderr}%{speed_upload} %{speed_download}", *options],
                              check=True, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                              text=True)
        return max(float(speed) for speed in done.stderr.split()[-2:])


def main() -> None:
    url, name = sys.argv[1:3]
    size = int(sys.argv[3] if len(sys.argv) > 3 else 256) << 20
    store = Store(url)
    reply = store.request(("action", "create_and_open_file"), ("dir_id", "0"), ("dir_access", "0"),
                          ("name", "native curl"), ("size", str(size)), ("is_pro", "0"))
    location = field(reply, "TempLocation")
    with tempfile.NamedTemporaryFile() as source:
        Path(source.name).write_bytes(b"q" * size)
        up = store.transfer("-T", source.name, store.host + location)
    reply = store.request(("action", "close_file_upload"), ("file_id", field(reply, "ID")),
                          ("temp_location", location), ("file_time", "1"),
                          ("file_size", str(size)), ("is_pro", "0"))
    listing = store.request(("action", "list_dir"), ("dir_id", "0"))
    entry = listing[listing.index("<Name>native curl</Name>"):]
    down = store.transfer(store.host + field(entry, "Location"))
    print(f"{name}: native curl {up / 2**20:.1f} MB/s up, {down / 2**20:.1f} MB/s down", flush=True)


if __name__ == "__main__":
    main()
