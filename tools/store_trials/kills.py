"""A process killed at random moments under load, again and again, and then every file looked at."""
from __future__ import annotations

import random
import time

from ground import Ground
from load import report, start_people, stop_people
from people import Tally, verify


def wait_for_work(tally: Tally) -> None:
    """Until people are at work again, so that there is something to interrupt."""
    before, end = tally.done["uploads"], time.monotonic() + 10
    while tally.done["uploads"] == before and time.monotonic() < end:
        time.sleep(0.02)


def run(accounts: int, kills: int, pause: float) -> bool:
    """Kills the service and its file server in turn, `kills` times in all, each up to `pause` seconds
    after it has accepted something."""
    ground = Ground()
    tally = Tally()
    dice = random.Random(7)
    try:
        people = start_people(ground, accounts, tally, store_ends=True)
        begin = time.monotonic()
        for number in range(kills):
            wait_for_work(tally)
            time.sleep(pause * dice.random())
            ground.memory()
            which = number % 2
            ground.kill(which)
            tally.count(("kills of the service", "kills of the file server")[which])
            if tally.errors:
                break
        stop_people(people)
        now = time.monotonic()
        files = sum(verify(ground, person, now, tally) for person in people)
        print("check:", ground.admin("check").strip())
        return report("kills", ground, tally, now - begin, files)
    finally:
        ground.close()
