#include "drive_access.h"
#include "eventually.h"
#include "loaded_module.h"
#include "process_census.h"
#include "service_url.h"
#include "stopped_store.h"
#include "store_control.h"

#include "com/apartment.h"
#include "com/memory.h"
#include "utils/module.h"
#include "vfs/vfs.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <string>
#include <thread>

namespace module {

namespace {

using support::parse;
using support::sign_in;

constexpr auto end_within_a_request = L"--end-within-a-request";
constexpr DWORD ended_by_itself = 7;

/// What a process has that it could lack later, once the idle threads of the platform's pool are
/// gone.
struct holdings {
    bool alone = support::eventually([] { return support::count_process().threads == 1; });
    support::process_census census = support::count_process();
    std::size_t bytes = support::allocated_bytes();
    DWORD first_free_slot = free_slot();

    friend bool operator==(const holdings&, const holdings&) = default;

private:
    static DWORD free_slot() {
        const DWORD slot = TlsAlloc();
        TlsFree(slot);
        return slot;
    }
};

std::ostream& operator<<(std::ostream& out, const holdings& all) {
    return out << (all.alone ? "" : "not alone, ") << all.census.handles << " handles, "
               << all.census.threads << " threads, " << all.bytes << " bytes, slot "
               << all.first_free_slot;
}

/// The items of a folder, which the store is asked for.
ComPtr<IEnumIDList> list(IShellFolder& folder) {
    ComPtr<IEnumIDList> items;
    com::check(folder.EnumObjects(nullptr, SHCONTF_FOLDERS | SHCONTF_NONFOLDERS, &items));
    return items;
}

/// Makes the objects that need no store.
void use(IShellFolder2& drive) {
    ComPtr<IPersistFolder> persist;
    com::check(drive.QueryInterface(IID_PPV_ARGS(&persist)));
    ITEMIDLIST* computer = nullptr;
    com::check(SHGetSpecialFolderLocation(nullptr, CSIDL_DRIVES, &computer));
    const com::unique_id_list place(computer);
    com::check(persist->Initialize(computer));
    SHELLDETAILS details{};
    com::check(drive.GetDetailsOf(nullptr, 0, &details));
    CoTaskMemFree(details.str.pOleStr);
    ComPtr<IShellView> view;
    com::check(drive.CreateViewObject(nullptr, IID_PPV_ARGS(&view)));
}

/// Makes those that belong to the items of the drive, all of them folders.
void use_items(IShellFolder2& drive) {
    const auto items = list(drive);
    ITEMIDLIST* item = nullptr;
    while (items->Next(1, &item, nullptr) == S_OK) {
        const com::unique_id_list owner(item);
        const ITEMIDLIST* child = item;
        ComPtr<IUnknown> icon;
        com::check(drive.GetUIObjectOf(nullptr, 1, &child, IID_IExtractIconW, nullptr, &icon));
        ComPtr<IShellFolder> folder;
        com::check(drive.BindToObject(child, nullptr, IID_PPV_ARGS(&folder)));
        STRRET path{};
        com::check(drive.GetDisplayNameOf(child, SHGDN_FORPARSING, &path));
        CoTaskMemFree(path.pOleStr);
        SHELLDETAILS cell{};
        com::check(drive.GetDetailsOf(child, 0, &cell));
        CoTaskMemFree(cell.str.pOleStr);
    }
}

ComPtr<IShellFolder> open_pictures(IShellFolder& drive) {
    ComPtr<IShellFolder> folder;
    com::check(drive.BindToObject(parse(drive, L"Pictures").get(), nullptr, IID_PPV_ARGS(&folder)));
    return folder;
}

ComPtr<IStream> open_stream(IShellFolder& folder, const ITEMIDLIST* child) {
    ComPtr<IStream> stream;
    com::check(folder.BindToObject(child, nullptr, IID_PPV_ARGS(&stream)));
    char byte = 0;
    com::check(stream->Read(&byte, 1, nullptr));
    return stream;
}

/// Leaves four connections for transfers behind, on which nothing is left to be said.
void use_connections(IShellFolder& drive) {
    const auto folder = open_pictures(drive);
    const auto picture = parse(*folder.Get(), L"Dusk.jpg");
    std::array<ComPtr<IStream>, 4> streams;
    for (auto& stream : streams) {
        stream = open_stream(*folder.Get(), picture.get());
    }
    for (const auto& stream : streams) {
        char bytes[65536];
        ULONG count = 0;
        do {
            com::check(stream->Read(bytes, sizeof(bytes), &count));
        } while (count > 0);
    }
}

/// Reads a file, and brings in what decodes pictures.
void use_picture(IShellFolder& drive) {
    const auto folder = open_pictures(drive);
    const auto picture = parse(*folder.Get(), L"Dusk.jpg");
    const ITEMIDLIST* child = picture.get();
    open_stream(*folder.Get(), child);
    ComPtr<IExtractImage> extractor;
    com::check(folder->GetUIObjectOf(nullptr, 1, &child, IID_IExtractImage, nullptr, &extractor));
    wchar_t path[MAX_PATH];
    com::check(extractor->GetLocation(path, MAX_PATH, nullptr, nullptr, 32, nullptr));
    HBITMAP bitmap = nullptr;
    com::check(extractor->Extract(&bitmap));
    DeleteObject(bitmap);
}

void one_life(bool with_items) {
    const loaded_module extension;
    const ComPtr<IShellFolder2> drive = extension.make_drive();
    use(*drive.Get());
    if (with_items) {
        use_items(*drive.Get());
        use_picture(*drive.Get());
    }
}

/// Ends this process while a thread waits for the store within the extension.
[[noreturn]] void end_this_process() {
    const com::apartment apartment;
    const auto* const extension = new loaded_module;
    std::thread([extension] {
        const com::apartment apartment_of_thread;
        list(*extension->make_drive().Get());
    }).detach();
    support::store_control control(support::environment("QUILLDECK_TEST_HTTPS_URL"));
    while (control.log().empty()) {
        std::this_thread::yield();
    }
    ExitProcess(ended_by_itself);
}

} // namespace

TEST(lifetime, a_thousand_loads_leave_nothing_behind) {
    const com::apartment apartment;
    sign_in();
    // It needs the same libraries of the platform, so that these stay.
    std::wstring twin = support::extension_path();
    twin.replace(twin.rfind(L'\\') + 1, std::wstring::npos, L"Quilldeck.dll");
    ASSERT_NE(LoadLibraryW(twin.c_str()), nullptr);

    for (int round = 0; round < 10; ++round) {
        one_life(round % 2 == 0);
    }
    ASSERT_FALSE(is_loaded());
    const holdings before;
    for (int round = 10; round < 1000; ++round) {
        one_life(round % 20 == 0);
        ASSERT_FALSE(is_loaded()) << round;
    }
    EXPECT_EQ(holdings(), before);
}

TEST(lifetime, loading_and_looking_up_a_class_start_nothing) {
    const com::apartment apartment;
    {
        const loaded_module first;
    }
    const support::process_census before = support::count_process();
    const loaded_module extension;
    ComPtr<IClassFactory> factory;
    ASSERT_EQ(extension.get_class_object(com::CLSID_ShellFolderImpl, IID_PPV_ARGS(&factory)), S_OK);
    EXPECT_EQ(support::count_process(), before);
}

TEST(lifetime, a_thread_that_asked_the_store_leaves_nothing_at_its_end) {
    sign_in();
    const loaded_module extension;
    const auto ask = [&] {
        std::thread([&] {
            const com::apartment apartment;
            list(*extension.make_drive().Get());
        }).join();
    };
    for (int round = 0; round < 3; ++round) {
        ask();
    }
    const holdings before;
    for (int round = 0; round < 10; ++round) {
        ask();
    }
    EXPECT_EQ(holdings(), before);
}

TEST(lifetime, unloading_waits_for_no_store) {
    const com::apartment apartment;
    sign_in();
    auto extension = std::make_unique<loaded_module>();
    use_connections(*extension->make_drive().Get());
    const support::stopped_store silent;
    const ULONGLONG begin = GetTickCount64();
    extension.reset();
    // libcurl would give the server two seconds for its last words on each of the connections.
    EXPECT_LT(GetTickCount64() - begin, 2000U);
    EXPECT_FALSE(is_loaded());
}

TEST(lifetime, a_deletion_outlives_all_that_asked_for_it) {
    const com::apartment apartment;
    const auto pictures =
        std::dynamic_pointer_cast<vfs::directory>(sign_in()->get_directory(L"Pictures", false));
    const std::wstring name = L"Deleted " + std::to_wstring(GetCurrentProcessId());
    pictures->create_directory(name);
    support::store_control control(support::environment("QUILLDECK_TEST_HTTPS_URL"));
    {
        const loaded_module extension;
        const auto folder = open_pictures(*extension.make_drive().Get());
        list(*folder.Get());
        const auto deleted = parse(*folder.Get(), name);
        const ITEMIDLIST* child = deleted.get();
        ComPtr<IDataObject> data;
        com::check(folder->GetUIObjectOf(nullptr, 1, &child, IID_IDataObject, nullptr,
                                         reinterpret_cast<void**>(data.GetAddressOf())));
        control.fault({{"kind", "delay"}, {"seconds", "2"}, {"action", "move_dir_to_trash"}});
        // As who has moved it away tells it.
        for (const wchar_t* told : {CFSTR_LOGICALPERFORMEDDROPEFFECT, CFSTR_PASTESUCCEEDED}) {
            FORMATETC format{static_cast<CLIPFORMAT>(RegisterClipboardFormatW(told)), nullptr,
                             DVASPECT_CONTENT, -1, TYMED_HGLOBAL};
            STGMEDIUM medium{};
            medium.tymed = TYMED_HGLOBAL;
            medium.hGlobal = GlobalAlloc(GMEM_FIXED, sizeof(DWORD));
            *static_cast<DWORD*>(medium.hGlobal) = DROPEFFECT_MOVE;
            com::check(data->SetData(&format, &medium, TRUE));
        }
    }
    EXPECT_TRUE(is_loaded());
    EXPECT_TRUE(support::eventually([] { return !is_loaded(); }));
    EXPECT_THROW(pictures->find_item_by_name(name, true), vfs::item_not_found_exception);
}

TEST(lifetime, a_process_may_end_within_a_request) {
    sign_in();
    support::store_control control(support::environment("QUILLDECK_TEST_HTTPS_URL"));
    control.reset();
    control.fault({{"kind", "delay"}, {"seconds", "3600"}});
    EXPECT_EQ(
        support::run_command(L"\"" + utils::own_module_path() + L"\" " + end_within_a_request),
        ended_by_itself);
    control.reset();
}

} // namespace module

int main(int argc, char** argv) {
    if (std::wstring(GetCommandLineW()).ends_with(module::end_within_a_request)) {
        module::end_this_process();
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
