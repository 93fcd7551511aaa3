#pragma once

namespace vfs_quilldeck {

/// The program's version as the service is told.
inline constexpr auto program_version = L"1.3.14.1";

} // namespace vfs_quilldeck
