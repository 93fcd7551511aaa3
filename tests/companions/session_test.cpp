#include "companions/companion_program.h"
#include "companions/identity.h"
#include "running_program.h"
#include "vfs_quilldeck/session/companion_process.h"
#include "vfs_quilldeck/session/identity_block.h"
#include "vfs_quilldeck/session/session_objects.h"
#include "vfs_quilldeck/session/shared_user_info.h"
#include "vfs_quilldeck/wire/program_version.h"

#include <gtest/gtest.h>
#include <sddl.h>

#include <algorithm>
#include <cstring>
#include <memory>

namespace companions_test {

namespace {

using namespace vfs_quilldeck;
using utils::unique_handle;

constexpr auto held_event_name = L"Local\\companions_test_held";
const vfs::user_info anna{L"4711", L"access-17", L"Änna \U0001F58B", L"en", L"2"};

unique_handle open_mutex(const wchar_t* name) {
    return unique_handle(OpenMutexW(SYNCHRONIZE | MUTEX_MODIFY_STATE, FALSE, name));
}

unique_handle open_mapping(const wchar_t* name) {
    return unique_handle(OpenFileMappingW(FILE_MAP_ALL_ACCESS, FALSE, name));
}

bool session_runs() {
    return ensure_session(nullptr, false);
}

/// Whether `size` bytes of the mapping can be mapped, and all are zero.
bool is_zero(const wchar_t* name, std::size_t size) {
    const unique_handle mapping = open_mapping(name);
    const utils::unique_view view(MapViewOfFile(mapping.get(), FILE_MAP_ALL_ACCESS, 0, 0, size));
    const auto* const bytes = static_cast<const char*>(view.get());
    return bytes && std::count(bytes, bytes + size, 0) == static_cast<std::ptrdiff_t>(size);
}

/// A running session process, and nothing left of one before.
class session : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(eventually([] {
            return !open_mutex(identity_mutex_name) && !open_mutex(transfer_mutex_name) &&
                   !open_mapping(identity_mapping_name) && !open_mapping(save_as_mapping_name);
        }));
        ASSERT_FALSE(session_runs());
        process_ = std::make_unique<running_program>(beside_us(session_program));
        // No pause: whoever sees the event opens the rest at once.
        for (const ULONGLONG end = GetTickCount64() + 20'000; !session_runs();) {
            ASSERT_LT(GetTickCount64(), end);
        }
    }

    HWND window() const { return process_->window(companions::session_window_class); }

    std::unique_ptr<running_program> process_;
};

TEST_F(session, owns_the_shared_objects_once_while_it_runs) {
    EXPECT_TRUE(is_zero(identity_mapping_name, identity_view_size));
    EXPECT_TRUE(is_zero(save_as_mapping_name, save_as_view_size));
    EXPECT_FALSE(is_zero(save_as_mapping_name, save_as_view_size + 1));
    EXPECT_TRUE(open_mutex(transfer_mutex_name));
    EXPECT_TRUE(unique_handle(OpenEventW(EVENT_MODIFY_STATE, FALSE, login_dialog_event_name)));
    write_shared_user_info(nullptr, anna);
    EXPECT_EQ(running_program(beside_us(session_program)).wait(), 2u);
    EXPECT_EQ(read_shared_user_info(nullptr), anna);

    EXPECT_EQ(ask_to_exit(session_program), 0u);
    EXPECT_FALSE(session_runs());
    EXPECT_EQ(process_->wait(), 0u);
}

TEST_F(session, signs_off_when_it_gets_the_mutex_and_hears_messages_until_then) {
    write_shared_user_info(nullptr, anna);
    const unique_handle mapping = open_mapping(identity_mapping_name);
    const utils::unique_view view(
        MapViewOfFile(mapping.get(), FILE_MAP_ALL_ACCESS, 0, 0, identity_view_size));
    const unique_handle held(CreateEventW(nullptr, FALSE, FALSE, held_event_name));
    const running_program holder(beside_us(L"companions_test.exe"),
                                 L"companions_test --hold-identity-mutex");
    ASSERT_EQ(WaitForSingleObject(held.get(), 20'000), WAIT_OBJECT_0);
    EXPECT_EQ(companions::read_identity(), std::nullopt);
    companions::request_sign_off();
    // Both answers come from its loop, so that it has the request by the second one.
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(SendMessageW(window(), WM_QUERYENDSESSION, 0, 0), LRESULT{TRUE});
    }
    EXPECT_EQ(unpack(*static_cast<const shared_user_info*>(view.get())), anna);
    holder.kill(); // the mutex is abandoned
    EXPECT_TRUE(eventually([] { return read_shared_user_info(nullptr) == vfs::user_info{}; }));
}

TEST_F(session, ends_with_the_logon_session_even_when_the_mutex_is_stuck) {
    SendMessageW(window(), WM_ENDSESSION, FALSE, 0);
    EXPECT_NE(window(), nullptr);
    const unique_handle mutex = open_mutex(identity_mutex_name);
    ASSERT_EQ(WaitForSingleObject(mutex.get(), 10'000), WAIT_OBJECT_0);
    companions::request_sign_off();
    SendMessageW(window(), WM_ENDSESSION, TRUE, 0);
    EXPECT_EQ(process_->wait(), 0u);
}

TEST_F(session, starts_with_nobody_signed_in_after_one_that_died) {
    write_shared_user_info(nullptr, anna);
    // A reader that keeps the dead one's block.
    const unique_handle mapping = open_mapping(identity_mapping_name);
    process_->kill();
    EXPECT_TRUE(eventually([] { return !session_runs(); }));
    EXPECT_EQ(read_shared_user_info(nullptr), vfs::user_info{}); // this starts the next one
    EXPECT_EQ(ask_to_exit(session_program), 0u);
}

TEST_F(session, takes_its_own_path_for_no_argument_and_refuses_others) {
    EXPECT_EQ(ask_to_exit(session_program), 0u);
    const auto path = beside_us(L"with a blank.exe");
    copy_file(beside_us(session_program), path, std::filesystem::copy_options::overwrite_existing);
    {
        const running_program unquoted(path, path.wstring());
        EXPECT_TRUE(eventually(session_runs));
    }
    remove(path);

    const running_program wrong(beside_us(session_program), L"session --exti");
    ASSERT_TRUE(eventually([&] { return wrong.window(L"#32770") != nullptr; }));
    PostMessageW(wrong.window(L"#32770"), WM_CLOSE, 0, 0);
    EXPECT_EQ(wrong.wait(), 1u);
}

/// Who may do what with an object, in the platform's notation.
std::wstring security_of(const unique_handle& object) {
    constexpr SECURITY_INFORMATION parts = DACL_SECURITY_INFORMATION | LABEL_SECURITY_INFORMATION;
    char bytes[1024];
    DWORD size = 0;
    LPWSTR text = nullptr;
    if (!GetKernelObjectSecurity(object.get(), parts, bytes, sizeof(bytes), &size) ||
        !ConvertSecurityDescriptorToStringSecurityDescriptorW(bytes, SDDL_REVISION_1, parts, &text,
                                                              nullptr)) {
        return L"none";
    }
    const std::wstring copy(text);
    LocalFree(text);
    return copy;
}

TEST(session_objects, are_the_users_and_keep_no_folder_of_who_started_first) {
    const auto folder = std::filesystem::temp_directory_path() / L"starter";
    create_directory(folder);
    const running_program session(beside_us(session_program), {}, folder);
    ASSERT_TRUE(eventually(session_runs));
    EXPECT_TRUE(RemoveDirectoryW(folder.c_str())) << GetLastError();
    const unique_handle mutex(CreateMutexW(nullptr, FALSE, L"Local\\Quilldeck_Mutex_Session"));
    const unique_handle dialog(OpenEventW(EVENT_ALL_ACCESS, FALSE, login_dialog_event_name));
    const unique_handle log_off(OpenEventW(EVENT_ALL_ACCESS, FALSE, session_event_name));
    const unique_handle identity_mutex(OpenMutexW(MUTEX_ALL_ACCESS, FALSE, identity_mutex_name));
    const unique_handle transfers(OpenMutexW(MUTEX_ALL_ACCESS, FALSE, transfer_mutex_name));
    const unique_handle identity = open_mapping(identity_mapping_name);
    const unique_handle save_as = open_mapping(save_as_mapping_name);
    for (const auto* object :
         {&mutex, &dialog, &log_off, &identity_mutex, &transfers, &identity, &save_as}) {
        const std::wstring security = security_of(*object);
        EXPECT_TRUE(security.starts_with(L"D:P(A;;GA;;;SY)(A;;GA;;;S-1-5-21-")) << security;
    }
}

TEST(companion_files, carry_the_version_that_the_service_is_told) {
    for (const auto program : {session_program, tray_program}) {
        char data[4096];
        ASSERT_TRUE(GetFileVersionInfoW(beside_us(program).c_str(), 0, sizeof(data), data));
        void* value = nullptr;
        UINT length = 0;
        ASSERT_TRUE(
            VerQueryValueW(data, L"\\StringFileInfo\\040904B0\\FileVersion", &value, &length));
        EXPECT_STREQ(static_cast<const wchar_t*>(value), program_version);
    }
}

} // namespace

} // namespace companions_test

/// The second process of a test waits for the block's mutex and keeps it until it is killed.
int main(int argc, char** argv) {
    if (argc == 2 && std::strcmp(argv[1], "--hold-identity-mutex") == 0) {
        const auto mutex = companions_test::open_mutex(vfs_quilldeck::identity_mutex_name);
        WaitForSingleObject(mutex.get(), INFINITE);
        SetEvent(OpenEventW(EVENT_MODIFY_STATE, FALSE, companions_test::held_event_name));
        Sleep(INFINITE);
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
