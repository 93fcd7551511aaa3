#include "properties_fixture.h"

#include "vfs_quilldeck/session/pc_id.h"

#include <algorithm>

namespace dialogs {

namespace {

std::shared_ptr<vfs::directory> as_directory(const vfs::item_ptr& item) {
    return std::dynamic_pointer_cast<vfs::directory>(item);
}

} // namespace

vfs_quilldeck::client properties_test::sign_in() {
    vfs_quilldeck::ensure_pc_id();
    return {L"demo", L"demo"};
}

properties_test::properties_test() {
    m_control.reset();
    const auto home = as_directory(m_client.get_directory(L"Documents", false));
    static int number = 0;
    const std::wstring name =
        L"Properties " + std::to_wstring(GetTickCount64()) + L" " + std::to_wstring(++number);
    m_folder = as_directory(home->create_directory(name));
}

properties_test::~properties_test() {
    m_control.reset();
    if (m_host.joinable()) {
        PostMessageW(GetLastActivePopup(m_dialog), WM_CLOSE, 0, 0);
        cancel();
    }
}

shell::selection properties_test::select(const vfs::item_ptr& folder,
                                         const item_names& names) const {
    const auto directory = as_directory(folder);
    shell::selection items{directory, {}, {}};
    items.list.append(shell::PIDLDATA(folder));
    for (const std::wstring& name : names) {
        items.records.emplace_back(directory->find_item_by_name(name, false));
    }
    return items;
}

shell::selection properties_test::select_all(const vfs::item_ptr& folder) const {
    shell::selection items = select(folder, {});
    for (const vfs::item_ptr& item : items.folder->get_items()) {
        items.records.emplace_back(item);
    }
    return items;
}

void properties_test::open(shell::selection items, int start_page) {
    const std::wstring title = items.records.front().get_name() +
                               (items.records.size() > 1 ? L", ..." : L"") + L" Properties";
    m_host = std::thread([this, start_page, items = std::move(items)]() mutable {
        m_result = CPropertiesFileDlg(std::move(items), start_page).do_modal(nullptr);
    });
    m_dialog = support::await_dialog(title.c_str());
    // It is seen a moment before the focus is where it stays; messages are answered afterwards.
    SendMessageW(m_dialog, WM_NULL, 0, 0);
}

HWND properties_test::control(int id) const {
    HWND found = GetDlgItem(m_dialog, id);
    const HWND tabs = GetDlgItem(m_dialog, 351);
    for (HWND page = nullptr; !found && (page = FindWindowExW(tabs, page, L"#32770", nullptr));) {
        found = IsWindowVisible(page) ? GetDlgItem(page, id) : nullptr;
    }
    return found;
}

bool properties_test::is_checked(int id) const {
    return SendMessageW(control(id), BM_GETCHECK, 0, 0) == BST_CHECKED;
}

bool properties_test::is_seen(int id) const {
    return IsWindowVisible(control(id));
}

bool properties_test::shows(int id, const std::wstring& text) const {
    return support::eventually([&] { return text_of(id) == text; });
}

void properties_test::type(int id, const std::wstring& text) {
    PostMessageW(m_dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(control(id)), TRUE);
    EXPECT_TRUE(support::eventually([&] { return support::focus_of(m_dialog) == control(id); }));
    SendMessageW(control(id), EM_SETSEL, 0, -1);
    for (const wchar_t unit : text) {
        SendMessageW(control(id), WM_CHAR, unit, 0);
    }
}

void properties_test::click(int id) {
    SendMessageW(control(id), BM_CLICK, 0, 0);
}

INT_PTR properties_test::finish() {
    m_host.join();
    return m_result;
}

INT_PTR properties_test::cancel() {
    PostMessageW(m_dialog, WM_COMMAND, IDCANCEL, 0);
    return finish();
}

std::string properties_test::asked() {
    std::string actions;
    for (const support::logged_request& request : m_control.log()) {
        actions += (actions.empty() ? "" : " ") + request.value_of("action");
    }
    m_control.reset();
    return actions;
}

void properties_test::fail(const std::string& action, int count) {
    m_control.fault({{"kind", "error"},
                     {"action", action},
                     {"name", "Refused"},
                     {"description", "not now"},
                     {"count", std::to_string(count)}});
}

} // namespace dialogs
