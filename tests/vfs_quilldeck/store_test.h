#pragma once

#include "failures.h"
#include "service_url.h"
#include "store_control.h"
#include "vfs/vfs.h"
#include "vfs_quilldeck/session/client.h"
#include "vfs_quilldeck/session/pc_id.h"
#include "vfs_quilldeck/wire/exceptions.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace vfs_quilldeck {

using directory_ptr = std::shared_ptr<vfs::directory>;
using file_ptr = std::shared_ptr<vfs::file>;

inline directory_ptr as_directory(const vfs::item_ptr& item) {
    return std::dynamic_pointer_cast<vfs::directory>(item);
}

inline file_ptr as_file(const vfs::item_ptr& item) {
    return std::dynamic_pointer_cast<vfs::file>(item);
}

/// A test against the store that the runner started. Its log and its faults are the test's own.
class store_test : public testing::Test {
protected:
    store_test() {
        ensure_pc_id();
        control.reset();
    }

    ~store_test() override { control.reset(); }

    /// A new session of a demo account, whose password is its name.
    static client sign_in(const std::wstring& user = L"demo") { return {user, user}; }

    static directory_ptr root_of(client& session) { return as_directory(session.get_root()); }

    /// Lets the store answer each request with these bytes, and do nothing.
    void answer(const std::string& reply) {
        control.fault({{"kind", "garbage"}, {"body", reply}, {"count", "1000000"}});
    }

    /// The actions that the store was asked for since the last call, joined by blanks.
    std::string asked() {
        std::string actions;
        for (const auto& request : control.log()) {
            const std::string action = request.value_of("action");
            actions += (actions.empty() ? "" : " ") + (action.empty() ? request.path : action);
        }
        control.reset();
        return actions;
    }

    support::store_control control{support::environment("QUILLDECK_TEST_HTTPS_URL")};
};

using support::failure_of;

inline constexpr auto request_failed =
    L"Request failed: Please, check your internet connection or firewall settings";

} // namespace vfs_quilldeck
