#include "syncer/binding_paths.h"

#include <algorithm>

namespace syncer {

namespace {

bool is_separator(wchar_t c) noexcept {
    return c == L'/' || c == L'\\';
}

} // namespace

bool same_path(std::wstring_view left, std::wstring_view right) noexcept {
    return std::ranges::equal(left, right, [](wchar_t a, wchar_t b) {
        return a == b || (is_separator(a) && is_separator(b));
    });
}

std::wstring join_path(std::wstring folder, std::wstring_view name, wchar_t separator) {
    if (!name.empty() && !folder.empty() && !is_separator(folder.back())) {
        folder += separator;
    }
    return folder.append(name);
}

std::wstring local_path_of(const binding& named) {
    return join_path(named.dir_local.native(), named.filename, L'\\');
}

std::wstring remote_path_of(const binding& named) {
    return join_path(named.dir_remote.native(), named.filename, L'/');
}

} // namespace syncer
