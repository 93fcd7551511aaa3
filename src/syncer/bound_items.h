#pragma once

#include <string>
#include <string_view>

namespace syncer {

/// Whether a permanent binding of the user stands at exactly this local path, as `same_path` tells.
/// It is asked for each item that a window paints: while the file does not change, a call costs one
/// query of its time, however many bindings there are, and waits for nobody. Otherwise the file is
/// read under the bindings mutex. Any thread; throws what `binding_manager` throws.
bool is_bound(const std::wstring& user_name, std::wstring_view local_path);

} // namespace syncer
