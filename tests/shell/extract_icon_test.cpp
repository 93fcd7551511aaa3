#include "com/apartment.h"
#include "shell/extract_icon.h"
#include "utils/unique_handle.h"

#include <gtest/gtest.h>

#include <string>

namespace shell {

namespace {

constexpr auto test_class = L"Software\\Classes\\.qdicon";

/// A kind of file of its own, with an icon that the test names.
class icons : public testing::Test {
protected:
    ~icons() override { RegDeleteTreeW(HKEY_LOCAL_MACHINE, test_class); }

    static void set_default_icon(const std::wstring& location) {
        RegSetKeyValueW(HKEY_LOCAL_MACHINE, test_class, L"", REG_SZ, L"qdicon", 14);
        RegSetKeyValueW(HKEY_LOCAL_MACHINE, L"Software\\Classes\\qdicon\\DefaultIcon", L"", REG_SZ,
                        location.c_str(), static_cast<DWORD>(location.size() * 2 + 2));
    }

    static auto icon_of(vfs::item_type type, const std::wstring& name) {
        PIDLDATA record;
        record.type = static_cast<std::uint8_t>(type);
        record.set_name(name);
        return com::make<CExtractIconImpl>(record);
    }

    com::apartment apartment;
    wchar_t path[MAX_PATH] = L"unchanged";
    int index = -1;
    UINT flags = 0x10;
};

int width_of(HICON icon) {
    ICONINFO info{};
    BITMAP color{};
    GetIconInfo(icon, &info);
    GetObjectW(info.hbmColor, sizeof(color), &color);
    DeleteObject(info.hbmColor);
    DeleteObject(info.hbmMask);
    return color.bmWidth;
}

TEST_F(icons, lie_where_those_of_local_items_do) {
    set_default_icon(L"C:\\icons.dll,7");
    const auto file = icon_of(vfs::type_file, L"a.txt.qdicon");
    ASSERT_EQ(file->GetIconLocation(0, path, MAX_PATH, &index, &flags), S_OK);
    EXPECT_STREQ(path, L"C:\\icons.dll");
    EXPECT_EQ(index, 7);
    EXPECT_EQ(flags, 0x10U);
    // Cut to the caller's buffer, and not a character further.
    path[6] = L'#';
    ASSERT_EQ(file->GetIconLocation(0, path, 6, &index, &flags), S_OK);
    EXPECT_EQ(std::wstring(path, 7), std::wstring(L"C:\\ic\0#", 7));

    set_default_icon(L",3");
    ASSERT_EQ(file->GetIconLocation(0, path, MAX_PATH, &index, &flags), S_OK);
    EXPECT_STREQ(path, L"*");
    EXPECT_EQ(index, 3);
    EXPECT_EQ(flags, UINT{0x10 | GIL_NOTFILENAME});

    // A folder's icon does not depend on its name.
    const auto folder = icon_of(vfs::type_directory, L"a.qdicon");
    ASSERT_EQ(folder->GetIconLocation(0, path, MAX_PATH, &index, &flags), S_OK);
    EXPECT_NE(std::wstring(path).find(L".dll"), std::wstring::npos);
    EXPECT_EQ(folder->GetIconLocation(0, nullptr, 0, &index, &flags), E_POINTER);
}

TEST_F(icons, are_extracted_in_both_sizes_unless_the_shell_does_it) {
    const auto extractor = icon_of(vfs::type_file, L"no dot");
    HICON large = nullptr;
    HICON small = nullptr;
    ASSERT_EQ(extractor->Extract(L"", 0, &large, &small, 0), S_OK);
    EXPECT_EQ(width_of(large), GetSystemMetrics(SM_CXICON));
    EXPECT_EQ(width_of(small), GetSystemMetrics(SM_CXSMICON));
    EXPECT_TRUE(DestroyIcon(large));
    EXPECT_TRUE(DestroyIcon(small));
    // A caller may want one size only.
    ASSERT_EQ(extractor->Extract(L"", 0, nullptr, &small, 0), S_OK);
    EXPECT_TRUE(DestroyIcon(small));
    ASSERT_EQ(extractor->Extract(L"", 0, &large, nullptr, 0), S_OK);
    EXPECT_TRUE(DestroyIcon(large));

    extractor->GetIconLocation(GIL_FORSHELL | GIL_OPENICON, path, MAX_PATH, &index, &flags);
    EXPECT_EQ(extractor->Extract(L"", 0, &large, &small, 0), S_FALSE);
    EXPECT_EQ(large, nullptr);
    EXPECT_EQ(small, nullptr);
}

} // namespace

} // namespace shell
