#include "command_test.h"

#include "com/class_factory.h"
#include "commands/menus.h"
#include "transfer/data_object/data_object.h"
#include "transfer/drop_target.h"
#include "transfer/item_commands.h"

#include <utility>

namespace commands {

namespace {

std::wstring noted;

void note(const std::wstring& what, IDataObject& items, const std::wstring& rest) {
    shell::selection selected;
    com::check(transfer::read_items(items, selected));
    noted += (noted.empty() ? L"" : L"; ") + what;
    for (const shell::PIDLDATA& record : selected.records) {
        noted += L" " + record.get_name();
    }
    noted += rest;
}

HRESULT note_open(IDataObject& items, HWND, HKEY key, bool ask) {
    note(L"open", items, std::wstring(key ? L" by key" : L"") + (ask ? L" asking" : L""));
    return S_OK;
}

HRESULT note_properties(IDataObject& items, HWND, shell::properties_page page) {
    note(L"properties", items, L" " + std::to_wstring(static_cast<int>(page)));
    return S_OK;
}

HRESULT note_window(const wchar_t* what) {
    noted += what;
    return S_OK;
}

} // namespace

command_test::command_test() {
    shell::set_seams({
        .dialogs = {.show_properties = &note_properties,
                    .show_sync_manager =
                        [](HWND) {
                            return note_window(L"sync manager");
                        }},
        .transfer = {.create_data_object = &transfer::create_data_object,
                     .create_drop_target = &transfer::create_drop_target,
                     .get_selection = &transfer::read_items,
                     .open = &note_open,
                     .remove = &transfer::remove_items,
                     .restore = &transfer::restore_items},
        .folders = {.create_drive = &com::create<shell::CShellFolderImpl>},
        .commands = {.create_command_provider = &create_command_provider,
                     .create_item_menu = &create_item_menu,
                     .create_background_menu = &create_background_menu},
        .local = {.back_up_profile =
                      [](HWND) {
                          return note_window(L"backup");
                      }},
    });
    static int number = 0;
    name = L"Commands " + std::to_wstring(GetCurrentProcessId()) + L" " + std::to_wstring(++number);
    const auto drive = shell::make_drive();
    const auto made = std::dynamic_pointer_cast<vfs::directory>(
        shell::directory_of(*drive.Get())->create_directory(name));
    made->create_directory(L"tree");
    for (const wchar_t* file : {L"a.qdtext", L"b.qdtext", L"one.qdmusic", L"two.QDMUSIC",
                                L"three.qdother", L"no extension"}) {
        made->create_file(file);
    }
    place = shell::open(*drive.Get(), name);
    directory = shell::directory_of(*place.Get());
    control.reset();
    noted.clear();
}

command_test::~command_test() {
    control.reset();
    place.Reset();
    shell::directory_of(*shell::make_drive().Get())->delete_item(name, false);
}

ComPtr<IShellFolder2> command_test::listed(const std::wstring& path) {
    const auto drive = shell::make_drive();
    const auto folder = path.empty() ? drive : shell::open(*drive.Get(), path);
    shell::list(*folder.Get(), shell::all_items);
    return folder;
}

std::wstring command_test::calls() {
    return std::exchange(noted, {});
}

void command_test::offer_properties(bool offered) {
    shell::seams changed = shell::get_seams();
    changed.dialogs.show_properties = offered ? &note_properties : nullptr;
    shell::set_seams(changed);
}

} // namespace commands
