/// bench_descriptors: the virtual files of another program, from the block that describes them to
/// the last item of the tree, whose cost has to grow as the table does.

#include "measure.h"

#include "com/media.h"
#include "transfer/descriptor_items/descriptor_record.h"
#include "transfer/descriptor_items/filedescriptor_wrapper.h"

#include <ole2.h>
#include <wrl/client.h>

#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>

namespace {

using Microsoft::WRL::ComPtr;

constexpr int repeats = 15;
constexpr int files_in_folder = 99;

/// Folders side by side and ten deep, each before its files.
com::unique_global make_table(int folders) {
    const int count = folders * (files_in_folder + 1);
    auto block =
        com::make_global(transfer::descriptor_count_size +
                             static_cast<std::size_t>(count) * transfer::descriptor_record_size,
                         GHND);
    const com::global_lock locked(block.get());
    std::byte* place = locked.bytes().data();
    const auto append = [&](const std::u16string& path, std::uint32_t attributes) {
        transfer::descriptor_record record{};
        record.flags = transfer::has_attributes;
        record.attributes = attributes;
        path.copy(record.name, transfer::descriptor_name_size - 1);
        std::memcpy(place, &record, sizeof record);
        place += sizeof record;
    };
    std::memcpy(place, &count, sizeof count);
    place += sizeof count;
    const auto text = [](int number) {
        const std::string digits = std::to_string(100'000 + number);
        return std::u16string(digits.begin(), digits.end());
    };
    std::u16string path;
    for (int folder = 0; folder < folders; ++folder) {
        if (folder % 10 == 0) {
            path.clear();
        } else {
            path += u'\\';
        }
        path += u"Folder " + text(folder);
        append(path, transfer::attribute_directory);
        for (int file = 0; file < files_in_folder; ++file) {
            append(path + u"\\A picture of the tour, number " + text(file) + u".jpg", 0);
        }
    }
    return block;
}

/// How many items there are, each of which is asked for its name.
int walk(vfs::directory& directory) {
    int count = 0;
    for (const vfs::item_ptr& item : directory.get_items()) {
        count += item->get_name().empty() ? 0 : 1;
        if (const auto below = std::dynamic_pointer_cast<vfs::directory>(item)) {
            count += walk(*below);
        }
    }
    return count;
}

void walk_whole(IDataObject* data, HGLOBAL table, int folders) {
    transfer::CFILEDESCRIPTORWrapper wrapper(data, table);
    if (walk(wrapper) != folders * (files_in_folder + 1) || !wrapper.take_refusals().empty()) {
        throw std::runtime_error("a table lost items");
    }
}

void measure() {
    com::check(::OleInitialize(nullptr));
    {
        // Any object serves: nothing of it is asked for here.
        ComPtr<IDataObject> data;
        com::check(::OleGetClipboard(&data));
        const com::unique_global large = make_table(1'000);
        const com::unique_global tenth = make_table(100);
        const auto times = bench::measure_in_turns(
            repeats, [&] { walk_whole(data.Get(), large.get(), 1'000); },
            [&] {
                // As long as the other, so that both meet the same disturbances.
                for (int i = 0; i < 10; ++i) {
                    walk_whole(data.Get(), tenth.get(), 100);
                }
            });
        const auto text = [](const std::vector<double>& seconds) {
            return bench::fixed(bench::median(seconds) * 1e3, 2) + " ms";
        };
        bench::report(
            "walk a table of 100000 entries in 1000 folders, peer ten times a tenth of it",
            text(times.ours), text(times.peer), times.ratio(), "at most 1.1", times.ratio() <= 1.1);
    }
    ::OleUninitialize();
}

} // namespace

int wmain() {
    return bench::run(measure);
}
