#include "properties_fixture.h"

#include "dialogs/properties/page_choice.h"
#include "resources/properties_ids.h"

#include <map>

namespace dialogs {

namespace {

using support::eventually;
using shown_texts = std::map<int, std::wstring>;

/// The folder anew, so that it knows no children.
class fresh_folder_test : public properties_test {
protected:
    vfs::item_ptr fresh() {
        return m_client.get_directory(L"Documents/" + m_folder->get_name(), false);
    }
};

TEST_F(properties_test, holds_every_control_under_its_number) {
    m_folder->create_file(L"a.txt");
    m_folder->create_directory(L"folder");
    const shown_texts dialog = {{1, L"OK"}, {2, L"Cancel"}, {352, L"&Apply"}};
    const shown_texts both = {{356, L"&Type:"},
                              {358, L"&Location:"},
                              {360, L"&Size:"},
                              {365, L"Lin&k:"},
                              {370, L"Access permission:"}};
    const shown_texts file = {{363, L"&Date:"},
                              {371, L"&Public (anyone can access this file)"},
                              {372, L"&Hidden (anyone can access this file if they know the URL)"},
                              {373, L"P&rivate (only my shared contacts may access this file)"},
                              {368, L"&File Description / Keywords:"},
                              {497, L"File Price"},
                              {494, L"Fr&ee"},
                              {495, L"$"},
                              {498, L"Enter price for do&wnload of this file. More"},
                              {499, L"information"}};
    const shown_texts folder = {
        {376, L"C&ontains:"},
        {363, L"&Created:"},
        {371, L"&Public (anyone can access files in this folder)"},
        {372, L"&Hidden (anyone can access files in this folder if they know the URL)"},
        {373, L"P&rivate (only my shared contacts may access files in this folder)"},
        {368, L"&Description:"}};
    for (const bool is_file : {true, false}) {
        open(select(m_folder, {is_file ? L"a.txt" : L"folder"}));
        std::wstring keys;
        for (const shown_texts* texts : {&dialog, &both, is_file ? &file : &folder}) {
            for (const auto& [id, text] : *texts) {
                EXPECT_EQ(text_of(id), text) << id;
                EXPECT_TRUE(is_seen(id)) << id;
                const std::size_t mark = text.find(L'&');
                const wchar_t key = mark == std::wstring::npos ? L' ' : ::towlower(text[mark + 1]);
                EXPECT_TRUE(key == L' ' || keys.find(key) == std::wstring::npos) << id;
                keys += key;
            }
        }
        for (const int id : {353, 354, 355, 357, 359, 361, 362, 364, 366, 367, 369, 374}) {
            EXPECT_TRUE(is_seen(id)) << id;
        }
        EXPECT_EQ(control(IDC_PRICE) != nullptr, is_file);
        EXPECT_EQ(control(IDC_ITEM_CONTAINS) != nullptr, !is_file);
        EXPECT_FALSE(can_apply());
        EXPECT_EQ(cancel(), IDCANCEL);
    }
}

/// What each kind of selection has: the pages, the fields, and how much of the page is seen.
TEST_F(properties_test, shows_what_there_is_of_a_selection) {
    const std::wstring gone = m_folder->get_name() + L".txt"; // the Trash holds those of others
    const auto folder =
        std::dynamic_pointer_cast<vfs::directory>(m_folder->create_directory(L"one"));
    std::dynamic_pointer_cast<vfs::directory>(folder->create_directory(L"inner"))
        ->create_file(L"deep.txt");
    folder->create_file_alloc(L"shallow.txt", 0);
    m_folder->create_directory(L"two");
    for (const std::wstring& name : item_names{L"a.txt", L"b.txt", L"c.dat", gone}) {
        m_folder->create_file(name);
    }
    m_folder->find_item_by_name(L"a.txt", false)->set_description(L"same\nlines");
    m_folder->find_item_by_name(L"b.txt", false)->set_description(L"same\nlines");
    m_folder->delete_item(gone, true);
    m_folder->get_items();
    const auto root = std::dynamic_pointer_cast<vfs::directory>(m_client.get_root());
    vfs::item_ptr trash;
    for (const vfs::item_ptr& item : root->get_items()) {
        const auto directory = std::dynamic_pointer_cast<vfs::directory>(item);
        trash = directory && directory->get_folder_flags() == vfs::folder_trash ? item : trash;
    }
    const std::wstring place = L"Quilldeck\\" + m_folder->get_name();
    const std::wstring text_type =
        shell::PIDLDATA(m_folder->find_item_by_name(L"a.txt", false)).get_type_text();
    const std::wstring folder_type = shell::PIDLDATA(folder).get_type_text();
    m_control.reset();

    const struct {
        const char* what;
        vfs::item_ptr folder;
        item_names names;
        bool shared, synchronized;
        shown_texts texts;
        std::vector<int> hidden;
    } cases[] = {
        {"a file",
         m_folder,
         {L"a.txt"},
         false,
         true,
         {{354, L"a.txt"},
          {357, text_type},
          {359, place},
          {361, L"0 bytes (0 bytes)"},
          {369, L"same\r\nlines"},
          {496, L"0.00"}},
         {}},
        {"alike files",
         m_folder,
         {L"a.txt", L"b.txt"},
         false,
         true,
         {{354, L"0 folders, 2 files"},
          {357, L"All of type " + text_type},
          {359, place},
          {369, L"same\r\nlines"},
          {496, L"0.00"}},
         {362, 363, 364, 365, 366}},
        {"different files",
         m_folder,
         {L"a.txt", L"c.dat"},
         false,
         true,
         {{357, L"Multiple Types"}, {369, L""}, {496, L"0.00"}},
         {362, 363, 364, 365, 366}},
        {"a folder",
         m_folder,
         {L"one"},
         true,
         true,
         {{354, L"one"}, {357, folder_type}, {377, L"1 folders, 2 files"}, {369, L""}},
         {}},
        {"folders",
         m_folder,
         {L"one", L"two"},
         false,
         true,
         {{354, L"3 folders, 2 files"}, {357, L"All of type " + folder_type}},
         {374, 376, 377, 363, 364, 365, 366}},
        {"a mixture",
         m_folder,
         {L"one", L"a.txt"},
         false,
         true,
         {{354, L"2 folders, 3 files"}, {357, L"Multiple Types"}},
         {362, 363, 364, 365, 366, 367, 368, 369, 370, 371, 372, 373, 374, 376, 377}},
        {"an item of the Trash",
         trash,
         {gone},
         false,
         false,
         {{354, gone}, {359, L"Quilldeck\\Documents\\" + m_folder->get_name()}},
         {}},
        {"a root",
         root,
         {trash->get_name()},
         false,
         false,
         {{354, trash->get_name()}},
         {362, 363, 364, 365, 366, 367, 368, 369, 370, 371, 372, 373, 374}},
    };

    for (const auto& each : cases) {
        SCOPED_TRACE(each.what);
        shell::selection items = select(each.folder, each.names);
        EXPECT_EQ(has_share_page(items), each.shared);
        EXPECT_EQ(has_sync_page(items), each.synchronized);
        open(std::move(items));
        for (const auto& [id, text] : each.texts) {
            EXPECT_TRUE(shows(id, text)) << id << ": " << testing::PrintToString(text_of(id));
        }
        for (const int id : each.hidden) {
            EXPECT_FALSE(is_seen(id)) << id;
        }
        EXPECT_TRUE(is_seen(369) || !each.hidden.empty());
        EXPECT_EQ(cancel(), IDCANCEL);
    }
}

TEST_F(fresh_folder_test, fills_in_with_no_more_requests_than_there_are_folders) {
    for (int i = 0; i < 40; ++i) {
        m_folder->create_file(L"file " + std::to_wstring(i));
    }
    const auto tree =
        std::dynamic_pointer_cast<vfs::directory>(m_folder->create_directory(L"tree"));
    for (int i = 0; i < 5; ++i) {
        tree->create_directory(std::to_wstring(i));
    }
    // What the shell tells of the items was listed by another object of the folder.
    shell::selection items = select_all(m_folder);
    items.folder = std::dynamic_pointer_cast<vfs::directory>(fresh());
    m_control.reset();
    open(items);
    EXPECT_TRUE(shows(354, L"6 folders, 40 files"));
    EXPECT_TRUE(eventually([&] { return m_control.log().size() == 7; }));
    cancel();
    EXPECT_EQ(asked(), "list_dir list_dir list_dir list_dir list_dir list_dir list_dir");

    items.records.resize(1);
    items.records.front() = shell::PIDLDATA(m_folder->find_item_by_name(L"file 1", false));
    items.folder = std::dynamic_pointer_cast<vfs::directory>(fresh());
    m_control.reset();
    open(items);
    EXPECT_TRUE(shows(496, L"0.00") &&
                shows(366, m_folder->find_item_by_name(L"file 1", false)->get_link()));
    cancel();
    EXPECT_EQ(asked(), "list_dir");
}

TEST_F(properties_test, stores_what_was_changed_and_nothing_else) {
    for (const wchar_t* name : {L"a.txt", L"b.txt"}) {
        m_folder->create_file(name);
    }
    open(select(m_folder, {L"a.txt"}));
    EXPECT_TRUE(shows(496, L"0.00") && eventually([&] { return is_checked(373); }));
    SetWindowTextW(control(369), L"not by the user");
    EXPECT_FALSE(can_apply());
    asked();
    click(IDOK);
    EXPECT_EQ(finish(), IDOK);
    EXPECT_EQ(asked(), "");

    open(select(m_folder, {L"a.txt"}));
    EXPECT_TRUE(shows(496, L"0.00") && eventually([&] { return is_checked(373); }));
    EXPECT_FALSE(IsWindowEnabled(control(496)));
    type(354, L"ä new.txt");
    type(369, L"two\rlines");
    click(371);
    click(495);
    type(496, L"1.5");
    EXPECT_TRUE(can_apply());
    asked();
    click(352);
    EXPECT_FALSE(can_apply());
    // The items are looked up anew after the rename.
    EXPECT_EQ(asked(), "rename_file list_dir set_file_access set_file_description set_file_price");
    click(IDOK);
    EXPECT_EQ(finish(), IDOK);
    EXPECT_EQ(asked(), "");
    m_folder->get_items();
    const auto changed =
        std::dynamic_pointer_cast<vfs::file>(m_folder->find_item_by_name(L"ä new.txt", false));
    EXPECT_EQ(changed->get_description(), L"two\r\nlines");
    EXPECT_EQ(changed->get_access(), vfs::access_public);
    EXPECT_EQ(changed->get_price(), 1.5);

    // Several items, whose values differ: no choice is made for the user.
    const struct {
        int clicked;
        std::int32_t access;
    } accesses[] = {{372, vfs::access_hidden}, {373, vfs::access_private}};

    for (const auto& each : accesses) {
        open(select_all(m_folder));
        EXPECT_TRUE(shows(354, L"0 folders, 2 files"));
        PostMessageW(m_dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(control(371)), TRUE);
        EXPECT_TRUE(eventually([&] { return support::focus_of(m_dialog) == control(371); }));
        EXPECT_FALSE(can_apply()) << "the focus alone chooses nothing";
        click(each.clicked);
        click(494);
        asked();
        click(IDOK);
        EXPECT_EQ(finish(), IDOK);
        EXPECT_EQ(asked(), "set_file_access set_file_access set_file_price set_file_price");
        for (const vfs::item_ptr& item : m_folder->get_items()) {
            EXPECT_EQ(item->get_access(), each.access);
        }
    }
}

TEST_F(properties_test, stays_open_with_what_the_store_refused) {
    m_folder->create_file(L"a.txt");
    m_folder->create_directory(L"b");

    const struct {
        const wchar_t* name;
        const char* action;
        const wchar_t* caption;
        int id; ///< what is changed
    } cases[] = {
        {L"a.txt", "rename_file", L"Error loading description", 354},
        {L"a.txt", "set_file_access", L"Error loading permissions", 372},
        {L"a.txt", "set_file_description", L"Error loading description", 369},
        {L"a.txt", "set_file_price", L"Error loading price", 495},
        {L"b", "rename_dir", L"Error loading description", 354},
        {L"b", "set_dir_access", L"Error loading permissions", 371},
        {L"b", "set_dir_description", L"Error loading description", 369},
    };

    for (const auto& each : cases) {
        SCOPED_TRACE(each.action);
        m_folder->get_items();
        open(select(m_folder, {each.name}));
        EXPECT_TRUE(
            eventually([&] { return is_checked(373) || is_checked(371) || is_checked(372); }));
        if (each.id == 354 || each.id == 369) {
            type(each.id, each.name);
            type(each.id, each.name + std::wstring(L" 2"));
        } else {
            click(each.id);
        }
        fail(each.action, 1);
        support::press(m_dialog, IDOK);
        const HWND box = support::await_dialog(each.caption);
        EXPECT_EQ(support::message_of(box), L"not now");
        EXPECT_TRUE(support::answer_box(box, IDOK));
        EXPECT_TRUE(eventually([&] { return IsWindowEnabled(m_dialog) && can_apply(); }));
        asked();
        click(352);
        EXPECT_FALSE(can_apply()) << "the second try works";
        EXPECT_EQ(asked(), each.action);
        if (each.id == 354) { // the old name for the next case
            type(354, each.name);
        }
        click(IDOK);
        EXPECT_EQ(finish(), IDOK);
    }
}

TEST_F(fresh_folder_test, keeps_what_the_user_typed_from_late_values) {
    m_folder->create_file(L"a.txt")->set_description(L"late");
    shell::selection items = select(m_folder, {L"a.txt"});
    items.folder = std::dynamic_pointer_cast<vfs::directory>(fresh());
    m_control.fault({{"kind", "delay"}, {"action", "list_dir"}, {"seconds", "3"}});
    open(items);
    type(369, L"early");
    click(371);
    click(495);
    type(496, L"7");
    EXPECT_EQ(text_of(366), L"");
    EXPECT_TRUE(shows(366, m_folder->find_item_by_name(L"a.txt", false)->get_link()));
    EXPECT_TRUE(shows(369, L"early") && shows(496, L"7"));
    EXPECT_TRUE(is_checked(371) && is_checked(495) && !is_checked(373) && !is_checked(494));
    EXPECT_TRUE(can_apply());
    cancel();
}

TEST_F(fresh_folder_test, tells_each_failure_of_a_loader_once_and_closes_without_its_item) {
    for (const wchar_t* name : {L"a.txt", L"b.txt"}) {
        m_folder->create_file(name);
    }
    m_folder->create_directory(L"c");
    const auto reopen = [&](const item_names& names) {
        m_control.reset();
        shell::selection items = select(m_folder, names);
        items.folder = std::dynamic_pointer_cast<vfs::directory>(fresh());
        fail("list_dir");
        open(std::move(items));
    };
    const auto answer = [&] {
        HWND box = nullptr;
        EXPECT_TRUE(eventually([&] {
            box = GetLastActivePopup(m_dialog);
            return box != m_dialog && IsWindowVisible(box);
        }));
        EXPECT_EQ(support::message_of(box), L"not now");
        const std::wstring caption = support::text_of(box);
        EXPECT_TRUE(support::answer_box(box, IDOK));
        return caption;
    };
    reopen({L"a.txt"});
    // That of the link is the last, whatever came before.
    for (int i = 0; i < 6 && answer() != L"Error loading link"; ++i) {
    }
    EXPECT_EQ(finish(), IDCANCEL) << "an item that cannot be found has no properties";

    reopen({L"a.txt", L"b.txt"});
    std::map<std::wstring, int> told;
    for (int i = 0; i < 4; ++i) {
        ++told[answer()];
    }
    const std::map<std::wstring, int> expected = {{L"Error loading permissions", 1},
                                                  {L"Error loading description", 1},
                                                  {L"%d folders, %d files", 2}};
    EXPECT_EQ(told, expected);
    EXPECT_FALSE(is_checked(494) || is_checked(495) || is_checked(371) || is_checked(373));
    EXPECT_EQ(cancel(), IDCANCEL);

    reopen({L"b.txt", L"c"});
    EXPECT_EQ(answer(), L"Error calculating size");
    EXPECT_TRUE(shows(361, L"0 bytes (0 bytes)"));
    EXPECT_EQ(cancel(), IDCANCEL);
}

/// A store that is silent for as long as this would make the test itself fail.
TEST_F(fresh_folder_test, closes_at_once_whatever_it_waits_for) {
    for (const wchar_t* name : {L"a.txt", L"gone.txt"}) {
        m_folder->create_file(name);
    }
    m_folder->create_directory(L"b");
    const auto silence = [&](const std::string& action) {
        m_control.fault(
            {{"kind", "delay"}, {"action", action}, {"seconds", "24"}, {"count", "99"}});
    };
    const ULONGLONG begin = GetTickCount64();
    for (const wchar_t* name : {L"a.txt", L"b"}) {
        shell::selection items = select(m_folder, {name});
        items.folder = std::dynamic_pointer_cast<vfs::directory>(fresh());
        silence("list_dir");
        open(items);
        EXPECT_EQ(cancel(), IDCANCEL);
        m_control.reset();
        if (name == std::wstring(L"b")) { // the folder is known, what is in it is not
            open(select(m_folder, {name}));
            silence("list_dir");
            EXPECT_EQ(cancel(), IDCANCEL);
            m_control.reset();
        }
    }
    for (const int id : {352, IDOK}) {
        open(select(m_folder, {L"a.txt"}));
        EXPECT_TRUE(eventually([&] { return is_checked(373); }));
        type(369, L"never stored");
        silence("set_file_description");
        support::press(m_dialog, id);
        EXPECT_TRUE(eventually([&] { return !IsWindowEnabled(control(351)); }));
        EXPECT_EQ(cancel(), IDCANCEL);
        m_control.reset();
    }
    EXPECT_LT(GetTickCount64() - begin, 20'000u);
}

TEST_F(properties_test, is_used_by_keys) {
    m_folder->create_file(L"a.txt");
    open(select(m_folder, {L"a.txt"}));
    EXPECT_TRUE(eventually([&] { return is_checked(373) && is_checked(494); }));
    PostMessageW(m_dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(control(354)), TRUE);
    for (const int id : {357, 359, 361, 364, 366, 373, 494, 499, 369, 1, 2, 354}) {
        const HWND before = support::focus_of(m_dialog);
        support::press_key(m_dialog, VK_TAB);
        EXPECT_TRUE(eventually([&] { return support::focus_of(m_dialog) != before; }));
        EXPECT_EQ(GetDlgCtrlID(support::focus_of(m_dialog)), id);
    }
    type(369, L"one\rtwo");
    EXPECT_EQ(text_of(369), L"one\r\ntwo");
    support::press_key(m_dialog, VK_ESCAPE);
    EXPECT_EQ(finish(), IDCANCEL);
    EXPECT_EQ(m_folder->find_item_by_name(L"a.txt", true)->get_description(), L"");
    open(select(m_folder, {L"a.txt"}));
    type(354, L"entered.txt");
    support::press_key(m_dialog, VK_RETURN);
    EXPECT_EQ(finish(), IDOK);
    EXPECT_EQ(m_folder->find_item_by_name(L"entered.txt", true)->get_name(), L"entered.txt");
}

} // namespace

} // namespace dialogs
