#include "changes.h"

#include "check.h"
#include "console.h"
#include "scratch_folder.h"

namespace tour {

void work_in(const directory_ptr& place, const copied_file& sample) {
    const std::wstring name = L"Renamed & described " + sample.local.name;
    const std::wstring description = L"100 % of <everything>, + \x00FC\x20AC";

    print(L"upload, rename, describe, move " + sample.local.name);
    scratch_folder scratch(place);
    const directory_ptr folder = scratch.get();
    upload(*folder, sample.local.name, sample.local.path.wstring(), sample.local.size,
           sample.local.modified);
    folder->rename_item(sample.local.name, name);
    folder->find_item_by_name(name, false)->set_description(description);
    const directory_ptr done = as_directory(folder->create_directory(L"Done"));
    as_file(folder->find_item_by_name(name, false))->copy(done, true);
    const file_ptr moved = as_file(done->find_item_by_name(name, true));
    require(moved->get_description() == description, "a description came back changed");
    require(digest_of(*moved) == sample.digest, "a file that was moved differs");
    require(!holds_item(*folder, moved->get_id()), "a moved file is still listed");

    print(L"delete for good");
    scratch.remove();
}

void take_through_trash(vfs::client& owner, const directory_ptr& target,
                        const copied_file& copied) {
    print(L"to the Trash and back " + copied.path);
    const directory_ptr folder = walk_to(target, copied.local.folders);
    const vfs::item_ptr item = folder->find_item_by_name(copied.local.name, false);
    folder->delete_item(item, true);
    const auto trash =
        as_directory(as_directory(owner.get_root())->find_item_by_id(L"dir_trash", true));
    const vfs::item_ptr deleted = trash->find_item_by_id(item->get_id(), true);
    require(deleted->get_delete_date() != vfs::time_unknown, "the Trash holds an undated item");
    deleted->restore();
    const file_ptr restored = as_file(folder->find_item_by_id(item->get_id(), true));
    require(digest_of(*restored) == copied.digest, "a restored file differs");

    print(L"delete for good");
    folder->delete_item(restored, false);
    require(!holds_item(*folder, restored->get_id()), "a deleted file is still listed");
}

} // namespace tour
