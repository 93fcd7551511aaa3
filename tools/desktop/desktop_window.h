/// A desktop with files on it, where the platform's own shows none: they are dragged away from it
/// by mouse, and it takes what other programs drop.
#pragma once

#include <windows.h>

#include <atomic>
#include <filesystem>
#include <string>
#include <thread>

namespace desktop {

/// Fills the lower end of the screen and shows what is in a local folder, on a thread of its own.
/// Any thread may ask it; waits throw `std::runtime_error` when nothing happens in time.
class desktop_window {
public:
    explicit desktop_window(std::filesystem::path folder);
    desktop_window(const desktop_window&) = delete;
    desktop_window& operator=(const desktop_window&) = delete;
    ~desktop_window();

    /// A point of the screen on an item, once that is shown.
    POINT place(const std::wstring& name) const;

    /// A point where nothing lies.
    POINT free_place() const;

    /// Waits for the end of a drag that began here, and answers what became of it: an effect.
    DWORD wait_for_drag();

private:
    static LRESULT CALLBACK receive(HWND window, UINT message, WPARAM parameter,
                                    LPARAM data) noexcept;
    void run();
    void fill() const;
    void drag(int row);

    const std::filesystem::path folder_;
    std::atomic<HWND> window_ = nullptr;
    std::atomic<HWND> list_ = nullptr;
    std::atomic<bool> dragged_ = false;
    std::atomic<DWORD> effect_ = 0;
    std::jthread thread_;
};

} // namespace desktop
