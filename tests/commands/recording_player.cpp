#include "recording_player.h"

#include "eventually.h"
#include "utils/module.h"

#include <shellapi.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>

namespace commands {

namespace {

constexpr auto option = L"--play";
constexpr auto record_variable = L"QUILLDECK_TEST_RECORD";
constexpr auto classes = L"Software\\Classes\\";

std::wstring application_key(const std::wstring& executable) {
    return L"Applications\\" + std::filesystem::path(executable).filename().wstring();
}

} // namespace

recording_player::recording_player()
    : executable_(utils::own_module_path()),
      record_(std::filesystem::temp_directory_path() /
              (L"played" + std::to_wstring(GetCurrentProcessId()))) {
    SetEnvironmentVariableW(record_variable, record_.c_str());
    const std::wstring command = L"\"" + executable_ + L"\" " + option + L" \"%1\"";
    for (const std::wstring& name :
         {std::wstring(L"qdplayer"), std::wstring(L"qdlist"), application_key(executable_)}) {
        set(name + L"\\shell\\open\\command", nullptr, command);
    }
    for (const wchar_t* kind : {L".qdmusic", L".qdother", L".qdtext"}) {
        set(kind, nullptr, L"qdplayer");
    }
    set(L".qdmusic", L"PerceivedType", L"audio");
    set(L".qdother", L"PerceivedType", L"audio");
    set(L".m3u", nullptr, L"qdlist");
}

recording_player::~recording_player() {
    HKEY root = nullptr;
    RegOpenKeyExW(HKEY_LOCAL_MACHINE, classes, 0, KEY_ALL_ACCESS, &root);
    wchar_t name[256];
    for (DWORD index = 0; RegEnumKeyW(root, index, name, 256) == ERROR_SUCCESS;) {
        const std::wstring key = name;
        const bool ours = key.starts_with(L"qd") || key.starts_with(L".qd") || key == L".m3u";
        index += ours ? static_cast<DWORD>(RegDeleteTreeW(root, name) != ERROR_SUCCESS) : 1;
    }
    RegDeleteTreeW(root, application_key(executable_).c_str());
    RegCloseKey(root);
    std::filesystem::remove(record_);
}

void recording_player::set(const std::wstring& key, const wchar_t* value, const std::wstring& text,
                           DWORD type) {
    RegSetKeyValueW(HKEY_LOCAL_MACHINE, (classes + key).c_str(), value, type, text.c_str(),
                    static_cast<DWORD>(text.size() * sizeof(wchar_t)));
}

std::wstring recording_player::next_start() {
    std::string bytes;
    const auto read = [&] {
        // Not to be opened as long as the player still renames it.
        std::ifstream record(record_, std::ios::binary);
        bytes.assign(std::istreambuf_iterator(record), {});
        return record.is_open();
    };
    if (!support::eventually(read)) {
        throw std::runtime_error("the player was not started");
    }
    std::filesystem::remove(record_);
    std::wstring arguments(bytes.size() / sizeof(wchar_t), L'\0');
    std::memcpy(arguments.data(), bytes.data(), arguments.size() * sizeof(wchar_t));
    return arguments;
}

void record_if_player() {
    int count = 0;
    const std::unique_ptr<wchar_t*, decltype(&LocalFree)> arguments(
        CommandLineToArgvW(GetCommandLineW(), &count), LocalFree);
    wchar_t path[MAX_PATH];
    if (count < 2 || std::wstring(arguments.get()[1]) == L"--second-process" ||
        !std::wstring_view(arguments.get()[1]).find(L"--gtest") ||
        !GetEnvironmentVariableW(record_variable, path, MAX_PATH)) {
        return;
    }
    std::wstring text;
    for (int index = 1; index < count; ++index) {
        text += (index == 1 ? L"" : L"|") + std::wstring(arguments.get()[index]);
    }
    write_record(path, text);
    ExitProcess(0);
}

void write_record(const std::filesystem::path& record, const std::wstring& text) {
    const std::filesystem::path half =
        record.wstring() + L"." + std::to_wstring(GetCurrentProcessId());
    std::ofstream(half, std::ios::binary)
        .write(reinterpret_cast<const char*>(text.data()),
               static_cast<std::streamsize>(text.size() * sizeof(wchar_t)));
    // The one before may not have been looked at yet.
    support::eventually([&] { return MoveFileW(half.c_str(), record.c_str()) != FALSE; });
}

} // namespace commands
