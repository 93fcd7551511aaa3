/// bench_open [MEGABYTES [REPEATS]]: a document that is opened, up to the point where its program
/// would be started, with the progress dialog, the local copy, its note and its binding, beside the
/// same file read to its end and thrown away.

#include "bench_folder.h"
#include "measure.h"

#include "com/apartment.h"
#include "transfer/opening/local_copy.h"
#include "transfer/opening/temp_binding.h"
#include "transfer/progress_dialog.h"
#include "vfs_quilldeck/session/pc_id.h"

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr auto user_name = L"bench";

/// What the worker does for one document.
void open(const bench::bench_folder& folder, const shell::PIDLDATA& record) {
    transfer::CProgressDialog progress(nullptr);
    const transfer::started_progress shown(progress);
    ui::message_prompt prompt(nullptr, progress.get());
    const std::wstring path = folder.item()->get_path();
    const fs::path local =
        transfer::CLocalCopying(user_name, folder.item(), path,
                                static_cast<std::uint64_t>(record.size), progress, prompt)
            .copy(record);
    transfer::create_temp_binding(user_name, path, local);
    // The next one is no copy that is there already.
    fs::remove(local);
}

/// Whether the bound was kept.
bool measure_open(std::int64_t megabytes, int repeats) {
    const com::apartment apartment;
    const vfs_quilldeck::client client(L"demo", L"demo");
    bench::bench_folder folder(client);
    folder.upload(L"document", megabytes << 20U);
    const vfs::item_ptr item = folder.find(L"document").item;
    const shell::PIDLDATA record(item);
    const auto times = bench::measure_in_turns(
        repeats, [&] { open(folder, record); }, [&] { folder.download(item); });
    const auto speed = [megabytes](const std::vector<double>& seconds) {
        return bench::fixed(static_cast<double>(megabytes) / bench::median(seconds), 1) + " MB/s";
    };
    constexpr double bound = 0.9;
    const double ratio = 1 / times.ratio();
    bench::report(std::to_string(megabytes) + " MB opened", speed(times.ours), speed(times.peer),
                  ratio, "at least " + bench::fixed(bound, 2), ratio >= bound);
    return ratio >= bound;
}

} // namespace

int wmain(int count, wchar_t** values) {
    const std::vector<std::wstring> arguments(values + 1, values + count);
    const std::int64_t megabytes = arguments.empty() ? 64 : std::stoll(arguments[0]);
    const int repeats = arguments.size() > 1 ? std::stoi(arguments[1]) : 5;
    return bench::run([&] {
        vfs_quilldeck::ensure_pc_id();
        // The figures of a shorter run say little.
        if (!measure_open(megabytes, repeats) && arguments.empty()) {
            throw std::runtime_error("a bound is missed");
        }
    });
}
