"""The table of actions and how one is carried out."""
from __future__ import annotations

import enum
import sqlite3
from collections.abc import Callable
from dataclasses import dataclass

from .. import rights
from ..accounts import Principal, find_session
from ..listing import Listing
from ..names import brief
from ..store import Caller, Store
from ..wire import Failure, Form


class Mode(enum.Enum):
    """How an action meets the database."""

    READ = enum.auto()
    WRITE = enum.auto()
    OWN = enum.auto()
    """The action opens its own transactions, because it does slow work outside of them."""
    HASH = enum.auto()
    """As `OWN`; it computes a password's hash and needs no session."""


@dataclass
class Request:
    """One request on its way through an action; lives on the thread that carries it out."""

    store: Store
    form: Form
    caller: Caller
    db: sqlite3.Connection
    who: Principal

    def scope(self, prefix: str = "") -> rights.Scope:
        """The road that the request's share or access parameters name."""
        return rights.scope(self.db, self.who, self.form, prefix)

    def listing(self) -> Listing:
        """Renders items with this principal's links."""
        return Listing(self.db, self.store.base_url, self.who, self.store.empty_location)


@dataclass(frozen=True)
class Action:
    """An action: its body returns the escaped inside of the reply's root."""

    body: Callable[[Request], str | None]
    parameters: tuple[str, ...]
    mode: Mode


ACTIONS: dict[str, Action] = {}


def action(name: str, *parameters: str,
           mode: Mode = Mode.WRITE) -> Callable[[Callable[[Request], str | None]],
                                                Callable[[Request], str | None]]:
    """Enters a function under its wire name; `parameters` must be in the request."""
    def enter(body: Callable[[Request], str | None]) -> Callable[[Request], str | None]:
        ACTIONS[name] = Action(body, parameters, mode)
        return body
    return enter


def needs_hash(name: str) -> bool:
    """Whether the action of that name computes a password's hash."""
    return name in ACTIONS and ACTIONS[name].mode is Mode.HASH


def run(store: Store, form: Form, caller: Caller, name: str | None = None) -> str:
    """Carries out the action of that name, or the one that the form names; refusals are
    `Failure`."""
    name = form.get("action") if name is None else name
    found = ACTIONS.get(name)
    if found is None:
        raise Failure("Unknown request", f"The store does not know the action '{brief(name)}'.")
    for parameter in found.parameters:
        if parameter not in form:
            raise Failure("Wrong request", f"The parameter '{parameter}' is missing.")
    who: Principal = None  # type: ignore[assignment]  # no action without a session reads it
    connection = store.db.connection()
    if found.mode is not Mode.HASH:
        who = find_session(store.db, form.get("user_id"), form.get("user_id_access"))
        caller.signed_in = True
    if found.mode in (Mode.OWN, Mode.HASH):
        return found.body(Request(store, form, caller, connection, who)) or ""
    with store.db.transaction(write=found.mode is Mode.WRITE) as db:
        return found.body(Request(store, form, caller, db, who)) or ""
