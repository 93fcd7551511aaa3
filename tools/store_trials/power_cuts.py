"""The power cut under load, again and again, and what a start over the disk then finds."""
from __future__ import annotations

import os
import random
import shutil
import signal
import subprocess
import tempfile
import time
from pathlib import Path

from ground import Ground
from kills import wait_for_work
from load import report, start_people, stop_people
from people import Person, Tally, verify
from store_client import Service

DISK_BYTES = 4 << 30
LATE = "data=writeback,noauto_da_alloc,commit=60"
"""The file system keeps nothing sooner than it is asked to: what it does by chance hides faults."""


class Disk:
    """A file system of its own in a file, which holds at any moment what a disk would: what the
    system has written, and nothing of what it only keeps in memory. Needs root."""

    def __init__(self, image: Path) -> None:
        self.image = image
        self.root = image.with_suffix(".mounted")
        self.root.mkdir()
        subprocess.run(["mount", "-o", f"loop,{LATE}", image, self.root], check=True)
        self.folder = self.root / "store"

    @classmethod
    def make(cls, image: Path) -> Disk:
        with open(image, "wb") as file:
            file.truncate(DISK_BYTES)
        subprocess.run(["mkfs.ext4", "-q", "-F", image], check=True)
        return cls(image)

    def cut(self, ground: Ground, copy: Path) -> float:
        """Copies what is written at this moment. Answers when that was; the store stands still for
        the time of the copy, as its file must not change meanwhile."""
        stopped = ground.processes()
        for pid in stopped:
            os.kill(pid, signal.SIGSTOP)
        try:
            now = time.monotonic()
            subprocess.run(["cp", "--sparse=always", self.image, copy], check=True)
        finally:
            for pid in stopped:
                os.kill(pid, signal.SIGCONT)
        return now

    def close(self) -> None:
        subprocess.run(["umount", self.root], check=True)
        self.image.unlink()


def _look(copy: Path, people: list[Person], since: float, tally: Tally) -> int:
    """Starts a store over the disk as the cut left it, and counts the files that are there."""
    disk = Disk(copy)
    try:
        service = Service(folder=disk.folder)
        try:
            return sum(verify(service, person, since, tally) for person in people)
        finally:
            service.stop()
    finally:
        disk.close()


def run(accounts: int, cuts: int, pause: float) -> bool:
    """Cuts the power `cuts` times, each up to `pause` seconds after something was accepted."""
    # In memory, so that a copy takes a moment only.
    folder = Path(tempfile.mkdtemp(prefix="quilldeck-power-", dir="/dev/shm"))
    tally = Tally()
    dice = random.Random(7)
    try:
        disk = Disk.make(folder / "disk")
        try:
            ground = Ground("--quota", "100M", folder=disk.folder)
            try:
                people = start_people(ground, accounts, tally)
                begin = time.monotonic()
                files = 0
                for number in range(cuts):
                    wait_for_work(tally)
                    time.sleep(pause * dice.random())
                    copy = folder / f"cut{number}"
                    files += _look(copy, people, disk.cut(ground, copy), tally)
                    tally.count("power cuts")
                    if tally.errors:
                        break
                stop_people(people)
                return report("power cuts", ground, tally, time.monotonic() - begin, files)
            finally:
                ground.stop()
        finally:
            disk.close()
    finally:
        shutil.rmtree(folder, ignore_errors=True)
