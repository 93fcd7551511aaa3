/// What a data object is read back from: whatever the bytes are and promise, what was read is whole
/// and is written again as the same bytes.
#include "check.h"
#include "shell_items/id_list_bytes.h"
#include "transfer/data_object/persisted_selection.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace {

/// A stream that delivers its bytes once.
class stream {
public:
    explicit stream(std::span<const std::byte> bytes) : left_(bytes) {}

    std::size_t read(std::span<std::byte> to) {
        const std::size_t size = std::min(to.size(), left_.size());
        std::copy_n(left_.begin(), size, to.begin());
        left_ = left_.subspan(size);
        asked_ += to.size();
        return size;
    }

    std::size_t left() const noexcept { return left_.size(); }

    /// How much room was made for what is read.
    std::size_t asked() const noexcept { return asked_; }

private:
    std::span<const std::byte> left_;
    std::size_t asked_ = 0;
};

void expect_whole(const std::vector<std::byte>& list) {
    fuzz::check(shell::holds_whole_list(list), "a list has its end");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span bytes(reinterpret_cast<const std::byte*>(data), size);
    stream from(bytes);
    const auto read =
        transfer::read_selection([&from](std::span<std::byte> to) { return from.read(to); });
    constexpr std::size_t step = 65536;
    fuzz::check(from.asked() <= size + step, "no more memory than there are bytes");
    if (!read) {
        return 0;
    }
    expect_whole(read->root.bytes);
    expect_whole(read->folder.bytes);
    for (const std::vector<std::byte>& item : read->items) {
        expect_whole(item);
    }
    const auto written = transfer::to_bytes(*read);
    fuzz::check(std::ranges::equal(written, bytes.first(size - from.left())),
                "it is written as it was read");
    return 0;
}
