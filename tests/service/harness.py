"""The cases' common ground: one started service for those that can share it, and its clients."""
from __future__ import annotations

import atexit
import functools
import unittest

from store_client import Client, Refused, Service

Request = tuple[str, dict[str, object]]
"""An action and its parameters."""


@functools.cache
def shared_service(*options: str) -> Service:
    """One service for all cases with the same options; a start costs more than a case."""
    service = Service(*options)
    atexit.register(service.close)
    return service


class ServiceTest(unittest.TestCase):
    """Cases that use the shared service, each with accounts of its own where it writes."""

    options: tuple[str, ...] = ()
    service: Service

    @classmethod
    def setUpClass(cls) -> None:
        cls.service = shared_service(*cls.options)

    def client(self, user: str = "", password: str | None = None,
               service: Service | None = None, source: str = "127.0.0.1") -> Client:
        client = Client(service or self.service, source)
        self.addCleanup(client.line.close)
        if user:
            client.login(user, user if password is None else password)
        return client

    def fresh(self, name: str) -> Client:
        """A new account with an empty store."""
        client = self.client()
        client.post("/qd_profile.php", action="new_profile", user_name=name, passwd=name,
                    verify_passwd=name, email=f"{name}@example.test", first_name="", last_name="")
        client.login(name, name)
        return client

    def refused(self, client: Client, action: str, **params: object) -> None:
        """A refusal other than a name clash."""
        with self.subTest(action=action, **params), self.assertRaises(Refused) as caught:
            client.ask(action, **params)
        self.assertEqual(caught.exception.kind, 0)
