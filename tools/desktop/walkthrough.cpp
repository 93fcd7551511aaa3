/// walkthrough: goes through the drive in the file manager as a user does, by mouse and keyboard.
/// walkthrough --open: opens the drive there, leaves the window to the user and ends with it.
///
/// At moments worth a picture it prints "picture NAME" and waits for a line in return. The exit
/// code is 0 when everything was as it should be.

#include "drive.h"
#include "explorer.h"
#include "input.h"
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

/// A local folder to drop, gone at the end.
class local_folder {
public:
    explicit local_folder(const std::wstring& name)
        : path_(std::filesystem::temp_directory_path() / name) {
        std::filesystem::create_directories(path_);
    }

    local_folder(const local_folder&) = delete;
    local_folder& operator=(const local_folder&) = delete;

    ~local_folder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    void put(const std::wstring& name, std::size_t size) const {
        const std::vector<char> content(size, 'q');
        std::ofstream(path_ / name, std::ios::binary)
            .write(content.data(), static_cast<std::streamsize>(size));
    }

    std::wstring path() const { return path_.native(); }

private:
    const std::filesystem::path path_;
};

void answer(const wchar_t* caption, const std::string& picture, int button) {
    const HWND box =
        wait_for("the question " + picture, [&] { return find_window(L"#32770", caption); });
    take_picture(picture);
    ::PostMessageW(box, WM_COMMAND, static_cast<WPARAM>(button), 0);
    wait_for("the end of the question " + picture, [&] { return !::IsWindow(box); });
}

void drop_twice(explorer& window) {
    const std::wstring name = L"Journey";
    constexpr std::size_t film = 150'000'000;
    const auto folder = stored_folder(documents);
    remove_if_there(*folder, name);
    const local_folder journey(name);
    journey.put(L"A short film.mp4", film);
    DWORD effect = DROPEFFECT_NONE;
    const auto drop = [&] {
        return std::thread([&] {
            const com::apartment apartment;
            effect = drop_on_drive(L"Documents", journey.path());
        });
    };
    // What it throws ends the program, and so fails the walk.
    std::thread dropping = drop();
    wait_for("the progress dialog", [] { return find_window(L"", L"Copying..."); });
    take_picture("dropped");
    dropping.join();
    require(effect == DROPEFFECT_COPY, "a folder was dropped on the drive");
    // The dialog had the keyboard.
    click(middle_of(window.list().window()));
    press({VK_F5});
    window.wait_for_row(name);

    dropping = drop();
    answer(L"Confirm folder merge", "merge", IDYES);
    answer(L"Confirm file replace", "replace", IDCANCEL);
    dropping.join();
    require(effect == DROPEFFECT_NONE, "nothing was replaced when the user did not want it");
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
    drop_twice(window);
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
