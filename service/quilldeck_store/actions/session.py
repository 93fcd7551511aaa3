"""Signing in and coming back."""
from __future__ import annotations

from ..accounts import Principal, check_password, open_session
from ..store import Store
from ..wire import elements
from .table import Mode, Request, action


def _identity(store: Store, who: Principal, key_parts: tuple[str, str, str]) -> str:
    up, down = who.upload_limit, who.download_limit
    return elements(
        UserID=who.token, UserAccessID=who.access_name, UserName=who.name, UserLang=who.lang,
        UserLevel=who.level,
        UploadSpeedLimit=store.policy.upload_limit if up is None else up,
        DownloadSpeedLimit=store.policy.download_limit if down is None else down,
        Data=store.transfer_data(who, key_parts))


@action("login", "user", "pass", mode=Mode.HASH)
def login(request: Request) -> str:
    """Opens a session. The hash is computed outside of the transaction: it is slow on purpose."""
    name, password = request.form.get("user"), request.form.get("pass")
    request.store.limits.passwords.spend(request.caller.address)
    proof = check_password(request.db, name, password)
    request.store.limits.passwords.give_back(request.caller.address)
    request.caller.signed_in = True
    with request.store.db.transaction(write=True) as db:
        proof.confirm(db)
        who = open_session(db, proof.user_id, proof.access_id, request.form.get("pcid")[:64],
                           request.form.get("version")[:32])
    return _identity(request.store, who, (name, password, who.token))


@action("restore_session", mode=Mode.WRITE)
def restore_session(request: Request) -> str:
    """Gives a known session's identity again, to another process of the user."""
    return _identity(request.store, request.who, ("0", "0", request.who.token))
