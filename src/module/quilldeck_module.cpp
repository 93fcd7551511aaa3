#include "module/quilldeck_module.h"

#include "com/class_factory.h"
#include "com/guard.h"
#include "com/module_lock.h"
#include "commands/association.h"
#include "commands/launch.h"
#include "commands/menus.h"
#include "commands/playlist.h"
#include "dialogs/login/sign_in.h"
#include "dialogs/properties/show_properties.h"
#include "dialogs/sync/sync_manager.h"
#include "local/property_sheet.h"
#include "shell/shell_folder.h"
#include "shell_items/seams.h"
#include "transfer/data_object/data_object.h"
#include "transfer/drop_source.h"
#include "transfer/drop_target.h"
#include "transfer/item_commands.h"
#include "transfer/stream.h"

namespace module {

namespace {

constexpr auto application_id = L"{94606AEB-2398-46B6-9DFC-1072D35058F1}";

} // namespace

CQuilldeckModule the_module;

CQuilldeckModule::CQuilldeckModule() noexcept : m_formats(com::registered_formats) {
    shell::set_seams({
        .dialogs = {.sign_in = &dialogs::ensure_logged_in,
                    .show_properties = &dialogs::show_properties,
                    .show_sync_manager = &dialogs::show_sync_manager},
        .transfer = {.create_stream = &transfer::create_stream,
                     .create_data_object = &transfer::create_data_object,
                     .create_drop_target = &transfer::create_drop_target,
                     .create_drop_source = &transfer::create_drop_source,
                     .get_selection = &transfer::read_items,
                     .open = &transfer::open_items,
                     .remove = &transfer::remove_items,
                     .restore = &transfer::restore_items},
        .folders = {.create_drive = &com::create<shell::CShellFolderImpl>},
        .commands = {.play = &commands::play,
                     .ask_for_program = &commands::ask_for_program,
                     .read_verb = &commands::read_verb,
                     .create_command_provider = &commands::create_command_provider,
                     .create_item_menu = &commands::create_item_menu,
                     .create_background_menu = &commands::create_background_menu},
        .local = {.back_up_profile = &local::back_up_profile},
    });
}

CQuilldeckModule::~CQuilldeckModule() {
    if (m_git != nullptr) {
        m_git->Release();
    }
}

LONG CQuilldeckModule::Lock() noexcept {
    return com::module_lock::add();
}

LONG CQuilldeckModule::Unlock() noexcept {
    return com::module_lock::release();
}

LONG CQuilldeckModule::GetLockCount() const noexcept {
    return com::module_lock::count();
}

HRESULT CQuilldeckModule::GetGITPtr(IGlobalInterfaceTable** table) noexcept {
    return com::guard([&] {
        com::cleared(table);
        if (m_git == nullptr) {
            Microsoft::WRL::ComPtr<IGlobalInterfaceTable> made;
            com::check(::CoCreateInstance(CLSID_StdGlobalInterfaceTable, nullptr,
                                          CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&made)));
            // Two threads may come here at once; the first one's table stays.
            if (::InterlockedCompareExchangePointer(reinterpret_cast<void* volatile*>(&m_git),
                                                    made.Get(), nullptr) == nullptr) {
                made.Detach();
            }
        }
        *table = m_git;
        m_git->AddRef();
    });
}

void CQuilldeckModule::AddCommonRGSReplacements(com::registrar& scripts) {
    scripts.replace(L"APPID", application_id);
}

} // namespace module
