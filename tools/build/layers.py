"""Checks that includes between the folders of src/ point downwards only.

    layers.py [TOP]

The arrows are those of the libraries: a folder may use those of the rows below its own, so that
nobody knows who stands above or beside. The rooms of a library, which are its own folders, keep such
an order too.
"""
from __future__ import annotations

import re
import sys
from pathlib import Path

LAYERS = [
    {"vfs", "utils"},
    {"serializer"},
    {"vfs_quilldeck", "syncer"},
    {"com", "ui"},
    {"shell_items"},
    {"shell", "commands", "local", "transfer", "dialogs"},
    {"module"},
]
ROOMS = {
    "vfs_quilldeck": [{"wire"}, {"transfer"}, {"session"}, {"items"}],
    "dialogs": [{"login"}, {"properties"}, {"drive", "sync"}],
}
# How high each folder stands, and each room ("dialogs/login") in its library.
LEVEL = {folder: level for level, row in enumerate(LAYERS) for folder in row}
ROOM_LEVEL = {f"{folder}/{room}": level for folder, rows in ROOMS.items()
              for level, row in enumerate(rows) for room in row}
# Numbers of resources: everybody who shows a text knows them, and they know nobody.
FREE = {"resources"}
# The processes beside the extension: they stand on the client library, and carry no COM.
LEVEL["companions"] = LEVEL["com"]

# COM begins with com/. Below it nothing may depend on interfaces and reference counts.
COM_LEVEL = LEVEL["com"]
COM_HEADERS = re.compile(
    r"(?i:objbase|combaseapi|unknwn|unknwnbase|objidl|objidlbase|ole2|oleidl|oleauto|ocidl|comdef"
    r"|comutil|shobjidl|shobjidl_core|shlobj|shlobj_core|shldisp|exdisp|servprov|wrl/\w+)\.h")
# SHGetFolderPathW is a plain function, but its only declaration is there.
COM_ALLOWED = {("utils", "shlobj.h")}

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')


def faults_of(path: Path, folder: str, room: str) -> list[str]:
    """What is wrong with the includes of one file in src/<folder>, in its room `room` if it has any."""
    found = []
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        match = INCLUDE.match(line)
        if not match:
            continue
        quote, header = match.groups()
        where = f"{path}:{number}"
        if quote == "<":
            if (COM_HEADERS.fullmatch(header) and LEVEL[folder] < COM_LEVEL
                    and (folder, header) not in COM_ALLOWED):
                found.append(f"{where}: {folder}/ stands below com/ and may not include <{header}>")
            continue
        target, *rest = header.split("/")
        target_room = f"{target}/{rest[0]}" if rest else ""
        if not rest:
            found.append(f'{where}: write "{folder}/{header}", from src/ on')
        elif target in FREE or target_room == room:
            continue
        elif target == folder:
            if room in ROOM_LEVEL and ROOM_LEVEL.get(target_room, -1) >= ROOM_LEVEL[room]:
                found.append(f"{where}: {room}/ may not use {target_room}/")
        elif target not in LEVEL:
            found.append(f"{where}: there is no folder src/{target}")
        elif LEVEL[target] >= LEVEL[folder]:
            found.append(f"{where}: {folder}/ may not use {target}/")
    return found


def main() -> int:
    source = Path(sys.argv[1] if len(sys.argv) > 1 else ".") / "src"
    found = []
    for path in sorted(source.rglob("*")):
        if path.suffix not in (".h", ".cpp"):
            continue
        folder, inner = path.relative_to(source).parts[:2]
        if folder in FREE:
            continue
        if folder not in LEVEL:
            found.append(f"{path}: src/{folder} has no place among the layers")
            continue
        room = f"{folder}/{inner}"
        if folder in ROOMS and room not in ROOM_LEVEL:
            rooms = ", ".join(sorted(set().union(*ROOMS[folder])))
            found.append(f"{path}: {folder}/ keeps its files in {rooms}")
        found += faults_of(path, folder, room)
    print("\n".join(found), end="\n" if found else "")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
