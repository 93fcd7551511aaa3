#pragma once

#include "dialogs/properties/page.h"
#include "dialogs/sync/sync_page.h"

namespace dialogs {

/// The page "Sync && Backup" in the properties of items of the store, which binds them to local
/// folders. Where the items lie is asked for when the page is first seen; until the store has told
/// it nothing on the page can be used.
class CPropertiesItemSyncDlg final : public CPropertiesPageDlg, private CSyncPage {
public:
    CPropertiesItemSyncDlg(IPropertiesDialog& owner, int mode) noexcept;

    HRESULT load() override;

    HRESULT apply() override { return CSyncPage::apply() ? S_OK : E_FAIL; }

protected:
    bool on_command(int id, int code) override { return handle_command(id, code); }

    std::optional<LRESULT> on_message(UINT message, WPARAM wparam, LPARAM lparam) override;

    HWND page() const noexcept override { return handle(); }

    void tell_changed(bool changed) noexcept override { set_modified(changed); }

    std::optional<std::wstring> browse() override;
    std::optional<std::wstring> chosen_folder(const std::wstring& text) const override;
    syncer::binding bind(const sync_entry& entry, const std::wstring& folder) const override;
    void update_entries(std::vector<sync_entry>& entries) const override;
    void follow(syncer::binding& moved, const sync_entry& entry) const override;

    /// The page stays as it is, of no use.
    void request_failed() noexcept override {}

private:
    void ask_when_seen(bool seen);
    void show_items(const std::wstring& folder);

    /// The path of the folder that holds the items, with the store's name.
    std::wstring m_folder;
    /// The user's documents.
    std::wstring m_documents;
    /// The page is there, and the store was not asked yet.
    bool m_can_ask = false;
};

} // namespace dialogs
