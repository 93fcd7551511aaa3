#include "companions/session_state.h"

#include "companions/last_error.h"
#include "companions/user_security.h"
#include "vfs_quilldeck/session/session_objects.h"
#include "vfs_quilldeck/session/shared_user_info.h"

#include <cstring>

namespace companions {

namespace {

constexpr DWORD inherited_mutex_patience_milliseconds = 5'000;

utils::unique_handle create_mapping(SECURITY_ATTRIBUTES* attributes, const wchar_t* name,
                                    std::size_t size) {
    utils::unique_handle mapping(CreateFileMappingW(
        INVALID_HANDLE_VALUE, attributes, PAGE_READWRITE, 0, static_cast<DWORD>(size), name));
    if (!mapping) {
        raise_last_error("::CreateFileMappingW(INVALID_HANDLE_VALUE, ..., name)");
    }
    return mapping;
}

utils::unique_handle create_mutex(SECURITY_ATTRIBUTES* attributes, const wchar_t* name) {
    utils::unique_handle mutex(CreateMutexW(attributes, FALSE, name));
    if (!mutex) {
        raise_last_error("::CreateMutexW(attributes, FALSE, name)");
    }
    return mutex;
}

utils::unique_handle create_auto_reset_event(SECURITY_ATTRIBUTES* attributes, const wchar_t* name) {
    utils::unique_handle event(CreateEventW(attributes, FALSE, FALSE, name));
    if (!event) {
        raise_last_error("::CreateEventW(attributes, FALSE, FALSE, name)");
    }
    return event;
}

} // namespace

session_state::session_state() : session_state(user_security().attributes()) {}

session_state::session_state(SECURITY_ATTRIBUTES* attributes)
    : identity_mapping_(create_mapping(attributes, vfs_quilldeck::identity_mapping_name,
                                       vfs_quilldeck::identity_view_size)),
      identity_(MapViewOfFile(identity_mapping_.get(), FILE_MAP_WRITE, 0, 0,
                              vfs_quilldeck::identity_view_size)),
      identity_mutex_(create_mutex(attributes, vfs_quilldeck::identity_mutex_name)),
      transfer_mutex_(create_mutex(attributes, vfs_quilldeck::transfer_mutex_name)),
      save_as_mapping_(create_mapping(attributes, vfs_quilldeck::save_as_mapping_name,
                                      vfs_quilldeck::save_as_view_size)),
      login_dialog_event_(
          create_auto_reset_event(attributes, vfs_quilldeck::login_dialog_event_name)) {
    if (!identity_) {
        raise_last_error("::MapViewOfFile(identity_mapping, FILE_MAP_WRITE, ...)");
    }
    // A reader can keep the block of a session that died alive: its user is not ours.
    switch (WaitForSingleObject(identity_mutex_.get(), inherited_mutex_patience_milliseconds)) {
    case WAIT_OBJECT_0:
    case WAIT_ABANDONED:
        forget_identity();
        ReleaseMutex(identity_mutex_.get());
        break;
    case WAIT_TIMEOUT:
        SetLastError(ERROR_TIMEOUT);
        [[fallthrough]];
    default:
        raise_last_error("::WaitForSingleObject(identity_mutex, 5000)");
    }
    log_off_event_ = create_auto_reset_event(attributes, vfs_quilldeck::session_event_name);
}

void session_state::forget_identity() noexcept {
    std::memset(identity_.get(), 0, sizeof(vfs_quilldeck::shared_user_info));
}

} // namespace companions
