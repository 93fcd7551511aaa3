#include "commands/playlist.h"

#include "commands/association_list.h"
#include "commands/class_key.h"
#include "commands/launch.h"
#include "shell_items/local_name.h"
#include "utils/filesystem.h"
#include "vfs/exceptions.h"

#include <shellapi.h>

#include <algorithm>
#include <filesystem>
#include <utility>

namespace commands {

namespace {

constexpr auto extension = L".m3u";
constexpr auto any_list = L"QuilldeckPlayAll";

std::wstring on_one_line(std::wstring text) {
    std::ranges::replace_if(text, [](wchar_t c) { return c < L' '; }, L' ');
    return text;
}

std::string in_system_code_page(const std::wstring& text) {
    const auto length = static_cast<int>(text.size());
    const int size =
        WideCharToMultiByte(CP_ACP, 0, text.c_str(), length, nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_ACP, 0, text.c_str(), length, bytes.data(), size, nullptr, nullptr);
    return bytes;
}

utils::unique_file create(const std::wstring& path) {
    return utils::unique_file(CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_WRITE, nullptr,
                                          CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
}

/// A file name for a list of what lies in the folder `base`, whose name comes from the store.
std::wstring name_of_list(const std::wstring& base) {
    try {
        return base.empty() ? any_list : shell::local_name(base);
    } catch (const vfs::exception&) {
        return any_list;
    }
}

void play_one(const playlist_entry& entry, HKEY key, bool ask) {
    if (ask) {
        ask_for_program(entry.link);
        return;
    }
    std::wstring program;
    if (key) {
        program = executable_of(key);
    } else if (AssociationList programs; programs.load(entry.title, false)) {
        program = programs.default_program()->executable;
    }
    if (!program.empty()) {
        start_program(program, entry.link);
    }
}

void play_list(const std::wstring& path, const std::wstring& first_title) {
    utils::unique_registry_key player;
    const std::wstring program = AssociationList::common_program(first_title, extension);
    if (!program.empty()) {
        player = find_class_key(ASSOCKEY_APP, program);
    }
    SHELLEXECUTEINFOW info{};
    info.cbSize = sizeof(info);
    info.fMask = SEE_MASK_FLAG_NO_UI | SEE_MASK_WAITFORINPUTIDLE;
    info.lpFile = path.c_str();
    info.nShow = SW_SHOWNORMAL;
    if (player) {
        info.fMask |= SEE_MASK_CLASSKEY;
        info.hkeyClass = player.get();
    }
    ShellExecuteExW(&info);
}

} // namespace

std::wstring playlist_text(const std::vector<playlist_entry>& entries) {
    std::wstring text = L"#EXTM3U\n";
    for (const playlist_entry& entry : entries) {
        text += L"#EXTINF:0," + on_one_line(entry.title) + L"\n" + entry.link + L"\n\n";
    }
    return text;
}

std::optional<std::wstring> write_playlist(const std::wstring& folder, const std::wstring& base,
                                           const std::vector<playlist_entry>& entries) {
    std::error_code ignored;
    std::filesystem::create_directories(folder, ignored);
    const std::wstring stem = folder + L"\\" + base;
    std::wstring path = stem + extension;
    utils::unique_file file = create(path);
    // Another process may make a list of that name at the same time: only a new file is ours.
    for (int number = 1; !file && GetLastError() == ERROR_FILE_EXISTS; ++number) {
        path = stem;
        path.append(L"(").append(std::to_wstring(number)).append(L")").append(extension);
        file = create(path);
    }
    if (!file) {
        return std::nullopt;
    }
    const std::string bytes = in_system_code_page(playlist_text(entries));
    DWORD written = 0;
    if (!WriteFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) ||
        written != bytes.size()) {
        file.reset();
        DeleteFileW(path.c_str());
        return std::nullopt;
    }
    return path;
}

void play(std::vector<playlist_entry> entries, HKEY key, const std::wstring& base, bool ask) {
    std::erase_if(entries,
                  [](const playlist_entry& entry) { return !is_playable_link(entry.link); });
    if (entries.empty()) {
        return;
    }
    if (entries.size() == 1) {
        play_one(entries.front(), key, ask);
        return;
    }
    const std::wstring folder =
        utils::filesystem::get_special_directory(0) + L"\\Quilldeck\\Intermediate files";
    auto path = write_playlist(folder, name_of_list(base), entries);
    if (!path) {
        // A name of the store may be longer than any local one.
        path = write_playlist(folder, any_list, entries);
    }
    if (path) {
        play_list(*path, entries.front().title);
    }
}

} // namespace commands
