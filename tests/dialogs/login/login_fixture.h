#pragma once

#include "driven_window.h"
#include "utils/unique_handle.h"

#include <gtest/gtest.h>

#include <future>
#include <string>

namespace dialogs {

inline constexpr auto login_title = L"Quilldeck login";
inline constexpr auto settings_key = L"SOFTWARE\\Quilldeck";
inline constexpr auto credentials_key = L"CLSID\\{6E830710-B00F-4bec-9BD7-F95C1F837D02}";

/// What the dialog keeps in the registry: for each of the three values its type and its bytes in
/// hexadecimal, on a line.
std::string registry();
/// Such a text for two flags and the bytes of the credentials.
std::string values(int save_password, int auto_login, const std::string& credentials);

void set_flag(const wchar_t* name, DWORD value);

/// User "demo" with a right and a wrong password, as they are stored.
inline constexpr auto demo_demo_bytes =
    "f6 d4 f6 d4 f9 d4 fa d4 00 00 f3 d4 fd d4 f4 d4 f5 d4 00 00";
inline constexpr auto demo_wrong_bytes =
    "f6 d4 f6 d4 f9 d4 fa d4 00 00 e0 d4 ea d4 f6 d4 f4 d4 fc d4 00 00";

/// What `ensure_logged_in` answers somebody on a thread of their own, which the future waits for.
std::future<bool> need_store();

/// Nobody is signed in, and nothing is remembered.
class login_test : public testing::Test {
protected:
    login_test();

    /// Whether the event of a waiting dialog was set since the last call.
    bool waiting_was_told() const;

private:
    /// It stands in for the tray process, which is slow to start.
    utils::unique_handle tray_;
    utils::unique_handle event_;
};

} // namespace dialogs
