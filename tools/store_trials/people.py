"""People who use a store all at once, each with a book of what the store has accepted."""
from __future__ import annotations

import contextlib
import ftplib
import hashlib
import http.client
import io
import random
import threading
import time
from collections import Counter
from collections.abc import Callable
from typing import TypeVar

from store_client import Client, Refused, Service

T = TypeVar("T")
BROKEN = (OSError, EOFError, http.client.HTTPException, ftplib.Error, ValueError)
"""What a broken line, or a store that has just ended, looks like from here."""
PATIENCE_SECONDS = 90
MOST_FILES = 12
SIZES = ((0.6, 1, 20_000), (0.9, 20_000, 400_000), (1.0, 1_000_000, 6_000_000))
"""Up to which dice, from, to: many small files and a few large ones."""


def digest(data: bytes) -> str:
    return hashlib.sha256(data).hexdigest()


class Broken(Exception):
    """The person breaks the line on purpose, in the middle of a transfer."""


class Book:
    """What one account was told: for each name its contents in order, by digest, None for none; each
    with the times when it was asked for and when it was accepted. Safe on any thread."""

    def __init__(self) -> None:
        self._lock = threading.Lock()
        self._lines: dict[str, list[tuple[float, float, str | None]]] = {}

    def ask(self, name: str, content: str | None) -> None:
        """About to ask for this; until it is accepted it may be so or not."""
        with self._lock:
            self._lines.setdefault(name, []).append((time.monotonic(), float("inf"), content))

    def accept(self, name: str) -> None:
        """The store has accepted what was asked for last."""
        with self._lock:
            asked, _, content = self._lines[name][-1]
            self._lines[name][-1] = (asked, time.monotonic(), content)

    def names(self) -> list[str]:
        """Those that exist now, by what was accepted."""
        with self._lock:
            return [name for name, lines in self._lines.items() if lines[-1][2] is not None]

    def allowed(self, since: float) -> dict[str, set[str | None]]:
        """What each name may hold in a state of the store not older than `since`: what had been
        accepted last by then, and all that was asked for and not accepted before."""
        allowed: dict[str, set[str | None]] = {}
        with self._lock:
            for name, lines in self._lines.items():
                settled = max((number for number, line in enumerate(lines) if line[1] <= since),
                              default=-1)
                found = {content for _, _, content in lines[max(settled, 0):]}
                allowed[name] = found if settled >= 0 else found | {None}
        return allowed


class Tally:
    """What all people did together, and what went wrong. Safe on any thread."""

    def __init__(self) -> None:
        self._lock = threading.Lock()
        self.done: Counter[str] = Counter()
        self.errors: list[str] = []

    def count(self, what: str, by: int = 1) -> None:
        with self._lock:
            self.done[what] += by

    def wrong(self, what: str) -> None:
        """An error that nobody asked for."""
        with self._lock:
            self.errors.append(what)


class Person(threading.Thread):
    """One account at work until told to end; each file's bytes are compared as they come back.

    With `breaks` lines break now and then by this person's own doing, and the upload goes on with
    SIZE and APPE. With `store_ends` the store may go away at any moment and is waited for.
    """

    def __init__(self, service: Service, name: str, tally: Tally, seed: int, breaks: bool = False,
                 store_ends: bool = False) -> None:
        super().__init__(name=name, daemon=True)
        self.book = Book()
        self.ending = threading.Event()
        self.pause = 0.0
        self._service = service
        self._tally = tally
        self._dice = random.Random(seed)
        self._breaks = breaks
        self._store_ends = store_ends
        self._client = Client(service)

    def run(self) -> None:
        try:
            self._sign_in()
            while not self.ending.wait(self.pause * self._dice.random()):
                self._something()
        except Exception as error:  # the trial fails by it, with the account's name
            self._tally.wrong(f"{self.name}: {type(error).__name__}: {error}")
        finally:
            self._client.line.close()

    def _sign_in(self) -> None:
        self._patiently(lambda: self._client.login(self.name, self.name))

    def _patiently(self, body: Callable[[], T]) -> T:
        """Asks again after a broken line, as the client does; the session is still known."""
        end = time.monotonic() + PATIENCE_SECONDS
        while True:
            try:
                return body()
            except Refused as refusal:
                # A store that is being ended refuses what its other half has to do with.
                if not self._store_ends or "does not answer" not in str(refusal):
                    raise
            except BROKEN as error:
                if not (self._store_ends or isinstance(error, ConnectionError) and self._breaks):
                    raise
            self._client.line.close()
            self._tally.count("retries")
            if time.monotonic() > end:
                raise TimeoutError("the store did not come back")
            time.sleep(0.1 + 0.3 * self._dice.random())

    def _something(self) -> None:
        names = self.book.names()
        dice = self._dice.random()
        if not names or dice < 0.35 and len(names) < MOST_FILES:
            self._upload(f"{self._dice.randrange(10**9):09}.bin", new=True)
        elif dice < 0.5:
            self._upload(self._dice.choice(names), new=False)
        elif dice < 0.6 and len(names) > 3:
            self._remove(self._dice.choice(names))
        elif dice < 0.8:
            self._look(names)
        else:
            self._download(self._dice.choice(names))

    def _look(self, names: list[str]) -> None:
        listed = self._patiently(lambda: self._client.names())
        self._tally.count("listings")
        missing = set(names) - set(listed)
        if missing:
            self._tally.wrong(f"{self.name}: accepted and not listed: {sorted(missing)}")

    def _data(self) -> bytes:
        dice = self._dice.random()
        low, high = next((low, high) for part, low, high in SIZES if dice <= part)
        return self._dice.randbytes(self._dice.randrange(low, high))

    def _upload(self, name: str, new: bool) -> None:
        data = self._data()
        if new:
            self.book.ask(name, digest(b""))
            number, location = self._patiently(lambda: self._create(name, len(data)))
            self.book.accept(name)
        else:
            number = self._find(name)[0]
            location = self._patiently(lambda: self._client.reopen(number))
        self._patiently(lambda: self._send(location, data))
        self.book.ask(name, digest(data))
        self._patiently(lambda: self._client.finish(number, location, len(data)))
        self.book.accept(name)
        self._tally.count("uploads")
        self._tally.count("bytes up", len(data))

    def _create(self, name: str, size: int) -> tuple[str, str]:
        try:
            return self._client.begin(name, size)
        except Refused as refusal:
            if refusal.kind != 1 or not self._store_ends:
                raise
            # The answer to an earlier try was lost.
            number = self._find(name)[0]
            return number, self._client.reopen(number)

    def _find(self, name: str) -> tuple[str, str]:
        node = self._patiently(lambda: self._client.find(name))
        return node["ID"], node["Location"]

    def _send(self, location: str, data: bytes) -> None:
        """All of the bytes; after a break the rest is appended to what the store says it has."""
        broken = self._breaks and self._dice.random() < 0.3
        with contextlib.closing(self._client.ftp()) as line:
            if not broken:
                line.storbinary(f"STOR {location}", io.BytesIO(data))
                return
            cut = self._dice.randrange(len(data))
            with line.transfercmd(f"STOR {location}") as channel:
                channel.sendall(data[:cut])
        self._tally.count("breaks")
        with contextlib.closing(self._client.ftp()) as line:
            there = line.size(location) or 0
            if there > cut:
                raise RuntimeError(f"{there} bytes arrived of {cut}")
            line.storbinary(f"APPE {location}", io.BytesIO(data[there:]))

    def _download(self, name: str) -> None:
        number, location = self._find(name)
        self._patiently(lambda: self._client.ask("open_file_download", file_id=number))
        data = self._patiently(lambda: self._client.get(location))
        self._patiently(lambda: self._client.ask("close_file_download", file_id=number))
        if digest(data) not in self.book.allowed(time.monotonic())[name]:
            self._tally.wrong(f"{self.name}: {name} came back with other bytes")
        self._tally.count("downloads")
        self._tally.count("bytes down", len(data))

    def _remove(self, name: str) -> None:
        number = self._find(name)[0]
        self.book.ask(name, None)
        try:
            self._patiently(lambda: self._client.ask("remove_file", file_id=number))
        except Refused:
            if not self._store_ends:
                raise
            # Removed by an earlier try whose answer was lost.
        self.book.accept(name)
        self._tally.count("removals")


def verify(service: Service, person: Person, since: float, tally: Tally) -> int:
    """Reads all files of an account back, and counts them; the tally hears of each that is not as
    the book says for a state not older than `since`."""
    client = Client(service)
    client.login(person.name, person.name)
    found = {node["Name"]: node["Location"] for node in client.ask("list_dir", dir_id=0).entries()}
    allowed = person.book.allowed(since)
    for name in sorted(set(found) | set(allowed)):
        content = digest(client.get(found[name])) if name in found else None
        if content not in allowed.get(name, set()):
            tally.wrong(f"{person.name}: {name} " + ("has other bytes" if content else "is lost"))
    client.line.close()
    return len(found)
