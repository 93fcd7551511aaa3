#include "vfs_quilldeck/wire/service_url.h"

namespace vfs_quilldeck {

const char* get_service_url() {
    return QUILLDECK_SERVICE_URL;
}

} // namespace vfs_quilldeck
