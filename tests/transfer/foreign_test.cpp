// Sources that are no objects of these tests: the platform's own data object, one in another
// apartment, and the drive itself.
#include "drive_access.h"
#include "virtual_files.h"
#include "wrapper_test.h"

#include "com/apartment.h"
#include "com/memory.h"
#include "com/module_lock.h"
#include "service_url.h"
#include "shell_items/item_id_list.h"
#include "store_control.h"
#include "transfer/descriptor_items/filedescriptor_wrapper.h"
#include "transfer/local_items/hdrop_wrapper.h"
#include "utils/module.h"
#include "vfs_quilldeck/session/pc_id.h"
#include "vfs_quilldeck/session/session.h"

#include <filesystem>
#include <fstream>
#include <future>

namespace transfer {

namespace {

namespace fs = std::filesystem;

using Microsoft::WRL::ComPtr;
using support::failure_of;
using transfer_test::find;
using transfer_test::tree_of;
using transfer_test::virtual_files;
using transfer_test::virtual_folder;

/// The list of a path, from the desktop on.
com::unique_id_list parse(const std::wstring& name) {
    ComPtr<IShellFolder> desktop;
    com::check(SHGetDesktopFolder(&desktop));
    return support::parse(*desktop.Get(), name);
}

TEST(foreign_sources, are_the_files_of_the_platforms_own_data_object) {
    const com::apartment apartment;
    const fs::path folder = fs::temp_directory_path() / L"foreign";
    fs::create_directories(folder / L"d \u00E4");
    std::ofstream(folder / L"d \u00E4" / L"f") << "content";
    const com::unique_id_list item = parse((folder / L"d \u00E4").native());
    ComPtr<IShellFolder> parent;
    LPCITEMIDLIST child = nullptr;
    com::check(SHBindToParent(item.get(), IID_PPV_ARGS(&parent), &child));
    ComPtr<IDataObject> data;
    com::check(parent->GetUIObjectOf(nullptr, 1, &child, IID_IDataObject, nullptr,
                                     reinterpret_cast<void**>(data.GetAddressOf())));
    com::medium paths;
    FORMATETC format{CF_HDROP, nullptr, DVASPECT_CONTENT, -1, TYMED_HGLOBAL};
    com::check(data->GetData(&format, paths.put()));
    CHDROPWrapper wrapper(paths.get().hGlobal);
    EXPECT_EQ(tree_of(wrapper), L"d \u00E4(f)");
    EXPECT_EQ(wrapper.take_refusals(), L"");
    fs::remove_all(folder);
}

TEST(foreign_sources, may_live_and_end_in_another_apartment) {
    const com::apartment apartment;
    ComPtr<IStream> crossing;
    std::promise<DWORD> ready;
    std::thread owner([&] {
        const com::apartment own;
        const auto source = com::make<virtual_files>();
        source->files = {virtual_folder(L"d"),
                         {.path = L"d\\f", .content = std::string(50'000, 'x')}};
        com::check(CoMarshalInterThreadInterfaceInStream(
            IID_IDataObject, static_cast<IDataObject*>(source.Get()), &crossing));
        ready.set_value(GetCurrentThreadId());
        MSG message;
        while (GetMessageW(&message, nullptr, 0, 0) > 0) {
            DispatchMessageW(&message);
        }
        CoDisconnectObject(static_cast<IDataObject*>(source.Get()), 0);
    });
    const DWORD thread = ready.get_future().get();
    ComPtr<IDataObject> data;
    com::check(CoGetInterfaceAndReleaseStream(crossing.Detach(), IID_PPV_ARGS(&data)));
    com::medium block;
    FORMATETC format{static_cast<CLIPFORMAT>(com::registered_formats.file_group_descriptor),
                     nullptr, DVASPECT_CONTENT, -1, TYMED_HGLOBAL};
    com::check(data->GetData(&format, block.put()));
    CFILEDESCRIPTORWrapper wrapper(data.Get(), block.get().hGlobal);
    ASSERT_EQ(tree_of(wrapper), L"d(f)");
    const auto file = find<vfs::file>(*find<vfs::directory>(wrapper, L"d"), L"f");
    EXPECT_EQ(file->get_size(), 50'000);
    std::string buffer(30'000, ' ');
    file->open(vfs::modeRead, 0);
    EXPECT_EQ(file->read(buffer.data(), 30'000), 30'000U);
    EXPECT_EQ(buffer, std::string(30'000, 'x'));
    PostThreadMessageW(thread, WM_QUIT, 0, 0);
    owner.join();
    EXPECT_EQ(failure_of([&] { file->read(buffer.data(), 30'000); }),
              L"Read failed: Read of 30000 bytes from 'd\\f' failed: Stream operation call failed");
    EXPECT_EQ(failure_of([&] { file->get_size(); }),
              L"Get size failed: Can't get size of 'd\\f': Stream operation call failed");
    file->close(0);
    EXPECT_EQ(failure_of([&] { file->open(vfs::modeRead, 0); }),
              L"Stream open failed: Stream 'd\\f' can't be opened, mode=1");
}

TEST(foreign_sources, move_inside_the_store_by_one_request_a_file) {
    support::store_control control{support::environment("QUILLDECK_TEST_HTTPS_URL")};
    vfs_quilldeck::ensure_pc_id();
    vfs_quilldeck::login(utils::own_module(), L"demo", L"demo");
    const vfs::item_ptr root = vfs_quilldeck::get_client(utils::own_module())->get_root();
    auto& top = dynamic_cast<vfs::directory&>(*root);
    const auto make = [](vfs::directory& in, const wchar_t* name) {
        return std::dynamic_pointer_cast<vfs::directory>(in.create_directory(name));
    };
    const auto from = make(top, L"From");
    const auto below = make(*from, L"Below");
    const auto to = make(top, L"To");
    const auto source = com::make<virtual_files>();
    source->files = {virtual_folder(L"Below")};
    for (const wchar_t* name : {L"f", L"g"}) {
        below->create_file(name);
        source->files.push_back({.path = std::wstring(L"Below\\") + name});
    }
    from->get_items();

    // The array of lists that goes with the mark: the folder's list from the desktop on.
    const shell::CItemIDList drive(parse(L"::{20D04FE0-3AEA-1069-A2D8-08002B30309D}").get(), true);
    const auto list_of = [&](const vfs::item_ptr& item) {
        return (drive + shell::CItemIDList(shell::PIDLDATA(item))).to_list();
    };
    const auto array_of = [](const ITEMIDLIST* list, UINT offset) {
        const UINT header[] = {0, offset};
        return std::string(reinterpret_cast<const char*>(header), sizeof header) +
               std::string(reinterpret_cast<const char*>(list), ILGetSize(list));
    };
    const auto list = list_of(from);
    const auto run = [&](const std::string& array, const vfs::item_ptr& destination) {
        source->blocks = {
            {com::registered_formats.quilldeck_data_object, std::string("\1\0\0\0", 4)},
            {com::registered_formats.shell_id_list_array, array}};
        CFILEDESCRIPTORWrapper wrapper(source.Get(), source->descriptors().get());
        control.reset();
        return failure_of([&] {
            const auto folder = find<vfs::directory>(wrapper, L"Below");
            for (const vfs::item_ptr& item : folder->get_items()) {
                auto& file = dynamic_cast<vfs::file&>(*item);
                EXPECT_EQ(file.get_size(), 0);
                file.copy(destination, true);
            }
        });
    };
    const std::wstring invalid = L"Internal error: Invalid argument in CFILEDESCRIPTORFile::";
    const std::wstring no_folder = invalid + L"GetVfsDirectoryOfDataObject( IDataObject* )";
    const std::string whole = array_of(list.get(), 8);
    EXPECT_EQ(run(whole.substr(0, whole.size() - 3), to), no_folder);
    EXPECT_EQ(run(array_of(list.get(), 0x7FFFFFFF), to), no_folder);
    EXPECT_EQ(run(whole.substr(0, 6), to), no_folder);
    EXPECT_EQ(run(array_of(list_of(below).get(), 8), to), no_folder) << "not there";
    EXPECT_EQ(run(whole, to), L"none");
    std::string asked;
    for (const auto& request : control.log()) {
        asked += request.value_of("action") + " ";
    }
    // Each directory on the way is listed once, and no size is asked for.
    EXPECT_EQ(asked, "list_dir list_dir copy_file copy_file ");
    EXPECT_EQ(to->get_items().size(), 2U);
    EXPECT_EQ(source->openings, 0);
    for (const wchar_t* name : {L"From", L"To"}) {
        top.delete_item(name, false);
    }
}

} // namespace

} // namespace transfer
