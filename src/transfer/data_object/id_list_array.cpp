#include "transfer/data_object/id_list_array.h"

#include "shell_items/id_list_bytes.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

namespace transfer {

namespace {

/// Fills a block from its beginning; a block of zeros, so that terminators are there already.
class block_writer {
public:
    explicit block_writer(std::span<std::byte> left) noexcept : m_left(left) {}

    template <class T>
    void put(const T& value) noexcept {
        put_bytes(std::as_bytes(std::span(&value, 1)));
    }

    void put_bytes(std::span<const std::byte> bytes) noexcept {
        std::memcpy(m_left.data(), bytes.data(), bytes.size());
        skip(bytes.size());
    }

    void skip(std::size_t size) noexcept { m_left = m_left.subspan(size); }

private:
    std::span<std::byte> m_left;
};

} // namespace

com::unique_global make_id_list_array(const shell::CItemIDList& folder,
                                      std::span<const shell::PIDLDATA> items, UINT block_flags) {
    const com::unique_id_list list = folder.to_list();
    if (!list) {
        throw com::status_exception(STG_E_MEDIUMFULL);
    }
    const auto folder_entries = shell::entries_of(list.get());
    // The count, the offset of the folder's list and those of the items.
    const std::size_t table_size = (items.size() + 2) * sizeof(std::uint32_t);
    const std::size_t folder_size = folder_entries.size() + shell::terminator_size;
    constexpr std::size_t item_size = shell::record_size + shell::terminator_size;
    const std::uint64_t size = table_size + folder_size + std::uint64_t{items.size()} * item_size;
    com::unique_global block(
        size > std::numeric_limits<std::uint32_t>::max()
            ? nullptr
            : ::GlobalAlloc(block_flags | GMEM_ZEROINIT, static_cast<std::size_t>(size)));
    if (!block) {
        throw com::status_exception(STG_E_MEDIUMFULL);
    }
    const com::global_lock lock(block.get());
    block_writer writer(lock.bytes());
    writer.put(static_cast<std::uint32_t>(items.size()));
    writer.put(static_cast<std::uint32_t>(table_size));
    for (std::size_t i = 0; i < items.size(); ++i) {
        writer.put(static_cast<std::uint32_t>(table_size + folder_size + i * item_size));
    }
    writer.put_bytes(folder_entries);
    writer.skip(shell::terminator_size);
    for (const shell::PIDLDATA& item : items) {
        writer.put(item);
        writer.skip(shell::terminator_size);
    }
    return block;
}

} // namespace transfer
