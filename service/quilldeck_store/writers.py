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

    def __init__(self, registry: WriterRegistry, location: str, path: Path, max_bytes: int,
                 append: bool) -> None:
        self.name = location
        self.ended = False
        self.hang_up: Callable[[], None] = lambda: None
        """Breaks the data connection; called on whatever thread ends the transfer."""
        self._registry = registry
        self._lock = threading.Lock()
        self._max_bytes = max_bytes
        self._handle = os.open(path, os.O_WRONLY | os.O_CLOEXEC | (0 if append else os.O_TRUNC))
        self._size = os.lseek(self._handle, 0, os.SEEK_END)

    @property
    def closed(self) -> bool:
        return self._handle < 0

    def write(self, data: bytes | memoryview) -> None:
        """Writes all of `data`; fails once the transfer was ended or the quota is full."""
        with self._lock:
            if self.ended:
                raise OSError(errno.ECONNABORTED, "Another transfer to this location has begun")
            if 0 <= self._max_bytes < self._size + len(data):
                raise OSError(errno.EDQUOT, "There is not enough free space in the store")
            view = memoryview(data)
            while view:
                written = os.write(self._handle, view)
                self._size += written
                view = view[written:]

    def lose(self, count: int) -> None:
        """Forgets the last `count` bytes of the file, as a server does that lost them."""
        with self._lock:
            if self._handle >= 0:
                self._size = max(self._size - count, 0)
                os.truncate(self._handle, self._size)
                os.lseek(self._handle, self._size, os.SEEK_SET)

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

    def open(self, location: str, find: Callable[[], tuple[Path, int] | None],
             append: bool) -> Upload | None:
        """Ends the older writer and opens the location, at its end or emptied.

        `find` gives its file and greatest size, or None if it may not be written (any
        more); it is asked under the lock, so that a location which was closed before
        `end` cannot be opened behind it.
        """
        with self._lock:
            found = find()
            if found is None:
                return None
            self._end(location)
            upload = self._uploads[location] = Upload(self, location, *found, append)
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
