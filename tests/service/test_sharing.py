"""Shares, invitations, guests: what each road opens, and what it does not."""
from __future__ import annotations

import ftplib

from .harness import Client, Refused, ServiceTest


class Sharing(ServiceTest):
    def refused(self, client: Client, action: str, **params: object) -> None:
        with self.subTest(action=action, **params), self.assertRaises(Refused):
            client.ask(action, **params)

    def share(self, owner: Client, folder: str, name: str, mode: int) -> dict[str, str]:
        """Shares by name and returns the road for the other side."""
        user = owner.ask("get_userid_by_name", name=name)["UserID"]
        owner.ask("share_folder", sharewithuser_id=user, dir_id=folder, sharemode=0)
        sharing = owner.ask("list_share_whith_users", dir_id=folder).all("ShareWithUser")[0]
        self.assertEqual((sharing["ShareWithUserID"], sharing["Name"]), (user, name))
        owner.ask("change_folder_share_mode", sharedfolder_id=sharing["ID"], sharemode=mode)
        return {"share_user_id": owner.user_id.split("-")[0], "share_id": folder}

    def test_view_reads_and_full_writes(self) -> None:
        owner, other = self.fresh("lender"), self.fresh("borrower")
        folder = owner.ask("create_dir", dir_id=0, dir_access=0, name="s").all("Directory")[0]["ID"]
        sub = owner.ask("create_dir", dir_id=folder, dir_access=0, name="sub").all("Directory")[0]["ID"]
        file = owner.put("f.txt", b"shared", sub)["ID"]
        outside = owner.put("outside", b"private")["ID"]
        self.assertEqual(other.ask("has_share_folders").text, "False")
        road = self.share(owner, folder, "borrower", 0)
        self.assertEqual(owner.find("s")["Shared"], "True")
        self.assertEqual(other.ask("has_share_folders").text, "True")
        self.assertEqual(other.ask("list_shared_users").all("UserSharedFolder")[0]["UserID"],
                         road["share_user_id"])
        top = other.ask("list_shared_directories", share_user_id=road["share_user_id"])
        self.assertEqual(top.all("SharedDirectory")[0]["ID"], folder)
        seen = other.find("f.txt", sub, **road)
        other.ask("open_file_download", **road, file_id=file, is_pro=0)
        self.assertEqual(other.get(seen["Location"]), b"shared")
        self.assertEqual(other.ask("get_file_path", **road, file_id=file)["Path"], "s/sub/f.txt")
        other.ask("copy_file", dst_dir_id=0, **{f"src_{k}": v for k, v in road.items()},
                  src_file_id=file, move=0, is_pro=0)
        self.assertEqual(other.get(other.find("f.txt")["Location"]), b"shared")

        writes = (("set_file_description", {"file_id": file, "description": "d"}),
                  ("rename_file", {"file_id": file, "new_name": "g"}),
                  ("create_dir", {"dir_id": sub, "dir_access": 0, "name": "n"}),
                  ("open_file_upload", {"file_id": file, "size": 1, "is_pro": 0}),
                  ("remove_dir", {"dir_id": sub}), ("move_file_to_trash", {"file_id": file}))
        for action, params in writes:
            self.refused(other, action, **road, **params)
            self.refused(other, action, **params)
        self.refused(other, "list_dir", dir_id=sub)
        self.refused(other, "list_dir", dir_id=0, **road)
        self.refused(other, "open_file_download", **road, file_id=outside, is_pro=0)
        self.refused(other, "list_share_whith_users", dir_id=folder)

        road = self.share(owner, folder, "borrower", 1)
        self.refused(other, "rename_dir", **road, new_name="mine", dir_id=folder)
        self.refused(other, "remove_dir", **road, dir_id=folder)
        for action, params in writes[:3]:
            other.ask(action, **road, **params)
        put = other.put("theirs", b"from borrower", sub, **road)
        self.assertEqual(owner.get(owner.find("theirs", sub)["Location"]), b"from borrower")
        other.ask("move_file_to_trash", **road, file_id=put["ID"])
        self.refused(other, "restore_file_from_trash", **road, file_id=put["ID"])
        self.assertEqual(owner.ask("list_trash_dir").all("File")[0]["Name"], "theirs")

        sharing = owner.ask("list_share_whith_users", dir_id=folder).all("ShareWithUser")[0]["ID"]
        self.refused(other, "delete_sharing_with_user", sharedfolder_id=sharing)
        other.ask("close_file_download", **road, file_id=file, is_pro=0)
        owner.ask("delete_sharing_with_user", sharedfolder_id=sharing)
        self.refused(other, "list_dir", dir_id=sub, **road)
        owner_only = owner.put("new", b"new", sub) and owner.find("new", sub)["Location"]
        with self.assertRaises(ftplib.Error):
            other.get(owner_only)
        self.assertEqual(other.ask("has_share_folders").text, "False")

    def test_a_trashed_share_is_out_of_reach(self) -> None:
        owner, other = self.fresh("tidy"), self.fresh("late")
        folder = owner.ask("create_dir", dir_id=0, dir_access=0, name="s").all("Directory")[0]["ID"]
        road = self.share(owner, folder, "late", 1)
        owner.ask("move_dir_to_trash", dir_id=folder)
        self.assertEqual(other.ask("has_share_folders").text, "False")
        self.refused(other, "list_dir", dir_id=folder, **road)
        self.refused(other, "create_dir", **road, dir_id=folder, dir_access=0, name="x")
        owner.ask("restore_dir_from_trash", dir_id=folder)
        self.assertEqual(other.names(folder, **road), [])

    def test_invitation_becomes_a_share(self) -> None:
        owner = self.fresh("host")
        folder = owner.ask("create_dir", dir_id=0, dir_access=0, name="Für dich").all("Directory")[0]["ID"]
        self.refused(owner, "get_userid_by_email", email="guest@example.test")
        self.refused(owner, "share_folder", dir_id=folder, email="no address")
        owner.ask("share_folder", dir_id=folder, email="guest@example.test")
        letters = list((self.service.data / "outbox").glob("*.eml"))
        self.assertIn(b"guest@example.test", letters[0].read_bytes())
        guest = self.fresh("guest")
        self.assertEqual(guest.ask("list_shared_users").all("UserSharedFolder")[0]["Name"], "host")

    def test_guests(self) -> None:
        demo, visitor, helper = self.client(), self.client("visitor", ""), self.client("helper")
        self.assertNotEqual(demo.ask("get_userid_by_name", name="visitor")["UserAccessID"], "")
        pictures = demo.find("Pictures")["ID"]
        self.assertEqual(visitor.names(), ["Pictures"])
        road = {"access_dir_id": pictures}
        dusk = visitor.find("Dusk.jpg", pictures, **road)
        visitor.ask("open_file_download", **road, file_id=dusk["ID"], is_pro=0)
        self.assertEqual(len(visitor.get(dusk["Location"])), int(dusk["Size"]))
        documents = demo.find("Documents")["ID"]
        for action, params in (("list_dir", {"dir_id": documents, **road}), ("list_trash_dir", {}),
                               ("list_dir", {"dir_id": documents, "access_dir_id": documents}),
                               ("create_dir", {**road, "dir_id": pictures, "dir_access": 0, "name": "x"}),
                               ("share_folder", {"dir_id": pictures, "email": "a@b.cd"}),
                               ("get_pro_settings", {}), ("list_shared_users", {})):
            self.refused(visitor, action, **params)
        box = helper.ask("list_dir", dir_id=0).all("Directory")[0]["ID"]
        helper.put("gift.txt", b"from a guest", box, access_dir_id=box)
        self.assertEqual(demo.get(demo.find("gift.txt", box)["Location"]), b"from a guest")
        visitor.common[1] = ("user_id_access", "")
        self.refused(visitor, "list_dir", dir_id=0)
        with self.assertRaises(Refused):
            self.client("helper", "")
