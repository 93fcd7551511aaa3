#include "registry_lines.h"

#include "com/apartment.h"
#include "com/registrar.h"
#include "resources/resource_ids.h"
#include "utils/module.h"

#include <boost/algorithm/string/replace.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>

namespace com {

namespace {

using support::registry_lines;
using support::without;

constexpr std::array<UINT, 6> scripts = {IDR_APPLICATION,          IDR_NAMESPACE_FOLDER,
                                         IDR_DRIVE_PROPERTY_SHEET, IDR_LOCAL_CONTEXT_MENU,
                                         IDR_SYNC_PROPERTY_SHEET,  IDR_OVERLAY_ICON};

/// Keys that every Windows has, and that the scripts have to leave alone with what others keep
/// there.
constexpr std::array standing = {
    LR"(Software\Classes\AppID\Neighbour)",
    LR"(Software\Classes\AllFileSystemObjects\ShellEx\ContextMenuHandlers\Neighbour)",
    LR"(Software\Classes\AllFileSystemObjects\ShellEx\PropertySheetHandlers\Neighbour)",
    LR"(Software\Microsoft\Windows\CurrentVersion\Explorer\MyComputer\NameSpace\Neighbour)",
    LR"(Software\Microsoft\Windows\CurrentVersion\Explorer\ShellIconOverlayIdentifiers\Neighbour)",
    LR"(Software\Microsoft\Windows\CurrentVersion\Shell Extensions\Approved\Neighbour)",
};

/// What each script is there for: a line that it alone writes, with MODULE for this program's path.
constexpr std::array written = {
    R"(HKLM\Software\Classes\AppID\Quilldeck.DLL "AppID"="{94606AEB-2398-46B6-9DFC-1072D35058F1}")",
    R"(HKLM\Software\Classes\CLSID\{5FA947B5-650A-4374-8A9A-5EFA4F126834}\DefaultIcon @="MODULE,0")",
    R"(HKLM\Software\Classes\Quilldeck\ShellEx\PropertySheetHandlers\{EAD140F5-1353-4001-915D-26E29BA8C9A8} @="Quilldeck Property Sheet")",
    R"(HKLM\Software\Classes\AllFileSystemObjects\ShellEx\ContextMenuHandlers\Quilldeck_ShellContextMenu @="{B01DA3B5-7AAE-4E91-8D0F-01949CF14A58}")",
    R"(HKLM\Software\Classes\AllFileSystemObjects\ShellEx\PropertySheetHandlers\Quilldeck_Property_Sheet_Sync @="{44CDC918-DCCF-4A7B-9653-6D545B5530A9}")",
    R"(HKLM\Software\Microsoft\Windows\CurrentVersion\Explorer\ShellIconOverlayIdentifiers\Quilldeck_ShellOverlayIcon @="{3268FFAC-39F2-4058-BE09-7396DB121F4A}")",
};

/// Without what Wine's interpreter does not get right, and the classes do themselves: it ends
/// numbers at 2^31 - 1, and leaves single values in keys that stay.
registry_lines without_shortfalls(registry_lines lines) {
    std::erase_if(lines, [](const std::string& line) {
        return line.find("Attributes") != std::string::npos ||
               line.find("Approved \"") != std::string::npos;
    });
    return lines;
}

/// From the last to the first when they are removed: that interpreter also leaves a key in which
/// another script has made one.
void run_all(registration direction) {
    auto order = scripts;
    if (direction == registration::remove) {
        std::ranges::reverse(order);
    }
    for (const UINT script : order) {
        registrar interpreter;
        interpreter.replace(L"APPID", L"{94606AEB-2398-46B6-9DFC-1072D35058F1}");
        interpreter.replace(L"APP_NAME", L"Quilldeck");
        interpreter.replace(L"CLSID", L"{5FA947B5-650A-4374-8A9A-5EFA4F126834}");
        interpreter.replace(L"DRIVECLSID", L"{5FA947B5-650A-4374-8A9A-5EFA4F126834}");
        interpreter.run(script, direction);
    }
}

} // namespace

TEST(registrar, scripts_write_their_entries_and_take_away_no_others) {
    const apartment thread;
    for (const auto* path : standing) {
        HKEY key = nullptr;
        ASSERT_EQ(RegCreateKeyW(HKEY_LOCAL_MACHINE, path, &key), ERROR_SUCCESS);
        RegSetValueW(key, nullptr, REG_SZ, L"kept", 0);
        RegCloseKey(key);
    }
    const registry_lines before = support::read_registry();
    run_all(registration::add);
    const registry_lines registered = support::read_registry();
    const std::string module = std::filesystem::path(utils::own_module_path()).string();
    for (std::string line : written) {
        boost::replace_all(line, "MODULE", module);
        EXPECT_EQ(registered.count(line), 1U) << line;
    }
    EXPECT_EQ(without(before, registered), registry_lines{});

    run_all(registration::remove);
    const registry_lines after = support::read_registry();
    EXPECT_EQ(without_shortfalls(without(after, before)), registry_lines{});
    EXPECT_EQ(without(before, after), registry_lines{});
}

TEST(registrar, a_script_with_an_unknown_value_fails_and_writes_nothing) {
    const apartment thread;
    const registry_lines before = support::read_registry();
    registrar interpreter;
    try {
        interpreter.run(IDR_NAMESPACE_FOLDER, registration::add);
        FAIL();
    } catch (const status_exception& failure) {
        EXPECT_EQ(failure.status(), DISP_E_EXCEPTION);
    }
    EXPECT_EQ(support::read_registry(), before);
    EXPECT_THROW(interpreter.run(1, registration::add), status_exception);
}

} // namespace com
