#include "registry_lines.h"

#include "com/apartment.h"
#include "com/registrar.h"
#include "resources/resource_ids.h"
#include "utils/module.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <initializer_list>

namespace com {

namespace {

using support::registry_lines;
using support::without;

constexpr std::array<UINT, 6> scripts = {IDR_APPLICATION,          IDR_NAMESPACE_FOLDER,
                                         IDR_DRIVE_PROPERTY_SHEET, IDR_LOCAL_CONTEXT_MENU,
                                         IDR_SYNC_PROPERTY_SHEET,  IDR_OVERLAY_ICON};

const std::string classes = R"(HKLM\Software\Classes\)";
const std::string windows = R"(HKLM\Software\Microsoft\Windows\CurrentVersion\)";

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

const std::string drive = "{5FA947B5-650A-4374-8A9A-5EFA4F126834}";
const std::string sheet = "{EAD140F5-1353-4001-915D-26E29BA8C9A8}";
const std::string menu = "{B01DA3B5-7AAE-4E91-8D0F-01949CF14A58}";
const std::string sync = "{44CDC918-DCCF-4A7B-9653-6D545B5530A9}";
const std::string overlay = "{3268FFAC-39F2-4058-BE09-7396DB121F4A}";
const std::string application = "{94606AEB-2398-46B6-9DFC-1072D35058F1}";

std::string own_path() {
    return std::filesystem::path(utils::own_module_path()).string();
}

/// Collects lines as they are expected.
class expected {
public:
    /// A key, with its parents that are new, a default value where there is one, and other values.
    void key(const std::string& path, const std::string& text,
             std::initializer_list<const char*> values = {}) {
        key(path, values);
        lines.insert(path + " @=\"" + text + '"');
    }

    void key(const std::string& path, std::initializer_list<const char*> values = {}) {
        lines.insert(path);
        for (const auto* value : values) {
            lines.insert(path + ' ' + value);
        }
    }

    /// The key of a class with its server.
    void server(const std::string& id, const std::string& name) {
        key(classes + R"(CLSID\)" + id, name);
        key(classes + R"(CLSID\)" + id + R"(\InprocServer32)", own_path(),
            {R"("ThreadingModel"="Apartment")"});
    }

    registry_lines lines;
};

registry_lines expected_lines() {
    expected all;
    all.key(classes + R"(AppID\)" + application, "Quilldeck");
    all.key(classes + R"(AppID\Quilldeck.DLL)",
            {R"("AppID"="{94606AEB-2398-46B6-9DFC-1072D35058F1}")"});

    const std::string drive_key = classes + R"(CLSID\)" + drive;
    all.server(drive, "Quilldeck");
    all.key(drive_key, {R"("InfoTip"="Quilldeck")"});
    all.key(drive_key + R"(\DefaultIcon)", own_path() + ",0");
    all.key(drive_key + R"(\ProgID)", "Quilldeck");
    all.key(drive_key + R"(\Implemented Categories)");
    all.key(drive_key + R"(\Implemented Categories\{00021490-0000-0000-C000-000000000046})",
            "Browsable Shell Extension");
    all.key(drive_key + R"(\ShellFolder)",
            {R"("Attributes"=dword:b8c00153)", R"("PinToNameSpaceTree"="")"});
    all.key(windows + R"(Explorer\MyComputer\Namespace\)" + drive);
    const std::string approved = windows + R"(Shell Extensions\Approved)";
    all.lines.insert(approved + " \"" + drive + R"("="Quilldeck")");

    all.server(sheet, "Quilldeck Property Sheet");
    all.key(classes + "Quilldeck", "");
    for (const std::string& key : {drive_key, classes + "Quilldeck"}) {
        all.key(key + R"(\ShellEx)");
        all.key(key + R"(\ShellEx\PropertySheetHandlers)");
        all.key((key + R"(\ShellEx\PropertySheetHandlers\)").append(sheet),
                "Quilldeck Property Sheet");
    }
    all.lines.insert(approved + " \"" + sheet + R"("="Quilldeck Property Sheet")");

    const std::string handlers = classes + R"(AllFileSystemObjects\ShellEx\)";
    all.server(menu, "ShellContextMenu Class");
    all.key(handlers + R"(ContextMenuHandlers\Quilldeck_ShellContextMenu)", menu);
    all.server(sync, "Quilldeck_Property_Sheet_Sync");
    all.key(handlers + R"(PropertySheetHandlers\Quilldeck_Property_Sheet_Sync)", sync);

    const std::string overlay_key = classes + R"(CLSID\)" + overlay;
    const std::string program = "Quilldeck.ShellOverlayIcon";
    all.server(overlay, "ShellOverlayIcon Class");
    all.key(overlay_key, {R"("AppID"="{94606AEB-2398-46B6-9DFC-1072D35058F1}")"});
    all.key(overlay_key + R"(\ProgID)", program + ".1");
    all.key(overlay_key + R"(\VersionIndependentProgID)", program);
    all.key(overlay_key + R"(\Programmable)");
    all.key(overlay_key + R"(\TypeLib)", "{FB02A5A4-B11F-4C9F-AA4C-485D4D03D779}");
    for (const std::string& key : {classes + program, classes + program + ".1"}) {
        all.key(key, "ShellOverlayIcon Class");
        all.key(key + R"(\CLSID)", overlay);
    }
    all.key(classes + program + R"(\CurVer)", program + ".1");
    all.key(windows + R"(Explorer\ShellIconOverlayIdentifiers\Quilldeck_ShellOverlayIcon)",
            overlay);
    return all.lines;
}

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
    EXPECT_EQ(without_shortfalls(without(registered, before)),
              without_shortfalls(expected_lines()));
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
