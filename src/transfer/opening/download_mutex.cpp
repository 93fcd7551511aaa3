#include "transfer/opening/download_mutex.h"

#include "com/worker.h"
#include "vfs_quilldeck/session/session_objects.h"

namespace transfer {

download_mutex::download_mutex()
    : m_mutex(
          OpenMutexW(SYNCHRONIZE | MUTEX_MODIFY_STATE, FALSE, vfs_quilldeck::transfer_mutex_name)) {
    if (!m_mutex) {
        throw com::worker_exception(L"Error opening mutex");
    }
}

download_mutex::hold::hold(const download_mutex& mutex, IProgressSink& progress)
    : m_mutex(mutex.m_mutex.get()) {
    constexpr DWORD between_looks = 200;
    for (;;) {
        switch (WaitForSingleObject(m_mutex, between_looks)) {
        case WAIT_OBJECT_0:
        case WAIT_ABANDONED:
            return;
        case WAIT_TIMEOUT:
            if (progress.has_user_cancelled()) {
                throw user_cancelled();
            }
            break;
        default:
            throw com::worker_exception(L"Error waiting for mutex");
        }
    }
}

download_mutex::hold::~hold() {
    ReleaseMutex(m_mutex);
}

} // namespace transfer
