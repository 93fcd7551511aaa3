#include "drag_walk.h"

#include "desktop_window.h"
#include "input.h"
#include "wait.h"
#include "walk.h"
#include "windows_of_others.h"

#include "vfs/file.h"

#include <oleidl.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>

namespace desktop {

namespace {

namespace fs = std::filesystem;

const std::wstring drive = L"Quilldeck";
const std::wstring guide = L"Welcome to Quilldeck.txt";
const std::wstring journey = L"Journey";
const std::wstring film = L"A short film.mp4";

/// A folder of this machine, empty at first and gone at the end.
class scratch_folder {
public:
    scratch_folder() { fs::create_directories(path_); }

    scratch_folder(const scratch_folder&) = delete;
    scratch_folder& operator=(const scratch_folder&) = delete;

    ~scratch_folder() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }

    const fs::path& path() const noexcept { return path_; }

private:
    const fs::path path_ =
        fs::temp_directory_path() / (L"desktop " + std::to_wstring(::GetCurrentProcessId()));
};

void take_out(const explorer& window, const desktop_window& around, const fs::path& local) {
    const int row = window.wait_for_row(guide);
    drag(window.list().place(row), around.free_place());
    around.place(guide);
    const auto stored = stored_folder(L"Documents")->find_item_by_name(guide, true);
    require(static_cast<std::int64_t>(fs::file_size(local / guide)) ==
                std::dynamic_pointer_cast<vfs::file>(stored)->get_size(),
            "a file was dragged out of the drive to the desktop");
    take_picture("dragged");
}

void answer(const wchar_t* caption, const std::string& picture, int button) {
    const HWND box =
        wait_for("the question " + picture, [&] { return find_window(L"#32770", caption); });
    take_picture(picture);
    ::PostMessageW(box, WM_COMMAND, static_cast<WPARAM>(button), 0);
    wait_for("the end of the question " + picture, [&] { return !::IsWindow(box); });
}

/// Drops the local folder on one of the drive, that is on its row in the list.
void bring_in(const explorer& window, const desktop_window& around) {
    const int row = window.wait_for_row(L"Documents");
    drag(around.place(journey), window.list().place(row));
}

} // namespace

void drag_out_and_in(explorer& window) {
    constexpr std::uintmax_t film_size = 150'000'000;
    const auto documents = stored_folder(L"Documents");
    remove_if_there(*documents, journey);
    const scratch_folder local;
    fs::create_directories(local.path() / journey);
    std::ofstream(local.path() / journey / film).close();
    fs::resize_file(local.path() / journey / film, film_size);
    desktop_window around(local.path());
    window.open({drive, L"Documents"});
    take_out(window, around, local.path());

    window.open({drive});
    bring_in(window, around);
    wait_for("the progress dialog", [] { return find_window(L"", L"Copying..."); });
    take_picture("dropped");
    require(around.wait_for_drag() == DROPEFFECT_COPY, "a folder was dropped on one of the drive");
    const auto arrived =
        std::dynamic_pointer_cast<vfs::directory>(documents->find_item_by_name(journey, true));
    const auto file = std::dynamic_pointer_cast<vfs::file>(arrived->find_item_by_name(film, true));
    require(file->get_size() == std::int64_t{film_size}, "all of it arrived");

    bring_in(window, around);
    answer(L"Confirm folder merge", "merge", IDYES);
    answer(L"Confirm file replace", "replace", IDCANCEL);
    require(around.wait_for_drag() == DROPEFFECT_NONE,
            "nothing was replaced when the user did not want it");
    remove_if_there(*documents, journey);
}

} // namespace desktop
