/// Input as a user's hands make it, through `SendInput`: it reaches whatever stands in front.
#pragma once

#include <windows.h>

#include <initializer_list>
#include <string>

namespace desktop {

/// Puts the pointer at a point of the screen and clicks there; twice quickly with `count` 2.
void click(POINT screen, int count = 1);

/// The same with the right button.
void right_click(POINT screen);

/// Takes what lies at one point with the left button, and drops it at another one.
void drag(POINT from, POINT to);

/// Presses the keys in order and lets them go in the opposite one: `press({VK_MENU, VK_F4})`.
void press(std::initializer_list<WORD> keys);

/// Types a text of any characters.
void type(const std::wstring& text);

/// The middle of a window on the screen.
POINT middle_of(HWND window);

} // namespace desktop
