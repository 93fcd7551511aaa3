#include "input.h"

#include <cstddef>
#include <stdexcept>
#include <vector>

namespace desktop {

namespace {

void send(std::vector<INPUT> events) {
    if (::SendInput(static_cast<UINT>(events.size()), events.data(), sizeof(INPUT)) !=
        events.size()) {
        throw std::runtime_error("the desktop took no input");
    }
}

INPUT key_event(WORD key, wchar_t unit, DWORD flags) {
    INPUT event{};
    event.type = INPUT_KEYBOARD;
    event.ki.wVk = key;
    event.ki.wScan = static_cast<WORD>(unit);
    event.ki.dwFlags = flags;
    return event;
}

/// Moves the pointer and lets it arrive: Wine asks the X server where the pointer is, and that
/// learns of the new place a little later.
void point_at(POINT screen) {
    constexpr DWORD arrival = 150;
    ::SetCursorPos(screen.x, screen.y);
    ::Sleep(arrival);
}

/// A button's event that carries its place: news of the pointer from the X server, which may be
/// late, do not move it then.
INPUT button_event(POINT screen, DWORD flags) {
    // SendInput counts 65536 steps from one edge of the screen to the other.
    const auto steps = [](LONG pixel, int metric) {
        const LONG size = ::GetSystemMetrics(metric);
        return (pixel * 65536 + size / 2) / size;
    };
    INPUT event{};
    event.type = INPUT_MOUSE;
    event.mi.dx = steps(screen.x, SM_CXSCREEN);
    event.mi.dy = steps(screen.y, SM_CYSCREEN);
    event.mi.dwFlags = flags | MOUSEEVENTF_MOVE | MOUSEEVENTF_ABSOLUTE;
    return event;
}

/// The left button, down at a point for as long as this lives and up where the pointer is then.
class held_button {
public:
    explicit held_button(POINT screen) : at_(screen) {
        point_at(screen);
        send({button_event(screen, MOUSEEVENTF_LEFTDOWN)});
    }

    held_button(const held_button&) = delete;
    held_button& operator=(const held_button&) = delete;

    ~held_button() {
        INPUT event = button_event(at_, MOUSEEVENTF_LEFTUP);
        ::SendInput(1, &event, sizeof(INPUT));
    }

    void move(POINT screen) {
        at_ = screen;
        send({button_event(screen, 0)});
    }

private:
    POINT at_;
};

} // namespace

void click(POINT screen, int count) {
    point_at(screen);
    for (int done = 0; done < count; ++done) {
        send(
            {button_event(screen, MOUSEEVENTF_LEFTDOWN), button_event(screen, MOUSEEVENTF_LEFTUP)});
    }
}

void right_click(POINT screen) {
    point_at(screen);
    send({button_event(screen, MOUSEEVENTF_RIGHTDOWN), button_event(screen, MOUSEEVENTF_RIGHTUP)});
}

void drag(POINT from, POINT to) {
    constexpr int steps = 12;
    constexpr DWORD pause = 40;
    held_button button(from);
    for (int step = 1; step <= steps; ++step) {
        button.move(
            {from.x + (to.x - from.x) * step / steps, from.y + (to.y - from.y) * step / steps});
        ::Sleep(pause);
    }
    point_at(to);
    button.move(to);
}

void press(std::initializer_list<WORD> keys) {
    std::vector<INPUT> events;
    for (const WORD key : keys) {
        events.push_back(key_event(key, 0, 0));
    }
    for (auto key = std::rbegin(keys); key != std::rend(keys); ++key) {
        events.push_back(key_event(*key, 0, KEYEVENTF_KEYUP));
    }
    send(events);
}

void type(const std::wstring& text) {
    std::vector<INPUT> events;
    for (const wchar_t unit : text) {
        events.push_back(key_event(0, unit, KEYEVENTF_UNICODE));
        events.push_back(key_event(0, unit, KEYEVENTF_UNICODE | KEYEVENTF_KEYUP));
    }
    send(events);
}

POINT middle_of(HWND window) {
    RECT place{};
    ::GetWindowRect(window, &place);
    return {(place.left + place.right) / 2, (place.top + place.bottom) / 2};
}

} // namespace desktop
