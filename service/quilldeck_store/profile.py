"""Signing up."""
from __future__ import annotations

from .accounts import checked_new_password, create_user, hash_password, is_email
from .names import brief
from .store import Caller, Store
from .wire import Failure, Form, document

MAX_PERSON_NAME = 100


def require_open(store: Store) -> None:
    """Refuses new accounts where only the host makes them."""
    if not store.policy.sign_up:
        raise Failure("Sign-up closed", "New accounts are made by the host of this store only.")


def new_profile(store: Store, form: Form, caller: Caller) -> bytes:
    """Makes an account from the sign-up form."""
    if form.get("action") != "new_profile":
        raise Failure("Unknown request", "Only new profiles are made here.")
    require_open(store)
    email = form.text("email").strip()
    password = checked_new_password(form.get("passwd"), form.get("verify_passwd"))
    if not is_email(email):
        raise Failure("Wrong address", f"'{brief(email)}' is no e-mail address.")
    store.limits.sign_ups.spend(caller.address)
    hashed = hash_password(password)
    with store.db.transaction(write=True) as db:
        create_user(db, form.get("user_name"), hashed, email,
                    form.text("first_name")[:MAX_PERSON_NAME],
                    form.text("last_name")[:MAX_PERSON_NAME], store.policy.quota)
    return document("")
