#pragma once

#include "drive_access.h"

#include "com/apartment.h"
#include "com/memory.h"
#include "com/module_lock.h"
#include "service_url.h"
#include "shell/shell_folder.h"
#include "shell_items/item_id_list.h"
#include "store_control.h"
#include "vfs/vfs.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace shell {

using Microsoft::WRL::ComPtr;
using support::parse;
using support::sign_in;

inline constexpr SHCONTF all_items = SHCONTF_FOLDERS | SHCONTF_NONFOLDERS;

/// The absolute list of the drive below My Computer.
com::unique_id_list drive_list();
/// A new folder object for the drive.
ComPtr<IShellFolder2> make_drive();
/// The folder at that path below `folder`.
ComPtr<IShellFolder2> open(IShellFolder& folder, const std::wstring& path);
/// What an enumerator delivers, one by one; empty without one.
std::vector<com::unique_id_list> list(IShellFolder& folder, SHCONTF flags);
std::wstring name_of(IShellFolder& folder, const ITEMIDLIST* list, SHGDNF flags);
/// The text of a cell or, without a list, of a header; "-" for a cell that fails with E_FAIL.
std::wstring cell_of(IShellFolder2& folder, const ITEMIDLIST* list, UINT column);
SFGAOF attributes_of(IShellFolder& folder, std::vector<const ITEMIDLIST*> items);
/// All bytes of a list but those of its terminator.
std::string bytes_of(const ITEMIDLIST* list);
/// The live item behind a folder of ours.
vfs::item_ptr item_of(IShellFolder& folder);
std::shared_ptr<vfs::directory> directory_of(IShellFolder& folder);

/// A test of the shell layer by a signed-in user, in an apartment. At its end no object of ours
/// lives.
class signed_in : public testing::Test {
protected:
    signed_in() {
        sign_in();
        control.reset();
    }

    ~signed_in() override {
        control.reset();
        EXPECT_EQ(com::module_lock::count(), 0);
    }

    com::apartment apartment;
    support::store_control control{support::environment("QUILLDECK_TEST_HTTPS_URL")};
};

} // namespace shell
