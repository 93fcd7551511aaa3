#include "tour.h"

#include "console.h"
#include "local_folder.h"
#include "store_walk.h"

#include <ctime>
#include <stdexcept>
#include <string>
#include <vector>

namespace tour {

namespace {

void require(bool holds, const char* failure) {
    if (!holds) {
        throw std::runtime_error(failure);
    }
}

/// The tour's own folder in the store, deleted for good at the end.
class scratch_folder {
public:
    explicit scratch_folder(vfs::client& client)
        : root_(as_directory(client.get_root())),
          folder_(as_directory(
              root_->create_directory(L"Tour " + std::to_wstring(std::time(nullptr))))) {}

    scratch_folder(const scratch_folder&) = delete;
    scratch_folder& operator=(const scratch_folder&) = delete;

    ~scratch_folder() {
        if (!folder_) {
            return;
        }
        try {
            root_->delete_item(folder_, false);
        } catch (const vfs::exception& cause) {
            print(L"The folder \"" + folder_->get_name() + L"\" is left in the store: " +
                  cause.get_description());
        }
    }

    const directory_ptr& get() const { return folder_; }

    void remove() {
        const directory_ptr folder = std::move(folder_);
        root_->delete_item(folder, false);
        const auto items = root_->get_items();
        for (const vfs::item_ptr& item : items) {
            require(item->get_id() != folder->get_id(), "a deleted folder is still listed");
        }
    }

private:
    directory_ptr root_;
    directory_ptr folder_;
};

struct copied_file {
    std::wstring path; ///< below the scratch folder
    local_file local;
    std::wstring digest;
};

directory_ptr walk_to(const directory_ptr& from, const std::vector<std::wstring>& folders) {
    directory_ptr at = from;
    for (const std::wstring& name : folders) {
        try {
            at = as_directory(at->find_item_by_name(name, false));
        } catch (const vfs::item_not_found_exception&) {
            at = as_directory(at->create_directory(name));
        }
    }
    return at;
}

std::vector<copied_file> upload_all(const directory_ptr& target,
                                    const std::vector<local_file>& files) {
    std::vector<copied_file> copied;
    for (const local_file& local : files) {
        std::wstring path;
        for (const std::wstring& name : local.folders) {
            path += name + L"\\";
        }
        path += local.name;
        print(L"up    " + path);
        const directory_ptr folder = walk_to(target, local.folders);
        copied.push_back(
            {path, local,
             upload(*folder, local.name, local.path.wstring(), local.size, local.modified)});
    }
    return copied;
}

void read_back(const directory_ptr& target, const std::vector<copied_file>& copied) {
    for (const copied_file& copy : copied) {
        const directory_ptr folder = walk_to(target, copy.local.folders);
        const file_ptr file = as_file(folder->find_item_by_name(copy.local.name, true));
        const bool equal = file->get_size() == copy.local.size && digest_of(*file) == copy.digest &&
                           file->get_modification_date() == copy.local.modified;
        print((equal ? L"equal " : L"DIFFERS ") + copy.path);
        require(equal, "a file that was read back differs from the local one");
    }
}

/// Takes one uploaded file through everything that can happen to an item.
void change_and_restore(vfs::client& client, const directory_ptr& target,
                        const copied_file& copied) {
    const directory_ptr folder = walk_to(target, copied.local.folders);
    const std::wstring name = L"Renamed & described " + copied.local.name;
    const std::wstring description = L"100 % of <everything>, + \x00FC\x20AC";

    print(L"rename, describe " + copied.path);
    folder->rename_item(copied.local.name, name);
    folder->find_item_by_name(name, false)->set_description(description);
    const vfs::item_ptr item = folder->find_item_by_name(name, true);
    require(item->get_description() == description, "a description came back changed");

    print(L"to the Trash and back");
    folder->delete_item(item, true);
    const auto trash =
        as_directory(as_directory(client.get_root())->find_item_by_id(L"dir_trash", true));
    const vfs::item_ptr deleted = trash->find_item_by_id(item->get_id(), true);
    require(deleted->get_delete_date() != vfs::time_unknown, "the Trash holds an undated item");
    deleted->restore();
    const file_ptr restored = as_file(folder->find_item_by_id(item->get_id(), true));
    require(digest_of(*restored) == copied.digest, "a restored file differs");

    print(L"delete for good");
    folder->delete_item(restored, false);
    for (const vfs::item_ptr& left : folder->get_items()) {
        require(left->get_id() != restored->get_id(), "a deleted file is still listed");
    }
}

} // namespace

summary run(vfs::client& client, const std::filesystem::path& folder) {
    const std::vector<local_file> files = list_local_files(folder);
    require(!files.empty(), "the folder to upload holds no file");
    const vfs::user_info user = client.get_user_info();
    print(L"The store of " + user.user_name + L":");
    print_tree(*as_directory(client.get_root()), L"    ");

    scratch_folder scratch(client);
    const auto copied = upload_all(scratch.get(), files);
    read_back(scratch.get(), copied);
    change_and_restore(client, scratch.get(), copied.front());
    scratch.remove();

    summary total;
    for (const copied_file& copy : copied) {
        ++total.files;
        total.bytes += copy.local.size;
    }
    return total;
}

} // namespace tour
