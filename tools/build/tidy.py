"""Runs clang-tidy over the sources of some build trees, two at a time.

    tidy.py --cache FOLDER BUILD [BUILD ...]

A source that passed is remembered by a hash of everything that decides the result: the source, all
headers that it includes out of the folders that its compile command names, that command, the settings,
and the versions of the program and of the system's own headers.
"""
from __future__ import annotations

import argparse
import functools
import hashlib
import json
import os
import re
import shlex
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

TIDY = "clang-tidy-19"
ROOT = Path(__file__).resolve().parents[2]
FOLDERS = ("src", "tests", "tools", "bench", "fuzz")
INCLUDE = re.compile(rb'^\s*#\s*include\s*(["<])([^">]+)[">]', re.MULTILINE)
INCLUDE_OPTIONS = ("-I", "-isystem", "-iquote")
# The headers that no command names.
SYSTEM = ("g++-mingw-w64-x86-64-posix", "gcc-mingw-w64-x86-64-posix", "mingw-w64-common",
          "mingw-w64-x86-64-dev")
# The compile commands are g++'s: clang does not know all its warnings and options.
EXTRA = ("--target=x86_64-w64-mingw32", "-Wno-unknown-warning-option",
         "-Wno-unused-command-line-argument")


def include_folders(command: str, folder: Path) -> tuple[Path, ...]:
    """Where a command that runs in `folder` looks for headers, in its order."""
    found = []
    words = iter(shlex.split(command))
    for word in words:
        option = next((option for option in INCLUDE_OPTIONS if word.startswith(option)), None)
        if option:
            found.append((folder / (word[len(option):] or next(words))).resolve())
    return tuple(found)


@functools.cache
def find(name: str, folders: tuple[Path, ...]) -> Path | None:
    """The first file of that name; none is one of the system's headers."""
    return next((path.resolve() for folder in folders if (path := folder / name).is_file()), None)


@functools.cache
def look_into(path: Path, folders: tuple[Path, ...]) -> tuple[bytes, tuple[Path, ...]]:
    """The hash of a file, and the headers that it names, whether or not its conditions are met."""
    data = path.read_bytes()
    headers = (find(name.decode(), (path.parent, *folders) if quote == b'"' else folders)
               for quote, name in INCLUDE.findall(data))
    return hashlib.sha256(data).digest(), tuple(header for header in headers if header)


def closure(source: Path, folders: tuple[Path, ...]) -> dict[Path, bytes]:
    """The source and all headers that it reaches, with their hashes."""
    seen: dict[Path, bytes] = {}
    todo = [source]
    while todo:
        path = todo.pop()
        if path not in seen:
            seen[path], headers = look_into(path, folders)
            todo += headers
    return seen


def key(source: Path, command: str, folder: Path, version: str) -> str:
    """The hash that stands for the result, the same in every clone."""
    digest = hashlib.sha256()
    for part in (version, command.replace(str(ROOT), "."), repr(EXTRA),
                 (ROOT / ".clang-tidy").read_text(encoding="utf-8")):
        digest.update(part.encode() + b"\0")
    for path, content in sorted(closure(source, include_folders(command, folder)).items()):
        digest.update(str(path).replace(str(ROOT), ".").encode() + b"\0" + content)
    return digest.hexdigest()


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--cache", type=Path, required=True)
    parser.add_argument("builds", type=Path, nargs="+")
    arguments = parser.parse_args()
    arguments.cache.mkdir(parents=True, exist_ok=True)
    version = "".join(subprocess.check_output(command, text=True) for command in (
        [TIDY, "--version"], ["dpkg-query", "-W", *SYSTEM]))

    # A source that several trees compile is checked in the first.
    sources: dict[Path, tuple[Path, str, Path]] = {}
    for build in arguments.builds:
        for entry in json.loads((build / "compile_commands.json").read_text(encoding="utf-8")):
            path = Path(entry["file"]).resolve()
            if path.suffix == ".cpp" and path.is_relative_to(ROOT) and \
                    path.relative_to(ROOT).parts[0] in FOLDERS:
                sources.setdefault(path, (build, entry["command"], Path(entry["directory"])))

    def check(source: Path) -> bool:
        build, command, folder = sources[source]
        passed = arguments.cache / key(source, command, folder, version)
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
