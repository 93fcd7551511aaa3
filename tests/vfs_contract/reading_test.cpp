// What holds of everything that can be listed and read: the sources of a copy.
#include "content.h"
#include "contract.h"
#include "failures.h"

#include <algorithm>
#include <array>
#include <set>

namespace vfs_contract {

namespace {

using transfer_test::steps_of;

class reading : public contract {
protected:
    static std::set<std::wstring> names_in(vfs::directory& directory) {
        std::set<std::wstring> names;
        for (const vfs::item_ptr& item : directory.get_items()) {
            const bool is_file = std::dynamic_pointer_cast<vfs::file>(item) != nullptr;
            EXPECT_EQ(item->get_type(), is_file ? vfs::type_file : vfs::type_directory);
            EXPECT_TRUE(names.insert(item->get_name()).second);
        }
        return names;
    }

    static std::string read(vfs::file& file, std::vector<std::size_t> steps = {16'384}) {
        transfer_test::content read;
        EXPECT_TRUE(transfer_test::read_all(file, read, steps_of(std::move(steps))).complete);
        return {read.begin(), read.end()};
    }

    static void expect_position(vfs::file& file, std::int64_t position, bool at_end) {
        if (GetParam().tells_position) {
            EXPECT_EQ(file.get_pos(), position);
            EXPECT_EQ(file.is_eof(), at_end);
        } else {
            expect_failure([&] { file.get_pos(); });
            expect_failure([&] { file.is_eof(); });
        }
    }

    template <class Operation>
    static void expect_failure(const Operation& operation) {
        const std::wstring failure = support::failure_of(operation);
        EXPECT_TRUE(failure != L"none" && !failure.starts_with(L": ") && !failure.ends_with(L": "));
    }
};

TEST_P(reading, lists_and_finds_all_that_is_there_at_every_depth) {
    const std::wstring odd = L"\u00DC & b=c%41+d;\u20AC \U0001F58B'#[]{}^`~";
    here->put(L"f.txt", "1");
    here->put(odd, "22");
    here->put(L"empty/", {});
    here->put(L"deep/er/f.txt", "333");
    const directory_ptr top = here->reach();
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(names_in(*top), (std::set<std::wstring>{L"deep", L"empty", L"f.txt", odd}));
    }
    EXPECT_EQ(names_in(*enter(top, L"empty")), std::set<std::wstring>());
    EXPECT_FALSE(enter(top, L"empty")->has_subfolders());
    EXPECT_TRUE(enter(top, L"deep")->has_subfolders());
    EXPECT_EQ(find_file(top, odd)->get_size(), 2);
    for (const bool refresh : {false, true}) {
        EXPECT_THROW(top->find_item_by_name(L"none", refresh), vfs::item_not_found_exception);
    }

    // An item keeps what it needs when the objects that led to it are gone.
    const file_ptr kept = find_file(enter(enter(here->reach(), L"deep"), L"er"), L"f.txt");
    kept->open(vfs::modeRead, 0);
    EXPECT_EQ(read(*kept), "333");
}

TEST_P(reading, gives_every_byte_once_in_steps_of_any_size) {
    const auto bytes = transfer_test::make_content(1'100'001, 1);
    const std::string all(bytes.begin(), bytes.end());
    here->put(L"large", all);
    here->put(L"empty", {});
    const directory_ptr top = here->reach();
    const file_ptr large = find_file(top, L"large");
    EXPECT_EQ(large->get_size(), std::ssize(all));
    for (const auto& steps : {std::vector<std::size_t>{16'384}, {1, 16'383, 2, 65'537}}) {
        large->open(vfs::modeRead, 0);
        EXPECT_TRUE(read(*large, steps) == all);
        large->close(0);
    }

    // Two at once, one of them behind the other.
    const file_ptr other = find_file(here->reach(), L"large");
    std::array<char, 7> head{};
    large->open(vfs::modeRead, 0);
    other->open(vfs::modeRead, 0);
    ASSERT_EQ(other->read(head.data(), head.size()), head.size());
    EXPECT_TRUE(read(*large) == all);
    EXPECT_TRUE(read(*other) == all.substr(head.size()));
    large->seek(0, vfs::seek_beginning);
    EXPECT_TRUE(read(*large) == all);
    EXPECT_EQ(large->read(head.data(), head.size()), 0U) << "the end stays the end";

    const file_ptr empty = find_file(top, L"empty");
    EXPECT_EQ(empty->get_size(), 0);
    empty->open(vfs::modeRead, 0);
    EXPECT_EQ(read(*empty), "");
}

TEST_P(reading, knows_whether_it_is_open_and_where_it_is) {
    here->put(L"f", std::string(100'000, 'x'));
    const file_ptr file = find_file(here->reach(), L"f");
    char byte = 0;
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(file->get_open_mode(), 0);
        expect_failure([&] { file->read(&byte, 1); });
        expect_failure([&] { file->close(0); });
        file->open(vfs::modeRead, 0);
        EXPECT_EQ(file->get_open_mode(), vfs::modeRead);
        expect_failure([&] { file->open(vfs::modeRead, 0); });
        EXPECT_EQ(file->read(&byte, 1), 1U) << "what was open stays open";
        expect_position(*file, 1, false);
        const file_ptr other = file->duplicate();
        EXPECT_EQ(other->get_open_mode(), 0);
        other->open(vfs::modeRead, 0);
        EXPECT_EQ(read(*file).size(), 99'999U);
        expect_position(*file, 100'000, true);
        EXPECT_EQ(other->read(&byte, 1), 1U);
        for (int again = 0; again < 2; ++again) {
            other->abandon();
            EXPECT_EQ(other->get_open_mode(), 0);
        }
        file->close(0);
    }
    file->set_marked(true);
    EXPECT_TRUE(file->is_marked());
    // Let go in the middle of it.
    file->open(vfs::modeRead, 0);
    EXPECT_EQ(file->read(&byte, 1), 1U);
}

INSTANTIATE_TEST_SUITE_P(remote, reading, testing::ValuesIn(remote_implementations()),
                         testing::PrintToStringParamName());
INSTANTIATE_TEST_SUITE_P(source, reading, testing::ValuesIn(source_implementations()),
                         testing::PrintToStringParamName());

} // namespace

} // namespace vfs_contract
