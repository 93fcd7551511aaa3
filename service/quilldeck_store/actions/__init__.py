"""Every action of the operations endpoint, by its name on the wire."""
from .table import ACTIONS, Request, needs_hash, run
from . import account, directories, files, session, sharing  # noqa: F401  (fill the table)

__all__ = ["ACTIONS", "Request", "needs_hash", "run"]
