#include "transfer/local_items/hdrop_wrapper.h"

#include "com/media.h"
#include "shell_items/file_list_block.h"
#include "transfer/local_items/hdrop_directory.h"
#include "transfer/local_items/local_path.h"

#include <shellapi.h>
#include <shlwapi.h>

#include <optional>

namespace transfer {

namespace {

[[noreturn]] void fail(const std::wstring& why) {
    throw CWrapperException(internal_error, L"CHDROPWrapper::CHDROPWrapper( hGlobal ): " + why);
}

[[noreturn]] void fail_to_read(DWORD error) {
    fail(filled(L"IO error %1%", {std::to_wstring(error)}));
}

com::global_lock lock(HGLOBAL block) {
    try {
        return com::global_lock(block);
    } catch (const com::status_exception&) {
        fail(L"Out of memory");
    }
}

/// Paths may be longer than the platform's programs can use.
std::wstring path_at(HDROP list, UINT index) {
    std::wstring path(::DragQueryFileW(list, index, nullptr, 0), L'\0');
    const auto size = static_cast<UINT>(path.size());
    if (size == 0 || ::DragQueryFileW(list, index, path.data(), size + 1) == 0) {
        fail_to_read(::GetLastError());
    }
    return path;
}

} // namespace

CHDROPWrapper::CHDROPWrapper(HGLOBAL hGlobal) {
    if (hGlobal == nullptr) {
        fail(L"hGlobal is NULL");
    }
    const com::global_lock locked = lock(hGlobal);
    const auto count = shell::count_of_paths(locked.bytes());
    if (!count) {
        fail_to_read(ERROR_INVALID_DATA);
    }
    for (UINT index = 0; index < *count; ++index) {
        const std::wstring path = normalised(path_at(static_cast<HDROP>(hGlobal), index));
        const bool is_directory = ::PathIsDirectoryW(path.c_str()) != FALSE;
        if (auto made = make_local_item(path, is_directory, m_left_out)) {
            m_items.push_back(std::move(made));
        }
    }
}

} // namespace transfer
