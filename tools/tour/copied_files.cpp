#include "copied_files.h"

#include "check.h"
#include "console.h"

namespace tour {

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

} // namespace tour
