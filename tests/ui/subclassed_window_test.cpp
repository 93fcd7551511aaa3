#include "ui/subclassed_window.h"

#include <gtest/gtest.h>

#include <memory>

namespace ui {

namespace {

/// Adds its digit to the number that a message gathers on its way down.
class layer : public subclassed_window {
public:
    layer(HWND window, int digit) : digit_(digit) { attach(window); }

protected:
    LRESULT on_message(UINT message, WPARAM wparam, LPARAM lparam) override {
        if (message != WM_APP) {
            return subclassed_window::on_message(message, wparam, lparam);
        }
        const auto number = wparam * 10 + static_cast<WPARAM>(digit_);
        return lparam == digit_ ? static_cast<LRESULT>(number)
                                : subclassed_window::on_message(message, number, lparam);
    }

private:
    LPARAM digit_;
};

TEST(subclassed_window, shares_a_control_with_others) {
    const HWND control =
        CreateWindowExW(0, L"STATIC", L"text", 0, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
    SetWindowLongPtrW(control, GWLP_USERDATA, 77);
    // What the layers have gathered when the one of digit `last` answers.
    const auto ask = [control](LPARAM last) {
        return SendMessageW(control, WM_APP, 0, last);
    };
    const layer lowest(control, 1);
    auto middle = std::make_unique<layer>(control, 2);
    const layer top(control, 3);
    EXPECT_EQ(ask(1), 321);
    EXPECT_EQ(ask(3), 3);
    // Any of them may go first.
    middle.reset();
    EXPECT_EQ(ask(1), 31);
    EXPECT_EQ(GetWindowLongPtrW(control, GWLP_USERDATA), 77) << "that is the control's own";
    DestroyWindow(control);
    EXPECT_EQ(lowest.handle(), nullptr);
    EXPECT_EQ(top.handle(), nullptr);
}

} // namespace

} // namespace ui
