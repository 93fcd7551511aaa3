#include "local/registered_pages.h"

#include <shlobj.h>
#include <wrl/client.h>

#include <algorithm>
#include <array>
#include <new>
#include <optional>
#include <string>

namespace local {

namespace {

using Microsoft::WRL::ComPtr;

/// The platform's sheets take no more.
constexpr std::size_t most_pages = 100;

constexpr auto handlers_key = L"ShellEx\\PropertySheetHandlers";
/// The longest name of a key.
constexpr DWORD longest_name = 256;

/// An extension is the value of its key, or the key's name.
std::optional<CLSID> extension_of(HKEY handlers, const wchar_t* name) {
    std::array<wchar_t, longest_name> value{};
    DWORD size = sizeof(value);
    CLSID id{};
    if (::RegGetValueW(handlers, name, nullptr, RRF_RT_REG_SZ, nullptr, value.data(), &size) ==
            ERROR_SUCCESS &&
        SUCCEEDED(::CLSIDFromString(value.data(), &id))) {
        return id;
    }
    return SUCCEEDED(::CLSIDFromString(name, &id)) ? std::optional(id) : std::nullopt;
}

std::vector<CLSID> extensions_of(HKEY key) {
    std::vector<CLSID> found;
    utils::unique_registry_key handlers;
    if (::RegOpenKeyExW(key, handlers_key, 0, KEY_READ, handlers.put()) != ERROR_SUCCESS) {
        return found;
    }
    std::array<wchar_t, longest_name> name{};
    for (DWORD index = 0;; ++index) {
        DWORD size = longest_name;
        if (::RegEnumKeyExW(handlers.get(), index, name.data(), &size, nullptr, nullptr, nullptr,
                            nullptr) != ERROR_SUCCESS) {
            return found;
        }
        if (const auto id = extension_of(handlers.get(), name.data())) {
            found.push_back(*id);
        }
    }
}

} // namespace

registered_pages::registered_pages(IDataObject& items,
                                   std::span<const utils::unique_registry_key> keys) {
    pages_.reserve(most_pages);
    std::vector<CLSID> known;
    for (const utils::unique_registry_key& key : keys) {
        for (const CLSID& extension : extensions_of(key.get())) {
            const bool twice = std::ranges::any_of(
                known, [&](const CLSID& each) { return IsEqualCLSID(each, extension); });
            if (!twice) {
                known.push_back(extension);
                add_pages(extension, items, key.get());
            }
        }
    }
}

registered_pages::~registered_pages() {
    for (const HPROPSHEETPAGE page : pages_) {
        ::DestroyPropertySheetPage(page);
    }
}

void registered_pages::add_pages(const CLSID& extension, IDataObject& items, HKEY key) {
    ComPtr<IShellExtInit> made;
    ComPtr<IShellPropSheetExt> sheet;
    // One that cannot be made or does not want these items has no page.
    if (SUCCEEDED(
            ::CoCreateInstance(extension, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&made))) &&
        SUCCEEDED(made->Initialize(nullptr, &items, key)) && SUCCEEDED(made.As(&sheet))) {
        sheet->AddPages(&add, reinterpret_cast<LPARAM>(this));
    }
}

BOOL CALLBACK registered_pages::add(HPROPSHEETPAGE page, LPARAM self) noexcept {
    auto& pages = reinterpret_cast<registered_pages*>(self)->pages_;
    if (pages.size() == most_pages) {
        return FALSE;
    }
    // There is room for it.
    pages.push_back(page);
    return TRUE;
}

} // namespace local
