#include "extension.h"
#include "second_process.h"
#include "user_files.h"

#include "com/apartment.h"
#include "com/class_ids.h"
#include "resources/resource_ids.h"
#include "syncer/manager.h"
#include "utils/module.h"
#include "utils/named_mutex.h"
#include "vfs_quilldeck/session/companion_process.h"
#include "vfs_quilldeck/session/identity_block.h"

#include <gtest/gtest.h>
#include <shlobj.h>
#include <wrl/client.h>

#include <atomic>
#include <chrono>
#include <cwchar>
#include <thread>
#include <vector>

namespace local {

namespace {

using Microsoft::WRL::ComPtr;
using syncer::binding;
using syncer::binding_manager;

void sign_in(const std::wstring& user_name) {
    vfs_quilldeck::ensure_tray(utils::own_module(), true);
    const wchar_t* const id = user_name.empty() ? L"" : L"7";
    vfs_quilldeck::write_shared_user_info(utils::own_module(), {id, L"", user_name, L"en", L"1"});
}

ComPtr<IShellIconOverlayIdentifier> make_overlay() {
    ComPtr<IShellIconOverlayIdentifier> overlay;
    com::check(CoCreateInstance(com::CLSID_ShellOverlayIcon, nullptr, CLSCTX_INPROC_SERVER,
                                IID_IShellIconOverlayIdentifier, &overlay));
    return overlay;
}

void save(const std::wstring& user_name, const std::vector<binding>& bindings) {
    binding_manager manager(user_name, false);
    for (const binding& each : bindings) {
        manager.add_binding(each);
    }
    manager.commit();
}

binding of(const wchar_t* local, const wchar_t* filename, syncer::binding_type type,
           syncer::binding_mode mode = syncer::binding_mode::user) {
    return {L"Quilldeck/x", local, filename, mode, type, L"", 0, {}};
}

/// As if it had been written long ago: then it is not read again for each question.
void age(const std::filesystem::path& file) {
    std::filesystem::last_write_time(file, std::filesystem::file_time_type::clock::now() -
                                               std::chrono::hours(1));
}

class overlay : public testing::Test {
protected:
    ~overlay() override { sign_in(L""); }

    support::registered_extension registration;
    com::apartment apartment;
    syncer::test_user user;
    ComPtr<IShellIconOverlayIdentifier> icon = make_overlay();
};

TEST_F(overlay, is_on_what_a_permanent_binding_names_and_on_nothing_else) {
    using enum syncer::binding_type;
    const std::wstring deep = L"D:\\" + std::wstring(300, L'n') + L"\\..\\a b";
    const std::vector<binding> bindings = {
        of(L"C:\\Data", L"", permanent),
        of(L"D:/a", L"", permanent),
        of(L"C:\\Users\\ann", L"letter.txt", permanent),
        of(L"C:\\", L"root.txt", permanent),
        of(L"C:\\Edited", L"copy.txt", permanent, syncer::binding_mode::edited_copy),
        of(L"C:\\Temporary", L"", temporary),
        of(deep.c_str(), L"", permanent),
    };
    const std::vector<std::pair<std::wstring, HRESULT>> cases = {
        {L"C:\\Data", S_OK},
        {L"C:/Data", S_OK},
        {L"D:\\a", S_OK},
        {L"C:\\Users\\ann\\letter.txt", S_OK},
        {L"C:\\root.txt", S_OK},
        {L"C:\\Edited\\copy.txt", S_OK},
        {deep, S_OK},
        {L"c:\\data", S_FALSE},
        {L"C:\\Data\\", S_FALSE},
        {L"C:\\Data\\inside.txt", S_FALSE},
        {L"C:\\Dat", S_FALSE},
        {L"C:\\Users\\ann", S_FALSE},
        {L"C:\\Temporary", S_FALSE},
        {deep + L"c", S_FALSE},
        {L"", S_FALSE},
    };
    const auto expect = [&](bool signed_in, const char* when) {
        for (const auto& [path, bound] : cases) {
            EXPECT_EQ(icon->IsMemberOf(path.c_str(), 0), signed_in ? bound : S_FALSE)
                << when << ": " << std::string(path.begin(), path.end());
        }
        EXPECT_EQ(icon->IsMemberOf(nullptr, 0), S_FALSE);
    };
    sign_in(user.name());
    EXPECT_EQ(icon->IsMemberOf(L"C:\\Data", 0), S_FALSE) << "no file yet";
    save(user.name(), bindings);
    expect(true, "a young file");
    age(user.file());
    expect(true, "an old file");
    {
        // Whoever saves may be slow: a file that did not change is asked for no longer than its
        // time.
        support::second_process other;
        ASSERT_EQ(other.ask("hold"), "held");
        expect(true, "while another process holds the bindings");
    }
    // The sign-off and another user show at the next question.
    sign_in(L"");
    expect(false, "signed off");
    sign_in(L"somebody else");
    expect(false, "somebody else");
    sign_in(user.name());
    expect(true, "signed in again");
    user.write("<sync_bindings><binding>");
    expect(false, "a broken file");
    save(user.name(), {});
    expect(false, "no bindings");
    std::filesystem::remove(user.file());
    expect(false, "no file any more");
    save(user.name(), bindings);
    expect(true, "all of them again");
}

TEST_F(overlay, is_steady_on_several_threads_while_another_process_saves) {
    sign_in(user.name());
    save(user.name(), {of(L"C:\\Kept", L"", syncer::binding_type::permanent)});
    std::atomic<bool> done = false;
    std::atomic<int> asked = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            const com::apartment own;
            const auto own_icon = make_overlay();
            while (!done) {
                EXPECT_EQ(own_icon->IsMemberOf(L"C:\\Kept", 0), S_OK);
                EXPECT_EQ(own_icon->IsMemberOf(L"C:\\Never", 0), S_FALSE);
                const HRESULT toggled = own_icon->IsMemberOf(L"C:\\Toggled", 0);
                EXPECT_TRUE(toggled == S_OK || toggled == S_FALSE);
                ++asked;
            }
        });
    }
    // It saves a binding and takes it away, many times, and is kept from none of its saves.
    EXPECT_EQ(support::second_process().ask("toggle"), "toggled");
    done = true;
    for (std::thread& each : threads) {
        each.join();
    }
    EXPECT_GT(asked, 4);
    EXPECT_EQ(icon->IsMemberOf(L"C:\\Toggled", 0), S_OK) << "what the other one saved last";
}

TEST_F(overlay, tells_its_icon_and_its_place) {
    std::wstring file(MAX_PATH, L'?');
    int index = 0;
    DWORD flags = 0;
    ASSERT_EQ(icon->GetOverlayInfo(file.data(), MAX_PATH, &index, &flags), S_OK);
    EXPECT_STREQ(file.c_str(), support::extension_path().c_str());
    EXPECT_EQ(index, 3);
    EXPECT_EQ(flags, 3U);
    const int length = static_cast<int>(std::wcslen(file.c_str()));
    EXPECT_TRUE(FAILED(icon->GetOverlayInfo(file.data(), length, &index, &flags)));
    EXPECT_EQ(icon->GetOverlayInfo(nullptr, MAX_PATH, &index, &flags), E_POINTER);
    int priority = 7;
    EXPECT_EQ(icon->GetPriority(&priority), S_OK);
    EXPECT_EQ(priority, 0);

    // Icons have their places by their numbers.
    std::vector<std::intptr_t> ids;
    const HMODULE module = GetModuleHandleW(support::extension_path().c_str());
    EnumResourceNamesW(
        module, RT_GROUP_ICON,
        [](HMODULE, LPCWSTR, LPWSTR name, LONG_PTR found) -> BOOL {
            reinterpret_cast<std::vector<std::intptr_t>*>(found)->push_back(
                reinterpret_cast<std::intptr_t>(name));
            return TRUE;
        },
        reinterpret_cast<LONG_PTR>(&ids));
    ASSERT_GT(ids.size(), 3U);
    EXPECT_EQ(ids[3], IDI_BOUND);

    // The dispatch interface of the type library, which has no operations.
    ComPtr<IDispatch> dispatch;
    ASSERT_EQ(icon.As(&dispatch), S_OK);
    ComPtr<IUnknown> companion;
    EXPECT_EQ(icon->QueryInterface(com::IID_IShellOverlayIcon, &companion), S_OK);
    ComPtr<ITypeInfo> info;
    EXPECT_EQ(dispatch->GetTypeInfo(0, 0, &info), S_OK);
    EXPECT_EQ(dispatch->GetTypeInfo(1, 0, &info), DISP_E_BADINDEX);
    wchar_t name[] = L"IsMemberOf";
    LPOLESTR names[] = {name};
    DISPID id = 0;
    EXPECT_EQ(dispatch->GetIDsOfNames(IID_NULL, names, 1, 0, &id), DISP_E_UNKNOWNNAME);
}

/// In the other process. "hold": keeps the bindings' mutex until its end. "toggle": as the test
/// tells.
std::string answer(const std::string& line) {
    const std::wstring user = L"\u00FCser of a test";
    if (line == "hold") {
        static utils::named_mutex mutex(binding_manager::mutex_name(user));
        mutex.lock();
        return "held";
    }
    constexpr int rounds = 201;
    const binding toggled = of(L"C:\\Toggled", L"", syncer::binding_type::permanent);
    for (int round = 0; round < rounds; ++round) {
        binding_manager manager(user, true);
        round % 2 == 0 ? manager.add_binding(toggled) : manager.remove_binding(toggled);
        manager.commit();
    }
    return "toggled";
}

} // namespace

} // namespace local

int main(int argc, char** argv) {
    support::serve_if_second(argc, argv, [](const std::string& line) {
        try {
            return local::answer(line);
        } catch (const std::exception& failure) {
            return std::string("failed: ") + failure.what();
        }
    });
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
