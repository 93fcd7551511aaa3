"""The process: restarts, crashes, faults on demand, its counters and its host's commands."""
from __future__ import annotations

import http.client
import signal
import subprocess
import sys
import time
import unittest

from .harness import ROOT, Client, Refused, Service, ServiceTest, shared_service


class Restart(unittest.TestCase):
    def test_everything_survives_even_a_kill(self) -> None:
        service = Service()
        self.addCleanup(service.close)
        client = Client(service, "demo", "demo")
        client.put("kept.bin", b"kept" * 1000)
        file = client.ask("create_and_open_file", dir_id=0, dir_access=0, name="half.bin", size=8,
                          is_pro=0).all("File")[0]
        client.upload(file["TempLocation"], b"half")
        orphan = service.data / "transfer" / ("f" + "0" * 32)
        orphan.write_bytes(b"left by a crash")
        stranger = service.data / "transfer" / "readme"
        stranger.touch()
        self.assertNotIn(b"demo\0demo", (service.data / "store.sqlite").read_bytes())
        service.stop(signal.SIGKILL)
        (service.folder / "ready").unlink()
        service.start()
        client.line.close()
        client.line = service.connect()
        self.addCleanup(client.line.close)
        reply = client.restore()
        self.assertEqual(reply["UserName"], "demo")
        self.assertEqual(client.get(client.find("kept.bin")["Location"]), b"kept" * 1000)
        client.upload(file["TempLocation"], b"done", "APPE")
        client.finish(file["ID"], file["TempLocation"], 8)
        self.assertEqual(client.get(client.find("half.bin")["Location"]), b"halfdone")
        self.assertTrue(stranger.exists(), "only the store's own files are ever deleted")
        self.assertFalse(orphan.exists())
        self.assertEqual(client.names().count("Music"), 1, "demo files are made once")
        self.assertEqual(service.stop(), 0)
        self.assertFalse((service.folder / "ready").exists())

    def test_a_taken_port_or_folder_is_said(self) -> None:
        service = shared_service()
        for data, port, words in (("second", service.port, f"port {service.port}"),
                                  ("data", 0, "Another service")):
            second = subprocess.run(
                [sys.executable, str(ROOT / "service/quilldeck_service.py"), "--data",
                 str(service.folder / data), "--https-port", str(port), "--ftp-port", "0"],
                capture_output=True, text=True, timeout=60)
            self.assertEqual(second.returncode, 1)
            self.assertIn(words, second.stderr)
            self.assertNotIn("Traceback", second.stderr)

    def test_host_commands(self) -> None:
        service = Service("--no-sign-up")
        self.addCleanup(service.close)

        def admin(*words: str) -> subprocess.CompletedProcess:
            return subprocess.run([sys.executable, str(ROOT / "service/quilldeck_admin.py"), "--data",
                                   str(service.data), *words], capture_output=True, text=True)
        self.assertEqual(admin("add-user", "carl", "--password", "secret").returncode, 0)
        self.assertEqual(admin("add-access", "tunes", "demo", "music", "--password", "la").returncode, 0)
        self.assertIn("no folder", admin("add-access", "t2", "demo", "nowhere").stderr)
        guest = Client(service, "tunes", "la")
        self.assertEqual(guest.names(), ["Music"])
        carl = Client(service, "carl", "secret")
        self.addCleanup(guest.line.close)
        self.addCleanup(carl.line.close)
        self.assertEqual(admin("set-password", "carl", "--password", "other").returncode, 0)
        self.assertEqual(admin("remove-access", "tunes").returncode, 0)
        for ended in (carl, guest):
            with self.assertRaisesRegex(Refused, "Not signed in"):
                ended.names()
        with self.assertRaisesRegex(Refused, "host"):
            carl.post("/v1/qd_profile.php", action="new_profile", email="e@mail.test", passwd="word",
                      verify_passwd="word")


class Control(ServiceTest):
    def test_faults_do_what_they_say(self) -> None:
        client = self.client()
        self.service.fault(kind="drop", action="list_dir", skip=1, count=2)
        client.names()
        for _ in range(2):
            client.ask("get_storage_info")
            with self.assertRaises((http.client.RemoteDisconnected, ConnectionError)):
                client.names()
        client.names()
        self.service.fault(kind="error", type=1, name="N", description="D", path="qd_operations.php")
        with self.assertRaisesRegex(Refused, "N: D") as caught:
            client.names()
        self.assertEqual(caught.exception.kind, 1)
        self.service.fault(kind="garbage")
        with self.assertRaises(ValueError):
            client.names()
        self.service.fault(kind="delay", seconds=0.3)
        start = time.monotonic()
        client.names()
        self.assertGreaterEqual(time.monotonic() - start, 0.3)
        self.service.fault(kind="drop", action="create_dir", when="after")
        with self.assertRaises((http.client.RemoteDisconnected, ConnectionError)):
            client.ask("create_dir", dir_id=0, dir_access=0, name="made all the same")
        self.assertIn("made all the same", client.names())
        for wrong in ({"kind": "none"}, {"kind": "drop", "skip": "x"}, {"kind": "stall", "bytes": "x"}):
            with self.assertRaises(ValueError):
                self.service.fault(**wrong)

    def test_log_and_counters(self) -> None:
        client = self.client()
        self.service.control("reset", "")
        client.names()
        with self.assertRaises(Refused):
            client.ask("set_dir_description", dir_id=0, description="a\\b\r\n& c")
        second = self.client()
        lines = self.service.control("log").splitlines()
        self.assertEqual([line.split(b" ", 3)[:3] for line in lines[:3]],
                         [[b"1", b"1", b"/v1/qd_operations.php"], [b"2", b"1", b"/v1/qd_operations.php"],
                          [b"3", b"2", b"/qd_get_path.php"]])
        self.assertIn(rb"&description=a%5Cb\r\n%26 c&user_id=", lines[1])
        self.assertEqual(self.service.control("log?since=3").splitlines(), lines[3:])
        second.put("counted.bin", b"x")
        stats = self.service.stats()
        self.assertEqual([stats[name] for name in (
            "https_connections", "ftp_logins", "ftp_data_connections", "active_transfers",
            "open_uploads")], [2, 1, 1, 0, 0])
