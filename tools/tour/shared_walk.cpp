#include "shared_walk.h"

#include "changes.h"
#include "check.h"
#include "console.h"

namespace tour {

namespace {

constexpr std::int32_t view_only = 0;
constexpr std::int32_t full_control = 1;

/// The shared folder as the other user finds it today.
directory_ptr find_shared(vfs::client& reader, const vfs::client& owner, const std::wstring& name) {
    const std::wstring user = owner.get_user_info().user_name;
    return as_directory(reader.get_directory(L"Shared Folders/" + user + L"/" + name, false));
}

} // namespace

void share(vfs::client& owner, const directory_ptr& folder, vfs::client& reader,
           const std::vector<copied_file>& copied) {
    const std::wstring name = reader.get_user_info().user_name;
    print(L"sharing with " + name + L", for viewing");
    bool is_email = false;
    const std::int32_t user = folder->can_share_with(name, is_email);
    require(user != 0, "the other user cannot receive a share");
    folder->sharing(user);
    const auto sharing = folder->find_sharewith_item_by_userid(user);
    require(sharing->share_mode == view_only, "a new sharing is for more than viewing");

    const directory_ptr seen = find_shared(reader, owner, folder->get_name());
    print(L"As " + name + L" sees it:");
    print_tree(*seen, L"    ");
    read_back(seen, copied);
    require_refused([&] { seen->create_directory(L"No"); }, "a viewer may write");

    print(L"sharing with all rights");
    folder->set_share_mode(sharing->id, full_control);
    require(folder->find_sharewith_item_by_id(sharing->id)->share_mode == full_control,
            "the mode of a sharing was not kept");
    work_in(seen, copied.front());

    print(L"ending the sharing");
    folder->delete_sharing_with_user(sharing->id);
    require_refused([&] { seen->get_items(); }, "a folder can be read after its sharing");
    require_refused([&] { find_shared(reader, owner, folder->get_name()); },
                    "a folder is listed after its sharing");
}

} // namespace tour
