#include "second_process.h"

#include "syncer/binding_manager.h"
#include "utils/module.h"
#include "vfs_quilldeck/session/session.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using syncer::binding;

/// Another program of the user, which changes the bindings. "add", "add file", "add copy": one of
/// its own; "move", "end": that of the folder "Docs"; "end file": its own.
std::string answer(const std::string& line) {
    syncer::binding_manager manager(vfs_quilldeck::get_user_info(utils::own_module()).user_name,
                                    true);
    const auto make = [](const wchar_t* remote, const wchar_t* local, const wchar_t* file,
                         syncer::binding_mode mode) {
        return binding{remote,
                       local,
                       file,
                       mode,
                       syncer::binding_type::permanent,
                       L"",
                       0,
                       syncer::backup_rule};
    };
    using enum syncer::binding_mode;
    if (line == "add") {
        manager.add_binding(make(L"Quilldeck/a", L"C:\\a", L"", user));
    } else if (line == "add file") {
        manager.add_binding(make(L"Quilldeck/b", L"C:\\b", L"b.txt", user));
    } else if (line == "add copy") {
        manager.add_binding(make(L"Quilldeck/c", L"C:\\c", L"c.txt", edited_copy));
    } else if (line == "end file") {
        manager.remove_binding(L"Quilldeck/b", L"C:\\b", L"b.txt");
    } else if (line == "move" || line == "end") {
        const syncer::binding_set all = manager.get_bindings();
        const auto found = std::ranges::find_if(
            all, [](const binding& each) { return each.dir_local.filename() == L"Docs"; });
        manager.remove_binding(*found);
        if (line == "move") {
            binding moved = *found;
            moved.dir_remote = L"Quilldeck/Moved/Docs";
            manager.add_binding(moved);
        }
    }
    manager.commit();
    return "done";
}

} // namespace

int main(int argc, char** argv) {
    support::serve_if_second(argc, argv, [](const std::string& line) {
        try {
            return answer(line);
        } catch (const std::exception& failure) {
            return std::string("failed: ") + failure.what();
        }
    });
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
