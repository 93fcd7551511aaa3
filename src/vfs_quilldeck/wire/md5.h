#pragma once

#include <string>

namespace qd_crypt {

/// The MD5 digest (RFC 1321) of a string by the platform's hash service, as 32 lower-case
/// hexadecimal characters.
class md5 {
public:
    /// Throws `std::runtime_error` with the words of the step that failed.
    explicit md5(const std::string& text);
    virtual ~md5() = default;

    const std::string& str() const { return digest_; }

private:
    std::string digest_;
};

} // namespace qd_crypt
