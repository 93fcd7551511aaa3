#include "shell_items/file_types.h"

#include <windows.h>

#include <shellapi.h>
#include <shlwapi.h>

#include <iterator>

namespace shell {

namespace {

std::wstring read_perceived_type(const std::wstring& extension) {
    wchar_t text[64];
    DWORD size = sizeof(text);
    // The name of no extension would be that of the root key itself.
    if (extension.empty() || RegGetValueW(HKEY_CLASSES_ROOT, extension.c_str(), L"PerceivedType",
                                          RRF_RT_REG_SZ, nullptr, text, &size) != ERROR_SUCCESS) {
        return {};
    }
    return text;
}

bool equal_without_case(const std::wstring& left, const wchar_t* right) {
    return CompareStringOrdinal(left.c_str(), -1, right, -1, TRUE) == CSTR_EQUAL;
}

std::wstring read_type_text(const wchar_t* path, DWORD attributes) {
    SHFILEINFOW info{};
    const auto found = SHGetFileInfoW(path, attributes, &info, sizeof(info),
                                      SHGFI_USEFILEATTRIBUTES | SHGFI_TYPENAME);
    return found ? info.szTypeName : L"";
}

} // namespace

std::wstring_view extension_of(std::wstring_view name) {
    const std::size_t dot = name.rfind(L'.');
    return dot == std::wstring_view::npos ? std::wstring_view() : name.substr(dot);
}

bool is_perceived(const std::wstring& name, const wchar_t* word) {
    return equal_without_case(read_perceived_type(std::wstring(extension_of(name))), word);
}

bool is_audio(const std::wstring& name) {
    return is_perceived(name, L"audio");
}

bool is_video(const std::wstring& name) {
    return is_perceived(name, L"video");
}

const file_types::entry& file_types::of_file(std::wstring_view name) {
    const std::wstring_view extension = extension_of(name);
    auto found = files_.find(extension);
    if (found == files_.end()) {
        std::wstring key(extension);
        const std::wstring perceived = read_perceived_type(key);
        entry made{read_type_text(key.c_str(), FILE_ATTRIBUTE_NORMAL),
                   equal_without_case(perceived, L"audio"),
                   equal_without_case(perceived, L"video")};
        found = files_.emplace(std::move(key), std::move(made)).first;
    }
    return found->second;
}

const std::wstring& file_types::directory_text() {
    if (directory_text_.empty()) {
        directory_text_ = read_type_text(L"*", FILE_ATTRIBUTE_DIRECTORY);
    }
    return directory_text_;
}

} // namespace shell
