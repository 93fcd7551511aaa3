#include "vfs_quilldeck/items/item_link.h"

namespace vfs_quilldeck {

reply_node item_link::request(const wchar_t* action, const request_params& params,
                              request_params before) const {
    before.emplace_back(L"action", action);
    append(before, get_route(L""));
    append(before, params);
    return client_.operations_request(std::move(before));
}

reply_node item_link::request_route_last(const wchar_t* action,
                                         const request_params& params) const {
    request_params all{{L"action", action}};
    append(all, params);
    append(all, get_route(L""));
    return client_.operations_request(std::move(all));
}

request_params item_link::get_route(const wchar_t* prefix) const {
    request_params named;
    if (route_) {
        for (const auto& [key, value] : *route_) {
            named.emplace_back(prefix + key, value);
        }
    }
    return named;
}

} // namespace vfs_quilldeck
