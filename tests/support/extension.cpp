#include "extension.h"

#include "utils/module.h"
#include "utils/unique_handle.h"

#include <stdexcept>

namespace support {

std::wstring extension_path() {
    const std::wstring program = utils::own_module_path();
    return program.substr(0, program.rfind(L'\\') + 1) + L"Quilldeck_Test.dll";
}

DWORD run_command(std::wstring command) {
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION started{};
    if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                        &startup, &started)) {
        throw std::runtime_error("a program cannot be started");
    }
    const utils::unique_handle process(started.hProcess);
    const utils::unique_handle thread(started.hThread);
    WaitForSingleObject(process.get(), INFINITE);
    DWORD code = 0;
    GetExitCodeProcess(process.get(), &code);
    return code;
}

DWORD run_regsvr32(const std::wstring& options) {
    return run_command(L"regsvr32.exe /s " + options + L" \"" + extension_path() + L'"');
}

registered_extension::registered_extension() {
    if (run_regsvr32() != 0) {
        throw std::runtime_error("the extension cannot be registered");
    }
}

registered_extension::~registered_extension() {
    run_regsvr32(L"/u");
}

} // namespace support
