"""Signing in and coming back."""
from __future__ import annotations

import time
from collections.abc import Callable
from typing import TypeVar

from ..accounts import Principal, check_password, open_session
from ..names import key
from ..store import Store
from ..wire import Failure, elements
from .table import Mode, Request, action

T = TypeVar("T")


class _Attempts:
    """Slows down who tries passwords: so many wrong ones for a name, then a minute's rest."""

    def __init__(self, allowed: int, seconds: float) -> None:
        self._allowed = allowed
        self._seconds = seconds
        self._wrong: dict[str, list[float]] = {}

    def guard(self, name: str, check: Callable[[], T]) -> T:
        """Carries `check` out unless the name has had too many failures of late."""
        since = time.monotonic() - self._seconds
        recent = [at for at in self._wrong.get(name, ()) if at > since]
        if len(recent) >= self._allowed:
            raise Failure("Login failed", "There were too many wrong passwords for this name. "
                          "Please try again in a minute.")
        try:
            result = check()
        except Failure:
            if len(self._wrong) > 10_000:
                self._wrong.clear()
            self._wrong[name] = [*recent, time.monotonic()]
            raise
        self._wrong.pop(name, None)
        return result


_attempts = _Attempts(allowed=30, seconds=60)


def _identity(store: Store, who: Principal, key_parts: tuple[str, str, str]) -> str:
    up, down = who.upload_limit, who.download_limit
    return elements(
        UserID=who.token, UserAccessID=who.access_name, UserName=who.name, UserLang=who.lang,
        UserLevel=who.level,
        UploadSpeedLimit=store.policy.upload_limit if up is None else up,
        DownloadSpeedLimit=store.policy.download_limit if down is None else down,
        Data=store.transfer_data(who, key_parts))


@action("login", "user", "pass", mode=Mode.OWN, needs_session=False)
def login(request: Request) -> str:
    """Opens a session. The hash is computed outside of the transaction: it is slow on purpose."""
    name, password = request.form.get("user"), request.form.get("pass")
    user_id, access_id = _attempts.guard(
        key(name), lambda: check_password(request.db, name, password))
    with request.store.db.transaction(write=True) as db:
        who = open_session(db, user_id, access_id, request.form.get("pcid")[:64],
                           request.form.get("version")[:32])
    return _identity(request.store, who, (name, password, who.token))


@action("restore_session", mode=Mode.WRITE)
def restore_session(request: Request) -> str:
    """Gives a known session's identity again, to another process of the user."""
    return _identity(request.store, request.who, ("0", "0", request.who.token))
