#pragma once

#include "dialogs/properties/page.h"
#include "dialogs/properties/share_user_list.h"
#include "ui/panel_keys.h"
#include "ui/window_tasks.h"
#include "vfs/directory.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace dialogs {

/// The page that `create_share_page` makes. It has two modes: to add a user, and to change how one
/// of them may use the folder. A click's requests run one after another while the dialog can be
/// closed, which ends them.
class CPropertiesFileShareDlg : public CPropertiesPageDlg {
public:
    explicit CPropertiesFileShareDlg(IPropertiesDialog& owner) noexcept;

    ~CPropertiesFileShareDlg() override { destroy(); }

    HRESULT load() override;

    HRESULT apply() override { return S_OK; }

protected:
    bool on_init() override;
    bool on_command(int id, int code) override;
    std::optional<LRESULT> on_message(UINT message, WPARAM wparam, LPARAM lparam) override;

private:
    using users = std::vector<vfs::directory::sharewith_item_ptr>;

    /// What `ask` answers about the folder, which it is asked on another thread. Nothing when the
    /// user closed the dialog meanwhile, and when the item is no folder.
    template <class Ask>
    auto ask_folder(const Ask& ask) -> std::optional<std::invoke_result_t<Ask, vfs::directory&>>;
    /// Runs the steps of a click; a failure of the store ends them and is shown under `caption`.
    void guarded(UINT caption, const std::function<void()>& steps);
    void show_failure(UINT caption, const std::wstring& text, UINT style) const;

    void press_enter();
    void share();
    void tell_unknown(const std::wstring& name, bool is_address);
    void change_user(std::int32_t sharing);
    void save_changes();
    void remove_user(std::int32_t sharing);

    /// False when the user closed the dialog meanwhile.
    bool fill();
    void show_users(const users& found);

    void enter_add_mode();
    void enter_change_mode(const vfs::directory::sharewith_item& user);
    void show_add_controls(bool show);
    void show_change_controls(bool show);
    void show_controls(std::initializer_list<int> ids, bool show) const noexcept;

    CShareUserList m_users;
    ui::panel_keys m_keys;
    std::shared_ptr<ui::window_tasks> m_tasks;
    /// The sharing that is being changed, 0 for none, and the mode that it had.
    std::int32_t m_selected_sharing = 0;
    std::int32_t m_selected_mode = 0;
    /// Of fillings of the list: what the first one brings may come after that of a later one.
    int m_filling = 0;
    bool m_loading = false;
};

} // namespace dialogs
