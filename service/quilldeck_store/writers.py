"""One writer for each upload location."""
from __future__ import annotations

import errno
import os
import threading
from collections.abc import Callable
from pathlib import Path


class Upload:
    """The open file of one transfer, written without a buffer of its own, so that its size
    is always what has arrived. The registry may end it from another thread."""

    def __init__(self, registry: WriterRegistry, location: str, path: Path, flags: int,
                 max_bytes: int) -> None:
        self.name = location
        self.ended = False
        self.hang_up: Callable[[], None] = lambda: None
        """Breaks the data connection; called on whatever thread ends the transfer."""
        self._registry = registry
        self._lock = threading.Lock()
        self._max_bytes = max_bytes
        self._handle = os.open(path, flags | os.O_CLOEXEC)

    @property
    def closed(self) -> bool:
        return self._handle < 0

    def write(self, data: bytes | memoryview) -> None:
        """Writes all of `data`; fails once the transfer was ended or the quota is full."""
        with self._lock:
            if self.ended:
                raise OSError(errno.ECONNABORTED, "another transfer to this location has begun")
            position = os.lseek(self._handle, 0, os.SEEK_CUR)
            if 0 <= self._max_bytes < position + len(data):
                raise OSError(errno.EDQUOT, "there is not enough free space in the store")
            view = memoryview(data)
            while view:
                view = view[os.write(self._handle, view):]

    def lose(self, count: int) -> None:
        """Forgets the last `count` bytes of the file, as a server does that lost them."""
        with self._lock:
            if self._handle >= 0:
                size = max(os.fstat(self._handle).st_size - count, 0)
                os.truncate(self._handle, size)
                os.lseek(self._handle, size, os.SEEK_SET)

    def seek(self, position: int) -> None:
        os.lseek(self._handle, position, os.SEEK_SET)

    def close(self) -> None:
        """Ends the writing; the location is free again."""
        with self._lock:
            handle, self._handle = self._handle, -1
        if handle >= 0:
            os.close(handle)
        self._registry.forget(self)

    def end(self) -> None:
        """Ends the transfer for another's sake."""
        with self._lock:
            self.ended = True
            handle, self._handle = self._handle, -1
        if handle >= 0:
            os.close(handle)
        self.hang_up()


class WriterRegistry:
    """Which transfer writes which location. After a broken line the server may still hold
    the old transfer open, with bytes on their way: it must not add them any more once the
    client has asked for the size or has begun anew."""

    def __init__(self) -> None:
        self._lock = threading.Lock()
        self._uploads: dict[str, Upload] = {}

    def open(self, location: str, path: Path, mode: str, max_bytes: int) -> Upload:
        """Ends the older writer and opens the location: "w" empties it, "a" goes to its
        end, "r+" begins at its start and keeps what is there."""
        flags = {"w": os.O_WRONLY | os.O_TRUNC, "a": os.O_WRONLY, "r+": os.O_WRONLY}[mode]
        with self._lock:
            self._end(location)
            upload = Upload(self, location, path, flags, max_bytes)
            if mode == "a":
                upload.seek(path.stat().st_size)
            self._uploads[location] = upload
            return upload

    def end(self, location: str) -> None:
        """Ends the location's writer, if there is one."""
        with self._lock:
            self._end(location)

    def _end(self, location: str) -> None:
        older = self._uploads.pop(location, None)
        if older:
            older.end()

    def forget(self, upload: Upload) -> None:
        with self._lock:
            if self._uploads.get(upload.name) is upload:
                del self._uploads[upload.name]

    @property
    def count(self) -> int:
        """Transfers that write at this moment."""
        return len(self._uploads)
