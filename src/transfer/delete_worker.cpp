#include "transfer/delete_worker.h"

#include "com/guard.h"
#include "com/worker.h"
#include "resources/string_ids.h"
#include "shell_items/change_notice.h"
#include "transfer/delete_items.h"
#include "transfer/progress_dialog.h"
#include "transfer/worker_failure.h"
#include "ui/message.h"
#include "ui/strings.h"

#include <shlobj.h>

#include <string>
#include <vector>

namespace transfer {

namespace {

/// The numbers of a question: its caption, and its texts for both ends.
struct question {
    UINT caption;
    UINT to_trash;
    UINT for_good;
};

constexpr question about_file{IDS_DELETE_FILE, IDS_FILE_TO_TRASH, IDS_FILE_FOR_GOOD};
constexpr question about_folder{IDS_DELETE_FOLDER, IDS_FOLDER_TO_TRASH, IDS_FOLDER_FOR_GOOD};
constexpr question about_several{IDS_DELETE_ITEMS, IDS_ITEMS_TO_TRASH, IDS_ITEMS_FOR_GOOD};

bool is_wanted(HWND owner, const std::vector<shell::PIDLDATA>& records, bool permanent) {
    const question& asked = records.size() > 1               ? about_several
                            : records.front().is_directory() ? about_folder
                                                             : about_file;
    return ui::show_message(owner, asked.caption, permanent ? asked.for_good : asked.to_trash,
                            {std::to_wstring(records.size())},
                            MB_YESNO | MB_ICONEXCLAMATION) == IDYES;
}

void _DoDeleteItemThread(const selection& items, HWND owner, bool permanent) {
    const shell::folder_update notice(items.list);
    CProgressDialog progress = make_progress_dialog(owner, L"Progress Dialog initialize failed");
    const started_progress shown(progress);
    progress.set_progress(0, 0);
    progress.reset_timer();
    progress.set_title(ui::load_string(IDS_DELETING));
    progress.set_line(1, ui::load_string(IDS_PREPARING_DELETE));
    ui::message_prompt prompt(owner, progress.get());
    CItemsDeletion(items.folder, permanent, progress, prompt).run(items.records);
}

} // namespace

HRESULT delete_selection(const selection& items, HWND owner, bool force) noexcept {
    return com::guard([&]() -> HRESULT {
        if (items.records.empty()) {
            return E_INVALIDARG;
        }
        const bool permanent = items.folder->get_folder_flags() == vfs::folder_trash;
        if (!force && !is_wanted(owner, items.records, permanent)) {
            return S_FALSE;
        }
        return com::start_worker(
            [items, owner, permanent] { _DoDeleteItemThread(items, owner, permanent); },
            [] { show_worker_failure(L"CDataObjectImpl::_DoDeleteItemThread(...)"); });
    });
}

} // namespace transfer
