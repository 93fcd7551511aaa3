/// A window of the platform's file manager, used by mouse and keyboard.
#pragma once

#include "remote_controls.h"

#include <string>
#include <vector>

namespace desktop {

/// Waits throw `std::runtime_error` when nothing happens in time.
class explorer {
public:
    /// Starts the file manager and waits for its window, with My Computer open in the tree.
    explorer();
    /// Closes the window.
    ~explorer();
    explorer(const explorer&) = delete;
    explorer& operator=(const explorer&) = delete;

    HWND window() const noexcept { return window_; }

    /// Opens the folder that stands below My Computer under these names by clicks in the tree.
    void open(const std::vector<std::wstring>& path);

    /// Leaves the window to the user, and returns when it is closed.
    void wait_until_closed() const;

    /// The list of the open folder.
    list_view list() const;

    /// Waits until the list shows `name`, and returns its row.
    int wait_for_row(const std::wstring& name) const;

    /// Selects `name` with the mouse, presses F2, types the new name and Enter.
    void rename(const std::wstring& name, const std::wstring& new_name) const;

private:
    tree_view tree() const;

    HWND window_ = nullptr;
};

} // namespace desktop
