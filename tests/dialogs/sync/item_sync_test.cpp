#include "sync_fixture.h"

#include "dialogs/properties/properties_dialog.h"
#include "resources/properties_ids.h"
#include "resources/sync_ids.h"

#include <shlobj.h>

#include <thread>

namespace dialogs {

namespace {

using support::eventually;

std::shared_ptr<vfs::directory> as_directory(const vfs::item_ptr& item) {
    return std::dynamic_pointer_cast<vfs::directory>(item);
}

/// The properties of items of a folder, at the page that binds them.
class shown_properties {
public:
    shown_properties(const std::shared_ptr<vfs::directory>& folder,
                     const std::vector<std::wstring>& names, int start_page) {
        shell::selection items{folder, {}, {}};
        for (const std::wstring& name : names) {
            items.records.emplace_back(folder->find_item_by_name(name, true));
        }
        thread_ = std::thread([start_page, items = std::move(items)]() mutable {
            const com::apartment apartment;
            CPropertiesFileDlg(std::move(items), start_page).do_modal(nullptr);
        });
        page = await_page(IDC_ITEM_SYNC_OTHER_END);
        dialog = GetAncestor(page, GA_ROOT);
    }

    ~shown_properties() { close(); }

    void close() {
        if (thread_.joinable()) {
            PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
            thread_.join();
        }
    }

    bool is_loaded() const {
        return eventually([&] { return IsWindowEnabled(page) != FALSE; });
    }

    bool can_apply() const {
        return IsWindowEnabled(GetDlgItem(dialog, IDC_PROPERTIES_APPLY)) != FALSE;
    }

    bool apply() const {
        support::press(dialog, IDC_PROPERTIES_APPLY);
        return eventually([&] { return !can_apply(); });
    }

    void click(int id) const { SendMessageW(GetDlgItem(page, id), BM_CLICK, 0, 0); }

    std::wstring text(int id) const { return support::text_of(GetDlgItem(page, id)); }

    std::wstring other_end() const { return text(IDC_ITEM_SYNC_OTHER_END); }

    HWND dialog = nullptr;
    HWND page = nullptr;

private:
    std::thread thread_;
};

class item_sync : public sync_test {
protected:
    item_sync() {
        const auto home = as_directory(support::sign_in()->get_directory(home_name(), false));
        folder = as_directory(home->create_directory(name));
        folder->create_directory(L"Plans");
        folder->create_file(L"letter.txt");
        // No local folder can have this name.
        folder->create_directory(L"a:b");
    }

    ~item_sync() override {
        as_directory(support::sign_in()->get_directory(home_name(), false))
            ->delete_item(name, false);
    }

    static std::wstring documents() {
        wchar_t path[MAX_PATH] = L"";
        SHGetFolderPathW(nullptr, CSIDL_PERSONAL, nullptr, SHGFP_TYPE_CURRENT, path);
        return path;
    }

    std::wstring name = L"Sync " + std::to_wstring(GetTickCount64());
    std::shared_ptr<vfs::directory> folder;
    std::string remote = "Quilldeck/" + narrow(home_name()) + "/" + narrow(name);
};

TEST_F(item_sync, binds_folders_and_files_of_the_store) {
    {
        shown_properties shown(folder, {L"Plans"}, 3);
        ASSERT_TRUE(shown.is_loaded());
        EXPECT_TRUE(eventually([&] { return shown.can_apply(); })) << "the menu's mode";
        EXPECT_EQ(shown.text(IDC_SYNC_ITEM),
                  L"Quilldeck\\" + home_name() + L"\\" + name + L"\\Plans");
        EXPECT_EQ(shown.other_end(), documents() + L"\\Plans");
        const std::pair<int, std::wstring> texts[] = {
            {493, L"Browse..."},
            {502, L"Permanently sync/backup files or folders"},
            {506, L"Full Sync"},
            {507, L"Backup"},
            {494, L"Manage Syncing Tasks"},
            {516, L"Quilldeck will not backup hidden files or folders."},
        };
        for (const auto& [id, text] : texts) {
            EXPECT_EQ(shown.text(id), text) << id;
        }
        EXPECT_TRUE(IsDlgButtonChecked(shown.page, 502) && IsDlgButtonChecked(shown.page, 507));
        EXPECT_TRUE(IsWindowVisible(GetDlgItem(shown.page, 511)));
        EXPECT_FALSE(IsWindowVisible(GetDlgItem(shown.page, 512)));
        ASSERT_TRUE(shown.apply());
        const std::string plans = entry(remote + "/Plans", documents() + L"\\Plans", "", true, 0);
        EXPECT_EQ(bytes(), whole({plans}, 1));
        // Renamed and changed by one Apply: the binding goes along.
        const HWND tabs = GetDlgItem(shown.dialog, IDC_PROPERTIES_TABS);
        HWND general = nullptr;
        while ((general = FindWindowExW(tabs, general, L"#32770", nullptr)) &&
               !GetDlgItem(general, IDC_ITEM_NAME)) {
        }
        const HWND field = GetDlgItem(general, IDC_ITEM_NAME);
        ShowWindow(general, SW_SHOW);
        PostMessageW(shown.dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(field), TRUE);
        ASSERT_TRUE(eventually([&] { return support::focus_of(shown.dialog) == field; }));
        support::type(general, IDC_ITEM_NAME, L"Ideas");
        shown.click(506);
        ASSERT_TRUE(shown.apply());
        // The button rests while the general page waits for the store.
        const std::string ideas =
            whole({entry(remote + "/Ideas", documents() + L"\\Plans", "", false, 1)}, 2);
        EXPECT_TRUE(eventually([&] { return bytes() == ideas; })) << bytes();
    }
    {
        shown_properties shown(folder, {L"letter.txt"}, 2);
        ASSERT_TRUE(shown.is_loaded());
        for (const wchar_t* wrong : {L"", L"letter.txt", L"\\\\server\\share\\letter.txt"}) {
            support::type(shown.page, IDC_ITEM_SYNC_OTHER_END, wrong);
            support::press(shown.dialog, IDC_PROPERTIES_APPLY);
            const HWND box = support::await_dialog(L"Wrong path selected");
            ASSERT_TRUE(box);
            EXPECT_TRUE(support::answer_box(box, IDOK));
            EXPECT_TRUE(eventually([&] { return shown.can_apply(); }));
        }
        support::type(shown.page, IDC_ITEM_SYNC_OTHER_END, L"C:\\letter.txt");
        ASSERT_TRUE(shown.apply());
        EXPECT_NE(bytes().find(entry(remote, L"C:\\", "letter.txt", false, 2)), std::string::npos)
            << bytes();
        shown.click(502);
        ASSERT_TRUE(shown.apply());
        EXPECT_EQ(bytes().find("letter.txt"), std::string::npos);
    }
}

TEST_F(item_sync, binds_nothing_to_a_name_that_leads_elsewhere) {
    shown_properties shown(folder, {L"a:b", L"Plans"}, 2);
    ASSERT_TRUE(shown.is_loaded());
    EXPECT_EQ(shown.text(IDC_SYNC_ITEM), L"Multiple Items");
    EXPECT_EQ(shown.other_end(), documents());
    support::press(shown.dialog, IDC_PROPERTIES_APPLY);
    const HWND box = support::await_dialog(L"Error saving bindings");
    ASSERT_TRUE(box);
    EXPECT_NE(support::message_of(box).find(L"'a:b'"), std::wstring::npos);
    EXPECT_TRUE(support::answer_box(box, IDOK));
    EXPECT_EQ(bytes(), "") << "not even what could be bound";
    EXPECT_TRUE(eventually([&] { return shown.can_apply(); }));
}

TEST_F(item_sync, asks_nothing_before_it_is_seen_and_closes_beside_a_silent_store) {
    control.reset();
    {
        shell::selection items{folder, {}, {}};
        items.records.emplace_back(folder->find_item_by_name(L"letter.txt", false));
        std::thread host([&] {
            const com::apartment own;
            CPropertiesFileDlg(items, 0).do_modal(nullptr);
        });
        const HWND dialog = support::await_dialog(L"letter.txt Properties");
        ASSERT_TRUE(dialog);
        PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
        host.join();
        for (const support::logged_request& request : control.log()) {
            EXPECT_NE(request.value_of("action"), "get_dir_path");
        }
    }
    constexpr int silence = 8;
    control.fault(
        {{"kind", "delay"}, {"action", "get_dir_path"}, {"seconds", std::to_string(silence)}});
    const ULONGLONG begin = GetTickCount64();
    shown_properties shown(folder, {L"letter.txt"}, 2);
    EXPECT_FALSE(IsWindowEnabled(shown.page));
    shown.close();
    EXPECT_LT(GetTickCount64() - begin, silence * 1000U);
}

} // namespace

} // namespace dialogs
