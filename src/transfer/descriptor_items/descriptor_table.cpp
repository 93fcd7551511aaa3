#include "transfer/descriptor_items/descriptor_table.h"

#include "transfer/descriptor_items/descriptor_record.h"

#include <boost/unordered/unordered_flat_map.hpp>

#include <algorithm>
#include <cstring>
#include <numeric>

namespace transfer {

namespace {

constexpr char16_t separator = u'\\';

bool is_letter(char16_t character) noexcept {
    const auto lower = static_cast<char16_t>(character | 0x20);
    return lower >= u'a' && lower <= u'z';
}

bool is_bad_element(std::u16string_view element, bool first) noexcept {
    return element.empty() || element == u"." || element == u".." ||
           element.find(u'/') != std::u16string_view::npos ||
           (first && element.size() == 2 && element[1] == u':' && is_letter(element[0]));
}

/// Whether an element of the path cannot be the name of an item below the target.
bool has_bad_element(std::u16string_view path) noexcept {
    for (std::size_t from = 0;;) {
        const std::size_t to = std::min(path.find(separator, from), path.size());
        if (is_bad_element(path.substr(from, to - from), from == 0)) {
            return true;
        }
        if (to == path.size()) {
            return false;
        }
        from = to + 1;
    }
}

} // namespace

descriptor_table::descriptor_table(std::span<const std::byte> block) {
    std::uint32_t announced = 0;
    if (block.size() < descriptor_count_size) {
        m_missing = 1;
    } else {
        std::memcpy(&announced, block.data(), sizeof announced);
        block = block.subspan(descriptor_count_size);
    }
    const std::size_t held =
        std::min<std::size_t>(announced, block.size() / descriptor_record_size);
    m_missing += announced - held;
    read(block.first(held * descriptor_record_size));
    find_parents();
    collect_children();
    drop_unreachable();
}

std::u16string_view descriptor_table::path(std::size_t index) const {
    const entry& one = m_entries[index];
    return std::u16string_view(m_paths).substr(one.path, one.length);
}

std::u16string_view descriptor_table::name(std::size_t index) const {
    return path(index).substr(m_entries[index].last);
}

std::span<const std::uint32_t> descriptor_table::children(std::size_t directory) const {
    const std::size_t row = row_of(directory);
    return std::span(m_children)
        .subspan(m_first_child[row], m_first_child[row + 1] - m_first_child[row]);
}

void descriptor_table::read(std::span<const std::byte> records) {
    m_entries.reserve(records.size() / descriptor_record_size);
    for (; !records.empty(); records = records.subspan(descriptor_record_size)) {
        descriptor_record record;
        std::memcpy(&record, records.data(), sizeof record);
        const char16_t* const end = std::find(record.name, std::end(record.name), u'\0');
        const std::u16string_view path(record.name, end);
        entry& made = m_entries.emplace_back();
        made.path = m_paths.size();
        made.length = static_cast<std::uint16_t>(path.size());
        made.last = static_cast<std::uint16_t>(path.rfind(separator) + 1);
        made.directory =
            (record.flags & has_attributes) != 0 && (record.attributes & attribute_directory) != 0;
        if (end == std::end(record.name)) {
            made.why = fault::endless_name;
        } else if (has_bad_element(path)) {
            made.why = fault::bad_name;
        }
        m_paths += path;
    }
}

void descriptor_table::find_parents() {
    // By path; the first one of a path has it.
    boost::unordered_flat_map<std::u16string_view, std::uint32_t, std::hash<std::u16string_view>>
        known;
    known.reserve(m_entries.size());
    for (std::uint32_t index = 0; index < m_entries.size(); ++index) {
        entry& one = m_entries[index];
        if (one.why == fault::none && !known.emplace(path(index), index).second) {
            one.why = fault::doubled;
        }
    }
    for (std::size_t index = 0; index < m_entries.size(); ++index) {
        entry& one = m_entries[index];
        if (one.why != fault::none || one.last == 0) {
            continue;
        }
        const auto parent = known.find(path(index).substr(0, one.last - 1U));
        if (parent == known.end()) {
            one.why = fault::missing_folder;
        } else if (!m_entries[parent->second].directory) {
            one.why = fault::inside_file;
        } else {
            one.parent = parent->second + 1;
        }
    }
}

void descriptor_table::collect_children() {
    // Counted first and then placed, so that the order of the table stays.
    m_first_child.assign(m_entries.size() + 2, 0);
    for (const entry& one : m_entries) {
        if (one.why == fault::none) {
            ++m_first_child[one.parent + 1];
        }
    }
    std::partial_sum(m_first_child.begin(), m_first_child.end(), m_first_child.begin());
    m_children.resize(m_first_child.back());
    std::vector<std::uint32_t> next = m_first_child;
    for (std::uint32_t index = 0; index < m_entries.size(); ++index) {
        if (m_entries[index].why == fault::none) {
            m_children[next[m_entries[index].parent]++] = index;
        }
    }
}

void descriptor_table::drop_unreachable() {
    std::vector<bool> reached(m_entries.size(), false);
    std::vector<std::size_t> waiting{root};
    while (!waiting.empty()) {
        const std::size_t directory = waiting.back();
        waiting.pop_back();
        for (const std::uint32_t child : children(directory)) {
            reached[child] = true;
            if (is_directory(child)) {
                waiting.push_back(child);
            }
        }
    }
    for (std::size_t index = 0; index < m_entries.size(); ++index) {
        if (!reached[index] && m_entries[index].why == fault::none) {
            m_entries[index].why = fault::missing_folder;
        }
    }
}

} // namespace transfer
