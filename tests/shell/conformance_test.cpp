/// What every shell folder owes its callers, checked over a folder of the drive and over the
/// platform's own folder of files, so that a wrong check shows.
#include "signed_in.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace shell {

namespace {

namespace fs = std::filesystem;

/// A folder with the items below. The object is made anew for each test, as the shell does it.
struct sample {
    const char* name;
    ComPtr<IShellFolder2> (*make)();
};

constexpr const wchar_t* folder_names[] = {L"alpha", L"zeta"};
constexpr const wchar_t* file_names[] = {L"Beta.txt", L"gamma.TXT", L"\u00e9psilon"};

ComPtr<IShellFolder2> make_local() {
    const fs::path path = fs::temp_directory_path() / L"conformance";
    for (const auto* name : folder_names) {
        fs::create_directories(path / name);
    }
    for (const auto* name : file_names) {
        std::ofstream(path / name) << "text";
    }
    ComPtr<IShellFolder> desktop;
    com::check(SHGetDesktopFolder(&desktop));
    return open(*desktop.Get(), path);
}

ComPtr<IShellFolder2> make_remote() {
    const auto drive = make_drive();
    try {
        const auto folder = std::dynamic_pointer_cast<vfs::directory>(
            directory_of(*drive.Get())->create_directory(L"conformance"));
        for (const auto* name : folder_names) {
            folder->create_directory(name);
        }
        for (const auto* name : file_names) {
            folder->create_file(name);
        }
    } catch (const vfs::item_already_exists_exception&) {
        // Made by an earlier test.
    }
    return open(*drive.Get(), L"conformance");
}

class shell_folder : public signed_in, public testing::WithParamInterface<sample> {
protected:
    const ComPtr<IShellFolder2> folder = GetParam().make();

    com::unique_id_list at(const std::wstring& name) { return parse(*folder.Get(), name); }

    std::vector<std::wstring> names(SHCONTF flags) {
        std::vector<std::wstring> found;
        for (const auto& item : list(*folder.Get(), flags)) {
            found.push_back(name_of(*folder.Get(), item.get(), SHGDN_INFOLDER));
        }
        std::ranges::sort(found);
        return found;
    }

    int compare(const com::unique_id_list& left, const com::unique_id_list& right) {
        const HRESULT answer = folder->CompareIDs(0, left.get(), right.get());
        EXPECT_HRESULT_SUCCEEDED(answer);
        const auto order = static_cast<short>(HRESULT_CODE(answer));
        return (order > 0) - (order < 0);
    }
};

TEST_P(shell_folder, lists_and_orders_its_items) {
    EXPECT_EQ(names(SHCONTF_FOLDERS), std::vector<std::wstring>({L"alpha", L"zeta"}));
    EXPECT_EQ(names(SHCONTF_NONFOLDERS),
              std::vector<std::wstring>({L"Beta.txt", L"gamma.TXT", L"\u00e9psilon"}));
    const auto items = list(*folder.Get(), all_items);
    ASSERT_EQ(items.size(), 5u);
    for (const auto& left : items) {
        for (const auto& right : items) {
            EXPECT_EQ(compare(left, right), -compare(right, left));
            EXPECT_EQ(compare(left, right) == 0, left == right);
        }
    }
    EXPECT_EQ(compare(at(L"zeta"), at(L"Beta.txt")), -1) << "folders come first";
    EXPECT_EQ(compare(at(L"Beta.txt"), at(L"gamma.TXT")), -1);
    EXPECT_EQ(cell_of(*folder.Get(), at(L"Beta.txt").get(), 0), L"Beta.txt");
}

TEST_P(shell_folder, enumerates_in_steps) {
    ComPtr<IEnumIDList> items;
    ASSERT_EQ(folder->EnumObjects(nullptr, all_items, &items), S_OK);
    ITEMIDLIST* got[4]{};
    ULONG count = 9;
    const auto take = [&](IEnumIDList& from, ULONG wanted) {
        EXPECT_HRESULT_SUCCEEDED(from.Next(wanted, got, &count));
        return std::vector<com::unique_id_list>(got, got + count);
    };
    const auto first = take(*items.Get(), 2);
    ASSERT_EQ(first.size(), 2u);
    EXPECT_EQ(ILNext(first[0].get())->mkid.cb, 0) << "one level each";
    ComPtr<IEnumIDList> clone;
    // Of the platform's enumerators only some can be copied.
    if (items->Clone(&clone) == S_OK) {
        EXPECT_EQ(clone->Skip(1), S_OK);
        EXPECT_EQ(take(*clone.Get(), 4).size(), 2u);
    }
    EXPECT_EQ(take(*items.Get(), 4).size(), 3u);
    EXPECT_EQ(items->Next(1, got, nullptr), S_FALSE);
    EXPECT_EQ(items->Reset(), S_OK);
    EXPECT_EQ(compare(take(*items.Get(), 1).at(0), first[0]), 0);
    EXPECT_EQ(items->Skip(9), S_FALSE);
}

TEST_P(shell_folder, parses_its_own_names) {
    for (const auto& item : list(*folder.Get(), all_items)) {
        for (const int flags : {int{SHGDN_INFOLDER}, SHGDN_INFOLDER | SHGDN_FORPARSING}) {
            const auto name = name_of(*folder.Get(), item.get(), static_cast<SHGDNF>(flags));
            EXPECT_EQ(compare(at(name), item), 0);
        }
    }
    const auto path = name_of(*folder.Get(), at(L"alpha").get(), SHGDN_FORPARSING);
    EXPECT_TRUE(path.ends_with(L"\\conformance\\alpha"));
    EXPECT_THROW(at(L"missing"), com::status_exception);
}

TEST_P(shell_folder, tells_what_can_be_done_with_items) {
    constexpr SFGAOF asked = SFGAO_FOLDER | SFGAO_STREAM | SFGAO_FILESYSTEM | SFGAO_CANRENAME |
                             SFGAO_CANDELETE | SFGAO_CANCOPY | SFGAO_LINK | SFGAO_HIDDEN;
    constexpr SFGAOF common = SFGAO_FILESYSTEM | SFGAO_CANRENAME | SFGAO_CANDELETE | SFGAO_CANCOPY;
    const auto alpha = at(L"alpha");
    const auto beta = at(L"Beta.txt");
    EXPECT_EQ(attributes_of(*folder.Get(), {alpha.get()}) & asked, common | SFGAO_FOLDER);
    EXPECT_EQ(attributes_of(*folder.Get(), {beta.get()}) & asked, common | SFGAO_STREAM);
    EXPECT_EQ(attributes_of(*folder.Get(), {alpha.get(), beta.get()}) & common, common);
}

TEST_P(shell_folder, makes_its_subfolders_and_its_view) {
    const auto item = at(L"alpha");
    const auto place_of = [](IShellFolder& of) {
        ComPtr<IPersistFolder2> persist;
        com::check(of.QueryInterface(IID_PPV_ARGS(&persist)));
        ITEMIDLIST* place = nullptr;
        com::check(persist->GetCurFolder(&place));
        return bytes_of(com::unique_id_list(place).get());
    };
    EXPECT_EQ(place_of(*open(*folder.Get(), L"alpha").Get()),
              place_of(*folder.Get()) + bytes_of(item.get()));
    ComPtr<IShellView> view;
    EXPECT_EQ(folder->CreateViewObject(nullptr, IID_PPV_ARGS(&view)), S_OK);
    void* none = this;
    EXPECT_EQ(folder->BindToObject(item.get(), nullptr, __uuidof(IDropSource), &none),
              E_NOINTERFACE);
    EXPECT_EQ(none, nullptr);
}

TEST_P(shell_folder, renames) {
    ITEMIDLIST* renamed = nullptr;
    ASSERT_EQ(
        folder->SetNameOf(nullptr, at(L"gamma.TXT").get(), L"delta.TXT", SHGDN_INFOLDER, &renamed),
        S_OK);
    const com::unique_id_list owned(renamed);
    EXPECT_EQ(compare(at(L"delta.TXT"), owned), 0);
    EXPECT_THROW(at(L"gamma.TXT"), com::status_exception);
    EXPECT_EQ(folder->SetNameOf(nullptr, renamed, L"gamma.TXT", SHGDN_INFOLDER, nullptr), S_OK);
}

INSTANTIATE_TEST_SUITE_P(all, shell_folder,
                         testing::Values(sample{"the_drives", make_remote},
                                         sample{"the_platforms", make_local}),
                         [](const auto& tested) { return tested.param.name; });

} // namespace

} // namespace shell
