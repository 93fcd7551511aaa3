#include "file_calls.h"
#include "serializer/exceptions.h"
#include "syncer/exceptions.h"
#include "syncer/manager.h"
#include "user_files.h"
#include "utils/unique_handle.h"

#include <gtest/gtest.h>
#include <utf8.h>

#include <tuple>
#include <vector>

namespace syncer {

namespace {

/// A binding of the file's form: its own values, and the rule's.
std::string element(const std::string& values, const std::string& rule = "<rule></rule>") {
    return "<binding>" + values + rule + "</binding>";
}

std::string file_of(const std::string& children) {
    return "<sync_bindings>" + children + "</sync_bindings>";
}

TEST(binding_file, is_read_with_every_field_and_default_and_written_byte_for_byte) {
    const test_user user;
    const std::string full = element(
        "<_mode>7</_mode><_type>2</_type><can_recourse_subdirs>5</can_recourse_subdirs>"
        "<dir_local>D:\\\\a\xC3\xA4</dir_local><dir_remote>Quilldeck/r</dir_remote>"
        "<filename>f</filename><force_sync_once>1</force_sync_once>"
        "<items_filename>i.xml</items_filename>",
        "<rule><can_download>2</can_download><can_overwrite_download>4</can_overwrite_download>"
        "<can_overwrite_upload>3</can_overwrite_upload><can_remove_local>7</can_remove_local>"
        "<can_remove_local_dir>8</can_remove_local_dir><can_remove_remote>5</can_remove_remote>"
        "<can_remove_remote_dir>6</can_remove_remote_dir><can_upload>1</can_upload></rule>");
    user.write(
        file_of(element("<dir_local>D:/b</dir_local><dir_remote>Quilldeck/r</dir_remote>") + full +
                // The first one again, spelled otherwise, and one that lives for one pass.
                element("<_mode>2</_mode><dir_local>D:\\\\b</dir_local><dir_remote>Quilldeck\\\\r"
                        "</dir_remote>") +
                element("<_type>1</_type><dir_local>D:\\\\z</dir_local>")));
    const binding_set bindings = manager::get_bindings(user.name());
    ASSERT_EQ(bindings.size(), 2u);
    const auto& [type, mode, remote, local, filename, subdirs, rule, force, items] =
        *bindings.begin();
    EXPECT_EQ(std::tuple(int(mode), int(type), subdirs, local, remote, filename, force, items),
              std::tuple(7, 2, 5, L"D:\\a\u00E4", L"Quilldeck/r", L"f", true, L"i.xml"));
    EXPECT_EQ(
        (std::vector{rule.can_upload, rule.can_download, rule.can_overwrite_upload,
                     rule.can_overwrite_download, rule.can_remove_remote,
                     rule.can_remove_remote_dir, rule.can_remove_local, rule.can_remove_local_dir}),
        (std::vector{1, 2, 3, 4, 5, 6, 7, 8}));
    const binding& sparse = *bindings.rbegin();
    EXPECT_EQ(sparse.dir_local.native(), L"D:/b");
    EXPECT_EQ(sparse._mode, binding_mode::user);
    EXPECT_EQ(sparse.rule.can_upload + sparse.rule.can_remove_local_dir, 0);
    manager::remove_binding(user.name(), sparse);
    EXPECT_EQ(user.bytes(), file_of(full + "<next_rules_file_id>0</next_rules_file_id>"));
}

TEST(binding_file, keeps_temporary_bindings_until_the_next_change) {
    const test_user user;
    const std::string temporary = element("<_type>1</_type><dir_local>D:/z</dir_local>");
    user.write(file_of(temporary + "<next_rules_file_id>2147483647</next_rules_file_id>"));
    const std::string before = user.bytes();
    EXPECT_TRUE(manager::get_bindings(user.name()).empty());
    EXPECT_THROW(manager::remove_binding(user.name(), backup_of(L"D:/z", L"")), syncer_exception);
    EXPECT_EQ(user.bytes(), before);
    binding_manager(user.name(), true).add_binding(backup_of(L"D:/y", L""));
    EXPECT_EQ(user.bytes().find("D:/z"), std::string::npos);
    EXPECT_NE(user.bytes().find("<items_filename>sync_rules_2147483647.xml</"), std::string::npos);
}

TEST(binding_file, is_never_overwritten_when_it_cannot_be_read) {
    const test_user user;
    const auto expect_untouched = [&user]<class Failure>(std::in_place_type_t<Failure>) {
        const std::wstring name = user.name();
        const binding some = backup_of(L"D:\\a", L"b");
        const auto size = std::filesystem::file_size(user.file());
        const auto time = std::filesystem::last_write_time(user.file());
        EXPECT_THROW(manager::get_bindings(name), Failure);
        EXPECT_THROW(manager::force_sync(name, some, true), Failure);
        EXPECT_THROW(manager::remove_binding(name, some), Failure);
        EXPECT_THROW(binding_manager(name, true).add_binding(some), Failure);
        // This one does not look at the file, and has nothing to say.
        EXPECT_FALSE(binding_manager(name, false).has_binding(L"r", L"l", L"f"));
        EXPECT_EQ(std::filesystem::file_size(user.file()), size);
        EXPECT_EQ(std::filesystem::last_write_time(user.file()), time);
    };
    binding_manager(user.name(), true).add_binding(backup_of(L"D:\\a", L"b"));
    const std::string whole = user.bytes();
    for (const std::string& text :
         {std::string(), whole.substr(0, whole.size() - 1), whole.substr(0, whole.size() / 2),
          file_of(element("", "")), std::string("\xFF\xFE<\0", 4),
          file_of("<next_rules_file_id>7x</next_rules_file_id>"),
          file_of(element("<_type>temporary</_type>")), file_of(element("<_mode></_mode>")),
          file_of(element("", "<rule><can_upload>1 1</can_upload></rule>"))}) {
        user.write(text);
        expect_untouched(std::in_place_type<serializer::wrong_format_exception>);
    }
    user.write(file_of(element("<dir_local>\xE4</dir_local>")));
    expect_untouched(std::in_place_type<utf8::exception>);
    user.write(whole);
    const std::uintmax_t huge = 300'000'000;
    std::filesystem::resize_file(user.file(), huge);
    expect_untouched(std::in_place_type<serializer::serializer_exception>);

    user.write(whole);
    {
        const utils::unique_file locked(
            CreateFileW(user.file().c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        expect_untouched(std::in_place_type<serializer::serializer_exception>);
    }
    support::refuse_attributes(true);
    expect_untouched(std::in_place_type<std::filesystem::filesystem_error>);
    support::refuse_attributes(false);
    EXPECT_EQ(user.bytes(), whole);
    EXPECT_EQ(manager::get_bindings(user.name()).size(), 1u);
}

} // namespace

} // namespace syncer
