#include "outgoing.h"

#include "driven_window.h"
#include "eventually.h"

#include "transfer/data_object/data_object.h"

#include <ole2.h>
#include <shlwapi.h>

#include <algorithm>
#include <cstring>
#include <thread>

namespace transfer {

namespace {

/// What a consumer writes into a data object, and what comes of it.
class writes : public outgoing {
protected:
    static ULONG references_of(IUnknown& object) {
        object.AddRef();
        return object.Release();
    }

    static HRESULT set(IDataObject& object, UINT format, const STGMEDIUM& medium, bool given) {
        FORMATETC request = format_of(format, medium.tymed);
        STGMEDIUM value = medium;
        return object.SetData(&request, &value, given);
    }

    static com::medium block_of(const void* bytes, std::size_t size) {
        com::medium made(com::make_global(size, GMEM_MOVEABLE));
        std::memcpy(com::global_lock(made.get().hGlobal).bytes().data(), bytes, size);
        return made;
    }

    static std::size_t count_of(IDataObject& object, UINT format) {
        ComPtr<IEnumFORMATETC> all;
        com::check(object.EnumFormatEtc(DATADIR_GET, &all));
        std::size_t count = 0;
        for (FORMATETC each{}; all->Next(1, &each, nullptr) == S_OK;) {
            count += each.cfFormat == format ? 1 : 0;
        }
        return count;
    }

    /// Whether a worker asks the store for it.
    bool is_moved_to_trash() {
        return support::eventually([this] {
            const auto log = control.log();
            return std::ranges::any_of(log, [](const support::logged_request& request) {
                return request.value_of("action") == "move_file_to_trash";
            });
        });
    }

    const UINT any = ::RegisterClipboardFormatW(L"What a consumer may write");
};

TEST_F(writes, are_kept_as_they_are_given_and_lent_out) {
    const auto object = make({L"file"});
    const ULONG before = references_of(*object.Get());

    // A copy of what the caller keeps.
    const com::medium kept = block_of("1234", 4);
    EXPECT_EQ(set(*object.Get(), any, kept.get(), false), S_OK);
    {
        const com::medium lent = get_block(*object.Get(), any);
        EXPECT_NE(lent.get().hGlobal, kept.get().hGlobal);
        EXPECT_EQ(std::memcmp(com::global_lock(lent.get().hGlobal).bytes().data(), "1234", 4), 0);
        // Not another copy: the object lives as long as its block is in use.
        EXPECT_EQ(get_block(*object.Get(), any).get().hGlobal, lent.get().hGlobal);
        EXPECT_EQ(references_of(*object.Get()), before + 1);
        // Given back as its own it is copied, as it would keep itself alive for ever.
        STGMEDIUM own = lent.get();
        own.pUnkForRelease->AddRef();
        EXPECT_EQ(set(*object.Get(), any, own, true), S_OK);
        EXPECT_EQ(references_of(*object.Get()), before + 1)
            << "the reference of the medium is gone";
        EXPECT_NE(get_block(*object.Get(), any).get().hGlobal, own.hGlobal);
    }
    EXPECT_EQ(references_of(*object.Get()), before);

    // The block itself, which takes the place of the last one.
    com::medium given = block_of("5678", 4);
    const HGLOBAL block = given.get().hGlobal;
    EXPECT_EQ(set(*object.Get(), any, given.release(), true), S_OK);
    EXPECT_EQ(get_block(*object.Get(), any).get().hGlobal, block);
    EXPECT_EQ(count_of(*object.Get(), any), 1U);

    // Streams and storages are interfaces, with an owner of their own or without.
    for (const bool is_given : {false, true}) {
        ComPtr<IStream> stream;
        *stream.GetAddressOf() = ::SHCreateMemStream(reinterpret_cast<const BYTE*>("stream"), 6);
        stream->Seek({{3, 0}}, STREAM_SEEK_SET, nullptr);
        STGMEDIUM medium{};
        medium.tymed = TYMED_ISTREAM;
        medium.pstm = stream.Get();
        stream->AddRef();
        EXPECT_EQ(set(*object.Get(), any, medium, is_given), S_OK);
        if (!is_given) {
            stream->Release();
        }
        FORMATETC request = format_of(any, TYMED_ISTREAM);
        com::medium lent;
        ASSERT_EQ(object->GetData(&request, lent.put()), S_OK);
        EXPECT_EQ(lent.get().pstm == stream.Get(), is_given);
        char text[7]{};
        EXPECT_EQ(lent.get().pstm->Read(text, 6, nullptr), S_OK);
        EXPECT_STREQ(text, is_given ? "eam" : "stream");
    }
    ComPtr<IStorage> storage;
    ASSERT_EQ(::StgCreateDocfile(nullptr, STGM_CREATE | STGM_SHARE_EXCLUSIVE | STGM_READWRITE, 0,
                                 &storage),
              S_OK);
    ComPtr<IStream> element;
    ASSERT_EQ(storage->CreateStream(L"element", STGM_CREATE | STGM_SHARE_EXCLUSIVE | STGM_WRITE, 0,
                                    0, &element),
              S_OK);
    element.Reset();
    STGMEDIUM medium{};
    medium.tymed = TYMED_ISTORAGE;
    medium.pstg = storage.Get();
    EXPECT_EQ(set(*object.Get(), any, medium, false), S_OK);
    FORMATETC request = format_of(any, TYMED_ISTORAGE);
    com::medium lent;
    ASSERT_EQ(object->GetData(&request, lent.put()), S_OK);
    EXPECT_NE(lent.get().pstg, storage.Get());
    EXPECT_EQ(lent.get().pstg->OpenStream(L"element", nullptr, STGM_READ | STGM_SHARE_EXCLUSIVE, 0,
                                          &element),
              S_OK);
}

TEST_F(writes, that_are_refused_stay_with_who_made_them) {
    const auto object = make({L"file"});
    const com::medium block = block_of("1234", 4);
    FORMATETC request = format_of(any);
    STGMEDIUM medium = block.get();
    EXPECT_EQ(object->SetData(nullptr, &medium, TRUE), E_POINTER);
    EXPECT_EQ(object->SetData(&request, nullptr, TRUE), E_POINTER);
    DVTARGETDEVICE device{};
    request.ptd = &device;
    EXPECT_EQ(object->SetData(&request, &medium, TRUE), DV_E_DVTARGETDEVICE);
    request = format_of(any, TYMED_ISTREAM);
    EXPECT_EQ(object->SetData(&request, &medium, TRUE), DV_E_TYMED);
    request = format_of(registered_formats.target_class_id);
    STGMEDIUM none{};
    none.tymed = TYMED_HGLOBAL;
    EXPECT_EQ(object->SetData(&request, &none, TRUE), E_OUTOFMEMORY) << "cannot be locked";
    STGMEDIUM file{};
    file.tymed = TYMED_FILE;
    request = format_of(any, TYMED_FILE);
    EXPECT_EQ(object->SetData(&request, &file, FALSE), DV_E_TYMED);
    EXPECT_EQ(::GlobalSize(block.get().hGlobal), 4U) << "the block is still its owner's";
    EXPECT_EQ(count_of(*object.Get(), any), 0U);
    EXPECT_EQ(count_of(*object.Get(), registered_formats.target_class_id), 0U);
}

/// How often the shell hears that a folder changed.
class heard_updates {
public:
    explicit heard_updates(const ITEMIDLIST* folder)
        : window_(::CreateWindowExW(0, L"Static", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                                    nullptr, nullptr)) {
        ::SetWindowLongPtrW(window_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&receive));
        const SHChangeNotifyEntry entry{folder, FALSE};
        registration_ = ::SHChangeNotifyRegister(window_, SHCNRF_ShellLevel, SHCNE_UPDATEDIR,
                                                 WM_APP, 1, &entry);
        heard = 0;
    }

    heard_updates(const heard_updates&) = delete;
    heard_updates& operator=(const heard_updates&) = delete;

    ~heard_updates() {
        ::SHChangeNotifyDeregister(registration_);
        ::DestroyWindow(window_);
    }

    static int take() { return std::exchange(heard, 0); }

private:
    static LRESULT CALLBACK receive(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
        heard += message == WM_APP ? 1 : 0;
        return ::DefWindowProcW(window, message, wparam, lparam);
    }

    inline static int heard = 0;
    HWND window_;
    ULONG registration_;
};

TEST_F(writes, complete_a_move_once_all_agree) {
    struct row {
        const char* what;
        std::vector<std::pair<UINT, DWORD>> written;
        bool source_goes;
        int updates; ///< before anything is deleted
    };

    const UINT paste = registered_formats.paste_succeeded;
    const UINT performed = registered_formats.performed_drop_effect;
    const UINT logical = registered_formats.logical_performed_drop_effect;
    const row rows[] = {
        {"a copy", {{paste, 1}}, false, 1},
        {"nothing is written of the performing", {{paste, 2}}, false, 1},
        {"a move that was performed as a copy", {{performed, 1}, {paste, 2}}, false, 2},
        {"a move that the store made itself", {{performed, 0}, {paste, 0}}, false, 2},
        {"not pasted yet", {{performed, 2}, {logical, 2}}, false, 1},
        {"a move", {{performed, 2}, {paste, 2}}, true, 2},
        {"a move by its logic", {{logical, 2}, {performed, 1}, {paste, 0}}, true, 2},
    };
    const heard_updates updates(
        shell::CItemIDList(shell::drive_list().get(), true).to_list().get());
    for (const row& each : rows) {
        folder->create_file(L"moved");
        shell::list(*place.Get(), shell::all_items);
        const auto object = make({L"moved"});
        ASSERT_EQ(::OleSetClipboard(object.Get()), S_OK);
        asked();
        for (const auto& [format, value] : each.written) {
            EXPECT_EQ(write_value(*object.Get(), format, value), S_OK);
            EXPECT_EQ(read_value(*object.Get(), format), value);
        }
        EXPECT_EQ(::OleIsCurrentClipboard(object.Get()), each.source_goes ? S_FALSE : S_OK)
            << each.what;
        if (each.source_goes) {
            EXPECT_TRUE(is_moved_to_trash()) << each.what;
        } else {
            EXPECT_EQ(asked(), "") << each.what;
            folder->delete_item(L"moved", false);
        }
    }
    ::OleSetClipboard(nullptr);
}

TEST_F(writes, of_the_recycle_bins_class_delete_if_the_user_agrees) {
    const CLSID other = CLSID_ShellDesktop;
    CLSID bin{};
    com::check(::CLSIDFromString(L"{645FF040-5081-101B-9F08-00AA002F954E}", &bin));
    const auto object = make({L"file"});
    const auto write = [&](const void* bytes, std::size_t size) {
        com::medium block = block_of(bytes, size);
        const HRESULT status =
            set(*object.Get(), registered_formats.target_class_id, block.get(), true);
        if (SUCCEEDED(status)) {
            block.release();
        }
        return status;
    };
    const auto answer = [](int button) {
        return std::jthread([button] {
            const HWND box = support::await_dialog(L"Delete File");
            EXPECT_EQ(support::message_of(box),
                      L"Are you sure you want to move this file to the Trash?");
            support::answer_box(box, button);
        });
    };
    asked();
    EXPECT_EQ(write(&other, sizeof(other)), S_OK);
    EXPECT_EQ(write(&bin, 8), S_OK) << "half a class is none";
    {
        const auto user = answer(IDNO);
        EXPECT_EQ(write(&bin, sizeof(bin)), S_OK);
    }
    EXPECT_EQ(asked(), "");
    {
        const auto user = answer(IDYES);
        EXPECT_EQ(write(&bin, sizeof(bin)), S_OK);
    }
    EXPECT_TRUE(is_moved_to_trash());
}

} // namespace

} // namespace transfer
