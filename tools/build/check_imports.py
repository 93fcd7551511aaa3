"""Refuses a shell extension that takes memory from the system's C run-time library.

    check_imports.py DLL MAP

The DLL keeps all memory in a heap of its own, and its `free` gives back to that heap alone
(src/module/private_heap.h). Memory from a function of the run-time library that allocates by itself
would be given to the wrong heap. MAP is the linker's, with its cross references; they tell who asks.
"""
from __future__ import annotations

import re
import subprocess
import sys
from pathlib import Path

OBJDUMP = "x86_64-w64-mingw32-objdump"
# Without underscores in front. All whose result `free` takes, with or without a buffer to fill, and
# those that look into a block of malloc.
REFUSED = {
    "malloc", "calloc", "realloc", "recalloc", "expand", "free", "msize",
    "strdup", "wcsdup", "mbsdup", "dupenv_s", "wdupenv_s",
    "getcwd", "wgetcwd", "getdcwd", "wgetdcwd", "getdcwd_nolock", "wgetdcwd_nolock",
    "fullpath", "wfullpath", "tempnam", "wtempnam",
    "Getdays", "Getmonths", "Gettnames", "W_Getdays", "W_Getmonths", "W_Gettnames",
}
RUN_TIME = re.compile(r"(msvcr|ucrt|vcruntime|api-ms-win-crt-)", re.IGNORECASE)


def plain(symbol: str) -> str:
    """The name of a function, of a pointer to it or of an alias, as `REFUSED` has it."""
    return symbol.removeprefix("__imp_").lstrip("_")


def imports(dll: Path) -> set[str]:
    """What a DLL imports from run-time libraries of C."""
    found, is_run_time = set(), False
    table = subprocess.check_output([OBJDUMP, "-p", dll], text=True)
    for line in table.splitlines():
        if "DLL Name:" in line:
            is_run_time = bool(RUN_TIME.match(line.split()[-1]))
        elif is_run_time and (entry := re.match(r"\t[0-9a-f]+\t\s*\d+\s+(\w+)$", line)):
            found.add(entry.group(1))
    if not found:
        raise SystemExit(f"check_imports: no imports could be read from {dll}")
    return found


def users(link_map: Path, name: str) -> list[str]:
    """The objects that refer to a function; the linker names first where it is defined."""
    found: list[str] = []
    symbol = ""
    text = link_map.read_text(encoding="utf-8", errors="replace")
    for line in text.partition("Cross Reference Table")[2].splitlines():
        words = line.split(maxsplit=1)
        if len(words) == 2 and not line.startswith(" "):
            symbol = words[0]
        elif len(words) == 1 and line.startswith(" ") and plain(symbol) == plain(name):
            found.append(words[0])
    return sorted(set(found))


def main() -> int:
    dll, link_map = map(Path, sys.argv[1:])
    refused = sorted(name for name in imports(dll) if plain(name) in REFUSED)
    for name in refused:
        print(f"{dll.name} imports {name}, whose memory its own heap cannot free; it is asked for by\n    "
              + "\n    ".join(users(link_map, name) or ["nobody that the map tells"]), file=sys.stderr)
    return 1 if refused else 0


if __name__ == "__main__":
    sys.exit(main())
