#pragma once

#include "driven_window.h"
#include "utils/unique_handle.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

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
/// The units as they are stored.
void set_credentials(const std::wstring& units, DWORD type = REG_BINARY);

/// User "demo" with a right and a wrong password, as units and as bytes.
inline const std::wstring demo_demo(L"\xd4f6\xd4f6\xd4f9\xd4fa\0\xd4f3\xd4fd\xd4f4\xd4f5\0", 10);
inline const std::wstring demo_wrong(L"\xd4f6\xd4f6\xd4f9\xd4fa\0\xd4e0\xd4ea\xd4f6\xd4f4\xd4fc\0",
                                     11);
inline constexpr auto demo_demo_bytes =
    "f6 d4 f6 d4 f9 d4 fa d4 00 00 f3 d4 fd d4 f4 d4 f5 d4 00 00";
inline constexpr auto demo_wrong_bytes =
    "f6 d4 f6 d4 f9 d4 fa d4 00 00 e0 d4 ea d4 f6 d4 f4 d4 fc d4 00 00";

/// Somebody who needs the store, on a thread of their own.
class caller {
public:
    caller();
    ~caller();

    /// What `ensure_logged_in` answered; waits for it.
    bool answer();

private:
    bool answer_ = false;
    std::thread thread_;
};

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
