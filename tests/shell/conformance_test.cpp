/// What every shell folder owes its callers, checked over a folder of the drive and over the
/// platform's own folder of files, so that a wrong check shows.
#include "signed_in.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace shell {

namespace {

namespace fs = std::filesystem;

constexpr auto all = SHCONTF_FOLDERS | SHCONTF_NONFOLDERS;

/// A folder with the folders "alpha" and "zeta" and the files "Beta.txt", "gamma.TXT" and
/// "\u00e9psilon". The object is made anew for each test, as the shell does it.
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
    ITEMIDLIST* list = nullptr;
    com::check(SHParseDisplayName(path.c_str(), nullptr, &list, 0, nullptr));
    const com::unique_id_list owned(list);
    ComPtr<IShellFolder2> folder;
    com::check(SHBindToObject(nullptr, list, nullptr, IID_PPV_ARGS(&folder)));
    return folder;
}

ComPtr<IShellFolder2> make_remote() {
    const auto drive = make_drive();
    const auto root = directory_of(*drive.Get());
    try {
        const auto folder =
            std::dynamic_pointer_cast<vfs::directory>(root->create_directory(L"conformance"));
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

    std::vector<std::wstring> names(SHCONTF flags) {
        std::vector<std::wstring> found;
        for (const auto& item : list(*folder.Get(), flags)) {
            found.push_back(name_of(*folder.Get(), item.get(), SHGDN_INFOLDER));
        }
        std::ranges::sort(found);
        return found;
    }

    int compare(const ITEMIDLIST* left, const ITEMIDLIST* right, LPARAM column = 0) {
        const HRESULT answer = folder->CompareIDs(column, left, right);
        EXPECT_HRESULT_SUCCEEDED(answer);
        const auto order = static_cast<short>(HRESULT_CODE(answer));
        return (order > 0) - (order < 0);
    }
};

TEST_P(shell_folder, lists_what_it_was_asked_for) {
    EXPECT_EQ(names(SHCONTF_FOLDERS), std::vector<std::wstring>({L"alpha", L"zeta"}));
    EXPECT_EQ(names(SHCONTF_NONFOLDERS),
              std::vector<std::wstring>({L"Beta.txt", L"gamma.TXT", L"\u00e9psilon"}));
    EXPECT_EQ(names(all).size(), 5u);
}

TEST_P(shell_folder, enumerates_in_steps) {
    ComPtr<IEnumIDList> items;
    ASSERT_EQ(folder->EnumObjects(nullptr, all, &items), S_OK);
    ITEMIDLIST* got[4]{};
    ULONG count = 9;
    ASSERT_EQ(items->Next(2, got, &count), S_OK);
    ASSERT_EQ(count, 2u);
    const com::unique_id_list first(got[0]);
    const com::unique_id_list second(got[1]);
    EXPECT_TRUE(is_equal(ILNext(first.get()), ILNext(second.get()))) << "one level each";
    EXPECT_NE(compare(first.get(), second.get()), 0);

    ComPtr<IEnumIDList> clone;
    // Of the platform's enumerators only some can be copied.
    if (items->Clone(&clone) == S_OK) {
        EXPECT_EQ(clone->Skip(1), S_OK);
        EXPECT_EQ(clone->Next(4, got, &count), S_FALSE);
        EXPECT_EQ(count, 2u);
        std::for_each_n(got, count, CoTaskMemFree);
    }
    EXPECT_HRESULT_SUCCEEDED(items->Next(4, got, &count));
    EXPECT_EQ(count, 3u) << "the copy walks by itself";
    std::for_each_n(got, count, CoTaskMemFree);
    EXPECT_EQ(items->Next(1, got, nullptr), S_FALSE);
    EXPECT_EQ(items->Reset(), S_OK);
    ASSERT_EQ(items->Next(1, got, nullptr), S_OK);
    EXPECT_EQ(compare(com::unique_id_list(got[0]).get(), first.get()), 0);
    EXPECT_EQ(items->Skip(9), S_FALSE);
}

TEST_P(shell_folder, parses_its_own_names) {
    for (const auto& item : list(*folder.Get(), all)) {
        for (const SHGDNF flags :
             {SHGDNF{SHGDN_INFOLDER}, SHGDNF{SHGDN_INFOLDER | SHGDN_FORPARSING}}) {
            const std::wstring name = name_of(*folder.Get(), item.get(), flags);
            EXPECT_EQ(compare(parse(*folder.Get(), name).get(), item.get()), 0);
        }
    }
    // To a program that is not the file manager these are files that lie somewhere.
    const std::wstring path =
        name_of(*folder.Get(), parse(*folder.Get(), L"alpha").get(), SHGDN_FORPARSING);
    EXPECT_TRUE(fs::is_directory(path)) << fs::path(path);
    EXPECT_TRUE(path.ends_with(L"\\conformance\\alpha"));
    ULONG attributes = SFGAO_FOLDER | SFGAO_STREAM | SFGAO_LINK;
    ITEMIDLIST* parsed = nullptr;
    wchar_t name[] = L"ALPHA";
    ASSERT_EQ(folder->ParseDisplayName(nullptr, nullptr, name, nullptr, &parsed, &attributes),
              S_OK);
    CoTaskMemFree(parsed);
    // The platform's folder answers more than it was asked.
    EXPECT_EQ(attributes & (SFGAO_FOLDER | SFGAO_STREAM | SFGAO_LINK), ULONG{SFGAO_FOLDER});
    wchar_t missing[] = L"missing";
    EXPECT_TRUE(
        FAILED(folder->ParseDisplayName(nullptr, nullptr, missing, nullptr, &parsed, nullptr)));
    EXPECT_EQ(parsed, nullptr);
}

TEST_P(shell_folder, orders_its_items) {
    const auto items = list(*folder.Get(), all);
    for (const auto& left : items) {
        EXPECT_EQ(compare(left.get(), left.get()), 0);
        for (const auto& right : items) {
            EXPECT_EQ(compare(left.get(), right.get()), -compare(right.get(), left.get()));
        }
    }
    const auto at = [&](const wchar_t* name) {
        return parse(*folder.Get(), name);
    };
    EXPECT_EQ(compare(at(L"zeta").get(), at(L"Beta.txt").get()), -1) << "folders come first";
    EXPECT_EQ(compare(at(L"alpha").get(), at(L"zeta").get()), -1);
    EXPECT_EQ(compare(at(L"Beta.txt").get(), at(L"gamma.TXT").get()), -1);
}

TEST_P(shell_folder, tells_what_can_be_done_with_items) {
    constexpr SFGAOF asked = SFGAO_FOLDER | SFGAO_STREAM | SFGAO_FILESYSTEM | SFGAO_CANRENAME |
                             SFGAO_CANDELETE | SFGAO_CANCOPY | SFGAO_LINK | SFGAO_HIDDEN;
    constexpr SFGAOF common = SFGAO_FILESYSTEM | SFGAO_CANRENAME | SFGAO_CANDELETE | SFGAO_CANCOPY;
    const auto directory = parse(*folder.Get(), L"alpha");
    const auto file = parse(*folder.Get(), L"Beta.txt");
    const ITEMIDLIST* both[] = {directory.get(), file.get()};
    const auto attributes_of = [&](UINT count, const ITEMIDLIST** items) {
        SFGAOF flags = asked;
        EXPECT_EQ(folder->GetAttributesOf(count, items, &flags), S_OK);
        return flags & asked;
    };
    EXPECT_EQ(attributes_of(1, both), common | SFGAO_FOLDER);
    EXPECT_EQ(attributes_of(1, both + 1), common | SFGAO_STREAM);
    EXPECT_EQ(attributes_of(2, both) & common, common);
}

TEST_P(shell_folder, gives_its_subfolders_their_place) {
    const auto item = parse(*folder.Get(), L"alpha");
    ComPtr<IPersistFolder2> own;
    ASSERT_EQ(folder.As(&own), S_OK);
    ComPtr<IPersistFolder2> below;
    ASSERT_EQ(folder->BindToObject(item.get(), nullptr, IID_PPV_ARGS(&below)), S_OK);
    ITEMIDLIST* own_list = nullptr;
    ITEMIDLIST* below_list = nullptr;
    ASSERT_EQ(own->GetCurFolder(&own_list), S_OK);
    ASSERT_EQ(below->GetCurFolder(&below_list), S_OK);
    EXPECT_TRUE(ILIsParent(own_list, below_list, TRUE));
    EXPECT_EQ(compare(ILFindLastID(below_list), item.get()), 0);
    CoTaskMemFree(own_list);
    CoTaskMemFree(below_list);
    void* none = this;
    EXPECT_EQ(folder->BindToObject(item.get(), nullptr, __uuidof(IDropSource), &none),
              E_NOINTERFACE);
    EXPECT_EQ(none, nullptr);
    ComPtr<IShellView> view;
    EXPECT_EQ(folder->CreateViewObject(nullptr, IID_PPV_ARGS(&view)), S_OK);
    none = this;
    EXPECT_TRUE(FAILED(folder->CreateViewObject(nullptr, __uuidof(IStorage), &none)));
    EXPECT_EQ(none, nullptr);
}

TEST_P(shell_folder, renames) {
    const auto item = parse(*folder.Get(), L"gamma.TXT");
    ITEMIDLIST* renamed = nullptr;
    ASSERT_EQ(folder->SetNameOf(nullptr, item.get(), L"delta.TXT", SHGDN_INFOLDER, &renamed), S_OK);
    const com::unique_id_list owned(renamed);
    EXPECT_EQ(name_of(*folder.Get(), renamed, SHGDN_INFOLDER), L"delta.TXT");
    EXPECT_EQ(compare(parse(*folder.Get(), L"delta.TXT").get(), renamed), 0);
    EXPECT_THROW(parse(*folder.Get(), L"gamma.TXT"), com::status_exception);
    EXPECT_EQ(folder->SetNameOf(nullptr, renamed, L"gamma.TXT", SHGDN_INFOLDER, nullptr), S_OK);
}

TEST_P(shell_folder, shows_details) {
    const auto item = parse(*folder.Get(), L"Beta.txt");
    SHELLDETAILS details{};
    UINT columns = 0;
    for (; SUCCEEDED(folder->GetDetailsOf(nullptr, columns, &details)); ++columns) {
        wchar_t* title = nullptr;
        ASSERT_EQ(StrRetToStrW(&details.str, nullptr, &title), S_OK);
        EXPECT_STRNE(com::task_ptr<wchar_t>(title).get(), L"");
        EXPECT_GT(details.cxChar, 0);
    }
    EXPECT_GE(columns, 4u);
    EXPECT_EQ(cell_of(*folder.Get(), item.get(), 0), L"Beta.txt");
    SHCOLSTATEF state = 0;
    EXPECT_EQ(folder->GetDefaultColumnState(0, &state), S_OK);
    EXPECT_EQ(state & (SHCOLSTATE_TYPEMASK | SHCOLSTATE_ONBYDEFAULT),
              static_cast<SHCOLSTATEF>(SHCOLSTATE_TYPE_STR | SHCOLSTATE_ONBYDEFAULT));
    EXPECT_EQ(folder->GetDefaultColumnState(99, &state), E_INVALIDARG);
}

INSTANTIATE_TEST_SUITE_P(all, shell_folder,
                         testing::Values(sample{"the_drives", make_remote},
                                         sample{"the_platforms", make_local}),
                         [](const auto& tested) { return tested.param.name; });

} // namespace

} // namespace shell
