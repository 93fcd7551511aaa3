#include "companions.h"
#include "process_census.h"
#include "second_process.h"
#include "store_test.h"
#include "vfs_quilldeck/session/identity_block.h"
#include "vfs_quilldeck/session/session.h"
#include "vfs_quilldeck/session/session_objects.h"
#include "vfs_quilldeck/session/shared_user_info.h"
#include "vfs_quilldeck/wire/text_encoding.h"

#include <cstring>
#include <regex>
#include <set>
#include <thread>
#include <vector>

namespace vfs_quilldeck {

namespace {

using support::kill_companion;

constexpr auto not_logged_in = L"Get connection from cache failed: Not logged in";

bool session_runs() {
    return bool(utils::unique_handle(OpenEventW(SYNCHRONIZE, FALSE, session_event_name)));
}

class session : public store_test {
protected:
    session() {
        kill_companion(session_program);
        kill_companion(tray_program);
        tray.reset(CreateMutexW(nullptr, FALSE, tray_mutex_name));
    }

    ~session() override {
        tray.reset();
        kill_companion(session_program);
        kill_companion(tray_program);
    }

    /// Stands in for the tray process, which is slow to start.
    utils::unique_handle tray;
};

TEST_F(session, begins_with_an_id_of_the_machine) {
    RegDeleteKeyW(HKEY_LOCAL_MACHINE, L"Software\\Quilldeck");
    const auto failure = "store_pc_id failed: RegSetValueEx() returned error";
    const support::second_process first;
    EXPECT_EQ(first.ask("pc_id"), failure);
    EXPECT_EQ(first.ask("login demo"), failure);
    const std::string made = first.ask("ensure_pc_id");
    EXPECT_TRUE(std::regex_match(made, std::regex("[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}")));
    EXPECT_EQ(support::second_process().ask("ensure_pc_id"), made);

    // What is no text is no id.
    const DWORD number = 7;
    RegSetKeyValueW(HKEY_LOCAL_MACHINE, L"Software\\Quilldeck", L"PCID", REG_DWORD, &number,
                    sizeof(number));
    EXPECT_EQ(first.ask("pc_id"), made);
    const support::second_process second;
    EXPECT_EQ(second.ask("pc_id"), failure);
    EXPECT_NE(second.ask("ensure_pc_id"), made);
    EXPECT_EQ(second.ask("login demo"), "ok");
}

TEST_F(session, is_made_by_a_login_and_is_one_for_all_processes) {
    tray.reset();
    EXPECT_FALSE(is_logged_in(nullptr));
    EXPECT_TRUE(utils::unique_handle(OpenMutexW(SYNCHRONIZE, FALSE, tray_mutex_name)));
    EXPECT_FALSE(session_runs());
    EXPECT_EQ(failure_of([] { get_user_info(nullptr); }), L"Get user_info failed: Not logged in");
    EXPECT_EQ(failure_of([] { get_client(nullptr); }), not_logged_in);
    EXPECT_EQ(failure_of([] { login(nullptr, L"demo", L"wrong"); }),
              L"Login failed: The user name or the password is wrong.");
    EXPECT_FALSE(session_runs());
    asked();

    login(nullptr, L"demo", L"demo");
    EXPECT_EQ(failure_of([] { login(nullptr, L"anna", L"anna"); }),
              L"Login failed: Already logged in");
    const vfs::user_info demo = get_user_info(nullptr);
    EXPECT_EQ(demo.user_name, L"demo");
    const vfs::client_ptr own = get_client(nullptr);
    EXPECT_EQ(own->get_user_info(), demo);
    EXPECT_EQ(asked(), "/qd_get_path.php login");

    const support::second_process other;
    EXPECT_EQ(other.ask("get_client"), "another: demo");
    EXPECT_EQ(other.ask("get_client"), "the same");
    EXPECT_EQ(asked(), "/qd_get_path.php restore_session");
    EXPECT_EQ(other.ask("login anna"), "Login failed: Already logged in");

    const vfs::user_info anna = sign_in(L"anna").get_user_info();
    write_shared_user_info(nullptr, anna);
    asked();
    EXPECT_EQ(other.ask("get_client"), "another: anna");
    EXPECT_EQ(asked(), "/qd_get_path.php restore_session");
    // The threads of a process wait for the one that builds its client.
    std::vector<vfs::client_ptr> found(4);
    {
        std::vector<std::jthread> threads;
        for (vfs::client_ptr& client : found) {
            threads.emplace_back([&client] { client = get_client(nullptr); });
        }
    }
    EXPECT_EQ(std::set(found.begin(), found.end()).size(), 1u);
    EXPECT_EQ(asked(), "/qd_get_path.php restore_session");
    EXPECT_FALSE(root_of(dynamic_cast<client&>(*own))->get_items().empty());

    // The store knows another language: the two stay different.
    vfs::user_info in_french = anna;
    in_french.user_lang = L"fr";
    write_shared_user_info(nullptr, in_french);
    EXPECT_EQ(other.ask("get_client"), "another: anna");
    EXPECT_EQ(other.ask("get_client"), "another: anna");

    write_shared_user_info(nullptr, {});
    EXPECT_EQ(other.ask("get_client"), wide_to_utf8(not_logged_in));
}

TEST_F(session, survives_the_death_of_other_processes) {
    login(nullptr, L"demo", L"demo");
    const vfs::client_ptr first = get_client(nullptr);
    {
        const support::second_process dying;
        EXPECT_EQ(dying.ask("get_client"), "another: demo");
        EXPECT_EQ(dying.ask("hold"), "ok");
        const std::jthread reader(
            [&] { EXPECT_EQ(get_user_info(nullptr), first->get_user_info()); });
        dying.kill();
    }
    const support::second_process other;
    EXPECT_EQ(other.ask("get_client"), "another: demo");
    kill_companion(session_program);
    EXPECT_FALSE(is_logged_in(nullptr));
    EXPECT_EQ(failure_of([] { get_client(nullptr); }), not_logged_in);
    EXPECT_EQ(other.ask("get_client"), wide_to_utf8(not_logged_in));
    EXPECT_FALSE(session_runs());
    EXPECT_EQ(other.ask("login anna"), "ok");
    EXPECT_EQ(get_client(nullptr)->get_user_info().user_name, L"anna");
    EXPECT_GT(first->get_storage_info().space_used, 0) << "a client outlives its session process";
}

TEST_F(session, cuts_a_long_name_and_asks_again) {
    answer("<Result><UserID>7</UserID><UserName>" + std::string(200, 'n') + "</UserName></Result>");
    login(nullptr, L"u", L"p");
    EXPECT_EQ(get_user_info(nullptr).user_name, std::wstring(127, L'n'));
    const std::size_t before = control.log().size();
    const vfs::client_ptr rebuilt = get_client(nullptr);
    EXPECT_EQ(rebuilt->get_user_info().user_name.size(), 200u);
    EXPECT_EQ(control.log().size(), before + 2);
    EXPECT_NE(get_client(nullptr), rebuilt);
}

TEST_F(session, tells_what_of_its_objects_is_missing) {
    const utils::unique_handle event(CreateEventW(nullptr, FALSE, FALSE, session_event_name));
    const auto expect_failure = [](const std::wstring& cause) {
        const std::wstring failure = L"Internal error: Unable to store UserID: " + cause;
        EXPECT_FALSE(is_logged_in(nullptr));
        EXPECT_EQ(failure_of([] { read_shared_user_info(nullptr); }), failure);
        EXPECT_EQ(failure_of([] { login(nullptr, L"demo", L"demo"); }), failure);
        EXPECT_EQ(failure_of([] { get_client(nullptr); }), not_logged_in);
    };
    expect_failure(L"Error opening mapping");
    const utils::unique_handle mapping(CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr,
                                                          PAGE_READWRITE, 0, identity_view_size,
                                                          identity_mapping_name));
    expect_failure(L"Error opening mutex");
    const utils::unique_handle mutex(CreateMutexW(nullptr, FALSE, identity_mutex_name));
    EXPECT_EQ(failure_of([] { login(nullptr, L"demo", L"demo"); }), L"none");

    const auto elsewhere = GetModuleHandleW(L"kernel32.dll");
    tray.reset();
    const std::wstring start = L"Internal error: Unable to check/start internal processes: ";
    EXPECT_EQ(failure_of([&] { is_logged_in(elsewhere); }),
              start + L"Error creating process Quilldeck_Tray.exe");
    const auto no_module = reinterpret_cast<HMODULE>(std::uintptr_t{0x10000});
    EXPECT_EQ(failure_of([&] { login(no_module, L"demo", L"demo"); }),
              start + L"Error getting module name");
}

TEST_F(session, leaks_nothing) {
    login(nullptr, L"demo", L"demo");
    const auto use_everything = [] {
        get_client(nullptr)->get_root();
        EXPECT_TRUE(is_logged_in(nullptr));
        write_shared_user_info(nullptr, get_user_info(nullptr));
        EXPECT_THROW(login(nullptr, L"demo", L"demo"), exception);
    };
    use_everything();
    const support::process_census before = support::count_process();
    for (int i = 0; i < 20; ++i) {
        use_everything();
    }
    EXPECT_EQ(support::count_process(), before);
}

TEST(shared_user_info, cuts_texts_to_their_fields) {
    const auto texts = [](std::size_t id, std::size_t name, std::size_t word) {
        return vfs::user_info{std::wstring(id, L'\xE4'), std::wstring(id, L'b'),
                              std::wstring(name, L'\xE4'), std::wstring(word, L'd'),
                              std::wstring(word, L'e')};
    };
    for (const auto& info : {texts(0, 0, 0), texts(62, 126, 6), texts(63, 127, 7)}) {
        EXPECT_EQ(unpack(pack(info)), info);
    }
    EXPECT_EQ(unpack(pack(texts(64, 128, 8))), texts(63, 127, 7));

    // What another process wrote may end with the field itself.
    shared_user_info record;
    std::memset(&record, 'x', sizeof(record));
    const vfs::user_info info = unpack(record);
    EXPECT_EQ(info.user_id.size(), 64u);
    EXPECT_EQ(info.user_name.size(), 128u);
    EXPECT_EQ(info.user_level.size(), 8u);
}

/// What the second process does with a line.
std::string answer_line(const std::string& line) {
    static vfs::client_ptr last;
    std::string answer = "ok";
    const std::wstring failure = failure_of([&] {
        if (line == "ensure_pc_id") {
            ensure_pc_id();
            answer = wide_to_utf8(read_pc_id());
        } else if (line == "pc_id") {
            answer = wide_to_utf8(read_pc_id());
        } else if (line.starts_with("login ")) {
            const std::wstring user = utf8_to_wide(line.substr(6));
            login(nullptr, user, user);
        } else if (line == "get_client") {
            const vfs::client_ptr client = get_client(nullptr);
            answer = client == last ? "the same"
                                    : "another: " + wide_to_utf8(client->get_user_info().user_name);
            last = client;
        } else if (line == "hold") {
            const HANDLE mutex = OpenMutexW(SYNCHRONIZE, FALSE, identity_mutex_name);
            answer = WaitForSingleObject(mutex, INFINITE) == WAIT_OBJECT_0 ? "ok" : "not held";
        } else {
            answer = "unknown: " + line;
        }
    });
    return failure == L"none" ? answer : wide_to_utf8(failure);
}

} // namespace

} // namespace vfs_quilldeck

int main(int argc, char** argv) {
    support::serve_if_second(argc, argv, &vfs_quilldeck::answer_line);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
