"""The process: restarts and crashes, what it says when it cannot start, its host's commands."""
from __future__ import annotations

import ftplib
import shutil
import sqlite3
import subprocess
import sys
import tempfile
import unittest
from contextlib import closing
from pathlib import Path

from store_client import Refused, Service

from . import ROOT
from .harness import ServiceTest, shared_service


def run(program: str, *words: object, typed: str = "") -> subprocess.CompletedProcess[str]:
    return subprocess.run([sys.executable, ROOT / "service" / program, "--data", *map(str, words)],
                          capture_output=True, text=True, timeout=60, input=typed)


class Process(ServiceTest):
    def test_everything_survives_even_a_kill(self) -> None:
        service = Service()
        client = self.client("demo", service=service)
        client.put("kept.bin", b"kept" * 1000)
        number, location = client.begin("half.bin", 8)
        client.upload(location, b"half")
        orphan = service.data / "transfer" / ("f" + "0" * 32)
        orphan.write_bytes(b"left by a crash")
        stranger = service.data / "transfer" / "readme"
        stranger.touch()
        with closing(sqlite3.connect(service.data / "store.sqlite")) as db:
            (password,), = db.execute("SELECT password FROM users WHERE name = 'demo'")
        self.assertNotIn("demo", password)
        service.process.kill()
        service.process.wait()

        again = Service(folder=service.folder)
        self.addCleanup(again.close)
        common, client = client.common, self.client(service=again)
        client.common = common
        client.restore()
        self.assertEqual(client.content("kept.bin"), b"kept" * 1000)
        client.upload(location, b"done", "APPE")
        client.finish(number, location, 8)
        self.assertEqual(client.content("half.bin"), b"halfdone")
        self.assertTrue(stranger.exists(), "only the store's own files are ever deleted")
        self.assertTrue(orphan.exists(), "its metadata may yet be restored")
        self.assertEqual(client.names().count("Music"), 1, "demo files are made once")

    def test_a_taken_port_or_folder_is_said(self) -> None:
        for data, port, words in (("second", self.service.port, f"port {self.service.port}"),
                                  ("data", 0, "Another service")):
            second = run("quilldeck_service.py", self.service.folder / data, "--https-port", port,
                         "--ftp-port", 0)
            self.assertEqual(second.returncode, 1)
            self.assertIn(words, second.stderr)
            self.assertNotIn("Traceback", second.stderr)

    def admin(self, *words: object, typed: str = "") -> str:
        """A command that works; returns what it prints."""
        done = run("quilldeck_admin.py", self.service.data, *words, typed=typed)
        self.assertEqual(done.returncode, 0, done.stderr)
        return done.stdout

    def refused_command(self, words: str, program: str, *command: object, typed: str = "") -> None:
        done = run(program, *command, typed=typed)
        self.assertEqual(done.returncode, 1)
        self.assertRegex(done.stderr, words)
        self.assertNotIn("Traceback", done.stderr)

    def test_host_commands(self) -> None:
        self.service = shared_service("--no-sign-up")
        data = self.service.data
        self.admin("add-user", "carl", "--email", "carl@mail.test", typed="secret\n")
        self.admin("add-access", "tunes", "demo", "music", "--password", typed="lala\n")
        for words, command, typed in (("no folder", ("add-access", "t2", "demo", "nowhere"), ""),
                                      ("taken", ("add-user", "Carl"), "word\n"),
                                      ("characters", ("add-user", "curt"), "\n"),
                                      ("confirm", ("remove-user", "carl"), ""),
                                      ("no user", ("set-password", "curt"), "word\n")):
            self.refused_command(words, "quilldeck_admin.py", data, *command, typed=typed)
        guest, carl = self.client("tunes", "lala"), self.client("carl", "secret")
        self.assertEqual(guest.names(), ["Music"])
        carl.put("f", b"carl's")
        found = carl.find("f")
        transfer = carl.ftp()
        self.addCleanup(transfer.close)
        self.assertEqual((transfer.size(found["Location"]), carl.page(found["DirectLink"])[0]), (6, 200))
        self.admin("set-password", "carl", typed="other\n")
        self.admin("remove-access", "tunes")
        for ended in (carl, guest):
            with self.assertRaisesRegex(Refused, "Not signed in"):
                ended.names()
        with self.assertRaises(ftplib.Error):
            transfer.size(found["Location"])
        with self.assertRaises(ftplib.Error):
            carl.ftp()
        self.assertEqual(carl.page(found["DirectLink"])[0], 404)
        with self.assertRaisesRegex(Refused, "host"):
            carl.post("/qd_profile.php", action="new_profile", email="e@mail.test", passwd="word",
                      verify_passwd="word")

        copy = self.service.folder / "backup"
        self.admin("backup", copy)
        carl = self.client("carl", "other")
        carl.put("later", b"later")
        self.assertRegex(self.admin("backup", copy), " 1 of them new")
        self.assertIn("whole", self.admin("check"))
        self.admin("remove-user", "carl", "--yes")
        self.assertNotIn("carl", self.admin("show"))
        with self.assertRaisesRegex(Refused, "Not signed in"):
            carl.names()
        self.refused_command("no backup", "quilldeck_admin.py", data, "backup", data)
        elsewhere = Path(tempfile.mkdtemp(prefix="quilldeck-store-"))
        shutil.copytree(copy, elsewhere / "data")
        restored = Service(folder=elsewhere)
        self.addCleanup(restored.close)
        self.assertEqual(self.client("carl", "other", restored).content("later"), b"later")
        next(path for path in (copy / "transfer").iterdir() if path.read_bytes() == b"later").unlink()
        self.refused_command("missing", "quilldeck_admin.py", copy, "check")

    def test_demo_accounts_stay_on_this_machine(self) -> None:
        ports = ("--https-port", 0, "--ftp-port", 0, "--host", "0.0.0.0")
        fresh = self.service.folder / "open"
        self.refused_command("Leave --demo out", "quilldeck_service.py", fresh, *ports, "--demo")
        service = Service()
        self.addCleanup(shutil.rmtree, service.folder)
        service.stop()
        self.refused_command("remove-access helper, remove-user demo", "quilldeck_service.py",
                             service.data, *ports)


if __name__ == "__main__":
    unittest.main()
