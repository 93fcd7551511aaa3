#include "syncer/binding_node.h"

#include "serializer/exceptions.h"

#include <source_location>
#include <utility>

namespace syncer {

namespace {

constexpr std::pair<const wchar_t*, std::int32_t binding_rule::*> rule_keys[] = {
    {L"can_upload", &binding_rule::can_upload},
    {L"can_download", &binding_rule::can_download},
    {L"can_overwrite_upload", &binding_rule::can_overwrite_upload},
    {L"can_overwrite_download", &binding_rule::can_overwrite_download},
    {L"can_remove_remote", &binding_rule::can_remove_remote},
    {L"can_remove_remote_dir", &binding_rule::can_remove_remote_dir},
    {L"can_remove_local", &binding_rule::can_remove_local},
    {L"can_remove_local_dir", &binding_rule::can_remove_local_dir},
};

binding_rule read_rule(const serializer::node& from) {
    binding_rule rule;
    for (const auto& [key, field] : rule_keys) {
        rule.*field = from.get_child_int(key, 0);
    }
    return rule;
}

void write_rule(const binding_rule& from, serializer::node& to) {
    for (const auto& [key, field] : rule_keys) {
        to.set_child_int(key, from.*field);
    }
}

} // namespace

binding read_binding(const serializer::node& from) {
    const auto rule = from.lower_bound(L"rule");
    if (rule == from.end() || rule->first != L"rule") {
        throw serializer::wrong_format_exception(std::source_location::current().function_name(),
                                                 "Binding has no rule");
    }
    binding read(from.get_child_value(L"dir_remote", L""), from.get_child_value(L"dir_local", L""),
                 std::wstring(from.get_child_value(L"filename", L"")),
                 static_cast<binding_mode>(from.get_child_int(L"_mode", 1)),
                 static_cast<binding_type>(from.get_child_int(L"_type", 0)),
                 std::wstring(from.get_child_value(L"items_filename", L"")),
                 from.get_child_int(L"can_recourse_subdirs", 0), read_rule(rule->second));
    read.force_sync_once = from.get_child_int(L"force_sync_once", 0) != 0;
    return read;
}

void write_binding(const binding& from, serializer::node& to) {
    to.set_child_int(L"_mode", static_cast<std::int32_t>(from._mode));
    to.set_child_int(L"_type", static_cast<std::int32_t>(from._type));
    to.set_child_value(L"dir_remote", from.dir_remote.native());
    to.set_child_value(L"dir_local", from.dir_local.native());
    to.set_child_value(L"filename", from.filename);
    to.set_child_value(L"items_filename", from.items_filename);
    to.set_child_int(L"can_recourse_subdirs", from.can_recourse_subdirs);
    write_rule(from.rule, to.add_child(L"rule", L"")->second);
    to.set_child_int(L"force_sync_once", from.force_sync_once ? 1 : 0);
}

} // namespace syncer
