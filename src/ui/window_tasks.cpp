#include "ui/window_tasks.h"

#include <mutex>
#include <utility>

namespace ui {

bool window_tasks::post(std::function<void()> task) {
    {
        const std::lock_guard guard(lock_);
        if (closed_) {
            return false;
        }
        tasks_.push_back(std::move(task));
    }
    // Where the queue of messages is full, the next one brings this task along.
    PostMessageW(window_, message_, 0, 0);
    return true;
}

void window_tasks::run() {
    while (const std::function<void()> task = take()) {
        task();
    }
}

std::function<void()> window_tasks::take() {
    const std::lock_guard guard(lock_);
    if (tasks_.empty()) {
        return nullptr;
    }
    std::function<void()> first = std::move(tasks_.front());
    tasks_.pop_front();
    return first;
}

void window_tasks::close() noexcept {
    std::deque<std::function<void()>> dropped;
    const std::lock_guard guard(lock_);
    closed_ = true;
    std::swap(tasks_, dropped);
}

} // namespace ui
