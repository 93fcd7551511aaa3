#include "dialogs/properties/properties_dialog.h"

#include "com/guard.h"
#include "com/memory.h"
#include "dialogs/properties/file_general_dialog.h"
#include "dialogs/properties/folder_general_dialog.h"
#include "dialogs/properties/page_choice.h"
#include "dialogs/properties/share_page.h"
#include "dialogs/properties/sync_page.h"
#include "resources/properties_ids.h"
#include "resources/resource_ids.h"
#include "resources/string_ids.h"
#include "shell_items/seams.h"
#include "shell_items/sync_page_mode.h"
#include "ui/gdi.h"
#include "ui/message.h"
#include "ui/placement.h"
#include "ui/strings.h"
#include "utils/module.h"

#include <commctrl.h>
#include <shlobj.h>
#include <uxtheme.h>
#include <wrl/client.h>

#include <algorithm>
#include <utility>

namespace dialogs {

namespace {

using Microsoft::WRL::ComPtr;

/// Between the row of tabs and the pages, in pixels of the usual dialog font.
constexpr int gap_below_tabs = 10;

bool holds_files_only(const shell::selection& items) {
    return std::ranges::all_of(items.records, &shell::PIDLDATA::is_file);
}

unique_icon load_own_icon(int id, int width_metric, int height_metric) {
    return unique_icon(static_cast<HICON>(LoadImageW(utils::own_module(), MAKEINTRESOURCEW(id),
                                                     IMAGE_ICON, GetSystemMetrics(width_metric),
                                                     GetSystemMetrics(height_metric), 0)));
}

/// The icons of an item as the drive tells them; it asks the store nothing for that.
void extract_icons(const shell::PIDLDATA& record, unique_icon& large, unique_icon& small) {
    ComPtr<IShellFolder> drive;
    com::check(shell::get_seams().folders.create_drive(IID_PPV_ARGS(&drive)));
    const com::unique_id_list list = shell::CItemIDList(record).to_list();
    const ITEMIDLIST* item = list.get();
    ComPtr<IExtractIconW> icons;
    com::check(drive->GetUIObjectOf(nullptr, 1, &item, IID_IExtractIconW, nullptr, &icons));
    wchar_t file[MAX_PATH];
    int index = 0;
    UINT flags = 0;
    com::check(icons->GetIconLocation(0, file, MAX_PATH, &index, &flags));
    com::check(icons->Extract(
        file, static_cast<UINT>(index), large.put(), small.put(),
        static_cast<UINT>(MAKELONG(GetSystemMetrics(SM_CXICON), GetSystemMetrics(SM_CXSMICON)))));
}

} // namespace

CPropertiesFileDlg::CPropertiesFileDlg(shell::selection items, int start_page)
    : dialog(IDD_PROPERTIES), m_items(std::move(items)), m_start_page(start_page) {}

bool CPropertiesFileDlg::on_init() {
    const HWND tabs = control(IDC_PROPERTIES_TABS);
    SetWindowLongPtrW(tabs, GWL_EXSTYLE,
                      GetWindowLongPtrW(tabs, GWL_EXSTYLE) | WS_EX_CONTROLPARENT);
    load_icons();
    SendMessageW(handle(), WM_SETICON, ICON_SMALL, reinterpret_cast<LPARAM>(m_small_icon.get()));
    load_theme_brush();
    create_pages();
    select_start_page();
    load_pages();
    ui::center_window(handle());
    // By itself it would come up when there are no more messages, such as that of a failure, whose
    // box would be there before.
    ShowWindow(handle(), SW_SHOW);
    focus(GetNextDlgTabItem(handle(), nullptr, FALSE));
    return false;
}

void CPropertiesFileDlg::load_icons() {
    if (m_items.records.size() > 1) {
        m_small_icon = load_own_icon(IDI_ITEMS, SM_CXSMICON, SM_CYSMICON);
        m_large_icon = load_own_icon(IDI_ITEMS, SM_CXICON, SM_CYICON);
        return;
    }
    // Without an icon everything else can still be seen.
    static_cast<void>(
        com::guard([&] { extract_icons(m_items.records.front(), m_large_icon, m_small_icon); }));
}

void CPropertiesFileDlg::load_theme_brush() noexcept {
    m_theme_brush.reset();
    if (!IsThemeActive()) {
        return;
    }
    const HWND tabs = control(IDC_PROPERTIES_TABS);
    RECT client{};
    GetClientRect(tabs, &client);
    const HDC screen = GetDC(tabs);
    const ui::unique_memory_dc memory(CreateCompatibleDC(screen));
    const ui::unique_bitmap picture(CreateCompatibleBitmap(screen, client.right, client.bottom));
    ReleaseDC(tabs, screen);
    {
        const ui::selected_object selected(memory.get(), picture.get());
        const auto dc = reinterpret_cast<WPARAM>(memory.get());
        SendMessageW(tabs, WM_ERASEBKGND, dc, 0);
        SendMessageW(tabs, WM_PRINTCLIENT, dc, PRF_CLIENT | PRF_ERASEBKGND);
    }
    m_theme_brush.reset(CreatePatternBrush(picture.get()));
}

void CPropertiesFileDlg::create_pages() {
    IPropertiesDialog& self = *this;
    if (holds_files_only(m_items)) {
        add_page(page_kind::general, std::make_unique<CPropertiesFileGeneralDlg>(self),
                 IDS_TAB_GENERAL);
    } else {
        add_page(page_kind::general, std::make_unique<CPropertiesFolderGeneralDlg>(self),
                 IDS_TAB_GENERAL);
    }
    if (has_share_page(m_items)) {
        add_page(page_kind::sharing, create_share_page(self), IDS_TAB_SHARING);
    }
    if (has_sync_page(m_items)) {
        const bool starts =
            m_start_page >= static_cast<int>(shell::properties_page::synchronization);
        add_page(page_kind::synchronization,
                 create_sync_page(self, starts ? m_start_page : shell::sync_mode_of_bindings),
                 IDS_TAB_SYNC);
    }
}

void CPropertiesFileDlg::add_page(page_kind kind, std::unique_ptr<CPropertiesPageDlg> page,
                                  UINT title) {
    const HWND tabs = control(IDC_PROPERTIES_TABS);
    std::wstring text = ui::load_string(title);
    TCITEMW item{};
    item.mask = TCIF_TEXT;
    item.pszText = text.data();
    SendMessageW(tabs, TCM_INSERTITEMW, m_pages.size(), reinterpret_cast<LPARAM>(&item));

    RECT row{};
    SendMessageW(tabs, TCM_GETITEMRECT, 0, reinterpret_cast<LPARAM>(&row));
    RECT inside{};
    GetClientRect(tabs, &inside);
    SendMessageW(tabs, TCM_ADJUSTRECT, FALSE, reinterpret_cast<LPARAM>(&inside));
    const auto rows = static_cast<LONG>(SendMessageW(tabs, TCM_GETROWCOUNT, 0, 0));
    const LONG gap = ui::scaled_to_font(handle(), {0, 0, 0, gap_below_tabs}).bottom;
    page->create_in(tabs, {inside.left, (row.bottom - row.top) * rows + gap});
    m_pages.push_back({kind, std::move(page)});
}

void CPropertiesFileDlg::select_start_page() {
    const page_kind start = m_start_page == 0   ? page_kind::general
                            : m_start_page == 1 ? page_kind::sharing
                                                : page_kind::synchronization;
    const auto found = std::ranges::find(m_pages, start, &tab::kind);
    if (found != m_pages.end()) {
        SendDlgItemMessageW(handle(), IDC_PROPERTIES_TABS, TCM_SETCURSEL,
                            static_cast<WPARAM>(found - m_pages.begin()), 0);
    }
    show_current_page();
}

void CPropertiesFileDlg::load_pages() {
    m_loading = true;
    SetWindowTextW(
        handle(),
        ui::load_string(m_items.records.size() == 1 ? IDS_PROPERTIES_OF : IDS_PROPERTIES_OF_SEVERAL,
                        {m_items.records.front().get_name()})
            .c_str());
    bool loaded = true;
    for (const auto& [kind, page] : m_pages) {
        loaded = SUCCEEDED(page->load()) && loaded;
    }
    m_loading = false;
    if (!loaded) {
        PostMessageW(handle(), WM_CLOSE, 0, 0);
    }
}

void CPropertiesFileDlg::show_current_page() {
    const auto current = static_cast<std::size_t>(TabCtrl_GetCurSel(control(IDC_PROPERTIES_TABS)));
    for (std::size_t i = 0; i < m_pages.size(); ++i) {
        ShowWindow(m_pages[i].page->handle(), i == current ? SW_SHOW : SW_HIDE);
    }
}

bool CPropertiesFileDlg::on_command(int id, int) {
    switch (id) {
    case IDC_PROPERTIES_APPLY:
        apply();
        return true;
    case IDOK:
        if (SUCCEEDED(apply())) {
            end(IDOK);
        }
        return true;
    case IDCANCEL:
        end(IDCANCEL);
        return true;
    default:
        return false;
    }
}

std::optional<LRESULT> CPropertiesFileDlg::on_message(UINT message, WPARAM, LPARAM lparam) {
    switch (message) {
    case WM_NOTIFY:
        if (reinterpret_cast<const NMHDR*>(lparam)->code == TCN_SELCHANGE) {
            show_current_page();
            return 0;
        }
        return std::nullopt;
    case WM_THEMECHANGED:
        load_theme_brush();
        InvalidateRect(handle(), nullptr, TRUE);
        return std::nullopt;
    case WM_DESTROY:
        for (const auto& [kind, page] : m_pages) {
            page->destroy();
        }
        return std::nullopt;
    default:
        return std::nullopt;
    }
}

void CPropertiesFileDlg::set_modified(bool modified) noexcept {
    if (m_loading) {
        return;
    }
    const HWND button = control(IDC_PROPERTIES_APPLY);
    if (!modified && GetFocus() == button) {
        focus(control(IDOK));
    }
    EnableWindow(button, modified);
}

HRESULT CPropertiesFileDlg::apply() {
    HRESULT result = S_OK;
    for (const auto& [kind, page] : m_pages) {
        HRESULT applied = E_FAIL;
        try {
            applied = page->apply();
        } catch (...) {
            ui::show_current_failure(handle());
        }
        if (applied == E_ABORT) {
            return applied;
        }
        result = FAILED(result) ? result : applied;
    }
    set_modified(FAILED(result));
    return result;
}

} // namespace dialogs
