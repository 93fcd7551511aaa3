#pragma once

namespace vfs_quilldeck {

/// The service's base URL: scheme and host, no trailing slash. The build makes it; programs that
/// test the client link a definition of their own.
const char* get_service_url();

} // namespace vfs_quilldeck
