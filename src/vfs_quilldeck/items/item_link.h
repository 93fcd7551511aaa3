#pragma once

#include "vfs_quilldeck/session/client.h"
#include "vfs_quilldeck/wire/reply_node.h"
#include "vfs_quilldeck/wire/request_params.h"

#include <memory>
#include <string>

namespace vfs_quilldeck {

/// How an item reaches the service: the client that it holds by value, and its route, the
/// parameters that say through which share or access its requests go. An item of the user's own
/// tree has no route. The items below one share have the same route and share it.
class item_link {
public:
    using route_ptr = std::shared_ptr<const request_params>;

    explicit item_link(const class client& client, route_ptr route = nullptr)
        : client_(client), route_(std::move(route)) {}

    /// Sends `before`, the action, the route, and `params`, in this order.
    reply_node request(const wchar_t* action, const request_params& params,
                       request_params before = {}) const;
    /// Sends the action, `params`, and the route: the order of the requests that list and locate a
    /// directory.
    reply_node request_route_last(const wchar_t* action, const request_params& params) const;
    /// The route with `prefix` before each key, as a copy names its source and its destination.
    request_params get_route(const wchar_t* prefix) const;

    const class client& get_client() const { return client_; }

    const route_ptr& get_route() const { return route_; }

private:
    class client client_;
    route_ptr route_;
};

} // namespace vfs_quilldeck
