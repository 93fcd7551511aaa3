#include "dialogs/properties/page_loaders.h"

#include "utils/thread.h"

namespace dialogs {

namespace {

/// How long a page waits for threads that have only to see that they are to end.
constexpr ULONGLONG patience_milliseconds = 200;

/// Lets other threads' messages to this one through, for a moment.
void wait_a_moment() noexcept {
    MSG message;
    MsgWaitForMultipleObjects(0, nullptr, FALSE, 1, QS_SENDMESSAGE);
    PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE | PM_QS_SENDMESSAGE);
}

/// Counts a thread until it is over, whatever becomes of it.
class counted_thread {
public:
    explicit counted_thread(std::atomic<int>& running) noexcept : m_running(running) {}

    counted_thread(const counted_thread&) = delete;
    counted_thread& operator=(const counted_thread&) = delete;

    ~counted_thread() { --m_running; }

private:
    std::atomic<int>& m_running;
};

} // namespace

page_loaders::page_loaders(HWND page, UINT message, failure_handler failed)
    : m_link(std::make_shared<loader_link>(page, message)), m_failed(std::move(failed)) {}

page_loaders::~page_loaders() {
    stop();
}

void page_loaders::start(UINT caption, std::function<void(loader_link&)> load) {
    // Called on the page's thread alone, which outlives the handler: tasks are dropped before.
    const failure_handler& failed = m_failed;
    ++m_link->running;
    try {
        utils::start_pool_work([link = m_link, load = std::move(load), caption, &failed]() mutable {
            const counted_thread counted(link->running);
            // Its own objects go while it counts as running.
            const std::function<void(loader_link&)> body = std::move(load);
            try {
                body(*link);
            } catch (...) {
                link->to_page.post([caption, &failed, failure = std::current_exception()] {
                    failed(caption, failure);
                });
            }
        });
    } catch (...) {
        --m_link->running;
        throw;
    }
}

void page_loaders::stop() noexcept {
    m_link->stop_all = true;
    m_link->to_page.close();
    const ULONGLONG end = GetTickCount64() + patience_milliseconds;
    while (m_link->running > 0 && GetTickCount64() < end) {
        wait_a_moment();
    }
}

} // namespace dialogs
