/// The bytes of settings files, read and replaced whole.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace serializer {

/// The file's bytes, which nobody writes meanwhile. Throws `serializer_exception`, for more than
/// 256 MiB too; `where` is the operation that it names.
std::string read_file(const std::filesystem::path& path, const char* where);

/// Puts `bytes` in the place of the file: first into a neighbour that is then renamed, `path` with
/// ".tmp". At any moment, also when the process or the machine dies in between, the file is there
/// with its old bytes or the new ones. `keep_backup` leaves the old file as `path` with ".bak",
/// else there is none afterwards.
///
/// Throws `serializer_exception` when the neighbour cannot be opened or written and
/// `std::filesystem::filesystem_error` when a file cannot be removed or renamed; the neighbour
/// stays then.
void replace_file(const std::filesystem::path& path, std::string_view bytes, bool keep_backup,
                  const char* where);

} // namespace serializer
