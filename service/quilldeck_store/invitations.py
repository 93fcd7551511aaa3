"""Letters to people who have no account yet."""
from __future__ import annotations

import time
from email.message import EmailMessage
from pathlib import Path


def write(outbox: Path, sender: str, folder: str, address: str, base_url: str) -> None:
    """Puts a letter into the outbox, whence the host's own mail system takes it."""
    letter = EmailMessage()
    letter["To"] = address
    letter["Subject"] = f"{sender} shares the folder '{_line(folder)}' with you"
    letter.set_content(
        f"{sender} wants to share the folder '{folder}' with you on Quilldeck.\n\n"
        f"Sign up with this address in the Quilldeck program to see it.\nThe store: {base_url}\n")
    outbox.mkdir(exist_ok=True)
    (outbox / f"{time.time_ns()}.eml").write_bytes(letter.as_bytes())


def _line(text: str) -> str:
    return " ".join(text.split())
