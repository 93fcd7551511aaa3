#pragma once

#include "dialogs/properties/item_values.h"
#include "ui/window_tasks.h"

#include <windows.h>

#include <exception>
#include <functional>
#include <memory>

namespace dialogs {

/// What the threads of a page share with it. They hold it, not the page: a request that waits for
/// an answer may outlive the window.
struct loader_link {
    loader_link(HWND page, UINT message) noexcept : to_page(page, message) {}

    stop_flag stop_all = false; ///< the page has gone
    ui::window_tasks to_page;
    std::atomic<int> running = 0;
};

/// The threads that fetch the values of a page. An object belongs to the page's thread.
class page_loaders {
public:
    using failure_handler = std::function<void(UINT caption, std::exception_ptr failure)>;

    /// `page` answers `message` by `run_tasks`. `failed` is called there for what a thread threw.
    page_loaders(HWND page, UINT message, failure_handler failed);
    page_loaders(const page_loaders&) = delete;
    page_loaders& operator=(const page_loaders&) = delete;
    /// `stop`.
    ~page_loaders();

    /// Starts a thread that runs `load`, which owns all that it touches, and may hand the page what
    /// to show by `to_page`. What it throws is shown under string `caption`. Throws when there is
    /// no thread to be had.
    void start(UINT caption, std::function<void(loader_link&)> load);

    void run_tasks() { m_link->to_page.run(); }

    /// Ends the threads: what they hand over is refused from here on. Those that are not in the
    /// midst of a request are waited for; the others go when that ends, and no one hears of it.
    void stop() noexcept;

private:
    const std::shared_ptr<loader_link> m_link;
    const failure_handler m_failed;
};

} // namespace dialogs
