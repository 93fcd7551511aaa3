#pragma once

#include <cstddef>
#include <set>
#include <string>

namespace transfer {

/// What a source offers and no store can take, collected for one message to the user. Belongs to
/// the thread of the transfer.
class refusals {
public:
    /// Notes an item, by the name under which the user knows it, and why it is left out. The same
    /// one may be met several times; it counts once.
    void add(const std::wstring& name, const std::wstring& reason);

    /// Notes items of which only the number is to be told.
    void add_more(std::size_t count) { m_more += count; }

    /// How many items a message names; who has to note very many can count the others.
    static constexpr std::size_t most_named = 10;

    /// A text of lines about what was noted since the last call; empty when there was nothing.
    std::wstring take();

private:
    std::set<std::wstring> m_known;
    std::wstring m_lines;
    std::size_t m_named = 0;
    std::size_t m_more = 0;
};

} // namespace transfer
