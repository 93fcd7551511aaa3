#pragma once

#include <cstddef>
#include <memory>
#include <string>

struct evp_md_ctx_st;

namespace tour {

/// The SHA-256 digest (FIPS 180-4) of bytes that come in pieces.
class sha256 {
public:
    sha256();
    ~sha256();

    void add(const void* data, std::size_t size);
    /// 64 lower-case hexadecimal characters; nothing may be added after it.
    std::wstring finish();

private:
    struct free_context {
        void operator()(evp_md_ctx_st* context) const;
    };

    std::unique_ptr<evp_md_ctx_st, free_context> context_;
};

} // namespace tour
