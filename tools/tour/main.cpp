/// tour [FOLDER [USER PASSWORD]]: signs in, copies a folder of files into the store and back,
/// shares it, and compares. The exit code is 0 when all were equal, 1 for a difference or a
/// failure, 2 for a call that is not understood.

#include "console.h"
#include "local_folder.h"
#include "tour.h"

#include "vfs/exceptions.h"
#include "vfs_quilldeck/session/client.h"
#include "vfs_quilldeck/session/pc_id.h"
#include "vfs_quilldeck/session/session.h"
#include "vfs_quilldeck/wire/service_url.h"

#include <windows.h>

#include <exception>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace {

std::wstring widen(const char* text) {
    return std::filesystem::path(text).wstring();
}

int run_tour(const std::vector<std::wstring>& arguments) {
    const auto folder =
        arguments.empty() ? tour::find_sample_folder() : std::filesystem::path(arguments[0]);
    const bool named_user = arguments.size() == 3;
    const std::wstring user = named_user ? arguments[1] : L"demo";
    const std::wstring password = named_user ? arguments[2] : L"demo";

    const HMODULE module = GetModuleHandleW(nullptr);
    vfs_quilldeck::ensure_pc_id();
    if (!vfs_quilldeck::is_logged_in(module)) {
        tour::print(L"Signing in at " + widen(vfs_quilldeck::get_service_url()) + L" as " + user);
        vfs_quilldeck::login(module, user, password);
    }
    const vfs::client_ptr client = vfs_quilldeck::get_client(module);
    const tour::summary total =
        tour::run(*client, folder, [](const std::wstring& name, const std::wstring& secret) {
            return std::make_shared<vfs_quilldeck::client>(name, secret);
        });
    tour::print(L"tour: " + std::to_wstring(total.files) + L" files, " +
                std::to_wstring(total.bytes) + L" bytes, all equal");
    return 0;
}

} // namespace

int wmain(int count, wchar_t** values) {
    const std::vector<std::wstring> arguments(values + 1, values + count);
    if (arguments.size() > 3 || arguments.size() == 2) {
        tour::print(L"usage: tour [FOLDER [USER PASSWORD]]");
        return 2;
    }
    try {
        return run_tour(arguments);
    } catch (const vfs::exception& failure) {
        tour::print(L"tour failed: " + failure.get_name() + L": " + failure.get_description());
    } catch (const std::exception& failure) {
        tour::print(L"tour failed: " + widen(failure.what()));
    } catch (const std::wstring& failure) {
        tour::print(L"tour failed: " + failure);
    }
    return 1;
}
