/// bench_reply: parsing a listing of 10,000 and of 100,000 entries beside pugixml, the whole of
/// `get_items` on them, and the memory of its items. The store has the folders "Many 10000" and
/// "Many 100000".

#include "counted_memory.h"
#include "measure.h"

#include "vfs/exceptions.h"
#include "vfs/vfs.h"
#include "vfs_quilldeck/items/item.h"
#include "vfs_quilldeck/session/client.h"
#include "vfs_quilldeck/session/pc_id.h"
#include "vfs_quilldeck/wire/http_client.h"
#include "vfs_quilldeck/wire/reply_node.h"

#include <pugixml.hpp>

#include <cstdio>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

constexpr int repeats = 9;

struct many_files {
    std::size_t count;
    std::shared_ptr<vfs::directory> folder;
    vfs_quilldeck::shared_reply reply; ///< of `list_dir`, as it arrives
};

many_files open_folder(vfs_quilldeck::client& client, std::size_t count) {
    many_files many{count, nullptr, {}};
    many.folder = std::dynamic_pointer_cast<vfs::directory>(
        client.get_directory(L"Many " + std::to_wstring(count), false));
    const vfs::user_info user = client.get_user_info();
    const vfs_quilldeck::request_params params{
        {L"action", L"list_dir"},
        {L"dir_id", std::dynamic_pointer_cast<vfs_quilldeck::item>(many.folder)->get_raw_id()},
        {L"user_id", user.user_id},
        {L"user_id_access", user.user_access_id},
        {L"user_lang", user.user_lang},
        {L"user_level", user.user_level}};
    many.reply = vfs_quilldeck::http_client::post_for_bytes(
        client.get_path_prefix() + "/qd_operations.php", params);
    return many;
}

std::string milliseconds(double seconds) {
    return bench::fixed(seconds * 1000, 1) + " ms";
}

void measure_parse(const many_files& many) {
    std::size_t ours = 0;
    std::size_t peer = 0;
    const auto times = bench::measure_in_turns(
        repeats,
        [&] {
            const auto root = vfs_quilldeck::reply_node::parse(many.reply);
            ours = root.get_children(L"File").size();
        },
        [&] {
            pugi::xml_document document;
            document.load_buffer(many.reply->view().data(), many.reply->view().size());
            peer = 0;
            for (const auto& child : document.child("Result").children("File")) {
                peer += child.first_child() ? 1U : 0U;
            }
        });
    if (ours != many.count || peer != many.count) {
        throw std::runtime_error("a listing lost entries");
    }
    const double ratio = times.best_ratio();
    bench::report("parse " + std::to_string(many.count) + " entries, peer pugixml",
                  milliseconds(bench::least(times.ours)), milliseconds(bench::least(times.peer)),
                  ratio, "at most 1.2", ratio <= 1.2);
}

/// The bytes that all texts of a file take, with their ends.
std::int64_t text_bytes(vfs::item& item) {
    const auto& file = dynamic_cast<vfs::file&>(item);
    std::size_t units = 0;
    for (const std::wstring& text : {item.get_name(), item.get_id(), item.get_description(),
                                     item.get_link(), file.get_direct_link()}) {
        units += text.size() + 1;
    }
    return static_cast<std::int64_t>(units * sizeof(wchar_t));
}

void measure_memory(const many_files& many) {
    const std::int64_t before = bench::held_bytes();
    const std::vector<vfs::item_ptr> items = many.folder->get_items();
    const std::int64_t held = bench::held_bytes() - before;
    std::int64_t texts = 0;
    for (const vfs::item_ptr& item : items) {
        texts += text_bytes(*item);
    }
    const auto count = static_cast<std::int64_t>(items.size());
    const std::int64_t each = (held - texts) / count;
    const std::string line = "memory of " + std::to_string(count) +
                             " items: " + std::to_string(each) + " bytes each beside " +
                             std::to_string(texts / count) + " of texts (at most 1024) " +
                             (each <= 1024 ? "kept" : "MISSED");
    std::puts(line.c_str());
    std::fflush(stdout);
}

void list(const many_files& many) {
    if (many.folder->get_items().size() != many.count) {
        throw std::runtime_error("a folder lost entries");
    }
}

/// Of what this client does with its thread. How long the store takes for a folder is its own.
void measure_growth(const many_files& small, const many_files& large) {
    const auto times = bench::measure_in_turns(
        repeats, [&] { list(large); },
        [&] {
            for (std::size_t i = 0; i < large.count / small.count; ++i) {
                list(small);
            }
        },
        &bench::processor_seconds_of);
    const double growth = 10 * times.ratio();
    bench::report(
        "get_items of 100000, peer get_items of 10000", milliseconds(bench::median(times.ours)),
        milliseconds(bench::median(times.peer) / 10), growth, "at most 10.5", growth <= 10.5);
}

} // namespace

int wmain() {
    try {
        vfs_quilldeck::ensure_pc_id();
        vfs_quilldeck::client client(L"demo", L"demo");
        const many_files large = open_folder(client, 100'000);
        measure_memory(large);
        const many_files small = open_folder(client, 10'000);
        measure_parse(small);
        measure_parse(large);
        measure_growth(small, large);
        return 0;
    } catch (const vfs::exception& failure) {
        std::wprintf(L"%ls: %ls\n", failure.get_name().c_str(), failure.get_description().c_str());
    } catch (const std::exception& failure) {
        std::printf("%s\n", failure.what());
    }
    return 1;
}
