#include "eventually.h"
#include "process_census.h"

#include "com/guard.h"
#include "com/object.h"
#include "com/worker.h"

#include <gtest/gtest.h>
#include <shlobj.h>

#include <atomic>
#include <memory>
#include <stdexcept>
#include <string>

namespace com {

namespace {

using Microsoft::WRL::ComPtr;

/// What a host gives the shell, so that no thread of the shell's outlives the process.
class process_reference final : public object<process_reference, IUnknown> {
public:
    ULONG count() {
        AddRef();
        return Release();
    }
};

bool is_in_single_threaded_apartment() {
    APTTYPE type{};
    APTTYPEQUALIFIER qualifier{};
    return SUCCEEDED(CoGetApartmentType(&type, &qualifier)) &&
           (type == APTTYPE_STA || type == APTTYPE_MAINSTA);
}

std::string name_of_current_exception() {
    try {
        throw;
    } catch (const std::runtime_error& failure) {
        return failure.what();
    } catch (const worker_exception& failure) {
        return failure.words() == L"in words" ? "words" : "other words";
    } catch (...) {
        return "unknown";
    }
}

TEST(workers, run_in_an_apartment_and_keep_the_process) {
    const auto process = make<process_reference>();
    SHSetInstanceExplorer(process.Get());
    const ULONG before = process->count();
    std::atomic<bool> in_apartment = false;
    std::atomic<ULONG> during = 0;
    std::atomic<bool> destroyed_in_apartment = false;
    std::atomic<bool> failed = false;
    const auto on_destruction = [&](int*) {
        destroyed_in_apartment = is_in_single_threaded_apartment();
    };
    std::shared_ptr<int> owned(nullptr, on_destruction);
    const std::weak_ptr<int> watched = owned;
    ASSERT_EQ(start_worker(
                  [&, owned = std::move(owned)] {
                      during = process->count();
                      in_apartment = is_in_single_threaded_apartment();
                  },
                  [&] { failed = true; }),
              S_OK);
    EXPECT_TRUE(support::eventually([&] { return watched.expired(); }));
    EXPECT_TRUE(support::eventually([&] { return process->count() == before; }));
    SHSetInstanceExplorer(nullptr);
    EXPECT_EQ(during, before + 1);
    EXPECT_TRUE(in_apartment);
    EXPECT_TRUE(destroyed_in_apartment);
    EXPECT_FALSE(failed);
}

TEST(workers, tell_what_failed_and_leave_nothing) {
    const auto run = [](const std::function<void()>& body) {
        std::string told;
        std::atomic<bool> done = false;
        EXPECT_EQ(start_worker(body,
                               [&] {
                                   told = name_of_current_exception();
                                   EXPECT_FALSE(is_in_single_threaded_apartment());
                                   done = true;
                                   throw 0; // nobody's business any more
                               }),
                  S_OK);
        EXPECT_TRUE(support::eventually([&] { return done.load(); }));
        return told;
    };
    const auto run_all = [&] {
        EXPECT_EQ(run([] { throw std::runtime_error("standard"); }), "standard");
        EXPECT_EQ(run([] { throw worker_exception(L"in words"); }), "words");
        EXPECT_EQ(run([] { throw std::wstring(L"any"); }), "unknown");
    };
    run_all();
    const auto settled = [last = support::process_census()]() mutable {
        const auto now = support::count_process();
        return std::exchange(last, now) == now;
    };
    EXPECT_TRUE(support::eventually(settled));
    const support::process_census before = support::count_process();
    for (int round = 0; round < 10; ++round) {
        run_all();
    }
    EXPECT_TRUE(support::eventually([&] { return support::count_process() == before; }));
}

} // namespace

} // namespace com
