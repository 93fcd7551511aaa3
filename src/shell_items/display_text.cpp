#include "shell_items/display_text.h"

#include "com/memory.h"

#include <cmath>

namespace shell {

namespace {

struct size_unit {
    const wchar_t* name;
    std::int64_t divisor;
};

constexpr size_unit size_units[] = {
    {L"bytes", 1}, {L"KB", 1LL << 10}, {L"MB", 1LL << 20}, {L"GB", 1LL << 30}, {L"TB", 1LL << 40},
};

/// By digits, as a double holds whole numbers that no integer type does.
std::wstring format_whole(double whole, wchar_t group_mark) {
    // Only a record of a foreign hand has such a size.
    if (whole < 0.0) {
        return L"-" + format_whole(-whole, group_mark);
    }
    std::wstring text;
    int digits = 0;
    do {
        if (group_mark && digits > 0 && digits % 3 == 0) {
            text.insert(text.begin(), group_mark);
        }
        text.insert(text.begin(), L"0123456789"[static_cast<int>(std::fmod(whole, 10.0))]);
        whole = std::floor(whole / 10.0);
        ++digits;
    } while (whole > 0.0);
    return text;
}

std::wstring name_unit(const std::wstring& number, const size_unit& unit) {
    return number + L" " + unit.name;
}

double minutes_to_utc() {
    TIME_ZONE_INFORMATION zone{};
    switch (GetTimeZoneInformation(&zone)) {
    case TIME_ZONE_ID_STANDARD:
        return zone.Bias + zone.StandardBias;
    case TIME_ZONE_ID_DAYLIGHT:
        return zone.Bias + zone.DaylightBias;
    default:
        return zone.Bias;
    }
}

} // namespace

std::wstring format_number(double value, int decimals, wchar_t decimal_mark, wchar_t group_mark) {
    const double whole = std::floor(value);
    std::wstring text = format_whole(whole, group_mark);
    auto fraction = static_cast<int>((value - whole) * std::pow(10.0, decimals));
    if (decimals > 0 && fraction > 0) {
        while (fraction % 10 == 0) {
            fraction /= 10;
        }
        text += decimal_mark + std::to_wstring(fraction);
    }
    return text;
}

std::wstring format_size(std::int64_t size, int first_unit, int last_unit, bool exact) {
    const size_unit* unit = &size_units[first_unit];
    const size_unit* const last = &size_units[last_unit];
    while (unit != last && size / unit->divisor > 999) {
        ++unit;
    }
    if (exact && unit->divisor >= 1024) {
        const std::int64_t parts = size / (unit->divisor / 1024);
        const double value = static_cast<double>(parts) * (1.0 / 1024);
        const int decimals = value < 10.0 ? 2 : value < 100.0 ? 1 : 0;
        return name_unit(format_number(value, decimals, L'.', L' '), *unit);
    }
    const std::int64_t whole = size / unit->divisor + (size % unit->divisor != 0);
    return name_unit(format_number(static_cast<double>(whole), 0, L'.', L' '), *unit);
}

std::wstring format_date(double date) {
    constexpr double minutes_a_day = 1440.0;
    com::variant value;
    value.get().vt = VT_R8;
    value.get().dblVal = date - minutes_to_utc() / minutes_a_day;
    com::check(VariantChangeType(&value.get(), &value.get(), 0, VT_DATE));
    com::check(VariantChangeType(&value.get(), &value.get(), 0, VT_BSTR));
    return {value.get().bstrVal, SysStringLen(value.get().bstrVal)};
}

} // namespace shell
