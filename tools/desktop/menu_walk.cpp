#include "menu_walk.h"

#include "input.h"
#include "item_menu.h"
#include "wait.h"
#include "walk.h"
#include "windows_of_others.h"

#include "com/guard.h"
#include "utils/module.h"

#include <windows.h>

namespace desktop {

namespace {

/// The identifier of a message box's text.
constexpr int box_text = 0xFFFF;
const wchar_t* const player_title = L"A player on this machine";
const wchar_t* const player_key = L"Software\\Classes\\audiofile\\shell\\open\\command";

void close(HWND window, const char* what) {
    ::PostMessageW(window, WM_CLOSE, 0, 0);
    wait_for(what, [&] { return !::IsWindow(window); });
}

void open_document(explorer& window) {
    const std::wstring folder = L"Documents";
    const std::wstring name = L"Welcome to Quilldeck.txt";
    window.open({L"Quilldeck", folder});
    window.wait_for_row(name);
    open_item_menu(window, name);
    take_picture("menu");
    press({VK_ESCAPE});
    choose_from_item_menu(window, folder, name, L"Open");
    const HWND editor =
        wait_for("an editor", [] { return find_window(L"Notepad", L"Welcome to Quilldeck"); });
    take_picture("opened");
    require(text_of(find_below(editor, L"Edit")).starts_with(L"Welcome to Quilldeck"),
            "a document was opened in a local program");
    close(editor, "the end of the editor");
}

void play_music(explorer& window) {
    const std::wstring command = L"\"" + utils::own_module_path() + L"\" \"%1\"";
    com::check(HRESULT_FROM_WIN32(
        ::RegSetKeyValueW(HKEY_LOCAL_MACHINE, player_key, nullptr, REG_SZ, command.c_str(),
                          static_cast<DWORD>((command.size() + 1) * sizeof(wchar_t)))));
    const std::wstring folder = L"Evening & other tunes";
    const std::wstring name = L"Walk #1.mp3";
    window.open({L"Quilldeck", L"Music", folder});
    window.wait_for_row(name);
    choose_from_item_menu(window, L"Music\\" + folder, name, L"Open");
    const HWND player = wait_for("a player", [] { return find_window(L"#32770", player_title); });
    take_picture("playing");
    require(text_of(::GetDlgItem(player, box_text)).starts_with(L"https://"),
            "music was given to a player as a link");
    close(player, "the end of the player");
}

} // namespace

void use_item_menu(explorer& window) {
    open_document(window);
    play_music(window);
}

void show_played(const std::wstring& link) {
    // A window of its own would lie over the box.
    ::FreeConsole();
    ::MessageBoxW(nullptr, link.c_str(), player_title, MB_OK);
}

} // namespace desktop
