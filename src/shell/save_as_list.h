#pragma once

#include <string>

namespace shell {

/// Adds a file that a save dialog is about to make to the list that the session process keeps, so
/// that it goes up once it is written. Throws where there is no such list, where it cannot be read
/// or where it is full; then it stays as it was.
void add_to_save_as_list(const std::wstring& path);

} // namespace shell
