#include "scratch_folder.h"

#include "check.h"
#include "console.h"

#include <ctime>
#include <string>
#include <utility>

namespace tour {

scratch_folder::scratch_folder(directory_ptr place)
    : place_(std::move(place)),
      folder_(
          as_directory(place_->create_directory(L"Tour " + std::to_wstring(std::time(nullptr))))) {}

scratch_folder::~scratch_folder() {
    if (!folder_) {
        return;
    }
    try {
        place_->delete_item(folder_, false);
    } catch (const vfs::exception& cause) {
        print(L"The folder \"" + folder_->get_name() + L"\" is left in the store: " +
              cause.get_description());
    }
}

void scratch_folder::remove() {
    const directory_ptr folder = std::move(folder_);
    place_->delete_item(folder, false);
    require(!holds_item(*place_, folder->get_id()), "a deleted folder is still listed");
}

} // namespace tour
