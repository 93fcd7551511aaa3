#pragma once

#include "dialogs/properties/item_general_dialog.h"

namespace dialogs {

/// The general page of folders, and of folders and files together.
class CPropertiesFolderGeneralDlg : public CPropertiesItemGeneralDlg {
public:
    explicit CPropertiesFolderGeneralDlg(IPropertiesDialog& owner);

    ~CPropertiesFolderGeneralDlg() override { destroy(); }

    HRESULT load() override;

protected:
    void show_totals(const item_totals& totals) override;

private:
    void load_separators() noexcept;

    /// No directory of the selection is a root, which has but a name, a type, a place and contents.
    const bool m_root_free;
};

} // namespace dialogs
