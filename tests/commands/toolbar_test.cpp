#include "command_test.h"
#include "recording_player.h"

#include "shell_items/item_id_list.h"
#include "utils/module.h"

#include <shobjidl.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

namespace commands {

namespace {

using command_ptr = ComPtr<IExplorerCommand>;

class toolbar : public command_test {
protected:
    /// All of an enumerator.
    static std::vector<command_ptr> all_of(IEnumExplorerCommand& commands) {
        std::vector<command_ptr> found;
        command_ptr each;
        ULONG count = 0;
        while (commands.Next(1, each.ReleaseAndGetAddressOf(), &count) == S_OK && count == 1) {
            found.push_back(each);
        }
        return found;
    }

    static std::vector<command_ptr> commands_of(IShellFolder& folder) {
        ComPtr<IExplorerCommandProvider> provider;
        com::check(folder.CreateViewObject(nullptr, IID_PPV_ARGS(&provider)));
        ComPtr<IEnumExplorerCommand> commands;
        com::check(provider->GetCommands(nullptr, IID_PPV_ARGS(&commands)));
        return all_of(*commands.Get());
    }

    /// A text of a command, or its failure.
    static std::wstring text(HRESULT status, wchar_t* given) {
        const com::task_ptr<wchar_t> owned(given);
        return status == S_OK        ? owned.get()
               : status == E_FAIL    ? L"fails"
               : status == E_NOTIMPL ? L"has none"
                                     : L"other";
    }

    static std::wstring told(IExplorerCommand& command, IShellItemArray* items) {
        GUID id{};
        expect_done(command.GetCanonicalName(&id));
        EXPCMDFLAGS flags = 0xFF;
        expect_done(command.GetFlags(&flags));
        wchar_t begin[16];
        std::swprintf(begin, 16, L"%08lX %lu", id.Data1, flags);
        std::wstring all = begin;
        wchar_t* given = nullptr;
        HRESULT status = command.GetTitle(items, &given);
        all += L"|" + text(status, std::exchange(given, nullptr));
        status = command.GetToolTip(items, &given);
        all += L"|" + text(status, std::exchange(given, nullptr));
        status = command.GetIcon(items, &given);
        return all + L"|" + text(status, std::exchange(given, nullptr));
    }

    /// "E" for each command that is there, "-" for each that is hidden.
    static std::string states(const std::vector<command_ptr>& commands, IShellItemArray* items) {
        std::string all;
        for (const command_ptr& command : commands) {
            EXPCMDSTATE state = ECS_DISABLED;
            expect_done(command->GetState(items, FALSE, &state));
            all += state == ECS_ENABLED ? "E" : state == ECS_HIDDEN ? "-" : "?";
        }
        return all;
    }

    static void expect_done(HRESULT status) { EXPECT_EQ(status, S_OK); }

    /// A selection of children of `folder`; null for none.
    static ComPtr<IShellItemArray> select(IShellFolder2& folder,
                                          const std::vector<std::wstring>& names) {
        ComPtr<IShellItemArray> items;
        ComPtr<IPersistFolder2> placed;
        com::check(folder.QueryInterface(IID_PPV_ARGS(&placed)));
        ITEMIDLIST* where = nullptr;
        com::check(placed->GetCurFolder(&where));
        const com::unique_id_list owned(where);
        std::vector<com::unique_id_list> lists;
        std::vector<const ITEMIDLIST*> absolute;
        for (const std::wstring& each : names) {
            lists.emplace_back(ILCombine(where, shell::parse(folder, each).get()));
            absolute.push_back(lists.back().get());
        }
        if (!names.empty()) {
            com::check(SHCreateShellItemArrayFromIDLists(static_cast<UINT>(absolute.size()),
                                                         absolute.data(), &items));
        }
        return items;
    }

    recording_player player;
};

TEST_F(toolbar, has_the_commands_of_its_folder) {
    const std::wstring tool_tip = L"Share the selected files and folders with other peoples in the "
                                  L"Quilldeck";
    const std::wstring icon = utils::own_module_path() + L",-0";
    const std::wstring open = L"9471EFBE 3|fails|fails|fails";
    const std::wstring shared = L"32873188 0|Share|" + tool_tip + L"|shell32.dll,-267";
    const std::wstring sync = L"62F45232 0|Sync files|Manage the Permanently Syncing Files|" + icon;
    const std::wstring backup = L"F30D6B28 0|Backup PC|Backup your documents to Quilldeck|" + icon;
    const std::wstring music =
        L"8F060650 0|Play All Music|Play all music files in this folder|Shell32.dll,-246";
    const std::wstring video =
        L"9D8B7EAE 0|Play All Video|Play all video files in this folder|Shell32.dll,-246";

    const struct {
        std::wstring folder;
        std::vector<std::wstring> commands;
    } rows[] = {
        {L"", {open, shared, sync, backup, music, video}},
        {name, {open, shared, music, video}},
        {L"Trash", {open, shared, music, video}},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.folder.c_str());
        std::vector<std::wstring> found;
        for (const command_ptr& command : commands_of(*listed(row.folder).Get())) {
            found.push_back(told(*command.Get(), nullptr));
        }
        EXPECT_EQ(found, row.commands);
    }

    // What opens a window of which there is none is left out.
    offer_properties(false);
    EXPECT_EQ(commands_of(*place.Get()).size(), 3U);
    ComPtr<IExplorerCommandProvider> provider;
    com::check(place->CreateViewObject(nullptr, IID_PPV_ARGS(&provider)));
    ComPtr<IUnknown> other;
    EXPECT_EQ(provider->GetCommands(nullptr, IID_PPV_ARGS(&other)), E_NOINTERFACE);
    EXPECT_EQ(provider->GetCommand(GUID_NULL, IID_PPV_ARGS(&other)), E_NOTIMPL);
    ComPtr<IEnumExplorerCommand> three;
    ASSERT_EQ(provider->GetCommands(nullptr, IID_PPV_ARGS(&three)), S_OK);
    IExplorerCommand* given[4] = {};
    ULONG count = 9;
    EXPECT_EQ(three->Next(1, nullptr, &count), E_INVALIDARG);
    EXPECT_EQ(three->Next(2, given, nullptr), E_POINTER);
    EXPECT_EQ(three->Next(4, given, &count), S_FALSE);
    EXPECT_EQ(count, 3U);
    std::ranges::for_each(given, given + 3, [](IExplorerCommand* each) { each->Release(); });
    EXPECT_EQ(three->Next(1, given, nullptr), S_FALSE);
    EXPECT_EQ(three->Reset(), S_OK);
    EXPECT_EQ(all_of(*three.Get()).size(), 3U);
    EXPECT_EQ(three->Skip(1), E_NOTIMPL);
    EXPECT_EQ(three->Clone(&three), E_NOTIMPL);
}

TEST_F(toolbar, shows_what_the_selection_allows_and_asks_nobody_for_it) {
    const struct {
        std::wstring folder;
        std::vector<std::wstring> items;
        const char* before; ///< the folder was listed
        const char* after;
    } rows[] = {
        {name, {}, "----", "--E-"},
        {name, {L"a.qdtext"}, "E---", "E-E-"},
        {name, {L"tree"}, "-E--", "-EE-"},
        {name, {L"tree", L"a.qdtext"}, "----", "--E-"},
        {name, {L"one.qdmusic", L"two.QDMUSIC"}, "E---", "E-E-"},
        {name, {L"one.qdmusic", L"three.qdother"}, "----", "--E-"},
        {name, {L"a.qdtext", L"b.qdtext"}, "----", "--E-"},
        {name, {L"no extension"}, "----", "--E-"},
        {L"", {}, "--EE--", "--EE--"},
        {L"", {L"Documents"}, "-E----", "-E----"},
        {L"", {L"Trash"}, "------", "------"},
        {L"Shared Folders\\anna", {L"Photos for you"}, "----", "----"},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.folder << " " << row.items.size());
        const auto drive = shell::make_drive();
        const auto folder = row.folder.empty() ? drive : shell::open(*drive.Get(), row.folder);
        const auto directory_of_row = shell::directory_of(*folder.Get());
        directory_of_row->set_folder_flags(directory_of_row->get_folder_flags() &
                                           ~std::uint32_t{vfs::folder_has_audio});
        const auto items = select(*folder.Get(), row.items);
        const auto commands = commands_of(*folder.Get());
        control.reset();
        EXPECT_EQ(states(commands, items.Get()), row.before);
        EXPECT_TRUE(control.log().empty());
        shell::list(*folder.Get(), shell::all_items);
        EXPECT_EQ(states(commands, items.Get()), row.after);
    }
}

TEST_F(toolbar, opens_with_the_program_that_is_chosen) {
    const auto commands = commands_of(*place.Get());
    IExplorerCommand& open = *commands.front().Get();
    ComPtr<IEnumExplorerCommand> below;
    EXPECT_EQ(open.EnumSubCommands(&below), E_NOTIMPL) << "nothing was looked at";
    EXPECT_EQ(open.Invoke(select(*place.Get(), {L"tree"}).Get(), nullptr), E_FAIL);
    EXPECT_EQ(open.Invoke(nullptr, nullptr), E_FAIL);
    EXPECT_EQ(calls(), L"");

    const auto songs = select(*place.Get(), {L"one.qdmusic", L"two.QDMUSIC"});
    EXPECT_EQ(open.Invoke(songs.Get(), nullptr), S_OK);
    EXPECT_EQ(calls(), L"open one.qdmusic two.QDMUSIC by key");
    EXPECT_EQ(open.EnumSubCommands(&below), E_NOTIMPL);

    const auto text = select(*place.Get(), {L"a.qdtext"});
    recording_player::set(L"qdplayer\\shell\\open", nullptr, L"&Record");
    EXPECT_EQ(told(open, text.Get()), L"9471EFBE 3|&Record|&Record|" + player.executable() + L",0");
    ASSERT_EQ(open.EnumSubCommands(&below), S_OK);
    const auto entries = all_of(*below.Get());
    ASSERT_EQ(entries.size(), 3U);
    EXPECT_TRUE(told(*entries[0].Get(), nullptr).starts_with(L"9471EFBF 0|"));
    EXPECT_EQ(told(*entries[1].Get(), nullptr), L"9471EFC0 8|has none|has none|has none");
    EXPECT_EQ(told(*entries[2].Get(), nullptr), L"9471EFC1 0|Choose Default Program...||fails");
    EXPECT_EQ(states(entries, nullptr), "EEE");
    EXPECT_EQ(open.Invoke(text.Get(), nullptr), S_OK);
    EXPECT_EQ(entries[0]->Invoke(text.Get(), nullptr), S_OK);
    EXPECT_EQ(entries[1]->Invoke(text.Get(), nullptr), S_OK);
    EXPECT_EQ(entries[2]->Invoke(text.Get(), nullptr), S_OK);
    EXPECT_EQ(entries[2]->Invoke(nullptr, nullptr), E_POINTER);
    EXPECT_EQ(calls(), L"open a.qdtext by key; open a.qdtext by key; open a.qdtext asking");
}

TEST_F(toolbar, shares_synchronizes_and_backs_up) {
    const auto commands = commands_of(*listed(L"").Get());
    const auto share = commands_of(*place.Get())[1];
    EXPECT_EQ(share->Invoke(nullptr, nullptr), S_OK);
    EXPECT_EQ(share->Invoke(select(*place.Get(), {L"tree", L"a.qdtext"}).Get(), nullptr), S_OK);
    EXPECT_EQ(calls(), L"");
    EXPECT_EQ(share->Invoke(select(*place.Get(), {L"tree"}).Get(), nullptr), S_OK);
    EXPECT_EQ(calls(), L"properties tree 1");
    EXPECT_EQ(commands[2]->Invoke(nullptr, nullptr), S_OK);
    EXPECT_EQ(calls(), L"sync manager");
    EXPECT_EQ(commands[3]->Invoke(nullptr, nullptr), S_OK);
    EXPECT_EQ(calls(), L"backup");
}

TEST_F(toolbar, plays_no_more_than_255_files_of_the_kind) {
    const auto music = commands_of(*place.Get())[2];
    EXPECT_EQ(music->Invoke(nullptr, nullptr), S_OK);
    EXPECT_EQ(calls(), L"open one.qdmusic three.qdother two.QDMUSIC");
    EXPECT_EQ(commands_of(*place.Get())[3]->Invoke(nullptr, nullptr), S_OK);
    EXPECT_EQ(calls(), L"") << "no video, and so no worker";

    for (int number = 0; number < 254; ++number) {
        directory->create_file(L"more " + std::to_wstring(number) + L".qdmusic");
    }
    EXPECT_EQ(music->Invoke(nullptr, nullptr), S_OK);
    const std::wstring played = calls();
    EXPECT_EQ(std::ranges::count(played, L'.'), 255);
    EXPECT_EQ(played.find(L".qdtext"), std::wstring::npos);
}

} // namespace

} // namespace commands
