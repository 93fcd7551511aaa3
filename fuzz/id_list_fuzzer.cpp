/// Item identifier lists from streams and shortcuts: whatever bytes they are, nothing is read
/// outside of them.
#include "check.h"
#include "shell_items/id_list_bytes.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace {

void walk(std::span<const std::byte> bytes) {
    const auto entries = shell::entries_of(bytes.data());
    fuzz::check(entries.size() + 2 <= bytes.size(), "the terminator lies in the list");
    std::span<const std::byte> last;
    for (auto left = entries; !left.empty(); left = left.subspan(last.size())) {
        last = left.first(shell::entry_size(left.data()));
        fuzz::check(last.size() >= 2, "an entry holds its own size");
    }
    const auto found = shell::last_entry_of(bytes.data());
    fuzz::check(found.data() == last.data() && found.size() == last.size(), "the last is the last");
    const auto first = shell::first_entry_of(bytes.data());
    fuzz::check(first.data() == bytes.data() && first.empty() == entries.empty(),
                "the first is the first");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // A block of just this size, so that the sanitizer knows its end.
    const std::vector<std::byte> bytes(reinterpret_cast<const std::byte*>(data),
                                       reinterpret_cast<const std::byte*>(data) + size);
    if (shell::holds_whole_list(bytes)) {
        walk(bytes);
    }
    return 0;
}
