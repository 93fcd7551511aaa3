#pragma once

#include "dialogs/properties/item_general_dialog.h"
#include "ui/edit_currency.h"
#include "ui/url_static.h"

namespace dialogs {

/// The general page of files, which have a price.
class CPropertiesFileGeneralDlg : public CPropertiesItemGeneralDlg {
public:
    explicit CPropertiesFileGeneralDlg(IPropertiesDialog& owner);

    ~CPropertiesFileGeneralDlg() override { destroy(); }

    HRESULT load() override;

protected:
    bool on_init() override;
    bool on_command(int id, int code) override;
    void collect_changes(item_changes& changes) const override;
    void clear_changes() noexcept override;

private:
    void start_price_loader();
    void show_price(double price) noexcept;
    void price_kind_clicked(int id) noexcept;

    ui::CEditCurrency m_price;
    ui::CUrlStatic m_sales_link;
    bool m_price_changed = false;
    bool m_stop_price = false;
};

} // namespace dialogs
