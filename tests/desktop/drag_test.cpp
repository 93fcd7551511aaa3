/// Real drags between processes: the file manager has our folder, this program the other end.
#include "drive_test.h"

#include "eventually.h"

#include "desktop/desktop_window.h"
#include "desktop/explorer.h"
#include "desktop/input.h"
#include "vfs/vfs.h"

#include <oleidl.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <system_error>

namespace {

using namespace desktop;
namespace fs = std::filesystem;

using tree = std::map<std::wstring, std::string>;

tree local_tree(const fs::path& top) {
    tree found;
    for (const auto& entry : fs::recursive_directory_iterator(top)) {
        std::ifstream file(entry.path(), std::ios::binary);
        found[entry.path().lexically_relative(top).generic_wstring()] =
            entry.is_directory() ? "" : std::string(std::istreambuf_iterator<char>(file), {});
    }
    return found;
}

tree stored_tree(vfs::directory& top, const std::wstring& way = {}) {
    tree found;
    for (const vfs::item_ptr& item : top.get_items()) {
        std::string& content = found[way + item->get_name()];
        if (const auto below = std::dynamic_pointer_cast<vfs::directory>(item)) {
            found.merge(stored_tree(*below, way + item->get_name() + L"/"));
            continue;
        }
        const auto file = std::dynamic_pointer_cast<vfs::file>(item)->duplicate();
        content.resize(static_cast<std::size_t>(file->get_size()));
        file->open(vfs::modeRead, 0);
        file->read(content.data(), static_cast<std::uint32_t>(content.size()));
        file->close(0);
    }
    return found;
}

class drags : public drive_test {
protected:
    ~drags() override {
        folder->delete_item(place, false);
        // Whoever took the last drop holds its files a little longer than they need to be whole.
        EXPECT_TRUE(support::eventually([this] {
            std::error_code failed;
            fs::remove_all(shown, failed);
            return !failed;
        }));
    }

    /// A folder with a tree and a file.
    static fs::path make_shown() {
        fs::path made =
            fs::temp_directory_path() / (L"drags " + std::to_wstring(GetCurrentProcessId()));
        fs::create_directories(made / L"Dragged" / L"inner");
        std::ofstream(made / L"Dragged" / L"a.txt") << "alpha";
        std::ofstream(made / L"Dragged" / L"inner" / L"b.bin") << std::string(70'000, 'b');
        std::ofstream(made / L"beside.txt") << "beside";
        return made;
    }

    static std::shared_ptr<vfs::directory> as_directory(const vfs::item_ptr& item) {
        return std::dynamic_pointer_cast<vfs::directory>(item);
    }

    /// Drags what the desktop shows to a row of the file manager's list.
    DWORD bring(const std::wstring& name, const std::wstring& to) {
        const int row = window.wait_for_row(to);
        drag(around.place(name), window.list().place(row));
        return around.wait_for_drag();
    }

    const std::shared_ptr<vfs::directory> folder =
        as_directory(support::sign_in()->get_directory(L"Documents", false));
    const std::shared_ptr<vfs::directory> place =
        as_directory(folder->create_directory(L"Drag " + std::to_wstring(GetCurrentProcessId())));
    const fs::path shown = make_shown(); ///< on the desktop
    explorer window;
    desktop_window around{shown};
};

TEST_F(drags, go_into_the_drive_and_out_of_it) {
    const tree dragged = local_tree(shown / L"Dragged");

    // A tree on a folder, a file on a file beside which it comes to lie.
    window.open({L"Quilldeck", L"Documents"});
    EXPECT_EQ(bring(L"Dragged", place->get_name()), DWORD{DROPEFFECT_COPY});
    EXPECT_EQ(stored_tree(*as_directory(place->find_item_by_name(L"Dragged", true))), dragged);
    window.open({L"Quilldeck", L"Documents", place->get_name(), L"Dragged"});
    EXPECT_EQ(bring(L"beside.txt", L"a.txt"), DWORD{DROPEFFECT_COPY});
    auto all = stored_tree(*place);
    EXPECT_EQ(all[L"Dragged/beside.txt"], "beside");

    // Within the drive: a file on a folder beside it.
    click(middle_of(window.list().window()));
    press({VK_F5});
    const int file = window.wait_for_row(L"beside.txt");
    drag(window.list().place(file), window.list().place(window.wait_for_row(L"inner")));
    all[L"Dragged/inner/beside.txt"] = "beside";
    EXPECT_TRUE(support::eventually([&] { return stored_tree(*place) == all; }));

    // Out again, as a whole.
    fs::remove_all(shown / L"Dragged");
    window.open({L"Quilldeck", L"Documents", place->get_name()});
    const int row = window.wait_for_row(L"Dragged");
    drag(window.list().place(row), around.free_place());
    EXPECT_TRUE(support::eventually([&] {
        auto out = local_tree(shown);
        out.erase(L"beside.txt");
        return out == all;
    }));
}

} // namespace
