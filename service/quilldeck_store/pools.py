"""Threads for what would hold the event loop up, and how much may wait for them."""
from __future__ import annotations

import asyncio
from collections.abc import Callable
from concurrent.futures import ThreadPoolExecutor
from typing import ParamSpec, TypeVar

from .wire import Failure

P = ParamSpec("P")
T = TypeVar("T")


class Pool:
    """A few threads with a queue of limited length. To be used on the event loop."""

    def __init__(self, name: str, threads: int, waiting: int) -> None:
        self._threads = ThreadPoolExecutor(threads, name)
        self._left = threads + waiting

    async def run(self, body: Callable[P, T], *args: P.args, **kwargs: P.kwargs) -> T:
        """Carries `body` out on one of the threads; refuses when too much waits already."""
        if self._left <= 0:
            raise Failure("Store busy", "The store has too much to do. Please try again in a moment.")
        self._left -= 1
        try:
            return await asyncio.get_running_loop().run_in_executor(
                self._threads, lambda: body(*args, **kwargs))
        finally:
            self._left += 1


class Pools:
    """Each kind of slow work waits for its own kind only."""

    def __init__(self) -> None:
        self.requests = Pool("request", 4, 400)
        self.hashes = Pool("hash", 2, 200)
        self.pictures = Pool("picture", 1, 30)
