#include "transfer/opening/open_worker.h"

#include "com/guard.h"
#include "com/memory.h"
#include "com/worker.h"
#include "resources/string_ids.h"
#include "shell_items/file_types.h"
#include "shell_items/seams.h"
#include "transfer/opening/download_mutex.h"
#include "transfer/opening/launch_files.h"
#include "transfer/opening/local_copy.h"
#include "transfer/opening/temp_binding.h"
#include "transfer/progress_dialog.h"
#include "transfer/worker_failure.h"
#include "ui/message.h"
#include "ui/strings.h"
#include "utils/module.h"
#include "utils/unique_handle.h"
#include "vfs/exceptions.h"
#include "vfs/file.h"
#include "vfs_quilldeck/session/session.h"

#include <shellapi.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace transfer {

namespace {

constexpr auto not_logged_in = L"Not logged in";

/// What a selection consists of, each in the order of the selection.
struct sorted_selection {
    std::vector<const shell::PIDLDATA*> directories;
    std::vector<shell::played_file> audio;
    std::vector<shell::played_file> video;
    std::vector<const shell::PIDLDATA*> files;
    std::uint64_t total = 0; ///< the bytes of `files`
};

/// What a player is to be given; nothing for what cannot be found.
void add_link(const selection& items, const shell::PIDLDATA& record,
              std::vector<shell::played_file>& links) {
    try {
        const auto file = std::dynamic_pointer_cast<vfs::file>(
            items.folder->find_item_by_id(record.get_id(), false));
        if (file) {
            links.push_back({record.get_name(), file->get_direct_link()});
        }
    } catch (const vfs::exception&) {
        // It went meanwhile: the others are played.
        return;
    }
}

sorted_selection sort(const selection& items) {
    sorted_selection sorted;
    shell::file_types types;
    for (const shell::PIDLDATA& record : items.records) {
        if (record.is_directory()) {
            sorted.directories.push_back(&record);
            continue;
        }
        const shell::file_types::entry& kind = types.of_file(record.get_name());
        if (kind.audio) {
            add_link(items, record, sorted.audio);
        } else if (kind.video) {
            add_link(items, record, sorted.video);
        } else {
            sorted.files.push_back(&record);
            sorted.total += static_cast<std::uint64_t>(std::max<std::int64_t>(record.size, 0));
        }
    }
    return sorted;
}

void open_directories(const selection& items, const std::vector<const shell::PIDLDATA*>& records) {
    for (const shell::PIDLDATA* record : records) {
        shell::CItemIDList list = items.list;
        list.append(*record);
        const com::unique_id_list flat = list.to_list();
        SHELLEXECUTEINFOW info{};
        info.cbSize = sizeof(info);
        info.fMask = SEE_MASK_CLASSNAME | SEE_MASK_IDLIST;
        info.lpClass = L"folder";
        info.lpIDList = flat.get();
        info.lpVerb = records.size() > 1 ? L"explore" : L"open";
        info.nShow = SW_SHOWNORMAL;
        ShellExecuteExW(&info);
    }
}

vfs::user_info signed_in_user() {
    if (!vfs_quilldeck::is_logged_in(utils::own_module())) {
        throw com::worker_exception(not_logged_in);
    }
    return vfs_quilldeck::get_user_info(utils::own_module());
}

/// Whether it is still the same user.
bool is_signed_in(const vfs::user_info& user) {
    const HMODULE module = utils::own_module();
    return vfs_quilldeck::is_logged_in(module) &&
           vfs_quilldeck::get_user_info(module).user_id == user.user_id;
}

/// Lets what the user changes in a local copy go back to the store. A failure is told and no more:
/// the copy is there to be opened.
void _CreateTempBinding(HWND window, const std::wstring& user_name, const std::wstring& folder_path,
                        const std::filesystem::path& local) {
    try {
        create_temp_binding(user_name, folder_path, local);
    } catch (const vfs::exception&) {
        ui::show_current_failure(window);
    } catch (const std::exception&) {
        ui::show_current_failure(window, "Error");
    } catch (...) {
        ui::show_message(window, L"Internal error",
                         L"Unknown error in CDataObjectImpl::_CreateTempBinding()", MB_ICONSTOP);
    }
}

/// The local copies of what could be brought here.
std::vector<std::filesystem::path> copy_files(const selection& items,
                                              const sorted_selection& sorted, HWND owner) {
    CProgressDialog progress = make_progress_dialog(owner, L"ProgressDialog create failed");
    const download_mutex mutex;
    const started_progress shown(progress);
    progress.set_progress(0, sorted.total);
    progress.reset_timer();
    progress.set_title(ui::load_string(IDS_DOWNLOADING));
    ui::message_prompt prompt(owner, progress.get());
    const vfs::user_info user = signed_in_user();
    const std::wstring folder_path = items.folder->get_path();
    const bool is_bound = has_path_of_its_own(*items.folder, !user.user_access_id.empty());
    CLocalCopying copying(user.user_name, items.folder, folder_path, sorted.total, progress,
                          prompt);
    std::vector<std::filesystem::path> copies;
    for (const shell::PIDLDATA* record : sorted.files) {
        try {
            progress.set_line(1, ui::load_string(IDS_DOWNLOADING_FILE, {record->get_name()}));
            progress.set_line(2, ui::load_string(IDS_DOWNLOADING_FROM, {items.list.path_string()}));
            const download_mutex::hold hold(mutex, progress);
            if (!is_signed_in(user)) {
                prompt.ask(L"Internal error", not_logged_in, MB_ICONSTOP);
                break;
            }
            const std::filesystem::path local = copying.copy(*record);
            if (is_bound) {
                _CreateTempBinding(ui::window_over(owner, progress.get()), user.user_name,
                                   folder_path, local);
            }
            copies.push_back(local);
        } catch (const user_cancelled&) {
            continue;
        } catch (const com::worker_exception&) {
            continue;
        } catch (const vfs::exception&) {
            continue;
        } catch (const std::exception&) {
            continue;
        }
    }
    return copies;
}

void _OpenFilesThread(const selection& items, HWND owner, HKEY verb_key, bool open_with) {
    const sorted_selection sorted = sort(items);
    const auto play = shell::get_seams().commands.play;
    play(sorted.audio, verb_key, items.folder->get_name(), open_with);
    play(sorted.video, verb_key, items.folder->get_name(), open_with);
    open_directories(items, sorted.directories);
    if (!sorted.files.empty()) {
        launch_files(copy_files(items, sorted, owner), owner, verb_key, open_with);
    }
}

} // namespace

HRESULT open_selection(const selection& items, HWND owner, HKEY verb_key, bool open_with) noexcept {
    return com::guard([&]() -> HRESULT {
        if (items.records.empty()) {
            return E_INVALIDARG;
        }
        const auto key =
            std::make_shared<utils::unique_registry_key>(utils::duplicate_key(verb_key));
        if (verb_key && !*key) {
            return E_FAIL;
        }
        return com::start_worker(
            [items, owner, key, open_with] {
                _OpenFilesThread(items, owner, key->get(), open_with);
            },
            [] { show_worker_failure(L"CDataObjectImpl::_OpenFilesThread()"); });
    });
}

} // namespace transfer
