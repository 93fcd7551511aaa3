#include "store_test.h"
#include "vfs_quilldeck/curl_descriptor_cache.h"

#include <algorithm>
#include <set>
#include <thread>
#include <vector>

namespace vfs_quilldeck {

namespace {

class connection : public store_test {
protected:
    std::set<int> connections_of_log() {
        std::set<int> numbers;
        for (const auto& request : control.log()) {
            numbers.insert(request.connection);
        }
        return numbers;
    }
};

TEST_F(connection, is_one_for_each_of_four_threads_and_kept) {
    client session = sign_in();
    const auto request_on_four_threads = [&] {
        control.reset();
        // None is answered before all four are on their way.
        control.fault({{"kind", "delay"}, {"seconds", "0.5"}, {"count", "4"}});
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([session]() mutable { session.get_storage_info(); });
        }
        std::size_t most = 0;
        while (control.log().size() < 4) {
            most = std::max(most, request_descriptor_cache.get_usage().locked);
        }
        for (auto& thread : threads) {
            thread.join();
        }
        EXPECT_LE(most, 4u);
        const auto usage = request_descriptor_cache.get_usage();
        EXPECT_EQ(usage.entries, 4u);
        EXPECT_EQ(usage.locked, 0u);
        EXPECT_EQ(connections_of_log().size(), 4u);
    };
    request_on_four_threads();
    const auto first = control.stats()["https_connections"];
    request_on_four_threads();
    EXPECT_EQ(control.stats()["https_connections"], first);
}

} // namespace

} // namespace vfs_quilldeck
