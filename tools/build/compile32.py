"""Checks that the sources of the shell extension compile for 32-bit Windows.

    compile32.py --cache FOLDER BUILD

32-bit programs need the extension in their own kind, for their file dialogs. Nothing is linked here,
as the libraries that it takes are only built for 64 bits, and nothing here could run it. Good
results are remembered as those of tidy.py.
"""
from __future__ import annotations

import argparse
import json
import os
import shlex
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

import tidy

COMPILER = "i686-w64-mingw32-g++-posix"
# Last, as a later option wins: a cast from a size to 32 bits is of use where a size has 64.
EXTRA = ["-fsyntax-only", "-Wno-useless-cast"]
# What names the output; the first ones take the next word along.
OUTPUT_OPTIONS = ("-o", "-MT", "-MF")
OTHER_OPTIONS = ("-MD", "-c")


def command_for_32_bits(command: str) -> list[str]:
    """The compile command of the 64-bit build, to be run by the 32-bit compiler without output."""
    words = shlex.split(command)
    compiler = next(place for place, word in enumerate(words) if "mingw32-g++" in word)
    result = [COMPILER]
    rest = iter(words[compiler + 1:])
    for word in rest:
        if word in OUTPUT_OPTIONS:
            next(rest)
        elif word not in OTHER_OPTIONS:
            result.append(word)
    return result + EXTRA


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--cache", type=Path, required=True)
    parser.add_argument("build", type=Path)
    arguments = parser.parse_args()
    arguments.cache.mkdir(parents=True, exist_ok=True)
    version = subprocess.check_output([COMPILER, "--version"], text=True)

    entries = json.loads((arguments.build / "compile_commands.json").read_text(encoding="utf-8"))
    commands: dict[Path, tuple[list[str], str]] = {}
    for entry in entries:
        path = Path(entry["file"]).resolve()
        folder = path.relative_to(tidy.ROOT).parts[:2] if path.is_relative_to(tidy.ROOT) else ()
        if path.suffix == ".cpp" and folder[:1] == ("src",) and folder[1] != "companions":
            commands.setdefault(path, (command_for_32_bits(entry["command"]), entry["directory"]))

    def check(source: Path) -> bool:
        command, folder = commands[source]
        passed = arguments.cache / tidy.key(source, shlex.join(command), version)
        if passed.exists():
            return True
        result = subprocess.run(command, cwd=folder, stdin=subprocess.DEVNULL, text=True,
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        if result.returncode == 0:
            passed.touch()
        else:
            print(result.stdout, flush=True)
        return result.returncode == 0

    with ThreadPoolExecutor(os.cpu_count()) as pool:
        results = list(pool.map(check, sorted(commands)))
    print(f"32 bits: {len(results)} sources, {results.count(False)} with faults")
    return 0 if all(results) else 1


if __name__ == "__main__":
    sys.exit(main())
