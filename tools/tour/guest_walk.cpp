#include "guest_walk.h"

#include "changes.h"
#include "check.h"
#include "console.h"

namespace tour {

namespace {

/// The folder that the access id opens.
directory_ptr opened_folder(vfs::client& guest) {
    const vfs::user_info info = guest.get_user_info();
    require(!info.user_access_id.empty(), "a guest's session is not known as one");
    print(L"As the guest " + info.user_access_id + L":");
    const auto items = as_directory(guest.get_root())->get_items();
    require(items.size() == 1, "a guest sees more or less than the opened folder");
    return as_directory(items.front());
}

} // namespace

void look_as_guest(vfs::client& guest) {
    const directory_ptr folder = opened_folder(guest);
    print_tree(*folder, L"    ");
    require_refused([&] { folder->create_directory(L"No"); }, "a guest who may look can write");
    require_refused([&] { folder->get_sharewith_items(); }, "a guest sees with whom is shared");
}

void work_as_guest(vfs::client& guest, const copied_file& sample) {
    work_in(opened_folder(guest), sample);
}

} // namespace tour
