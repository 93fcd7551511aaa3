"""How often an address may do what costs the store something before anybody has signed in."""
from __future__ import annotations

import ipaddress
import logging
import threading
import time
from collections import Counter

from .wire import Failure

MAX_ADDRESSES = 10_000
_log = logging.getLogger("quilldeck")


def network(address: str) -> str:
    """What counts as one address: an IPv6 customer has a whole /64."""
    try:
        found = ipaddress.ip_address(address)
    except ValueError:
        return address
    if isinstance(found, ipaddress.IPv6Address):
        if found.ipv4_mapped:
            return str(found.ipv4_mapped)
        return str(ipaddress.ip_network((int(found) >> 64 << 64, 64)))
    return address


class Limit:
    """So many events within so many seconds for each address. Safe on any thread."""

    def __init__(self, allowed: int, seconds: float, refusal: Failure) -> None:
        self._allowed = allowed
        self._seconds = seconds
        self._refusal = refusal
        self._lock = threading.Lock()
        self._spent: dict[str, list[float]] = {}

    def spend(self, address: str) -> None:
        """Counts an event, or refuses it."""
        now = time.monotonic()
        with self._lock:
            recent = [at for at in self._spent.pop(address, ()) if at > now - self._seconds]
            if len(recent) < self._allowed:
                recent.append(now)
                refused = False
            else:
                refused = True
            self._spent[address] = recent
            if len(self._spent) > MAX_ADDRESSES:
                # The address that was heard of longest ago.
                del self._spent[next(iter(self._spent))]
        if len(recent) == self._allowed and not refused:
            # Once in each time, so that nobody fills the log.
            _log.warning("%s: too many from %s", self._refusal.name, address)
        if refused:
            raise Failure(self._refusal.name, self._refusal.description)

    def give_back(self, address: str) -> None:
        """Takes one event back, because it turned out to be harmless."""
        with self._lock:
            if self._spent.get(address):
                self._spent[address].pop()


class Arrivals:
    """Connections that are open, by address; strangers are those that have not signed in yet. Safe
    on any thread."""

    def __init__(self, most: int, of_address: int, strangers_of_address: int) -> None:
        self._most = most
        self._of_address = of_address
        self._strangers_of_address = strangers_of_address
        self._lock = threading.Lock()
        self._all: Counter[str] = Counter()
        self._strangers: Counter[str] = Counter()

    def enter(self, address: str) -> bool:
        """Counts a new connection, unless there are too many."""
        with self._lock:
            if (self._all.total() >= self._most or self._all[address] >= self._of_address
                    or self._strangers[address] >= self._strangers_of_address):
                return False
            self._all[address] += 1
            self._strangers[address] += 1
            return True

    def sign_in(self, address: str) -> None:
        """One of the address's strangers is known now."""
        with self._lock:
            self._strangers[address] -= 1

    def leave(self, address: str, signed_in: bool) -> None:
        """Forgets a connection that has ended."""
        with self._lock:
            self._all[address] -= 1
            self._strangers[address] -= not signed_in
            for counts in (self._all, self._strangers):
                if counts[address] <= 0:
                    del counts[address]


class Limits:
    """The limits of one store."""

    def __init__(self) -> None:
        self.passwords = Limit(30, 60, Failure(
            "Login failed", "There were too many wrong passwords. Please try again in a minute."))
        self.sign_ups = Limit(60, 3600, Failure(
            "Sign-up closed", "There were too many new accounts from your address. Please try again later."))
