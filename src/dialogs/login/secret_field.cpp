#include "dialogs/login/secret_field.h"

#include "utils/wipe.h"

namespace dialogs {

void read_secret(HWND field, std::wstring& secret) {
    utils::wipe(secret);
    secret.resize(static_cast<std::size_t>(GetWindowTextLengthW(field)) + 1);
    // The length that was told first may be too large.
    const int length = GetWindowTextW(field, secret.data(), static_cast<int>(secret.size()));
    secret.resize(static_cast<std::size_t>(length));
}

void clear_secret(HWND field) {
    // The field keeps its memory when its text gets shorter.
    const std::wstring blanks(static_cast<std::size_t>(GetWindowTextLengthW(field)), L' ');
    SetWindowTextW(field, blanks.c_str());
    SetWindowTextW(field, L"");
}

} // namespace dialogs
