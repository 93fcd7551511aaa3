"""The `Data` field: the transfer account, enciphered for one client."""
from __future__ import annotations

import base64
import hashlib

from Cryptodome.Cipher import Blowfish

from .wire import elements


def seal(host: str, user: str, password: str, key_parts: tuple[str, str, str]) -> str:
    """Base64 of the account's three elements under Blowfish, each block on its own.

    The key is the first 24 characters of the lower-case MD5 of the joined parts; zeros
    fill the last block, and the client reads up to the first of them.
    """
    joined = "".join(key_parts).encode("utf-8", "surrogatepass")
    key = hashlib.md5(joined, usedforsecurity=False).hexdigest()[:24].encode("ascii")
    plain = elements(Host=host, User=user, Pass=password).encode("utf-8")
    plain += bytes(-len(plain) % 8)
    return base64.b64encode(Blowfish.new(key, Blowfish.MODE_ECB).encrypt(plain)).decode("ascii")
