#include "tour.h"

#include "changes.h"
#include "check.h"
#include "console.h"
#include "copied_files.h"
#include "guest_walk.h"
#include "local_folder.h"
#include "scratch_folder.h"
#include "shared_walk.h"
#include "store_walk.h"

#include <string>
#include <vector>

namespace tour {

summary run(vfs::client& client, const std::filesystem::path& folder,
            const session_opener& sign_in) {
    const std::vector<local_file> files = list_local_files(folder);
    require(!files.empty(), "the folder to upload holds no file");
    const vfs::user_info user = client.get_user_info();
    print(L"The store of " + user.user_name + L":");
    print_tree(*as_directory(client.get_root()), L"    ");

    scratch_folder scratch(as_directory(client.get_root()));
    const auto copied = upload_all(scratch.get(), files);
    read_back(scratch.get(), copied);
    if (user.user_name == L"demo") {
        share(client, scratch.get(), *sign_in(L"anna", L"anna"), copied);
        look_as_guest(*sign_in(L"visitor", L""));
        work_as_guest(*sign_in(L"helper", L"helper"), copied.front());
    }
    work_in(scratch.get(), copied.front());
    take_through_trash(client, scratch.get(), copied.front());
    scratch.remove();

    summary total;
    for (const copied_file& copy : copied) {
        ++total.files;
        total.bytes += copy.local.size;
    }
    return total;
}

} // namespace tour
