#include "vfs_quilldeck/service_url.h"

namespace vfs_quilldeck {

const char* get_service_url() {
    return QUILLDECK_SERVICE_URL;
}

} // namespace vfs_quilldeck
