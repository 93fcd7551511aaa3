#pragma once

#include "syncer/binding.h"
#include "ui/dialog.h"

#include <optional>

namespace dialogs {

/// The window in which the user sees every permanent binding, asks for one pass of it or ends it.
/// It shows the bindings as they are when it comes up.
class CDialogSyncManager : public ui::dialog {
public:
    CDialogSyncManager() noexcept;

protected:
    bool on_init() override;
    bool on_command(int id, int code) override;
    std::optional<LRESULT> on_message(UINT message, WPARAM wparam, LPARAM lparam) override;

private:
    void set_icons() const noexcept;
    void add_columns() const;
    HRESULT fill();
    void add_row(int index, const syncer::binding& shown) const;
    HRESULT force_sync();
    HRESULT cancel_sync();
    void update_buttons() const;
    void show_failure() const noexcept;
    int selected_row() const noexcept;
    /// Null where there is none.
    const syncer::binding* binding_of(int row) const noexcept;

    /// The rows point at them.
    syncer::binding_set m_bindings;
};

/// Shows that window on top of `owner` until it is closed.
HRESULT show_sync_manager(HWND owner);

} // namespace dialogs
