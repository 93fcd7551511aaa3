"""The table of actions and how one is carried out."""
from __future__ import annotations

import enum
import sqlite3
from collections.abc import Callable
from dataclasses import dataclass

from .. import rights
from ..accounts import Principal, find_session, touch_session
from ..listing import Listing
from ..store import Store
from ..wire import Failure, Form


class Mode(enum.Enum):
    """How an action meets the database."""

    READ = enum.auto()
    WRITE = enum.auto()
    OWN = enum.auto()
    """The action opens its own transactions, because it does slow work outside of them."""


@dataclass
class Request:
    """One request on its way through an action; lives on the thread that carries it out."""

    store: Store
    form: Form
    db: sqlite3.Connection
    who: Principal

    def scope(self, prefix: str = "") -> rights.Scope:
        """The road that the request's share or access parameters name."""
        return rights.scope(self.db, self.who, self.form, prefix)

    def listing(self) -> Listing:
        """Renders items with this principal's links."""
        return Listing(self.db, self.store.base_url, self.who.link_key, self.store.empty_location)


@dataclass(frozen=True)
class Action:
    """An action: its body returns the escaped inside of the reply's root."""

    body: Callable[[Request], str | None]
    parameters: tuple[str, ...]
    mode: Mode
    needs_session: bool


ACTIONS: dict[str, Action] = {}


def action(name: str, *parameters: str, mode: Mode = Mode.WRITE,
           needs_session: bool = True) -> Callable[[Callable[[Request], str | None]],
                                                   Callable[[Request], str | None]]:
    """Enters a function under its wire name; `parameters` must be in the request."""
    def enter(body: Callable[[Request], str | None]) -> Callable[[Request], str | None]:
        ACTIONS[name] = Action(body, parameters, mode, needs_session)
        return body
    return enter


def run(store: Store, form: Form, name: str | None = None) -> str:
    """Carries out the action of that name, or the one that the form names; refusals are
    `Failure`."""
    name = form.get("action") if name is None else name
    found = ACTIONS.get(name)
    if found is None:
        raise Failure("Unknown request", f"The store does not know the action '{name}'.")
    for parameter in found.parameters:
        if parameter not in form:
            raise Failure("Wrong request", f"The parameter '{parameter}' is missing.")
    who: Principal = None  # type: ignore[assignment]  # no action without a session reads it
    connection = store.db.connection()
    if found.needs_session:
        who = find_session(connection, form.get("user_id"), form.get("user_id_access"))
    if found.mode is Mode.OWN:
        return found.body(Request(store, form, connection, who)) or ""
    with store.db.transaction(write=found.mode is Mode.WRITE) as db:
        if found.mode is Mode.WRITE and who:
            touch_session(db, who.token)
        return found.body(Request(store, form, db, who)) or ""
