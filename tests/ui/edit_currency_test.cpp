#include "ui/edit_currency.h"

#include <gtest/gtest.h>

#include <string>

namespace ui {

namespace {

TEST(edit_currency, takes_what_can_be_an_amount) {
    const struct {
        const wchar_t* before;
        int begin, end; ///< of the selection
        const wchar_t* typed;
        const wchar_t* after;
        double value;
    } cases[] = {
        {L"", 0, 0, L"12.34", L"12.34", 12.34},
        {L"", 0, 0, L"1,5", L"1,5", 1},
        {L"", 0, 0, L"1a-2 +e3\r", L"123", 123},
        {L"1.25", 4, 4, L"9", L"1.25", 1.25},
        {L"1.25", 0, 0, L"9", L"91.25", 91.25},
        {L"1.25", 2, 3, L"9", L"1.95", 1.95},
        {L"1.2", 3, 3, L".,", L"1.2", 1.2},
        {L"12345", 2, 2, L".", L"12345", 12345},
        {L"12345", 3, 3, L".", L"123.45", 123.45},
        {L"1.25", 4, 4, L"\b\b7", L"1.7", 1.7},
        {L"", 0, 0, L".5", L".5", 0.5},
        {L"", 0, 0, L".", L".", 0},
        {L"", 0, 0, L"", L"", 0},
        {L" 7 apples", 0, 0, L"", L" 7 apples", 7},
        {L"inf", 0, 0, L"", L"inf", 0},
    };

    for (const auto& each : cases) {
        const HWND edit = CreateWindowExW(0, L"Edit", each.before, WS_POPUP, 0, 0, 100, 20, nullptr,
                                          nullptr, nullptr, nullptr);
        CEditCurrency currency;
        currency.attach(edit);
        SendMessageW(edit, EM_SETSEL, static_cast<WPARAM>(each.begin), each.end);
        for (const wchar_t unit : std::wstring(each.typed)) {
            SendMessageW(edit, WM_CHAR, unit, 0);
        }
        wchar_t text[50]{};
        GetWindowTextW(edit, text, 50);
        EXPECT_EQ(std::wstring(text), each.after);
        EXPECT_EQ(currency.get_value(), each.value) << each.after;
        DestroyWindow(edit);
    }
    EXPECT_EQ(CEditCurrency::format(0), L"0.00");
    EXPECT_EQ(CEditCurrency::format(1234.5), L"1234.50");
    EXPECT_EQ(CEditCurrency::format(1e300).size(), 304u);
}

} // namespace

} // namespace ui
