"""Items as the elements of a reply."""
from __future__ import annotations

import sqlite3
from urllib.parse import quote

from .accounts import Principal, sign_link
from .wire import escape

# One statement for each kind; a folder's signs are looked up by index for each row.
_DIRECTORIES = """
    SELECT i.id, i.name, i.description, i.access, i.home, i.link_key, i.created, i.trashed,
        EXISTS (SELECT 1 FROM items c WHERE c.owner_id = i.owner_id AND c.parent_id = i.id
                AND c.kind = 1 AND c.trashed = 0) AS subfolders,
        EXISTS (SELECT 1 FROM items c WHERE c.parent_id = i.id AND c.media = 1
                AND c.trashed = 0) AS pictures,
        EXISTS (SELECT 1 FROM items c WHERE c.parent_id = i.id AND c.media = 2
                AND c.trashed = 0) AS music,
        EXISTS (SELECT 1 FROM shares s WHERE s.dir_id = i.id) AS shared
    FROM items i WHERE """
_FILES = """
    SELECT i.id, i.name, i.description, i.access, i.price, i.size, i.link_key, i.accessed,
        i.modified, i.trashed, coalesce(c.location, :empty) AS location
    FROM items i LEFT JOIN contents c ON c.id = i.content_id WHERE """
_IN_FOLDER = ("i.owner_id = :owner AND i.parent_id = :parent AND i.kind = {kind} AND i.trashed = 0 "
              "ORDER BY i.name_key")
_IN_TRASH = "i.owner_id = :owner AND i.kind = {kind} AND i.trashed > 0 ORDER BY i.name_key"
_ONE = "i.id = :id"


class Listing:
    """Renders items for one principal, whose direct links are signed by its own key."""

    def __init__(self, db: sqlite3.Connection, base_url: str, who: Principal, empty: str) -> None:
        self._db = db
        self._link = f"{base_url}/l/"
        self._direct = f"{base_url}/d/{who.account_id}-"
        self._key = who.link_key
        self._empty = empty

    def folder(self, owner_id: int, parent_id: int) -> str:
        """All living items of a folder: folders first, each kind in order of its names."""
        return self._both(_IN_FOLDER, {"owner": owner_id, "parent": parent_id})

    def trash(self, owner_id: int) -> str:
        """All that the owner put into the Trash."""
        return self._both(_IN_TRASH, {"owner": owner_id})

    def _both(self, where: str, values: dict[str, object]) -> str:
        values["empty"] = self._empty
        parts = [self._directory("Directory", row) for row in
                 self._db.execute(_DIRECTORIES + where.format(kind=1), values)]
        parts += [self._file(row) for row in
                  self._db.execute(_FILES + where.format(kind=2), values)]
        return "".join(parts)

    def directory(self, dir_id: int, tag: str = "Directory") -> str:
        """One folder."""
        row = self._db.execute(_DIRECTORIES + _ONE, {"id": dir_id}).fetchone()
        return self._directory(tag, row)

    def file(self, file_id: int, temp_location: str = "") -> str:
        """One file; with the place for its upload if there is one."""
        row = self._db.execute(_FILES + _ONE, {"id": file_id, "empty": self._empty}).fetchone()
        return self._file(row, temp_location)

    def content(self, file_id: int) -> str:
        """What a file's content is now: where it lies, its size and its date."""
        row = self._db.execute(_FILES + _ONE, {"id": file_id, "empty": self._empty}).fetchone()
        return (f"<Location>{row['location']}</Location><Size>{row['size']}</Size>"
                f"<DateModified>{row['modified']}</DateModified>") if row else ""

    def _directory(self, tag: str, row: sqlite3.Row) -> str:
        (number, name, description, access, home, link_key, created, trashed, subfolders, pictures,
         music, shared) = row
        fixed = "False" if home else "True"
        return (f"<{tag}><ID>{number}</ID><Name>{escape(name)}</Name>"
                f"<Description>{escape(description)}</Description><Link>{self._link}{link_key}</Link>"
                f"<Access>{access}</Access><IsGallery>{bool(pictures)}</IsGallery>"
                f"<IsMP3>{bool(music)}</IsMP3><IsHomeFolder>{bool(home)}</IsHomeFolder>"
                f"<IsRenameable>{fixed}</IsRenameable><IsDeleteable>{fixed}</IsDeleteable>"
                f"<HasSubfolders>{bool(subfolders)}</HasSubfolders><Shared>{bool(shared)}</Shared>"
                f"<DateCreated>{created}</DateCreated><DateDeleted>{trashed}</DateDeleted></{tag}>")

    def _file(self, row: sqlite3.Row, temp_location: str = "") -> str:
        (number, name, description, access, price, size, link_key, accessed, modified, trashed,
         location) = row
        temp = f"<TempLocation>{temp_location}</TempLocation>" if temp_location else ""
        return (f"<File><ID>{number}</ID><Name>{escape(name)}</Name>"
                f"<Link>{self._link}{link_key}</Link>"
                f"<DirectLink>{self._direct}{sign_link(self._key, number)}/{number}/{quote(name)}"
                "</DirectLink>"
                f"<Location>{location}</Location>{temp}"
                f"<Description>{escape(description)}</Description><Access>{access}</Access>"
                f"<Price>{price:.15g}</Price><Size>{size}</Size><DateAccessed>{accessed}</DateAccessed>"
                f"<DateModified>{modified}</DateModified><DateDeleted>{trashed}</DateDeleted></File>")
