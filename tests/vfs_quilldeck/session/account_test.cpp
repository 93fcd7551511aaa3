#include "store_test.h"

#include <algorithm>
#include <string>
#include <tuple>

namespace vfs_quilldeck {

namespace {

using account = store_test;

TEST_F(account, shares_folders_with_users_that_it_asks_for) {
    client session = sign_in();
    const auto folder = as_directory(root_of(session)->create_directory(L"Share"));
    asked();
    constexpr std::int32_t anna = 1002;
    const std::string by_name = "get_userid_by_name";
    const std::string by_both = "get_userid_by_name get_userid_by_email";
    bool is_email = true;
    for (const auto& [name, user, requests] :
         {std::tuple(L"anna", anna, by_name), std::tuple(L"visitor", 0, by_name),
          std::tuple(L"anna@quilldeck.example", anna, by_both),
          std::tuple(L"no@quilldeck.example", 0, by_both)}) {
        EXPECT_EQ(folder->can_share_with(name, is_email), user) << name;
        EXPECT_EQ(is_email, requests == by_both);
        EXPECT_EQ(asked(), requests);
    }
    control.fault(
        {{"kind", "garbage"}, {"body", "<R><UserAccessID>a</UserAccessID><UserID>7</UserID></R>"}});
    EXPECT_EQ(folder->can_share_with(L"a@b.c", is_email), 0);
    EXPECT_EQ(asked(), "get_userid_by_name");

    folder->sharing(anna);
    const auto sharing = folder->find_sharewith_item_by_userid(anna);
    EXPECT_EQ(sharing->name, L"anna");
    EXPECT_EQ(sharing->share_mode, 0);
    folder->set_share_mode(sharing->id, 1);
    EXPECT_EQ(folder->find_sharewith_item_by_id(sharing->id)->share_mode, 1);
    EXPECT_EQ(failure_of([&] { folder->find_sharewith_item_by_id(-1); }),
              L"Item not found: Sharing error: The user sharing folder 'Share' is not found");
    folder->delete_sharing_with_user(sharing->id);
    EXPECT_THROW(folder->find_sharewith_item_by_userid(anna), vfs::item_not_found_exception);
}

TEST_F(account, tells_its_news_its_space_and_its_settings) {
    client session = sign_in();
    const auto news = session.get_user_notifications();
    EXPECT_EQ(news.at(0).title, L"Welcome to Quilldeck");
    EXPECT_EQ(news.at(1).url.find(L"https://"), 0u);
    const vfs::storage_info storage = session.get_storage_info();
    EXPECT_GT(storage.space_used, 0);
    EXPECT_EQ(storage.capacity, storage.space_used + storage.space_free);
    session.set_pro_setting(L"a text", L"1 & 2");
    session.set_pro_setting(L"a float", 1e20);
    session.set_pro_setting(L"an integer", -2'000'000'000);
    const auto settings = session.get_pro_settings();
    for (const auto& [name, value, type] :
         {std::tuple(L"a text", L"1 & 2", 0), std::tuple(L"a float", L"1e+20", 2),
          std::tuple(L"an integer", L"-2000000000", 1)}) {
        const auto found = std::ranges::find(settings, name, &vfs::pro_setting::name);
        ASSERT_NE(found, settings.end()) << name;
        EXPECT_EQ(found->value, value);
        EXPECT_EQ(found->type, type);
    }

    answer("<Result><Notification></Notification><ProSetting></ProSetting></Result>");
    EXPECT_TRUE(session.get_user_notifications().empty());
    EXPECT_TRUE(session.get_pro_settings().empty());
    EXPECT_EQ(session.get_storage_info().capacity, 0);
}

TEST_F(account, takes_for_a_thumbnail_what_has_its_mark) {
    client session = sign_in();
    const auto thumbnail_of = [&](const std::string& reply) {
        control.reset();
        answer(reply);
        const vfs::byte_buffer bytes = session.get_thumbnail(L"", L"1");
        return std::string(bytes.begin(), bytes.end());
    };
    EXPECT_EQ(thumbnail_of("123456JFIF"), "123456JFIF");
    EXPECT_EQ(thumbnail_of("<R>no error</R>"), "<R>no error</R>");
    for (const auto& [reply, failure] :
         {std::pair("123456JFI", L"Thumbnail request failed: Wrong response"),
          std::pair("<a>1</a>", L"Thumbnail request failed: Wrong response"),
          std::pair("", L"Thumbnail request failed: Wrong response"),
          std::pair("1234567JFIF", L"Parse error: Server side error"),
          std::pair(
              "<R><Error><Type>1</Type><Name>N</Name><Description>D</Description></Error></R>",
              L"N: D")}) {
        EXPECT_EQ(failure_of([&] { thumbnail_of(reply); }), failure);
    }
    // The type counts for nothing here.
    const auto exists = "<R><Error><Type>1</Type><Name>N</Name></Error></R>";
    EXPECT_THROW(
        {
            try {
                thumbnail_of(exists);
            } catch (const vfs::item_already_exists_exception&) {
                ADD_FAILURE();
            }
        },
        exception);
}

} // namespace

} // namespace vfs_quilldeck
