"""Bytes: both ways, resumed, cut, refused; who may touch which location."""
from __future__ import annotations

import ftplib
import os
import time

from .harness import Refused, ServiceTest

BLOCK = os.urandom(3_000_001)
BROKEN = (OSError, EOFError, ftplib.Error)


class Transfer(ServiceTest):
    def open_upload(self, client: object, name: str, size: int) -> tuple[str, str]:
        file = client.ask("create_and_open_file", dir_id=0, dir_access=0, name=name, size=size,
                          is_pro=0).all("File")[0]
        return file["ID"], file["TempLocation"]

    def size(self, client: object, location: str) -> int:
        line = client.ftp()
        self.addCleanup(line.close)
        return line.size(location)

    def test_sizes_round_trip(self) -> None:
        client = self.fresh("sizes")
        for size in (0, 1, 16383, 16384, 16385, len(BLOCK)):
            file = client.put(f"f{size}", BLOCK[:size])
            seen = client.find(f"f{size}")
            self.assertEqual((seen["Size"], seen["DateModified"]), (str(size), "1234567890"))
            self.assertEqual(client.get(seen["Location"]), BLOCK[:size])
            self.assertEqual(file["ID"], seen["ID"])
        self.assertEqual(client.get(seen["Location"], rest=16385), BLOCK[16385:])
        self.assertEqual(client.get(seen["Location"], rest=len(BLOCK)), b"")

    def test_close_is_refused_and_loses_nothing(self) -> None:
        client = self.fresh("refused")
        file = client.put("x", b"old content")
        other, foreign = self.open_upload(client, "y", 5)
        location = client.ask("open_file_upload", file_id=file["ID"], size=5, is_pro=0)["TempLocation"]
        client.upload(location, b"hello")
        for number, place, size in ((file["ID"], location, 6), (file["ID"], location, 4),
                                    (file["ID"], foreign, 0), (other, location, 5),
                                    (file["ID"], "/../store.sqlite", 5), (file["ID"], "", 0)):
            with self.subTest(place=place, size=size), self.assertRaises(Refused) as caught:
                client.finish(number, place, size)
            self.assertEqual(caught.exception.kind, 0)
        self.assertEqual(client.get(client.find("x")["Location"]), b"old content")
        client.upload(location, b" you", "APPE")
        client.finish(file["ID"], location, 9)
        client.finish(file["ID"], location, 9)
        self.assertEqual(client.get(client.find("x")["Location"]), b"hello you")
        with self.assertRaises(BROKEN):
            client.upload(location, b"late", "APPE")
        self.assertEqual(client.find("y")["Size"], "0")

    def test_replaced_content_stays_for_who_reads_it(self) -> None:
        client = self.fresh("replacer")
        file = client.put("x", b"first")
        old = client.find("x")["Location"]
        client.ask("open_file_download", file_id=file["ID"], is_pro=0)
        location = client.ask("open_file_upload", file_id=file["ID"], size=6, is_pro=0)["TempLocation"]
        client.upload(location, b"second")
        client.finish(file["ID"], location, 6)
        self.assertEqual(client.get(old), b"first")
        self.assertEqual(client.get(client.find("x")["Location"]), b"second")
        client.ask("remove_file", file_id=file["ID"])
        self.assertEqual(client.get(old), b"first")
        client.ask("close_file_download", file_id=file["ID"], is_pro=0)
        with self.assertRaises(BROKEN):
            client.get(old)

    def test_locations_belong_to_their_account(self) -> None:
        owner, thief = self.fresh("owner"), self.fresh("thief")
        content = owner.put("x", b"mine") and owner.find("x")["Location"]
        _, upload = self.open_upload(owner, "y", 4)
        owner.upload(upload, b"mine")
        line = thief.ftp()
        self.addCleanup(line.close)
        for command in (f"SIZE {content}", f"RETR {content}", f"SIZE {upload}", f"STOR {upload}",
                        f"APPE {upload}", f"RETR {upload}", "RETR /../store.sqlite", "SIZE /",
                        f"STOR {content}", f"DELE {upload}", "LIST", "MKD x", "CWD x", "NLST"):
            with self.subTest(command=command), self.assertRaises(ftplib.Error):
                line.sendcmd(command)
        self.assertEqual(self.size(owner, upload), 4)

    def test_tls_is_required(self) -> None:
        client = self.client()
        plain = ftplib.FTP()
        plain.connect("localhost", self.service.ftp_port, timeout=10)
        with self.assertRaises(ftplib.Error):
            plain.login(client.user, client.password)
        plain.close()
        with client.ftp() as line:
            line.prot_c()
            with self.assertRaises(ftplib.Error):
                line.sendcmd("EPSV")

    def test_cut_upload_resumes_at_what_is_there(self) -> None:
        client = self.fresh("cutter")
        for at, lose in ((0, 0), (1, 0), (16384, 1), (1_000_003, 70_000)):
            number, location = self.open_upload(client, f"u{at}", len(BLOCK))
            self.service.fault(kind="cut_upload", bytes=at, lose=lose)
            with self.assertRaises(BROKEN):
                client.upload(location, BLOCK)
            held = self.size(client, location)
            self.assertEqual(held, at - lose)
            with self.assertRaises(Refused):
                client.finish(number, location, len(BLOCK))
            client.upload(location, BLOCK[held:], "APPE")
            client.finish(number, location, len(BLOCK))
            self.assertEqual(client.get(client.find(f"u{at}")["Location"]), BLOCK)

    def test_cut_download_resumes(self) -> None:
        client = self.fresh("reader")
        client.put("x", BLOCK)
        location = client.find("x")["Location"]
        for at in (0, 1, 16385, 2_999_999):
            got: list[bytes] = []
            self.service.fault(kind="cut_download", bytes=at, path=location)
            with self.assertRaises(BROKEN), client.ftp() as line:
                line.retrbinary(f"RETR {location}", got.append)
            self.assertEqual(b"".join(got), BLOCK[:at])
            self.assertEqual(b"".join(got) + client.get(location, rest=at), BLOCK)
        self.service.fault(kind="stall", bytes=100, seconds=0.3, direction="down")
        self.assertEqual(client.get(location), BLOCK)
        self.service.fault(kind="cut_control", command="SIZE")
        with self.assertRaises(BROKEN):
            self.size(client, location)
        self.assertEqual(self.size(client, location), len(BLOCK))

    def test_one_writer(self) -> None:
        """The old session has bytes on their way when a new one asks, appends, or begins anew."""
        client = self.fresh("writer")
        for index, step in enumerate(("SIZE", "APPE", "STOR", "close")):
            number, location = self.open_upload(client, f"w{index}", 100_000)
            old = client.ftp()
            data = old.transfercmd(f"STOR {location}")
            data.sendall(BLOCK[:50_000])
            file = self.service.data / "transfer" / location[1:]
            end = time.monotonic() + 20
            while file.stat().st_size < 50_000 and time.monotonic() < end:
                time.sleep(0.01)
            if step == "SIZE":
                self.assertEqual(self.size(client, location), 50_000)
            elif step == "close":
                client.finish(number, location, 50_000)
            else:
                client.upload(location, b"new", step)
            with self.assertRaises(BROKEN):
                for _ in range(200):
                    data.sendall(BLOCK[:50_000])
                    time.sleep(0.01)
                data.unwrap()
            data.close()
            with self.assertRaisesRegex(ftplib.Error, "426"):
                old.voidresp()
            old.close()
            expected = {"SIZE": BLOCK[:50_000], "APPE": BLOCK[:50_000] + b"new", "STOR": b"new",
                        "close": BLOCK[:50_000]}[step]
            if step != "close":
                client.finish(number, location, len(expected))
            self.assertEqual(client.get(client.find(f"w{index}")["Location"]), expected)
        self.assertEqual(self.service.stats()["active_uploads"], 0)


class OldTlsAndQuota(ServiceTest):
    options = ("--tls-max", "1.2", "--quota", "100000")

    def test_old_tls_both_ways(self) -> None:
        client = self.fresh("veteran")
        with client.ftp() as line:
            self.assertEqual((line.sock.version(), client.line.sock.version()), ("TLSv1.2", "TLSv1.2"))
        client.put("x", BLOCK[:40_000])
        self.assertEqual(client.get(client.find("x")["Location"]), BLOCK[:40_000])

    def test_quota(self) -> None:
        client = self.fresh("quota")
        with self.assertRaisesRegex(Refused, "space"):
            client.ask("create_and_open_file", dir_id=0, dir_access=0, name="x", size=100_001, is_pro=0)
        self.assertEqual(client.names(), [])
        file = client.put("x", BLOCK[:90_000])
        folder = client.ask("create_dir", dir_id=0, dir_access=0, name="d").all("Directory")[0]
        with self.assertRaisesRegex(Refused, "space"):
            client.ask("copy_file", dst_dir_id=folder["ID"], src_file_id=file["ID"], move=0, is_pro=0)
        location = client.ask("open_file_upload", file_id=file["ID"], size=1, is_pro=0)["TempLocation"]
        with client.ftp() as line:
            with self.assertRaises(OSError), line.transfercmd(f"STOR {location}") as data:
                for _ in range(50):
                    data.sendall(BLOCK)
            with self.assertRaisesRegex(ftplib.Error, "552"):
                line.voidresp()
        info = client.ask("get_storage_info")
        self.assertEqual((info["SpaceUsed"], info["SpaceFree"]), ("90000", "10000"))
