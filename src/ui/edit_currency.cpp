#include "ui/edit_currency.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>
#include <system_error>

namespace ui {

namespace {

constexpr wchar_t backspace = L'\b';
constexpr auto separators = L".,";
constexpr std::size_t decimals = 2;

std::wstring text_of(HWND edit) {
    std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(edit)) + 1, L'\0');
    text.resize(
        static_cast<std::size_t>(GetWindowTextW(edit, text.data(), static_cast<int>(text.size()))));
    return text;
}

} // namespace

double CEditCurrency::get_value() const {
    // What stands for a character outside of ASCII ends the number as that does.
    std::string text;
    for (const wchar_t unit : text_of(handle())) {
        text.push_back(unit < 0x80 ? static_cast<char>(unit) : '?');
    }
    double value = 0;
    const std::size_t begin = std::min(text.find_first_not_of(" \t"), text.size());
    std::from_chars(text.data() + begin, text.data() + text.size(), value);
    return std::isfinite(value) ? value : 0;
}

std::wstring CEditCurrency::format(double value) {
    // The largest number has 309 digits in front of the point.
    char digits[320];
    const auto [end, error] = std::to_chars(std::begin(digits), std::end(digits), value,
                                            std::chars_format::fixed, static_cast<int>(decimals));
    return error == std::errc() ? std::wstring(std::begin(digits), end) : std::wstring();
}

bool CEditCurrency::accepts(wchar_t key) const {
    if (key == backspace) {
        return true;
    }
    std::wstring text = text_of(handle());
    const bool separator = key == L'.' || key == L',';
    if (separator ? text.find_first_of(separators) != std::wstring::npos
                  : key < L'0' || key > L'9') {
        return false;
    }
    DWORD begin = 0;
    DWORD end = 0;
    SendMessageW(handle(), EM_GETSEL, reinterpret_cast<WPARAM>(&begin),
                 reinterpret_cast<LPARAM>(&end));
    if (begin != end) {
        return true;
    }
    text.insert(std::min<std::size_t>(begin, text.size()), 1, key);
    const std::size_t place = text.find_first_of(separators);
    return place == std::wstring::npos || text.size() - place - 1 <= decimals;
}

LRESULT CEditCurrency::on_message(UINT message, WPARAM wparam, LPARAM lparam) {
    if (message == WM_CHAR && !accepts(static_cast<wchar_t>(wparam))) {
        return 0;
    }
    return subclassed_window::on_message(message, wparam, lparam);
}

} // namespace ui
