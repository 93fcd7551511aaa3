#pragma once

#include "dialogs/sync/sync_page.h"
#include "ui/property_page.h"

#include <objidl.h>
#include <wrl/client.h>

namespace dialogs {

/// The page "Quilldeck" in the properties of local files and folders, which binds them to folders
/// of the store. It comes up empty and signs the user in if need be; what the store has to be asked
/// for arrives later.
class CLocalSyncPageDlg final : public ui::property_page, private CSyncPage {
public:
    /// `extension` is what makes this page; the module stays for as long as it lives.
    CLocalSyncPageDlg(IUnknown& extension, IDataObject& items, int mode);

protected:
    bool on_init() override;
    bool on_command(int id, int code) override;
    std::optional<LRESULT> on_message(UINT message, WPARAM wparam, LPARAM lparam) override;

    bool on_apply() override { return apply(); }

    HWND page() const noexcept override { return handle(); }

    void tell_changed(bool changed) noexcept override { set_changed(changed); }

    std::optional<std::wstring> browse() override;
    std::optional<std::wstring> chosen_folder(const std::wstring& text) const override;
    syncer::binding bind(const sync_entry& entry, const std::wstring& folder) const override;

    /// The page goes on without a place to offer.
    void request_failed() noexcept override {}

private:
    void load();
    void ask_for_default_folder();

    Microsoft::WRL::ComPtr<IUnknown> m_extension;
    Microsoft::WRL::ComPtr<IDataObject> m_items;
};

} // namespace dialogs
