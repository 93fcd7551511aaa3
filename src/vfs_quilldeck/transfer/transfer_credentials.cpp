#include "vfs_quilldeck/transfer/transfer_credentials.h"

#include "utils/wipe.h"
#include "vfs_quilldeck/wire/exceptions.h"
#include "vfs_quilldeck/wire/md5.h"
#include "vfs_quilldeck/wire/reply_node.h"
#include "vfs_quilldeck/wire/text_encoding.h"

#include <utf8.h>
#include <windows.h>

#include <iterator>

namespace vfs_quilldeck {

namespace {

std::wstring widen_by_system_page(const std::string& text) {
    std::wstring wide(transfer_data_limit, L'\0');
    const int length =
        MultiByteToWideChar(CP_ACP, 0, text.c_str(), static_cast<int>(text.size()) + 1, wide.data(),
                            static_cast<int>(wide.size()));
    if (length == 0) {
        throw exception(L"Login failed", L"Invalid parameter");
    }
    wide.resize(static_cast<std::size_t>(length) - 1);
    return wide;
}

} // namespace

transfer_credentials decode_transfer_data(const std::wstring& data,
                                          const std::vector<std::wstring>& key_parts) {
    constexpr std::size_t longest_unit = 3;
    std::size_t longest = 0;
    for (const std::wstring& part : key_parts) {
        longest += longest_unit * part.size();
    }
    std::string key_text;
    key_text.reserve(longest);
    const utils::wipe_at_end password(key_text);
    for (const std::wstring& part : key_parts) {
        utf8::utf16to8(part.begin(), part.end(), std::back_inserter(key_text));
    }
    const std::string text =
        decipher_transfer_data(wide_to_utf8(data), qd_crypt::md5(key_text).str());
    const reply_node result =
        reply_node::parse(L"<Result>" + widen_by_system_page(text) + L"</Result>");
    return {wide_to_utf8(result.get_child_text(L"Host")),
            wide_to_utf8(result.get_child_text(L"User")),
            wide_to_utf8(result.get_child_text(L"Pass"))};
}

} // namespace vfs_quilldeck
