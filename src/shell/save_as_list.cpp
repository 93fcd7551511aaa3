#include "shell/save_as_list.h"

#include "utils/exceptions.h"
#include "utils/unique_handle.h"
#include "vfs_quilldeck/session/session_objects.h"
#include "vfs_quilldeck/wire/reply_node.h"

#include <cstring>
#include <cwchar>
#include <source_location>
#include <string_view>

namespace shell {

namespace {

using vfs_quilldeck::save_as_mapping_name;
using vfs_quilldeck::save_as_view_size;

constexpr std::wstring_view root_name = L"SaveAsFiles";
constexpr std::wstring_view entry_name = L"NewFile";

[[noreturn]] void raise(const char* call) {
    throw utils::system_error_exception(std::source_location::current().function_name(), call,
                                        GetLastError());
}

/// One element; the format escapes nothing but angle brackets.
void print(std::wstring& out, std::wstring_view name, std::wstring_view text) {
    out.append(L"<").append(name).append(L">");
    for (const wchar_t c : text) {
        if (c == L'<' || c == L'>') {
            out += L'\\';
        }
        out += c;
    }
    out.append(L"</").append(name).append(L">");
}

std::wstring add_entry(std::wstring_view old, const std::wstring& path) {
    std::wstring text = std::wstring(L"<").append(root_name).append(L">");
    if (!old.empty()) {
        for (const auto& child : vfs_quilldeck::reply_node::parse(old).children()) {
            if (child.name() == entry_name) {
                print(text, entry_name, child.text());
            }
        }
    }
    print(text, entry_name, path);
    return text.append(L"</").append(root_name).append(L">");
}

} // namespace

void add_to_save_as_list(const std::wstring& path) {
    const utils::unique_handle mapping(
        OpenFileMappingW(FILE_MAP_ALL_ACCESS, FALSE, save_as_mapping_name));
    if (!mapping) {
        raise("::OpenFileMappingW(FILE_MAP_ALL_ACCESS, FALSE, name)");
    }
    const utils::unique_view view(
        MapViewOfFile(mapping.get(), FILE_MAP_ALL_ACCESS, 0, 0, save_as_view_size));
    if (!view) {
        raise("::MapViewOfFile(mapping, FILE_MAP_ALL_ACCESS, 0, 0, size)");
    }
    auto* const units = static_cast<wchar_t*>(view.get());
    const std::wstring text =
        add_entry({units, wcsnlen(units, save_as_view_size / sizeof(wchar_t))}, path);
    const std::size_t size = text.size() * sizeof(wchar_t);
    if (size > save_as_view_size) {
        throw utils::utils_exception(std::source_location::current().function_name(),
                                     "the list is full");
    }
    std::memset(view.get(), 0, save_as_view_size);
    std::memcpy(view.get(), text.data(), size);
}

} // namespace shell
