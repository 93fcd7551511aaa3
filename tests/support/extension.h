/// The shell extension under test: Quilldeck_Test.dll beside the program, which differs from the
/// DLL that is shipped in the store's address only.
#pragma once

#include <windows.h>

#include <string>

namespace support {

std::wstring extension_path();

/// Runs a command line to its end and answers its code. Throws when it cannot be started.
DWORD run_command(std::wstring command);

/// Runs the platform's regsvr32, with these options, on the extension; answers its code.
DWORD run_regsvr32(const std::wstring& options = {});

/// Keeps the DLL registered in this prefix, so that COM and the shell find its classes. Throws when
/// that fails.
class registered_extension {
public:
    registered_extension();
    registered_extension(const registered_extension&) = delete;
    registered_extension& operator=(const registered_extension&) = delete;
    ~registered_extension();
};

} // namespace support
