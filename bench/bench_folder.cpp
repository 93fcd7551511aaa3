#include "bench_folder.h"

#include "vfs_quilldeck/items/item.h"
#include "vfs_quilldeck/wire/text_encoding.h"

#include <algorithm>
#include <ctime>
#include <stdexcept>
#include <vector>

namespace bench {

namespace {

constexpr std::uint32_t step = 16384;

} // namespace

bench_folder::bench_folder(const vfs_quilldeck::client& client)
    : client_(client), bare_(client_),
      folder_(std::dynamic_pointer_cast<vfs::directory>(
          client_.get_directory(L"Bench " + std::to_wstring(std::time(nullptr)), true))) {}

bench_folder::~bench_folder() {
    try {
        const auto root = std::dynamic_pointer_cast<vfs::directory>(client_.get_root());
        root->delete_item(folder_, false);
    } catch (const vfs::exception&) {
        // The store is a throw-away one.
        return;
    }
}

void bench_folder::upload(const std::wstring& name, std::int64_t size) {
    static const std::vector<char> data(step, 'q');
    const auto file = std::dynamic_pointer_cast<vfs::file>(
        folder_->create_and_open_file(name, vfs::modeWrite | vfs::modeOverwrite, size));
    for (std::int64_t left = size; left > 0;) {
        const auto count = static_cast<std::uint32_t>(std::min<std::int64_t>(left, step));
        file->write(data.data(), count);
        left -= count;
    }
    file->close(1);
}

void bench_folder::download(const vfs::item_ptr& item) {
    static std::vector<char> data(step);
    const auto file = std::dynamic_pointer_cast<vfs::file>(item);
    file->open(vfs::modeRead, 0);
    std::int64_t received = 0;
    while (const std::uint32_t count = file->read(data.data(), step)) {
        received += count;
    }
    file->close(0);
    if (received != file->get_size()) {
        throw std::runtime_error("a download has another size than the file");
    }
}

void bench_folder::upload_bare(const std::wstring& name, std::int64_t size) {
    const auto reply = client_.operations_request(
        {{L"action", L"create_and_open_file"},
         {L"dir_id", std::dynamic_pointer_cast<vfs_quilldeck::item>(folder_)->get_raw_id()},
         {L"dir_access", L"0"},
         {L"name", name},
         {L"size", std::to_wstring(size)},
         {L"is_pro", L"0"}});
    const auto file = reply.get_children(L"File").front();
    const std::wstring location = file.get_child_text(L"TempLocation");
    bare_.upload(vfs_quilldeck::wide_to_utf8(location), size);
    client_.operations_request({{L"action", L"close_file_upload"},
                                {L"file_id", file.get_child_text(L"ID")},
                                {L"temp_location", location},
                                {L"file_time", L"1"},
                                {L"file_size", std::to_wstring(size)},
                                {L"is_pro", L"0"}});
}

int bench_folder::download_bare(const std::wstring& id, const std::string& location,
                                bool read_ahead) {
    client_.operations_request(
        {{L"action", L"open_file_download"}, {L"file_id", id}, {L"is_pro", L"0"}});
    const int pieces = bare_.download(location, read_ahead);
    client_.operations_request(
        {{L"action", L"close_file_download"}, {L"file_id", id}, {L"is_pro", L"0"}});
    return pieces;
}

void bench_folder::list_bare() {
    client_.operations_request(
        {{L"action", L"list_dir"},
         {L"dir_id", std::dynamic_pointer_cast<vfs_quilldeck::item>(folder_)->get_raw_id()}});
}

void bench_folder::make_folder_bare(const std::wstring& name) {
    list_bare();
    client_.operations_request(
        {{L"action", L"create_dir"},
         {L"dir_id", std::dynamic_pointer_cast<vfs_quilldeck::item>(folder_)->get_raw_id()},
         {L"dir_access", L"0"},
         {L"name", name}});
    list_bare();
}

bench_folder::entry bench_folder::find(const std::wstring& name) {
    const auto reply = client_.operations_request(
        {{L"action", L"list_dir"},
         {L"dir_id", std::dynamic_pointer_cast<vfs_quilldeck::item>(folder_)->get_raw_id()}});
    for (const auto& node : reply.get_children(L"File")) {
        if (node.get_child_text(L"Name") == name) {
            return {folder_->find_item_by_name(name, true), node.get_child_text(L"ID"),
                    vfs_quilldeck::wide_to_utf8(node.get_child_text(L"Location"))};
        }
    }
    throw std::runtime_error("a file of the benchmark is missing");
}

void bench_folder::clear() {
    for (const vfs::item_ptr& item : folder_->get_items()) {
        folder_->delete_item(item, false);
    }
}

} // namespace bench
