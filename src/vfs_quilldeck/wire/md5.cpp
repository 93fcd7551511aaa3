#include "vfs_quilldeck/wire/md5.h"

#include "utils/unique_handle.h"

#include <windows.h>

#include <wincrypt.h>

#include <array>
#include <stdexcept>

namespace qd_crypt {

namespace {

struct provider_traits {
    using pointer = HCRYPTPROV;

    static pointer none() noexcept { return 0; }

    static void close(pointer value) noexcept { CryptReleaseContext(value, 0); }
};

struct hash_traits {
    using pointer = HCRYPTHASH;

    static pointer none() noexcept { return 0; }

    static void close(pointer value) noexcept { CryptDestroyHash(value); }
};

void require(BOOL succeeded, const char* failure) {
    if (!succeeded) {
        throw std::runtime_error(failure);
    }
}

} // namespace

md5::md5(const std::string& text) {
    utils::unique_resource<provider_traits> provider;
    require(CryptAcquireContextW(provider.put(), nullptr, nullptr, PROV_RSA_FULL,
                                 CRYPT_VERIFYCONTEXT | CRYPT_SILENT) &&
                provider,
            "Can't acquire context");
    utils::unique_resource<hash_traits> hash;
    require(CryptCreateHash(provider.get(), CALG_MD5, 0, 0, hash.put()), "Can't create hash");
    require(CryptHashData(hash.get(), reinterpret_cast<const BYTE*>(text.data()),
                          static_cast<DWORD>(text.size()), 0),
            "Can't hash context");
    std::array<BYTE, 16> value{};
    DWORD size = static_cast<DWORD>(value.size());
    require(CryptGetHashParam(hash.get(), HP_HASHVAL, value.data(), &size, 0),
            "Can't get hash value");
    constexpr auto digits = "0123456789abcdef";
    for (const BYTE byte : value) {
        digest_.push_back(digits[byte >> 4U]);
        digest_.push_back(digits[byte & 0xFU]);
    }
}

} // namespace qd_crypt
