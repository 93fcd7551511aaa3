#!/usr/bin/python3
"""Runs a command on a virtual screen and takes the pictures that it asks for.

    on_screen.py --pictures FOLDER -- COMMAND [ARGUMENTS]

The command finds the screen by DISPLAY. When it prints a line "picture NAME", the screen is saved as
NAME.png, and the command gets an empty line in return. Its other lines are passed on. Returns the
command's exit code.
"""
from __future__ import annotations

import argparse
import os
import subprocess
import sys
from pathlib import Path

SIZE = "1024x768"


class Screen:
    """An X server without a screen, on a free display, for as long as the block lasts."""

    def __enter__(self) -> str:
        reader, writer = os.pipe()
        self._server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(writer), "-screen", "0", SIZE + "x24", "-nolisten", "tcp"],
            pass_fds=[writer], stdin=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(writer)
        with open(reader, encoding="ascii") as answer:
            number = answer.readline().strip()
        if not number:
            raise RuntimeError("the virtual screen did not start")
        return ":" + number

    def __exit__(self, *_: object) -> None:
        self._server.terminate()
        self._server.wait()


def take_picture(display: str, path: Path) -> None:
    path.parent.mkdir(parents=True, exist_ok=True)
    subprocess.run(["import", "-display", display, "-window", "root", "-depth", "8",
                    "-define", "png:compression-level=9", "-define", "png:exclude-chunks=date,time",
                    path], check=True, stdin=subprocess.DEVNULL)


def main() -> int:
    parser = argparse.ArgumentParser(usage="on_screen.py --pictures FOLDER -- COMMAND ...")
    parser.add_argument("--pictures", type=Path, required=True)
    parser.add_argument("command", nargs="+")
    options = parser.parse_args()
    with Screen() as display:
        environment = {**os.environ, "DISPLAY": display, "QUILLDECK_SCREEN": "desktop"}
        command = subprocess.Popen(options.command, env=environment, text=True, encoding="utf-8",
                                   stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        assert command.stdin and command.stdout
        for line in command.stdout:
            word, _, name = line.strip().partition(" ")
            if word == "picture":
                take_picture(display, options.pictures / (name + ".png"))
                command.stdin.write("\n")
                command.stdin.flush()
            else:
                print(line, end="", flush=True)
        return command.wait()


if __name__ == "__main__":
    sys.exit(main())
