/// bench_properties: the properties dialog of 5,000 selected files beside that of one, whose folder
/// is in memory, so that the dialog's own work is measured and not the line; and the size of a tree
/// of 1,000 folders of a store beside its listings.

#include "measure.h"
#include "service_url.h"

#include "dialogs/properties/properties_dialog.h"
#include "resources/properties_ids.h"
#include "vfs_quilldeck/items/directory.h"
#include "vfs_quilldeck/items/file.h"
#include "vfs_quilldeck/session/client.h"
#include "vfs_quilldeck/session/pc_id.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using clock = std::chrono::steady_clock;

constexpr int file_count = 5'000;
/// How much later than that of one file the window of many is there.
constexpr double window_seconds = 0.2;
/// How often it is looked at whether a dialog is complete.
constexpr UINT look_milliseconds = 30;
constexpr double tree_bound = 1.1;
constexpr int tree_folders = 1'000;

/// A directory that counts how often it is listed.
class counted_directory final : public vfs_quilldeck::directory {
public:
    explicit counted_directory(const vfs_quilldeck::item_link& link)
        : directory(link, {.id = L"1", .name = L"many"}) {
        for (int i = 0; i < file_count; ++i) {
            listing_.push_back(std::make_shared<vfs_quilldeck::file>(
                link,
                vfs_quilldeck::file_fields{.id = std::to_wstring(i + 1),
                                           .name = L"File " + std::to_wstring(i) + L".txt"},
                L"", 0));
        }
    }

    std::vector<vfs::item_ptr> take_listing() const { return listing_; }

    std::atomic<int> listings = 0;

protected:
    std::vector<vfs::item_ptr> list_items() override {
        ++listings;
        return listing_;
    }

private:
    std::vector<vfs::item_ptr> listing_;
};

/// The dialog until `is_complete` of its general page, with the seconds until it was seen and until
/// it was complete.
class timed_dialog final : public dialogs::CPropertiesFileDlg {
public:
    using complete = std::function<bool(HWND page)>;

    timed_dialog(shell::selection items, complete is_complete)
        : CPropertiesFileDlg(std::move(items), 0), is_complete_(std::move(is_complete)) {}

    ~timed_dialog() override { destroy(); }

    void show() {
        begin_ = clock::now();
        do_modal(nullptr);
    }

    double seen = 0;
    double completed = 0;

protected:
    bool on_init() override {
        const bool result = CPropertiesFileDlg::on_init();
        RedrawWindow(handle(), nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
        seen = since_begin();
        SetTimer(handle(), 1, look_milliseconds, nullptr);
        return result;
    }

    std::optional<LRESULT> on_message(UINT message, WPARAM wparam, LPARAM lparam) override {
        if (message == WM_TIMER) {
            if (is_complete_(general_page())) {
                completed = since_begin();
                KillTimer(handle(), 1);
                end(IDCANCEL);
            }
            return 0;
        }
        return CPropertiesFileDlg::on_message(message, wparam, lparam);
    }

private:
    /// Of all pages the one that has the size.
    HWND general_page() const {
        HWND page = nullptr;
        do {
            page = FindWindowExW(control(IDC_PROPERTIES_TABS), page, L"#32770", nullptr);
        } while (page && !GetDlgItem(page, IDC_ITEM_SIZE));
        return page;
    }

    double since_begin() const {
        return std::chrono::duration<double>(clock::now() - begin_).count();
    }

    complete is_complete_;
    clock::time_point begin_;
};

std::wstring text_of(HWND page, int id) {
    wchar_t text[200]{};
    GetDlgItemTextW(page, id, text, 200);
    return text;
}

shell::selection select(const std::shared_ptr<vfs::directory>& folder,
                        const std::vector<vfs::item_ptr>& items) {
    shell::selection selected{folder, {}, {}};
    for (const vfs::item_ptr& item : items) {
        selected.records.emplace_back(item);
    }
    return selected;
}

bool bench_selection(const vfs_quilldeck::item_link& link, int repeats) {
    const auto values_are_there = [](HWND page) {
        return IsDlgButtonChecked(page, IDC_ACCESS_PRIVATE) == BST_CHECKED &&
               IsDlgButtonChecked(page, IDC_PRICE_FREE) == BST_CHECKED;
    };
    std::vector<double> later;
    std::vector<double> values;
    int most_listings = 0;
    for (int i = 0; i < repeats; ++i) {
        const auto folder = std::make_shared<counted_directory>(link);
        const auto items = folder->take_listing();
        timed_dialog one(select(folder, {items.front()}), values_are_there);
        one.show();
        // Anew, so that its folder knows nothing either.
        const auto other = std::make_shared<counted_directory>(link);
        timed_dialog many(select(other, other->take_listing()), values_are_there);
        many.show();
        later.push_back(many.seen - one.seen);
        values.push_back(many.completed);
        most_listings = std::max(most_listings, other->listings.load());
    }
    const double delay = bench::median(later);
    bench::report("window of 5,000 files after that of one", bench::fixed(delay, 3) + " s",
                  bench::fixed(window_seconds, 1) + " s", delay / window_seconds, "1",
                  delay <= window_seconds);
    bench::report("listings for the values of 5,000 files", std::to_string(most_listings), "1",
                  most_listings, "1", most_listings <= 1);
    bench::report("values of 5,000 files", bench::fixed(bench::median(values), 3) + " s", "-", 0,
                  "none", true);
    return delay <= window_seconds && most_listings <= 1;
}

std::shared_ptr<vfs::directory> as_directory(const vfs::item_ptr& item) {
    return std::dynamic_pointer_cast<vfs::directory>(item);
}

/// Lists a tree and nothing else.
void list(vfs::directory& top) {
    for (const vfs::item_ptr& item : top.get_items()) {
        if (const auto below = as_directory(item)) {
            list(*below);
        }
    }
}

bool bench_tree(vfs_quilldeck::client& client, int repeats) {
    const auto root = as_directory(client.get_root());
    const auto tree = as_directory(root->find_item_by_name(L"Thousand folders", true));
    const std::wstring expected = std::to_wstring(tree_folders - 1) + L" folders, " +
                                  std::to_wstring(tree_folders) + L" files";
    const auto ours = [&] {
        timed_dialog dialog(select(root, {tree}), [&](HWND page) {
            return text_of(page, IDC_ITEM_CONTAINS) == expected;
        });
        dialog.show();
    };
    // Both ways meet a store that has shown the tree before.
    list(*tree);
    const auto times = bench::measure_in_turns(repeats, ours, [&] { list(*tree); });
    const double ratio = times.ratio();
    bench::report("size of a tree of 1,000 folders",
                  bench::fixed(bench::median(times.ours), 2) + " s",
                  bench::fixed(bench::median(times.peer), 2) + " s", ratio,
                  bench::fixed(tree_bound, 1), ratio <= tree_bound);
    return ratio <= tree_bound;
}

void measure(int repeats) {
    vfs_quilldeck::ensure_pc_id();
    vfs_quilldeck::client client(L"demo", L"demo");
    const bool selection = bench_selection(vfs_quilldeck::item_link(client), repeats);
    const bool tree = bench_tree(client, repeats);
    if (!selection || !tree) {
        throw std::runtime_error("a bound is not kept");
    }
}

} // namespace

int wmain(int argc, wchar_t** argv) {
    const int repeats = argc > 1 ? std::max(1, std::stoi(argv[1])) : 3;
    return bench::run([repeats] { measure(repeats); });
}
