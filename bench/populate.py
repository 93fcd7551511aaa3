#!/usr/bin/python3
"""populate.py READY_FILE: gives the demo account of a running store folders of 10,000 and 100,000
empty files, named "Many 10000" and "Many 100000", the folder "Nested" with one folder that holds
10,000 in 100 folders, and the tree "Thousand folders" of so many with a file in each, by way of its
metadata."""
from __future__ import annotations

import json
import secrets
import sqlite3
import sys
import time
from pathlib import Path

COUNTS = (10_000, 100_000)
NESTED_FOLDERS = NESTED_FILES = 100
TREE_FOLDERS, TREE_BRANCHES = 1_000, 10
DIRECTORY, FILE = 1, 2
INSERT = """INSERT INTO items (owner_id, parent_id, kind, name, name_key, description, content_id,
                               link_key, created, modified) VALUES (?,?,?,?,?,?,?,?,?,?)"""


def main() -> None:
    facts = json.loads(Path(sys.argv[1]).read_text())
    database = sqlite3.connect(Path(facts["data"]) / "store.sqlite", timeout=30)
    owner = database.execute("SELECT id FROM users WHERE name_key = 'demo'").fetchone()[0]
    now = int(time.time())

    def row(parent: int | None, kind: int, name: str, content: int | None) -> tuple[object, ...]:
        return (owner, parent, kind, name, name.lower(), "A file among many", content,
                secrets.token_hex(16), now, now)

    with database:
        for count in COUNTS:
            folder = database.execute(INSERT, row(0, DIRECTORY, f"Many {count}", None)).lastrowid
            database.executemany(INSERT, (row(folder, FILE, f"Picture {number:06} of many.jpg", 1)
                                          for number in range(count)))
        nested: int | None = 0
        for name in ("Nested", "Tree"):
            nested = database.execute(INSERT, row(nested, DIRECTORY, name, None)).lastrowid
        for number in range(NESTED_FOLDERS):
            folder = database.execute(INSERT, row(nested, DIRECTORY, f"Album {number:03}",
                                                  None)).lastrowid
            database.executemany(INSERT, (row(folder, FILE, f"Picture {each:03}.jpg", 1)
                                          for each in range(NESTED_FILES)))
        tree: list[int | None] = []
        for number in range(TREE_FOLDERS):
            parent = tree[(number - 1) // TREE_BRANCHES] if number else 0
            name = f"Branch {number:03}" if number else "Thousand folders"
            tree.append(database.execute(INSERT, row(parent, DIRECTORY, name, None)).lastrowid)
            database.execute(INSERT, row(tree[-1], FILE, "Leaf.jpg", 1))


if __name__ == "__main__":
    main()
