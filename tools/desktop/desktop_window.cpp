#include "desktop_window.h"

#include "dropped_files.h"
#include "remote_controls.h"
#include "wait.h"

#include "com/guard.h"

#include <commctrl.h>
#include <ole2.h>
#include <shellapi.h>

#include <optional>
#include <utility>

namespace desktop {

namespace {

constexpr auto window_class = L"DesktopWithFiles";
/// What other windows leave free: the lower end of the screen.
constexpr int height = 170;

HWND make_list(HWND parent) {
    RECT area{};
    ::GetClientRect(parent, &area);
    const HWND list = ::CreateWindowExW(
        0, WC_LISTVIEWW, L"", WS_CHILD | WS_VISIBLE | LVS_ICON | LVS_AUTOARRANGE | LVS_SINGLESEL, 0,
        0, area.right, area.bottom, parent, nullptr, nullptr, nullptr);
    const COLORREF colour = ::GetSysColor(COLOR_DESKTOP);
    ::SendMessageW(list, LVM_SETBKCOLOR, 0, static_cast<LPARAM>(colour));
    ::SendMessageW(list, LVM_SETTEXTBKCOLOR, 0, static_cast<LPARAM>(colour));
    ::SendMessageW(list, LVM_SETTEXTCOLOR, 0, static_cast<LPARAM>(RGB(255, 255, 255)));
    SHFILEINFOW info{};
    const auto images = ::SHGetFileInfoW(L"", FILE_ATTRIBUTE_NORMAL, &info, sizeof info,
                                         SHGFI_SYSICONINDEX | SHGFI_USEFILEATTRIBUTES);
    ::SetWindowLongW(list, GWL_STYLE, ::GetWindowLongW(list, GWL_STYLE) | LVS_SHAREIMAGELISTS);
    ::SendMessageW(list, LVM_SETIMAGELIST, LVSIL_NORMAL, static_cast<LPARAM>(images));
    return list;
}

} // namespace

desktop_window::desktop_window(std::filesystem::path folder)
    : folder_(std::move(folder)), thread_([this] { run(); }) {
    wait_for("the desktop", [this] { return list_.load(); });
}

desktop_window::~desktop_window() {
    ::PostMessageW(window_, WM_CLOSE, 0, 0);
}

POINT desktop_window::place(const std::wstring& name) const {
    const list_view shown(list_);
    return shown.place(wait_for("an item of the desktop", [&] { return shown.find(name); }));
}

POINT desktop_window::free_place() const {
    RECT area{};
    ::GetWindowRect(list_, &area);
    constexpr LONG margin = 30;
    return {area.right - margin, area.bottom - margin};
}

DWORD desktop_window::wait_for_drag() {
    wait_for("the end of a drag", [this] { return dragged_.load(); });
    dragged_ = false;
    return effect_;
}

LRESULT CALLBACK desktop_window::receive(HWND window, UINT message, WPARAM parameter,
                                         LPARAM data) noexcept {
    auto* const self =
        reinterpret_cast<desktop_window*>(::GetWindowLongPtrW(window, GWLP_USERDATA));
    switch (message) {
    case WM_NOTIFY:
        if (self && reinterpret_cast<const NMHDR*>(data)->code == LVN_BEGINDRAG) {
            self->drag(reinterpret_cast<const NMLISTVIEW*>(data)->iItem);
        }
        return 0;
    case WM_DESTROY:
        ::RevokeDragDrop(window);
        ::PostQuitMessage(0);
        return 0;
    default:
        return ::DefWindowProcW(window, message, parameter, data);
    }
}

void desktop_window::run() {
    com::check(::OleInitialize(nullptr));
    WNDCLASSW description{};
    description.lpfnWndProc = &receive;
    description.lpszClassName = window_class;
    description.hbrBackground = ::GetSysColorBrush(COLOR_DESKTOP);
    description.hCursor = ::LoadCursorW(nullptr, IDC_ARROW);
    ::RegisterClassW(&description);
    const int screen = ::GetSystemMetrics(SM_CYSCREEN);
    const HWND window = ::CreateWindowExW(0, window_class, L"Desktop", WS_POPUP, 0, screen - height,
                                          ::GetSystemMetrics(SM_CXSCREEN), height, nullptr, nullptr,
                                          nullptr, nullptr);
    const HWND list = make_list(window);
    ::SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    window_ = window;
    ::ShowWindow(window, SW_SHOWNOACTIVATE);
    com::check(::RegisterDragDrop(window, make_file_target(folder_, [this] { fill(); }).Get()));
    list_ = list;
    fill();
    MSG message{};
    while (::GetMessageW(&message, nullptr, 0, 0) > 0) {
        ::TranslateMessage(&message);
        ::DispatchMessageW(&message);
    }
    ::OleUninitialize();
}

void desktop_window::fill() const {
    ::SendMessageW(list_, LVM_DELETEALLITEMS, 0, 0);
    for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
        SHFILEINFOW info{};
        ::SHGetFileInfoW(entry.path().c_str(), 0, &info, sizeof info, SHGFI_SYSICONINDEX);
        std::wstring name = entry.path().filename().native();
        LVITEMW item{};
        item.mask = LVIF_TEXT | LVIF_IMAGE;
        item.pszText = name.data();
        item.iImage = info.iIcon;
        ::SendMessageW(list_, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
    }
}

void desktop_window::drag(int row) {
    DWORD effect = DROPEFFECT_NONE;
    com::guard([&] {
        const auto data = local_data(folder_ / list_view(list_).cell(row, 0));
        com::check(::DoDragDrop(data.Get(), make_drop_source().Get(),
                                DROPEFFECT_COPY | DROPEFFECT_MOVE, &effect));
    });
    effect_ = effect;
    dragged_ = true;
}

} // namespace desktop
