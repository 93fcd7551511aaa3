/// bench_data_object [MEGABYTES [REPEATS]]: what a consumer pays for taking files out of the drive.
/// The table of 10,000 files in 100 folders beside the listings that it is made of, and one large
/// file through its stream beside the file itself.

#include "bench_folder.h"
#include "measure.h"

#include "com/clipboard_formats.h"
#include "com/media.h"
#include "shell_items/item_id_list.h"
#include "transfer/data_object/data_object.h"
#include "transfer/format_values.h"
#include "vfs_quilldeck/session/pc_id.h"

#include <ole2.h>
#include <shlobj.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Microsoft::WRL::ComPtr;

constexpr UINT nested_items = 10'101;
constexpr ULONG step = 16384;

ComPtr<IDataObject> make_object(const vfs::item_ptr& folder, const vfs::item_ptr& child) {
    const com::unique_id_list list = shell::CItemIDList(shell::PIDLDATA(child)).to_list();
    const ITEMIDLIST* const items[] = {list.get()};
    ComPtr<IDataObject> made;
    com::check(transfer::create_data_object(folder, {}, {}, nullptr, items, IID_PPV_ARGS(&made)));
    return made;
}

com::medium get(IDataObject& object, UINT format, TYMED kind, LONG index = -1) {
    FORMATETC request = transfer::format_of(format, kind, index);
    com::medium taken;
    com::check(object.GetData(&request, taken.put()));
    return taken;
}

void describe(const vfs::item_ptr& folder, const vfs::item_ptr& child) {
    const auto object = make_object(folder, child);
    const auto table =
        get(*object.Get(), com::registered_formats.file_group_descriptor, TYMED_HGLOBAL);
    const com::global_lock block(table.get().hGlobal);
    const auto* const group = reinterpret_cast<const FILEGROUPDESCRIPTORW*>(block.bytes().data());
    if (group->cItems != nested_items) {
        throw std::runtime_error("a table lost files");
    }
}

std::shared_ptr<vfs::directory> as_directory(const vfs::item_ptr& item) {
    auto directory = std::dynamic_pointer_cast<vfs::directory>(item);
    if (!directory) {
        throw std::runtime_error("a folder is missing");
    }
    return directory;
}

/// The items below a directory and itself, each directory listed once.
UINT list_all(const vfs::item_ptr& item) {
    UINT count = 1;
    if (const auto directory = std::dynamic_pointer_cast<vfs::directory>(item)) {
        for (const vfs::item_ptr& child : directory->get_items()) {
            count += list_all(child);
        }
    }
    return count;
}

void measure_table(vfs::directory& root, int repeats) {
    const auto folder = as_directory(root.find_item_by_name(L"Nested", true));
    const vfs::item_ptr child = folder->get_items().front();
    const auto times = bench::measure_in_turns(
        repeats, [&] { describe(folder, child); },
        [&] {
            if (list_all(child) != nested_items) {
                throw std::runtime_error("a listing lost files");
            }
        });
    const auto shown = [](const std::vector<double>& seconds) {
        return bench::fixed(bench::median(seconds) * 1000, 0) + " ms";
    };
    bench::report("descriptors of 10000 files, peer the listings", shown(times.ours),
                  shown(times.peer), times.ratio(), "at most 1.2", times.ratio() <= 1.2);
}

void read_contents(IDataObject& object, std::int64_t bytes) {
    const auto contents = get(object, com::registered_formats.file_contents, TYMED_ISTREAM, 0);
    std::vector<char> buffer(step);
    std::int64_t received = 0;
    for (ULONG count = step; count > 0; received += count) {
        com::check(contents.get().pstm->Read(buffer.data(), step, &count));
    }
    if (received != bytes) {
        throw std::runtime_error("a stream has another size than the file");
    }
}

void measure_contents(const vfs_quilldeck::client& client, std::int64_t bytes, int repeats) {
    bench::bench_folder folder(client);
    folder.upload(L"large", bytes);
    const auto entry = folder.find(L"large");
    const auto object = make_object(folder.item(), entry.item);
    const auto times = bench::measure_in_turns(
        repeats, [&] { read_contents(*object.Get(), bytes); },
        [&] { folder.download(entry.item); });
    const auto speed = [bytes](const std::vector<double>& seconds) {
        return bench::fixed(static_cast<double>(bytes) / 1048576 / bench::median(seconds), 1) +
               " MB/s";
    };
    const double ratio = 1 / times.ratio();
    bench::report("FileContents, peer the file", speed(times.ours), speed(times.peer), ratio,
                  "at least 0.95", ratio >= 0.95);
}

} // namespace

int wmain(int count, wchar_t** values) {
    return bench::run([&] {
        const std::int64_t megabytes = count > 1 ? std::stoll(values[1]) : 256;
        const int repeats = count > 2 ? std::stoi(values[2]) : 5;
        com::check(::OleInitialize(nullptr));
        vfs_quilldeck::ensure_pc_id();
        vfs_quilldeck::client client(L"demo", L"demo");
        measure_table(*as_directory(client.get_root()), repeats);
        measure_contents(client, megabytes << 20U, repeats);
        ::OleUninitialize();
    });
}
