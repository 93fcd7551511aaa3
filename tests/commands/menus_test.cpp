#include "command_test.h"

#include "driven_window.h"

#include "com/clipboard_formats.h"
#include "com/media.h"
#include "commands/item_menu.h"
#include "vfs/exceptions.h"

#include <shlobj.h>

#include <cstddef>
#include <memory>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

namespace commands {

namespace {

struct menu_closer {
    void operator()(HMENU menu) const noexcept { DestroyMenu(menu); }
};

/// A menu of a host, and what stands in it: "number:text" for an entry, with "!" for the one that a
/// double click takes and "?" for a grey one, "-" for a line.
class host_menu {
public:
    explicit host_menu(int own_entries = 0) : menu_(CreatePopupMenu()) {
        for (int number = 1; number <= own_entries; ++number) {
            AppendMenuW(menu_.get(), MF_STRING, static_cast<UINT_PTR>(number), L"own");
        }
    }

    HMENU get() const { return menu_.get(); }

    std::wstring told() const {
        std::wstring all;
        for (int index = 0; index < GetMenuItemCount(get()); ++index) {
            wchar_t text[80] = L"";
            MENUITEMINFOW entry{};
            entry.cbSize = sizeof(entry);
            entry.fMask = MIIM_FTYPE | MIIM_ID | MIIM_STATE | MIIM_STRING;
            entry.dwTypeData = text;
            entry.cch = 80;
            GetMenuItemInfoW(get(), static_cast<UINT>(index), TRUE, &entry);
            all += index == 0 ? L"" : L" ";
            if (entry.fType & MFT_SEPARATOR) {
                all += L"-";
                continue;
            }
            all += std::to_wstring(entry.wID) + L":" + text;
            all += (entry.fState & (MFS_DEFAULT | MFS_HILITE)) == (MFS_DEFAULT | MFS_HILITE) ? L"!"
                                                                                             : L"";
            all += (entry.fState & MFS_GRAYED) != 0 ? L"?" : L"";
        }
        return all;
    }

private:
    std::unique_ptr<std::remove_pointer_t<HMENU>, menu_closer> menu_;
};

/// The forms in which a host names a command.
enum class form { number, narrow, wide };

HRESULT invoke(IContextMenu& menu, form as, const wchar_t* verb, UINT number = 0) {
    const std::string narrow(verb, verb + (verb ? lstrlenW(verb) : 0));
    CMINVOKECOMMANDINFOEX info{};
    info.cbSize = as == form::wide ? sizeof(info) : sizeof(CMINVOKECOMMANDINFO);
    info.lpVerb = as == form::narrow ? narrow.c_str() : MAKEINTRESOURCEA(number);
    if (as == form::wide) {
        info.fMask = 0x4000;
        info.lpVerbW = verb;
    }
    return menu.InvokeCommand(reinterpret_cast<CMINVOKECOMMANDINFO*>(&info));
}

/// A user who answers one message box of the calling thread with the button `id`.
class answering_user {
public:
    answering_user(const wchar_t* caption, int id)
        : thread_([this, caption, id] {
              box = support::await_dialog(caption);
              text = box ? support::message_of(box) : L"no box";
              support::answer_box(box, id);
          }) {}

    std::wstring finish() {
        thread_.join();
        return text;
    }

private:
    HWND box = nullptr;
    std::wstring text;
    std::thread thread_;
};

class menus : public command_test {
protected:
    menus() { com::check(OleInitialize(nullptr)); }

    ~menus() override { OleUninitialize(); }

    ComPtr<IContextMenu> background_of(IShellFolder& folder) {
        ComPtr<IContextMenu> menu;
        com::check(folder.CreateViewObject(nullptr, IID_PPV_ARGS(&menu)));
        return menu;
    }

    bool holds(vfs::directory& where, const std::wstring& item) {
        try {
            return where.find_item_by_name(item, true) != nullptr;
        } catch (const vfs::item_not_found_exception&) {
            return false;
        }
    }
};

TEST_F(menus, of_items_hold_what_can_be_done_with_them) {
    struct row {
        std::wstring folder;
        std::vector<std::wstring> items;
        UINT flags;
        bool properties;
        const wchar_t* own; ///< in a menu of its own
    };

    directory->delete_item(directory->find_item_by_name(L"b.qdtext", true), true);
    const row rows[] = {
        {name,
         {L"a.qdtext"},
         CMF_EXPLORE,
         true,
         L"101:Open! - 105:Delete 106:Rename - 103:Synchronize with Computer - 107:Properties"},
        {name,
         {L"tree"},
         CMF_NORMAL,
         true,
         L"101:Open! - 105:Delete 106:Rename - 103:Synchronize with Computer 102:Share... - "
         L"107:Properties"},
        {name,
         {L"tree", L"a.qdtext"},
         CMF_NORMAL,
         true,
         L"101:Open! - 105:Delete 106:Rename - 103:Synchronize with Computer - 107:Properties"},
        // What others share can be bound, and is not ours to share.
        {L"Shared Folders\\anna\\Photos for you",
         {L"More"},
         CMF_NORMAL,
         true,
         L"101:Open! - 105:Delete 106:Rename - 103:Synchronize with Computer - 107:Properties"},
        {L"Shared Folders\\anna",
         {L"Photos for you"},
         CMF_NORMAL,
         true,
         L"101:Open! - 105:Delete? 106:Rename? - 107:Properties"},
        {name, {L"tree"}, CMF_NORMAL, false, L"101:Open! - 105:Delete 106:Rename"},
        {name, {L"tree"}, CMF_DEFAULTONLY, true, L"101:Open! -"},
        {name, {L"tree"}, CMF_VERBSONLY, true, L"101:Open! -"},
        {L"",
         {L"Trash"},
         CMF_NORMAL,
         true,
         L"101:Open! - 105:Delete? 106:Rename? - 107:Properties"},
        {L"",
         {L"Documents", L"Trash"},
         CMF_NORMAL,
         true,
         L"101:Open! - 105:Delete? 106:Rename? - 107:Properties"},
        {L"Trash",
         {L"b.qdtext"},
         CMF_NORMAL,
         true,
         L"104:Restore 105:Delete 106:Rename? - 107:Properties"},
    };
    for (const row& each : rows) {
        SCOPED_TRACE(testing::Message() << each.items.front() << " " << each.flags);
        offer_properties(each.properties);
        const auto folder = listed(each.folder);
        const auto menu = object_of<IContextMenu>(*folder.Get(), each.items);
        const host_menu host;
        EXPECT_EQ(menu->QueryContextMenu(host.get(), 0, 100, 0x7FFF, each.flags), 8);
        EXPECT_EQ(host.told(), each.own);
    }
    const auto menu = object_of<IContextMenu>(*place.Get(), {L"tree"});
    EXPECT_EQ(menu->QueryContextMenu(host_menu().get(), 0, 100, 107, CMF_NORMAL), 8);
    EXPECT_EQ(menu->QueryContextMenu(host_menu().get(), 0, 100, 106, CMF_NORMAL), E_INVALIDARG);
    EXPECT_EQ(menu->QueryContextMenu(nullptr, 0, 100, 0x7FFF, CMF_NORMAL), E_FAIL);
    EXPECT_TRUE(calls().empty());
}

TEST_F(menus, of_items_stand_where_they_do_in_the_menu_of_the_platform) {
    struct row {
        std::wstring folder;
        std::vector<std::wstring> items;
        UINT flags;
        bool properties;
        const wchar_t* told;
        UINT next; ///< the first identifier that is left
    };

    directory->delete_item(directory->find_item_by_name(L"b.qdtext", true), true);
    const row rows[] = {
        {name,
         {L"tree"},
         0,
         true,
         L"100:Open! - 1:own 2:own - 102:Synchronize with Computer 101:Share... 3:own",
         103},
        {name,
         {L"a.qdtext"},
         0x30000,
         true,
         L"100:Open! - 1:own 2:own - 102:Synchronize with Computer 3:own",
         103},
        {name, {L"tree"}, CMF_EXPLORE, true, L"1:own 2:own 3:own", 100},
        {name, {L"tree"}, CMF_DEFAULTONLY, true, L"100:Open! - 1:own 2:own 3:own", 101},
        {name, {L"tree"}, 0, false, L"100:Open! - 1:own 2:own 3:own", 101},
        {L"", {L"Trash", L"Documents"}, 0, true, L"100:Open! - 1:own 2:own 3:own", 101},
        {L"Trash", {L"b.qdtext"}, CMF_EXPLORE, true, L"103:Restore 1:own 2:own 3:own", 104},
    };
    for (const row& each : rows) {
        SCOPED_TRACE(testing::Message() << each.items.front() << " " << each.flags);
        offer_properties(each.properties);
        const auto folder = listed(each.folder);
        const auto data = object_of<IDataObject>(*folder.Get(), each.items);
        const host_menu host(3);
        QCMINFO info{host.get(), 0, 100, 0x7FFF, nullptr};
        EXPECT_EQ(item_menu_callback(folder.Get(), nullptr, data.Get(), DFM_MERGECONTEXTMENU,
                                     each.flags, reinterpret_cast<LPARAM>(&info)),
                  S_OK);
        EXPECT_EQ(host.told(), each.told);
        EXPECT_EQ(info.idCmdFirst, each.next);
    }
}

TEST_F(menus, of_items_carry_out_what_a_host_names_by_number_or_by_text) {
    struct row {
        form as;
        const wchar_t* verb;
        UINT number;
        HRESULT status;
        const wchar_t* called;
    };

    const row rows[] = {
        {form::number, L"", 0, E_INVALIDARG, L""},
        {form::number, L"", 1, S_OK, L"open tree a.qdtext"},
        {form::number, L"", 2, S_OK, L"properties tree a.qdtext 1"},
        {form::number, L"", 3, S_OK, L"properties tree a.qdtext 2"},
        {form::number, L"", 4, E_INVALIDARG, L""},
        {form::number, L"", 7, S_OK, L"properties tree a.qdtext 0"},
        {form::number, L"", 8, E_INVALIDARG, L""},
        {form::narrow, L"properties", 0, S_OK, L"properties tree a.qdtext 0"},
        {form::wide, L"Properties", 1, S_OK, L"properties tree a.qdtext 0"},
        {form::wide, nullptr, 1, S_OK, L"open tree a.qdtext"},
        {form::narrow, L"rename", 0, E_FAIL, L""},
        {form::wide, L"paste", 0, E_INVALIDARG, L""},
        {form::narrow, L"paste", 0, E_INVALIDARG, L""},
    };
    const auto menu = object_of<IContextMenu>(*place.Get(), {L"tree", L"a.qdtext"});
    for (const row& each : rows) {
        SCOPED_TRACE(testing::Message() << (each.verb ? each.verb : L"") << each.number);
        EXPECT_EQ(invoke(*menu.Get(), each.as, each.verb, each.number), each.status);
        EXPECT_EQ(calls(), each.called);
    }
    EXPECT_EQ(menu->InvokeCommand(nullptr), E_POINTER);

    // The platform's own entries are answered, its other ones left to it.
    const auto data = object_of<IDataObject>(*place.Get(), {L"tree"});
    const auto call = [&](UINT message, UINT command) {
        return item_menu_callback(place.Get(), nullptr, data.Get(), message, command, 0);
    };
    EXPECT_EQ(call(DFM_INVOKECOMMAND, DFM_CMD_PROPERTIES), S_OK);
    EXPECT_EQ(calls(), L"properties tree 0");
    EXPECT_EQ(call(DFM_INVOKECOMMAND, DFM_CMD_COPY), S_FALSE);
    EXPECT_EQ(call(DFM_INVOKECOMMAND, 4), S_FALSE);
    EXPECT_EQ(call(DFM_MERGECONTEXTMENU, 0), E_POINTER);
    EXPECT_EQ(call(DFM_GETHELPTEXT, 0), E_NOTIMPL);
    EXPECT_EQ(call(DFM_INVOKECOMMAND, 3), E_INVALIDARG) << "nothing is restored from elsewhere";

    // What the attributes do not allow is not done, and a text is known by its number.
    const auto fixed = object_of<IContextMenu>(*listed(L"").Get(), {L"Documents", L"Trash"});
    EXPECT_EQ(invoke(*fixed.Get(), form::narrow, L"delete"), E_ACCESSDENIED);
    EXPECT_EQ(invoke(*fixed.Get(), form::number, nullptr, 6), E_ACCESSDENIED);
    wchar_t wide[20] = L"";
    char narrow[4] = "";
    EXPECT_EQ(fixed->GetCommandString(5, GCS_VERBW, nullptr, reinterpret_cast<char*>(wide), 20),
              S_OK);
    EXPECT_EQ(fixed->GetCommandString(7, GCS_VERBA, nullptr, narrow, 4), S_OK);
    EXPECT_EQ(std::wstring(wide) + L" " + std::wstring(narrow, narrow + 3), L"delete pro");
    EXPECT_EQ(fixed->GetCommandString(1, GCS_VERBA, nullptr, narrow, 4), E_INVALIDARG);
    EXPECT_EQ(fixed->GetCommandString(6, GCS_HELPTEXTA, nullptr, narrow, 4), E_NOTIMPL);
}

TEST_F(menus, of_items_delete_and_restore) {
    const auto trash = shell::directory_of(*listed(L"Trash").Get());
    answering_user doubting(L"Delete File", IDNO);
    const auto menu = object_of<IContextMenu>(*place.Get(), {L"a.qdtext"});
    EXPECT_EQ(invoke(*menu.Get(), form::narrow, L"delete"), S_FALSE);
    EXPECT_EQ(doubting.finish(), L"Are you sure you want to move this file to the Trash?");
    EXPECT_TRUE(holds(*directory, L"a.qdtext"));

    answering_user sure(L"Delete File", IDYES);
    EXPECT_EQ(invoke(*menu.Get(), form::number, nullptr, 5), S_OK);
    sure.finish();
    EXPECT_TRUE(support::eventually([&] { return !holds(*directory, L"a.qdtext"); }));
    ASSERT_TRUE(holds(*trash, L"a.qdtext"));

    const auto dropped = object_of<IContextMenu>(*listed(L"Trash").Get(), {L"a.qdtext"});
    control.fault({{"kind", "error"},
                   {"action", "restore_file_from_trash"},
                   {"type", "0"},
                   {"name", "Refused"},
                   {"description", "Not now"}});
    answering_user told(L"Refused", IDOK);
    EXPECT_EQ(invoke(*dropped.Get(), form::number, nullptr, 4), E_FAIL);
    EXPECT_EQ(told.finish(), L"Not now");
    EXPECT_EQ(invoke(*dropped.Get(), form::number, nullptr, 4), S_OK);
    EXPECT_TRUE(holds(*directory, L"a.qdtext"));
}

TEST_F(menus, of_backgrounds_hold_what_can_be_done_with_the_folder) {
    struct row {
        std::wstring folder;
        UINT flags;
        bool properties;
        HRESULT result;
        const wchar_t* told;
    };

    const row rows[] = {
        {name, CMF_NORMAL, true, 4,
         L"1:own - - 102:Share... 103:Synchronize with Computer 100:New Folder 2:own 3:own"},
        {name, CMF_NORMAL, false, 1, L"1:own - 100:New Folder 2:own 3:own"},
        {name, CMF_DEFAULTONLY, true, 1, L"1:own 2:own 3:own"},
        {L"", CMF_NORMAL, true, 1, L"1:own - 100:New Folder 2:own 3:own"},
        {L"Trash", CMF_NORMAL, true, 0, L"1:own 2:own 3:own"},
        {L"Shared Folders", CMF_NORMAL, true, 0, L"1:own 2:own 3:own"},
        {L"Shared Folders\\anna", CMF_NORMAL, true, 0, L"1:own 2:own 3:own"},
        {L"Shared Folders\\anna\\Photos for you\\More", CMF_NORMAL, true, 4,
         L"1:own - - 103:Synchronize with Computer 100:New Folder 2:own 3:own"},
    };
    for (const row& each : rows) {
        SCOPED_TRACE(testing::Message() << each.folder << " " << each.flags);
        offer_properties(each.properties);
        const host_menu host(3);
        EXPECT_EQ(background_of(*listed(each.folder).Get())
                      ->QueryContextMenu(host.get(), 0, 100, 0x7FFF, each.flags),
                  each.result);
        EXPECT_EQ(host.told(), each.told);
    }

    // A folder's properties are those of an item of its parent.
    offer_properties(true);
    const auto menu = background_of(*listed(name + L"\\tree").Get());
    for (const UINT number : {2U, 3U}) {
        EXPECT_EQ(invoke(*menu.Get(), form::number, nullptr, number), S_OK);
        EXPECT_EQ(calls(), L"properties tree " + std::to_wstring(number - 1));
    }
    for (const UINT number : {1U, 4U}) {
        EXPECT_EQ(invoke(*menu.Get(), form::number, nullptr, number), E_NOTIMPL);
    }
    EXPECT_EQ(invoke(*menu.Get(), form::narrow, L"newfolder"), E_NOTIMPL);
    EXPECT_EQ(invoke(*menu.Get(), form::wide, L"Paste"), E_NOTIMPL);
    EXPECT_EQ(menu->GetCommandString(0, GCS_VERBA, nullptr, nullptr, 0), E_NOTIMPL);
}

TEST_F(menus, of_backgrounds_make_folders_and_paste) {
    const auto menu = background_of(*place.Get());
    EXPECT_EQ(invoke(*menu.Get(), form::number, nullptr, 0), S_OK);
    EXPECT_EQ(invoke(*menu.Get(), form::narrow, L"NewFolder"), S_OK);
    EXPECT_EQ(invoke(*menu.Get(), form::wide, L"NewFolder", 3), S_OK);
    for (const wchar_t* made : {L"New Folder", L"New Folder (2)", L"New Folder (3)"}) {
        EXPECT_TRUE(holds(*directory, made)) << made;
    }
    control.fault({{"kind", "error"},
                   {"action", "create_dir"},
                   {"type", "0"},
                   {"name", "Refused"},
                   {"description", "Not now"}});
    answering_user told(L"Refused", IDOK);
    EXPECT_EQ(invoke(*menu.Get(), form::number, nullptr, 0), E_FAIL);
    EXPECT_EQ(told.finish(), L"Not now");

    OleSetClipboard(nullptr);
    const auto tree = listed(name + L"\\tree");
    const auto paste = background_of(*tree.Get());
    EXPECT_TRUE(FAILED(invoke(*paste.Get(), form::narrow, L"paste")));
    const auto copied = object_of<IDataObject>(*place.Get(), {L"a.qdtext"});
    ASSERT_EQ(OleSetClipboard(copied.Get()), S_OK);
    EXPECT_EQ(invoke(*paste.Get(), form::wide, L"paste"), DV_E_FORMATETC);
    FORMATETC format{static_cast<CLIPFORMAT>(com::registered_formats.preferred_drop_effect),
                     nullptr, DVASPECT_CONTENT, -1, TYMED_HGLOBAL};
    STGMEDIUM effect{};
    effect.tymed = TYMED_HGLOBAL;
    effect.hGlobal = com::make_global(sizeof(DWORD), GMEM_MOVEABLE | GMEM_ZEROINIT).release();
    *com::global_lock(effect.hGlobal).bytes().data() = std::byte{DROPEFFECT_COPY | DROPEFFECT_LINK};
    ASSERT_EQ(copied->SetData(&format, &effect, TRUE), S_OK);
    ASSERT_EQ(OleSetClipboard(copied.Get()), S_OK);
    EXPECT_EQ(invoke(*paste.Get(), form::wide, L"paste"), S_OK);
    OleSetClipboard(nullptr);
    EXPECT_TRUE(holds(*shell::directory_of(*tree.Get()), L"a.qdtext"));
    EXPECT_TRUE(holds(*directory, L"a.qdtext"));
}

} // namespace

} // namespace commands
