#include "driven_window.h"
#include "resources/dialog_ids.h"
#include "ui/dialog.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <thread>

namespace ui {

namespace {

constexpr auto title = L"Quilldeck login";

class probe : public dialog {
public:
    probe() : dialog(IDD_LOGIN) {}

    ~probe() override { destroy(); }

    std::function<void()> init = [] {
    };
    bool ended = false;
    std::function<void()> command;
    using dialog::end;

protected:
    bool on_init() override {
        init();
        return true;
    }

    bool on_command(int id, int) override {
        if (id == IDOK) {
            command();
        }
        return id == IDOK;
    }

    std::optional<LRESULT> on_message(UINT message, WPARAM wparam, LPARAM lparam) override {
        ended = ended || message == WM_DESTROY;
        const bool ours = message == WM_APP || message == WM_CTLCOLOREDIT;
        return ours ? std::optional(static_cast<LRESULT>(wparam) + lparam) : std::nullopt;
    }
};

TEST(dialog, keeps_failures_inside) {
    probe shown;
    shown.command = [] {
        throw std::runtime_error("a handler's");
    };
    INT_PTR result = 0;
    std::thread user([&] { result = shown.do_modal(nullptr); });
    const HWND window = support::await_dialog(title);
    support::press(window, IDOK);
    const HWND box = support::await_dialog(L"Internal error");
    EXPECT_EQ(GetWindow(box, GW_OWNER), window);
    EXPECT_EQ(support::message_of(box), L"a handler's");
    EXPECT_TRUE(support::answer_box(box, IDOK));
    EXPECT_TRUE(support::eventually([&] { return IsWindowEnabled(window); }));
    // An ordinary message, and one whose answer is not told as that of others.
    for (const UINT message : {UINT{WM_APP}, UINT{WM_CTLCOLOREDIT}}) {
        EXPECT_EQ(SendMessageW(window, message, 40, 2), 42);
    }
    shown.command = [&] {
        shown.end(1234);
    };
    support::press(window, IDOK);
    user.join();
    EXPECT_EQ(result, 1234);
    EXPECT_EQ(shown.handle(), nullptr);
    EXPECT_FALSE(IsWindow(window));

    HWND made = nullptr;
    shown.init = [&] {
        made = shown.handle();
        throw std::out_of_range("an initialiser's");
    };
    EXPECT_THROW(shown.do_modal(nullptr), std::out_of_range);
    EXPECT_FALSE(IsWindow(made));
    EXPECT_THROW(shown.create(nullptr), std::out_of_range);
    EXPECT_FALSE(IsWindow(made));
    EXPECT_EQ(shown.handle(), nullptr);
    EXPECT_THROW(dialog(9).do_modal(nullptr), std::exception);

    shown.init = [] {
    };
    shown.ended = false;
    shown.create(nullptr);
    shown.destroy();
    EXPECT_TRUE(shown.ended) << "the whole object was there at the end of its window";
    EXPECT_EQ(shown.handle(), nullptr);
}

} // namespace

} // namespace ui
