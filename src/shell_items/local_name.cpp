#include "shell_items/local_name.h"

#include "utils/file_name.h"
#include "vfs_quilldeck/wire/exceptions.h"

namespace shell {

namespace {

void require_local_name(bool is_one, const std::wstring& name) {
    if (!is_one) {
        throw vfs_quilldeck::exception(L"Wrong file name",
                                       L"No file or folder on this computer can have the name '" +
                                           name + L"'");
    }
}

} // namespace

std::wstring local_name(std::wstring name) {
    require_local_name(utils::is_file_name(name), name);
    name.resize(utils::made_name(name).size());
    return name;
}

std::wstring exact_local_name(std::wstring name) {
    require_local_name(utils::is_file_name(name) && utils::made_name(name) == name, name);
    return name;
}

} // namespace shell
