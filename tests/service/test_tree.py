"""The tree, what it shows to the outside, and requests that no client should send."""
from __future__ import annotations

from store_client import Refused

from .harness import ServiceTest


class Tree(ServiceTest):
    def test_trash_restore_and_removal(self) -> None:
        client = self.fresh("trasher")
        top = client.make("top")
        sub = client.make("sub", top)
        early = client.put("early", b"e", sub)
        late = client.put("late", b"late", sub)
        client.ask("move_file_to_trash", file_id=early)
        client.put("early", b"new one", sub)
        with self.assertRaisesRegex(Refused, "already exists"):
            client.ask("restore_file_from_trash", file_id=early)
        client.ask("move_dir_to_trash", dir_id=top)
        self.assertEqual(client.names(), [])
        self.assertEqual([node["Name"] for node in client.ask("list_trash_dir").entries()],
                         ["top", "early"])
        with self.assertRaisesRegex(Refused, "Trash"):
            client.make("x", top)
        client.ask("restore_file_from_trash", file_id=early)
        self.assertEqual(client.names(), ["early"], "its folder is away, so it comes to the root")
        client.ask("move_file_to_trash", file_id=early)
        client.ask("restore_dir_from_trash", dir_id=top)
        self.assertEqual(client.names(sub), ["early", "late"])
        client.ask("move_file_to_trash", file_id=late)
        client.ask("remove_dir", dir_id=top)
        self.assertEqual(sorted(node["Name"] for node in client.ask("list_trash_dir").entries()),
                         ["early", "late"], "what was in the Trash by itself stays")
        client.ask("restore_file_from_trash", file_id=late)
        self.assertEqual(client.content("late"), b"late")
        self.assertEqual(client.ask("get_storage_info")["SpaceUsed"], "5")

        folder = client.make("a copy keeps what is gone")
        client.ask("set_file_price", file_id=late, price="1.5")
        client.ask("copy_file", dst_dir_id=folder, src_file_id=late, move=0)
        client.ask("remove_file", file_id=late)
        self.assertEqual(client.find("late", folder)["Price"], "1.5")
        self.assertEqual(client.content("late", folder), b"late")
        self.assertEqual(client.ask("get_storage_info")["SpaceUsed"], "5")

    def test_links(self) -> None:
        client = self.client("demo")
        pictures, music = client.find("Pictures"), client.find("Music")
        tea = client.find("Tea + cake.png", client.find("Holidays 2026", pictures["ID"])["ID"])
        text = client.find("Plan.pdf", client.find("Documents")["ID"])
        with self.assertRaises(Refused):
            client.post("/qd_thumbnail.php", **client.common, shared_user_id="", file_id=text["ID"])
        other = text["DirectLink"].replace(f"/{text['ID']}/", f"/{tea['ID']}/")
        self.assertNotEqual(other, text["DirectLink"])
        for link, status in ((tea["Link"], 200), (tea["DirectLink"], 206), (music["Link"], 404),
                             (text["Link"], 404), (text["DirectLink"].replace("/d/", "/d/0"), 404),
                             (other, 404), ("/l/none", 404), ("/none", 404)):
            ranged = {"Range": "bytes=1-3"} if status == 206 else {}
            found, headers, body = client.page(link, headers=ranged)
            self.assertEqual(found, status, link)
            self.assertTrue(status != 206 or body == "PNG")
            self.assertEqual(headers["Referrer-Policy"], "no-referrer")
        with self.assertRaisesRegex(Refused, "home"):
            client.ask("remove_dir", dir_id=client.find("My files")["ID"])


    def test_a_public_folder_shows_what_is_public(self) -> None:
        client = self.fresh("shower")
        folder = client.make("<b>Shown & \"more\"")
        client.ask("set_dir_access", dir_id=folder, access=1)
        files = {access: client.put(f"<i>{access}.html", b"<script>alert(1)</script>", folder)
                 for access in (0, 1, 2)}
        for access, number in files.items():
            client.ask("set_file_access", file_id=number, access=access)
        status, headers, page = client.page(client.find("<b>Shown & \"more\"")["Link"])
        self.assertEqual([page.count(f"&lt;i&gt;{access}.html") for access in files], [0, 1, 0])
        for unwanted in ("<b>", "<i>", "<script"):
            self.assertNotIn(unwanted, page)
        self.assertRegex(headers["Content-Security-Policy"], "default-src 'none'.*frame-ancestors 'none'")
        for access, expected in ((0, 404), (1, 200), (2, 200)):
            link = client.find(f"<i>{access}.html", folder)["Link"]
            status, headers, body = client.page(link)
            self.assertEqual(status, expected)
            if status == 200:
                self.assertTrue(headers["Content-Security-Policy"].startswith("sandbox;"))
                self.assertEqual(headers["X-Content-Type-Options"], "nosniff")
        client.ask("move_dir_to_trash", dir_id=folder)
        self.assertEqual([client.page(link)[0]], [404], "what lies in the Trash is shown to nobody")


class Requests(ServiceTest):
    def test_refused_names_and_accounts(self) -> None:
        client = self.fresh("namer")
        for name in ("", "   ", ".", "..", "a/b", "a\\b", "a\nb", "\x7f", "n" * 256,
                     "\U0001f3b5" * 128, "half \ud83c"):
            self.refused(client, "create_dir", dir_id=0, dir_access=0, name=name)
        client.make("n" * 255)
        client.ask("set_dir_description", dir_id=client.make("x"), description="ends in \\")
        self.assertEqual(client.find("x")["Description"], "ends in \\ ")
        good = {"user_name": "newcomer", "passwd": "pass", "verify_passwd": "pass",
                "email": "new@comer.test", "first_name": "N", "last_name": "C"}
        for wrong in ({"verify_passwd": "Pass"}, {"email": "a@b"}, {"user_name": "DEMO"},
                      {"user_name": "Visitor"}, {"passwd": "abc", "verify_passwd": "abc"},
                      {"user_name": "a b"}, {"email": "ANNA@quilldeck.example"}):
            with self.subTest(wrong=wrong), self.assertRaises(Refused):
                client.post("/qd_profile.php", action="new_profile", **good | wrong)
        client.post("/qd_profile.php", action="new_profile", **good)
        self.assertEqual(self.client("new@comer.test", "pass").names(), [])

    def test_requests_that_make_no_sense(self) -> None:
        client = self.client("demo")
        bodies = (b"", b"&&&", b"=", b"action", b"action=list_dir", b"action=list_dir&dir_id=x",
                  b"action=%zz&%=%", bytes(range(256)), b"action=login&user=\xff\xed\xa0&pass=\xc3",
                  b"action=list_dir&dir_id=99999999999999999999&" + b"user_id=" + client.user_id.encode())
        requests = [("/qd_operations.php", body) for body in bodies]
        requests += [("/qd_operations.php", b"action=login&user=\xed\xa0\x80&pass=x"),
                     ("/qd_thumbnail.php", b"user_id=\xed\xb0\x80&user_id_access=&file_id=1")]
        requests += [("/none.php", b"x=1"), ("/qd_operations.php", b"x" * (1 << 21)),
                     ("/qd_profile.php", b"action=x"), ("/qd_thumbnail.php", b"")]
        for path, body in requests:
            with self.subTest(path=path, body=body[:80]):
                error, = client.raw(path, body).all("Error")
                self.assertTrue(error["Type"] == "0" and error["Description"])
                self.assertNotIn(error["Name"], ("", "Store error"))
        self.assertIn("Music", client.names())
