"""Encodings, the envelope, and requests that no client should send."""
from __future__ import annotations

import unittest

from .harness import Node, Refused, ServiceTest, decode

AWKWARD = ("two  blanks", "a&b=c", "100%", "1+1", "#[x]^`{|}?", '"quoted" <tag> \u00e9', "\u0080 low",
           "\u07ff\u0801\uffee", "\U0001f3b5 pair \U0010fffd", "Cafe\u0301", " leads and trails ")


class Wire(ServiceTest):
    def test_names_come_back_as_they_went(self) -> None:
        client = self.fresh("encoder")
        for name in AWKWARD:
            made = client.ask("create_dir", dir_id=0, dir_access=0, name=name).all("Directory")[0]
            self.assertEqual(made["Name"], name)
        self.assertEqual(sorted(client.names()), sorted(AWKWARD))
        log = self.service.control("log")
        self.assertIn(b"&name=\x80 low&", log)
        self.assertIn(b"&name=%23%5Bx%5D%5E%60%7B%7C%7D%3F&", log)
        self.assertIn(b"&name=\xed\xa0\xbc\xed\xbe\xb5 pair \xed\xaf\xbf\xed\xbf\xbd&", log)

    def test_dropped_character_and_bare_signs(self) -> None:
        client = self.fresh("signs")
        client.ask("create_dir", dir_id=0, dir_access=0, name="a\u0800b")
        common = "&".join("=".join(pair) for pair in client.common).encode()
        client.raw("/v1/qd_operations.php",
                   b"action=create_dir&dir_id=0&dir_access=0&name=1+1&" + common)
        self.assertEqual(client.names(), ["1+1", "ab"])

    def test_values_that_could_break_the_document(self) -> None:
        client = self.fresh("breaker")
        number = client.ask("create_dir", dir_id=0, dir_access=0, name="x").all("Directory")[0]["ID"]
        for text, expected in (("\\", "\\ "), ("<", "<"), ("a\\<b\\>c", "a\\<b\\>c"), ("end\\", "end\\ "),
                               ("</Description></Directory>", "</Description></Directory>"),
                               ("\\\\<\n\r\t\x01>", "\\\\<\n\r\t\x01>"), ("", "")):
            client.ask("set_dir_description", dir_id=number, description=text)
            self.assertEqual(client.find("x")["Description"], expected)

    def test_refused_names(self) -> None:
        client = self.fresh("namer")
        for name in ("", "   ", ".", "..", "a/b", "a\\b", "a\nb", "\x7f", "n" * 256,
                     "\U0001f3b5" * 128, "half \ud83c"):
            with self.subTest(name=name), self.assertRaises(Refused) as caught:
                client.ask("create_dir", dir_id=0, dir_access=0, name=name)
            self.assertEqual(caught.exception.kind, 0)
        client.ask("create_dir", dir_id=0, dir_access=0, name="n" * 255)
        self.assertEqual(client.names(), ["n" * 255])

    def test_requests_that_make_no_sense(self) -> None:
        client = self.client()
        bodies = (b"", b"&&&", b"=", b"action", b"action=list_dir", b"action=list_dir&dir_id=x",
                  b"action=%zz&%=%", bytes(range(256)), b"action=login&user=\xff\xed\xa0&pass=\xc3",
                  b"action=list_dir&dir_id=99999999999999999999&" + b"user_id=" + client.user_id.encode())
        for body in bodies:
            with self.subTest(body=body):
                reply = Node(decode(client.raw("/v1/qd_operations.php", body)))
                error = reply.all("Error")[0]
                self.assertEqual(error["Type"], "0")
                self.assertTrue(error["Name"] and error["Description"])
                self.assertNotEqual(error["Name"], "Store error")
        for path, body in (("/v1/none.php", b"x=1"), ("/qd_operations.php", b"action=login"),
                           ("/v1/qd_operations.php", b"x" * (1 << 21)),
                           ("/v1/qd_profile.php", b"action=x"), ("/v1/qd_thumbnail.php", b"")):
            reply = Node(decode(client.raw(path, body)))
            self.assertTrue(reply.all("Error")[0]["Description"])
        self.assertIn("Music", client.names())

    def test_login_restore_and_the_enciphered_account(self) -> None:
        client = self.client()
        first = (client.host, client.user, client.password)
        self.assertEqual(first[0], self.service.facts["ftp_url"])
        again = client.restore()
        self.assertEqual(again["UserID"], client.user_id)
        self.assertEqual((client.host, client.user, client.password), first)
        self.assertLessEqual(len(client.user_id), 63)
        client.line.close()
        with self.assertRaisesRegex(Refused, "wrong"):
            self.client("demo", "wrong")
        with self.assertRaisesRegex(Refused, "wrong"):
            self.client("nobody", "")
        client.common[0] = ("user_id", client.user_id[:-1] + "!")
        with self.assertRaisesRegex(Refused, "Not signed in"):
            client.names()


if __name__ == "__main__":
    unittest.main()
