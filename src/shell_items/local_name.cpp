#include "shell_items/local_name.h"

#include "utils/file_name.h"
#include "vfs_quilldeck/wire/exceptions.h"

namespace shell {

std::wstring local_name(std::wstring name) {
    if (!utils::is_file_name(name)) {
        throw vfs_quilldeck::exception(L"Wrong file name",
                                       L"No file or folder on this computer can have the name '" +
                                           name + L"'");
    }
    name.resize(utils::made_name(name).size());
    return name;
}

} // namespace shell
