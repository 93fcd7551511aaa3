/// bench_bindings: what a look at the bindings of a user costs, which is made for each item that a
/// window paints. A settings file that did not change is loaded beside one query of its time; the
/// bindings of files of several sizes are read beside those of a smaller one.

#include "measure.h"

#include "serializer/file_serializer.h"
#include "syncer/binding_manager.h"
#include "syncer/manager.h"

#include <array>
#include <chrono>
#include <stdexcept>
#include <string>

namespace {

namespace fs = std::filesystem;

constexpr int repeats = 15;
constexpr int calls = 200;

std::wstring user_of(int count) {
    return L"bench " + std::to_wstring(count);
}

/// A user with so many bindings. The file is old: a young one is read again, as its time may not
/// show a second write.
fs::path make_user(int count) {
    syncer::binding_manager manager(user_of(count), false);
    for (int i = 0; i < count; ++i) {
        const std::wstring folder = L"letters " + std::to_wstring(i);
        manager.add_binding({L"Quilldeck/My Documents/" + folder,
                             L"C:\\Users\\ann\\Documents\\" + folder, L"",
                             syncer::binding_mode::user, syncer::binding_type::permanent, L"", 0,
                             syncer::backup_rule});
    }
    manager.save();
    fs::path path = syncer::binding_manager::get_bindings_path(user_of(count));
    fs::last_write_time(path, fs::file_time_type::clock::now() - std::chrono::hours(1));
    return path;
}

/// Microseconds of one of the calls.
double each(const std::vector<double>& seconds) {
    return bench::median(seconds) * 1e6 / calls;
}

std::string text(double microseconds) {
    return bench::fixed(microseconds, 1) + " us";
}

void look(int count) {
    for (int i = 0; i < calls; ++i) {
        if (syncer::manager::get_bindings(user_of(count)).size() !=
            static_cast<std::size_t>(count)) {
            throw std::runtime_error("a binding is missing");
        }
    }
}

void measure() {
    const fs::path path = make_user(100);
    const bench::paired_times load = bench::measure_in_turns(
        repeats,
        [&path] {
            for (int i = 0; i < calls; ++i) {
                static_cast<void>(serializer::file_serializer::load_cached(path));
            }
        },
        [&path] {
            for (int i = 0; i < calls; ++i) {
                static_cast<void>(fs::last_write_time(path));
            }
        });
    bench::report("load_cached, 100 bindings, peer the file's time", text(each(load.ours)),
                  text(each(load.peer)), load.ratio(), "at most 3", load.ratio() <= 3);

    // Ten times the bindings cost at most ten times as much; half as much again is left to chance
    // and to caches.
    constexpr double linear = 15;
    constexpr std::array counts{10, 100, 1000};
    make_user(counts[0]);
    make_user(counts[2]);
    for (std::size_t i = 1; i < counts.size(); ++i) {
        const bench::paired_times looks = bench::measure_in_turns(
            repeats, [&] { look(counts[i]); }, [&] { look(counts[i - 1]); });
        bench::report("get_bindings, " + std::to_string(counts[i]) + ", peer " +
                          std::to_string(counts[i - 1]),
                      text(each(looks.ours)), text(each(looks.peer)), looks.ratio(), "at most 15",
                      looks.ratio() <= linear);
    }
}

} // namespace

int wmain() {
    return bench::run(&measure);
}
