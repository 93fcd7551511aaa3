/// walkthrough: goes through the drive in the file manager as a user does, by mouse and keyboard.
/// walkthrough --open: opens the drive there, leaves the window to the user and ends with it.
/// walkthrough LINK: shows the link, as the player that the drive starts.
///
/// At moments worth a picture it prints "picture NAME" and waits for a line in return. The exit
/// code is 0 when everything was as it should be.

#include "drag_walk.h"
#include "drive.h"
#include "explorer.h"
#include "input.h"
#include "item_menu.h"
#include "menu_walk.h"
#include "properties_walk.h"
#include "wait.h"
#include "walk.h"
#include "windows_of_others.h"

#include "com/apartment.h"
#include "vfs/directory.h"
#include "vfs/exceptions.h"
#include "vfs_quilldeck/session/session.h"

#include <windows.h>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace desktop;

const std::wstring drive = L"Quilldeck";
const std::wstring documents = L"Documents";

HWND login_dialog() {
    return find_window(L"#32770", L"Quilldeck login");
}

/// Opens the panel for a new account and closes it, and leaves the focus in the first field.
void look_at_new_account(HWND dialog) {
    constexpr int user_name = 301;
    constexpr int link = 483;
    click(middle_of(::GetDlgItem(dialog, link)));
    const HWND panel = ::FindWindowExW(dialog, nullptr, L"#32770", nullptr);
    wait_for("the panel for a new account", [&] { return ::IsWindowVisible(panel); });
    take_picture("new_account");
    click(middle_of(::GetDlgItem(panel, IDCANCEL)));
    wait_for("the end of that panel", [&] { return !::IsWindowVisible(panel); });
    click(middle_of(::GetDlgItem(dialog, user_name)));
}

void sign_in(const std::wstring& user, const std::wstring& password) {
    const HWND dialog = wait_for("the login dialog", &login_dialog);
    take_picture("login");
    look_at_new_account(dialog);
    // The second field is a Tab away, and Enter means Log In.
    type(user);
    press({VK_TAB});
    type(password);
    press({VK_RETURN});
    wait_for("the end of the login dialog", [&] { return !::IsWindow(dialog); });
}

std::vector<char> local_file(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void rename_and_back(const explorer& window) {
    const std::wstring before = L"C# + C++ notes.md";
    const std::wstring after = L"Notes of the journey.md";
    window.rename(before, after);
    window.wait_for_row(after);
    take_picture("renamed");
    const auto folder = stored_folder(documents);
    require(folder->find_item_by_name(after, true) != nullptr, "a file was renamed with F2");
    window.rename(after, before);
    window.wait_for_row(before);
}

void read_and_write(explorer& window) {
    const auto original = local_file("demo/files/documents/welcome.txt");
    require(!original.empty() &&
                read_from_drive(L"Documents\\Welcome to Quilldeck.txt") == original,
            "a file was read out through the shell, equal byte for byte");

    const std::wstring name = L"Written through the drive.txt";
    const std::string text = "This file was written through the drive.\r\n";
    const auto folder = stored_folder(documents);
    remove_if_there(*folder, name);
    write_to_drive(documents, name, {text.begin(), text.end()});
    const auto kept = read_from_drive(L"Documents\\" + name);
    require(std::string(kept.begin(), kept.end()) == text, "a new file was written through it");
    press({VK_F5});
    window.wait_for_row(name);
    take_picture("written");
    remove_if_there(*folder, name);
}

void ask_to_delete(explorer& window) {
    const std::wstring name = L"Plan.pdf";
    window.open({drive, documents});
    window.wait_for_row(name);
    choose_from_item_menu(window, documents, name, L"Delete");
    const HWND question =
        wait_for("a question", [] { return find_window(L"#32770", L"Delete File"); });
    take_picture("delete");
    press({VK_ESCAPE});
    ::PostMessageW(question, WM_COMMAND, IDNO, 0);
    wait_for("the end of a question", [&] { return !::IsWindow(question); });
    require(stored_folder(documents)->find_item_by_name(name, true) != nullptr,
            "nothing was deleted when the user did not want it");
}

void walk() {
    const com::apartment apartment;
    explorer window;
    window.open({drive});
    if (!vfs_quilldeck::is_logged_in(::GetModuleHandleW(nullptr))) {
        sign_in(L"demo", L"demo");
    }
    window.wait_for_row(L"Documents");
    take_picture("drive");
    window.open({drive, L"Pictures"});
    window.wait_for_row(L"Dusk.jpg");
    take_picture("folder");
    window.open({drive, L"Documents", L"Awkward names"});
    window.wait_for_row(L"1 < 2 > 0?.txt");
    take_picture("names");
    window.open({drive, L"Documents"});
    rename_and_back(window);
    read_and_write(window);
    drag_out_and_in(window);
    use_item_menu(window);
    ask_to_delete(window);
    use_properties(window);
}

} // namespace

int wmain(int count, wchar_t** values) {
    try {
        if (count == 1) {
            walk();
        } else if (count == 2 && std::wstring(values[1]) == L"--open") {
            explorer window;
            window.open({drive});
            window.wait_until_closed();
        } else if (count == 2 && std::wstring(values[1]).starts_with(L"https://")) {
            show_played(values[1]);
        } else {
            say("usage: walkthrough [--open]");
            return 2;
        }
        return 0;
    } catch (const vfs::exception& failure) {
        std::fwprintf(stderr, L"walkthrough failed: %ls\n", failure.get_description().c_str());
    } catch (const com::status_exception& failure) {
        std::fprintf(stderr, "walkthrough failed: status %lx\n",
                     static_cast<unsigned long>(failure.status()));
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "walkthrough failed: %s\n", failure.what());
    }
    return 1;
}
