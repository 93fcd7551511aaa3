/// bench_overlay: what the shell waits for the overlay of one item, asked as the shell asks, beside
/// one query of the time of the bindings file. Users with many bindings wait no longer.

#include "measure.h"

#include "com/object.h"
#include "local/overlay_icon.h"
#include "syncer/binding_manager.h"
#include "utils/module.h"
#include "vfs_quilldeck/session/companion_process.h"
#include "vfs_quilldeck/session/identity_block.h"

#include <array>
#include <chrono>
#include <stdexcept>
#include <string>

namespace {

namespace fs = std::filesystem;

constexpr int repeats = 15;
constexpr int calls = 2000;

std::wstring folder_of(int number) {
    return L"C:\\Users\\ann\\Documents\\letters " + std::to_wstring(number);
}

/// Signs in a user with so many bindings. The file is old: a young one is read again, as its time
/// may not show a second write.
fs::path sign_in(int count) {
    const std::wstring user = L"bench overlay " + std::to_wstring(count);
    syncer::binding_manager manager(user, false);
    for (int i = 0; i < count; ++i) {
        manager.add_binding({L"Quilldeck/My Documents/letters " + std::to_wstring(i), folder_of(i),
                             L"", syncer::binding_mode::user, syncer::binding_type::permanent, L"",
                             0, syncer::backup_rule});
    }
    manager.save();
    fs::path path = syncer::binding_manager::get_bindings_path(user);
    fs::last_write_time(path, fs::file_time_type::clock::now() - std::chrono::hours(1));
    vfs_quilldeck::ensure_tray(utils::own_module(), true);
    vfs_quilldeck::write_shared_user_info(utils::own_module(), {L"1", L"", user, L"en", L"1"});
    return path;
}

std::string text(const std::vector<double>& seconds) {
    return bench::fixed(bench::median(seconds) * 1e6 / calls, 1) + " us";
}

bool measure_with(int count, double bound) {
    const fs::path path = sign_in(count);
    const auto overlay = com::make<local::CShellOverlayIcon>();
    const std::array items{folder_of(count / 2), folder_of(count)};
    const auto ask = [&](const std::wstring& item, HRESULT expected) {
        if (overlay->IsMemberOf(item.c_str(), 0) != expected) {
            throw std::runtime_error("an overlay is wrong");
        }
    };
    const bench::paired_times times = bench::measure_in_turns(
        repeats,
        [&] {
            for (int i = 0; i < calls; i += 2) {
                ask(items[0], S_OK);
                ask(items[1], S_FALSE);
            }
        },
        [&] {
            for (int i = 0; i < calls; ++i) {
                static_cast<void>(fs::last_write_time(path));
            }
        });
    const bool kept = times.ratio() <= bound;
    bench::report("IsMemberOf, " + std::to_string(count) + " bindings, peer the file's time",
                  text(times.ours), text(times.peer), times.ratio(),
                  "at most " + bench::fixed(bound, 0), kept);
    return kept;
}

} // namespace

int wmain() {
    bool kept = true;
    const int failed = bench::run([&] {
        kept = measure_with(100, 3);
        kept = measure_with(10'000, 20) && kept;
    });
    return failed != 0 || !kept ? 1 : 0;
}
