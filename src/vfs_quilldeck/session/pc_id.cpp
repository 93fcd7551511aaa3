#include "vfs_quilldeck/session/pc_id.h"

#include "utils/slim_lock.h"
#include "utils/unique_handle.h"
#include "vfs_quilldeck/wire/exceptions.h"

#include <windows.h>

#include <rpc.h>

#include <array>
#include <mutex>

namespace vfs_quilldeck {

namespace {

utils::slim_lock pc_id_mutex;
std::wstring pc_id;

constexpr auto key_name = L"Software\\Quilldeck";
constexpr auto value_name = L"PCID";

utils::unique_registry_key open_registry_key(REGSAM access) {
    utils::unique_registry_key key;
    if (RegCreateKeyExW(HKEY_LOCAL_MACHINE, key_name, 0, nullptr, 0, access, nullptr, key.put(),
                        nullptr) != ERROR_SUCCESS) {
        throw exception(L"open_registry_key failed", L"RegCreateKeyEx() returned error");
    }
    return key;
}

/// Reading and writing fail in the same words: support knows them as one failure.
[[noreturn]] void fail_value() {
    throw exception(L"store_pc_id failed", L"RegSetValueEx() returned error");
}

/// With `pc_id_mutex` held.
std::wstring get_pc_id() {
    if (pc_id.empty()) {
        const utils::unique_registry_key key = open_registry_key(KEY_READ);
        std::array<wchar_t, 40> text{};
        DWORD size = sizeof(text);
        // RRF_RT_REG_SZ: the text is terminated whatever stands in the registry.
        if (RegGetValueW(key.get(), nullptr, value_name, RRF_RT_REG_SZ, nullptr, text.data(),
                         &size) != ERROR_SUCCESS) {
            fail_value();
        }
        pc_id = text.data();
    }
    return pc_id;
}

void store_pc_id(const std::wstring& id) {
    const utils::unique_registry_key key = open_registry_key(KEY_ALL_ACCESS);
    const auto size = static_cast<DWORD>((id.size() + 1) * sizeof(wchar_t));
    if (RegSetValueExW(key.get(), value_name, 0, REG_SZ, reinterpret_cast<const BYTE*>(id.c_str()),
                       size) != ERROR_SUCCESS) {
        fail_value();
    }
}

std::wstring generate_pc_id() {
    const auto require = [](RPC_STATUS status, const wchar_t* failure) {
        if (status != RPC_S_OK) {
            throw exception(L"generate_pc_id failed", failure);
        }
    };
    UUID uuid{};
    require(UuidCreate(&uuid), L"UuidCreate() returned error");
    RPC_WSTR text = nullptr;
    require(UuidToStringW(&uuid, &text), L"UuidToString() returned error");
    std::wstring id(reinterpret_cast<const wchar_t*>(text));
    require(RpcStringFreeW(&text), L"RpcStringFree() returned error");
    return id;
}

} // namespace

void ensure_pc_id() {
    const std::lock_guard guard(pc_id_mutex);
    try {
        get_pc_id();
    } catch (const vfs::exception&) {
        store_pc_id(generate_pc_id());
    }
}

std::wstring read_pc_id() {
    const std::lock_guard guard(pc_id_mutex);
    return get_pc_id();
}

} // namespace vfs_quilldeck
