#pragma once

#include "dialogs/properties/properties_dialog.h"
#include "driven_window.h"
#include "failures.h"
#include "service_url.h"
#include "store_control.h"
#include "vfs/vfs.h"
#include "vfs_quilldeck/session/client.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace dialogs {

/// The properties dialog over a folder of the store that the runner started, used from outside as
/// a user does.
class properties_test : public testing::Test {
protected:
    properties_test();
    ~properties_test() override;

    using item_names = std::vector<std::wstring>;

    /// The children of these names in `folder`, as the shell hands them over.
    shell::selection select(const vfs::item_ptr& folder, const item_names& names) const;
    /// All children.
    shell::selection select_all(const vfs::item_ptr& folder) const;

    /// Shows the dialog on a thread of its own, which `close` and `finish` wait for.
    void open(shell::selection items, int start_page = 0);
    /// Waits until no loader has anything to tell: `id` of the general page has this text.
    bool shows(int id, const std::wstring& text) const;

    /// A control of the dialog or of the page that is seen.
    HWND control(int id) const;

    std::wstring text_of(int id) const { return support::text_of(control(id)); }

    bool is_checked(int id) const;
    bool is_seen(int id) const;

    bool can_apply() const { return IsWindowEnabled(control(352)); }

    /// Gives a field the focus and types over its text by keys.
    void type(int id, const std::wstring& text);
    /// Gives a button the focus and clicks it.
    void click(int id);
    /// What `do_modal` answered, once that has come.
    INT_PTR finish();
    /// Presses Cancel and waits.
    INT_PTR cancel();

    /// The actions that the store was asked for since the last call, joined by blanks.
    std::string asked();
    /// Lets the next `count` requests of this action fail, or all without a count.
    void fail(const std::string& action, int count = 1'000'000);

    support::store_control m_control{support::environment("QUILLDECK_TEST_HTTPS_URL")};
    vfs_quilldeck::client m_client = sign_in();
    /// New and empty.
    std::shared_ptr<vfs::directory> m_folder;
    HWND m_dialog = nullptr;

private:
    static vfs_quilldeck::client sign_in();

    std::thread m_host;
    INT_PTR m_result = 0;
};

} // namespace dialogs
