/// How sizes, numbers and dates are shown to the user.
#pragma once

#include <cstdint>
#include <string>

namespace shell {

/// `value`, with its whole part in groups of three digits (0 for
/// `group_mark`: none), and with at most `decimals` digits behind `decimal_mark`. Digits that do
/// not fit are cut, zeros at the end are left out, and zeros right behind the mark are lost: 1.05
/// gives "1.5".
std::wstring format_number(double value, int decimals, wchar_t decimal_mark, wchar_t group_mark);

/// A byte count as number and unit: the first unit from `first_unit` to `last_unit` (0 "bytes" to
/// 4 "TB") of which there are at most 999. With `exact` the number has up to three valid digits,
/// otherwise it is whole and rounded up.
std::wstring format_size(std::int64_t size, int first_unit, int last_unit, bool exact);

/// A date of a record in local time, by today's time zone, in the user's locale. Throws a status.
std::wstring format_date(double date);

} // namespace shell
