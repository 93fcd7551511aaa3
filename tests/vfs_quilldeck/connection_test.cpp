#include "store_test.h"
#include "vfs_quilldeck/curl_descriptor_cache.h"

#include <set>
#include <thread>
#include <vector>

namespace vfs_quilldeck {

namespace {

using connection = store_test;

TEST_F(connection, is_one_for_each_of_four_threads_and_kept) {
    client session = sign_in();
    const auto request_on_four_threads = [&] {
        control.reset();
        // None is answered before all four are on their way.
        control.fault({{"kind", "delay"}, {"seconds", "0.5"}, {"count", "4"}});
        std::vector<std::jthread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([session]() mutable { session.get_storage_info(); });
        }
        threads.clear();
        const auto usage = request_descriptor_cache.get_usage();
        EXPECT_EQ(usage.entries, 4u);
        EXPECT_EQ(usage.locked, 0u);
        std::set<int> connections;
        for (const auto& request : control.log()) {
            connections.insert(request.connection);
        }
        EXPECT_EQ(connections.size(), 4u);
    };
    request_on_four_threads();
    const auto first = control.stats()["https_connections"];
    request_on_four_threads();
    EXPECT_EQ(control.stats()["https_connections"], first);
}

} // namespace

} // namespace vfs_quilldeck
