#include "syncer/local_copies.h"

#include "serializer/exceptions.h"
#include "serializer/file_serializer.h"
#include "syncer/user_directory.h"
#include "utils/filesystem.h"

#include <windows.h>

#include <cerrno>
#include <cwchar>
#include <source_location>
#include <utility>

namespace syncer {

namespace {

constexpr auto copy_key = L"copy";

std::filesystem::path file_of(const std::wstring& user_name) {
    return settings_file(user_name, L"local_copies.xml",
                         std::source_location::current().function_name());
}

std::int64_t read_date(const serializer::node& from) {
    const std::wstring text(from.get_child_value(L"date_given", L""));
    wchar_t* end = nullptr;
    errno = 0;
    const std::int64_t date = std::wcstoll(text.c_str(), &end, 10);
    if (text.empty() || *end != L'\0' || errno == ERANGE) {
        throw serializer::wrong_format_exception(std::source_location::current().function_name(),
                                                 "Incorrect number syntax");
    }
    return date;
}

} // namespace

bool local_copies::path_order::operator()(const std::filesystem::path& left,
                                          const std::filesystem::path& right) const {
    return CompareStringOrdinal(left.c_str(), -1, right.c_str(), -1, TRUE) == CSTR_LESS_THAN;
}

local_copies::local_copies(const std::wstring& user_name)
    : user_name_(user_name), mutex_(L"Local\\" + user_name + L"_local_copies_mutex"),
      lock_(mutex_) {
    const std::filesystem::path path = file_of(user_name_);
    if (!utils::filesystem::exists(path)) {
        return;
    }
    const auto tree = serializer::file_serializer::load_cached(path);
    const auto [first, last] = tree->equal_range(copy_key);
    for (auto child = first; child != last; ++child) {
        const serializer::node& from = child->second;
        put({from.get_child_value(L"local", L""),
             std::wstring(from.get_child_value(L"remote_path", L"")),
             std::wstring(from.get_child_value(L"remote_id", L"")), read_date(from)});
    }
}

std::optional<local_copy> local_copies::find(const std::filesystem::path& local) const {
    const auto found = copies_.find(local);
    return found == copies_.end() ? std::nullopt : std::optional(found->second);
}

void local_copies::put(local_copy copy) {
    const std::filesystem::path key = copy.local;
    copies_.insert_or_assign(key, std::move(copy));
}

void local_copies::save() const {
    serializer::node tree(L"local_copies", L"");
    for (const auto& [path, copy] : copies_) {
        serializer::node& to = tree.add_child(copy_key, L"")->second;
        to.set_child_value(L"local", path.native());
        to.set_child_value(L"remote_path", copy.remote_path);
        to.set_child_value(L"remote_id", copy.remote_id);
        to.set_child_value(L"date_given", std::to_wstring(copy.date_given));
    }
    serializer::file_serializer::save_cached(file_of(user_name_), std::move(tree), false);
}

} // namespace syncer
