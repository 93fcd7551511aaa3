"""A started store and a client of it in Python: what the Windows client asks, and what it never does."""
from __future__ import annotations

import base64
import ftplib
import hashlib
import http.client
import io
import shutil
import ssl
import tempfile
from pathlib import Path
from urllib.parse import quote, urlencode
from xml.etree import ElementTree

from Cryptodome.Cipher import Blowfish

from with_service import Store

TLS = ssl.create_default_context()
TLS.check_hostname = False
TLS.verify_mode = ssl.CERT_NONE


class Node:
    """An element of a reply."""

    def __init__(self, element: ElementTree.Element) -> None:
        self._element = element
        self.text = element.text or ""

    @classmethod
    def parse(cls, data: bytes) -> Node:
        text = data.decode("utf-8", "replace").replace("&", "&amp;")
        return cls(ElementTree.fromstring(text.replace("\\<", "&lt;").replace("\\>", "&gt;")))

    def __getitem__(self, name: str) -> str:
        return self._element.findtext(name, "")

    def all(self, name: str) -> list[Node]:
        return [Node(child) for child in self._element.findall(name)]

    def entries(self) -> list[Node]:
        return self.all("Directory") + self.all("File")


class Refused(Exception):
    """An Error element of a reply."""

    def __init__(self, node: Node) -> None:
        super().__init__(f"{node['Name']}: {node['Description']}")
        self.kind = int(node["Type"])


class Service(Store):
    """A service in a folder of its own, or in that of one that has ended."""

    def __init__(self, *options: str, folder: Path | None = None) -> None:
        self.folder = folder or Path(tempfile.mkdtemp(prefix="quilldeck-store-"))
        super().__init__(self.folder, *options)
        self.data = self.folder / "data"
        self.port = int(self.facts["https_url"].rpartition(":")[2])
        self.ftp_port = int(self.facts["ftp_url"].rpartition(":")[2])

    def close(self) -> None:
        self.stop()
        shutil.rmtree(self.folder)


class Client:
    """A session of a user, a guest, or nobody; one connection."""

    def __init__(self, service: Service, source: str = "127.0.0.1") -> None:
        self.service = service
        self.line = http.client.HTTPSConnection("127.0.0.1", service.port, context=TLS, timeout=60,
                                                source_address=(source, 0))
        self.common: dict[str, str] = {}

    def login(self, user: str, password: str) -> None:
        self._enter(self.ask("login", user=user, **{"pass": password}), user, password)

    def restore(self) -> None:
        self._enter(self.ask("restore_session"), "0", "0")

    def _enter(self, reply: Node, *key_parts: str) -> None:
        self.user_id = reply["UserID"]
        self.common = {"user_id": self.user_id, "user_id_access": reply["UserAccessID"]}
        digest = hashlib.md5("".join((*key_parts, self.user_id)).encode()).hexdigest()
        plain = Blowfish.new(digest[:24].encode(), Blowfish.MODE_ECB).decrypt(
            base64.b64decode(reply["Data"]))
        data = Node.parse(b"<Result>" + plain.rstrip(b"\0") + b"</Result>")
        self.user, self.password = data["User"], data["Pass"]

    def raw(self, path: str, body: bytes) -> Node:
        self.line.request("POST", "/v1" + path, body)
        return Node.parse(self.line.getresponse().read())

    def page(self, link: str, form: dict[str, str] | None = None,
             headers: dict[str, str] | None = None) -> tuple[int, http.client.HTTPMessage, str]:
        """What a browser gets for a link, or for a form that is sent there."""
        self.line.request("GET" if form is None else "POST", link.split(str(self.service.port))[-1],
                          None if form is None else urlencode(form),
                          headers or {"Content-Type": "application/x-www-form-urlencoded"})
        answer = self.line.getresponse()
        return answer.status, answer.headers, answer.read().decode("utf-8", "replace")

    def post(self, path: str, /, **params: object) -> Node:
        body = "&".join(f"{key}={quote(str(value), safe='', errors='surrogatepass')}"
                        for key, value in params.items())
        reply = self.raw(path, body.encode())
        if reply.all("Error"):
            raise Refused(reply.all("Error")[0])
        return reply

    def ask(self, action: str, **params: object) -> Node:
        return self.post("/qd_operations.php", action=action, **params, **self.common)

    def make(self, name: str, dir_id: object = 0) -> str:
        """A new folder; returns its number."""
        return self.ask("create_dir", dir_id=dir_id, dir_access=0,
                        name=name).all("Directory")[0]["ID"]

    def names(self, dir_id: object = 0, **road: object) -> list[str]:
        return [node["Name"] for node in self.ask("list_dir", dir_id=dir_id, **road).entries()]

    def find(self, name: str, dir_id: object = 0, **road: object) -> Node:
        listed = self.ask("list_dir", dir_id=dir_id, **road).entries()
        return next(node for node in listed if node["Name"] == name)

    def ftp(self) -> ftplib.FTP_TLS:
        line = ftplib.FTP_TLS(context=TLS)
        line.connect("localhost", self.service.ftp_port, timeout=60)
        line.login(self.user, self.password)
        line.prot_p()
        line.voidcmd("TYPE I")
        return line

    def begin(self, name: str, size: int, dir_id: object = 0, **road: object) -> tuple[str, str]:
        """A new file and the location of its upload."""
        file = self.ask("create_and_open_file", **road, dir_id=dir_id, dir_access=0, name=name,
                        size=size).all("File")[0]
        return file["ID"], file["TempLocation"]

    def reopen(self, file_id: str) -> str:
        """The location of an upload to a file that is there."""
        return self.ask("open_file_upload", file_id=file_id, size=0)["TempLocation"]

    def put(self, name: str, data: bytes, dir_id: object = 0, **road: object) -> str:
        """A new file with these bytes; returns its number."""
        number, location = self.begin(name, len(data), dir_id, **road)
        self.upload(location, data)
        self.finish(number, location, len(data), **road)
        return number

    def upload(self, location: str, data: bytes, command: str = "STOR") -> None:
        with self.ftp() as line:
            line.storbinary(f"{command} {location}", io.BytesIO(data))

    def finish(self, file_id: str, location: str, size: int, **road: object) -> Node:
        return self.ask("close_file_upload", **road, file_id=file_id, temp_location=location,
                        file_time=1234567890, file_size=size)

    def get(self, location: str) -> bytes:
        data = io.BytesIO()
        with self.ftp() as line:
            line.retrbinary(f"RETR {location}", data.write)
        return data.getvalue()

    def content(self, name: str, dir_id: object = 0) -> bytes:
        return self.get(self.find(name, dir_id)["Location"])
