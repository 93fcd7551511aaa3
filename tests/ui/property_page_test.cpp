#include "driven_window.h"
#include "resources/dialog_ids.h"
#include "ui/property_page.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace ui {

namespace {

constexpr auto sheet_title = L"Sheet of pages";

/// What pages tell, in order; the thread of the sheet writes it.
using diary = std::vector<std::string>;

class page : public property_page {
public:
    page(diary& told, bool fails) : property_page(IDD_LOGIN), told_(told), fails_(fails) {}

    ~page() override { told_.emplace_back(handle() ? "gone before its window" : "gone"); }

protected:
    bool on_init() override {
        if (fails_) {
            throw std::runtime_error("no content");
        }
        told_.emplace_back("init");
        return true;
    }

    bool on_command(int id, int code) override {
        if (id == IDC_LOGIN_USERNAME && code == EN_CHANGE) {
            set_changed(true);
        }
        return false;
    }

    bool on_apply() override {
        told_.emplace_back("apply");
        return ++applied_ > 1;
    }

    std::optional<LRESULT> on_message(UINT message, WPARAM wparam, LPARAM lparam) override {
        if (message == WM_DESTROY) {
            told_.emplace_back("end");
        }
        return property_page::on_message(message, wparam, lparam);
    }

private:
    diary& told_;
    bool fails_;
    int applied_ = 0;
};

HPROPSHEETPAGE make(diary& told, bool fails = false) {
    return property_page::create_page(std::make_unique<page>(told, fails), L"General");
}

/// Shows a sheet with one page while `use` uses it.
template <class Use>
void with_sheet(HPROPSHEETPAGE only, const Use& use) {
    std::thread host([only]() mutable {
        PROPSHEETHEADERW header{};
        header.dwSize = sizeof(header);
        header.pszCaption = sheet_title;
        header.nPages = 1;
        header.phpage = &only;
        EXPECT_EQ(PropertySheetW(&header), 1);
    });
    use();
    host.join();
}

TEST(property_page, lives_as_long_as_the_platforms_page) {
    constexpr int apply_now = 0x3021;
    diary told;
    with_sheet(make(told), [&] {
        const HWND sheet = support::await_dialog(sheet_title);
        const HWND window = PropSheet_GetCurrentPageHwnd(sheet);
        EXPECT_FALSE(IsWindowEnabled(GetDlgItem(sheet, apply_now)));
        support::type(window, IDC_LOGIN_USERNAME, L"changed");
        EXPECT_TRUE(IsWindowEnabled(GetDlgItem(sheet, apply_now)));
        // The page refuses, and the sheet stays open for another try.
        support::press(sheet, IDOK);
        ASSERT_TRUE(support::eventually([&] { return told == diary({"init", "apply"}); }));
        EXPECT_TRUE(IsWindow(sheet));
        support::press(sheet, IDOK);
    });
    EXPECT_EQ(told, diary({"init", "apply", "apply", "end", "gone"}));

    told.clear();
    EXPECT_TRUE(DestroyPropertySheetPage(make(told)));
    EXPECT_EQ(told, diary({"gone"})) << "a page that no sheet took";

    told.clear();
    with_sheet(make(told, true), [] {
        const HWND box = support::await_dialog(L"Internal error");
        EXPECT_EQ(support::message_of(box), L"no content");
        EXPECT_TRUE(support::answer_box(box, IDOK));
        const HWND sheet = support::await_dialog(sheet_title);
        // The first refusal keeps the sheet.
        support::press(sheet, IDOK);
        support::press(sheet, IDOK);
    });
    EXPECT_EQ(told, diary({"apply", "apply", "end", "gone"}));
}

} // namespace

} // namespace ui
