/// bench_unload: how long whoever unloads the extension waits for it, with four connections that
/// are idle and a store that has stopped, beside a life in which nobody asked the store. The
/// platform loads and unloads nothing else meanwhile.

#include "measure.h"
#include "service_url.h"
#include "stopped_store.h"

#include "com/apartment.h"
#include "com/class_ids.h"
#include "com/memory.h"
#include "utils/module.h"
#include "vfs_quilldeck/session/pc_id.h"
#include "vfs_quilldeck/session/session.h"

#include <shlobj.h>
#include <wrl/client.h>

#include <array>
#include <cstdio>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Microsoft::WRL::ComPtr;

constexpr int repeats = 5;
constexpr double bound_seconds = 0.05;

/// The extension in this process until `unload`.
class extension {
public:
    extension() {
        const std::wstring program = utils::own_module_path();
        m_handle = LoadLibraryW(
            (program.substr(0, program.rfind(L'\\') + 1) + L"Quilldeck_Test.dll").c_str());
        if (m_handle == nullptr) {
            throw std::runtime_error("the extension cannot be loaded");
        }
    }

    ComPtr<IShellFolder> make_drive() const {
        using get_class_object = HRESULT WINAPI(REFCLSID, REFIID, void**);
        auto* const get = reinterpret_cast<get_class_object*>(
            reinterpret_cast<void (*)()>(GetProcAddress(m_handle, "DllGetClassObject")));
        ComPtr<IClassFactory> factory;
        com::check(get(com::CLSID_ShellFolderImpl, IID_PPV_ARGS(&factory)));
        ComPtr<IShellFolder> drive;
        com::check(factory->CreateInstance(nullptr, IID_PPV_ARGS(&drive)));
        return drive;
    }

    void unload() const { FreeLibrary(m_handle); }

private:
    HMODULE m_handle = nullptr;
};

com::unique_id_list parse(IShellFolder& folder, std::wstring name) {
    ITEMIDLIST* list = nullptr;
    com::check(folder.ParseDisplayName(nullptr, nullptr, name.data(), nullptr, &list, nullptr));
    return com::unique_id_list(list);
}

/// Reads one picture four times at once, each to its end.
void use_connections(IShellFolder& drive) {
    ComPtr<IShellFolder> folder;
    com::check(drive.BindToObject(parse(drive, L"Pictures").get(), nullptr, IID_PPV_ARGS(&folder)));
    const auto picture = parse(*folder.Get(), L"Dusk.jpg");
    std::array<ComPtr<IStream>, 4> streams;
    char bytes[65536];
    for (auto& stream : streams) {
        com::check(folder->BindToObject(picture.get(), nullptr, IID_PPV_ARGS(&stream)));
        com::check(stream->Read(bytes, 1, nullptr));
    }
    for (const auto& stream : streams) {
        ULONG count = 0;
        do {
            com::check(stream->Read(bytes, sizeof(bytes), &count));
        } while (count > 0);
    }
}

double seconds_of_unloading(bool with_connections) {
    const extension loaded;
    std::optional<support::stopped_store> silent;
    {
        const ComPtr<IShellFolder> drive = loaded.make_drive();
        if (with_connections) {
            use_connections(*drive.Get());
            silent.emplace();
        }
    }
    return bench::seconds_of([&] { loaded.unload(); });
}

void measure() {
    const com::apartment apartment;
    vfs_quilldeck::ensure_pc_id();
    vfs_quilldeck::login(utils::own_module(), L"demo", L"demo");
    bench::paired_times times;
    for (int i = 0; i < repeats; ++i) {
        times.ours.push_back(seconds_of_unloading(true));
        times.peer.push_back(seconds_of_unloading(false));
    }
    const auto figure = [](const std::vector<double>& seconds) {
        return bench::fixed(bench::median(seconds) * 1e3, 1) + " ms";
    };
    bench::report("FreeLibrary with 4 idle connections, peer none", figure(times.ours),
                  figure(times.peer), times.ratio(),
                  "at most " + bench::fixed(bound_seconds * 1e3, 0) + " ms",
                  bench::median(times.ours) <= bound_seconds);
}

} // namespace

int wmain() {
    try {
        return bench::run(measure);
    } catch (const com::status_exception& failure) {
        std::printf("%lx\n", static_cast<unsigned long>(failure.status()));
        return 1;
    }
}
