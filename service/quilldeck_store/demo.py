"""The demo accounts, and which file of the repository lies where in them.

Names that are awkward on purpose (signs, scripts, combining marks, lengths) are given
here, so that the repository itself holds plain ones.
"""
from __future__ import annotations

import sqlite3
from dataclasses import dataclass
from pathlib import Path

from . import tree
from .accounts import create_access, create_user, hash_password
from .rights import DIRECTORY, FILE, ROOT
from .store import Store, now

FILES = Path(__file__).resolve().parents[2] / "demo" / "files"
PUBLIC, HIDDEN = 1, 2
_DATE = 1790000000  # 2026-09-21; demo files keep their dates from one start to the next


@dataclass(frozen=True)
class Entry:
    """A folder (no source), or a file with the content of a file of the repository."""

    path: str
    source: str = ""
    description: str = ""
    access: int = 0
    price: float = 0


DEMO = (
    Entry("My files", description="Home of all that has no other place"),
    Entry("Documents"),
    Entry("Documents/Welcome to Quilldeck.txt", "documents/welcome.txt", "Start here"),
    Entry("Documents/Letter to Zoë.txt", "documents/letter.txt", "Not sent yet"),
    Entry("Documents/Budget 100% & more.csv", "documents/budget.csv"),
    Entry("Documents/C# + C++ notes.md", "documents/notes.md"),
    Entry("Documents/Plan.pdf", "documents/plan.pdf", "The house by the lake, first drawing"),
    Entry("Documents/Empty file.txt", "documents/empty.txt"),
    Entry("Documents/Awkward names"),
    Entry("Documents/Awkward names/It's a “quoted” 'name' \"here\".txt", "documents/notes.md"),
    Entry("Documents/Awkward names/1 < 2 > 0?.txt", "documents/notes.md"),
    Entry("Documents/Awkward names/[a] {b} ^c~ `d` |e| $f; g=h, i@j!.txt", "documents/notes.md"),
    Entry("Documents/Awkward names/two  blanks and a dot at the end.", "documents/notes.md"),
    Entry("Documents/Awkward names/Cafe\u0301 (combining).txt", "documents/notes.md"),
    Entry("Documents/Awkward names/Café (composed).txt", "documents/notes.md"),
    Entry("Documents/Awkward names/日本語のファイル.txt", "documents/letter.txt"),
    Entry("Documents/Awkward names/Ünïcödé ÄÖÜ ß.txt", "documents/letter.txt"),
    Entry("Documents/Awkward names/שלום עולם.txt", "documents/letter.txt"),
    Entry("Documents/Awkward names/☆ party ♫ list ☺.txt", "documents/letter.txt"),
    Entry("Documents/Awkward names/" + "long name " * 25 + ".txt", "documents/notes.md"),
    Entry("Music", description="Tunes of our own"),
    Entry("Music/Bell.wav", "music/bell.wav"),
    Entry("Music/Bell.flac", "music/bell.flac"),
    Entry("Music/Evening & other tunes"),
    Entry("Music/Evening & other tunes/Evening.ogg", "music/evening.ogg", "For slow hours"),
    Entry("Music/Evening & other tunes/Walk #1.mp3", "music/walk.mp3", price=0.99),
    Entry("Pictures", description="Drawn by numbers", access=PUBLIC),
    Entry("Pictures/Dusk.jpg", "pictures/dusk.jpg", "The lake, looking west", access=PUBLIC),
    Entry("Pictures/Morning.jpg", "pictures/morning.jpg", access=PUBLIC),
    Entry("Pictures/Ball.gif", "pictures/ball.gif", access=PUBLIC),
    Entry("Pictures/Holidays 2026"),
    Entry("Pictures/Holidays 2026/Herbst – осень – 秋.jpg", "pictures/autumn.jpg", price=2.5),
    Entry("Pictures/Holidays 2026/Tea + cake.png", "pictures/tea.png", access=HIDDEN),
    Entry("Pictures/Holidays 2026/Empty folder"),
    Entry("Pictures/✎ Experiments"),
    Entry("Pictures/✎ Experiments/Julia set.png", "pictures/julia.png"),
    Entry("Drop box", description="Guests may put things here"),
)
ANNA = (
    Entry("Photos for you", description="The two from the lake"),
    Entry("Photos for you/Night.jpg", "pictures/night.jpg", "The moon is out of the picture"),
    Entry("Photos for you/More"),
    Entry("Photos for you/More/Dusk.jpg", "pictures/dusk.jpg"),
    Entry("Work", description="Ours to edit"),
    Entry("Work/Plan.pdf", "documents/plan.pdf"),
    Entry("Work/Notes.md", "documents/notes.md"),
    Entry("Work/Recipe.html", "documents/recipe.html"),
    Entry("Diary"),
    Entry("Diary/Letter.txt", "documents/letter.txt"),
)
NOTIFICATIONS = (
    ("Welcome to Quilldeck", "Your store is ready. Drag files into the drive to keep them here.", "/"),
    ("Anna shares with you", "Look into Shared Folders: there are photos and a folder to work in.", "/"),
)
SETTINGS = (("display_name", "Dee Mo", 0), ("versions_kept", "5", 1), ("zoom", "1.5", 2))


def _fill(store: Store, db: sqlite3.Connection, owner_id: int, entries: tuple[Entry, ...],
          contents: dict[str, tuple[int, int]]) -> dict[str, int]:
    ids = {"": ROOT}
    for entry in entries:
        folder, _, name = entry.path.rpartition("/")
        item = ids[entry.path] = tree.create(db, owner_id, ids[folder],
                                             FILE if entry.source else DIRECTORY, name, entry.access)
        db.execute("UPDATE items SET description = ?, price = ?, created = ?, modified = ? WHERE id = ?",
                   (entry.description, entry.price, _DATE, _DATE + item, item))
        if entry.source and (FILES / entry.source).stat().st_size:
            if entry.source not in contents:
                contents[entry.source] = store.contents.add(db, FILES / entry.source)
            db.execute("UPDATE items SET content_id = ?, size = ? WHERE id = ?",
                       (*contents[entry.source], item))
    return ids


def ensure(store: Store) -> None:
    """Makes the demo accounts with all their files, unless they are there.

    Accounts: demo and anna, each with its name as password; access ids: visitor (no
    password, looks at demo's Pictures) and helper (password helper, works in Drop box).
    """
    with store.db.transaction(write=True) as db:
        if db.execute("SELECT 1 FROM users WHERE name_key IN ('demo', 'anna')").fetchone():
            return
        contents: dict[str, tuple[int, int]] = {}
        demo, anna = (create_user(db, name, hash_password(name), f"{name}@quilldeck.example", first,
                                  last, store.policy.quota, proven=True)
                      for name, first, last in (("demo", "Dee", "Mo"), ("anna", "Anna", "Lind")))
        own = _fill(store, db, demo, DEMO, contents)
        hers = _fill(store, db, anna, ANNA, contents)
        db.execute("UPDATE items SET home = 1 WHERE id = ?", (own["My files"],))
        for folder, mode in (("Photos for you", 0), ("Work", 1)):
            db.execute("INSERT INTO shares(dir_id, owner_id, with_id, mode, created) VALUES (?,?,?,?,?)",
                       (hers[folder], anna, demo, mode, now()))
        create_access(db, "visitor", None, own["Pictures"], demo, 0)
        create_access(db, "helper", hash_password("helper"), own["Drop box"], demo, 1)
        db.execute("UPDATE users SET demo = 1 WHERE id IN (?, ?)", (demo, anna))
        db.execute("UPDATE accesses SET demo = 1 WHERE owner_id = ?", (demo,))
        for title, text, path in NOTIFICATIONS:
            db.execute("INSERT INTO notifications(user_id, title, text, url, created) VALUES (?,?,?,?,?)",
                       (demo, title, text, store.base_url + path, now()))
        db.executemany("INSERT INTO settings VALUES (?,?,?,?)",
                       [(demo, *setting) for setting in SETTINGS])
        old = tree.create(db, demo, ROOT, FILE, "Old notes.txt", 0)
        db.execute("UPDATE items SET trashed = ? WHERE id = ?", (_DATE, old))
