#include "vfs_quilldeck/transfer/blowfish.h"

// The library has the cipher on its low level only, without a provider to load.
#define OPENSSL_SUPPRESS_DEPRECATED
#include <openssl/blowfish.h>

#include <algorithm>
#include <stdexcept>

namespace qd_crypt {

namespace {

constexpr std::size_t longest_key = 56;

using word_pair = std::array<BF_LONG, 2>;

word_pair load(const unsigned char* bytes) {
    const auto word = [bytes](std::size_t at) {
        return static_cast<BF_LONG>(bytes[at]) << 24U | static_cast<BF_LONG>(bytes[at + 1]) << 16U |
               static_cast<BF_LONG>(bytes[at + 2]) << 8U | static_cast<BF_LONG>(bytes[at + 3]);
    };
    return {word(0), word(4)};
}

blowfish::block store(const word_pair& words) {
    blowfish::block bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<unsigned char>(words[i / 4] >> (24U - 8U * (i % 4)));
    }
    return bytes;
}

blowfish::block exclusive_or(const blowfish::block& left, const blowfish::block& right) {
    blowfish::block result{};
    std::ranges::transform(left, right, result.begin(), [](unsigned char a, unsigned char b) {
        return static_cast<unsigned char>(a ^ b);
    });
    return result;
}

} // namespace

struct blowfish::schedule {
    BF_KEY key;
};

blowfish::blowfish() : schedule_(std::make_unique<schedule>()) {}

blowfish::~blowfish() = default;

void blowfish::set_key(std::span<const unsigned char> key, const block& initial_vector) {
    if (key.empty()) {
        throw std::runtime_error("Incorrect key length");
    }
    BF_set_key(&schedule_->key, static_cast<int>(std::min(key.size(), longest_key)), key.data());
    initial_vector_ = initial_vector;
    reset_vector();
}

void blowfish::process(blowfish_mode mode, std::span<const unsigned char> input,
                       std::span<unsigned char> output) {
    if (input.empty() || input.size() % block_size != 0) {
        throw std::runtime_error("Incorrect buffer length");
    }
    for (std::size_t at = 0; at < input.size(); at += block_size) {
        block in{};
        std::copy_n(input.data() + at, block_size, in.begin());
        word_pair words = load(in.data());
        if (mode == blowfish_mode::chained_encipher) {
            BF_encrypt(words.data(), &schedule_->key);
        } else {
            BF_decrypt(words.data(), &schedule_->key);
        }
        const block turned = store(words);
        block out = turned;
        if (mode != blowfish_mode::ecb_decipher) {
            out = exclusive_or(turned, vector_);
            vector_ = mode == blowfish_mode::cbc_decipher ? in : turned;
        }
        std::ranges::copy(out, output.begin() + static_cast<std::ptrdiff_t>(at));
    }
}

} // namespace qd_crypt
