"""One writer for each upload location."""
from __future__ import annotations

import errno
import os
import threading
from collections.abc import Callable

from .accounts import Principal
from .transfer_gate import TransferGate, Writable


DISK_STEP = 8 << 20
"""Bytes written between two looks at what the disk has left."""


class Room:
    """What all open uploads to one owner's space may still take together."""

    def __init__(self) -> None:
        self.lock = threading.Lock()
        self.left: int | None = None

    def take(self, count: int) -> bool:
        """Sets `count` bytes aside, if there are so many."""
        with self.lock:
            if self.left is not None:
                if count > self.left:
                    return False
                self.left -= count
            return True


class Upload:
    """The open file of one transfer, written without a buffer of its own, so that its size
    is always what has arrived. The registry may end it from another thread."""

    def __init__(self, registry: WriterRegistry, location: str, writable: Writable,
                 append: bool) -> None:
        self.name = location
        self.ended = False
        self.hang_up: Callable[[], None] = lambda: None
        """Breaks the data connection; called on whatever thread ends the transfer."""
        self.room = Room()
        self._registry = registry
        self._lock = threading.Lock()
        self._handle = os.open(writable.path,
                               os.O_WRONLY | os.O_CLOEXEC | (0 if append else os.O_TRUNC))
        self._size = os.lseek(self._handle, 0, os.SEEK_END)
        # What has been set aside in the room: as much as the upload is larger than what it replaces.
        self._paid = max(self._size, writable.replaces)
        self._until_look = 0

    @property
    def closed(self) -> bool:
        return self._handle < 0

    def write(self, data: bytes | memoryview) -> None:
        """Writes all of `data`; fails once the transfer was ended or there is no room."""
        with self._lock:
            if self.ended:
                raise OSError(errno.ECONNABORTED, "Another transfer to this location has begun")
            self._require_room(len(data))
            view = memoryview(data)
            while view:
                written = os.write(self._handle, view)
                self._size += written
                view = view[written:]

    def _require_room(self, count: int) -> None:
        more = self._size + count - self._paid
        if more > 0:
            if not self.room.take(more):
                raise OSError(errno.EDQUOT, "There is not enough free space in the store")
            self._paid += more
        self._until_look -= count
        if self._until_look < 0:
            self._until_look = DISK_STEP
            disk = os.fstatvfs(self._handle)
            if disk.f_bavail * disk.f_frsize < self._registry.keep_free + count:
                raise OSError(errno.ENOSPC, "The disk of the store is full")

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

    def __init__(self, keep_free: int) -> None:
        self.keep_free = keep_free
        """Bytes of the disk that uploads leave alone."""
        self._lock = threading.Lock()
        self._uploads: dict[str, Upload] = {}
        self._rooms: dict[int, Room] = {}

    def open(self, location: str, gate: TransferGate, who: Principal, append: bool) -> Upload | None:
        """Ends the older writer and opens the location, at its end or emptied.

        The gate is asked under the lock, so that a location which was closed before `end` cannot be
        opened behind it.
        """
        with self._lock:
            writable = gate.writable(who, location)
            if writable is None:
                return None
            self._end(location)
            upload = self._uploads[location] = Upload(self, location, writable, append)
            upload.room = self._rooms.setdefault(writable.owner_id, Room())
            with upload.room.lock:
                # What the others have written since was set aside before, and counts in their files.
                upload.room.left = gate.room(writable.owner_id)
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
