"""The demo accounts and their files."""
from __future__ import annotations

from .accounts import create_user, hash_password
from .store import Store


def ensure(store: Store) -> None:
    """Makes the demo accounts unless they are there."""
    with store.db.transaction(write=True) as db:
        if db.execute("SELECT 1 FROM users WHERE name_key = 'demo'").fetchone():
            return
        create_user(db, "demo", hash_password("demo"), "demo@localhost.test", "Dee", "Mo", store.policy.quota)
        create_user(db, "anna", hash_password("anna"), "anna@localhost.test", "Anna", "Demo", store.policy.quota)
