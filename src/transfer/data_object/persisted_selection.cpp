#include "transfer/data_object/persisted_selection.h"

#include "shell_items/id_list_bytes.h"

#include <algorithm>

namespace transfer {

namespace {

using list_bytes = std::vector<std::byte>;

void put(list_bytes& to, std::uint32_t value) {
    for (unsigned shift = 0; shift < 32; shift += 8) {
        to.push_back(static_cast<std::byte>(value >> shift));
    }
}

void put_list(list_bytes& to, const list_bytes& list) {
    put(to, static_cast<std::uint32_t>(list.size()));
    to.insert(to.end(), list.begin(), list.end());
}

void put_list(list_bytes& to, const persisted_list& list) {
    to.push_back(std::byte{list.has_head});
    put_list(to, list.bytes);
}

/// Reads one part after another. Once a part is missing, all further ones are empty.
class part_reader {
public:
    explicit part_reader(const byte_source& source) : m_source(source) {}

    bool good() const noexcept { return m_good; }

    std::uint32_t number() {
        std::byte bytes[4]{};
        take(bytes);
        std::uint32_t value = 0;
        for (unsigned i = 0; i < 4; ++i) {
            value |= std::to_integer<std::uint32_t>(bytes[i]) << 8 * i;
        }
        return value;
    }

    list_bytes list() {
        constexpr std::size_t step = 65536;
        const std::size_t length = number();
        list_bytes bytes;
        while (m_good && bytes.size() < length) {
            const std::size_t begin = bytes.size();
            bytes.resize(begin + std::min(step, length - begin));
            take(std::span(bytes).subspan(begin));
        }
        m_good = m_good && shell::holds_whole_list(bytes);
        return bytes;
    }

    persisted_list list_with_head() {
        std::byte has_head{};
        take({&has_head, 1});
        return {std::to_integer<std::uint8_t>(has_head), list()};
    }

private:
    void take(std::span<std::byte> bytes) { m_good = m_good && m_source(bytes) == bytes.size(); }

    const byte_source& m_source;
    bool m_good = true;
};

} // namespace

list_bytes to_bytes(const persisted_selection& selection) {
    list_bytes bytes;
    put(bytes, selection.owner);
    put_list(bytes, selection.root);
    put_list(bytes, selection.folder);
    put(bytes, static_cast<std::uint32_t>(selection.items.size()));
    for (const list_bytes& item : selection.items) {
        put_list(bytes, item);
    }
    put(bytes, selection.preferred_effect);
    return bytes;
}

std::optional<persisted_selection> read_selection(const byte_source& source) {
    part_reader parts(source);
    persisted_selection read;
    read.owner = parts.number();
    read.root = parts.list_with_head();
    read.folder = parts.list_with_head();
    for (std::uint32_t left = parts.number(); parts.good() && left > 0; --left) {
        read.items.push_back(parts.list());
    }
    read.preferred_effect = parts.number();
    return parts.good() ? std::optional(std::move(read)) : std::nullopt;
}

} // namespace transfer
