#include "shell/item_order.h"

#include "com/guard.h"
#include "shell_items/id_list_bytes.h"
#include "shell_items/item_id_list.h"
#include "shell_items/record_in_place.h"

#include <algorithm>
#include <cwchar>
#include <limits>
#include <string_view>

namespace shell {

namespace {

constexpr int first = -1;
constexpr int later = 1;

template <std::size_t Size>
std::wstring_view text_in(const wchar_t (&field)[Size]) noexcept {
    return {field, wcsnlen(field, Size)};
}

/// The difference of the first units that differ; the end of a text counts as 0.
int compare_units(std::wstring_view left, std::wstring_view right) noexcept {
    const auto [l, r] = std::ranges::mismatch(left, right);
    return (l == left.end() ? 0 : *l) - (r == right.end() ? 0 : *r);
}

wchar_t lower_ascii(wchar_t c) noexcept {
    return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c + (L'a' - L'A')) : c;
}

std::wstring lower(std::wstring_view text) {
    std::wstring lowered(text);
    const auto size = static_cast<int>(lowered.size());
    LCMapStringW(LOCALE_USER_DEFAULT, LCMAP_LOWERCASE, lowered.data(), size, lowered.data(), size);
    return lowered;
}

/// Compares in the lower case of the user's locale. A view sorts thousands of names, most of which
/// part within ASCII: the platform is asked only for what lies behind that.
int compare_names(const PIDLDATA& left, const PIDLDATA& right) {
    std::wstring_view l = text_in(left.name);
    std::wstring_view r = text_in(right.name);
    const auto same_ascii = [](wchar_t a, wchar_t b) {
        return a < 0x80 && b < 0x80 && lower_ascii(a) == lower_ascii(b);
    };
    const auto [l_part, r_part] = std::ranges::mismatch(l, r, same_ascii);
    l = {l_part, l.end()};
    r = {r_part, r.end()};
    const auto begins_ascii = [](std::wstring_view text) {
        return text.empty() || text.front() < 0x80;
    };
    if (begins_ascii(l) && begins_ascii(r)) {
        return (l.empty() ? 0 : lower_ascii(l.front())) - (r.empty() ? 0 : lower_ascii(r.front()));
    }
    return compare_units(lower(l), lower(r));
}

/// 16 bits carry the answer. A difference that does not fit keeps its sign.
HRESULT answer(int difference) noexcept {
    constexpr int bound = std::numeric_limits<std::int16_t>::max();
    const auto bits = static_cast<std::uint16_t>(std::clamp(difference, -bound, bound));
    return MAKE_HRESULT(SEVERITY_SUCCESS, 0, bits);
}

HRESULT compare_paths(const ITEMIDLIST* left, const ITEMIDLIST* right) {
    const CItemIDList l(left, false);
    const CItemIDList r(right, false);
    if (l.count() != r.count()) {
        return answer(l.count() > r.count() ? first : later);
    }
    for (std::size_t i = 0; i < l.count(); ++i) {
        if (const int difference = compare_names(l.records()[i], r.records()[i])) {
            return answer(difference);
        }
    }
    return answer(0);
}

HRESULT compare_records(unsigned column, const PIDLDATA& left, const PIDLDATA& right) {
    if (left.is_directory() != right.is_directory()) {
        return answer(left.is_directory() ? first : later);
    }
    switch (column) {
    case 0:
        return answer(compare_names(left, right));
    case 1:
        return answer(compare_units(text_in(left.type_text), text_in(right.type_text)));
    case 2:
        return answer((left.size > right.size) - (left.size < right.size));
    default:
        return answer(0);
    }
}

} // namespace

HRESULT compare_lists(LPARAM column, const ITEMIDLIST* left, const ITEMIDLIST* right) {
    if (!left || !right) {
        return E_INVALIDARG;
    }
    const auto left_entry = last_entry_of(left);
    const auto right_entry = last_entry_of(right);
    if (left_entry.empty()) {
        return answer(later);
    }
    if (right_entry.empty()) {
        return answer(first);
    }
    if (static_cast<DWORD>(column) & SHCIDS_CANONICALONLY) {
        return compare_paths(left, right);
    }
    const record_in_place left_record(left_entry);
    const record_in_place right_record(right_entry);
    if (!left_record || !right_record) {
        return E_INVALIDARG;
    }
    return compare_records(static_cast<unsigned>(column) & 0xFFU, *left_record, *right_record);
}

} // namespace shell
