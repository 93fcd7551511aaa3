#include "store_test.h"
#include "vfs_quilldeck/items/access_items.h"
#include "vfs_quilldeck/items/access_root_directory.h"
#include "vfs_quilldeck/items/root_directory.h"
#include "vfs_quilldeck/items/shared_folders_container.h"
#include "vfs_quilldeck/items/shared_items.h"
#include "vfs_quilldeck/items/trash_directory.h"
#include "vfs_quilldeck/items/users_directory.h"
#include "vfs_quilldeck/session/session.h"
#include "vfs_quilldeck/wire/curl_descriptor_cache.h"
#include "vfs_quilldeck/wire/text_encoding.h"

#include <functional>
#include <set>
#include <thread>
#include <vector>

namespace vfs_quilldeck {

namespace {

// Every character whose way to the wire is not that of other clients.
const std::wstring text = L"a b&c%d+e=\x80|\x800|\U0001F58B\u00E4";
constexpr auto wire_text = "a b%26c%25d%2Be=\x80%7C%7C\xED\xA0\xBD\xED\xB6\x8B\xC3\xA4";

/// One operation, and the requests that it sends: the path unless it is that of the operations, and
/// the body, in which {id} stands for the identity of the session, {r} for the route of the family,
/// {dst_r} and {src_r} for the two routes of a copy, {owner} for whose thumbnail is asked for, and
/// {text} for `wire_text`.
struct wire_case {
    std::function<void()> act;
    std::vector<std::string> requests;
};

class wire : public store_test {
protected:
    wire() {
        vfs::item_ptr made = root_of(session)->create_and_open_file(L"wire.txt", 6, 3);
        auto& written = dynamic_cast<vfs::file&>(*made);
        written.write("abc", 3);
        written.close(0);
        for (const reply_node& node :
             session.operations_request({{L"action", L"list_dir"}, {L"dir_id", L"0"}})
                 .get_children(L"File")) {
            if (node.get_child_text(L"ID") == made->get_id()) {
                location = node.get_child_text(L"Location");
            }
        }
        const std::wstring temporary = session
                                           .operations_request({{L"action", L"open_file_upload"},
                                                                {L"file_id", made->get_id()},
                                                                {L"size", L"0"}})
                                           .get_child_text(L"TempLocation");
        temp_location = wide_to_utf8(temporary);
        // From here on the requests go to items that only exist in this reply.
        answer("<Result><Path>/v1</Path><TempLocation>" + temp_location +
               "</TempLocation><Directory><ID>8</ID><Name>new</Name></Directory>"
               "<File><ID>9</ID><TempLocation>" +
               temp_location + "</TempLocation></File></Result>");
        const vfs::user_info info = session.get_user_info();
        replaced.emplace_back("{id}",
                              "user_id=" + wide_to_utf8(info.user_id) +
                                  "&user_id_access=&user_lang=" + wide_to_utf8(info.user_lang) +
                                  "&user_level=" + wide_to_utf8(info.user_level));
        replaced.emplace_back("{text}", wire_text);
        replaced.emplace_back("{temp}", "%2F" + temp_location.substr(1));
        seen = control.log().size();
    }

    void check(const std::vector<wire_case>& cases) {
        for (const auto& [act, requests] : cases) {
            act();
            std::vector<std::string> sent;
            const auto log = control.log();
            for (; seen < log.size(); ++seen) {
                sent.push_back(log[seen].path + " " + log[seen].body);
            }
            std::vector<std::string> expected;
            for (std::string request : requests) {
                for (const auto& [placeholder, value] : replaced) {
                    for (std::size_t at; (at = request.find(placeholder)) != std::string::npos;) {
                        request.replace(at, placeholder.size(), value);
                    }
                }
                expected.push_back((request[0] == '/' ? "" : "/v1/qd_operations.php ") + request);
            }
            EXPECT_EQ(sent, expected);
        }
    }

    template <class Directory, class File>
    void check_family(const item_link& link, const std::string& route, const std::string& dst_route,
                      const std::string& src_route, const std::string& owner);

    client session = sign_in();
    std::wstring location;
    std::string temp_location;
    std::vector<std::pair<std::string, std::string>> replaced;
    std::size_t seen = 0;
};

template <class Directory, class File>
void wire::check_family(const item_link& link, const std::string& route,
                        const std::string& dst_route, const std::string& src_route,
                        const std::string& owner) {
    SCOPED_TRACE(route);
    const auto keep = replaced;
    replaced.emplace_back("{r}", route);
    replaced.emplace_back("{dst_r}", dst_route);
    replaced.emplace_back("{src_r}", src_route);
    replaced.emplace_back("{owner}", owner);
    const auto made = std::make_shared<Directory>(
        link, directory_fields{.id = L"7", .access = vfs::access_hidden});
    vfs::directory& d = *made;
    const vfs::item_ptr folder = std::make_shared<Directory>(link, directory_fields{.id = L"8"});
    const auto child =
        std::make_shared<File>(link, file_fields{.id = L"9", .location = location}, L"", 0);
    vfs::file& f = *child;
    bool is_email = false;
    char byte = 'x';
    check({
        {[&] { EXPECT_EQ(d.get_path(), L"/v1"); }, {"action=get_dir_path&dir_id=7&{r}{id}"}},
        {[&] { d.set_description(text); },
         {"action=set_dir_description&{r}dir_id=7&description={text}&{id}"}},
        {[&] { d.set_access(1); }, {"action=set_dir_access&{r}dir_id=7&access=1&{id}"}},
        {[&] { d.restore(); }, {"action=restore_dir_from_trash&dir_id=7&{id}"}},
        {[&] { d.get_items(); }, {"action=list_dir&dir_id=7&{r}{id}"}},
        {[&] { d.rename_item(folder, text); },
         {"new_name={text}&action=rename_dir&{r}dir_id=8&{id}"}},
        {[&] { d.rename_item(child, L"n"); }, {"new_name=n&action=rename_file&{r}file_id=9&{id}"}},
        {[&] { d.delete_item(folder, true); }, {"action=move_dir_to_trash&{r}dir_id=8&{id}"}},
        {[&] { d.delete_item(folder, false); }, {"action=remove_dir&{r}dir_id=8&{id}"}},
        {[&] { d.delete_item(child, true); }, {"action=move_file_to_trash&{r}file_id=9&{id}"}},
        {[&] { d.delete_item(child, false); }, {"action=remove_file&{r}file_id=9&{id}"}},
        {[&] { EXPECT_EQ(d.create_directory(L"NEW")->get_id(), L"dir_8"); },
         {"action=create_dir&{r}dir_id=7&dir_access=2&name=NEW&{id}",
          "action=list_dir&dir_id=7&{r}{id}"}},
        {[&] { d.create_file(text); },
         {"action=create_file&{r}dir_id=7&dir_access=2&name={text}&size=0&is_pro=0&{id}"}},
        {[&] { d.create_file_alloc(L"n", 5'000'000'000); },
         {"action=create_file&{r}dir_id=7&dir_access=2&name=n&size=5000000000&is_pro=0&{id}"}},
        {[&] {
             const auto made_file = d.create_and_open_file(text, 6, 3);
             dynamic_cast<vfs::file&>(*made_file).close(12'345);
         },
         {"action=create_and_open_file&{r}dir_id=7&dir_access=2&name={text}&size=3&is_pro=0&{id}",
          "action=close_file_upload&{r}file_id=9&temp_location={temp}&file_time=12345&file_size=0&"
          "is_pro=0&{id}"}},
        {[&] { EXPECT_THROW(d.create_and_open_file(L"n", 2, 0), exception); }, {}},
        {[&] { EXPECT_EQ(d.can_share_with(L"a@b.c", is_email), 0); },
         {"action=get_userid_by_name&name=a@b.c&{id}"}},
        {[&] { d.sharing(-5); },
         {"action=share_folder&sharewithuser_id=-5&dir_id=7&sharemode=0&{id}"}},
        {[&] { d.set_share_mode(3, 1); },
         {"action=change_folder_share_mode&sharedfolder_id=3&sharemode=1&{id}"}},
        {[&] { d.delete_sharing_with_user(3); },
         {"action=delete_sharing_with_user&sharedfolder_id=3&{id}"}},
        {[&] { d.get_sharewith_items(); }, {"action=list_share_whith_users&dir_id=7&{id}"}},
        {[&] { d.email_for_sharing(L"a+b@c.d"); },
         {"action=share_folder&dir_id=7&email=a%2Bb@c.d&{id}"}},

        {[&] { EXPECT_EQ(f.get_path(), L"/v1"); }, {"action=get_file_path&{r}file_id=9&{id}"}},
        {[&] { f.set_description(text); },
         {"action=set_file_description&{r}file_id=9&description={text}&{id}"}},
        {[&] { f.set_access(2); }, {"action=set_file_access&{r}file_id=9&access=2&{id}"}},
        {[&] { f.set_price(1.25); }, {"action=set_file_price&{r}file_id=9&price=1.25&{id}"}},
        {[&] { f.set_modification_date(5'000'000'000); },
         {"action=set_file_date&{r}file_id=9&file_datetime=5000000000&{id}"}},
        {[&] { f.restore(); }, {"action=restore_file_from_trash&{r}file_id=9&{id}"}},
        {[&] { f.copy(made, true); },
         {"dst_dir_id=7&{dst_r}action=copy_file&{src_r}src_file_id=9&move=1&is_pro=0&{id}"}},
        {[&] { EXPECT_FALSE(f.get_thumbnail().empty()); },
         {"/v1/qd_thumbnail.php {id}&shared_user_id={owner}&file_id=9"}},
        {[&] {
             f.open(vfs::modeRead, 0);
             EXPECT_EQ(f.read(&byte, 1), 1u);
             EXPECT_EQ(byte, 'a');
             f.close(0);
         },
         {"action=open_file_download&{r}file_id=9&is_pro=0&{id}",
          "action=close_file_download&{r}file_id=9&is_pro=0&{id}"}},
        {[&] { EXPECT_EQ(failure_of([&] { f.open(3, 0); }), L"Open failed: Invalid open mode"); },
         {"action=open_file_download&{r}file_id=9&is_pro=0&{id}"}},
        {[&] {
             f.open(6, 2);
             f.write("xy", 2);
             f.close(12'345);
         },
         {"action=open_file_upload&{r}file_id=9&size=2&is_pro=0&{id}",
          "action=close_file_upload&{r}file_id=9&temp_location={temp}&file_time=12345&file_size=2&"
          "is_pro=0&{id}"}},
    });
    replaced = keep;
}

TEST_F(wire, carries_every_action_with_its_parameters_in_order) {
    check_family<directory, file>(item_link(session), "", "", "", "");
    check_family<shared_directory, shared_file>(
        item_link(session, share_route(L"5", L"6")), "share_user_id=5&share_id=6&",
        "dst_share_user_id=5&dst_share_id=6&", "src_share_user_id=5&src_share_id=6&", "5");
    check_family<access_directory, access_file>(item_link(session, access_route(L"6")),
                                                "access_dir_id=6&", "dst_access_dir_id=6&",
                                                "src_access_dir_id=6&", "");

    replaced.emplace_back("{pcid}", wide_to_utf8(read_pc_id()));
    const item_link share(session, share_route(L"5", L"6"));
    shared_file from_share(share, {.id = L"9"}, L"", 0);
    const auto to_access = std::make_shared<access_directory>(
        item_link(session, access_route(L"4")), directory_fields{.id = L"7"});
    const auto no_folder = std::make_shared<file>(item_link(session), file_fields{}, L"", 0);
    const auto path = "/qd_get_path.php version=1.3.14.1";
    check({
        {[&] { from_share.copy(to_access, false); },
         {"dst_dir_id=7&dst_access_dir_id=4&action=copy_file&src_share_user_id=5&src_share_id=6&"
          "src_file_id=9&move=0&is_pro=0&{id}"}},
        {[&] {
             EXPECT_EQ(failure_of([&] { from_share.copy(no_folder, true); }),
                       L"Copy file failed: Wrong type of destination item");
         },
         {}},
        {[&] { root_directory(session).get_items(); },
         {"action=has_share_folders&{id}", "action=list_dir&dir_id=0&{id}"}},
        {[&] { EXPECT_EQ(access_root_directory(session).get_items().size(), 1u) << "no files"; },
         {"action=list_dir&dir_id=0&{id}"}},
        {[&] { trash_directory(session).get_items(); }, {"action=list_trash_dir&{id}"}},
        {[&] { shared_folders_container(session).get_items(); }, {"action=list_shared_users&{id}"}},
        {[&] { users_directory(session, L"n", L"5").get_items(); },
         {"action=list_shared_directories&share_user_id=5&{id}"}},
        {[&] { session.get_user_notifications(); },
         {"action=get_user_notifications&version=1.3.14.1&pro_version=&{id}"}},
        {[&] { session.get_storage_info(); }, {"action=get_storage_info&{id}"}},
        {[&] { session.get_pro_settings(); }, {"action=get_pro_settings&{id}"}},
        {[&] { session.set_pro_setting(text, 1.5); },
         {"setting_name={text}&setting_value=1.5&setting_type=2&action=set_pro_setting&{id}"}},
        {[&] { session.set_pro_setting(L"n", -7); },
         {"setting_name=n&setting_value=-7&setting_type=1&action=set_pro_setting&{id}"}},
        {[&] { session.set_pro_setting(L"n", text); },
         {"setting_name=n&setting_value={text}&setting_type=0&action=set_pro_setting&{id}"}},
        {[&] { EXPECT_EQ(session.email_request({{L"to", text}}).find(L"<Result>"), 0u); },
         {"/v1/qd_email.php to={text}&{id}"}},
        {[&] { new_profile(L"u", text, L"v", L"e", L"f", L"l"); },
         {path, "/v1/qd_profile.php action=new_profile&user_name=u&passwd={text}&verify_passwd=v&"
                "email=e&first_name=f&last_name=l"}},
        {[&] { client(L"u", text); },
         {path, "action=login&user=u&pass={text}&version=1.3.14.1&pro_version=&pcid={pcid}&"
                "user_id=&user_id_access=&user_lang=&user_level="}},
        {[&] { client(vfs::user_info{L"1&", L"2", L"3", text, L"5"}); },
         {path, "action=restore_session&user_id=1%26&user_id_access=2&user_level=5&"
                "user_lang={text}"}},
    });
}

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
