"""Bytes: who may touch which location and when, and what a full store refuses."""
from __future__ import annotations

import contextlib
import ftplib
import os
import socket
import time
from collections.abc import Callable
from concurrent.futures import ThreadPoolExecutor

from OpenSSL import SSL
from quilldeck_store.ftp_session import make_context
from store_client import TLS, Refused

from .harness import ServiceTest

BLOCK = os.urandom(3_000_001)
BROKEN = (OSError, EOFError, ftplib.Error)


class Transfer(ServiceTest):
    def test_close_is_refused_and_loses_nothing(self) -> None:
        client = self.fresh("refused")
        file = client.put("x", b"old content")
        other, foreign = client.begin("y", 5)
        location = client.reopen(file)
        client.upload(location, b"hello")
        for number, place, size in ((file, location, 6), (file, location, 4), (file, foreign, 0),
                                    (other, location, 5), (file, "/../store.sqlite", 5), (file, "", 0)):
            self.refused(client, "close_file_upload", file_id=number, temp_location=place,
                         file_time=0, file_size=size)
        self.assertEqual(client.content("x"), b"old content")
        client.upload(location, b" you", "APPE")
        client.finish(file, location, 9)
        told = client.finish(file, location, 9)
        opened, listed = client.ask("open_file_download", file_id=file), client.find("x")
        for name in ("Location", "Size", "DateModified"):
            self.assertEqual({told[name], opened[name]}, {listed[name]})
        self.assertEqual(client.content("x"), b"hello you")
        with self.assertRaises(BROKEN):
            client.upload(location, b"late", "APPE")
        self.assertEqual(client.find("y")["Size"], "0")

    def test_replaced_content_stays_for_who_reads_it(self) -> None:
        client = self.fresh("replacer")
        file = client.put("x", b"first")
        old = client.find("x")["Location"]
        client.ask("open_file_download", file_id=file)
        location = client.reopen(file)
        client.upload(location, b"second")
        client.finish(file, location, 6)
        self.assertEqual(client.get(old), b"first")
        self.assertEqual(client.content("x"), b"second")
        client.ask("remove_file", file_id=file)
        self.assertEqual(client.get(old), b"first")
        client.ask("close_file_download", file_id=file)
        with self.assertRaises(BROKEN):
            client.get(old)

    def test_locations_belong_to_their_account(self) -> None:
        owner, thief = self.fresh("owner"), self.fresh("thief")
        owner.put("x", b"mine")
        content = owner.find("x")["Location"]
        _, upload = owner.begin("y", 4)
        owner.upload(upload, b"mine")
        plain = ftplib.FTP()
        self.addCleanup(plain.close)
        plain.connect("localhost", self.service.ftp_port, timeout=10)
        with self.assertRaises(ftplib.Error):
            plain.login(owner.user, owner.password)
        line = thief.ftp()
        self.addCleanup(line.close)
        line.prot_c()
        for command in (f"SIZE {content}", f"RETR {content}", f"SIZE {upload}", f"STOR {upload}",
                        f"APPE {upload}", f"RETR {upload}", "RETR /../store.sqlite", "SIZE /",
                        f"STOR {content}", f"DELE {upload}", "LIST", "MKD x", "EPSV"):
            with self.subTest(command=command), self.assertRaises(ftplib.Error):
                line.sendcmd(command)
        with owner.ftp() as own:
            self.assertEqual(own.size(upload), 4)

    def test_one_writer(self) -> None:
        """The old session has bytes on their way when a new one asks, appends, or begins anew."""
        client = self.fresh("writer")
        half = BLOCK[:50_000]
        for step, expected in (("SIZE", half), ("APPE", half + b"new"), ("STOR", b"new"),
                               ("close", half)):
            number, location = client.begin(step, 100_000)
            old = client.ftp()
            data = old.transfercmd(f"STOR {location}")
            data.sendall(half)
            file = self.service.data / "transfer" / location[1:]
            end = time.monotonic() + 20
            while file.stat().st_size < len(half) and time.monotonic() < end:
                time.sleep(0.01)
            if step == "SIZE":
                with client.ftp() as line:
                    self.assertEqual(line.size(location), len(half))
            elif step == "close":
                client.finish(number, location, len(half))
            else:
                client.upload(location, b"new", step)
            with self.assertRaises(BROKEN):
                for _ in range(200):
                    data.sendall(half)
                    time.sleep(0.01)
                data.unwrap()  # type: ignore[attr-defined]  # the context makes it one of TLS
            data.close()
            with self.assertRaisesRegex(ftplib.Error, "426"):
                old.voidresp()
            old.close()
            client.finish(number, location, len(expected))
            self.assertEqual(client.content(step), expected)

    def test_a_record_that_did_not_fit_is_sent_from_another_address(self) -> None:
        """As it is to a slow reader, for whom the record is read from the file once more."""
        ours, theirs = socket.socketpair()
        ours.setblocking(False)
        sender = SSL.Connection(make_context(str(self.service.data / "service.pem"), "1.3"), ours)
        sender.set_accept_state()
        record, again = BLOCK[:16384], bytes(bytearray(BLOCK[:16384]))

        def patiently(step: Callable[[], object]) -> None:
            while True:
                try:
                    step()
                    return
                except (SSL.WantReadError, SSL.WantWriteError):
                    time.sleep(0.001)
        with ThreadPoolExecutor(1) as thread, contextlib.closing(ours):
            reader = thread.submit(TLS.wrap_socket, theirs)
            patiently(sender.do_handshake)
            with self.assertRaises(SSL.WantWriteError):
                while True:
                    sender.send(record)
            received = thread.submit(reader.result().recv, 16384)
            patiently(lambda: sender.send(again))
            self.assertEqual(received.result(), record)
            reader.result().close()


class Quota(ServiceTest):
    options = ("--quota", "100000")

    def test_an_account_has_what_the_host_allows(self) -> None:
        client = self.fresh("quota")
        with self.assertRaisesRegex(Refused, "space"):
            client.begin("x", 100_001)
        self.assertEqual(client.names(), [])
        client.put("x", BLOCK[:90_000])
        info = client.ask("get_storage_info")
        self.assertEqual((info["SpaceUsed"], info["SpaceFree"]), ("90000", "10000"))
