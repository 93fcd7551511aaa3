#include "transfer/local_items/hdrop_directory.h"

#include "transfer/local_items/hdrop_file.h"
#include "utils/unique_handle.h"

#include <windows.h>

#include <shlwapi.h>

#include <string_view>
#include <utility>

namespace transfer {

namespace {

struct search_traits {
    using pointer = HANDLE;

    static pointer none() noexcept { return INVALID_HANDLE_VALUE; }

    static void close(pointer value) noexcept { ::FindClose(value); }
};

using unique_search = utils::unique_resource<search_traits>;

std::wstring system_text(DWORD error) {
    wchar_t text[512];
    const DWORD length =
        ::FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error,
                         0, text, static_cast<DWORD>(std::size(text)), nullptr);
    std::wstring_view trimmed(text, length);
    trimmed = trimmed.substr(0, trimmed.find_last_not_of(L"\r\n ") + 1);
    return trimmed.empty() ? std::to_wstring(error) : std::wstring(trimmed);
}

/// Calls `visit` with each entry. The library's iterator would ask for the kind of each one again,
/// and knows failures of a network only as an invalid argument.
template <class Visit>
void for_each_entry(const std::wstring& path, const Visit& visit) {
    WIN32_FIND_DATAW entry;
    const unique_search search(::FindFirstFileExW((path + L"\\*").c_str(), FindExInfoBasic, &entry,
                                                  FindExSearchNameMatch, nullptr,
                                                  FIND_FIRST_EX_LARGE_FETCH));
    if (search) {
        do {
            const std::wstring_view name = entry.cFileName;
            if (name != L"." && name != L"..") {
                visit(entry);
            }
        } while (::FindNextFileW(search.get(), &entry) != FALSE);
    }
    // Where there is nothing at all, not even the two names that mean directories, none is found.
    const DWORD error = ::GetLastError();
    if (error != (search ? ERROR_NO_MORE_FILES : ERROR_FILE_NOT_FOUND)) {
        throw CWrapperException(filled(L"Unable to collect items from '%1%'", {path}),
                                filled(L"File system error: %1%", {system_text(error)}));
    }
}

} // namespace

CHDROPDirectory::CHDROPDirectory(std::wstring path, std::shared_ptr<refusals> left_out)
    : CHDROPItem(std::move(path)), m_left_out(std::move(left_out)) {
    if (::PathFileExistsW(this->path().c_str()) == FALSE) {
        throw CWrapperException(internal_error, filled(L"Path %1% does not exist", {this->path()}));
    }
}

std::vector<vfs::item_ptr> CHDROPDirectory::list() const {
    std::vector<vfs::item_ptr> items;
    for_each_entry(path(), [&](const WIN32_FIND_DATAW& entry) {
        const bool is_directory = (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        if (auto made =
                make_local_item(path() + L"\\" + entry.cFileName, is_directory, m_left_out)) {
            items.push_back(std::move(made));
        }
    });
    return items;
}

vfs::item_ptr make_local_item(const std::wstring& path, bool directory,
                              const std::shared_ptr<refusals>& left_out) {
    if (const wchar_t* const fault = fault_of_local_path(path, directory)) {
        left_out->add(path, fault);
        return nullptr;
    }
    if (directory) {
        return std::make_shared<CHDROPDirectory>(path, left_out);
    }
    return std::make_shared<CHDROPFile>(path);
}

} // namespace transfer
