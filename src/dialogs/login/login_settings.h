/// What the login dialog remembers of a user between its runs, in the registry. Whatever cannot be
/// read or written counts as not there; nobody is told.
#pragma once

#include <string>

namespace dialogs {

struct login_settings {
    bool save_password = false;
    bool auto_login = false;
};

login_settings load_login_settings();
void store_login_settings(const login_settings& settings);

/// Writes the credentials over those that are there; false when they could not be written.
///
/// The value is a sequence of 16-bit units in the machine's order: the user name, a zero, the
/// password, a zero. The unit at place i of the whole sequence is hidden from a casual reader by
/// XOR with (i - 0x2B6E) modulo 65536; the two zeros stand as they are. This is no encryption, and
/// a character that equals its mask is stored as a zero, at which reading ends the string.
bool store_credentials(const std::wstring& username, const std::wstring& password);

/// False, and nothing changed, when there are none.
bool load_credentials(std::wstring& username, std::wstring& password);

} // namespace dialogs
