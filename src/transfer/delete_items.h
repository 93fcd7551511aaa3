#pragma once

#include "shell_items/item_record.h"
#include "transfer/progress_sink.h"
#include "ui/prompt.h"
#include "vfs/directory.h"

#include <windows.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace transfer {

/// Deletes items of one folder, each as a whole to the Trash or, in the Trash, for good and from
/// the bottom up. Speaks to the user through a progress sink and a prompt alone, and lives on one
/// thread.
class CItemsDeletion {
public:
    CItemsDeletion(std::shared_ptr<vfs::directory> folder, bool permanent, IProgressSink& progress,
                   ui::prompt& prompt);

    /// Counts what there is and deletes it, until it is done or the user ends it. Throws
    /// `com::worker_exception` for a directory that is none.
    void run(const std::vector<shell::PIDLDATA>& records);

private:
    /// An item, or the record by which `directory` finds it.
    struct subject {
        vfs::directory& directory;
        vfs::item_ptr item;
        const shell::PIDLDATA* record = nullptr;
    };

    /// The user ends it all; nothing is shown.
    struct ended {};

    /// With all that lies below.
    std::uint64_t _CountSubitemsAndSelf(const subject& counted);
    std::uint64_t count(const subject& counted);
    void _DeleteRecursively(const subject& deleted);
    void delete_once(const subject& deleted);
    /// Asks about the failure that is being handled, of what was to be deleted or, for null, of a
    /// count. True for another try; throws `ended`, and failures that are not for the user.
    bool is_wanted_again(const subject* deleted);
    void check_cancelled();
    vfs::item_ptr find(const subject& wanted);
    static vfs::item_ptr look_up(const subject& wanted);
    static std::wstring name_of(const subject& named);

    const std::shared_ptr<vfs::directory> m_folder;
    const bool m_permanent;
    IProgressSink& m_progress;
    ui::prompt& m_prompt;
    std::uint64_t m_done = 0;
    std::uint64_t m_total = 0;
};

} // namespace transfer
