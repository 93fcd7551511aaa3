/// The reading of the field `Data` of a login: the transfer host and account, enciphered by the
/// service for this client.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vfs_quilldeck {

/// The three texts that `Data` holds, in UTF-8.
struct transfer_credentials {
    std::string host;
    std::string user;
    std::string password;
};

/// The largest `Data` that is read, in bytes after Base64 and in characters of its text.
inline constexpr std::size_t transfer_data_limit = 1024;

/// Deciphers `data` by the Blowfish key that a digest of the key parts gives (its first 24
/// hexadecimal characters) and answers the text up to its first zero byte. Throws `exception` named
/// "Login failed" when the digest is empty or the data decode to nothing, and `std::runtime_error`
/// when their length is no multiple of 8.
std::string decipher_transfer_data(std::string_view data, std::string_view digest);

/// Reads `data` with the given key parts: user name, password and `UserID` after a login, "0", "0"
/// and `UserID` after a restored session. Throws as `decipher_transfer_data` does.
transfer_credentials decode_transfer_data(const std::wstring& data,
                                          const std::vector<std::wstring>& key_parts);

} // namespace vfs_quilldeck
