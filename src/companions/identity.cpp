#include "companions/identity.h"

#include "companions/last_error.h"
#include "utils/unique_handle.h"
#include "vfs_quilldeck/session/session_objects.h"
#include "vfs_quilldeck/session/shared_user_info.h"

#include <cstring>

namespace companions {

namespace {

/// The owners of the block hold it for the copy of one record: this is a long time for them.
constexpr DWORD patience_milliseconds = 50;

} // namespace

std::optional<vfs::user_info> read_identity() {
    const utils::unique_handle mapping(
        OpenFileMappingW(FILE_MAP_READ, FALSE, vfs_quilldeck::identity_mapping_name));
    const utils::unique_handle mutex(
        OpenMutexW(SYNCHRONIZE | MUTEX_MODIFY_STATE, FALSE, vfs_quilldeck::identity_mutex_name));
    const utils::unique_view view(mapping ? MapViewOfFile(mapping.get(), FILE_MAP_READ, 0, 0,
                                                          vfs_quilldeck::identity_view_size)
                                          : nullptr);
    if (!mutex || !view) {
        return vfs::user_info{};
    }
    vfs_quilldeck::shared_user_info record;
    switch (WaitForSingleObject(mutex.get(), patience_milliseconds)) {
    case WAIT_OBJECT_0:
    case WAIT_ABANDONED:
        std::memcpy(&record, view.get(), sizeof(record));
        ReleaseMutex(mutex.get());
        return vfs_quilldeck::unpack(record);
    default:
        return std::nullopt;
    }
}

void request_sign_off() {
    const utils::unique_handle event(
        OpenEventW(EVENT_MODIFY_STATE, FALSE, vfs_quilldeck::session_event_name));
    if (!event) {
        if (GetLastError() == ERROR_FILE_NOT_FOUND) {
            return;
        }
        raise_last_error("::OpenEventW(EVENT_MODIFY_STATE, FALSE, session_event_name)");
    }
    if (!SetEvent(event.get())) {
        raise_last_error("::SetEvent(event)");
    }
}

} // namespace companions
