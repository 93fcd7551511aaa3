#include "store_walk.h"

#include "console.h"
#include "sha256.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace tour {

namespace {

/// The step in which all parts of the system copy.
using step_buffer = std::array<char, 16384>;

} // namespace

directory_ptr as_directory(const vfs::item_ptr& item) {
    auto directory = std::dynamic_pointer_cast<vfs::directory>(item);
    if (!directory) {
        throw std::runtime_error("the store has a file where a folder was expected");
    }
    return directory;
}

file_ptr as_file(const vfs::item_ptr& item) {
    auto file = std::dynamic_pointer_cast<vfs::file>(item);
    if (!file) {
        throw std::runtime_error("the store has a folder where a file was expected");
    }
    return file;
}

directory_ptr walk_to(const directory_ptr& from, const std::vector<std::wstring>& folders) {
    directory_ptr at = from;
    for (const std::wstring& name : folders) {
        try {
            at = as_directory(at->find_item_by_name(name, false));
        } catch (const vfs::item_not_found_exception&) {
            at = as_directory(at->create_directory(name));
        }
    }
    return at;
}

bool holds_item(vfs::directory& directory, const std::wstring& id) {
    const auto items = directory.get_items();
    return std::ranges::any_of(items,
                               [&id](const vfs::item_ptr& item) { return item->get_id() == id; });
}

void print_tree(vfs::directory& directory, const std::wstring& indent) {
    for (const vfs::item_ptr& item : directory.get_items()) {
        if (item->get_type() == vfs::type_directory) {
            print(indent + item->get_name() + L"\\");
            print_tree(*as_directory(item), indent + L"    ");
        } else {
            print(indent + item->get_name() + L"  " + std::to_wstring(as_file(item)->get_size()));
        }
    }
}

std::wstring upload(vfs::directory& directory, const std::wstring& name, const std::wstring& local,
                    std::int64_t size, vfs::time_seconds modified) {
    std::ifstream source(std::filesystem::path(local), std::ios::binary);
    if (!source) {
        throw std::runtime_error("a local file cannot be opened");
    }
    const file_ptr file =
        as_file(directory.create_and_open_file(name, vfs::modeWrite | vfs::modeOverwrite, size));
    sha256 digest;
    step_buffer buffer{};
    for (;;) {
        source.read(buffer.data(), static_cast<std::streamsize>(buffer.size()));
        const auto count = static_cast<std::uint32_t>(source.gcount());
        if (count == 0) {
            break;
        }
        digest.add(buffer.data(), count);
        file->write(buffer.data(), count);
    }
    file->close(modified);
    return digest.finish();
}

std::wstring digest_of(vfs::file& file) {
    file.open(vfs::modeRead, 0);
    sha256 digest;
    step_buffer buffer{};
    while (const std::uint32_t count =
               file.read(buffer.data(), static_cast<std::uint32_t>(buffer.size()))) {
        digest.add(buffer.data(), count);
    }
    file.close(0);
    return digest.finish();
}

} // namespace tour
