"""A store for trials: made, watched, ended at any moment and started again on the same ports."""
from __future__ import annotations

import os
import re
import signal
import subprocess
import sys
from collections import Counter
from pathlib import Path

from store_client import Service

ADMIN = Path(__file__).resolve().parents[2] / "service" / "quilldeck_admin.py"


class Ground(Service):
    """A service with accounts for people, each with its name as password."""

    def __init__(self, *options: str, folder: Path | None = None) -> None:
        super().__init__(*options, folder=folder)
        self._options = options
        self._highest = 0
        self._logs: list[str] = []

    def admit(self, names: list[str]) -> None:
        """Makes the accounts, by the administrator's own command."""
        for name in names:
            self.admin("add-user", name, typed=f"{name}\n")

    def admin(self, *words: object, typed: str = "") -> str:
        done = subprocess.run([sys.executable, ADMIN, "--data", self.data, *map(str, words)],
                              input=typed, capture_output=True, text=True, timeout=600)
        if done.returncode:
            raise RuntimeError(f"quilldeck_admin {words}: {done.stderr}")
        return done.stdout

    def processes(self) -> list[int]:
        """The service and its file server."""
        pid = self.process.pid
        try:
            children = Path(f"/proc/{pid}/task/{pid}/children").read_text().split()
        except OSError:
            return []
        return [pid, *map(int, children)]

    def resident(self, field: str = "VmRSS") -> int:
        """What both processes take of the memory, in KiB."""
        found = (re.search(rf"{field}:\s+(\d+)", Path(f"/proc/{pid}/status").read_text())
                 for pid in self.processes())
        return sum(int(one[1]) for one in found if one)

    def memory(self) -> int:
        """What both have at most taken so far, over all that were started."""
        self._highest = max(self._highest, self.resident("VmHWM"))
        return self._highest

    def kill(self, which: int) -> None:
        """Kills one of the processes (0 the service, 1 its file server) and starts the store anew."""
        os.kill(self.processes()[which], signal.SIGKILL)
        self.process.wait(30)
        self._logs.append(self.log())
        Service.__init__(self, *self._options, "--https-port", str(self.port), "--ftp-port",
                         str(self.ftp_port), folder=self.folder)

    def log(self) -> str:
        return (self.folder / "service.log").read_text()

    def complaints(self) -> list[str]:
        """What the store has logged that no peer can be blamed for, each kind once with its count."""
        kinds: Counter[str] = Counter()
        for log in (*self._logs, self.log()):
            kinds.update(re.findall(r"^Traceback.*\n(?: .*\n)*.*", log, re.MULTILINE))
        return [f"{count} times: {kind}" for kind, count in kinds.items()]
