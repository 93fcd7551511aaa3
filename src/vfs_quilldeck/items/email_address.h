#pragma once

#include <string>

namespace vfs_quilldeck {

/// Whether `text` has the form of an e-mail address: a first look, the service decides.
bool is_valid_email(const std::wstring& text);

} // namespace vfs_quilldeck
