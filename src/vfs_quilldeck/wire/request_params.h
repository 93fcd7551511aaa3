#pragma once

#include <string>
#include <utility>
#include <vector>

namespace vfs_quilldeck {

/// The parameters of one request as (key, value). Their order is the order on the wire; a key may
/// stand twice.
using request_params = std::vector<std::pair<std::wstring, std::wstring>>;

/// Puts `more` behind `params`.
inline void append(request_params& params, const request_params& more) {
    params.insert(params.end(), more.begin(), more.end());
}

} // namespace vfs_quilldeck
