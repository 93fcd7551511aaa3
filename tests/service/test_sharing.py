"""Shares, invitations, guests: what each road opens, and what it does not."""
from __future__ import annotations

import ftplib

from .harness import Client, Refused, Request, ServiceTest


class Sharing(ServiceTest):
    def share(self, owner: Client, folder: str, name: str, mode: int) -> dict[str, str]:
        """Shares by name and returns the road for the other side."""
        user = owner.ask("get_userid_by_name", name=name)["UserID"]
        owner.ask("share_folder", sharewithuser_id=user, dir_id=folder, sharemode=0)
        sharing = owner.ask("list_share_whith_users", dir_id=folder).all("ShareWithUser")[0]["ID"]
        owner.ask("change_folder_share_mode", sharedfolder_id=sharing, sharemode=mode)
        return {"share_user_id": owner.user_id.split("-")[0], "share_id": folder}

    def test_view_reads_and_full_writes(self) -> None:
        owner, other = self.fresh("lender"), self.fresh("borrower")
        folder = owner.make("s")
        sub = owner.make("sub", folder)
        file = owner.put("f.txt", b"shared", sub)
        outside = owner.put("outside", b"private")
        road = self.share(owner, folder, "borrower", 0)
        self.assertEqual(owner.find("s")["Shared"], "True")
        location = other.find("f.txt", sub, **road)["Location"]
        other.ask("open_file_download", **road, file_id=file)
        self.assertEqual(other.get(location), b"shared")

        writes: list[Request] = [
            ("set_file_description", {"file_id": file, "description": "d"}),
            ("rename_file", {"file_id": file, "new_name": "g"}),
            ("create_dir", {"dir_id": sub, "dir_access": 0, "name": "n"}),
            ("open_file_upload", {"file_id": file, "size": 1}),
            ("remove_dir", {"dir_id": sub}), ("move_file_to_trash", {"file_id": file})]
        for action, params in writes:
            self.refused(other, action, **road, **params)
            self.refused(other, action, **params)
        self.refused(other, "list_dir", dir_id=sub)
        self.refused(other, "list_dir", dir_id=0, **road)
        self.refused(other, "open_file_download", **road, file_id=outside)
        self.refused(other, "list_share_whith_users", dir_id=folder)

        self.share(owner, folder, "borrower", 1)
        self.refused(other, "rename_dir", **road, new_name="mine", dir_id=folder)
        self.refused(other, "remove_dir", **road, dir_id=folder)
        for action, params in writes[:3]:
            other.ask(action, **road, **params)
        put = other.put("theirs", b"from borrower", sub, **road)
        self.assertEqual(owner.content("theirs", sub), b"from borrower")
        other.ask("move_file_to_trash", **road, file_id=put)
        self.refused(other, "restore_file_from_trash", **road, file_id=put)
        self.assertEqual(owner.ask("list_trash_dir").all("File")[0]["Name"], "theirs")

        sharing = owner.ask("list_share_whith_users", dir_id=folder).all("ShareWithUser")[0]["ID"]
        self.refused(other, "delete_sharing_with_user", sharedfolder_id=sharing)
        other.ask("close_file_download", **road, file_id=file)
        owner.ask("move_dir_to_trash", dir_id=folder)
        self.assertEqual(other.ask("has_share_folders").text, "False")
        self.refused(other, "list_dir", dir_id=folder, **road)
        self.refused(other, "create_dir", **road, dir_id=folder, dir_access=0, name="x")
        owner.ask("restore_dir_from_trash", dir_id=folder)
        self.assertEqual(other.names(folder, **road), ["sub"])
        owner.ask("delete_sharing_with_user", sharedfolder_id=sharing)
        self.refused(other, "list_dir", dir_id=sub, **road)
        owner.put("new", b"new", sub)
        with self.assertRaises(ftplib.Error):
            other.get(owner.find("new", sub)["Location"])

    def test_invitation_becomes_a_share(self) -> None:
        owner = self.fresh("host")
        folder = owner.make("Für dich")
        self.refused(owner, "share_folder", dir_id=folder, email="no address")
        owner.ask("share_folder", dir_id=folder, email="guest@example.test")
        letter, = (self.service.data / "outbox").glob("*.eml")
        self.assertIn(b"guest@example.test", letter.read_bytes())
        guest = self.fresh("guest")
        self.assertEqual(guest.ask("list_shared_users").all("UserSharedFolder")[0]["Name"], "host")

    def test_a_guest_is_kept_to_the_opened_folder(self) -> None:
        demo, visitor = self.client("demo"), self.client("visitor", "")
        pictures, documents = (demo.find(name)["ID"] for name in ("Pictures", "Documents"))
        road = {"access_dir_id": pictures}
        requests: list[Request] = [
            ("list_dir", {"dir_id": documents, **road}), ("list_trash_dir", {}),
            ("list_dir", {"dir_id": documents, "access_dir_id": documents}),
            ("share_folder", {"dir_id": pictures, "email": "a@b.cd"}),
            ("get_pro_settings", {}), ("list_shared_users", {})]
        for action, params in requests:
            self.refused(visitor, action, **params)
        visitor.common["user_id_access"] = ""
        self.refused(visitor, "list_dir", dir_id=0)
        with self.assertRaises(Refused):
            self.client("helper", "")
