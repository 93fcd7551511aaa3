#include "sha256.h"

#include <openssl/evp.h>

#include <array>
#include <stdexcept>

namespace tour {

namespace {

void require(int succeeded) {
    if (succeeded != 1) {
        throw std::runtime_error("SHA-256 is not available");
    }
}

} // namespace

void sha256::free_context::operator()(evp_md_ctx_st* context) const {
    EVP_MD_CTX_free(context);
}

sha256::sha256() : context_(EVP_MD_CTX_new()) {
    require(EVP_DigestInit_ex(context_.get(), EVP_sha256(), nullptr));
}

sha256::~sha256() = default;

void sha256::add(const void* data, std::size_t size) {
    require(EVP_DigestUpdate(context_.get(), data, size));
}

std::wstring sha256::finish() {
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned size = 0;
    require(EVP_DigestFinal_ex(context_.get(), digest.data(), &size));
    constexpr auto digits = L"0123456789abcdef";
    std::wstring text;
    for (unsigned i = 0; i < size; ++i) {
        text.push_back(digits[digest[i] >> 4U]);
        text.push_back(digits[digest[i] & 0xFU]);
    }
    return text;
}

} // namespace tour
