"""The process: restarts and crashes, what it says when it cannot start, its host's commands."""
from __future__ import annotations

import sqlite3
import subprocess
import sys
import unittest
from contextlib import closing

from .harness import ROOT, Refused, Service, ServiceTest, shared_service


def run(program: str, *words: object) -> subprocess.CompletedProcess[str]:
    return subprocess.run([sys.executable, ROOT / "service" / program, "--data", *map(str, words)],
                          capture_output=True, text=True, timeout=60)


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

    def test_host_commands(self) -> None:
        self.service = shared_service("--no-sign-up")

        def admin(*words: str) -> subprocess.CompletedProcess[str]:
            return run("quilldeck_admin.py", self.service.data, *words)
        self.assertEqual(admin("add-user", "carl", "--password", "secret").returncode, 0)
        self.assertEqual(admin("add-access", "tunes", "demo", "music", "--password", "la").returncode, 0)
        self.assertIn("no folder", admin("add-access", "t2", "demo", "nowhere").stderr)
        guest, carl = self.client("tunes", "la"), self.client("carl", "secret")
        self.assertEqual(guest.names(), ["Music"])
        self.assertEqual(admin("set-password", "carl", "--password", "other").returncode, 0)
        self.assertEqual(admin("remove-access", "tunes").returncode, 0)
        for ended in (carl, guest):
            with self.assertRaisesRegex(Refused, "Not signed in"):
                ended.names()
        with self.assertRaisesRegex(Refused, "host"):
            carl.post("/qd_profile.php", action="new_profile", email="e@mail.test", passwd="word",
                      verify_passwd="word")


if __name__ == "__main__":
    unittest.main()
