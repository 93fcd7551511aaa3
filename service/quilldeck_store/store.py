"""What all requests share: the database, the contents, the settings, the transfer host."""
from __future__ import annotations

import fcntl
import os
import time
from collections.abc import Callable
from dataclasses import dataclass
from pathlib import Path
from typing import TextIO

from .accounts import Principal, forget_idle_sessions
from .backup import nothing_thrown_away
from .contents import CLOSING, LOCATION, Contents
from .credentials import seal
from .database import Database
from .limits import Limits


LOCK_SECONDS = 4


@dataclass(frozen=True)
class Transfer:
    """Where bytes go. An empty user means each principal's own account."""

    url: str
    user: str = ""
    password: str = ""

    @property
    def is_foreign(self) -> bool:
        return self.user != ""


@dataclass
class Caller:
    """Who is at the other end of a connection, as far as it is known."""

    address: str
    signed_in: bool = False


@dataclass(frozen=True)
class Policy:
    """The host's choices for all accounts."""

    quota: int
    upload_limit: int
    download_limit: int
    sign_up: bool
    keep_free: int = 0
    """Bytes of the disk that uploads leave alone."""


class Store:
    """The store in one data folder, safe on any thread."""

    def __init__(self, data: Path, foreign_transfer: bool, policy: Policy) -> None:
        data.mkdir(parents=True, exist_ok=True)
        data.chmod(0o711 if foreign_transfer else 0o700)
        _refuse_lost_metadata(data)
        self._lock = _lock(data)
        self.data = data
        self.policy = policy
        self.contents = Contents(data / "transfer", foreign_transfer)
        self.thumbnails = data / "thumbnails"
        self.outbox = data / "outbox"
        self.db = Database(data / "store.sqlite", may_change=True)
        os.chmod(data / "store.sqlite", 0o600)
        self.transfer = Transfer("")
        self.base_url = ""
        self.limits = Limits()
        self.end_writers: Callable[[str], None] = lambda location: None
        """Ends the bundled server's transfers to an upload location, before it is read."""
        with self.db.transaction(write=True) as db:
            self.empty_location = self.contents.empty(db)
            db.execute("UPDATE uploads SET closed_size = NULL WHERE closed_size = ?", (CLOSING,))
        self.collect()

    def collect(self) -> None:
        """Throws away contents, uploads and sessions that nobody needs; nothing during a backup."""
        with nothing_thrown_away(self.data, wait=False) as may:
            if not may:
                return
            names = self.contents.names()
            with self.db.transaction(write=True) as db:
                forget_idle_sessions(db)
                dead = self.contents.collect(db, names)
            for file in dead:
                file.unlink(missing_ok=True)
                (self.thumbnails / f"{file.name}.jpg").unlink(missing_ok=True)

    def close(self) -> None:
        """Lets go of the folder; for the thread that opened the store."""
        self.db.close()
        self._lock.close()

    def transfer_data(self, who: Principal, key_parts: tuple[str, str, str]) -> str:
        """The enciphered `Data` field for a session."""
        if self.transfer.is_foreign:
            return seal(self.transfer.url, self.transfer.user, self.transfer.password, key_parts)
        return seal(self.transfer.url, who.transfer_login, who.transfer_password, key_parts)


def _refuse_lost_metadata(data: Path) -> None:
    """Contents without their metadata are a store half restored, never a new one."""
    database = data / "store.sqlite"
    if database.exists() and database.stat().st_size:
        return
    files = data / "transfer"
    if files.is_dir() and any(LOCATION.fullmatch("/" + name) for name in os.listdir(files)):
        raise RuntimeError(f"{files} holds files, but {database} is missing. Put the database of the "
                           "same store back, or name an empty folder by --data.")


def _lock(data: Path) -> TextIO:
    """Keeps a second service out of the folder for as long as this process and its children live.

    A killed service's file server needs a moment to find itself alone.
    """
    file = (data / "lock").open("w")
    deadline = time.monotonic() + LOCK_SECONDS
    while True:
        try:
            fcntl.flock(file, fcntl.LOCK_EX | fcntl.LOCK_NB)
            return file
        except OSError:
            if time.monotonic() > deadline:
                raise RuntimeError(f"Another service is using {data} already.") from None
            time.sleep(0.05)


def now() -> int:
    return int(time.time())
