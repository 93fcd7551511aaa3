"""The project's own tools: what they let through, and what they leave behind."""
from __future__ import annotations

import contextlib
import os
import pwd
import signal
import subprocess
import sys
import tempfile
import time
import unittest
from collections.abc import Callable
from pathlib import Path
from unittest import mock

ROOT = Path(__file__).resolve().parents[2]
BUILD = ROOT / "tools" / "build"
WINE_RUN = BUILD / "wine-run"
CMD = "C:\\windows\\system32\\cmd.exe"
CACHE = Path(os.environ.get("QUILLDECK_CACHE") or Path(
    os.environ.get("XDG_CACHE_HOME") or Path.home() / ".cache") / "quilldeck")

sys.path.insert(0, str(BUILD))
import tidy  # noqa: E402


def run(*command: object, **environment: object) -> subprocess.CompletedProcess[str]:
    """Runs a command to its end, with additions to our environment; its output is text."""
    return subprocess.run([str(word) for word in command], stdin=subprocess.DEVNULL, text=True,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          env=os.environ | {name: str(value) for name, value in environment.items()})


class Folder(unittest.TestCase):
    """A case with a folder of its own."""

    def setUp(self) -> None:
        temporary = tempfile.TemporaryDirectory(prefix="quilldeck-tools.")
        self.addCleanup(temporary.cleanup)
        self.folder = Path(temporary.name)

    def write(self, name: str, text: str) -> Path:
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")
        return path


class Lint(Folder):
    def test_layers(self) -> None:
        for name, text in (("utils/a.cpp", '#include "utils/b.h"\n#include <shlobj.h>\n'),
                           ("serializer/a.cpp", '#include "utils/a.h"\n'),
                           ("vfs_quilldeck/items/a.cpp", '#include "vfs_quilldeck/wire/a.h"\n'),
                           ("shell/b.cpp", '#include "com/guard.h"\n#include <objbase.h>\n')):
            self.write(f"src/{name}", text)
        faults = {"src/vfs/side.h": '#include "utils/a.h"', "src/utils/up.h": '#include "serializer/a.h"',
                  "src/transfer/side.h": '#include "shell/b.h"', "src/syncer/com.h": "#include <ole2.h>",
                  "src/ui/bare.h": '#include "bare2.h"', "src/other/new.h": "",
                  "src/vfs_quilldeck/wire/up.h": '#include "vfs_quilldeck/session/client.h"',
                  "src/dialogs/login/up.h": '#include "dialogs/sync/sync_page.h"',
                  "src/vfs_quilldeck/loose.h": '#include "vfs_quilldeck/wire/md5.h"'}
        for name, line in faults.items():
            self.write(name, line + "\n")
        result = run(sys.executable, BUILD / "layers.py", self.folder)
        self.assertEqual(1, result.returncode)
        self.assertEqual(len(faults), len(result.stdout.splitlines()), result.stdout)
        for name in faults:
            self.assertIn(name, result.stdout)

    def test_a_result_is_kept_until_something_that_decides_it_changes(self) -> None:
        source = self.write("src/a/a.cpp", '#include "a/a.h"\n#include <library.h>\n#include <vector>\n')
        self.write("src/a/a.h", '#include "b.h"\n# include "support/s.h"\n')
        inner, settings = self.write("src/a/b.h", "int b;\n"), self.write(".clang-tidy", "Checks: x\n")
        support = self.write("tests/support/s.h", "")
        library = self.write("cache/library/include/library.h", "")
        other = self.write("src/a/other.h", "int other;\n")
        command = "g++ -Isrc -I tests -isystem cache/library/include"

        def key(command: str = command, version: str = "19") -> str:
            tidy.find.cache_clear()
            tidy.look_into.cache_clear()
            return tidy.key(source, command, self.folder, version)

        with mock.patch.object(tidy, "ROOT", self.folder):
            keys = [key()]
            other.write_text("int changed;\n")
            self.assertEqual(keys[0], key())
            for changed in (source, inner, support, library, settings):
                changed.write_text(changed.read_text() + "// changed\n")
                keys.append(key())
            self.write("src/support/s.h", "// stands before the other one\n")
            keys += [key(), key(command + " -O2"), key(version="20")]
        self.assertEqual(9, len(set(keys)))


class Cache(Folder):
    def command(self, name: str, folder: object) -> subprocess.CompletedProcess[str]:
        return run("bash", "-euc", f'. "$ROOT/tools/build/common.sh"; {name}', ROOT=ROOT,
                   QUILLDECK_CACHE=folder)

    def test_only_what_is_ours_is_removed(self) -> None:
        letter, parts = self.write("home/letter.txt", "dear"), self.write("home/parts/engine.txt", "")
        for name in ("claim_cache", "remove_cache"):
            self.assertEqual(1, self.command(name, self.folder / "home").returncode, name)
        self.assertTrue(letter.exists() and parts.exists())
        self.assertFalse((self.folder / "home/CACHEDIR.TAG").exists())

        for name in ("parts/x/lib.a", "lock", "0123456789ab/x", "wine-1/system.reg", "openssl.log"):
            self.write(f"cache/{name}", "")  # as the versions made it that knew no marks
        (self.folder / "cache/prefixes").symlink_to(letter.parent)
        self.assertEqual(0, self.command("claim_cache", self.folder / "cache").returncode)
        mine = self.write("cache/notes", "mine")
        self.assertIn("notes", self.command("remove_cache", self.folder / "cache").stdout)
        self.assertEqual([mine], list(mine.parent.iterdir()))
        self.assertTrue(letter.exists())
        self.assertEqual(0, self.command("claim_cache; remove_cache", self.folder / "new").returncode)
        self.assertFalse((self.folder / "new").exists())

    def test_another_user_s_cache_is_told(self) -> None:
        other = Path("/usr")
        if os.geteuid() == 0:
            other = self.write("other/parts/x", "").parents[1]
            os.chown(other, 65534, -1)
        refused = self.command("claim_cache", other)
        self.assertEqual(1, refused.returncode)
        self.assertIn(f"chown -R {pwd.getpwuid(os.geteuid()).pw_name}: {other}", refused.stdout)


class Imports(Folder):
    def test_memory_of_another_heap_is_refused(self) -> None:
        for name, asks in (("clean", "return (void*)strlen(text);"), ("copied", "return _strdup(text);"),
                           ("through_a_pointer", "extern void* (*__imp__fullpath)(void*, const void*, int);"
                            "return __imp__fullpath(0, text, 0);")):
            source = self.write(f"{name}.c", "#include <string.h>\n__declspec(dllexport) void* "
                                f"answer(const char* text) {{ {asks} }}\n")
            base = self.folder / name
            compiled = run("x86_64-w64-mingw32-gcc-posix", "-c", source, "-o", f"{base}.obj")
            linked = run("x86_64-w64-mingw32-gcc-posix", "-shared", f"{base}.obj", "-o", f"{base}.dll",
                         "-nostartfiles", "-Wl,--entry=0", f"-Wl,-Map={base}.map,--cref")
            self.assertEqual((0, 0), (compiled.returncode, linked.returncode), linked.stdout)
            result = run(sys.executable, BUILD / "check_imports.py", f"{base}.dll", f"{base}.map")
            self.assertEqual(name != "clean", result.returncode == 1, result.stdout)
            self.assertEqual(name != "clean", f"{name}.obj" in result.stdout, result.stdout)


class Wine(Folder):
    def processes(self, variable: bytes) -> list[tuple[int, bytes]]:
        """Those with a variable in their environment, with their command lines."""
        found = []
        for folder in Path("/proc").glob("[0-9]*"):
            with contextlib.suppress(OSError):
                if variable in (folder / "environ").read_bytes().split(b"\0"):
                    found.append((int(folder.name), (folder / "cmdline").read_bytes()))
        return found

    def start(self, command: str, output: int | None = None) -> subprocess.Popen[bytes]:
        # A run inside another would take that one's prefix.
        environment = {key: value for key, value in os.environ.items()
                       if key != "QUILLDECK_WINEPREFIX"}
        return subprocess.Popen([WINE_RUN, CMD, "/c", command], stdin=subprocess.DEVNULL,
                                env=environment, stdout=output)

    def wait_for(self, what: Callable[[], bool]) -> None:
        deadline = time.monotonic() + 60
        while not what():
            self.assertLess(time.monotonic(), deadline)
            time.sleep(0.05)

    def test_a_program_left_running_does_not_hold_the_terminal(self) -> None:
        near, far = os.openpty()
        self.addCleanup(os.close, near)
        command = self.start("start /b cmd /c for /l %i in (1,0,2) do rem & exit 4", far)
        os.close(far)
        self.assertEqual(4, command.wait(60))

    def test_an_end_from_outside_leaves_nothing(self) -> None:
        mark = self.folder / "started"
        # Asked to end, killed, and with Wine's server gone, without which its programs stand still.
        for number, code in ((signal.SIGTERM, 143), (None, 1), (signal.SIGKILL, -signal.SIGKILL)):
            mark.unlink(missing_ok=True)
            ended = self.start(f"echo x> Z:{mark} & for /l %i in (1,0,2) do rem")
            self.wait_for(mark.exists)
            prefix, = (CACHE / "prefixes").glob(f"{ended.pid}.*")
            variable = f"WINEPREFIX={prefix}".encode()
            if number:
                ended.send_signal(number)
            else:
                server, = [pid for pid, command in self.processes(variable)
                           if b"wineserver64\0-p\0" in command]
                os.kill(server, signal.SIGKILL)
            self.assertEqual(code, ended.wait(60))
            self.assertEqual(number == signal.SIGKILL, prefix.exists())
            self.assertTrue(prefix.exists() or not self.processes(variable))
        self.assertEqual(0, self.start("exit 0").wait(60))
        self.assertFalse(prefix.exists())


class Service(unittest.TestCase):
    def test_the_command_s_code_and_nothing_left(self) -> None:
        wrapper = (sys.executable, ROOT / "tools/support/with_service.py", "--vsftpd", "--", "bash", "-c")
        result = run(*wrapper, 'echo "$QUILLDECK_TEST_READY"; test -s "$QUILLDECK_TEST_VSFTPD_READY" '
                     '&& exit 9')
        self.assertEqual(9, result.returncode, result.stdout)
        self.assertFalse(Path(result.stdout.split()[0]).parents[1].exists())
        self.assertEqual(128 + signal.SIGKILL, run(*wrapper, "kill -KILL $$").returncode)


if __name__ == "__main__":
    unittest.main()
