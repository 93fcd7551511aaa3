#include "../login/login_fixture.h"

#include "com/apartment.h"
#include "com/module_lock.h"
#include "dialogs/drive/properties_drive.h"
#include "resources/dialog_ids.h"
#include "resources/drive_ids.h"
#include "resources/resource_ids.h"
#include "service_url.h"
#include "shell_items/seams.h"
#include "store_control.h"
#include "ui/gdi.h"
#include "utils/module.h"
#include "vfs_quilldeck/session/identity_block.h"
#include "vfs_quilldeck/session/session.h"

#include <thread>

namespace dialogs {

namespace {

using support::await_dialog;
using support::eventually;

constexpr auto sheet_title = L"Drive properties";
constexpr int first_value = IDC_DRIVE_NAME;
constexpr int last_value = IDC_DRIVE_CAPACITY_SHORT;

BOOL CALLBACK keep_page(HPROPSHEETPAGE page, LPARAM kept) noexcept {
    *reinterpret_cast<HPROPSHEETPAGE*>(kept) = page;
    return TRUE;
}

BOOL CALLBACK refuse_page(HPROPSHEETPAGE, LPARAM) noexcept {
    return FALSE;
}

/// The sheet as a host shows it, which keeps the pages and not their extension.
class drive_sheet {
public:
    drive_sheet()
        : host_([] {
              const com::apartment apartment;
              HPROPSHEETPAGE page = nullptr;
              const auto extension = com::make<CPropertiesDriveDlg>();
              EXPECT_EQ(extension->Initialize(nullptr, nullptr, nullptr), S_OK);
              EXPECT_EQ(extension->AddPages(&keep_page, reinterpret_cast<LPARAM>(&page)), S_OK);
              PROPSHEETHEADERW header{};
              header.dwSize = sizeof(header);
              header.dwFlags = PSH_NOAPPLYNOW;
              header.pszCaption = sheet_title;
              header.nPages = 1;
              header.phpage = &page;
              PropertySheetW(&header);
          }) {}

    ~drive_sheet() { host_.join(); }

    drive_sheet(const drive_sheet&) = delete;
    drive_sheet& operator=(const drive_sheet&) = delete;

private:
    std::thread host_;
};

std::vector<std::wstring> values_of(HWND page) {
    std::vector<std::wstring> values;
    for (int id = first_value; id <= last_value; ++id) {
        values.push_back(support::text_of(GetDlgItem(page, id)));
    }
    return values;
}

/// The colour in the middle of the pie.
COLORREF middle_of_pie(HWND page) {
    const HWND pie = GetDlgItem(page, IDC_DRIVE_PIE);
    RECT client{};
    GetClientRect(pie, &client);
    const ui::unique_memory_dc dc(CreateCompatibleDC(nullptr));
    BITMAPINFO info{};
    info.bmiHeader = {
        sizeof(BITMAPINFOHEADER), client.right, client.bottom, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void* bits = nullptr;
    const ui::unique_bitmap bitmap(
        CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0));
    const ui::selected_object selected(dc.get(), bitmap.get());
    SendMessageW(pie, WM_PRINTCLIENT, reinterpret_cast<WPARAM>(dc.get()), PRF_CLIENT);
    return GetPixel(dc.get(), client.right / 2 - 1, (client.bottom - 9) / 2 - 3);
}

class drive_properties_test : public login_test {
protected:
    drive_properties_test() {
        vfs_quilldeck::login(utils::own_module(), L"demo", L"demo");
        control.reset();
    }

    ~drive_properties_test() override {
        control.reset();
        EXPECT_EQ(com::module_lock::count(), 0);
    }

    support::store_control control{support::environment("QUILLDECK_TEST_HTTPS_URL")};
};

TEST_F(drive_properties_test, shows_the_account_and_the_pie) {
    const std::wstring level =
        vfs_quilldeck::get_client(utils::own_module())->get_user_info().user_level;

    struct {
        const char* storage;
        std::vector<std::wstring> sizes;
        COLORREF middle;
    } const cases[] = {
        {"<Capacity>2000000000</Capacity><SpaceUsed>1500000</SpaceUsed>"
         "<SpaceFree>1998500000</SpaceFree>",
         {L"1 500 000 bytes", L"1.42 MB", L"1 998 500 000 bytes", L"1.86 GB",
          L"2 000 000 000 bytes", L"1.86 GB"},
         0xFF00FF},
        {"<Capacity>0</Capacity><SpaceUsed>700</SpaceUsed><SpaceFree>5</SpaceFree>",
         {L"700 bytes", L"700 bytes", L"Unlimited", L"", L"Unlimited", L""},
         0xFF00FF},
        {"<Capacity>1000</Capacity><SpaceUsed>9223372036854775807</SpaceUsed>", {}, 0xFF0000},
        {"<Capacity>9223372036854775807</Capacity><SpaceUsed>9223372036854775806</SpaceUsed>",
         {},
         0xFF0000},
    };

    for (const auto& each : cases) {
        control.reset();
        control.fault({{"kind", "garbage"},
                       {"action", "get_storage_info"},
                       {"body", std::string("<R>") + each.storage + "</R>"}});
        const drive_sheet sheet;
        const HWND window = await_dialog(sheet_title);
        const HWND page = PropSheet_GetCurrentPageHwnd(window);
        EXPECT_TRUE(eventually([&] { return !support::text_of(GetDlgItem(page, 405)).empty(); }));
        std::vector<std::wstring> expected{L"Quilldeck", L"demo", level};
        expected.insert(expected.end(), each.sizes.begin(), each.sizes.end());
        EXPECT_TRUE(each.sizes.empty() || values_of(page) == expected)
            << testing::PrintToString(values_of(page));
        EXPECT_EQ(middle_of_pie(page), each.middle) << each.storage;
        EXPECT_NE(SendMessageW(window, WM_GETICON, ICON_BIG, 0), 0);
        EXPECT_NE(SendMessageW(window, WM_GETICON, ICON_SMALL, 0), 0);
        const auto log = control.log();
        ASSERT_EQ(log.size(), 1U);
        EXPECT_EQ(log[0].value_of("action"), "get_storage_info");
        support::press_key(window, VK_ESCAPE);
    }
}

TEST_F(drive_properties_test, closes_when_there_is_nothing_to_show_and_at_any_time) {
    control.fault({{"kind", "error"},
                   {"action", "get_storage_info"},
                   {"name", "No quota"},
                   {"description", "Ask again later."}});
    {
        const drive_sheet sheet;
        const HWND box = await_dialog(L"No quota");
        EXPECT_EQ(support::message_of(box), L"Ask again later.");
        EXPECT_EQ(support::icon_of(box), LoadIconW(nullptr, IDI_HAND));
        EXPECT_TRUE(support::answer_box(box, IDOK));
    }
    // While the store is silent, which it is for longer than the window.
    constexpr ULONGLONG silence = 8;
    control.fault({{"kind", "delay"}, {"seconds", std::to_string(silence)}});
    const ULONGLONG begin = GetTickCount64();
    {
        const drive_sheet sheet;
        const HWND window = await_dialog(sheet_title);
        EXPECT_TRUE(eventually([&] { return control.log().size() == 2; }));
        const HWND page = PropSheet_GetCurrentPageHwnd(window);
        EXPECT_EQ(support::text_of(GetDlgItem(page, IDC_DRIVE_USED)), L"");
        SendMessageW(page, WM_USER + 1, 0, 0);
        PostMessageW(window, WM_CLOSE, 0, 0);
    }
    EXPECT_LT(GetTickCount64() - begin, silence * 1000);
    EXPECT_EQ(control.log().size(), 2U);
}

TEST_F(drive_properties_test, signs_in_first) {
    for (const bool agrees : {false, true}) {
        vfs_quilldeck::write_shared_user_info(nullptr, {});
        const drive_sheet sheet;
        const HWND login = await_dialog(login_title);
        const HWND window = GetWindow(login, GW_OWNER);
        EXPECT_EQ(support::text_of(window), sheet_title);
        if (agrees) {
            support::type(login, IDC_LOGIN_USERNAME, L"demo");
            support::type(login, IDC_LOGIN_PASSWORD, L"demo");
            support::press(login, IDOK);
            const HWND page = PropSheet_GetCurrentPageHwnd(window);
            EXPECT_TRUE(eventually([&] { return values_of(page)[1] == L"demo"; }));
            support::press(window, IDOK);
        } else {
            support::press_key(login, VK_ESCAPE);
        }
    }
}

TEST_F(drive_properties_test, opens_the_sync_manager_where_there_is_one) {
    static HWND told;
    for (const bool there : {false, true}) {
        shell::seams seams;
        if (there) {
            seams.dialogs.show_sync_manager = [](HWND owner) {
                told = owner;
                return S_OK;
            };
        }
        shell::set_seams(seams);
        const drive_sheet sheet;
        const HWND window = await_dialog(sheet_title);
        const HWND button =
            GetDlgItem(PropSheet_GetCurrentPageHwnd(window), IDC_DRIVE_SYNC_MANAGER);
        EXPECT_EQ(support::text_of(button), L"Permanently syncing files...");
        EXPECT_EQ(IsWindowVisible(button), there);
        SendMessageW(button, BM_CLICK, 0, 0);
        EXPECT_EQ(told, there ? window : nullptr);
        support::press(window, IDOK);
    }
    shell::set_seams({});
}

TEST_F(drive_properties_test, is_given_back_when_the_sheet_refuses_it) {
    const com::apartment apartment;
    const auto extension = com::make<CPropertiesDriveDlg>();
    EXPECT_EQ(extension->AddPages(&refuse_page, 0), E_FAIL);
    EXPECT_EQ(extension->AddPages(nullptr, 0), E_POINTER);
    EXPECT_EQ(extension->ReplacePage(0, &refuse_page, 0), E_NOTIMPL);
    EXPECT_EQ(com::module_lock::count(), 1);
}

} // namespace

} // namespace dialogs
