"""A started service and a client of it that speaks the wire as the Windows client does."""
from __future__ import annotations

import atexit
import base64
import ftplib
import functools
import hashlib
import http.client
import io
import json
import shutil
import signal
import socket
import ssl
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

from Cryptodome.Cipher import Blowfish

ROOT = Path(__file__).resolve().parents[2]
ESCAPED = set('"#%&+/<>?[\\]^`{|}')
TLS = ssl.create_default_context()
TLS.check_hostname = False
TLS.verify_mode = ssl.CERT_NONE


def encode(text: str) -> bytes:
    """A form value as the client writes it, unit of UTF-16 by unit."""
    units = text.encode("utf-16-le", "surrogatepass")
    out = bytearray()
    for low, high in zip(units[::2], units[1::2]):
        c = low | high << 8
        if c <= 0x80:
            out += b"%%%02X" % c if chr(c) in ESCAPED else bytes((c,))
        elif c <= 0x7FF:
            out += bytes((0xC0 + (c >> 6), 0x80 + (c & 0x3F)))
        elif c != 0x800:
            out += bytes((0xE0 + (c >> 12), 0x80 + ((c >> 6) & 0x3F), 0x80 + (c & 0x3F)))
    return bytes(out)


def decode(data: bytes) -> str:
    """A reply as the client reads it: four-byte sequences lose their upper bits."""
    units, i = [], 0
    while i < len(data):
        b = data[i]
        size = next(n for n, end in ((1, 0x80), (0, 0xC0), (2, 0xE0), (3, 0xF0), (4, 0x100)) if b < end)
        if size:
            c = b if size == 1 else b & (0xFF >> (size + 1))
            for follow in data[i + 1:i + size]:
                c = c << 6 | follow & 0x3F
            units.append(c & 0xFFFF)
        i += size or 1
    return b"".join(c.to_bytes(2, "little") for c in units).decode("utf-16-le", "surrogatepass")


class Node:
    """An element of a reply, parsed by the client's rules."""

    def __init__(self, text: str, at: int = 0) -> None:
        start, end = self._tag(text, at)
        self.name = text[start + 1:end]
        self.children: list[Node] = []
        first = at = end + 1
        while True:
            start, end = self._tag(text, at)
            if text[start + 1] == "/" and end - start > 1:
                break
            child = Node(text, start)
            self.children.append(child)
            at = child.end
        self.end = end + 1
        self.text = "" if self.children else (
            text[first:start].replace("\\<", "<").replace("\\>", ">"))

    @staticmethod
    def _tag(text: str, at: int) -> tuple[int, int]:
        def bracket(sign: str, origin: int) -> int:
            i = text.find(sign, origin)
            while i > origin and text[i - 1] == "\\":
                i = text.find(sign, i + 1)
            if i < 0:
                raise ValueError("a bracket is missing")
            return i
        start = bracket("<", at)
        return start, bracket(">", start)

    def __getitem__(self, name: str) -> str:
        return next((child.text for child in self.children if child.name == name), "")

    def all(self, name: str) -> list[Node]:
        return [child for child in self.children if child.name == name and child.children]


class Refused(Exception):
    """An Error element of a reply."""

    def __init__(self, node: Node) -> None:
        super().__init__(f"{node['Name']}: {node['Description']}")
        self.kind = int(node["Type"])


class Service:
    """A service of its own process in a folder of its own."""

    def __init__(self, *options: str, data: Path | None = None) -> None:
        self.folder = Path(tempfile.mkdtemp(prefix="quilldeck-store-"))
        self.data = data or self.folder / "data"
        self.options = options
        self.start()

    def start(self) -> None:
        ready = self.folder / "ready"
        self.process = subprocess.Popen(
            [sys.executable, str(ROOT / "service" / "quilldeck_service.py"), "--data", str(self.data),
             "--https-port", "0", "--ftp-port", "0", "--demo", "--test-control",
             "--ready-file", str(ready), *self.options], stdout=subprocess.DEVNULL)
        end = time.monotonic() + 60
        while not ready.exists():
            if self.process.poll() is not None or time.monotonic() > end:
                raise RuntimeError("the service did not start")
            time.sleep(0.02)
        self.facts = json.loads(ready.read_text())
        self.port = int(self.facts["https_url"].rpartition(":")[2])
        self.ftp_port = int(self.facts["ftp_url"].rpartition(":")[2])

    def stop(self, number: int = signal.SIGTERM) -> int:
        self.process.send_signal(number)
        return self.process.wait(30)

    def close(self) -> None:
        if self.process.poll() is None:
            self.stop()
        shutil.rmtree(self.folder)

    def connect(self) -> http.client.HTTPSConnection:
        return http.client.HTTPSConnection("localhost", self.port, context=TLS, timeout=60)

    def control(self, path: str, body: str | None = None) -> bytes:
        line = self.connect()
        line.request("GET" if body is None else "POST", "/_control/" + path, body)
        answer = line.getresponse()
        data = answer.read()
        line.close()
        if answer.status != 200:
            raise ValueError(data.decode())
        return data

    def fault(self, **fault: object) -> None:
        self.control("fault", "&".join(f"{name}={value}" for name, value in fault.items()))

    def stats(self) -> dict[str, int]:
        return {line.split()[0]: int(line.split()[1])
                for line in self.control("stats").decode().splitlines()}


class Client:
    """A session of a user, a guest, or nobody; one connection."""

    def __init__(self, service: Service, user: str = "", password: str = "") -> None:
        self.service = service
        self.line = service.connect()
        self.common: list[tuple[str, str]] = []
        self.prefix = self.post("/qd_get_path.php", version="1.3.14.1")["Path"]
        if user:
            try:
                self.login(user, password)
            except Refused:
                self.line.close()
                raise

    def login(self, user: str, password: str) -> Node:
        reply = self.ask("login", user=user, **{"pass": password}, version="1.3.14.1",
                         pro_version="", pcid="test")
        self._enter(reply, (user, password, reply["UserID"]))
        return reply

    def restore(self) -> Node:
        reply = self.ask("restore_session")
        self._enter(reply, ("0", "0", self.user_id))
        return reply

    def _enter(self, reply: Node, key_parts: tuple[str, str, str]) -> None:
        self.user_id = reply["UserID"]
        self.common = [("user_id", self.user_id), ("user_id_access", reply["UserAccessID"]),
                       ("user_lang", reply["UserLang"]), ("user_level", reply["UserLevel"])]
        key = hashlib.md5("".join(key_parts).encode()).hexdigest()[:24].encode()
        plain = Blowfish.new(key, Blowfish.MODE_ECB).decrypt(base64.b64decode(reply["Data"]))
        data = Node("<Result>" + plain.rstrip(b"\0").decode() + "</Result>")
        self.host, self.user, self.password = data["Host"], data["User"], data["Pass"]

    def raw(self, path: str, body: bytes) -> bytes:
        self.line.request("POST", path, body, {"Content-Type": "application/x-www-form-urlencoded"})
        return self.line.getresponse().read()

    def post(self, path: str, /, **params: object) -> Node:
        body = b"&".join(encode(key) + b"=" + encode(str(value)) for key, value in params.items())
        reply = Node(decode(self.raw(path, body)))
        if reply.all("Error"):
            raise Refused(reply.all("Error")[0])
        return reply

    def ask(self, action: str, **params: object) -> Node:
        first = {} if "dst_dir_id" in params else {"action": action}
        last = {"action": action} if "dst_dir_id" in params else {}
        return self.post(self.prefix + "/qd_operations.php", **first, **params, **last,
                         **dict(self.common))

    def names(self, dir_id: object = 0, **road: object) -> list[str]:
        reply = self.ask("list_dir", dir_id=dir_id, **road)
        return [node["Name"] for node in reply.all("Directory") + reply.all("File")]

    def find(self, name: str, dir_id: object = 0, **road: object) -> Node:
        reply = self.ask("list_dir", dir_id=dir_id, **road)
        return next(node for node in reply.all("Directory") + reply.all("File")
                    if node["Name"] == name)

    def ftp(self) -> ftplib.FTP_TLS:
        line = ReusingFtp(context=TLS)
        line.connect("localhost", self.service.ftp_port, timeout=60)
        line.login(self.user, self.password)
        line.prot_p()
        line.voidcmd("TYPE I")
        return line

    def put(self, name: str, data: bytes, dir_id: object = 0, date: int = 1234567890,
            **road: object) -> Node:
        """A new file with these bytes."""
        node = self.ask("create_and_open_file", **road, dir_id=dir_id, dir_access=0, name=name,
                        size=len(data), is_pro=0).all("File")[0]
        self.upload(node["TempLocation"], data)
        self.finish(node["ID"], node["TempLocation"], len(data), date, **road)
        return node

    def upload(self, location: str, data: bytes, command: str = "STOR") -> None:
        with self.ftp() as line:
            line.storbinary(f"{command} {location}", io.BytesIO(data))

    def finish(self, file_id: str, location: str, size: int, date: int = 1234567890,
               **road: object) -> None:
        self.ask("close_file_upload", **road, file_id=file_id, temp_location=location,
                 file_time=date, file_size=size, is_pro=0)

    def get(self, location: str, rest: int | None = None) -> bytes:
        parts: list[bytes] = []
        with self.ftp() as line:
            line.retrbinary(f"RETR {location}", parts.append, rest=rest)
        return b"".join(parts)


class ReusingFtp(ftplib.FTP_TLS):
    """Resumes the control connection's TLS session on data connections, as libcurl does."""

    def ntransfercmd(self, cmd: str, rest: object = None) -> tuple[socket.socket, int | None]:
        line, size = ftplib.FTP.ntransfercmd(self, cmd, rest)
        return self.context.wrap_socket(line, server_hostname=self.host,
                                        session=self.sock.session), size


@functools.cache
def shared_service(*options: str) -> Service:
    """One service for all cases with the same options; a start costs more than a case."""
    service = Service(*options)
    atexit.register(service.close)
    return service


class ServiceTest(unittest.TestCase):
    """Cases that use the shared service, each with accounts of its own where it writes."""

    options: tuple[str, ...] = ()

    @classmethod
    def setUpClass(cls) -> None:
        cls.service = shared_service(*cls.options)

    def setUp(self) -> None:
        self.service.control("reset", "")

    def client(self, user: str = "demo", password: str | None = None) -> Client:
        client = Client(self.service, user, user if password is None else password)
        self.addCleanup(client.line.close)
        return client

    def fresh(self, name: str) -> Client:
        """A new account with an empty store."""
        client = Client(self.service)
        self.addCleanup(client.line.close)
        client.post("/v1/qd_profile.php", action="new_profile", user_name=name, passwd=name,
                    verify_passwd=name, email=f"{name}@example.test", first_name="", last_name="")
        client.login(name, name)
        return client
