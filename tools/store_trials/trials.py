#!/usr/bin/python3
"""Puts a store through what a hosted one meets. All traffic stays on loopback.

    trials.py load [ACCOUNTS [SECONDS]]     50 accounts at work for five minutes
    trials.py stalls [ACCOUNTS [SECONDS]]   the same among broken lines and peers that stall
    trials.py backup [ACCOUNTS [SECONDS]]   backed up half-way, and the copy checked
    trials.py kills [ACCOUNTS [COUNT]]      200 kills of either process under load
    trials.py power [ACCOUNTS [COUNT]]      25 power cuts under load; needs root
    trials.py nonsense [REQUESTS]           bad input at both doors
    trials.py pages FOLDER                  pictures of what is shown in a browser

Each starts a store of its own, prints what it saw and ends with 0 when nothing was wrong.
"""
from __future__ import annotations

import sys
from collections.abc import Callable
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))
import kills  # noqa: E402
import load  # noqa: E402
import nonsense  # noqa: E402
import pages  # noqa: E402
import power_cuts  # noqa: E402


def main() -> int:
    words = sys.argv[1:]

    def number(position: int, default: int) -> int:
        return int(words[position]) if len(words) > position else default
    trials: dict[str, Callable[[], bool]] = {
        "load": lambda: load.run(number(1, 50), number(2, 300)),
        "stalls": lambda: load.run(number(1, 50), number(2, 300), nuisances=8),
        "backup": lambda: load.run(number(1, 20), number(2, 60), backup=True),
        "kills": lambda: kills.run(number(1, 12), number(2, 200), 2.0),
        "power": lambda: power_cuts.run(number(1, 4), number(2, 25), 1.0),
        "nonsense": lambda: nonsense.run(number(1, 3000)),
        "pages": lambda: pages.run(Path(words[1])),
    }
    if not words or words[0] not in trials or words[0] == "pages" and len(words) < 2:
        print(__doc__, file=sys.stderr)
        return 2
    return 0 if trials[words[0]]() else 1


if __name__ == "__main__":
    sys.exit(main())
