#include "registry_lines.h"

#include "utils/unique_handle.h"

#include <windows.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace support {

namespace {

void allow_saving() {
    utils::unique_handle token;
    OpenProcessToken(GetCurrentProcess(), TOKEN_ADJUST_PRIVILEGES, token.put());
    TOKEN_PRIVILEGES privilege{};
    privilege.PrivilegeCount = 1;
    privilege.Privileges[0].Attributes = SE_PRIVILEGE_ENABLED;
    LookupPrivilegeValueW(nullptr, L"SeBackupPrivilege", &privilege.Privileges[0].Luid);
    AdjustTokenPrivileges(token.get(), FALSE, &privilege, 0, nullptr, nullptr);
}

/// Backslashes and quotes stand behind a backslash in the file.
std::string plain(const std::string& text) {
    std::string result;
    for (auto at = text.begin(); at != text.end(); ++at) {
        if (*at == '\\' && at + 1 != text.end() && (at[1] == '\\' || at[1] == '"')) {
            ++at;
        }
        result.push_back(*at);
    }
    return result;
}

/// The file names no keys that have nothing but keys in them.
void add_key(registry_lines& lines, const std::string& key) {
    for (auto end = key.size(); end != std::string::npos; end = key.rfind('\\', end - 1)) {
        if (!lines.insert(key.substr(0, end)).second) {
            return;
        }
    }
}

/// Reads what Wine saves a hive as: "[key] time", then lines with "#" for what is not content, and
/// values, of which long ones go on in lines that begin with a blank.
void add_lines(registry_lines& lines, std::istream& file, const std::string& root) {
    std::string key;
    std::string value;
    const auto add_value = [&] {
        if (!value.empty()) {
            lines.insert(key + ' ' + plain(value));
            value.clear();
        }
    };
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with(' ')) {
            value += line;
            continue;
        }
        add_value();
        if (line.starts_with('[')) {
            key = root + '\\' + plain(line.substr(1, line.rfind(']') - 1));
            add_key(lines, key);
        } else if (line.starts_with('"') || line.starts_with('@')) {
            value = line;
        }
    }
    add_value();
}

void add_hive(registry_lines& lines, HKEY hive, const std::string& name) {
    utils::unique_registry_key key;
    RegOpenKeyExW(hive, L"Software", 0, KEY_READ, key.put());
    const auto path = std::filesystem::temp_directory_path() / "saved_hive";
    std::filesystem::remove(path);
    if (RegSaveKeyW(key.get(), path.c_str(), nullptr) != ERROR_SUCCESS) {
        throw std::runtime_error(name + " cannot be read");
    }
    std::ifstream file(path);
    add_lines(lines, file, name + "\\Software");
}

} // namespace

registry_lines read_registry() {
    allow_saving();
    registry_lines lines;
    add_hive(lines, HKEY_LOCAL_MACHINE, "HKLM");
    add_hive(lines, HKEY_CURRENT_USER, "HKCU");
    return lines;
}

registry_lines without(const registry_lines& left, const registry_lines& right) {
    registry_lines result;
    std::ranges::set_difference(left, right, std::inserter(result, result.end()));
    return result;
}

} // namespace support
