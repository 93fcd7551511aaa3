#include "failures.h"
#include "file_calls.h"
#include "serializer/exceptions.h"
#include "serializer/file_serializer.h"
#include "utils/unique_handle.h"

#include <gtest/gtest.h>
#include <utf8.h>

#include <chrono>
#include <fstream>
#include <functional>
#include <iterator>
#include <tuple>

namespace serializer {

namespace {

namespace fs = std::filesystem;

/// Held open by another program, which lets others do what `sharing` names.
utils::unique_file hold(const fs::path& path, DWORD sharing) {
    return utils::unique_file(
        CreateFileW(path.c_str(), GENERIC_WRITE, sharing, nullptr, OPEN_ALWAYS, 0, nullptr));
}

node make_tree(const std::wstring& value) {
    node tree(L"settings", L"");
    tree.add_child(L"key", value);
    return tree;
}

using support::expect_failure;

class file_serializer_test : public testing::Test {
protected:
    file_serializer_test() {
        fs::remove_all(folder_);
        fs::create_directories(folder_);
    }

    ~file_serializer_test() override { fs::remove_all(folder_); }

    fs::path file(const wchar_t* suffix = L"") const {
        return folder_ / (std::wstring(L"s\u00E4ttings.xml") + suffix);
    }

    void write(const std::string& text, std::chrono::seconds age = {}) const {
        std::ofstream(file(), std::ios::binary) << text;
        fs::last_write_time(file(), fs::file_time_type::clock::now() - age);
    }

    std::string bytes(const wchar_t* suffix = L"") const {
        std::ifstream in(file(suffix), std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }

    node load() const { return *file_serializer::load_cached(file()); }

    void save(const std::wstring& value, bool keep_backup = false) const {
        file_serializer::save_cached(file(), make_tree(value), keep_backup);
    }

private:
    fs::path folder_ = fs::temp_directory_path() / L"serializer_test \u00FC";
};

TEST_F(file_serializer_test, fails_at_a_file_that_it_cannot_read_or_write) {
    EXPECT_THROW(load(), fs::filesystem_error);
    write("<a>" + std::string(8'000'000, 'x'));
    EXPECT_THROW(load(), wrong_format_exception);
    EXPECT_THROW(load(), wrong_format_exception) << "a failure is not remembered as a tree";
    write("<a>\xC4</a>");
    EXPECT_THROW(load(), utf8::exception);
    write("<a>1</a>");
    {
        const auto writer = hold(file(), FILE_SHARE_READ | FILE_SHARE_WRITE);
        expect_failure<serializer_exception>([this] { load(); },
                                             "serializer::file_serializer::load_cached(",
                                             "): Stream can not be opened for reading");
        const auto neighbour = hold(file(L".tmp"), 0);
        expect_failure<serializer_exception>([this] { save(L"b"); },
                                             "serializer::file_serializer::save_cached(",
                                             "): Stream can not be opened for writing");
    }
    EXPECT_THROW(save(L"\xDC00"), utf8::invalid_utf16);
    EXPECT_EQ(load(), node(L"a", L"1"));
}

TEST_F(file_serializer_test, keeps_the_old_file_or_the_new_one_at_a_full_disk) {
    for (const bool keep_backup : {false, true}) {
        int calls = 0;
        for (int number = 1; number <= calls + 1; ++number) {
            save(L"old", keep_backup);
            const std::string old = bytes();
            support::arm_file_calls(number, support::mishap::disk_full);
            bool failed = false;
            try {
                save(L"new", keep_backup);
            } catch (const std::exception&) {
                failed = true;
            }
            calls = support::disarm_file_calls();
            EXPECT_EQ(bytes() == old, failed) << "at call " << number;
            EXPECT_EQ(load(), make_tree(failed ? L"old" : L"new")) << "at call " << number;
            save(L"new", keep_backup);
            EXPECT_EQ(load(), make_tree(L"new")) << "what failed is not taken for saved";
            EXPECT_FALSE(fs::exists(file(L".tmp")));
            EXPECT_EQ(bytes(L".bak"), keep_backup ? old : "");
        }
        // The neighbour is opened, written, flushed and renamed; a backup is removed and linked.
        EXPECT_EQ(calls, keep_backup ? 6 : 4);
    }
}

TEST_F(file_serializer_test, waits_for_who_holds_a_file_for_a_moment) {
    for (const auto* suffix : {L"", L".tmp"}) {
        save(L"old");
        auto holder = hold(file(suffix), 0);
        support::before_next_sleep([&] { holder.reset(); });
        save(L"new");
        EXPECT_FALSE(holder);
        EXPECT_EQ(load(), make_tree(L"new"));
    }
    {
        const auto holder = hold(file(), FILE_SHARE_READ);
        EXPECT_THROW(save(L"newer"), fs::filesystem_error);
    }
    EXPECT_EQ(load(), make_tree(L"new"));
    save(L"newer");
    EXPECT_EQ(load(), make_tree(L"newer"));
}

TEST_F(file_serializer_test, reads_and_writes_only_what_changed) {
    using std::chrono::hours;
    const std::tuple<const char*, hours, const wchar_t*> cases[] = {
        {"<a>1</a>", hours(2), L"1"},
        {"<a>2</a>", hours(2), L"1"}, // the same time: it is not read
        {"<a>2</a>", hours(1), L"2"},
        // Two writes of others within one second, the second of which the time does not show.
        {"<a>3</a>", hours(0), L"3"},
        {"<a>4</a>", hours(0), L"4"},
    };
    for (const auto& [text, age, expected] : cases) {
        write(text, age);
        EXPECT_EQ(load(), node(L"a", expected));
    }

    save(L"x");
    fs::last_write_time(file(), fs::file_time_type::clock::now() - hours(1));
    const auto time = fs::last_write_time(file());
    save(L"x");
    EXPECT_EQ(fs::last_write_time(file()), time) << "an unchanged tree is not written";
    fs::remove(file());
    save(L"x");
    EXPECT_EQ(load(), make_tree(L"x"));
    // A file that somebody else wrote before an unchanged save is not taken for that tree.
    write("<a>5</a>", hours(1));
    save(L"x");
    EXPECT_EQ(load(), node(L"a", L"5"));
}

} // namespace

} // namespace serializer
