/// List and tree views of another process. Their messages carry addresses, which must lie in the
/// memory of the process that owns the control.
#pragma once

#include "utils/unique_handle.h"

#include <windows.h>

#include <commctrl.h>

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace desktop {

/// A control that was looked at no longer exists, as when a window shows another folder.
class window_gone : public std::runtime_error {
public:
    window_gone() : std::runtime_error("a window is gone") {}
};

/// A block of memory in the process that owns a window. Failures throw `window_gone`.
class remote_memory {
public:
    remote_memory(HWND window, std::size_t size);
    ~remote_memory();
    remote_memory(const remote_memory&) = delete;
    remote_memory& operator=(const remote_memory&) = delete;

    void write(const void* data, std::size_t size, std::size_t offset = 0) const;
    void read(void* data, std::size_t size, std::size_t offset = 0) const;

    /// The address in the other process.
    std::byte* address() const noexcept { return address_; }

private:
    utils::unique_handle process_;
    std::byte* address_ = nullptr;
};

/// A list view in report form.
class list_view {
public:
    explicit list_view(HWND window) noexcept : window_(window) {}

    HWND window() const noexcept { return window_; }

    int count() const;
    std::wstring cell(int row, int column) const;
    /// The row whose first cell is `name`.
    std::optional<int> find(const std::wstring& name) const;
    /// The titles of all columns.
    std::vector<std::wstring> titles() const;
    /// A point of the screen on the row's name.
    POINT place(int row) const;
    /// The first selected row, or -1.
    int selected() const;
    /// The edit control of a name that is being changed, or null.
    HWND edit() const;

private:
    HWND window_;
};

/// A tree view.
class tree_view {
public:
    explicit tree_view(HWND window) noexcept : window_(window) {}

    HWND window() const noexcept { return window_; }

    HTREEITEM root() const;
    /// Null when there is none.
    HTREEITEM selected() const;
    /// The child of `parent` (null: the top level) that shows `name`; null when there is none.
    HTREEITEM child(HTREEITEM parent, const std::wstring& name) const;
    std::wstring text(HTREEITEM item) const;
    /// A point of the screen on the item's text, scrolled into sight.
    POINT place(HTREEITEM item) const;
    /// A point of the screen on the button that shows and hides the item's children.
    POINT button(HTREEITEM item) const;
    bool expanded(HTREEITEM item) const;

private:
    RECT label(HTREEITEM item) const;

    HWND window_;
};

} // namespace desktop
