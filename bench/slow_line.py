"""slow_line.py PROGRAM [MEASUREMENT]: 900,000 bytes up and down over slow lines, under Wine.

PROGRAM is slow_line.exe. The measurements: `limits`, the account's own speed limits of 10,000 bytes a
second; `slow`, a line of 10 KiB a second; `lossy`, the same with 2 % of the packets lost; `still`, a
line that stands still for good in the middle, over which both ways must fail after a minute; `far`, 20
files of 4 KiB one after another over a line with 25 ms each way: the round trips that each costs.
"""
from __future__ import annotations

import os
import subprocess
import sys
import tempfile
import threading
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
sys.path.insert(0, str(ROOT / "tools" / "support"))

from line import Line  # noqa: E402
from with_service import Store  # noqa: E402

WINE = str(ROOT / "tools" / "build" / "wine-run")
ADMINISTRATION = ROOT / "service" / "quilldeck_admin.py"
ACCOUNT = "slow-line"
"""And its password; the program knows them."""
SECONDS_FROM_HALF = 20
"""After the program's word that it is in the middle: what it wrote waits in buffers first."""


def measure(program: str, folder: Path, mode: str, line: Line | None, *options: str) -> int:
    """Runs the program beside a store of its own, at the two ends of the line if there is one."""
    if line:
        options = ("--host", line.server_address, "--public-host", line.server_address)
    store = Store(folder, *options, prefix=line.server if line else (), demo=False)
    try:
        subprocess.run(["/usr/bin/python3", ADMINISTRATION, "--data", folder / "data", "add-user",
                        ACCOUNT], input=f"{ACCOUNT}\n", text=True, check=True)
        environment = dict(os.environ, QUILLDECK_TEST_HTTPS_URL=store.facts["https_url"])
        words = [*(line.client if line else []), WINE, program, mode]
        with subprocess.Popen(words, env=environment, stdout=subprocess.PIPE, text=True) as child:
            for text in child.stdout or ():
                print(text, end="", flush=True)
                if line and text.startswith("half"):
                    threading.Timer(SECONDS_FROM_HALF, line.stand_still).start()
        return child.returncode
    finally:
        store.stop()


def run(program: str, name: str, folder: Path) -> int:
    """One measurement; 0 when all went as it should."""
    if name == "limits":
        return measure(program, folder, "moves", None, "--upload-limit", "10000",
                       "--download-limit", "10000")
    if name == "far":
        with Line() as line:
            return measure(program, folder, "far", line)
    modes = ("still-up", "still-down") if name == "still" else ("moves",)
    status = 0
    for mode in modes:
        with Line(kib_per_second=10, loss=2 if name == "lossy" else 0) as line:
            status |= measure(program, folder / mode, mode, line)
    return status


def main() -> int:
    names = sys.argv[2:] or ["limits", "slow", "lossy", "still", "far"]
    status = 0
    with tempfile.TemporaryDirectory(prefix="quilldeck-line-") as folder:
        for name in names:
            print(f"{name}:", flush=True)
            (Path(folder) / name).mkdir()
            found = run(sys.argv[1], name, Path(folder) / name)
            print(f"    {'as it should' if found == 0 else 'FAILED'}", flush=True)
            status |= found
    return status


if __name__ == "__main__":
    sys.exit(main())
