#include "properties_fixture.h"

#include "dialogs/properties/share_user_list.h"
#include "resources/share_ids.h"

namespace dialogs {

namespace {

using support::await_dialog;
using support::eventually;

class share_test : public properties_test {
protected:
    share_test() {
        m_folder->create_directory(L"Plans");
        folder =
            std::dynamic_pointer_cast<vfs::directory>(m_folder->find_item_by_name(L"Plans", false));
    }

    void open() {
        properties_test::open(select(m_folder, {L"Plans"}), 1);
        page = GetParent(control(IDC_SHARING_USER));
    }

    /// Shares with anna before the page is there.
    void share_with_anna(int mode) {
        bool is_address = false;
        folder->sharing(folder->can_share_with(L"anna", is_address));
        folder->set_share_mode(folder->get_sharewith_items().front()->id, mode);
        m_control.reset();
    }

    HWND item(int id) const { return GetDlgItem(page, id); }

    std::wstring text(int id) const { return support::text_of(item(id)); }

    /// The list as "name:view:full:links", a user a line.
    std::wstring users() const {
        std::wstring all;
        for (int row = 0; row < ListView_GetItemCount(item(452)); ++row) {
            for (int column = 0; column < 4; ++column) {
                wchar_t cell[100];
                LVITEMW part{};
                part.iSubItem = column;
                part.pszText = cell;
                part.cchTextMax = 100;
                SendMessageW(item(452), LVM_GETITEMTEXTW, static_cast<WPARAM>(row),
                             reinterpret_cast<LPARAM>(&part));
                all += cell + std::wstring(column < 3 ? L":" : L";");
            }
        }
        return all;
    }

    /// Which controls are shown: heading, those that add a user, the user, those that change one,
    /// the message.
    std::string mode() const {
        std::string shown;
        for (const int id : {450, 451, 465, 467, 458, 459, 453, 454, 464, 457}) {
            shown += (GetWindowLongPtrW(item(id), GWL_STYLE) & WS_VISIBLE) ? '1' : '0';
        }
        return shown + (text(466) == L"Add new user for this folder" ? " add"
                        : text(466) == L"Share this folder with:"    ? " change"
                                                                     : " ?");
    }

    /// What the store got since the last reset, but for what the general page asks for.
    std::vector<support::logged_request> sharing_log() {
        auto log = m_control.log();
        std::erase_if(log, [](const support::logged_request& each) {
            const std::string action = each.value_of("action");
            return action.find("shar") == std::string::npos && !action.starts_with("get_userid");
        });
        return log;
    }

    /// The actions that the store got since the last call, with what tells one from another.
    std::string requests() {
        std::string all;
        for (const auto& each : sharing_log()) {
            all += each.value_of("action");
            for (const char* const key : {"name", "email", "sharemode"}) {
                all += each.value_of(key).empty() ? "" : "=" + each.value_of(key);
            }
            all += ' ';
        }
        m_control.reset();
        return all;
    }

    /// Waits for a state of the page and for its requests.
    void expect(const std::string& mode_expected, const std::wstring& users_expected,
                const std::string& requests_expected) {
        EXPECT_TRUE(eventually([&] {
            return mode() == mode_expected && users() == users_expected &&
                   IsWindowEnabled(item(450)) && IsWindowEnabled(GetDlgItem(m_dialog, IDOK));
        })) << mode()
            << testing::PrintToString(users());
        EXPECT_EQ(requests(), requests_expected);
    }

    void share(const std::wstring& name) {
        support::type(page, 450, name);
        support::press(page, 451);
    }

    void click_link(bool change) {
        RECT cell{LVIR_BOUNDS, 3, 0, 0};
        SendMessageW(item(452), LVM_GETSUBITEMRECT, 0, reinterpret_cast<LPARAM>(&cell));
        const LPARAM point = MAKELPARAM(cell.left + (change ? 8 : 45), cell.top + 4);
        for (const UINT message : {UINT{WM_MOUSEMOVE}, UINT{WM_LBUTTONDOWN}, UINT{WM_LBUTTONUP}}) {
            PostMessageW(item(452), message, 0, point);
        }
    }

    /// A box of a failure, or of another text; answered by `button`.
    void answer(const wchar_t* caption, const std::wstring& message, int button = IDOK) {
        const HWND box = await_dialog(caption);
        ASSERT_NE(box, nullptr) << testing::PrintToString(caption);
        EXPECT_EQ(support::message_of(box), message);
        EXPECT_EQ(support::icon_of(box), button == IDOK ? LoadIconW(nullptr, IDI_HAND) : nullptr);
        EXPECT_TRUE(support::answer_box(box, button));
    }

    std::shared_ptr<vfs::directory> folder;
    HWND page = nullptr;
};

constexpr auto adding = "1110000000 add";
constexpr auto adding_with_message = "1110000001 add";
constexpr auto changing = "0001111110 change";
constexpr auto anna_may_view = L"anna:\x2713::CH / REM;";
constexpr auto anna_may_do_all = L"anna::\x2713:CH / REM;";
constexpr auto demanded = L"An error on demand";

TEST_F(share_test, shares_changes_and_ends_a_sharing) {
    m_control.reset();
    open();
    EXPECT_TRUE(eventually([&] { return !sharing_log().empty(); }));
    expect(adding, L"", "list_share_whith_users ");
    EXPECT_EQ(text(455), L"Plans");
    EXPECT_EQ(text(456), L"Not Shared");

    share(L" \tnobody\x00A0 ");
    expect(adding_with_message, L"", "get_userid_by_name=nobody ");
    EXPECT_EQ(text(457), L"User 'nobody' doesn't exist");
    share(L"ghost@quilldeck.example");
    EXPECT_TRUE(eventually([&] { return sharing_log().size() == 3; }));
    expect(adding_with_message, L"",
           "get_userid_by_name=ghost@quilldeck.example "
           "get_userid_by_email=ghost@quilldeck.example share_folder=ghost@quilldeck.example ");
    EXPECT_EQ(text(457), L"User ’ghost@quilldeck.example’ is not registered with Quilldeck yet. We "
                         L"already sent email to this email address with link to create Quilldeck "
                         L"account and have access to selected folder.");

    SendMessageW(page, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(item(450)), TRUE);
    support::type(page, 450, L" anna ");
    support::press_key(m_dialog, VK_RETURN);
    expect(changing, anna_may_view,
           "get_userid_by_name=anna share_folder=0 list_share_whith_users list_share_whith_users "
           "list_share_whith_users ");
    EXPECT_EQ(text(456), L"Shared");
    EXPECT_EQ(text(467), L"anna");
    EXPECT_TRUE(IsDlgButtonChecked(page, 453) && !IsDlgButtonChecked(page, 454));

    support::press(page, 454);
    support::press(page, 464);
    expect(adding, anna_may_do_all,
           "list_share_whith_users change_folder_share_mode=1 list_share_whith_users ");
    click_link(true);
    expect(changing, anna_may_do_all, "list_share_whith_users ");
    EXPECT_TRUE(!IsDlgButtonChecked(page, 453) && IsDlgButtonChecked(page, 454));
    CheckRadioButton(page, 453, 454, 0);
    EXPECT_TRUE(eventually([&] { return support::focus_of(m_dialog) == item(454); }) ||
                support::focus_of(m_dialog) == item(452));
    support::press(page, 464);
    expect(adding, anna_may_do_all,
           "list_share_whith_users change_folder_share_mode=1 list_share_whith_users ");

    // The keyboard: the first row's links, to and fro.
    SendMessageW(page, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(item(452)), TRUE);
    support::press_key(m_dialog, VK_RIGHT);
    support::press_key(m_dialog, VK_LEFT);
    support::press_key(m_dialog, VK_SPACE);
    expect(changing, anna_may_do_all, "list_share_whith_users ");
    SendMessageW(page, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(item(452)), TRUE);
    support::press_key(m_dialog, VK_RIGHT);
    support::press_key(m_dialog, VK_RETURN);
    answer(L"", L"Are you sure you want to remove user?", IDNO);
    expect(changing, anna_may_do_all, "");
    click_link(false);
    answer(L"", L"Are you sure you want to remove user?", IDYES);
    expect(adding, L"", "list_share_whith_users delete_sharing_with_user list_share_whith_users ");
    EXPECT_EQ(text(456), L"Not Shared");
}

TEST_F(share_test, tells_of_each_request_that_fails) {
    const auto load = [&] {
        open();
    };
    const auto share_anna = [&] {
        share(L"anna");
    };
    const auto invite = [&] {
        share(L"ghost@quilldeck.example");
    };
    const auto change = [&] {
        PostMessageW(page, WM_CHANGE_USER, 0, 0);
    };
    const auto save = [&] {
        support::press(page, 464);
    };
    const auto remove = [&] {
        PostMessageW(page, WM_REMOVE_USER, 0, 0);
        answer(L"", L"Are you sure you want to remove user?", IDYES);
    };
    constexpr auto list = "list_share_whith_users";

    struct {
        std::function<void()> act;
        int shared_before; ///< with anna, in this mode; -1: not
        bool change_before;
        const char* action;
        int skip;
        const wchar_t* caption;
        const char* mode_after;
        const wchar_t* users_after;
    } const cases[] = {
        {load, -1, false, list, 0, L"Error loading users", adding, L""},
        {share_anna, -1, false, "share_folder", 0, L"Error sharing", adding, L""},
        {share_anna, -1, false, list, 0, L"Error loading users", changing, L""},
        {share_anna, -1, false, list, 1, L"Error sharing", adding, anna_may_view},
        {share_anna, -1, false, list, 2, L"Error changing share mode", adding, anna_may_view},
        {invite, -1, false, "share_folder", 0, L"Error sharing", adding_with_message, L""},
        {share_anna, -1, false, "get_userid_by_name", 0, nullptr, adding_with_message, L""},
        {change, 1, false, list, 0, L"Error changing share mode", adding, anna_may_do_all},
        {save, 1, true, list, 0, L"Error changing share mode", changing, anna_may_do_all},
        {save, 1, true, "change_folder_share_mode", 0, L"Error changing share mode", changing,
         anna_may_do_all},
        {save, 1, true, list, 1, L"Error loading users", adding, L""},
        {remove, 0, true, list, 0, L"Error removing user", changing, anna_may_view},
        {remove, 0, false, "delete_sharing_with_user", 0, L"Error removing user", adding,
         anna_may_view},
        {remove, 0, true, list, 1, L"Error loading users", adding, L""},
    };

    for (const auto& each : cases) {
        SCOPED_TRACE(std::to_string(&each - cases));
        for (const auto& left : folder->get_sharewith_items()) {
            folder->delete_sharing_with_user(left->id);
        }
        if (each.shared_before >= 0) {
            share_with_anna(each.shared_before);
        }
        m_control.reset();
        if (&each != cases) {
            open();
            EXPECT_TRUE(eventually([&] {
                return sharing_log().size() == 1 &&
                       ListView_GetItemCount(item(452)) == (each.shared_before < 0 ? 0 : 1);
            }));
            if (each.change_before) {
                change();
                EXPECT_TRUE(eventually([&] { return mode() == changing; }));
            }
        }
        m_control.reset();
        m_control.fault(
            {{"kind", "error"}, {"action", each.action}, {"skip", std::to_string(each.skip)}});
        each.act();
        if (each.caption) {
            answer(each.caption, demanded);
        }
        EXPECT_TRUE(eventually([&] {
            return mode() == each.mode_after && users() == each.users_after;
        })) << mode()
            << testing::PrintToString(users());
        cancel();
    }
}

TEST_F(share_test, ends_with_the_dialog_in_the_middle_of_a_click) {
    constexpr ULONGLONG silence = 8;
    for (const bool loaded : {false, true}) {
        const ULONGLONG begin = GetTickCount64();
        m_control.reset();
        m_control.fault({{"kind", "delay"},
                         {"action", loaded ? "get_userid_by_name" : "list_share_whith_users"},
                         {"seconds", std::to_string(silence)}});
        open();
        if (loaded) {
            share(L"anna");
        }
        const std::size_t asked = loaded ? 2 : 1;
        EXPECT_TRUE(eventually([&] { return sharing_log().size() == asked; }));
        support::press_key(m_dialog, VK_ESCAPE);
        cancel();
        EXPECT_LT(GetTickCount64() - begin, silence * 1000);
        EXPECT_EQ(sharing_log().size(), asked);
    }
    EXPECT_TRUE(folder->get_sharewith_items().empty());
}

} // namespace

} // namespace dialogs
