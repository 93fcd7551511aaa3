#include "commands/association_list.h"

#include "com/guard.h"
#include "commands/class_key.h"
#include "commands/item_array.h"
#include "commands/registry_text.h"
#include "shell_items/file_types.h"

#include <algorithm>
#include <utility>

namespace commands {

namespace {

bool equal_without_case(const std::wstring& left, const std::wstring& right) {
    return CompareStringOrdinal(left.c_str(), -1, right.c_str(), -1, TRUE) == CSTR_EQUAL;
}

/// The name of an item; empty for a folder, and for what is not ours. What lies in the Trash is no
/// folder.
std::wstring file_name(IShellItemArray& items, DWORD index) {
    const auto record = record_of(items, index);
    return !record || (record->is_directory() && record->is_live()) ? std::wstring()
                                                                    : record->get_name();
}

} // namespace

void AssociationList::clear() noexcept {
    perceived_type_.clear();
    entries_.clear();
}

const Association* AssociationList::default_program() const {
    return entries_.empty() ? nullptr : &entries_.front();
}

void AssociationList::add(utils::unique_registry_key key, const std::wstring& key_name) {
    if (!key) {
        return;
    }
    auto made = make_association(std::move(key), key_name);
    const auto same = [&made](const Association& other) {
        return equal_without_case(other.executable, made->executable);
    };
    if (made && std::ranges::none_of(entries_, same)) {
        entries_.push_back(*std::move(made));
    }
}

void AssociationList::add_classes(const std::wstring& extension) {
    const auto offered = open_class(extension + L"\\OpenWithProgIds");
    if (offered) {
        for (const std::wstring& name : value_names(offered.get())) {
            add(open_class(name), name);
        }
    }
}

void AssociationList::add_applications() {
    const auto offered =
        open_class(L"SystemFileAssociations\\" + perceived_type_ + L"\\OpenWithList");
    if (offered) {
        for (const std::wstring& name : subkey_names(offered.get())) {
            add(open_application(name), name);
        }
    }
}

bool AssociationList::load(const std::wstring& name, bool default_only) {
    clear();
    const std::wstring extension(shell::extension_of(name));
    if (extension.empty()) {
        return false;
    }
    perceived_type_ = read_text(HKEY_CLASSES_ROOT, extension, L"PerceivedType");
    for (const ASSOCKEY kind : {ASSOCKEY_SHELLEXECCLASS, ASSOCKEY_APP}) {
        if (entries_.empty()) {
            add(find_class_key(kind, name), {});
        }
    }
    if (entries_.empty()) {
        return false;
    }
    if (!default_only) {
        add_classes(extension);
        if (!perceived_type_.empty()) {
            add_applications();
        }
    }
    return true;
}

std::wstring AssociationList::common_program(const std::wstring& name, const std::wstring& other) {
    AssociationList programs;
    AssociationList others;
    if (!programs.load(name, false)) {
        return {};
    }
    others.load(other, false);
    const auto shared = std::ranges::find_if(programs.entries_, [&](const Association& program) {
        return std::ranges::any_of(others.entries_, [&](const Association& candidate) {
            return equal_without_case(program.executable, candidate.executable);
        });
    });
    return shared == programs.entries_.end() ? programs.entries_.front().executable
                                             : shared->executable;
}

bool AssociationList::load_for(IShellItemArray& items) {
    com::check(items.GetCount(&item_count_));
    if (item_count_ == 0) {
        return false;
    }
    const std::wstring name = file_name(items, 0);
    const std::wstring extension(shell::extension_of(name));
    if (extension.empty()) {
        return false;
    }
    for (DWORD index = 1; index < item_count_; ++index) {
        const std::wstring other = file_name(items, index);
        if (!equal_without_case(extension, std::wstring(shell::extension_of(other)))) {
            return false;
        }
    }
    if (item_count_ == 1) {
        return load(name, false);
    }
    return (shell::is_audio(name) || shell::is_video(name)) &&
           load_default(common_program(name, L".m3u"));
}

bool AssociationList::check_selection(IShellItemArray* items) noexcept {
    if (!items) {
        return false;
    }
    if (items != checked_.Get()) {
        clear();
        item_count_ = 0;
        checked_ = items;
        try {
            if (!load_for(*items)) {
                clear();
            }
        } catch (...) {
            clear();
        }
    }
    return !entries_.empty();
}

} // namespace commands
