/// Lists of dropped paths: what is said to be whole is read as the platform reads it, without a
/// look at the end of the block.
#include "check.h"
#include "shell_items/file_list_block.h"

#include <cstdint>
#include <cstring>
#include <vector>

namespace {

template <class Character>
std::size_t count_paths(const std::byte* list) {
    const auto next = [&list] {
        Character character;
        std::memcpy(&character, list, sizeof character);
        list += sizeof character;
        return character;
    };
    std::size_t count = 0;
    while (next() != 0) {
        ++count;
        while (next() != 0) {
        }
    }
    return count;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<std::byte> block(reinterpret_cast<const std::byte*>(data),
                                       reinterpret_cast<const std::byte*>(data) + size);
    if (const auto count = shell::count_of_paths(block)) {
        std::uint32_t offset = 0;
        std::memcpy(&offset, block.data(), sizeof offset);
        std::uint32_t wide = 0;
        std::memcpy(&wide, block.data() + 16, sizeof wide);
        const std::byte* const list = block.data() + offset;
        fuzz::check(*count == (wide != 0 ? count_paths<char16_t>(list) : count_paths<char>(list)),
                    "the paths are those of the platform");
    }
    return 0;
}
