"""What nobody can use up: time, connections, space, and the patience of the other process."""
from __future__ import annotations

import ftplib
import os
import resource
import signal
import socket
import sqlite3
import ssl
import tempfile
import time
import unittest
from contextlib import closing
from pathlib import Path

from PIL import Image
from quilldeck_store import accounts, certificate, limits, thumbnails
from quilldeck_store.limits import Arrivals, Limit, network
from quilldeck_store.wire import Failure
from store_client import TLS, Refused, Service

from .harness import ServiceTest


class Addresses(unittest.TestCase):
    def test_limits_count_by_address(self) -> None:
        for address, counted in (("10.0.0.1", "10.0.0.1"), ("::ffff:10.0.0.1", "10.0.0.1"),
                                 ("2001:db8:1:2:3::4", "2001:db8:1:2::/64"), ("?", "?")):
            self.assertEqual(network(address), counted)
        limit = Limit(2, 60, Failure("n", "d"))
        limit.spend("a")
        limit.give_back("a")
        limit.give_back("a")
        for _ in range(2):
            limit.spend("a")
        with self.assertRaises(Failure):
            limit.spend("a")
        for number in range(limits.MAX_ADDRESSES + 5):
            limit.spend(str(number))
        self.assertLessEqual(len(limit._spent), limits.MAX_ADDRESSES)
        arrivals = Arrivals(4, 3, 2)
        self.assertEqual([arrivals.enter("a") for _ in range(3)], [True, True, False])
        arrivals.sign_in("a")
        self.assertEqual([arrivals.enter(who) for who in "aabb"], [True, False, True, False])
        for who, signed_in in (("a", True), ("a", False), ("a", False), ("b", False)):
            arrivals.leave(who, signed_in)
        self.assertEqual(arrivals._all.total() + arrivals._strangers.total(), 0)
        self.assertNotEqual(accounts.hash_password("same"), accounts.hash_password("same"))


class Pictures(unittest.TestCase):
    def test_what_is_made_small(self) -> None:
        with tempfile.TemporaryDirectory() as name:
            file, cached = Path(name, "p"), Path(name, "kept", "p.jpg")
            for kind, side, well in (("PNG", 5000, True), ("PNG", 5001, False), ("EPS", 20, False),
                                     ("GIF", 300, True)):
                Image.new("RGB" if kind == "EPS" else "1", (side, 5000 if side > 999 else side)
                          ).save(file, kind)
                cached.unlink(missing_ok=True)
                for _ in range(2):
                    with self.subTest(kind=kind, side=side):
                        if well:
                            data = thumbnails.make(thumbnails.Missing(file, cached))
                            self.assertEqual(data[6:10], b"JFIF")
                        else:
                            with self.assertRaises(Failure):
                                thumbnails.make(thumbnails.Missing(file, cached))
                    # Neither kind is decoded a second time.
                    file.write_bytes(b"")


class Bounds(ServiceTest):
    def test_wrong_passwords_and_long_requests(self) -> None:
        self.fresh("guessed")
        guesser = self.client(source="127.0.0.9")
        for _ in range(30):
            with self.assertRaisesRegex(Refused, "wrong"):
                guesser.login("guessed", "x" * 300)
        for name in ("guessed", "demo"):
            with self.assertRaisesRegex(Refused, "too many"):
                guesser.login(name, name)
        self.client("guessed", source="127.0.0.10")
        client = self.client("guessed")
        for body in (b"&".join([b"a=b"] * 65), b"action=" + b"x" * 40_000, b"x" * 300_000):
            error, = client.raw("/qd_operations.php", body).all("Error")
            self.assertRegex(error["Description"], "too (many|long)")
        with self.assertRaises(Refused) as caught:
            client.ask("x" * 30_000)
        self.assertLess(len(str(caught.exception)), 300)

    def test_a_session_ends_when_it_is_not_used(self) -> None:
        client = self.fresh("idler")
        client.names()
        day = accounts.SESSION_IDLE_SECONDS - 86400
        with closing(sqlite3.connect(self.service.data / "store.sqlite", timeout=20)) as db:
            def age(seconds: int) -> None:
                with db:
                    db.execute("UPDATE sessions SET seen = seen - ? WHERE token = ?",
                               (seconds, client.user_id))
            age(day)
            client.ask("get_storage_info")
            age(day)
            client.names()
            age(day + 2 * 86400)
            self.refused(client, "get_storage_info")

    def test_open_uploads_count(self) -> None:
        client = self.fresh("opener")
        with closing(sqlite3.connect(self.service.data / "store.sqlite", timeout=20)) as db, db:
            db.execute("UPDATE users SET quota = 100000 WHERE name = 'opener'")
        kept = client.put("kept", b"k" * 40_000)
        uploads = [client.begin(name, 0) for name in "ab"]
        client.upload(uploads[0][1], b"a" * 50_000)
        with self.assertRaisesRegex(ftplib.Error, "552"):
            client.upload(uploads[1][1], b"b" * 20_000)
        with self.assertRaisesRegex(Refused, "space"):
            client.begin("c", 20_000)
        replacing = [client.reopen(kept) for _ in range(2)]
        client.upload(replacing[0], b"n" * 41_000)
        with self.assertRaisesRegex(ftplib.Error, "552"):
            client.upload(replacing[1], b"n" * 41_000)
        client.finish(kept, replacing[0], 41_000)
        two = [client.begin(name, 0)[1] for name in "de"]
        sessions = [client.ftp() for _ in two]
        for session in sessions:
            self.addCleanup(session.close)
        lines = [session.transfercmd(f"STOR {place}") for session, place in zip(sessions, two)]
        with self.assertRaises(OSError):
            for _ in range(200):
                for line in lines:
                    line.sendall(b"x" * 1000)
                    time.sleep(0.005)
        for line in lines:
            line.close()
        held = sum((self.service.data / "transfer" / location[1:]).stat().st_size
                   for location in (*two, *(place for _, place in uploads), replacing[1]))
        self.assertLessEqual(held, 59_000)
        self.assertGreater(held, 50_000)
        old = time.time() - 1000
        os.utime(self.service.data / "transfer" / uploads[0][1][1:], (old, old))
        number, location = client.begin("c", 45_000)
        client.upload(location, b"c" * 45_000)
        client.finish(number, location, 45_000)
        self.refused(client, "close_file_upload", file_id=uploads[0][0], temp_location=uploads[0][1],
                     file_time=0, file_size=50_000)

        lender = self.fresh("giver")
        with closing(sqlite3.connect(self.service.data / "store.sqlite", timeout=20)) as db, db:
            db.execute("UPDATE users SET quota = 10 WHERE name = 'giver'")
        folder = lender.make("in")
        lender.ask("share_folder", dir_id=folder, sharemode=1, sharewithuser_id=client.user_id.split("-")[0])
        road = {"dst_share_user_id": lender.user_id.split("-")[0], "dst_share_id": folder}
        for move in (0, 1):
            with self.assertRaisesRegex(Refused, "space"):
                client.ask("copy_file", dst_dir_id=folder, **road, src_file_id=kept, move=move)

    def test_silence_and_nonsense_at_both_doors(self) -> None:
        strangers = [socket.create_connection(("127.0.0.1", self.service.port), 5,
                                              ("127.0.0.11", 0)) for _ in range(110)]
        for stranger in strangers:
            self.addCleanup(stranger.close)
        strangers[-1].settimeout(5)
        self.assertEqual(strangers[-1].recv(1), b"", "an address has no more than so many")
        self.client("demo").names()
        line = ftplib.FTP()
        line.connect("127.0.0.1", self.service.ftp_port, 20, ("127.0.0.12", 0))
        self.addCleanup(line.close)
        for command, reply in (("STAT", "502"), ("xSTAT /", "502"), ("NOOP", "200"), ("\x00", "500"),
                               ("STAT ../..", "502"), ("ß ü", "500")):
            with self.subTest(command=command):
                line.putcmd(command)
                self.assertEqual(line.getline()[:3], reply)
        with socket.create_connection(("127.0.0.1", self.service.ftp_port), 20) as plain:
            plain.recv(100)
            plain.sendall(b"AUTH TLS\r\nUSER injected\r\n")
            self.assertIn(b"234", plain.recv(100))
            with TLS.wrap_socket(plain) as secure:
                secure.sendall(b"NOOP\r\n")
                self.assertIn(b"200", secure.recv(100), "the name that came in clear is forgotten")


class Processes(ServiceTest):
    def test_both_outlive_a_want_of_descriptors(self) -> None:
        service = Service()
        self.addCleanup(service.close)
        pid = service.process.pid
        children = Path(f"/proc/{pid}/task/{pid}/children").read_text().split()
        for process in (pid, *map(int, children)):
            resource.prlimit(process, resource.RLIMIT_NOFILE, (50, 50))
        crowd = [socket.create_connection(("127.0.0.1", port), 5, (f"127.0.0.{20 + number % 5}", 0))
                 for number in range(60) for port in (service.port, service.ftp_port)]
        time.sleep(1)
        for one in crowd:
            one.close()
        time.sleep(1.5)
        client = self.client("demo", service=service)
        client.put("x", b"after")
        self.assertEqual(client.content("x"), b"after")
        log = (service.folder / "service.log").read_text()
        self.assertIn("cannot take a transfer connection", log)
        self.assertNotIn("Traceback", log)

    def test_neither_waits_for_the_other_without_end(self) -> None:
        service = Service()
        self.addCleanup(service.close)
        client = self.client("demo", service=service)
        number, location = client.begin("x", 2)
        client.upload(location, b"ab")
        pid = service.process.pid
        child = int(Path(f"/proc/{pid}/task/{pid}/children").read_text())
        os.kill(child, signal.SIGSTOP)
        try:
            start = time.monotonic()
            with self.assertRaisesRegex(Refused, "does not answer"):
                client.finish(number, location, 2)
            self.assertLess(time.monotonic() - start, 20)
            self.assertIn("Music", client.names())
        finally:
            os.kill(child, signal.SIGCONT)
        client.finish(number, location, 2)
        self.assertEqual(client.content("x"), b"ab")

        before = ssl.get_server_certificate(("127.0.0.1", service.port))
        (service.data / "service.pem").rename(service.data / "old.pem")
        service.process.send_signal(signal.SIGHUP)
        client.names()
        certificate.ensure(service.data / "service.pem", "localhost")
        after = before
        end = time.monotonic() + 20
        while after == before and time.monotonic() < end:
            service.process.send_signal(signal.SIGHUP)
            time.sleep(0.3)
            after = ssl.get_server_certificate(("127.0.0.1", service.port))
        self.assertNotEqual(before, after, "a certificate is renewed while the store runs")
        with client.ftp() as session:
            assert isinstance(session.sock, ssl.SSLSocket)
            found = session.sock.getpeercert(True)
        self.assertEqual(found, ssl.PEM_cert_to_DER_cert(after))

        # The file server is asked something when the service dies, and can answer nobody.
        os.kill(child, signal.SIGSTOP)
        client.line.request("GET", "/_control/stats")
        time.sleep(0.5)
        service.process.kill()
        service.process.wait()
        os.kill(child, signal.SIGCONT)
        again = Service(folder=service.folder)
        self.addCleanup(again.stop)
        self.assertEqual(self.client("demo", service=again).content("x"), b"ab")


if __name__ == "__main__":
    unittest.main()
