#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace transfer {

/// The records of a descriptor block as a tree. The block comes from another program: nothing is
/// read outside of it, and what has no place in the tree is set apart. Each path is looked at once,
/// here; nothing of the block is kept. Any thread may read it.
class descriptor_table {
public:
    /// Why a record has no place in the tree.
    enum class fault : std::uint8_t {
        none,
        endless_name,   ///< the name has no terminator, so that its end may be missing
        bad_name,       ///< an element is empty, "." or "..", holds a slash or names a drive
        doubled,        ///< an earlier record has the same path
        inside_file,    ///< what should hold it is a file
        missing_folder, ///< what should hold it is not in the table, or has no place itself
    };

    /// The top of the tree, which has no record.
    static constexpr std::size_t root = static_cast<std::size_t>(-1);

    explicit descriptor_table(std::span<const std::byte> block);

    /// How many records the block holds, which may be fewer than it announces.
    std::size_t count() const noexcept { return m_entries.size(); }

    /// How many records were announced and are not there.
    std::size_t missing() const noexcept { return m_missing; }

    /// `index` is below `count()` in all that follows.
    bool is_directory(std::size_t index) const { return m_entries[index].directory; }

    fault fault_of(std::size_t index) const { return m_entries[index].why; }

    /// The whole name of a record, in which backslashes part the elements.
    std::u16string_view path(std::size_t index) const;
    /// Its last element.
    std::u16string_view name(std::size_t index) const;
    /// The numbers of those that lie in the directory, or in `root`, in the order of the table.
    std::span<const std::uint32_t> children(std::size_t directory) const;

private:
    struct entry {
        std::size_t path = 0;     ///< where it begins in `m_paths`
        std::uint32_t parent = 0; ///< the row of what holds it
        std::uint16_t length = 0;
        std::uint16_t last = 0; ///< where the last element begins in the path
        bool directory = false;
        fault why = fault::none;
    };

    /// The rows of the children: the root's is the first, then come those of the records.
    static constexpr std::uint32_t root_row = 0;

    static std::size_t row_of(std::size_t index) noexcept { return index == root ? 0 : index + 1; }

    void read(std::span<const std::byte> records);
    void find_parents();
    void collect_children();
    void drop_unreachable();

    std::vector<entry> m_entries;
    std::u16string m_paths;
    /// The children of all rows one after another, and where those of each row begin.
    std::vector<std::uint32_t> m_children;
    std::vector<std::uint32_t> m_first_child;
    std::size_t m_missing = 0;
};

} // namespace transfer
