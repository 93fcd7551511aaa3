#include "vfs_quilldeck/session/current_user.h"

#include "utils/slim_lock.h"
#include "utils/unique_handle.h"
#include "vfs_quilldeck/session/session.h"
#include "vfs_quilldeck/session/session_objects.h"
#include "vfs_quilldeck/session/shared_user_info.h"

#include <cstring>
#include <mutex>

namespace vfs_quilldeck {

namespace {

constexpr ULONGLONG trusted_milliseconds = 50;

/// What was found last. The block is read without its mutex, but only to see whether it still holds
/// the bytes that it held when it was read with it.
class last_look {
public:
    std::optional<std::wstring> find_name(HMODULE module) {
        const std::lock_guard guard(lock_);
        const ULONGLONG now = GetTickCount64();
        if (!view_ || now - taken_ >= trusted_milliseconds || !is_unchanged()) {
            look(module);
            taken_ = now;
        }
        return name_;
    }

private:
    bool is_unchanged() const noexcept {
        return std::memcmp(view_.get(), &record_, sizeof(record_)) == 0;
    }

    void look(HMODULE module) {
        name_.reset();
        open_view();
        if (view_) {
            std::memcpy(&record_, view_.get(), sizeof(record_));
        }
        if (is_logged_in(module)) {
            name_ = get_user_info(module).user_name;
        }
        if (view_ && !is_unchanged()) {
            // Somebody wrote meanwhile: nothing is known of this state. A block that is there stays
            // with its name, for the session process that comes next too, so it opens again.
            view_.reset();
        }
    }

    void open_view() {
        if (view_) {
            return;
        }
        const utils::unique_handle mapping(
            OpenFileMappingW(FILE_MAP_READ, FALSE, identity_mapping_name));
        if (mapping) {
            view_.reset(MapViewOfFile(mapping.get(), FILE_MAP_READ, 0, 0, identity_view_size));
        }
    }

    utils::slim_lock lock_;
    utils::unique_view view_;
    shared_user_info record_{};
    std::optional<std::wstring> name_;
    ULONGLONG taken_ = 0;
};

last_look latest;

} // namespace

std::optional<std::wstring> find_current_user_name(HMODULE module) {
    return latest.find_name(module);
}

} // namespace vfs_quilldeck
