#include "loaded_module.h"
#include "registry_lines.h"

#include "com/apartment.h"

#include <boost/algorithm/string/replace.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>

namespace module {

using support::registry_lines;
using support::without;

namespace {

/// Some of what has to be there, with MODULE for the DLL's path.
constexpr const char* expected[] = {
    R"(HKLM\Software\Classes\AppID\{94606AEB-2398-46B6-9DFC-1072D35058F1} @="Quilldeck")",
    R"(HKLM\Software\Classes\AppID\Quilldeck.DLL "AppID"="{94606AEB-2398-46B6-9DFC-1072D35058F1}")",
    R"(HKLM\Software\Classes\CLSID\{5FA947B5-650A-4374-8A9A-5EFA4F126834}\DefaultIcon @="MODULE,0")",
    R"(HKLM\Software\Classes\CLSID\{5FA947B5-650A-4374-8A9A-5EFA4F126834}\InprocServer32 @="MODULE")",
    R"(HKLM\Software\Classes\CLSID\{5FA947B5-650A-4374-8A9A-5EFA4F126834}\ShellFolder "Attributes"=dword:b8c00153)",
    R"(HKLM\Software\Classes\CLSID\{3268FFAC-39F2-4058-BE09-7396DB121F4A} "AppID"="{94606AEB-2398-46B6-9DFC-1072D35058F1}")",
    R"(HKLM\Software\Classes\Quilldeck.ShellOverlayIcon\CurVer @="Quilldeck.ShellOverlayIcon.1")",
    R"(HKLM\Software\Microsoft\Windows\CurrentVersion\Explorer\ShellIconOverlayIdentifiers\Quilldeck_ShellOverlayIcon @="{3268FFAC-39F2-4058-BE09-7396DB121F4A}")",
    R"(HKLM\Software\Classes\CLSID\{5FA947B5-650A-4374-8A9A-5EFA4F126834}\ShellEx\PropertySheetHandlers\{EAD140F5-1353-4001-915D-26E29BA8C9A8} @="Quilldeck Property Sheet")",
    R"(HKLM\Software\Classes\Quilldeck\ShellEx\PropertySheetHandlers\{EAD140F5-1353-4001-915D-26E29BA8C9A8} @="Quilldeck Property Sheet")",
    R"(HKLM\Software\Microsoft\Windows\CurrentVersion\Shell Extensions\Approved "{EAD140F5-1353-4001-915D-26E29BA8C9A8}"="Quilldeck Property Sheet")",
    R"(HKLM\Software\Classes\AllFileSystemObjects\ShellEx\ContextMenuHandlers\Quilldeck_ShellContextMenu @="{B01DA3B5-7AAE-4E91-8D0F-01949CF14A58}")",
    R"(HKLM\Software\Classes\AllFileSystemObjects\ShellEx\PropertySheetHandlers\Quilldeck_Property_Sheet_Sync @="{44CDC918-DCCF-4A7B-9653-6D545B5530A9}")",
    R"(HKLM\Software\Classes\Typelib\{FB02A5A4-B11F-4C9F-AA4C-485D4D03D779}\1.0\0\win64 @="MODULE")",
    R"(HKLM\Software\Classes\Interface\{10CB142B-E382-4928-8B6A-7B2B32EACC64}\TypeLib @="{FB02A5A4-B11F-4C9F-AA4C-485D4D03D779}")",
};

constexpr auto class_keys = R"(HKLM\Software\Classes\CLSID\)";
/// Those that others find in the registry.
constexpr const char* registered_classes[] = {
    "{5FA947B5-650A-4374-8A9A-5EFA4F126834}", "{3268FFAC-39F2-4058-BE09-7396DB121F4A}",
    "{EAD140F5-1353-4001-915D-26E29BA8C9A8}", "{B01DA3B5-7AAE-4E91-8D0F-01949CF14A58}",
    "{44CDC918-DCCF-4A7B-9653-6D545B5530A9}",
};

/// Where other programs have entries beside ours.
constexpr const wchar_t* shared_keys[] = {
    LR"(Software\Microsoft\Windows\CurrentVersion\Shell Extensions\Approved)",
    LR"(Software\Microsoft\Windows\CurrentVersion\Explorer\ShellIconOverlayIdentifiers)",
    LR"(Software\Classes\AllFileSystemObjects\ShellEx\ContextMenuHandlers)",
    LR"(Software\Classes\AllFileSystemObjects\ShellEx\PropertySheetHandlers)",
};

/// Wine shows keys that 32-bit programs share a second time.
registry_lines without_copies(registry_lines lines) {
    std::erase_if(lines, [](const std::string& line) {
        return line.find("Wow6432Node") != std::string::npos;
    });
    return lines;
}

} // namespace

TEST(registration, is_taken_back_but_for_the_installation_s_id) {
    // Every Windows has them.
    for (const wchar_t* key : shared_keys) {
        RegSetKeyValueW(HKEY_LOCAL_MACHINE, key, L"Neighbour", REG_SZ, nullptr, 0);
    }

    const registry_lines before = support::read_registry();
    ASSERT_EQ(support::run_regsvr32(), 0U);
    // Again, as an update does it.
    ASSERT_EQ(support::run_regsvr32(), 0U);
    const registry_lines registered = support::read_registry();
    const registry_lines added = without_copies(without(registered, before));
    const std::string module = std::filesystem::path(support::extension_path()).string();
    for (std::string line : expected) {
        boost::replace_all(line, "MODULE", module);
        EXPECT_EQ(added.count(line), 1U) << line;
    }
    // No entries of classes that do not exist: the shell would load us in vain.
    for (const std::string& line : added) {
        EXPECT_TRUE(!line.starts_with(class_keys) ||
                    std::ranges::any_of(registered_classes,
                                        [&](const char* id) {
                                            return line.starts_with(std::string(class_keys) + id);
                                        }))
            << line;
    }

    ASSERT_EQ(support::run_regsvr32(L"/u"), 0U);
    const registry_lines after = support::read_registry();
    EXPECT_EQ(without(before, after), registry_lines{});
    registry_lines left = without(after, before);
    std::erase_if(left, [](const std::string& line) {
        return line.starts_with(R"(HKLM\Software\Quilldeck "PCID"=)");
    });
    EXPECT_EQ(left, registry_lines{R"(HKLM\Software\Quilldeck)"});
}

TEST(registration, keeps_the_locale_of_the_thread_and_tells_of_a_failure) {
    const loaded_module extension;
    const LCID german = MAKELCID(MAKELANGID(LANG_GERMAN, SUBLANG_GERMAN), SORT_DEFAULT);
    SetThreadLocale(german);
    // This thread is in no apartment, so that there is no interpreter of scripts.
    EXPECT_EQ(extension.register_server(), CO_E_NOTINITIALIZED);
    EXPECT_EQ(GetThreadLocale(), german);
    {
        const com::apartment apartment;
        EXPECT_EQ(extension.register_server(), S_OK);
        EXPECT_EQ(GetThreadLocale(), german);
    }
    EXPECT_EQ(support::run_regsvr32(L"/u"), 0U);
}

} // namespace module
