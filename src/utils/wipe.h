#pragma once

#include <windows.h>

namespace utils {

/// Empties a text and overwrites all the memory that it has, so that a secret does not stay behind
/// in what the heap or the stack hands out next, in a dump or in the page file. A text that grew,
/// or was moved while it was short, has left copies elsewhere: make room first.
template <class Text>
void wipe(Text& text) noexcept {
    // No reallocation, so that nothing is thrown.
    text.resize(text.capacity());
    ::SecureZeroMemory(text.data(), text.size() * sizeof(typename Text::value_type));
    text.clear();
}

/// Wipes a text when the scope ends, whichever way.
template <class Text>
class wipe_at_end {
public:
    explicit wipe_at_end(Text& text) noexcept : text_(text) {}

    wipe_at_end(const wipe_at_end&) = delete;
    wipe_at_end& operator=(const wipe_at_end&) = delete;

    ~wipe_at_end() { wipe(text_); }

private:
    Text& text_;
};

} // namespace utils
