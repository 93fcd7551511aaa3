/// Another program that takes what a data object of this one carries.
#pragma once

#include "second_process.h"

#include <string>

namespace transfer_test {

/// Lets it load a data object from these bytes, and answers the effect that it prefers and what
/// `take_files` tells of it.
std::string ask_to_load(const support::second_process& other, const std::string& bytes);

/// Lets it take what is on the clipboard, while this thread serves those who call it. In an
/// apartment of many threads if `many`.
std::string ask_to_paste(const support::second_process& other, bool many);

} // namespace transfer_test
