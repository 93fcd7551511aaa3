#include "companions/drive.h"

#include "companions/last_error.h"
#include "utils/unique_handle.h"

#include <shellapi.h>

#include <array>
#include <string>

namespace companions {

namespace {

constexpr auto drive_class_key = L"CLSID\\{5FA947B5-650A-4374-8A9A-5EFA4F126834}";
/// The drive below My Computer.
constexpr auto drive_parsing_name = L"::{20D04FE0-3AEA-1069-A2D8-08002B30309D}\\"
                                    L"::{5FA947B5-650A-4374-8A9A-5EFA4F126834}";

/// With its folder: a bare name would be looked for in the current folder first.
std::wstring file_manager() {
    std::array<wchar_t, MAX_PATH> folder{};
    if (GetWindowsDirectoryW(folder.data(), static_cast<UINT>(folder.size())) == 0) {
        raise_last_error("::GetWindowsDirectoryW(folder, 260)");
    }
    return std::wstring(folder.data()) + L"\\explorer.exe";
}

} // namespace

bool drive_is_registered() {
    utils::unique_registry_key key;
    return RegOpenKeyExW(HKEY_CLASSES_ROOT, drive_class_key, 0, KEY_READ, key.put()) ==
           ERROR_SUCCESS;
}

void open_drive(HWND owner) {
    const auto result = reinterpret_cast<INT_PTR>(ShellExecuteW(
        owner, L"open", file_manager().c_str(), drive_parsing_name, nullptr, SW_SHOWNORMAL));
    if (result <= 32) {
        raise_last_error("::ShellExecuteW(owner, \"open\", explorer.exe, drive, ...)");
    }
}

} // namespace companions
