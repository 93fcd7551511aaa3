/// bench_shell: a folder of the drive beside the platform's own folder, both over 10,000 files of
/// the same names. The drive's listing is in memory, so that the folder's own work is measured and
/// not the line.

#include "measure.h"
#include "service_url.h"

#include "com/apartment.h"
#include "com/memory.h"
#include "shell/item_properties.h"
#include "shell/shell_folder.h"
#include "utils/module.h"
#include "vfs/exceptions.h"
#include "vfs_quilldeck/items/directory.h"
#include "vfs_quilldeck/items/file.h"
#include "vfs_quilldeck/session/pc_id.h"
#include "vfs_quilldeck/session/session.h"

#include <array>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

using Microsoft::WRL::ComPtr;

constexpr int repeats = 5;
constexpr int count = 10'000;
/// What the shell may wait for the attributes of an item.
constexpr double attributes_microseconds = 2;
constexpr auto all = SHCONTF_FOLDERS | SHCONTF_NONFOLDERS;

std::wstring name_of(int number) {
    constexpr std::array extensions{L".jpg", L".txt", L".mp3", L".pdf", L".qdx"};
    const auto kind = static_cast<std::size_t>(number) % extensions.size();
    return L"Item " + std::to_wstring(100'000 + number) + L" of many" + extensions[kind];
}

/// A directory of the store whose listing has come already.
class listed_directory final : public vfs_quilldeck::directory {
public:
    explicit listed_directory(const vfs_quilldeck::item_link& link)
        : directory(link, {.id = L"1", .name = L"many"}) {
        for (int i = 0; i < count; ++i) {
            vfs_quilldeck::file_fields fields{.id = std::to_wstring(i), .name = name_of(i)};
            fields.size = i;
            fields.access_date = fields.modification_date = 1'700'000'000 + i;
            listing_.push_back(std::make_shared<vfs_quilldeck::file>(link, fields, L"", 0));
        }
    }

protected:
    std::vector<vfs::item_ptr> list_items() override { return listing_; }

private:
    std::vector<vfs::item_ptr> listing_;
};

com::unique_id_list drive_list() {
    ITEMIDLIST* list = nullptr;
    com::check(SHParseDisplayName(L"::{20D04FE0-3AEA-1069-A2D8-08002B30309D}", nullptr, &list, 0,
                                  nullptr));
    return com::unique_id_list(list);
}

using make_folder = std::function<ComPtr<IShellFolder2>()>;

make_folder remote_folder() {
    vfs_quilldeck::ensure_pc_id();
    vfs_quilldeck::login(utils::own_module(), L"demo", L"demo");
    const auto client = vfs_quilldeck::get_client(utils::own_module());
    const auto directory = std::make_shared<listed_directory>(
        vfs_quilldeck::item_link(dynamic_cast<vfs_quilldeck::client&>(*client)));
    return [directory, root = shell::CItemIDList(drive_list().get(), true)] {
        ComPtr<IShellFolder2> folder;
        const auto made = com::make<shell::CShellFolderImpl>(root, shell::CItemIDList(), directory);
        com::check(made.As(&folder));
        return folder;
    };
}

make_folder local_folder() {
    const fs::path path = fs::temp_directory_path() / L"many";
    fs::create_directories(path);
    for (int i = 0; i < count; ++i) {
        std::ofstream(path / name_of(i)) << i;
    }
    return [path] {
        ITEMIDLIST* list = nullptr;
        com::check(SHParseDisplayName(path.c_str(), nullptr, &list, 0, nullptr));
        const com::unique_id_list owned(list);
        ComPtr<IShellFolder2> folder;
        com::check(SHBindToObject(nullptr, list, nullptr, IID_PPV_ARGS(&folder)));
        return folder;
    };
}

std::vector<com::unique_id_list> list(IShellFolder& folder) {
    ComPtr<IEnumIDList> items;
    com::check(folder.EnumObjects(nullptr, all, &items));
    std::vector<com::unique_id_list> found;
    ITEMIDLIST* item = nullptr;
    while (items->Next(1, &item, nullptr) == S_OK) {
        found.emplace_back(item);
    }
    if (found.size() != count) {
        throw std::runtime_error("a folder lost items");
    }
    return found;
}

/// A folder with the lists of its items.
struct listed_folder {
    explicit listed_folder(const make_folder& make) : folder(make()), items(list(*folder.Get())) {}

    template <std::size_t Count>
    void read_cells(const std::array<UINT, Count>& columns) const {
        for (const auto& item : items) {
            for (const UINT column : columns) {
                SHELLDETAILS details{};
                wchar_t* text = nullptr;
                com::check(folder->GetDetailsOf(item.get(), column, &details));
                com::check(StrRetToStrW(&details.str, item.get(), &text));
                CoTaskMemFree(text);
            }
        }
    }

    void compare() const {
        for (std::size_t i = 0; i < items.size(); ++i) {
            const std::size_t other = i * 7919 % items.size();
            com::check(folder->CompareIDs(0, items[i].get(), items[other].get()));
        }
    }

    /// Size and date of modification, as a details pane asks for them.
    void read_properties() const {
        for (const auto& item : items) {
            for (const DWORD property : {shell::storage_size, shell::storage_write_time}) {
                const SHCOLUMNID key{shell::storage_properties, property};
                com::variant value;
                com::check(folder->GetDetailsEx(item.get(), &key, &value.get()));
            }
        }
    }

    void read_attributes() const {
        for (const auto& item : items) {
            const ITEMIDLIST* one[] = {item.get()};
            SFGAOF flags = SFGAO_FOLDER | SFGAO_STREAM | SFGAO_CANRENAME;
            com::check(folder->GetAttributesOf(1, one, &flags));
        }
    }

    ComPtr<IShellFolder2> folder;
    std::vector<com::unique_id_list> items;
};

double microseconds_an_item(const std::vector<double>& seconds) {
    return bench::median(seconds) / count * 1e6;
}

void report(const std::string& what, const bench::paired_times& times, const std::string& bound,
            bool kept) {
    const auto figure = [](const std::vector<double>& seconds) {
        return bench::fixed(microseconds_an_item(seconds), 2) + " us an item";
    };
    bench::report(what, figure(times.ours), figure(times.peer), times.ratio(), bound, kept);
}

void report(const std::string& what, const bench::paired_times& times, double bound) {
    report(what, times, "at most " + bench::fixed(bound, 2), times.ratio() <= bound);
}

void measure() {
    const com::apartment apartment;
    const make_folder make_ours = remote_folder();
    const make_folder make_peer = local_folder();
    report("enumerate 10000, peer the platform's folder",
           bench::measure_in_turns(
               repeats, [&] { list(*make_ours().Get()); }, [&] { list(*make_peer().Get()); }),
           0.5);
    const listed_folder ours(make_ours);
    const listed_folder peer(make_peer);
    // Name, type, size and date of modification.
    report("four columns, peer the platform's folder",
           bench::measure_in_turns(
               repeats, [&] { ours.read_cells(std::array{0U, 1U, 2U, 4U}); },
               [&] { peer.read_cells(std::array{0U, 1U, 2U, 3U}); }),
           0.05);
    report(
        "two values by GetDetailsEx, peer GetDetailsOf",
        bench::measure_in_turns(
            repeats, [&] { ours.read_properties(); }, [&] { ours.read_cells(std::array{2U, 4U}); }),
        3);
    report("CompareIDs by name, peer the platform's folder",
           bench::measure_in_turns(repeats, [&] { ours.compare(); }, [&] { peer.compare(); }), 1);
    const auto attributes = bench::measure_in_turns(
        repeats, [&] { ours.read_attributes(); }, [&] { peer.read_attributes(); });
    report("GetAttributesOf one, peer the platform's folder", attributes,
           "at most " + bench::fixed(attributes_microseconds, 0) + " us",
           microseconds_an_item(attributes.ours) <= attributes_microseconds);
}

} // namespace

int wmain() {
    try {
        measure();
        return 0;
    } catch (const std::exception& failure) {
        std::printf("%s\n", failure.what());
    } catch (const vfs::exception& failure) {
        std::printf("%ls: %ls\n", failure.get_name().c_str(), failure.get_description().c_str());
    } catch (const com::status_exception& failure) {
        std::printf("%lx\n", static_cast<unsigned long>(failure.status()));
    }
    return 1;
}
