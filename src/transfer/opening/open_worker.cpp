#include "transfer/opening/open_worker.h"

#include "com/guard.h"
#include "com/memory.h"
#include "com/worker.h"
#include "resources/string_ids.h"
#include "shell_items/file_types.h"
#include "shell_items/seams.h"
#include "syncer/binding_manager.h"
#include "transfer/opening/launch_files.h"
#include "transfer/opening/local_copy.h"
#include "transfer/progress_dialog.h"
#include "transfer/worker_failure.h"
#include "ui/message.h"
#include "ui/strings.h"
#include "utils/module.h"
#include "utils/unique_handle.h"
#include "vfs/exceptions.h"
#include "vfs/file.h"
#include "vfs_quilldeck/session/session.h"
#include "vfs_quilldeck/session/session_objects.h"

#include <shellapi.h>

#include <memory>
#include <utility>
#include <vector>

namespace transfer {

namespace {

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
            sorted.total += static_cast<std::uint64_t>(record.size);
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

/// The mutex of all downloads to this machine, which the session process makes.
class download_mutex {
public:
    download_mutex()
        : m_mutex(OpenMutexW(SYNCHRONIZE | MUTEX_MODIFY_STATE, FALSE,
                             vfs_quilldeck::transfer_mutex_name)) {
        if (!m_mutex) {
            throw com::worker_exception(L"Error opening mutex");
        }
    }

    /// Waits without limit, but for the user. Throws `CLocalCopying::user_cancel`.
    void lock(IProgressSink& progress) {
        // One whose owner died is held: a download leaves nothing half done in its place.
        constexpr DWORD look_around = 200;
        while (WaitForSingleObject(m_mutex.get(), look_around) == WAIT_TIMEOUT) {
            if (progress.has_user_cancelled()) {
                throw com::worker_exception(CLocalCopying::user_cancel);
            }
        }
    }

    void unlock() noexcept { ReleaseMutex(m_mutex.get()); }

private:
    utils::unique_handle m_mutex;
};

class download_hold {
public:
    download_hold(download_mutex& mutex, IProgressSink& progress) : m_mutex(mutex) {
        mutex.lock(progress);
    }

    download_hold(const download_hold&) = delete;
    download_hold& operator=(const download_hold&) = delete;

    ~download_hold() { m_mutex.unlock(); }

private:
    download_mutex& m_mutex;
};

std::wstring signed_in_user() {
    if (!vfs_quilldeck::is_logged_in(utils::own_module())) {
        throw com::worker_exception(L"Not logged in");
    }
    return vfs_quilldeck::get_user_info(utils::own_module()).user_name;
}

/// Lets what the user changes in a local copy go back to the store. A failure is told and no more:
/// the copy is there to be opened.
void _CreateTempBinding(HWND owner, IUnknown* progress, const std::wstring& folder_path,
                        const std::filesystem::path& local) {
    const HWND window = ui::window_over(owner, progress);
    const auto show = [window](const std::wstring& caption, const std::wstring& text) {
        ui::show_message(window, caption, text, MB_ICONSTOP);
    };
    try {
        const std::wstring remote = L"Quilldeck" + folder_path;
        const std::wstring name = local.filename().native();
        syncer::binding_manager transaction(signed_in_user(), true);
        if (transaction.has_binding(remote, local.parent_path(), name)) {
            transaction.remove_binding(remote, local.parent_path(), name);
        }
        transaction.add_binding({remote, local.parent_path(), name,
                                 syncer::binding_mode::edited_copy, syncer::binding_type::temporary,
                                 L"", 0, syncer::edited_copy_rule});
        transaction.save();
    } catch (const com::worker_exception& failure) {
        show(L"Internal error", failure.words());
    } catch (const vfs::exception&) {
        ui::show_current_failure(window);
    } catch (const std::exception&) {
        ui::show_current_failure(window, "Error");
    } catch (...) {
        show(L"Internal error", L"Unknown error in CDataObjectImpl::_CreateTempBinding()");
    }
}

/// The local copies of what could be brought here.
std::vector<std::filesystem::path> copy_files(const selection& items,
                                              const sorted_selection& sorted, HWND owner) {
    CProgressDialog progress(owner);
    download_mutex mutex;
    const started_progress shown(progress);
    progress.set_progress(0, sorted.total);
    progress.reset_timer();
    progress.set_title(ui::load_string(IDS_DOWNLOADING));
    ui::message_prompt prompt(owner, progress.get());
    const std::wstring folder_path = items.folder->get_path();
    CLocalCopying copying(signed_in_user(), items.folder, folder_path, sorted.total, progress,
                          prompt);
    std::vector<std::filesystem::path> copies;
    for (const shell::PIDLDATA* record : sorted.files) {
        try {
            progress.set_line(1, ui::load_string(IDS_DOWNLOADING_FILE, {record->get_name()}));
            progress.set_line(2, ui::load_string(IDS_DOWNLOADING_FROM, {items.list.path_string()}));
            const download_hold hold(mutex, progress);
            signed_in_user();
            const std::filesystem::path local = copying.copy(*record);
            _CreateTempBinding(owner, progress.get(), folder_path, local);
            copies.push_back(local);
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

/// The same key once more, for a thread that outlives its owner.
std::shared_ptr<utils::unique_registry_key> duplicate(HKEY key) {
    auto copy = std::make_shared<utils::unique_registry_key>();
    if (key) {
        RegOpenKeyExW(key, nullptr, 0, KEY_READ, copy->put());
    }
    return copy;
}

} // namespace

HRESULT open_selection(const selection& items, HWND owner, HKEY verb_key, bool open_with) noexcept {
    return com::guard([&]() -> HRESULT {
        if (items.records.empty()) {
            return E_INVALIDARG;
        }
        return com::start_worker(
            [items, owner, key = duplicate(verb_key), open_with] {
                _OpenFilesThread(items, owner, key->get(), open_with);
            },
            [] { show_worker_failure(L"CDataObjectImpl::_OpenFilesThread()"); });
    });
}

} // namespace transfer
