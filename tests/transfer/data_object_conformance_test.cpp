/// What every data object owes its consumers, checked over ours, over ours as the clipboard hands
/// it out, and over the platform's own for files, so that a wrong check shows.
#include "outgoing.h"

#include "shell_items/id_list_bytes.h"

#include <filesystem>
#include <fstream>
#include <set>

namespace transfer {

namespace {

namespace fs = std::filesystem;

/// Data objects for the items "tree" and "file" of a folder.
struct sample {
    const char* name;
    bool local;
    bool through_clipboard;
};

class data_object : public outgoing, public testing::WithParamInterface<sample> {
protected:
    data_object() {
        if (GetParam().local) {
            place = make_local();
        }
        object = make({L"tree", L"file"});
        if (GetParam().through_clipboard) {
            source = object;
            com::check(::OleSetClipboard(source.Get()));
            com::check(::OleGetClipboard(&object));
        }
    }

    ~data_object() override {
        object.Reset();
        EXPECT_EQ(::OleSetClipboard(nullptr), S_OK);
    }

    static ComPtr<IShellFolder2> make_local() {
        const fs::path path = fs::temp_directory_path() / L"data objects";
        fs::create_directories(path / L"tree");
        std::ofstream(path / L"file") << "text";
        ComPtr<IShellFolder> desktop;
        com::check(::SHGetDesktopFolder(&desktop));
        return shell::open(*desktop.Get(), path);
    }

    ComPtr<IEnumFORMATETC> enumerate() {
        ComPtr<IEnumFORMATETC> all;
        EXPECT_EQ(object->EnumFormatEtc(DATADIR_GET, &all), S_OK);
        return all;
    }

    std::vector<FORMATETC> formats() {
        const auto all = enumerate();
        std::vector<FORMATETC> found;
        FORMATETC each{};
        while (all->Next(1, &each, nullptr) == S_OK) {
            found.push_back(each);
        }
        return found;
    }

    ComPtr<IDataObject> object;
    ComPtr<IDataObject> source;
};

TEST_P(data_object, enumerates_its_formats_in_steps_as_often_as_wanted) {
    const auto expected = formats();
    const auto total = static_cast<ULONG>(expected.size());
    ASSERT_GE(total, 2U);
    const auto all = enumerate();
    const auto other = enumerate();
    std::vector<FORMATETC> taken(total + 5);
    ULONG fetched = 99;
    EXPECT_EQ(all->Next(2, taken.data(), &fetched), S_OK);
    EXPECT_EQ(fetched, 2U);
    EXPECT_EQ(taken[1].cfFormat, expected[1].cfFormat);
    // The clipboard here says S_OK, having delivered less than it was asked for.
    EXPECT_EQ(all->Next(total + 3, taken.data() + 2, &fetched),
              GetParam().through_clipboard ? S_OK : S_FALSE);
    EXPECT_EQ(fetched, total - 2);
    for (ULONG i = 0; i < total; ++i) {
        EXPECT_EQ(taken[i].cfFormat, expected[i].cfFormat);
    }
    EXPECT_EQ(all->Next(1, taken.data(), nullptr), S_FALSE) << "is at its end";
    EXPECT_EQ(all->Reset(), S_OK);
    EXPECT_EQ(all->Skip(total - 1), S_OK);
    EXPECT_EQ(all->Next(1, taken.data(), nullptr), S_OK);
    EXPECT_EQ(taken[0].cfFormat, expected.back().cfFormat);
    EXPECT_EQ(all->Skip(1), S_FALSE);
    EXPECT_EQ(other->Next(1, taken.data(), nullptr), S_OK) << "another one stands where it stood";
    EXPECT_EQ(taken[0].cfFormat, expected[0].cfFormat);
    ComPtr<IEnumFORMATETC> none;
    EXPECT_EQ(object->EnumFormatEtc(DATADIR_SET, &none), E_NOTIMPL);
    EXPECT_FALSE(none);
}

TEST_P(data_object, gives_what_it_enumerates_again_and_again) {
    std::set<CLIPFORMAT> seen;
    for (FORMATETC format : formats()) {
        EXPECT_NE(format.cfFormat, 0);
        EXPECT_NE(format.tymed, 0U);
        EXPECT_EQ(format.ptd, nullptr);
        EXPECT_EQ(format.dwAspect, static_cast<DWORD>(DVASPECT_CONTENT));
        EXPECT_EQ(format.lindex, -1);
        EXPECT_TRUE(seen.insert(format.cfFormat).second) << format.cfFormat;
        if (format.cfFormat == registered_formats.file_contents) {
            format.lindex = GetParam().local ? -1 : 5;
        }
        for (int round = 0; round < 2; ++round) {
            STGMEDIUM medium{};
            ASSERT_EQ(object->GetData(&format, &medium), S_OK) << format.cfFormat;
            EXPECT_NE(medium.tymed & format.tymed, 0U);
            if (medium.tymed == TYMED_HGLOBAL) {
                const com::global_lock block(medium.hGlobal);
                EXPECT_GE(block.bytes().size(), 4U);
            }
            ::ReleaseStgMedium(&medium);
        }
    }
}

TEST_P(data_object, refuses_what_it_has_not) {
    const UINT unknown = ::RegisterClipboardFormatW(L"A format of nobody's");
    for (FORMATETC format : {format_of(unknown), format_of(CF_BITMAP, TYMED_GDI)}) {
        STGMEDIUM medium{};
        EXPECT_HRESULT_FAILED(object->GetData(&format, &medium));
        EXPECT_EQ(medium.tymed, 0U);
        EXPECT_NE(object->QueryGetData(&format), S_OK);
    }
    EXPECT_HRESULT_FAILED(object->DAdvise(nullptr, 0, nullptr, nullptr));
    void* none = this;
    EXPECT_EQ(object->QueryInterface(__uuidof(IDropTarget), &none), E_NOINTERFACE);
    EXPECT_EQ(none, nullptr);
    ComPtr<IUnknown> first;
    ComPtr<IUnknown> second;
    ComPtr<IDataObject> again;
    ASSERT_EQ(object.As(&first), S_OK);
    ASSERT_EQ(first.As(&again), S_OK);
    ASSERT_EQ(again.As(&second), S_OK);
    EXPECT_EQ(first.Get(), second.Get()) << "one identity";
}

TEST_P(data_object, names_its_items_by_their_lists) {
    const auto medium = get_block(*object.Get(), registered_formats.shell_id_list_array);
    const com::global_lock block(medium.get().hGlobal);
    const auto* const begin = block.bytes().data();
    const auto* const array = reinterpret_cast<const CIDA*>(begin);
    ASSERT_EQ(array->cidl, 2U);
    const std::wstring names[] = {L"tree", L"file"};
    for (UINT i = 0; i < 2; ++i) {
        ASSERT_LT(array->aoffset[i + 1], block.bytes().size());
        const auto* const item = reinterpret_cast<const ITEMIDLIST*>(begin + array->aoffset[i + 1]);
        EXPECT_EQ(shell::name_of(*place.Get(), item, SHGDN_INFOLDER), names[i]);
        // They need not be aligned.
        EXPECT_EQ(shell::entries_of(item).size(), shell::first_entry_of(item).size());
    }
}

TEST_P(data_object, stays_on_the_clipboard_until_another_one_comes) {
    if (GetParam().through_clipboard) {
        // What is on the clipboard is the object behind.
        EXPECT_EQ(::OleIsCurrentClipboard(source.Get()), S_OK);
        return;
    }
    const auto references = [this] {
        object->AddRef();
        return object->Release();
    };
    const ULONG before = references();
    ASSERT_EQ(::OleSetClipboard(object.Get()), S_OK);
    EXPECT_GT(references(), before);
    EXPECT_EQ(::OleIsCurrentClipboard(object.Get()), S_OK);
    ComPtr<IDataObject> taken;
    ASSERT_EQ(::OleGetClipboard(&taken), S_OK);
    for (FORMATETC format : formats()) {
        EXPECT_TRUE(::IsClipboardFormatAvailable(format.cfFormat)) << format.cfFormat;
    }
    EXPECT_EQ(::OleSetClipboard(nullptr), S_OK);
    taken.Reset();
    EXPECT_EQ(::OleIsCurrentClipboard(object.Get()), S_FALSE);
    EXPECT_EQ(references(), before);
}

INSTANTIATE_TEST_SUITE_P(all, data_object,
                         testing::Values(sample{"the_drives", false, false},
                                         sample{"the_drives_on_the_clipboard", false, true},
                                         sample{"the_platforms", true, false},
                                         sample{"the_platforms_on_the_clipboard", true, true}),
                         [](const auto& tested) { return tested.param.name; });

} // namespace

} // namespace transfer
