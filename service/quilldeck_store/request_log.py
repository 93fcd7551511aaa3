"""The log of requests: what arrived, byte for byte, on which connection."""
from __future__ import annotations

from pathlib import Path


class RequestLog:
    """Keeps the lines in memory when asked to, and appends them to a file if one is named."""

    def __init__(self, keep: bool, file: Path | None) -> None:
        self._keep = keep
        self._file = file.open("ab", buffering=0) if file else None
        self.reset()

    def reset(self) -> None:
        """Forgets all lines; numbers begin at 1 again."""
        self._lines: list[bytes] = []
        self.count = 0

    def add(self, connection: int, path: str, body: bytes) -> None:
        """One request; `connection` counts TLS connections."""
        self.count += 1
        if not self._keep and not self._file:
            return
        shown = body.replace(b"\\", b"\\\\").replace(b"\r", b"\\r").replace(b"\n", b"\\n")
        line = b"%d %d %s %s\n" % (self.count, connection, path.encode(), shown)
        if self._keep:
            self._lines.append(line)
        if self._file:
            self._file.write(line)

    def since(self, number: int) -> bytes:
        """The lines behind the one of that number."""
        return b"".join(self._lines[max(number, 0):])
