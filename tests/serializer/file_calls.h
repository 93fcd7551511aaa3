#pragma once

#include <functional>

namespace support {

/// What happens at a call that changes files, be it made by our code or by a library's: it fails as
/// on a full disk, or the process ends before it as in a crash.
enum class mishap { disk_full, crash };

/// From now on the `number`th such call of this process, counted from 1, meets the mishap. The
/// calls are caught where the program imports them, so that all code runs as it is.
void arm_file_calls(int number, mishap what);

/// Ends that. Returns how many calls there were.
int disarm_file_calls();

/// From now on nobody may ask for the attributes of files, or may again.
void refuse_attributes(bool refuse);

/// Calls `action` before the next `Sleep` of this process.
void before_next_sleep(std::function<void()> action);

} // namespace support
