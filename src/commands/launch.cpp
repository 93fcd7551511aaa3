#include "commands/launch.h"

#include <shellapi.h>

#include <algorithm>
#include <cstdint>

namespace commands {

namespace {

/// ShellExecuteW gives more than 32 when it worked.
bool execute(HWND owner, const wchar_t* verb, const std::wstring& file,
             const std::wstring& parameters) {
    const HINSTANCE result =
        ShellExecuteW(owner, verb, file.c_str(), parameters.c_str(), nullptr, SW_SHOWNORMAL);
    return reinterpret_cast<std::intptr_t>(result) > 32;
}

bool begins_with(const std::wstring& text, const std::wstring& start) {
    return text.size() > start.size() &&
           CompareStringOrdinal(text.c_str(), static_cast<int>(start.size()), start.c_str(), -1,
                                TRUE) == CSTR_EQUAL;
}

} // namespace

std::wstring quote_argument(const std::wstring& text) {
    std::wstring quoted = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t c : text) {
        if (c == L'"') {
            // Those before a quote count double, and one more makes the quote a character.
            quoted.append(backslashes + 1, L'\\');
        }
        backslashes = c == L'\\' ? backslashes + 1 : 0;
        quoted += c;
    }
    return quoted.append(backslashes, L'\\') + L'"';
}

bool is_playable_link(const std::wstring& link) {
    return (begins_with(link, L"https://") || begins_with(link, L"http://")) &&
           std::ranges::none_of(link,
                                [](wchar_t c) { return c <= L' ' || c == L'"' || c == 0x7F; });
}

bool start_program(const std::wstring& program, const std::wstring& argument) {
    return execute(nullptr, nullptr, program, quote_argument(argument));
}

bool ask_for_program(const std::wstring& target) {
    // The rest of that command line is the target, as it stands.
    return execute(GetDesktopWindow(), L"open", L"RUNDLL32.EXE",
                   L"shell32.dll,OpenAs_RunDLL " + target);
}

} // namespace commands
