#include "transfer/wrappers/refusals.h"

#include <utility>

namespace transfer {

namespace {

/// A name may be of any length and the lines of a message may not.
std::wstring shortened(const std::wstring& name) {
    constexpr std::size_t head = 30;
    constexpr std::size_t tail = 60;
    if (name.size() <= head + tail) {
        return name;
    }
    return name.substr(0, head) + L"..." + name.substr(name.size() - tail);
}

} // namespace

void refusals::add(const std::wstring& name, const std::wstring& reason) {
    if (!m_known.insert(name).second) {
        return;
    }
    if (m_named == most_named) {
        ++m_more;
        return;
    }
    ++m_named;
    m_lines += L"'" + shortened(name) + L"': " + reason + L"\n";
}

std::wstring refusals::take() {
    std::wstring text = std::exchange(m_lines, {});
    m_named = 0;
    if (const std::size_t more = std::exchange(m_more, 0)) {
        text += (text.empty() ? L"Items: " : L"Further items: ") + std::to_wstring(more) + L"\n";
    }
    if (text.empty()) {
        return {};
    }
    text.pop_back();
    return L"These items are left out:\n\n" + text;
}

} // namespace transfer
