#include "vfs_quilldeck/session/identity_block.h"

#include "utils/unique_handle.h"
#include "vfs_quilldeck/session/companion_process.h"
#include "vfs_quilldeck/session/session_objects.h"
#include "vfs_quilldeck/session/shared_user_info.h"
#include "vfs_quilldeck/wire/exceptions.h"

#include <cstring>
#include <string>

namespace vfs_quilldeck {

namespace {

/// The mutex of the block while it is held.
class held_mutex {
public:
    held_mutex()
        : mutex_(OpenMutexW(SYNCHRONIZE | MUTEX_MODIFY_STATE, FALSE, identity_mutex_name)) {
        // An owner that died counts as one that let go: the block is one small record.
        if (!mutex_ || WaitForSingleObject(mutex_.get(), INFINITE) == WAIT_FAILED) {
            throw std::wstring(L"Error opening mutex");
        }
    }

    held_mutex(const held_mutex&) = delete;
    held_mutex& operator=(const held_mutex&) = delete;

    ~held_mutex() { ReleaseMutex(mutex_.get()); }

private:
    utils::unique_handle mutex_;
};

/// Maps the block with `access` and calls `use` on its record, with the mutex held.
template <class Use>
void with_block(HMODULE module, DWORD access, Use use) {
    try {
        ensure_session(module, true);
        const utils::unique_handle mapping(OpenFileMappingW(access, FALSE, identity_mapping_name));
        if (!mapping) {
            throw std::wstring(L"Error opening mapping");
        }
        const held_mutex lock;
        const utils::unique_view view(
            MapViewOfFile(mapping.get(), access, 0, 0, identity_view_size));
        if (!view) {
            throw std::wstring(L"Error mapping view");
        }
        use(view.get());
    } catch (const std::wstring& cause) {
        throw exception(L"Internal error", L"Unable to store UserID: " + cause);
    }
}

} // namespace

vfs::user_info read_shared_user_info(HMODULE module) {
    shared_user_info record{};
    with_block(module, FILE_MAP_READ,
               [&record](const void* block) { std::memcpy(&record, block, sizeof(record)); });
    return unpack(record);
}

void write_shared_user_info(HMODULE module, const vfs::user_info& info) {
    const shared_user_info record = pack(info);
    with_block(module, FILE_MAP_WRITE,
               [&record](void* block) { std::memcpy(block, &record, sizeof(record)); });
}

} // namespace vfs_quilldeck
