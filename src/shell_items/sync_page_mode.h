#pragma once

namespace shell {

/// How a page of synchronization begins. The platform's property sheets carry nothing from who
/// opens them to their pages but this.
enum sync_page_mode : int {
    sync_mode_of_bindings = 0, ///< as the bindings of the items tell
    sync_mode_full = 2,        ///< permanently, in both directions
    sync_mode_backup = 3,      ///< permanently, to the store only; so does 4
    sync_mode_backup_too = 4,
};

/// The mode for the pages that this thread makes now.
int get_sync_page_mode() noexcept;

/// Sets the mode for its own thread, and 0 again at its end. Pages of other threads, which the user
/// opened otherwise, know nothing of it.
class sync_page_mode_scope {
public:
    explicit sync_page_mode_scope(int mode) noexcept;
    sync_page_mode_scope(const sync_page_mode_scope&) = delete;
    sync_page_mode_scope& operator=(const sync_page_mode_scope&) = delete;
    ~sync_page_mode_scope();
};

} // namespace shell
