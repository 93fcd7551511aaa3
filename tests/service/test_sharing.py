"""Shares, invitations, guests: what each road opens, and what it does not."""
from __future__ import annotations

import ftplib

from store_client import Client, Refused

from . import ROOT
from .harness import Request, ServiceTest


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

    def letters(self, address: str) -> list[str]:
        found = [path.read_text() for path in (self.service.data / "outbox").glob("*.eml")]
        return [letter for letter in found if f"To: {address}\n" in letter]

    def test_an_invitation_goes_to_who_has_the_letter(self) -> None:
        owner = self.fresh("host")
        folder = owner.make("Für <dich>")
        for address in ("no address", "a@b.cd,e@f.gh", "a@b.cd\nBcc: e@f.gh", "a@b@c.de", "ä@b.cd"):
            self.refused(owner, "share_folder", dir_id=folder, email=address)
        pretender = self.fresh("guest")
        self.assertEqual(pretender.ask("get_storage_info")["SpaceUsed"], "0")
        self.refused(owner, "get_userid_by_email", email="guest@example.test")
        for action in range(2):
            owner.ask("share_folder", dir_id=folder, email="guest@example.test")
            owner.post("/qd_email.php", dir_id=folder, email="GUEST@example.test", **owner.common)
        letter, = self.letters("guest@example.test")
        link = next(line for line in letter.splitlines() if "/i/" in line)
        self.assertEqual(pretender.ask("has_share_folders").text, "False", "to claim it is no proof")

        browser = self.client()
        self.assertEqual(browser.page(link + "x")[0], 404)
        status, _, page = browser.page(link)
        self.assertIn("Für &lt;dich&gt;", page)
        wrong = {"user": "<guest>", "password": "wrong"}
        status, _, page = browser.page(link + "/accept", wrong)
        self.assertEqual((status, page.count('role="alert"')), (422, 1))
        self.assertIn('value="&lt;guest&gt;"', page)
        self.assertNotIn("wrong<", page.replace("is wrong.<", ""))
        self.assertEqual(browser.page(link + "/accept")[0], 404, "to look is no answer")
        account = {"user": "invited", "password": "word", "again": "word"}
        for fields in ({**account, "again": "other"}, {**account, "user": "guest"}):
            self.assertEqual(browser.page(link + "/register", fields)[0], 422)
        self.assertEqual(browser.page(link + "/register", account)[0], 200)
        self.assertEqual(browser.page(link + "/register", {**account, "user": "second"})[0], 404)
        invited = self.client("invited", "word")
        self.assertEqual(invited.ask("list_shared_users").all("UserSharedFolder")[0]["Name"], "host")
        self.assertEqual(pretender.ask("has_share_folders").text, "False")
        self.assertEqual(owner.ask("get_userid_by_email", email="guest@example.test")["UserID"],
                         invited.user_id.split("-")[0], "the address is now who has proven it")

        for name, answer, shared in (("one", {"user": "guest", "password": "guest"}, "True"),
                                     ("two", None, "True")):
            owner.ask("share_folder", dir_id=owner.make(name), email=f"{name}@example.test")
            link = next(line for line in self.letters(f"{name}@example.test")[0].splitlines()
                        if "/i/" in line)
            self.assertEqual(browser.page(link + ("/accept" if answer else "/decline"), answer or {})[0],
                             200)
            self.assertEqual(browser.page(link)[0], 404)
            self.assertEqual(pretender.ask("has_share_folders").text, shared)
        self.assertEqual(len(pretender.ask("list_shared_directories",
                                           share_user_id=owner.user_id.split("-")[0]
                                           ).all("SharedDirectory")), 1)

    def test_what_a_view_share_and_another_account_cannot(self) -> None:
        owner, other = self.fresh("keeper"), self.fresh("taker")
        folder = owner.make("s")
        picture = owner.put("p.png", (ROOT / "demo/files/pictures/tea.png").read_bytes(), folder)
        mine = other.put("mine.png", b"mine")
        thumbnail = {"shared_user_id": "", "file_id": picture}
        with self.assertRaisesRegex(Refused, "access"):
            other.post("/qd_thumbnail.php", **other.common, **thumbnail)
        road = self.share(owner, folder, "taker", 0)
        source, target = ({f"{side}_{name}": value for name, value in road.items()}
                          for side in ("src", "dst"))
        self.refused(other, "copy_file", dst_dir_id=0, **source, src_file_id=picture, move=1)
        self.refused(other, "copy_file", dst_dir_id=folder, **target, src_file_id=mine, move=0)
        other.ask("copy_file", dst_dir_id=0, **source, src_file_id=picture, move=0)
        direct = other.find("p.png", folder, **road)["DirectLink"]
        self.assertEqual(other.page(direct)[0], 200)

        self.share(owner, folder, "taker", 1)
        number, location = owner.begin("up", 3, folder)
        owner.upload(location, b"abc")
        self.refused(other, "close_file_upload", **road, file_id=number, temp_location=location,
                     file_time=0, file_size=3)
        owner.finish(number, location, 3)
        owner.ask("delete_sharing_with_user",
                  sharedfolder_id=owner.ask("list_share_whith_users",
                                            dir_id=folder).all("ShareWithUser")[0]["ID"])
        self.assertEqual(other.page(direct)[0], 404)

    def test_a_guest_is_kept_to_the_opened_folder(self) -> None:
        demo, visitor = self.client("demo"), self.client("visitor", "")
        pictures, documents = (demo.find(name)["ID"] for name in ("Pictures", "Documents"))
        road = {"access_dir_id": pictures}
        requests: list[Request] = [
            ("list_dir", {"dir_id": documents, **road}), ("list_trash_dir", {}),
            ("list_dir", {"dir_id": documents, "access_dir_id": documents}),
            ("share_folder", {"dir_id": pictures, "email": "a@b.cd"}),
            ("get_pro_settings", {}), ("list_shared_users", {}),
            ("get_userid_by_name", {"name": "anna"}),
            ("get_userid_by_email", {"email": "anna@quilldeck.example"})]
        for action, params in requests:
            self.refused(visitor, action, **params)
        visitor.common["user_id_access"] = ""
        self.refused(visitor, "list_dir", dir_id=0)
        with self.assertRaises(Refused):
            self.client("helper", "")
