#include "failures.h"
#include "syncer/exceptions.h"
#include "syncer/manager.h"
#include "unclosable_handle.h"
#include "user_files.h"
#include "utils/exceptions.h"

#include <gtest/gtest.h>

#include <functional>

namespace syncer {

namespace {

namespace fs = std::filesystem;

using support::expect_failure;

TEST(binding_manager, numbers_what_is_added_and_refuses_doubles) {
    const test_user user;
    const binding first = backup_of(L"C:\\a", L"f");
    binding_manager manager(user.name(), true);
    manager.add_binding(first);
    // The same binding, whatever else differs; another one, as case counts.
    binding again = backup_of(L"C:/a", L"f");
    again._mode = binding_mode::edited_copy;
    expect_failure<duplicated_binding_exception>(
        [&] { manager.add_binding(again); }, "void syncer::binding_manager::add_binding(",
        "): C:/a <- f -> Quilldeck/My Documents is duplicated");
    manager.add_binding(backup_of(L"C:\\a", L"F"));
    manager.remove_binding(L"Quilldeck/My Documents", L"C:\\a", L"f");
    EXPECT_FALSE(manager.has_binding(first.dir_remote, first.dir_local, L"f"));
    expect_failure<binding_not_found_exception>(
        [&] { manager.remove_binding(first); }, "void syncer::binding_manager::remove_binding(",
        "): C:\\a <- f -> Quilldeck/My Documents can not be found");
    manager.add_binding(first);
    const binding_set bindings = manager.get_bindings();
    ASSERT_EQ(bindings.size(), 2u);
    EXPECT_EQ(bindings.begin()->items_filename, L"sync_rules_1.xml");
    EXPECT_EQ(bindings.rbegin()->items_filename, L"sync_rules_2.xml");
    EXPECT_TRUE(manager.has_binding(first.dir_remote, L"C:/a", L"f"));
}

TEST(binding_manager, orders_by_the_elements_of_both_directories) {
    binding_set set;
    for (const auto* local : {L"C:\\a b", L"C:\\a\\c", L"C:\\a", L"C:/a/b"}) {
        set.insert(backup_of(local, L""));
    }
    std::vector<std::wstring> order;
    for (const binding& each : set) {
        order.push_back(each.dir_local.native());
    }
    EXPECT_EQ(order, (std::vector<std::wstring>{L"C:\\a", L"C:/a/b", L"C:\\a\\c", L"C:\\a b"}));
}

TEST(binding_manager, writes_only_what_changed) {
    const test_user user;
    const binding some = backup_of(L"C:\\a", L"f");
    EXPECT_TRUE(manager::get_bindings(user.name()).empty());
    EXPECT_THROW(manager::remove_binding(user.name(), some), binding_not_found_exception);
    EXPECT_FALSE(fs::exists(user.file()));
    binding_manager(user.name(), true).add_binding(some);
    const auto old = fs::file_time_type::clock::now() - std::chrono::hours(1);
    fs::last_write_time(user.file(), old);
    const auto time = fs::last_write_time(user.file());
    manager::force_sync(user.name(), backup_of(L"C:\\other", L""), true);
    manager::force_sync(user.name(), some, false);
    EXPECT_EQ(fs::last_write_time(user.file()), time);
    manager::force_sync(user.name(), some, true);
    EXPECT_NE(fs::last_write_time(user.file()), time);
    EXPECT_TRUE(manager::get_bindings(user.name()).begin()->force_sync_once);
    manager::remove_binding(user.name(), some);
    EXPECT_EQ(user.bytes(),
              "<sync_bindings><next_rules_file_id>1</next_rules_file_id></sync_bindings>");
}

TEST(binding_manager, swallows_failures_only_in_its_destructor) {
    const test_user user;
    fs::create_directory(user.file() += L".tmp");
    {
        const support::unclosable_handle handle;
        binding_manager manager(user.name(), true);
        EXPECT_TRUE(handle.protect());
        manager.add_binding(backup_of(L"C:\\a", L"f"));
        EXPECT_THROW(manager.save(), std::exception);
    }
    EXPECT_FALSE(fs::exists(user.file()));
    // The mutex is free.
    EXPECT_TRUE(manager::get_bindings(user.name()).empty());
}

TEST(manager, makes_the_directories_of_a_user) {
    const test_user user;
    const fs::path saved = manager::get_files_saved_directory(user.name());
    EXPECT_EQ(saved, user.directory() / "files_saved");
    std::ofstream(saved / "file") << "x";
    EXPECT_THROW(manager::check_create_directory(saved / "file" / "below"), fs::filesystem_error);
    manager::check_create_directory(saved / "a" / "b");
    EXPECT_TRUE(fs::is_directory(saved / "a" / "b"));
    for (const auto* name : {L"John Smith Jr.", L"ann .. "}) {
        binding_manager(name, true).add_binding(backup_of(L"C:\\a", L"f"));
        EXPECT_EQ(manager::get_bindings(name).size(), 1u) << name;
        fs::remove_all(binding_manager::get_bindings_path(name).parent_path().parent_path());
    }
    // Names that no folder has, some of which would lead elsewhere.
    for (const auto* name : {L"", L"..", L" . ", L"a/b", L"C:", L"a*"}) {
        expect_failure<create_directory_exception>(
            [name] { binding_manager::get_bindings_path(name); },
            "static std::filesystem::", "settings can not be created");
    }
    EXPECT_THROW(binding_manager(L"a\\b", true), utils::system_error_exception);
    std::ofstream(user.directory() / "settings") << "a file in the way";
    EXPECT_THROW(manager::get_bindings(user.name()), create_directory_exception);
}

} // namespace

} // namespace syncer
