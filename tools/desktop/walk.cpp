#include "walk.h"

#include "vfs/exceptions.h"
#include "vfs_quilldeck/session/session.h"

#include <windows.h>

#include <iostream>
#include <stdexcept>

namespace desktop {

void say(const std::string& line) {
    std::cout << line << '\n' << std::flush;
}

void take_picture(const std::string& name) {
    // What was clicked is drawn by another process, which does not say when it is done.
    constexpr DWORD drawing = 700;
    ::Sleep(drawing);
    say("picture " + name);
    std::string answer;
    std::getline(std::cin, answer);
}

void require(bool fulfilled, const std::string& what) {
    if (!fulfilled) {
        throw std::runtime_error(what);
    }
    say("walkthrough: " + what);
}

std::shared_ptr<vfs::directory> stored_folder(const std::wstring& name) {
    const vfs::client_ptr client = vfs_quilldeck::get_client(::GetModuleHandleW(nullptr));
    return std::dynamic_pointer_cast<vfs::directory>(
        name.empty() ? client->get_root() : client->get_directory(name, false));
}

void remove_if_there(vfs::directory& folder, const std::wstring& name) {
    try {
        folder.delete_item(folder.find_item_by_name(name, true), false);
    } catch (const vfs::item_not_found_exception&) {
        // Nothing is left of an earlier run.
        return;
    }
}

} // namespace desktop
