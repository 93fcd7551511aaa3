/// bench_transfer NAME [MEGABYTES [REPEATS]]: one large file and 200 small ones, up and down,
/// through the contracts and by a bare loop on the same libcurl. NAME is that of the server in the
/// report.

#include "bench_folder.h"
#include "measure.h"
#include "service_url.h"

#include "vfs/exceptions.h"
#include "vfs_quilldeck/session/pc_id.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

namespace {

constexpr int small_files = 200;
constexpr std::int64_t small_size = 4096;

std::string speed(std::int64_t bytes, const std::vector<double>& seconds) {
    const double megabytes = static_cast<double>(bytes) / (1024.0 * 1024.0);
    return bench::fixed(megabytes / bench::median(seconds), 1) + " MB/s";
}

/// A speed is at least 0.95 of the peer's.
void report_speed(const std::string& what, std::int64_t bytes, const bench::paired_times& times) {
    const double ratio = 1 / times.ratio();
    bench::report(what, speed(bytes, times.ours), speed(bytes, times.peer), ratio, "at least 0.95",
                  ratio >= 0.95);
}

/// What is left between us and a loop that reads ahead as we do are the changes of threads: at
/// least 0.9 of its speed, and what each of them costs.
void report_hand_overs(const std::string& server, std::int64_t bytes, int hand_overs,
                       const bench::paired_times& times) {
    const double ratio = 1 / times.ratio();
    const double seconds = bench::median(times.ours) - bench::median(times.peer);
    bench::report(server + ": down, peer reads ahead too", speed(bytes, times.ours),
                  speed(bytes, times.peer), ratio, "at least 0.9", ratio >= 0.9);
    std::printf("    each of %d hand-overs costs %.1f us\n", hand_overs,
                seconds / hand_overs * 1e6);
}

/// A time is at most 1.1 of the peer's: of all files together, as each way meets each file's turn.
void report_time(const std::string& what, const bench::paired_times& times) {
    const double ours = bench::sum(times.ours);
    const double peer = bench::sum(times.peer);
    const auto shown = [](double total, const std::vector<double>& seconds) {
        return bench::fixed(total, 2) + " s, longest " +
               bench::fixed(std::ranges::max(seconds) * 1000, 0) + " ms";
    };
    bench::report(what, shown(ours, times.ours), shown(peer, times.peer), ours / peer,
                  "at most 1.1", ours / peer <= 1.1);
}

void measure_large(bench::bench_folder& folder, const std::string& server, std::int64_t bytes,
                   int repeats) {
    int number = 0;
    const auto next = [&number](const wchar_t* name) {
        return name + std::to_wstring(++number);
    };
    report_speed(server + ": large file up", bytes,
                 bench::measure_in_turns(
                     repeats, [&] { folder.upload(next(L"large "), bytes); },
                     [&] { folder.upload_bare(next(L"bare "), bytes); }));
    const auto entry = folder.find(L"large 1");
    report_speed(server + ": large file down", bytes,
                 bench::measure_in_turns(
                     repeats, [&] { folder.download(entry.item); },
                     [&] { folder.download_bare(entry.id, entry.location); }));
    int hand_overs = 0;
    const auto times = bench::measure_in_turns(
        repeats, [&] { folder.download(entry.item); },
        [&] { hand_overs = folder.download_bare(entry.id, entry.location, true); });
    report_hand_overs(server, bytes, hand_overs, times);
    folder.clear();
}

void measure_small(bench::bench_folder& folder, const std::string& server) {
    int number = 0;
    const auto next = [&number] {
        return L"small " + std::to_wstring(++number);
    };
    report_time(server + ": 200 files of 4 KiB up",
                bench::measure_in_turns(
                    small_files, [&] { folder.upload(next(), small_size); },
                    [&] { folder.upload_bare(next(), small_size); }));
    const auto entry = folder.find(L"small 1");
    report_time(server + ": 200 files of 4 KiB down",
                bench::measure_in_turns(
                    small_files, [&] { folder.download(entry.item); },
                    [&] { folder.download_bare(entry.id, entry.location); }));
}

void measure_server(const std::string& server, std::int64_t megabytes, int repeats) {
    const vfs_quilldeck::client client(L"demo", L"demo");
    bench::bench_folder folder(client);
    measure_small(folder, server);
    if (megabytes > 0) {
        measure_large(folder, server, megabytes << 20U, repeats);
    }
}

} // namespace

int wmain(int count, wchar_t** values) {
    const std::vector<std::wstring> arguments(values + 1, values + count);
    const std::int64_t megabytes = arguments.empty() ? 256 : std::stoll(arguments[0]);
    const int repeats = arguments.size() > 1 ? std::stoi(arguments[1]) : 5;
    try {
        vfs_quilldeck::ensure_pc_id();
        measure_server("own server", megabytes, repeats);
        support::set_service_url(support::environment("QUILLDECK_TEST_VSFTPD_HTTPS_URL"));
        measure_server("vsftpd", megabytes, repeats);
        return 0;
    } catch (const vfs::exception& failure) {
        std::wprintf(L"%ls: %ls\n", failure.get_name().c_str(), failure.get_description().c_str());
    } catch (const std::exception& failure) {
        std::printf("%s\n", failure.what());
    }
    return 1;
}
