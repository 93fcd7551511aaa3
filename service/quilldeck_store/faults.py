"""Faults on demand, for tests of what clients do when things break."""
from __future__ import annotations

import threading
from collections.abc import Iterable

HTTP_KINDS = {"drop", "delay", "garbage", "error"}
TRANSFER_KINDS = {"cut_download", "cut_upload", "cut_control", "stall"}


class FaultList:
    """The faults that wait for their request or transfer; safe on any thread."""

    def __init__(self) -> None:
        self._lock = threading.Lock()
        self._waiting: list[dict[str, str]] = []

    def add(self, fault: dict[str, str]) -> None:
        """Queues a fault; `skip` matches pass first, then `count` are hit."""
        fault = {"skip": "0", "count": "1", **fault}
        for name in ("skip", "count"):
            int(fault[name])
        with self._lock:
            self._waiting.append(fault)

    def clear(self) -> None:
        with self._lock:
            self._waiting.clear()

    def take(self, kinds: Iterable[str], **facts: str) -> dict[str, str] | None:
        """The fault that hits an event of these facts, if any.

        A fault matches when each fact that it names is equal, `path` by its end. Every
        matching fault counts the event, so that two faults can wait for the same one.
        """
        hit = None
        with self._lock:
            for fault in list(self._waiting):
                if fault["kind"] not in kinds or not self._matches(fault, facts):
                    continue
                if int(fault["skip"]) > 0:
                    fault["skip"] = str(int(fault["skip"]) - 1)
                elif hit is None:
                    hit = fault
                    fault["count"] = str(int(fault["count"]) - 1)
                    if int(fault["count"]) <= 0:
                        self._waiting.remove(fault)
        return hit

    @staticmethod
    def _matches(fault: dict[str, str], facts: dict[str, str]) -> bool:
        for name, value in facts.items():
            wanted = fault.get(name, "")
            if wanted and not (value.endswith(wanted) if name == "path" else value == wanted):
                return False
        return True
