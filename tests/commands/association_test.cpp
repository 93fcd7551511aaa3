#include "com/apartment.h"
#include "com/memory.h"
#include "commands/association_list.h"
#include "commands/launch.h"
#include "commands/playlist.h"
#include "recording_player.h"
#include "shell_items/item_id_list.h"
#include "utils/filesystem.h"

#include <gtest/gtest.h>
#include <shellapi.h>
#include <shlobj.h>

#include <array>
#include <fstream>
#include <iterator>
#include <vector>

namespace commands {

namespace {

using Microsoft::WRL::ComPtr;
namespace fs = std::filesystem;

class associations : public testing::Test {
protected:
    /// The titles of the programs for a name, parted by blanks.
    static std::wstring titles_of(const std::wstring& name) {
        AssociationList list;
        EXPECT_TRUE(list.load(name, false));
        std::wstring titles;
        for (const Association& program : list.programs()) {
            titles += (titles.empty() ? L"" : L" ") + program.title;
        }
        return titles;
    }

    /// Another program for a class of its own.
    static void set_program(const std::wstring& name, const std::wstring& verb,
                            const std::wstring& executable) {
        recording_player::set(name + L"\\shell\\" + verb + L"\\command", nullptr,
                              L"\"" + executable + L"\" \"%1\"");
    }

    com::apartment apartment;
    recording_player player;
    const std::wstring notepad = L"C:\\windows\\system32\\notepad.exe";
    const std::wstring gone = L"C:\\windows\\gone.exe";
};

TEST_F(associations, list_the_default_program_and_then_the_others_once_each) {
    set_program(L"qdeditor", L"open", notepad);
    recording_player::set(L"qdeditor\\shell\\open", nullptr, L"&Edit");
    recording_player::set(L"qdeditor\\shell\\open\\DropTarget", L"CLSID",
                          L"{00021401-0000-0000-C000-000000000046}");
    set_program(L"qdagain", L"open", L"C:\\WINDOWS\\system32\\NOTEPAD.EXE");
    set_program(L"qdverb", L"view", L"C:\\windows\\explorer.exe");
    recording_player::set(L"qdverb\\shell", nullptr, L"view");
    recording_player::set(L"qdverb\\shell\\view", nullptr, L"View");
    for (const wchar_t* name : {L"qdagain", L"qdeditor", L"qdmissing", L"qdplayer", L"qdverb"}) {
        recording_player::set(L".qdtext\\OpenWithProgIds", name, {});
    }
    EXPECT_EQ(titles_of(L"a.b.qdtext"), L"Open Open View");

    AssociationList list;
    ASSERT_TRUE(list.load(L"x.QDTEXT", false));
    EXPECT_EQ(list.default_program()->executable, player.executable());
    EXPECT_EQ(list.default_program()->icon, player.executable() + L",0");
    EXPECT_EQ(list.programs()[1].key_name, L"qdagain");
    EXPECT_EQ(list.programs()[2].verb.name, L"view");
    ASSERT_TRUE(list.load_default(L"x.qdtext"));
    EXPECT_EQ(list.programs().size(), 1U);

    recording_player::set(L".qddrop", nullptr, L"qdeditor");
    ASSERT_TRUE(list.load(L"x.qddrop", true));
    EXPECT_EQ(list.default_program()->title, L"&Edit");
    EXPECT_EQ(list.default_program()->verb.drop_target, CLSID_ShellLink);

    EXPECT_FALSE(list.load(L"no extension", false));
    EXPECT_FALSE(list.load(L"a.qdunknown", false));
    EXPECT_TRUE(list.programs().empty());
    EXPECT_EQ(list.default_program(), nullptr);
    // An executable is found by its own entry.
    EXPECT_TRUE(list.load_default(player.executable()));
}

TEST_F(associations, take_classes_as_data_from_anywhere) {
    // Values without an end, of another type, a class of no name.
    set_program(L"qdodd", L"open", notepad);
    recording_player::set(L"qdodd\\shell\\open", nullptr, L"no end");
    recording_player::set(L"qdodd\\shell\\open\\DropTarget", L"CLSID", L"{no identifier");
    recording_player::set(L".qdodd", nullptr, L"qdodd");
    AssociationList list;
    ASSERT_TRUE(list.load(L"x.qdodd", false));
    EXPECT_EQ(list.default_program()->title, L"no end");
    EXPECT_EQ(list.default_program()->verb.drop_target, GUID_NULL);
    recording_player::set(L"qdodd\\shell\\open", nullptr, std::wstring(2, L'\x1234'), REG_DWORD);
    ASSERT_TRUE(list.load(L"x.qdodd", false));
    EXPECT_EQ(list.default_program()->title, L"Open");
    recording_player::set(L".qdbinary", nullptr, std::wstring(3, L'\0'), REG_BINARY);
    EXPECT_FALSE(list.load(L"x.qdbinary", false));
    EXPECT_FALSE(list.load(L"x.", false));

    // Verbs that can be no names of keys.
    utils::unique_registry_key key;
    RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"Software\\Classes\\qdodd", 0, KEY_READ, key.put());
    for (const std::wstring& verb :
         {std::wstring(L"..\\qdplayer"), std::wstring(40'000, L'v'), std::wstring(L"\0x", 2)}) {
        recording_player::set(L"qdodd\\shell", nullptr, verb);
        EXPECT_EQ(read_verb(key.get()).name, L"open");
    }
}

/// Items of one folder, those that end in "folder" folders.
ComPtr<IShellItemArray> items_of(const std::vector<std::wstring>& names) {
    std::vector<com::unique_id_list> owners;
    std::vector<const ITEMIDLIST*> lists;
    for (const std::wstring& name : names) {
        shell::PIDLDATA record;
        record.type = name.ends_with(L"folder") ? vfs::type_directory : vfs::type_file;
        record.delete_date = shell::no_date;
        record.set_name(name);
        owners.push_back(shell::CItemIDList(record).to_list());
        lists.push_back(owners.back().get());
    }
    ComPtr<IShellItemArray> items;
    EXPECT_EQ(
        SHCreateShellItemArrayFromIDLists(static_cast<UINT>(lists.size()), lists.data(), &items),
        S_OK);
    return items;
}

TEST_F(associations, decide_what_one_command_can_open) {
    const auto passes = [](const std::vector<std::wstring>& names) {
        AssociationList list;
        return list.check_selection(items_of(names).Get());
    };
    EXPECT_TRUE(passes({L"a.qdtext"}));
    EXPECT_TRUE(passes({L"a.qdmusic", L"b.QDMUSIC"}));
    EXPECT_FALSE(passes({L"a.qdtext", L"b.qdtext"}));
    EXPECT_FALSE(passes({L"a.qdmusic", L"b.qdother"}));
    EXPECT_FALSE(passes({L"a.qdmusic", L"a.folder"}));
    EXPECT_FALSE(passes({L"plain"}));
    EXPECT_FALSE(passes({L"a.qdunknown"}));

    AssociationList list;
    EXPECT_FALSE(list.check_selection(nullptr));
    const auto text = items_of({L"a.qdtext"});
    EXPECT_TRUE(list.check_selection(text.Get()));
    EXPECT_EQ(list.item_count(), 1U);
    EXPECT_FALSE(list.check_selection(items_of({L"plain"}).Get()));
    EXPECT_TRUE(list.check_selection(text.Get()));
    // What is not asked anew: the kind is gone, the answer for the same selection stays.
    recording_player::set(L".qdtext", nullptr, L"qdunknown");
    EXPECT_TRUE(list.check_selection(text.Get()));
    EXPECT_FALSE(list.check_selection(items_of({L"a.qdtext"}).Get()));
}

TEST(quoting, keeps_one_argument_one_argument) {
    for (const std::wstring text :
         {L"", L"a b", L"say \"hi\"", L"C:\\with space\\", L"\\\\\"", L"%PATH% & dir", L"-x /y"}) {
        int count = 0;
        wchar_t** arguments =
            CommandLineToArgvW((L"program " + quote_argument(text)).c_str(), &count);
        ASSERT_EQ(count, 2) << count;
        EXPECT_EQ(arguments[1], text);
        LocalFree(static_cast<void*>(arguments));
    }
    EXPECT_TRUE(is_playable_link(L"https://localhost:8443/d?a=1&b=%20"));
    for (const wchar_t* link : {L"", L"https://", L"-https://x", L"https://a b", L"https://a\"b",
                                L"file:///c:/windows", L"/https://x", L"https://a\nb"}) {
        EXPECT_FALSE(is_playable_link(link)) << link;
    }
}

TEST_F(associations, play_links_with_the_program_of_their_kind) {
    const std::wstring link = L"https://localhost/a%20b?x=1&y=2";
    play({{L"a b.qdmusic", link}}, nullptr, {}, false);
    EXPECT_EQ(player.next_start(), link);

    const fs::path folder =
        utils::filesystem::get_special_directory(0) + L"\\Quilldeck\\Intermediate files";
    fs::remove_all(folder);
    const std::vector<playlist_entry> two{{L"\u00E4\u4E2D\n1.qdmusic", link},
                                          {L"2.qdmusic", L"https://x/2"},
                                          {L"3.qdmusic", L"\\\\elsewhere\\3"}};
    play(two, nullptr, L"Songs", false);
    EXPECT_EQ(player.next_start(), L"--play|" + (folder / L"Songs.m3u").wstring());
    play(two, nullptr, L"Songs", false);
    EXPECT_EQ(player.next_start(), L"--play|" + (folder / L"Songs(1).m3u").wstring());
    play(two, nullptr, {}, false);
    EXPECT_EQ(player.next_start(), L"--play|" + (folder / L"QuilldeckPlayAll.m3u").wstring());

    // Folders of the store that no local file can be named after.
    int number = 0;
    for (const std::wstring& odd :
         {std::wstring(L"..\\..\\Songs"), std::wstring(L"a/b"), std::wstring(300, L'n')}) {
        play(two, nullptr, odd, false);
        const std::wstring name = L"QuilldeckPlayAll(" + std::to_wstring(++number) + L").m3u";
        EXPECT_EQ(player.next_start(), L"--play|" + (folder / name).wstring());
    }

    std::ifstream list(folder / L"Songs.m3u", std::ios::binary);
    const std::string bytes{std::istreambuf_iterator(list), {}};
    EXPECT_EQ(bytes.substr(0, 18), "#EXTM3U\n#EXTINF:0,");
    EXPECT_TRUE(bytes.ends_with(" 1.qdmusic\nhttps://localhost/a%20b?x=1&y=2\n\n"
                                "#EXTINF:0,2.qdmusic\nhttps://x/2\n\n"))
        << bytes;

    // No program is started with what is no link, and nothing is written over.
    play({{L"a.qdmusic", L"C:\\windows\\notepad.exe"}}, nullptr, {}, false);
    play({}, nullptr, {}, false);
    EXPECT_FALSE(player.was_started());
    EXPECT_EQ(write_playlist(L"C:\\windows\\notepad.exe", L"x", two), std::nullopt);
}

} // namespace

} // namespace commands

int main(int argc, char** argv) {
    commands::record_if_player();
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
