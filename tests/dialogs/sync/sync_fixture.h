#pragma once

#include "drive_access.h"
#include "driven_window.h"
#include "extension.h"
#include "second_process.h"
#include "service_url.h"
#include "store_control.h"
#include "user_files.h"

#include "com/apartment.h"
#include "utils/module.h"
#include "utils/narrow.h"
#include "utils/unique_handle.h"
#include "vfs/directory.h"
#include "vfs_quilldeck/session/session.h"

#include <gtest/gtest.h>

#include <commctrl.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace dialogs {

inline std::string narrow(const std::wstring& text) {
    return {reinterpret_cast<const char*>(std::filesystem::path(text).u8string().c_str())};
}

/// A page that holds a control of that number, once it is there.
inline HWND await_page(int id) {
    struct search {
        int id;
        HWND found;
    } searched{id, nullptr};

    support::eventually([&] {
        EnumWindows(
            [](HWND top, LPARAM self) -> BOOL {
                EnumChildWindows(
                    top,
                    [](HWND child, LPARAM inner) -> BOOL {
                        auto& sought = *reinterpret_cast<search*>(inner);
                        if (GetDlgItem(child, sought.id) && IsWindowVisible(child)) {
                            sought.found = child;
                        }
                        return TRUE;
                    },
                    self);
                return TRUE;
            },
            reinterpret_cast<LPARAM>(&searched));
        return searched.found != nullptr;
    });
    return searched.found;
}

/// The signed-in user of the store has no bindings, and a second process is there to change them.
class sync_test : public testing::Test {
protected:
    sync_test() {
        support::sign_in();
        std::filesystem::remove(user_file());
        control.reset();
    }

    ~sync_test() override { control.reset(); }

    static std::wstring user_name() {
        return vfs_quilldeck::get_user_info(utils::own_module()).user_name;
    }

    static std::filesystem::path user_file() {
        return syncer::binding_manager::get_bindings_path(user_name());
    }

    static std::string bytes() {
        std::ifstream in(user_file(), std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }

    /// The first folder at the top of the store.
    static std::wstring home_name() {
        const auto root = support::sign_in()->get_root();
        const auto items = std::dynamic_pointer_cast<vfs::directory>(root)->get_items();
        return items.front()->get_name();
    }

    static std::wstring default_end(const std::wstring& leaf) {
        return L"Quilldeck\\" + home_name() + L"\\" + leaf;
    }

    /// One binding and the whole file, as they stand on the disk.
    static std::string entry(const std::string& remote, const std::wstring& local,
                             const std::string& filename, bool backup, int number,
                             bool forced = false) {
        const char* const no = backup ? "1" : "0";
        const char* const yes = backup ? "2" : "0";
        // In the text of a node a backslash stands as two.
        const auto element = [](const std::string& name, std::string value) {
            for (std::size_t at = 0; (at = value.find('\\', at)) != std::string::npos; at += 2) {
                value.insert(at, 1, '\\');
            }
            return "<" + name + ">" + value + "</" + name + ">";
        };
        std::string rule;
        for (const char* name : {"can_download", "can_overwrite_download"}) {
            rule += element(name, no);
        }
        rule += element("can_overwrite_upload", yes);
        for (const char* name : {"can_remove_local", "can_remove_local_dir", "can_remove_remote",
                                 "can_remove_remote_dir"}) {
            rule += element(name, no);
        }
        rule += element("can_upload", yes);
        return "<binding><_mode>1</_mode><_type>0</_type><can_recourse_subdirs>0"
               "</can_recourse_subdirs>" +
               element("dir_local", narrow(local)) + element("dir_remote", remote) +
               element("filename", filename) + element("force_sync_once", forced ? "1" : "0") +
               element("items_filename", "sync_rules_" + std::to_string(number) + ".xml") +
               element("rule", rule) + "</binding>";
    }

    static std::string whole(const std::vector<std::string>& entries, int next) {
        std::string text = "<sync_bindings>";
        for (const std::string& each : entries) {
            text += each;
        }
        return text + "<next_rules_file_id>" + std::to_string(next) +
               "</next_rules_file_id></sync_bindings>";
    }

    std::string ask(const std::string& line) const { return other.ask(line); }

    com::apartment apartment;
    support::second_process other;
    support::store_control control{support::environment("QUILLDECK_TEST_HTTPS_URL")};
};

} // namespace dialogs
