#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace qd_crypt {

/// How `blowfish::process` treats a buffer.
enum class blowfish_mode {
    ecb_decipher = 0,     ///< electronic code book, each block by itself
    cbc_decipher = 1,     ///< plain = decipher(block) XOR vector, then vector = block
    chained_encipher = 2, ///< out = encipher(block) XOR vector, then vector = encipher(block)
};

/// The Blowfish cipher (B. Schneier, "Description of a New Variable-Length Key, 64-Bit Block
/// Cipher", 1993), its words big-endian. `chained_encipher` is not the textbook chaining and not
/// the inverse of `cbc_decipher`: both stay as the service's side has them. Objects share nothing.
class blowfish {
public:
    static constexpr std::size_t block_size = 8;
    using block = std::array<unsigned char, block_size>;

    blowfish();
    ~blowfish();

    /// Schedules a key; of a key longer than 56 bytes the first 56 count. Throws
    /// `std::runtime_error` with "Incorrect key length" for an empty key.
    void set_key(std::span<const unsigned char> key, const block& initial_vector);

    /// Back to the vector that `set_key` was given.
    void reset_vector() { vector_ = initial_vector_; }

    /// Turns `input` into `output`, which may be the same memory and is at least as long. Throws
    /// `std::runtime_error` with "Incorrect buffer length" unless the length is a multiple of 8
    /// above 0.
    void process(blowfish_mode mode, std::span<const unsigned char> input,
                 std::span<unsigned char> output);

private:
    struct schedule;

    std::unique_ptr<schedule> schedule_;
    block vector_{};
    block initial_vector_{};
};

} // namespace qd_crypt
