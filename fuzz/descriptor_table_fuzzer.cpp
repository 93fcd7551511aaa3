/// Descriptor blocks of other programs, beside a model that looks for each item's place by itself.
/// The first byte of an input chooses: the rest is a block as it stands, or short names in short
/// records, from which a block is made.
#include "check.h"
#include "transfer/descriptor_items/descriptor_record.h"
#include "transfer/descriptor_items/descriptor_table.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace {

using transfer::descriptor_record;
using transfer::descriptor_table;

using elements = std::vector<std::u16string>;

constexpr std::size_t most_modelled = 24;

elements split(std::u16string_view path) {
    elements found{u""};
    for (const char16_t character : path) {
        if (character == u'\\') {
            found.emplace_back();
        } else {
            found.back() += character;
        }
    }
    return found;
}

bool can_be_placed(const descriptor_record& record, const elements& path) {
    const bool drive = path[0].size() == 2 && path[0][1] == u':' && path[0][0] < 128 &&
                       std::isalpha(path[0][0]) != 0;
    return std::ranges::find(record.name, u'\0') != std::end(record.name) && !drive &&
           std::ranges::none_of(path, [](const std::u16string& element) {
               return element.empty() || element == u"." || element == u".." ||
                      element.find(u'/') != std::u16string::npos;
           });
}

/// What the table must say, found anew for each item.
class model {
public:
    explicit model(std::span<const descriptor_record> records) : records_(records) {
        for (const auto& record : records) {
            const auto end = std::ranges::find(record.name, u'\0');
            paths_.push_back(split({record.name, end}));
        }
    }

    /// The first item of that path which can be placed.
    std::optional<std::size_t> find(const elements& path) const {
        for (std::size_t index = 0; index < paths_.size(); ++index) {
            if (paths_[index] == path && can_be_placed(records_[index], path)) {
                return index;
            }
        }
        return std::nullopt;
    }

    bool is_directory(std::size_t index) const {
        return (records_[index].flags & transfer::has_attributes) != 0 &&
               (records_[index].attributes & transfer::attribute_directory) != 0;
    }

    bool has_place(std::size_t index) const {
        if (find(paths_[index]) != index) {
            return false;
        }
        const auto parent = parent_of(index);
        return paths_[index].size() == 1 || (parent && is_directory(*parent) && has_place(*parent));
    }

    std::optional<std::size_t> parent_of(std::size_t index) const {
        elements path = paths_[index];
        path.pop_back();
        return find(path);
    }

    std::vector<std::uint32_t> children(std::size_t directory) const {
        std::vector<std::uint32_t> found;
        for (std::uint32_t index = 0; index < paths_.size(); ++index) {
            if (has_place(index) &&
                parent_of(index).value_or(descriptor_table::root) == directory) {
                found.push_back(index);
            }
        }
        return found;
    }

    const elements& path(std::size_t index) const { return paths_[index]; }

private:
    std::span<const descriptor_record> records_;
    std::vector<elements> paths_;
};

/// Records of a byte that holds the kind and the length of the name, and the name.
std::vector<std::byte> make_block(std::span<const std::uint8_t> input) {
    std::vector<std::byte> block(transfer::descriptor_count_size);
    std::uint32_t count = 0;
    while (!input.empty()) {
        descriptor_record record{};
        record.flags = (input[0] & 1) != 0 ? transfer::has_attributes : 0;
        record.attributes = (input[0] & 2) != 0 ? transfer::attribute_directory : 0;
        const std::size_t length = std::min<std::size_t>(input[0] >> 2, input.size() - 1);
        std::copy_n(input.begin() + 1, length, record.name);
        input = input.subspan(1 + length);
        const auto bytes = std::as_bytes(std::span(&record, 1));
        block.insert(block.end(), bytes.begin(), bytes.end());
        ++count;
    }
    std::memcpy(block.data(), &count, sizeof count);
    return block;
}

void check_table(const std::vector<std::byte>& block) {
    const descriptor_table table(block);
    fuzz::check(table.count() * transfer::descriptor_record_size <= block.size(),
                "no record is read beyond the block");
    std::uint32_t announced = 0;
    if (block.size() >= sizeof announced) {
        std::memcpy(&announced, block.data(), sizeof announced);
        fuzz::check(table.count() + table.missing() == announced, "each record is told of");
    }
    std::vector<descriptor_record> records(table.count());
    if (!records.empty()) {
        std::memcpy(records.data(), block.data() + transfer::descriptor_count_size,
                    records.size() * sizeof records[0]);
    }
    if (records.size() > most_modelled) {
        return;
    }
    const model expected(records);
    const auto check_children = [&](std::size_t directory) {
        const auto children = table.children(directory);
        fuzz::check(std::ranges::equal(children, expected.children(directory)),
                    "the children are those of the model, in the order of the table");
    };
    check_children(descriptor_table::root);
    for (std::size_t index = 0; index < records.size(); ++index) {
        fuzz::check((table.fault_of(index) == descriptor_table::fault::none) ==
                        expected.has_place(index),
                    "all that has no place is set apart, and nothing else");
        fuzz::check(split(table.path(index)) == expected.path(index) &&
                        table.name(index) == expected.path(index).back(),
                    "the names are those of the records");
        fuzz::check(table.is_directory(index) == expected.is_directory(index), "the kind");
        if (expected.has_place(index) && expected.is_directory(index)) {
            check_children(index);
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::span rest(data + 1, size - 1);
    const auto raw = std::as_bytes(rest);
    // A block of just this size, so that the sanitizer knows its end.
    check_table(data[0] % 2 == 0 ? std::vector<std::byte>(raw.begin(), raw.end())
                                 : make_block(rest));
    return 0;
}
