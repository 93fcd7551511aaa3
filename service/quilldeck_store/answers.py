"""The pages that a letter of invitation leads to."""
from __future__ import annotations

import sqlite3
from collections.abc import Callable
from urllib.parse import parse_qsl

from aiohttp import web

from . import accounts, invitations, pages
from .door import Doors
from .pools import Pools
from .profile import MAX_PERSON_NAME, require_open
from .store import Caller, Store
from .wire import Failure

MAX_FIELD = 300
_SIGN_IN = [("user", "User name", "text", "username"),
            ("password", "Password", "password", "current-password")]
_SIGN_UP = [("user", "User name", "text", "username"),
            ("first_name", "First name", "text", "given-name"),
            ("last_name", "Last name", "text", "family-name"),
            ("password", "Password", "password", "new-password"),
            ("again", "Password once more", "password", "new-password")]
Fields = dict[str, str]
Answer = Callable[[Store, str, Fields, Caller], web.Response]


def _gone() -> web.Response:
    return pages.page("This invitation is over", pages.text(
        "It was answered already, is too old, or was taken back.\n"
        "Ask whoever invited you for a new letter."), 404)


def _question(store: Store, code: str, told: Failure | None = None, values: Fields | None = None,
              signing_up: bool = False) -> web.Response:
    """The page with the forms; `told` is what was wrong with the answer before."""
    with store.db.transaction(write=False) as db:
        found = invitations.find(db, code)
    if found is None:
        return _gone()
    here = f"/i/{code}/"
    wrong = pages.problem(told.description) if told else ""
    body = pages.text(f"{found['sender']} wants to share this folder with you. "
                      f"The letter went to {found['email']}.")
    body += "<h2>I have an account here</h2>\n" + ("" if signing_up else wrong)
    body += pages.form(here + "accept", "Take the folder", _SIGN_IN, None if signing_up else values)
    if store.policy.sign_up:
        body += "<h2>I am new here</h2>\n" + (wrong if signing_up else "")
        body += pages.form(here + "register", "Make an account and take the folder", _SIGN_UP,
                           values if signing_up else None)
    else:
        body += pages.text("New accounts are made by the host of this store only.")
    body += "<h2>No, thank you</h2>\n" + pages.form(here + "decline", "Decline the invitation")
    return pages.page(found["folder"], body, 200 if told is None else 422)


def _accept(store: Store, code: str, fields: Fields, caller: Caller) -> web.Response:
    store.limits.passwords.spend(caller.address)
    proof = accounts.check_password(store.db.connection(), fields.get("user", ""),
                                    fields.get("password", ""))
    store.limits.passwords.give_back(caller.address)
    if proof.user_id is None:
        raise Failure("Login failed", "An access id cannot take a folder. Please use an account.")
    taker = proof.user_id

    def confirmed(db: sqlite3.Connection, invitation: sqlite3.Row) -> int:
        proof.confirm(db)
        return taker

    return _take(store, code, confirmed)


def _register(store: Store, code: str, fields: Fields, caller: Caller) -> web.Response:
    require_open(store)
    password = accounts.checked_new_password(fields.get("password", ""), fields.get("again", ""))
    store.limits.sign_ups.spend(caller.address)
    hashed = accounts.hash_password(password)
    first, last = (fields.get(name, "")[:MAX_PERSON_NAME] for name in ("first_name", "last_name"))
    return _take(store, code, lambda db, invitation: accounts.create_user(
        db, fields.get("user", ""), hashed, invitation["email"], first, last, store.policy.quota,
        proven=True))


def _take(store: Store, code: str,
          user_of: Callable[[sqlite3.Connection, sqlite3.Row], int]) -> web.Response:
    with store.db.transaction(write=True) as db:
        invitation = invitations.find(db, code)
        if invitation is None:
            return _gone()
        user_id = user_of(db, invitation)
        invitations.accept(db, invitation, user_id)
        name, = db.execute("SELECT name FROM users WHERE id = ?", (user_id,)).fetchone()
    return pages.page("The folder is yours to see", pages.text(
        f"Sign in as {name} in the Quilldeck program. "
        f"'{invitation['folder']}' is there in Shared Folders, under {invitation['sender']}."))


def _decline(store: Store, code: str, fields: Fields, caller: Caller) -> web.Response:
    with store.db.transaction(write=True) as db:
        invitation = invitations.find(db, code)
        if invitation is None:
            return _gone()
        invitations.end(db, invitation)
    return pages.page("You have declined", pages.text("Nobody will ask you about this folder again, "
                                                      "unless a new letter is sent."))


_ANSWERS: dict[str, Answer] = {"accept": _accept, "register": _register, "decline": _decline}


def _answer(store: Store, code: str, what: str, fields: Fields, caller: Caller) -> web.Response:
    try:
        return _ANSWERS[what](store, code, fields, caller)
    except Failure as failure:
        values = {name: value for name, value in fields.items() if name not in ("password", "again")}
        return _question(store, code, failure, values, signing_up=what == "register")


def add_routes(app: web.Application, store: Store, pools: Pools, doors: Doors) -> None:
    """Serves the pages of invitations."""
    async def ask(request: web.Request) -> web.StreamResponse:
        return await pools.requests.run(_question, store, request.match_info["code"])

    async def answer(request: web.Request) -> web.StreamResponse:
        if request.content_type != "application/x-www-form-urlencoded":
            raise web.HTTPUnsupportedMediaType()
        try:
            fields = dict(parse_qsl((await request.text()).strip(), max_num_fields=16))
        except ValueError:
            raise web.HTTPBadRequest() from None
        return await pools.hashes.run(_answer, store, request.match_info["code"],
                                      request.match_info["what"],
                                      {name: value[:MAX_FIELD] for name, value in fields.items()},
                                      Caller(doors.of(request).address))

    app.router.add_get("/i/{code:[A-Za-z0-9_-]{1,64}}", ask)
    app.router.add_post("/i/{code:[A-Za-z0-9_-]{1,64}}/{what:accept|register|decline}", answer)
