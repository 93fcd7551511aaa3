#include "file_calls.h"
#include "second_process.h"
#include "serializer/document.h"
#include "syncer/manager.h"
#include "user_files.h"
#include "utils/unique_handle.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <iterator>
#include <set>
#include <sstream>
#include <stdexcept>
#include <vector>

namespace syncer {

namespace {

constexpr int rounds = 300;
constexpr int kept_each = 30;

binding binding_of(const std::string& process, int round) {
    return backup_of(L"C:\\" + std::wstring(process.begin(), process.end()),
                     L"file " + std::to_wstring(round));
}

/// The user's binding that equals `sought`.
binding find(const std::wstring& user_name, const binding& sought) {
    const binding_set bindings = manager::get_bindings(user_name);
    const auto found = bindings.find(sought);
    if (found == bindings.end()) {
        throw std::runtime_error("lost " + text_of(sought));
    }
    return *found;
}

/// In the other process. Answers the rules files' names that its bindings got.
std::string hammer(const std::wstring& user_name, const std::string& process) {
    std::string names;
    for (int round = 0; round < rounds; ++round) {
        const binding some = binding_of(process, round);
        binding_manager(user_name, true).add_binding(some);
        const std::wstring name = find(user_name, some).items_filename;
        manager::force_sync(user_name, some, true);
        const binding forced = find(user_name, some);
        if (!forced.force_sync_once || forced.items_filename != name) {
            return "changed " + text_of(some);
        }
        if (round % kept_each != 0) {
            manager::remove_binding(user_name, some);
        }
        names += std::string(name.begin(), name.end()) + ' ';
    }
    return names;
}

/// Reads the file as somebody does who knows of no mutex.
void read_without_mutex(const std::filesystem::path& path) {
    const utils::unique_file file(CreateFileW(
        path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
        OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(file) << "there is always a file: " << GetLastError();
    std::vector<char> bytes(1'000'000);
    DWORD size = 0;
    ASSERT_TRUE(
        ReadFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &size, nullptr));
    serializer::document document;
    ASSERT_NO_THROW(document.root().deserialize(std::string_view(bytes.data(), size)));
}

TEST(bindings, of_two_processes_are_neither_lost_nor_numbered_twice) {
    const test_user user;
    manager::force_sync(user.name(), binding(), true);
    const auto start = [](const char* process) {
        return std::async(std::launch::async, [process] {
            return support::second_process().ask(std::string("hammer ") + process);
        });
    };
    auto first = start("first");
    auto second = start("second");
    for (auto* const running : {&first, &second}) {
        while (running->wait_for(std::chrono::seconds(0)) != std::future_status::ready &&
               !testing::Test::HasFailure()) {
            read_without_mutex(user.file());
            // One look for each turn with the mutex, or the file would never be free to be
            // replaced.
            manager::get_bindings(user.name());
        }
    }

    std::istringstream answers(first.get() + second.get());
    std::multiset<std::string> names(std::istream_iterator<std::string>(answers), {});
    std::multiset<std::string> expected;
    for (int number = 0; number < 2 * rounds; ++number) {
        expected.insert("sync_rules_" + std::to_string(number) + ".xml");
    }
    EXPECT_EQ(names, expected);
    for (const auto* process : {"first", "second"}) {
        for (int round = 0; round < rounds; round += kept_each) {
            EXPECT_TRUE(find(user.name(), binding_of(process, round)).force_sync_once);
        }
    }
    EXPECT_EQ(manager::get_bindings(user.name()).size(), 2u * rounds / kept_each);
}

TEST(bindings, survive_a_process_that_dies_at_any_step_of_a_save) {
    const test_user user;
    const binding old = binding_of("old", 0);
    binding_manager(user.name(), true).add_binding(old);
    int step = 1;
    for (bool died = true; died; ++step) {
        died = false;
        try {
            const support::second_process other;
            EXPECT_EQ(other.ask("add " + std::to_string(step)), "saved");
        } catch (const std::runtime_error&) {
            died = true;
        }
        // The dead one held the mutex.
        const binding_set bindings = manager::get_bindings(user.name());
        EXPECT_TRUE(bindings.contains(old)) << "step " << step;
        EXPECT_EQ(bindings.size(), died ? 1u : 2u) << "step " << step;
        manager::force_sync(user.name(), old, step % 2 == 0);
        EXPECT_EQ(find(user.name(), old).force_sync_once, step % 2 == 0);
    }
    // The neighbour is opened, written, flushed and renamed; dead before the rename is the last.
    EXPECT_EQ(step, 6);
}

/// "hammer NAME": as `hammer`. "add STEP": adds a binding and dies before the STEPth call of the
/// file system that the save makes, if there are so many.
std::string answer(const std::wstring& user_name, const std::string& line) {
    const std::string argument = line.substr(line.find(' ') + 1);
    if (line.starts_with("hammer")) {
        return hammer(user_name, argument);
    }
    binding_manager manager(user_name, true);
    manager.add_binding(binding_of("new", 0));
    support::arm_file_calls(std::stoi(argument), support::mishap::crash);
    manager.save();
    support::disarm_file_calls();
    return "saved";
}

} // namespace

} // namespace syncer

int main(int argc, char** argv) {
    support::serve_if_second(argc, argv, [](const std::string& line) {
        try {
            return syncer::answer(L"\u00FCser of a test", line);
        } catch (const std::exception& failure) {
            return std::string("failed: ") + failure.what();
        }
    });
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
