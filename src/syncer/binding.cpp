#include "syncer/binding.h"

#include "utils/narrow.h"

#include <utility>

namespace syncer {

binding::binding(std::filesystem::path remote, std::filesystem::path local, std::wstring file,
                 binding_mode mode, binding_type type, std::wstring items_file,
                 std::int32_t recourse_subdirs, const binding_rule& rules)
    : _type(type), _mode(mode), dir_remote(std::move(remote)), dir_local(std::move(local)),
      filename(std::move(file)), can_recourse_subdirs(recourse_subdirs), rule(rules),
      items_filename(std::move(items_file)) {}

bool binding_order::operator()(const binding& left, const binding& right) const {
    if (const int order = left.dir_remote.compare(right.dir_remote); order != 0) {
        return order < 0;
    }
    if (const int order = left.dir_local.compare(right.dir_local); order != 0) {
        return order < 0;
    }
    return left.filename < right.filename;
}

std::wstring remote_path_of(const std::wstring& path) {
    constexpr auto root = L"Quilldeck";
    return path.empty() ? root : root + (path.front() == L'/' ? path : L'/' + path);
}

std::string text_of(const binding& named) {
    return utils::narrow(named.dir_local.native() + L" <- " + named.filename + L" -> " +
                         named.dir_remote.native());
}

} // namespace syncer
