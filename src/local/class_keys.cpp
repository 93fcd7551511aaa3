#include "local/class_keys.h"

#include "com/guard.h"

#include <shellapi.h>
#include <shlobj.h>
#include <shlwapi.h>
#include <wrl/client.h>

#include <array>
#include <string>

namespace local {

namespace {

using Microsoft::WRL::ComPtr;
using utils::unique_registry_key;

unique_registry_key open_class(const std::wstring& name) {
    unique_registry_key key;
    // An empty name would open the root of all classes.
    if (!name.empty()) {
        ::RegOpenKeyExW(HKEY_CLASSES_ROOT, name.c_str(), 0, KEY_READ, key.put());
    }
    return key;
}

/// The class that an extension, with its dot, names; the extension itself when it names none.
std::wstring class_of(const std::wstring& extension) {
    std::array<wchar_t, 256> name{};
    DWORD size = sizeof(name);
    const bool named = !extension.empty() &&
                       ::RegGetValueW(HKEY_CLASSES_ROOT, extension.c_str(), nullptr, RRF_RT_REG_SZ,
                                      nullptr, name.data(), &size) == ERROR_SUCCESS &&
                       name[0] != L'\0';
    return named ? name.data() : extension;
}

struct class_names {
    std::wstring own;
    std::wstring base;
};

class_names names_of(const ITEMIDLIST* item) {
    SHFILEINFOW info{};
    ::SHGetFileInfoW(reinterpret_cast<LPCWSTR>(item), 0, &info, sizeof(info),
                     SHGFI_PIDL | SHGFI_ATTRIBUTES);
    if ((info.dwAttributes & SFGAO_FOLDER) != 0) {
        return {L"Directory", L"Folder"};
    }
    std::array<wchar_t, MAX_PATH> path{};
    ::SHGetPathFromIDListW(item, path.data());
    return {class_of(::PathFindExtensionW(path.data())), L"*"};
}

ComPtr<IQueryAssociations> associations_of(const ITEMIDLIST* item) {
    ComPtr<IShellFolder> parent;
    const ITEMIDLIST* child = nullptr;
    com::check(::SHBindToParent(item, IID_PPV_ARGS(&parent), &child));
    ComPtr<IQueryAssociations> found;
    parent->GetUIObjectOf(nullptr, 1, &child, IID_IQueryAssociations, nullptr,
                          reinterpret_cast<void**>(found.GetAddressOf()));
    return found;
}

unique_registry_key ask(IQueryAssociations* associations, ASSOCKEY kind) {
    unique_registry_key key;
    if (associations &&
        FAILED(associations->GetKey(ASSOCF_IGNOREBASECLASS, kind, nullptr, key.put()))) {
        key.reset();
    }
    return key;
}

} // namespace

std::vector<unique_registry_key> class_keys_of(const ITEMIDLIST* item) {
    const ComPtr<IQueryAssociations> associations = associations_of(item);
    const class_names names = names_of(item);
    std::vector<unique_registry_key> keys;
    const auto add = [&keys](unique_registry_key key, const std::wstring& name) {
        if (!key) {
            key = open_class(name);
        }
        if (key) {
            keys.push_back(std::move(key));
        }
    };
    add(ask(associations.Get(), ASSOCKEY_CLASS), names.own);
    add(ask(associations.Get(), ASSOCKEY_BASECLASS), names.base);
    add({}, L"AllFilesystemObjects");
    return keys;
}

} // namespace local
