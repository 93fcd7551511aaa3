#include "store_test.h"

#include <process.h>

#include <algorithm>
#include <string>

namespace transfer_test {

namespace {

class dead_store_test : public store_test {
protected:
    dead_store_test() { folder_goes_with_store(); }

    /// Ends the store's processes. They are none of this system, so its own shell does it.
    void end_store() {
        const std::wstring order = L"\"kill -TERM " + std::to_wstring(store_process()) + L"\"";
        _wspawnl(_P_WAIT, L"Z:\\bin\\sh", L"sh", L"-c", order.c_str(), nullptr);
    }
};

} // namespace

TEST_F(dead_store_test, open_files_fail_and_can_be_let_go) {
    const content data = make_content(24'000'000, 1);
    store(L"file", data);
    const file_ptr reading = find(L"file");
    const file_ptr left = find(L"file");
    const file_ptr writing = create(L"new");
    reading->open(vfs::modeRead, 0);
    left->open(vfs::modeRead, 0);
    content buffer(100'000);
    ASSERT_EQ(reading->read(buffer.data(), 100'000), 100'000U);
    ASSERT_EQ(writing->write(buffer.data(), 100'000), 100'000U);
    end_store();

    content rest;
    const auto read = read_all(*reading, rest, steps_of({100'000}), 3);
    EXPECT_FALSE(read.complete);
    EXPECT_EQ(read.failures, 4);
    EXPECT_TRUE(std::equal(rest.begin(), rest.end(), data.begin() + 100'000));
    EXPECT_FALSE(write_all(*writing, data, steps_of({100'000}), 3).complete);
    for (int i = 0; i < 2; ++i) {
        expect_failure(L"Request failed", broken_line, [&] { reading->close(0); });
        expect_failure(L"Close failed", broken_line, [&] { writing->close(0); });
        // Nobody has been told: another close tries again.
        EXPECT_NE(reading->get_open_mode(), 0);
        EXPECT_NE(writing->get_open_mode(), 0);
    }
    expect_failure(L"Request failed", broken_line, [&] { find(L"file"); });
}

} // namespace transfer_test
