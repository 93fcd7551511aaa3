"""A line between two network namespaces: slow, long, lossy or dead, as wanted.

    with Line(kib_per_second=10, loss=2) as line:
        subprocess.run([*line.server, "ip", "address"])
        line.stand_still()

Each end has a loopback of its own, the interface `line0`, and no other way out: no packet leaves the
machine. Needs root and the package iproute2.
"""
from __future__ import annotations

import ctypes
import fcntl
import heapq
import os
import random
import select
import signal
import struct
import subprocess
import threading
import time
from pathlib import Path
from types import TracebackType

_TUNSETIFF = 0x400454CA
_IFF_TUN_WITHOUT_HEADER = 0x0001 | 0x1000
_NAMESPACES = Path("/run/netns")
_QUEUE_SECONDS = 1
"""What waits before the narrow place; more is dropped, as routers do it."""


class Line:
    """The two ends are `client` and `server`, words that run a command there when put before it, and
    `server_address` is what the client calls the server."""

    server_address = "10.199.0.2"
    _client_address = "10.199.0.1"

    def __init__(self, kib_per_second: float = 0, loss: float = 0, delay: float = 0.025) -> None:
        self._seconds_per_byte = 1 / (kib_per_second * 1024) if kib_per_second else 0
        self._loss = loss / 100
        self._delay = delay
        self._dice = random.Random(1)
        self._names = [f"quilldeck-{os.getpid()}-{end}" for end in ("client", "server")]
        self.client, self.server = (["ip", "netns", "exec", name] for name in self._names)
        self._ends: list[int] = []
        self._still = threading.Event()
        self._over = threading.Event()
        self._carrier = threading.Thread(target=self._carry)

    def __enter__(self) -> Line:
        try:
            for own, other, name in ((self._client_address, self.server_address, self._names[0]),
                                     (self.server_address, self._client_address, self._names[1])):
                _run("ip", "netns", "add", name)
                self._ends.append(_open_tun(name))
                inside = ("ip", "-n", name)
                _run(*inside, "link", "set", "lo", "up")
                _run(*inside, "link", "set", "line0", "up", "mtu", "1500")
                _run(*inside, "address", "add", own, "peer", other, "dev", "line0")
        except BaseException:
            self._remove()
            raise
        self._carrier.start()
        return self

    def __exit__(self, kind: type[BaseException] | None, error: BaseException | None,
                 trace: TracebackType | None) -> None:
        self._over.set()
        self._carrier.join()
        self._remove()

    def stand_still(self) -> None:
        """From now on every packet is lost."""
        self._still.set()

    def _remove(self) -> None:
        for end in self._ends:
            os.close(end)
        for name in self._names:
            if (_NAMESPACES / name).exists():
                left = subprocess.run(["ip", "netns", "pids", name], capture_output=True, text=True,
                                      check=True)
                for process in left.stdout.split():
                    os.kill(int(process), signal.SIGKILL)
                _run("ip", "netns", "delete", name)

    def _carry(self) -> None:
        waiting: list[tuple[float, int, int, bytes]] = []
        free_at = [0.0, 0.0]
        number = 0
        while not self._over.is_set():
            now = time.monotonic()
            while waiting and waiting[0][0] <= now:
                _, _, target, packet = heapq.heappop(waiting)
                os.write(target, packet)
            pause = min(0.1, max(0.0, waiting[0][0] - now)) if waiting else 0.1
            ready, _, _ = select.select(self._ends, [], [], pause)
            for end in ready:
                side = self._ends.index(end)
                packet = os.read(end, 65536)
                now = time.monotonic()
                start = max(now, free_at[side])
                if (self._still.is_set() or self._dice.random() < self._loss
                        or start - now > _QUEUE_SECONDS):
                    continue
                free_at[side] = start + len(packet) * self._seconds_per_byte
                number += 1
                heapq.heappush(waiting, (free_at[side] + self._delay, number,
                                         self._ends[1 - side], packet))


def _run(*command: str) -> None:
    subprocess.run(command, check=True)


def _open_tun(namespace: str) -> int:
    """The descriptor of a new interface `line0` in the namespace."""
    enter = ctypes.CDLL(None, use_errno=True).setns
    with open("/proc/self/ns/net", "rb") as home, open(_NAMESPACES / namespace, "rb") as there:
        if enter(there.fileno(), 0):
            raise OSError(ctypes.get_errno(), "setns")
        try:
            end = os.open("/dev/net/tun", os.O_RDWR)
            fcntl.ioctl(end, _TUNSETIFF, struct.pack("16sH14x", b"line0", _IFF_TUN_WITHOUT_HEADER))
        finally:
            enter(home.fileno(), 0)
    return end
