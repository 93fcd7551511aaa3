#include "dialogs/properties/folder_general_dialog.h"

#include "resources/properties_ids.h"
#include "resources/string_ids.h"
#include "ui/strings.h"

#include <algorithm>
#include <string>

namespace dialogs {

namespace {

// Pixels of the usual dialog font; see `ui::scaled_to_font`.
constexpr int height_of_hidden_lines = 65;

bool is_root_free(const shell::selection& items) {
    return std::ranges::none_of(items.records, [](const shell::PIDLDATA& record) {
        return record.is_directory() && record.is_root_directory != 0;
    });
}

std::wstring counts_text(UINT id, std::uint64_t folders, std::uint64_t files) {
    return ui::load_string(id, {std::to_wstring(folders), std::to_wstring(files)});
}

} // namespace

CPropertiesFolderGeneralDlg::CPropertiesFolderGeneralDlg(IPropertiesDialog& owner)
    : CPropertiesItemGeneralDlg(IDD_FOLDER_GENERAL, owner),
      m_root_free(is_root_free(owner.get_selection())) {}

HRESULT CPropertiesFolderGeneralDlg::load() {
    load_name();
    load_type();
    load_location();
    load_size();
    if (m_root_free) {
        load_date(get_selection().records.front().creation_date);
        load_link();
    } else {
        hide({IDC_DATE_LABEL, IDC_ITEM_DATE, IDC_LINK_LABEL, IDC_ITEM_LINK});
    }
    if (!is_single()) {
        hide({IDC_CONTAINS_LABEL, IDC_ITEM_CONTAINS});
    }
    if (m_root_free) {
        load_access();
        load_description();
    } else {
        hide({IDC_ACCESS_LABEL, IDC_ACCESS_PUBLIC, IDC_ACCESS_HIDDEN, IDC_ACCESS_PRIVATE,
              IDC_DESCRIPTION_LABEL, IDC_ITEM_DESCRIPTION});
    }
    load_separators();
    if (get_folder_count() > 1) {
        move_up({IDC_LINK_SEPARATOR, IDC_ACCESS_LABEL, IDC_ACCESS_PUBLIC, IDC_ACCESS_HIDDEN,
                 IDC_ACCESS_PRIVATE, IDC_DETAILS_SEPARATOR, IDC_DESCRIPTION_LABEL,
                 IDC_ITEM_DESCRIPTION},
                height_of_hidden_lines);
    }
    return S_OK;
}

void CPropertiesFolderGeneralDlg::load_separators() noexcept {
    if (!m_root_free || is_mixed()) {
        hide({IDC_DETAILS_SEPARATOR, IDC_LINK_SEPARATOR});
    }
    if (!m_root_free || is_mixed() || get_folder_count() > 1) {
        hide({IDC_CONTENTS_SEPARATOR});
    }
}

void CPropertiesFolderGeneralDlg::show_totals(const item_totals& totals) {
    CPropertiesItemGeneralDlg::show_totals(totals);
    show_text(IDC_ITEM_CONTAINS, counts_text(IDS_CONTAINED_COUNTS, totals.folders, totals.files));
    if (!is_single()) {
        show_text(IDC_ITEM_NAME,
                  counts_text(IDS_SELECTED_COUNTS, get_folder_count() + totals.folders,
                              get_file_count() + totals.files));
    }
}

} // namespace dialogs
