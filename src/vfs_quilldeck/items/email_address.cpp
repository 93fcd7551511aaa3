#include "vfs_quilldeck/items/email_address.h"

namespace vfs_quilldeck {

bool is_valid_email(const std::wstring& text) {
    constexpr std::size_t shortest = 5;
    if (text.size() < shortest || text.find_first_of(L" #!?&\\|/<>\n\r") != std::wstring::npos) {
        return false;
    }
    const std::size_t at = text.find(L'@');
    if (at == std::wstring::npos || at == 0) {
        return false;
    }
    const std::size_t dot = text.find(L'.', at);
    return dot != std::wstring::npos && dot != text.size() - 1;
}

} // namespace vfs_quilldeck
