/// bench_trash [FILES [REPEATS]]: the Trash emptied as the worker does it, with the progress
/// dialog, beside the bare requests for the same files.

#include "bench_folder.h"
#include "measure.h"

#include "com/apartment.h"
#include "transfer/delete_items.h"
#include "transfer/progress_dialog.h"
#include "vfs_quilldeck/session/pc_id.h"

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

std::shared_ptr<vfs::directory> trash_of(vfs_quilldeck::client& client) {
    const auto root = std::dynamic_pointer_cast<vfs::directory>(client.get_root());
    return std::dynamic_pointer_cast<vfs::directory>(root->find_item_by_name(L"Trash", true));
}

void fill(const bench::bench_folder& folder, int files) {
    for (int number = 0; number < files; ++number) {
        folder.item()->delete_item(folder.item()->create_file(L"file " + std::to_wstring(number)),
                                   true);
    }
}

/// What the worker does with a selection of all.
void empty(const std::shared_ptr<vfs::directory>& trash) {
    std::vector<shell::PIDLDATA> records;
    for (const vfs::item_ptr& item : trash->get_items()) {
        records.emplace_back(item);
    }
    transfer::CProgressDialog progress(nullptr);
    const transfer::started_progress shown(progress);
    ui::message_prompt prompt(nullptr, progress.get());
    transfer::CItemsDeletion(trash, true, progress, prompt).run(records);
}

void empty_bare(vfs_quilldeck::client& client) {
    const auto reply = client.operations_request({{L"action", L"list_trash_dir"}});
    for (const auto& file : reply.get_children(L"File")) {
        client.operations_request(
            {{L"action", L"remove_file"}, {L"file_id", file.get_child_text(L"ID")}});
    }
}

/// Whether the bound was kept.
bool measure_trash(int files, int repeats) {
    const com::apartment apartment;
    vfs_quilldeck::client client(L"demo", L"demo");
    const bench::bench_folder folder(client);
    const auto trash = trash_of(client);
    bench::paired_times times;
    const auto measure = [&](std::vector<double>& seconds, const std::function<void()>& work) {
        fill(folder, files);
        seconds.push_back(bench::seconds_of(work));
        if (!trash->get_items().empty()) {
            throw std::runtime_error("the Trash is not empty");
        }
    };
    empty_bare(client);
    for (int repeat = 0; repeat < repeats; ++repeat) {
        measure(times.ours, [&] { empty(trash); });
        measure(times.peer, [&] { empty_bare(client); });
    }
    const auto shown = [](const std::vector<double>& seconds) {
        return bench::fixed(bench::median(seconds), 2) + " s";
    };
    constexpr double bound = 1.1;
    bench::report("a Trash of " + std::to_string(files) + " files emptied", shown(times.ours),
                  shown(times.peer), times.ratio(), "at most " + bench::fixed(bound, 2),
                  times.ratio() <= bound);
    return times.ratio() <= bound;
}

} // namespace

int wmain(int count, wchar_t** values) {
    const std::vector<std::wstring> arguments(values + 1, values + count);
    const int files = arguments.empty() ? 1000 : std::stoi(arguments[0]);
    const int repeats = arguments.size() > 1 ? std::stoi(arguments[1]) : 3;
    return bench::run([&] {
        vfs_quilldeck::ensure_pc_id();
        // The figures of a shorter run say little.
        if (!measure_trash(files, repeats) && arguments.empty()) {
            throw std::runtime_error("a bound is missed");
        }
    });
}
