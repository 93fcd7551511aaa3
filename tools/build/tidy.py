"""Runs clang-tidy over the sources of some build trees, two at a time.

    tidy.py --cache FOLDER BUILD [BUILD ...]

A source that passed is remembered by a hash of everything that decides the result: the source, our
headers that it includes, its compile command, the settings and the program's version.
"""
from __future__ import annotations

import argparse
import hashlib
import json
import os
import re
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

TIDY = "clang-tidy-19"
ROOT = Path(__file__).resolve().parents[2]
FOLDERS = ("src", "tests", "tools", "bench", "fuzz")
INCLUDE = re.compile(r'^\s*#\s*include\s*"([^"]+)"', re.MULTILINE)
# The compile commands are g++'s: clang does not know all its warnings and options.
EXTRA = ("--target=x86_64-w64-mingw32", "-Wno-unknown-warning-option",
         "-Wno-unused-command-line-argument")


def closure(source: Path) -> list[Path]:
    """The source and all headers of ours that it reaches."""
    seen: set[Path] = set()
    todo = [source]
    while todo:
        path = todo.pop()
        if path in seen:
            continue
        seen.add(path)
        for name in INCLUDE.findall(path.read_text(encoding="utf-8")):
            todo += [candidate for folder in (path.parent, ROOT / "src", ROOT)
                     if (candidate := (folder / name).resolve()).is_file()]
    return sorted(seen)


def key(source: Path, command: str, version: str) -> str:
    """The hash that stands for the result, the same in every clone."""
    digest = hashlib.sha256()
    for part in (version, command.replace(str(ROOT), "."), repr(EXTRA),
                 (ROOT / ".clang-tidy").read_text(encoding="utf-8")):
        digest.update(part.encode() + b"\0")
    for path in closure(source):
        digest.update(str(path.relative_to(ROOT)).encode() + b"\0" + path.read_bytes() + b"\0")
    return digest.hexdigest()


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--cache", type=Path, required=True)
    parser.add_argument("builds", type=Path, nargs="+")
    arguments = parser.parse_args()
    arguments.cache.mkdir(parents=True, exist_ok=True)
    version = subprocess.check_output([TIDY, "--version"], text=True)

    # A source that several trees compile is checked in the first.
    sources: dict[Path, tuple[Path, str]] = {}
    for build in arguments.builds:
        for entry in json.loads((build / "compile_commands.json").read_text(encoding="utf-8")):
            path = Path(entry["file"]).resolve()
            if path.suffix == ".cpp" and path.is_relative_to(ROOT) and \
                    path.relative_to(ROOT).parts[0] in FOLDERS:
                sources.setdefault(path, (build, entry["command"]))

    def check(source: Path) -> bool:
        build, command = sources[source]
        passed = arguments.cache / key(source, command, version)
        if passed.exists():
            return True
        result = subprocess.run(
            [TIDY, "--quiet", "-p", build, *(f"--extra-arg={option}" for option in EXTRA), source],
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        if result.returncode == 0:
            passed.touch()
            return True
        # The other stream counts suppressed warnings; it matters only when nothing else is said.
        print(result.stdout or result.stderr, flush=True)
        return False

    with ThreadPoolExecutor(os.cpu_count()) as pool:
        results = list(pool.map(check, sorted(sources)))
    print(f"clang-tidy: {len(results)} sources, {results.count(False)} with findings")
    return 0 if all(results) else 1


if __name__ == "__main__":
    sys.exit(main())
