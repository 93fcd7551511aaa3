"""Signing up."""
from __future__ import annotations

from .accounts import MIN_PASSWORD, create_user, hash_password, is_email
from .store import Store
from .wire import Failure, Form, document


def new_profile(store: Store, form: Form) -> bytes:
    """Makes an account from the sign-up form."""
    if form.get("action") != "new_profile":
        raise Failure("Unknown request", "Only new profiles are made here.")
    if not store.policy.sign_up:
        raise Failure("Sign-up closed", "New accounts are made by the host of this store only.")
    password, email = form.get("passwd"), form.text("email").strip()
    if password != form.get("verify_passwd"):
        raise Failure("Wrong password", "The two passwords differ.")
    if len(password) < MIN_PASSWORD:
        raise Failure("Wrong password", f"A password needs at least {MIN_PASSWORD} characters.")
    if not is_email(email):
        raise Failure("Wrong address", f"'{email}' is no e-mail address.")
    hashed = hash_password(password)
    with store.db.transaction(write=True) as db:
        create_user(db, form.get("user_name"), hashed, email, form.text("first_name")[:100],
                    form.text("last_name")[:100], store.policy.quota)
    return document("")
