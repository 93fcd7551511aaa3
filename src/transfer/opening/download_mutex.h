#pragma once

#include "transfer/progress_sink.h"
#include "utils/unique_handle.h"

namespace transfer {

/// The user does not want a file any more; nothing is shown for it.
struct user_cancelled {};

/// The mutex of all downloads to this machine, which the session process makes.
class download_mutex {
public:
    /// Opens it. Throws "Error opening mutex" as a `com::worker_exception` where there is none.
    download_mutex();

    /// The mutex, held by this thread for the download of one file.
    class hold {
    public:
        /// Waits without limit, but not against the user's will: throws `user_cancelled`. The mutex
        /// of an owner that died is held like any other: a download leaves nothing half done in its
        /// place. Throws `com::worker_exception` when it cannot be waited for.
        hold(const download_mutex& mutex, IProgressSink& progress);
        hold(const hold&) = delete;
        hold& operator=(const hold&) = delete;
        ~hold();

    private:
        const HANDLE m_mutex;
    };

private:
    utils::unique_handle m_mutex;
};

} // namespace transfer
