#pragma once

#include "ui/pie_chart.h"
#include "ui/property_page.h"
#include "ui/window_tasks.h"
#include "vfs/records.h"

#include <unknwn.h>
#include <wrl/client.h>

#include <cstdint>
#include <exception>
#include <memory>
#include <optional>

namespace dialogs {

/// Who is signed in and how much of the store an account uses.
struct drive_account {
    vfs::user_info user;
    vfs::storage_info storage;
};

/// The used part of an account in thousandths, at least 0; 0 where there is no limit.
unsigned used_thousandths(const vfs::storage_info& storage) noexcept;

/// The page "General" of the drive's properties. It comes up empty and signs the user in if need
/// be; the values arrive when the store has sent them. Who cannot or does not want to sign in, and
/// who is refused, has no properties to look at: the sheet closes.
class CDrivePageDlg : public ui::property_page {
public:
    /// `extension` is what makes this page; the module stays for as long as it lives.
    explicit CDrivePageDlg(IUnknown& extension);

protected:
    bool on_init() override;
    bool on_command(int id, int code) override;
    std::optional<LRESULT> on_message(UINT message, WPARAM wparam, LPARAM lparam) override;

private:
    void set_sheet_icons() const noexcept;
    void load();
    void sign_in();
    void show(const drive_account& account);
    void show_size(int full_id, int short_id, std::int64_t size);
    void fail(const std::exception_ptr& cause) noexcept;
    void close_sheet() const noexcept;

    Microsoft::WRL::ComPtr<IUnknown> m_extension;
    ui::pie_chart_class m_pie_class;
    ui::CPieChart m_pie;
    std::shared_ptr<ui::window_tasks> m_tasks;
    bool m_loading = false;
};

} // namespace dialogs
