#include "login_fixture.h"

#include "dialogs/login/sign_in.h"
#include "vfs_quilldeck/session/companion_process.h"
#include "vfs_quilldeck/session/identity_block.h"
#include "vfs_quilldeck/session/pc_id.h"
#include "vfs_quilldeck/session/session_objects.h"

#include <iomanip>
#include <sstream>

namespace dialogs {

namespace {

std::string registry_value(const wchar_t* key, const wchar_t* name) {
    unsigned char bytes[1024];
    DWORD size = sizeof(bytes);
    DWORD type = 0;
    if (RegGetValueW(HKEY_CURRENT_USER, key, name, RRF_RT_ANY, &type, bytes, &size)) {
        return "none\n";
    }
    std::ostringstream text;
    text << type << ':' << std::hex << std::setfill('0');
    for (DWORD i = 0; i < size; ++i) {
        text << ' ' << std::setw(2) << int{bytes[i]};
    }
    return text.str() + "\n";
}

} // namespace

std::string registry() {
    return registry_value(settings_key, L"SavePass") + registry_value(settings_key, L"AutoLogin") +
           registry_value(credentials_key, L"Data1");
}

std::string values(int save_password, int auto_login, const std::string& credentials) {
    const auto flag = [](int value) {
        return "4: 0" + std::to_string(value) + " 00 00 00\n";
    };
    return flag(save_password) + flag(auto_login) + "3: " + credentials + "\n";
}

void set_flag(const wchar_t* name, DWORD value) {
    RegSetKeyValueW(HKEY_CURRENT_USER, settings_key, name, REG_DWORD, &value, sizeof(value));
}

std::future<bool> need_store() {
    return std::async(std::launch::async, [] {
        utils::named_mutex mutex(vfs_quilldeck::login_mutex_name);
        return ensure_logged_in(mutex, nullptr);
    });
}

login_test::login_test()
    : tray_(CreateMutexW(nullptr, FALSE, vfs_quilldeck::tray_mutex_name)),
      event_(CreateEventW(nullptr, FALSE, FALSE, vfs_quilldeck::login_dialog_event_name)) {
    vfs_quilldeck::ensure_pc_id();
    if (vfs_quilldeck::ensure_session(nullptr, false)) {
        vfs_quilldeck::write_shared_user_info(nullptr, {});
    }
    RegDeleteTreeW(HKEY_CURRENT_USER, settings_key);
    RegDeleteTreeW(HKEY_CURRENT_USER, credentials_key);
    waiting_was_told();
}

bool login_test::waiting_was_told() const {
    return WaitForSingleObject(event_.get(), 0) == WAIT_OBJECT_0;
}

} // namespace dialogs
