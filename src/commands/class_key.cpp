#include "commands/class_key.h"

#include "commands/registry_text.h"
#include "shell_items/file_types.h"

namespace commands {

namespace {

bool is_executable(const std::wstring& name) {
    const std::wstring extension(shell::extension_of(name));
    return CompareStringOrdinal(extension.c_str(), -1, L".exe", -1, TRUE) == CSTR_EQUAL;
}

utils::unique_registry_key read_class_key(ASSOCKEY kind, const std::wstring& name) {
    if (is_executable(name)) {
        return open_application(PathFindFileNameW(name.c_str()));
    }
    const std::wstring extension(shell::extension_of(name));
    if (kind != ASSOCKEY_SHELLEXECCLASS || extension.empty()) {
        return {};
    }
    const std::wstring class_name = read_text(HKEY_CLASSES_ROOT, extension, nullptr);
    return open_class(class_name.empty() ? extension : class_name);
}

} // namespace

utils::unique_registry_key open_class(const std::wstring& name) {
    utils::unique_registry_key key;
    // An empty name would open the root of all classes.
    if (!name.empty()) {
        RegOpenKeyExW(HKEY_CLASSES_ROOT, name.c_str(), 0, KEY_READ, key.put());
    }
    return key;
}

utils::unique_registry_key open_application(const std::wstring& name) {
    return name.empty() ? utils::unique_registry_key() : open_class(L"Applications\\" + name);
}

utils::unique_registry_key find_class_key(ASSOCKEY kind, const std::wstring& name) {
    utils::unique_registry_key key;
    const HRESULT found =
        AssocQueryKeyW(ASSOCF_OPEN_BYEXENAME, kind, name.c_str(), nullptr, key.put());
    return found == E_NOTIMPL ? read_class_key(kind, name) : std::move(key);
}

} // namespace commands
