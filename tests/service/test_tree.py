"""The tree: clashes, Trash, copies, quota, the account's own requests."""
from __future__ import annotations

from .harness import Refused, ServiceTest


class Tree(ServiceTest):
    def clash(self, client: object, action: str, **params: object) -> None:
        with self.assertRaises(Refused) as caught:
            client.ask(action, **params)
        self.assertEqual(caught.exception.kind, 1, str(caught.exception))

    def test_clashes_fold_ascii_only_and_span_kinds(self) -> None:
        client = self.fresh("clasher")
        folder = client.ask("create_dir", dir_id=0, dir_access=0, name="Abc É").all("Directory")[0]
        self.clash(client, "create_dir", dir_id=0, dir_access=0, name="aBC É")
        self.clash(client, "create_file", dir_id=0, dir_access=0, name="abc É", size=0, is_pro=0)
        file = client.put("abc é", b"1")
        self.clash(client, "rename_file", new_name="ABC É", file_id=file["ID"])
        client.ask("rename_file", new_name="ABC é", file_id=file["ID"])
        client.ask("rename_dir", new_name="ABC É", dir_id=folder["ID"])
        self.assertEqual(client.names(), ["ABC É", "ABC é"])

    def test_trash_restore_and_removal(self) -> None:
        client = self.fresh("trasher")
        top = client.ask("create_dir", dir_id=0, dir_access=0, name="top").all("Directory")[0]["ID"]
        sub = client.ask("create_dir", dir_id=top, dir_access=0, name="sub").all("Directory")[0]["ID"]
        early = client.put("early", b"e", sub)
        late = client.put("late", b"late", sub)
        client.ask("move_file_to_trash", file_id=early["ID"])
        client.put("early", b"new one", sub)
        self.clash(client, "restore_file_from_trash", file_id=early["ID"])
        client.ask("move_dir_to_trash", dir_id=top)
        self.assertEqual(client.names(), [])
        trash = client.ask("list_trash_dir")
        self.assertEqual([n["Name"] for n in trash.all("Directory") + trash.all("File")], ["top", "early"])
        self.assertGreater(int(trash.all("File")[0]["DateDeleted"]), 1_600_000_000)
        with self.assertRaisesRegex(Refused, "Trash"):
            client.ask("create_dir", dir_id=top, dir_access=0, name="x")
        client.ask("restore_file_from_trash", file_id=early["ID"])
        self.assertEqual(client.names(), ["early"], "its folder is away, so it comes to the root")
        client.ask("move_file_to_trash", file_id=early["ID"])
        client.ask("restore_dir_from_trash", dir_id=top)
        self.assertEqual(client.names(sub), ["early", "late"])
        client.ask("move_file_to_trash", file_id=late["ID"])
        client.ask("remove_dir", dir_id=top)
        self.assertEqual(sorted(n["Name"] for n in client.ask("list_trash_dir").all("File")),
                         ["early", "late"], "what was in the Trash by itself stays")
        client.ask("restore_file_from_trash", file_id=late["ID"])
        self.assertEqual(client.get(client.find("late")["Location"]), b"late")
        self.assertEqual(client.ask("get_storage_info")["SpaceUsed"], "5")

    def test_copy_and_move(self) -> None:
        client = self.fresh("copier")
        folder = client.ask("create_dir", dir_id=0, dir_access=2, name="f").all("Directory")[0]
        file = client.put("x.jpg", b"bytes", date=777)
        client.ask("set_file_description", file_id=file["ID"], description="d")
        client.ask("set_file_price", file_id=file["ID"], price="1.5")
        client.ask("copy_file", dst_dir_id=folder["ID"], src_file_id=file["ID"], move=0, is_pro=0)
        twin = client.find("x.jpg", folder["ID"])
        self.assertEqual((twin["Description"], twin["Price"], twin["DateModified"], twin["Size"]),
                         ("d", "1.5", "777", "5"))
        self.clash(client, "copy_file", dst_dir_id=folder["ID"], src_file_id=file["ID"], move=1, is_pro=0)
        client.ask("remove_file", file_id=file["ID"])
        self.assertEqual(client.get(twin["Location"]), b"bytes", "the copy keeps the content")
        client.ask("copy_file", dst_dir_id=0, src_file_id=twin["ID"], move=1, is_pro=0)
        self.assertEqual(client.find("x.jpg")["ID"], twin["ID"])
        self.assertEqual(client.names(folder["ID"]), [])
        self.assertEqual(client.ask("get_storage_info")["SpaceUsed"], "5")

    def test_folder_signs_paths_and_links(self) -> None:
        client = self.client()
        pictures, music = client.find("Pictures"), client.find("Music")
        self.assertEqual([pictures[n] for n in ("IsGallery", "IsMP3", "HasSubfolders", "Access")],
                         ["True", "False", "True", "1"])
        self.assertEqual([music[n] for n in ("IsGallery", "IsMP3")], ["False", "True"])
        holidays = client.find("Holidays 2026", pictures["ID"])
        tea = client.find("Tea + cake.png", holidays["ID"])
        self.assertEqual(client.ask("get_file_path", file_id=tea["ID"])["Path"],
                         "Pictures/Holidays 2026/Tea + cake.png")
        self.assertEqual(client.ask("get_dir_path", dir_id=0)["Path"], "")
        form = "&".join(f"{k}={v}" for k, v in client.common) + "&shared_user_id=&file_id="
        jpeg = client.raw("/v1/qd_thumbnail.php", (form + tea["ID"]).encode())
        self.assertEqual((jpeg[:2], jpeg[6:10]), (b"\xff\xd8", b"JFIF"))
        text = client.find("Plan.pdf", client.find("Documents")["ID"])
        self.assertIn(b"<Error>", client.raw("/v1/qd_thumbnail.php", (form + text["ID"]).encode()))
        for link, status in ((tea["Link"], 200), (tea["DirectLink"], 206), (music["Link"], 404),
                             (text["DirectLink"].replace("/d/", "/d/0"), 404)):
            client.line.request("GET", link.split(str(self.service.port))[1],
                                headers={"Range": "bytes=1-3"} if status == 206 else {})
            answer = client.line.getresponse()
            body = answer.read()
            self.assertEqual(answer.status, status, link)
            self.assertTrue(status != 206 or body == b"PNG")
        with self.assertRaisesRegex(Refused, "home"):
            client.ask("remove_dir", dir_id=client.find("My files")["ID"])

    def test_settings_notifications_profiles(self) -> None:
        client = self.client()
        self.assertEqual(len(client.ask("get_user_notifications", version="", pro_version="")
                             .all("Notification")), 2)
        client.ask("set_pro_setting", setting_name="ratio", setting_value="1.5", setting_type=2)
        client.ask("set_pro_setting", setting_name="ratio", setting_value="7", setting_type=1)
        with self.assertRaises(Refused):
            client.ask("set_pro_setting", setting_name="ratio", setting_value="7.5", setting_type=1)
        kept = {n["Name"]: (n["Value"], n["Type"])
                for n in client.ask("get_pro_settings").all("ProSetting")}
        self.assertEqual(kept["ratio"], ("7", "1"))
        good = {"user_name": "newcomer", "passwd": "pass", "verify_passwd": "pass",
                "email": "new@comer.test", "first_name": "N", "last_name": "C"}
        for wrong in ({"verify_passwd": "Pass"}, {"email": "a@b"}, {"user_name": "DEMO"},
                      {"user_name": "Visitor"}, {"passwd": "abc", "verify_passwd": "abc"},
                      {"user_name": "a b"}, {"email": "ANNA@quilldeck.example"}):
            with self.subTest(wrong=wrong), self.assertRaises(Refused):
                client.post("/v1/qd_profile.php", action="new_profile", **good | wrong)
        client.post("/v1/qd_profile.php", action="new_profile", **good)
        self.assertEqual(self.client("new@comer.test", "pass").names(), [])
