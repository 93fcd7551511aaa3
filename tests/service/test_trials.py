"""Short ones of the trials: load, bad peers, a backup under load, kills, nonsense at both doors."""
from __future__ import annotations

import unittest
from collections.abc import Callable

import kills
import load
import nonsense


class Trials(unittest.TestCase):
    def test_short_trials(self) -> None:
        trials: dict[str, Callable[[], bool]] = {
            "stalls": lambda: load.run(4, 3, nuisances=2),
            "backup": lambda: load.run(4, 3, backup=True),
            "kills": lambda: kills.run(3, 4, 0.3), "nonsense": lambda: nonsense.run(60)}
        for name, trial in trials.items():
            with self.subTest(name):
                self.assertTrue(trial())


if __name__ == "__main__":
    unittest.main()
