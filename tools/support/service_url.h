#pragma once

#include <string>

namespace support {

/// The store that this program's clients speak to; at first the one that the runner started.
void set_service_url(const std::string& url);

/// A variable of the runner's environment in UTF-8; fails the program when it is missing.
std::string environment(const char* name);

} // namespace support
