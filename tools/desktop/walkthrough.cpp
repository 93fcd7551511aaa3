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
#include "menu_walk.h"
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

void sign_in(const std::wstring& user, const std::wstring& password) {
    const HWND dialog = wait_for("the login dialog", &login_dialog);
    take_picture("login");
    // The first field has the focus, the second is a Tab away, and Enter means Log In.
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
