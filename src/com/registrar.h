/// Registrar scripts: what a class writes to the registry, kept as a resource.
#pragma once

#include <windows.h>

#include <wrl/client.h>

#include <string>

struct IRegistrar;

namespace com {

/// Whether a script's entries are made or taken away.
enum class registration { add, remove };

/// The platform's own interpreter of registrar scripts. Belongs to the apartment that made it. All
/// failures are `status_exception`s.
class registrar {
public:
    registrar();
    registrar(const registrar&) = delete;
    registrar& operator=(const registrar&) = delete;
    ~registrar();

    /// Makes `%name%` in the quoted words of scripts mean `value`. Wine's interpreter knows no
    /// quotes within them.
    void replace(const wchar_t* name, const std::wstring& value);

    /// Runs a script among the resources of this module, of the type "REGISTRY".
    void run(UINT script, registration direction);

private:
    Microsoft::WRL::ComPtr<IRegistrar> registrar_;
    std::wstring module_path_;
};

} // namespace com
