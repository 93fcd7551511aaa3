"""Bad input at both doors: what is sent is made from good requests by chance."""
from __future__ import annotations

import contextlib
import http.client
import random
import re
import socket
import ssl
import time
from pathlib import Path

from ground import Ground
from store_client import TLS, Client

ACTIONS = (
    "login restore_session list_dir list_trash_dir get_dir_path set_dir_description set_dir_access "
    "rename_dir rename_file move_dir_to_trash move_file_to_trash remove_dir remove_file create_dir "
    "restore_dir_from_trash restore_file_from_trash create_file create_and_open_file get_file_path "
    "set_file_description set_file_access set_file_price set_file_date copy_file open_file_upload "
    "close_file_upload open_file_download close_file_download has_share_folders list_shared_users "
    "list_shared_directories get_userid_by_name get_userid_by_email share_folder new_profile none "
    "change_folder_share_mode delete_sharing_with_user list_share_whith_users set_pro_setting "
    "get_user_notifications get_storage_info get_pro_settings").split()
NAMES = (
    "dir_id file_id dir_access name new_name size access price description file_datetime dst_dir_id "
    "src_file_id move temp_location file_time file_size share_user_id share_id access_dir_id email "
    "sharewithuser_id sharemode sharedfolder_id setting_name setting_value setting_type user pass "
    "user_id user_id_access src_share_id dst_share_user_id shared_user_id user_name passwd "
    "verify_passwd").split()
VALUES = (
    b"", b"0", b"1", b"2", b"-1", b"7", b"12", b"99999999999999999999", b"9223372036854775807", b"1e308",
    b"nan", b"inf", b"0x10", b"1.5", b"..", b"../..", b"/", b"a%2fb", b"a%5cb", b"%00", b"\x00", b"\xff\xfe",
    b"\xed\xa0\x80", b"\xed\xb0\x80\xed\xa0\x80", b"\x80", b"n" * 300, b"'; DROP TABLE users; --", b"{}",
    b"a@b.cd", b"a@b.cd%0d%0aBcc:x@y.zz", b"demo", b"anna", b"<b>\\", b"%", b"%zz", b"&", b"=", b"True",
    b"/u" + b"0" * 32, b"/f" + b"f" * 32, "Zoë 🎉 שלום".encode())
PATHS = ("/v1/qd_operations.php /v1/qd_email.php /v1/qd_profile.php /v1/qd_thumbnail.php "
         "/qd_get_path.php /i/x/accept /i/x/register /v1/none /").split()
LINKS = ("/l/x", "/l/" + "x" * 70, "/d/1-" + "0" * 32 + "/7/a", "/d/999999999999999999-" + "f" * 32 + "/1/",
         "/i/x", "/i/..%2f..", "/l/..%2f..%2fstore.sqlite", "/%00", "/l/%ff", "//", "/d/1/2/3", "/../../etc/passwd")
COMMANDS = ("USER PASS AUTH PBSZ PROT TYPE SIZE REST RETR STOR APPE EPSV PASV STAT ABOR ALLO CWD PWD "
            "FEAT HELP MODE NOOP OPTS REIN STRU SYST LIST NLST MLSD MLST DELE RNFR RNTO MKD RMD SITE PORT "
            "EPRT STOU XPWD XCWD CDUP QUIT").split()
LOCATION = re.compile(r"[fu][0-9a-f]{32}(\.part)?")


class Nonsense:
    """Sends it, as nobody or as a user, and counts what came back."""

    def __init__(self, ground: Ground, seed: int) -> None:
        self._ground = ground
        self._dice = random.Random(seed)
        self.client = Client(ground)
        self.client.login("demo", "demo")
        self._known = [self.client.begin(f"known{n}", 1)[1].encode() for n in range(3)]
        self._known.append(self.client.find("Old.bin")["Location"].encode())
        self.answers = 0

    def _value(self) -> bytes:
        dice = self._dice.random()
        if dice < 0.6:
            return self._dice.choice(VALUES)
        if dice < 0.8:
            return str(self._dice.randrange(1, 60)).encode()
        if dice < 0.9:
            return self._dice.choice(self._known)
        return self._dice.randbytes(self._dice.randrange(60))

    def body(self) -> bytes:
        """A form as a client sends it, with some of its parts wrong."""
        pairs = [(b"action", self._dice.choice(ACTIONS).encode())]
        pairs += [(self._dice.choice(NAMES).encode(), self._value())
                  for _ in range(self._dice.randrange(7))]
        if self._dice.random() < 0.8:
            pairs += [(key.encode(), value.encode()) for key, value in self.client.common.items()]
        data = bytearray(b"&".join(key + b"=" + value for key, value in pairs))
        for _ in range(self._dice.choice((0, 0, 0, 1, 3))):
            if data:
                data[self._dice.randrange(len(data))] = self._dice.randrange(256)
        return bytes(data)

    def multipart(self) -> tuple[str, bytes]:
        """A form in parts, which no endpoint here reads."""
        parts = [b"--x\r\nContent-Disposition: form-data; name=\"" + self._value() + b"\"; filename=\""
                 + self._value() + b"\"\r\n\r\n" + self._value() + b"\r\n"
                 for _ in range(self._dice.randrange(4))]
        return "multipart/form-data; boundary=x", b"".join(parts) + self._dice.choice((b"--x--", b"", b"--x"))

    def post(self) -> None:
        """One request, well formed as HTTP goes."""
        kind, body = "application/x-www-form-urlencoded", self.body()
        if self._dice.random() < 0.2:
            kind, body = self.multipart()
        if self._dice.random() < 0.05:
            self._move()
        line = self.client.line
        path = self._dice.choice(PATHS) if self._dice.random() < 0.5 else PATHS[0]
        if self._dice.random() < 0.15:
            line.request("GET", self._dice.choice(LINKS), headers={"Range": self._dice.choice(
                ("bytes=0-", "bytes=9-1", "x", "bytes=-99999999999999999999"))})
        else:
            line.request("POST", path, body, {"Content-Type": kind})
        line.getresponse().read()
        self.answers += 1

    def _move(self) -> None:
        """Goes on from another address, since the wrong passwords among it count by address."""
        old = self.client
        old.line.close()
        self.client = Client(self._ground, f"127.0.3.{self._dice.randrange(1, 250)}")
        self.client.common, self.client.user, self.client.password = old.common, old.user, old.password

    def raw(self) -> None:
        """Bytes that may be no HTTP at all."""
        start = self._dice.choice((b"GET / HTTP/1.1\r\n", b"POST /v1/qd_operations.php HTTP/1.1\r\n",
                                   b"PUT " + self._value() + b" HTTP/9.9\r\n", b"\x16\x03\x01", b""))
        headers = b"".join(self._dice.choice((
            b"Host: x\r\n", b"Content-Length: -1\r\n", b"Content-Length: 5\r\n", b"Upgrade: websocket\r\n",
            b"Transfer-Encoding: chunked\r\n", b"Connection: upgrade\r\n", b"X: " + b"y" * 9000 + b"\r\n",
            self._value() + b": " + self._value() + b"\r\n")) for _ in range(self._dice.randrange(4)))
        with self._line(self._ground.port) as plain, TLS.wrap_socket(plain) as line:
            line.sendall(start + headers + b"\r\n" + self._value())
            line.settimeout(0.2)
            line.recv(4096)
            self.answers += 1

    def _line(self, port: int) -> socket.socket:
        return socket.create_connection(("127.0.0.1", port), 10,
                                        (f"127.0.2.{self._dice.randrange(1, 250)}", 0))

    def ftp(self) -> None:
        """A session of a few commands, signed in or not, each with arguments by chance."""
        with contextlib.ExitStack() as stack:
            line: socket.socket = stack.enter_context(self._line(self._ground.ftp_port))
            line.recv(300)
            if self._dice.random() < 0.8:
                line.sendall(b"AUTH TLS\r\n")
                line.recv(300)
                line = stack.enter_context(TLS.wrap_socket(line))
                if self._dice.random() < 0.8:
                    line.sendall(f"USER {self.client.user}\r\nPASS {self.client.password}\r\n".encode())
                    line.recv(300)
                    line.sendall(b"PBSZ 0\r\nPROT P\r\n")
            line.settimeout(0.3)
            for _ in range(self._dice.randrange(1, 10)):
                command = self._dice.choice(COMMANDS).encode() + b" " * self._dice.choice((0, 1, 1, 1, 2))
                command += self._value() if self._dice.random() < 0.8 else b""
                if self._dice.random() < 0.1:
                    command = self._dice.choice((b"x", b"\xff\xf4\xf2", b"\x00", b"x" * 5000)) + command
                line.sendall(command + b"\r\n")
                with contextlib.suppress(TimeoutError, ssl.SSLWantReadError):
                    line.recv(4096)
                    self.answers += 1


def _strays(ground: Ground) -> list[str]:
    """Files where none should be."""
    known = {"ready.json", "service.log", "data/service.pem", "data/lock", "data/collect.lock"}
    known |= {f"data/store.sqlite{end}" for end in ("", "-wal", "-shm")}
    strays = []
    for path in ground.folder.rglob("*"):
        name = str(path.relative_to(ground.folder))
        folder = Path(name).parent.as_posix()
        if path.is_dir() or name in known or folder in ("data/outbox", "data/thumbnails"):
            continue
        if folder != "data/transfer" or not LOCATION.fullmatch(path.name):
            strays.append(name)
    return strays


def run(requests: int) -> bool:
    """Sends so many at each door; True when the store stayed as it was."""
    ground = Ground()
    begin = time.monotonic()
    try:
        first = Client(ground)
        first.login("demo", "demo")
        first.put("Old.bin", b"old")
        nonsense = Nonsense(ground, 5)
        memory = []
        for number in range(requests):
            for send in (nonsense.post, nonsense.ftp if number % 4 == 0 else nonsense.post,
                         nonsense.raw if number % 4 == 1 else nonsense.post):
                try:
                    send()
                except (OSError, http.client.HTTPException, EOFError):
                    nonsense.client.line.close()
            if number % max(requests // 10, 1) == 0:
                memory.append(ground.resident())
        first.line.close()
        nonsense.client.line.close()
        after = Client(ground, "127.0.0.3")
        after.login("anna", "anna")
        problems = ground.complaints() + [f"a file outside its folder: {name}" for name in _strays(ground)]
        if "Diary" not in after.names():
            problems.append("another account's folder is gone")
        after.line.close()
        # The first tenth fills caches, and the hashing threads keep their 16 MiB each when they first
        # had them; what grows from the middle on by more would grow for ever.
        growth = memory[-1] - memory[len(memory) // 2]
        if growth > 40 << 10:
            problems.append(f"the memory grows: {memory} KiB")
        for problem in problems[:20]:
            print(f"  {problem}")
        print(f"nonsense: {requests} rounds in {time.monotonic() - begin:.0f} s, {nonsense.answers} "
              f"answers; memory of both processes from {memory[0] >> 10} over "
              f"{memory[len(memory) // 2] >> 10} to {memory[-1] >> 10} MiB; {len(problems)} problems")
        return not problems
    finally:
        ground.close()
