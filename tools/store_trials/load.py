"""Many accounts at work for minutes, among peers that stall, say nothing or break off."""
from __future__ import annotations

import random
import shutil
import socket
import tempfile
import threading
import time
from pathlib import Path

from ground import Ground
from people import Person, Tally, verify
from store_client import TLS, Service


class Nuisance(threading.Thread):
    """A peer from an address of its own that opens connections and does not do what it should."""

    def __init__(self, service: Service, number: int) -> None:
        super().__init__(daemon=True)
        self.ending = threading.Event()
        self.opened = 0
        self._service = service
        self._address = f"127.0.1.{number + 1}"
        self._dice = random.Random(number)
        self._open: list[socket.socket] = []

    def run(self) -> None:
        while not self.ending.wait(0.2 * self._dice.random()):
            try:
                self._bother()
            except (OSError, ValueError):
                pass
            # Old ones are left open for as long as the store bears them.
            while len(self._open) > 60:
                self._open.pop(self._dice.randrange(len(self._open))).close()
        for connection in self._open:
            connection.close()

    def _bother(self) -> None:
        port = self._dice.choice((self._service.port, self._service.ftp_port))
        line = socket.create_connection(("127.0.0.1", port), 5, (self._address, 0))
        self._open.append(line)
        self.opened += 1
        what = self._dice.randrange(6)
        if what == 0:
            return
        if what == 1:
            line.sendall(self._dice.randbytes(self._dice.randrange(1, 400)))
            return
        if port == self._service.ftp_port:
            line.recv(200)
            line.sendall(b"AUTH TLS\r\n")
            line.recv(200)
        secure = TLS.wrap_socket(line)
        self._open[-1] = secure
        if port == self._service.ftp_port:
            secure.sendall(b"USER nobody\r\nPASS x\r\nEPSV\r\nSTOR /u" + b"0" * 32 + b"\r\n")
        elif what == 2:
            secure.sendall(b"POST /v1/qd_operations.php HTTP/1.1\r\nHost: x\r\nContent-Length: 100\r\n\r\na")
        elif what == 3:
            secure.sendall(b"GET /l/nothing HTTP/1.1\r\nHost: x\r\n\r\n" * 50)
        elif what == 4:
            secure.sendall(b"GET / HTTP/1.1\r\nHo")
        else:
            secure.sendall(b"POST /v1/qd_operations.php HTTP/1.1\r\nContent-Length: 9\r\n\r\n")
            self._open.pop().close()


def start_people(ground: Ground, count: int, tally: Tally, breaks: bool = False,
                 store_ends: bool = False) -> list[Person]:
    """Makes the accounts and sets the people to work."""
    names = [f"person{number:02}" for number in range(count)]
    ground.admit(names)
    people = [Person(ground, name, tally, seed, breaks, store_ends)
              for seed, name in enumerate(names)]
    for person in people:
        person.start()
    return people


def stop_people(people: list[Person]) -> None:
    """Lets each end what it is at."""
    for person in people:
        person.ending.set()
    for person in people:
        person.join(180)


def report(title: str, ground: Ground, tally: Tally, seconds: float, files: int) -> bool:
    """Prints what happened; True when nothing went wrong."""
    done = ", ".join(f"{name} {count}" for name, count in sorted(tally.done.items()))
    print(f"{title}: {seconds:.0f} s, {done}; {files} files read back at the end; "
          f"highest memory of both processes {ground.memory() // 1024} MiB")
    problems = tally.errors + ground.complaints()
    for problem in problems[:20]:
        print(f"  {problem}")
    print(f"{title}: {len(tally.errors)} errors, {len(problems) - len(tally.errors)} complaints "
          "in the log", flush=True)
    return not problems


def run(accounts: int, seconds: float, nuisances: int = 0, backup: bool = False) -> bool:
    """The load; with `nuisances` the people break their own lines, too, and with `backup` the store
    is backed up half-way and the copy is checked in a store of its own."""
    ground = Ground()
    tally = Tally()
    title = "stalls" if nuisances else "backup" if backup else "load"
    try:
        people = start_people(ground, accounts, tally, breaks=nuisances > 0)
        peers = [Nuisance(ground, number) for number in range(nuisances)]
        for peer in peers:
            peer.start()
        begin = time.monotonic()
        copied_at, copy = 0.0, Path(tempfile.mkdtemp(prefix="quilldeck-backup-"))
        while time.monotonic() - begin < seconds and not tally.errors:
            time.sleep(min(1, seconds))
            ground.memory()
            if backup and not copied_at and time.monotonic() - begin > seconds / 2:
                copied_at = time.monotonic()
                print("backup:", ground.admin("backup", copy / "data").strip())
        stop_people(people)
        for peer in peers:
            peer.ending.set()
            peer.join(30)
            tally.count("bad connections", peer.opened)
        now = time.monotonic()
        files = sum(verify(ground, person, now, tally) for person in people)
        well = report(title, ground, tally, now - begin, files)
        if backup:
            well = _check_backup(copy, people, copied_at) and well
        shutil.rmtree(copy)
        return well
    finally:
        ground.close()


def _check_backup(copy: Path, people: list[Person], copied_at: float) -> bool:
    restored = Service(folder=copy)
    tally = Tally()
    try:
        files = sum(verify(restored, person, copied_at, tally) for person in people)
    finally:
        restored.stop()
    for problem in tally.errors[:20]:
        print(f"  restored: {problem}")
    print(f"backup: {files} files in the restored store, {len(tally.errors)} wrong or missing of what "
          "was accepted before it began", flush=True)
    return not tally.errors
