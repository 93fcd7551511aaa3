#include "dialogs/properties/file_general_dialog.h"

#include "resources/properties_ids.h"
#include "resources/string_ids.h"
#include "ui/placement.h"
#include "ui/strings.h"
#include "vfs_quilldeck/wire/service_url.h"

#include <string>
#include <utility>

namespace dialogs {

namespace {

// Pixels, for a dialog font with the usual units; see `ui::scaled_to_font`.
constexpr RECT sales_link_place{220, 345, 370, 361};
constexpr int height_of_hidden_lines = 50;

/// Where the service tells how files are sold.
std::wstring sales_url() {
    const std::string service = vfs_quilldeck::get_service_url();
    return std::wstring(service.begin(), service.end()) + L"/sellfiles";
}

} // namespace

CPropertiesFileGeneralDlg::CPropertiesFileGeneralDlg(IPropertiesDialog& owner)
    : CPropertiesItemGeneralDlg(IDD_FILE_GENERAL, owner) {}

bool CPropertiesFileGeneralDlg::on_init() {
    CPropertiesItemGeneralDlg::on_init();
    m_price.attach(control(IDC_PRICE));
    EnableWindow(control(IDC_PRICE), FALSE);
    for (const int id : {IDC_PRICE_FREE, IDC_PRICE_PAID}) {
        SendDlgItemMessageW(handle(), id, BM_SETDONTCLICK, TRUE, 0);
    }
    m_sales_link.create(handle(), IDC_SALES_LINK, ui::scaled_to_font(handle(), sales_link_place),
                        ui::load_string(IDS_SALES_LINK), ui::link_mode::open_url, sales_url(),
                        GetSysColor(COLOR_HOTLIGHT));
    // The Tab key comes to it where the eye does.
    SetWindowPos(m_sales_link.handle(), control(IDC_PRICE), 0, 0, 0, 0,
                 SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
    return false;
}

HRESULT CPropertiesFileGeneralDlg::load() {
    load_name();
    load_type();
    load_location();
    load_size();
    if (!is_single()) {
        hide({IDC_DETAILS_SEPARATOR});
    }
    load_date(get_selection().records.front().modification_date);
    load_link();
    load_access();
    load_description();
    // The price is asked for twice, side by side, and whoever comes last stays.
    start_price_loader();
    start_price_loader();
    if (!is_single()) {
        move_up({IDC_LINK_SEPARATOR, IDC_ACCESS_LABEL, IDC_ACCESS_PUBLIC, IDC_ACCESS_HIDDEN,
                 IDC_ACCESS_PRIVATE, IDC_CONTENTS_SEPARATOR, IDC_PRICE_LABEL, IDC_PRICE_FREE,
                 IDC_PRICE_PAID, IDC_PRICE, IDC_PRICE_HINT, IDC_DESCRIPTION_LABEL,
                 IDC_ITEM_DESCRIPTION, IDC_SALES_LINK},
                height_of_hidden_lines);
    }
    return S_OK;
}

void CPropertiesFileGeneralDlg::start_price_loader() {
    // A failure stands under the words of the counts, as it always has.
    start_loader(IDS_SELECTED_COUNTS, [this, items = get_items()](loader_link& link) {
        const auto price = common_price(items->find(link.stop_all), link.stop_all);
        if (price) {
            link.to_page.post([this, value = *price] {
                if (!m_stop_price) {
                    show_price(value);
                }
            });
        }
    });
}

void CPropertiesFileGeneralDlg::show_price(double price) noexcept {
    const bool paid = price != 0.0;
    set_checked(IDC_PRICE_FREE, !paid);
    set_checked(IDC_PRICE_PAID, paid);
    EnableWindow(control(IDC_PRICE), paid);
    show_text(IDC_PRICE, ui::CEditCurrency::format(price));
}

bool CPropertiesFileGeneralDlg::on_command(int id, int code) {
    switch (id) {
    case IDC_PRICE_FREE:
    case IDC_PRICE_PAID:
        if (code == BN_CLICKED) {
            price_kind_clicked(id);
        }
        return true;
    case IDC_PRICE:
        if (code == EN_CHANGE && is_typed(id)) {
            m_stop_price = true;
            note_change(m_price_changed);
        }
        return true;
    default:
        return CPropertiesItemGeneralDlg::on_command(id, code);
    }
}

void CPropertiesFileGeneralDlg::price_kind_clicked(int id) noexcept {
    if (is_checked(id)) {
        EnableWindow(control(IDC_PRICE), id == IDC_PRICE_PAID);
        m_stop_price = true;
        note_change(m_price_changed);
    }
}

void CPropertiesFileGeneralDlg::collect_changes(item_changes& changes) const {
    CPropertiesItemGeneralDlg::collect_changes(changes);
    if (m_price_changed) {
        changes.price = is_checked(IDC_PRICE_PAID) ? m_price.get_value() : 0.0;
    }
}

void CPropertiesFileGeneralDlg::clear_changes() noexcept {
    CPropertiesItemGeneralDlg::clear_changes();
    m_price_changed = false;
}

} // namespace dialogs
