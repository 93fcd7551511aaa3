#include "dialogs/login/login_settings.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <cstdint>

namespace dialogs {

namespace {

constexpr auto settings_key = L"SOFTWARE\\Quilldeck";
constexpr auto save_password_value = L"SavePass";
constexpr auto auto_login_value = L"AutoLogin";

constexpr auto credentials_key = L"CLSID\\{6E830710-B00F-4bec-9BD7-F95C1F837D02}";
constexpr auto credentials_value = L"Data1";

static_assert(sizeof(wchar_t) == 2);

constexpr wchar_t mask(std::size_t position) {
    return static_cast<wchar_t>(static_cast<std::uint16_t>(position - 0x2B6E));
}

bool load_flag(const wchar_t* name) {
    DWORD value = 0;
    DWORD size = sizeof(value);
    return RegGetValueW(HKEY_CURRENT_USER, settings_key, name, RRF_RT_REG_DWORD, nullptr, &value,
                        &size) == ERROR_SUCCESS &&
           value != 0;
}

void store_flag(const wchar_t* name, bool flag) {
    const DWORD value = flag ? 1 : 0;
    RegSetKeyValueW(HKEY_CURRENT_USER, settings_key, name, REG_DWORD, &value, sizeof(value));
}

void append_hidden(std::wstring& sequence, const std::wstring& text) {
    for (const wchar_t unit : text) {
        sequence.push_back(static_cast<wchar_t>(unit ^ mask(sequence.size())));
    }
    sequence.push_back(L'\0');
}

/// An odd byte at the end makes no unit.
bool read_sequence(std::wstring& sequence) {
    const auto read = [](void* data, DWORD& size) {
        return RegGetValueW(HKEY_CURRENT_USER, credentials_key, credentials_value,
                            RRF_RT_REG_BINARY, nullptr, data, &size) == ERROR_SUCCESS;
    };
    DWORD size = 0;
    if (!read(nullptr, size)) {
        return false;
    }
    sequence.resize((size + 1) / sizeof(wchar_t));
    if (!read(sequence.data(), size)) {
        return false;
    }
    sequence.resize(size / sizeof(wchar_t));
    return true;
}

} // namespace

login_settings load_login_settings() {
    return {load_flag(save_password_value), load_flag(auto_login_value)};
}

void store_login_settings(const login_settings& settings) {
    store_flag(save_password_value, settings.save_password);
    store_flag(auto_login_value, settings.auto_login);
}

bool store_credentials(const std::wstring& username, const std::wstring& password) {
    std::wstring sequence;
    append_hidden(sequence, username);
    append_hidden(sequence, password);
    return RegSetKeyValueW(HKEY_CURRENT_USER, credentials_key, credentials_value, REG_BINARY,
                           sequence.data(),
                           static_cast<DWORD>(sequence.size() * sizeof(wchar_t))) == ERROR_SUCCESS;
}

bool load_credentials(std::wstring& username, std::wstring& password) {
    std::wstring sequence;
    if (!read_sequence(sequence)) {
        return false;
    }
    const std::array texts{&username, &password};
    for (std::wstring* const text : texts) {
        text->clear();
        // One that grew would leave a part of the password behind.
        text->reserve(sequence.size());
    }
    std::size_t present = 0;
    for (std::size_t i = 0; i < sequence.size() && present < texts.size(); ++i) {
        if (sequence[i] == L'\0') {
            ++present;
        } else {
            texts[present]->push_back(static_cast<wchar_t>(sequence[i] ^ mask(i)));
        }
    }
    for (std::wstring* const text : texts) {
        // A unit that unmasks to zero ends the text, as it would in a buffer.
        text->resize(std::min(text->find(L'\0'), text->size()));
    }
    return true;
}

} // namespace dialogs
