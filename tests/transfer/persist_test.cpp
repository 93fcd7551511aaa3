#include "outgoing.h"
#include "second_consumer.h"

#include "transfer/data_object/data_object.h"
#include "transfer/data_object/persisted_selection.h"
#include "vfs_quilldeck/session/session.h"

#include <shlwapi.h>

#include <cstring>

namespace transfer {

namespace {

/// How a data object outlives its program.
class persistence : public outgoing {
protected:
    static ComPtr<IStream> stream_of(const std::string& bytes) {
        ComPtr<IStream> stream;
        *stream.GetAddressOf() = ::SHCreateMemStream(reinterpret_cast<const BYTE*>(bytes.data()),
                                                     static_cast<UINT>(bytes.size()));
        return stream;
    }

    static std::string save(IDataObject& object) {
        ComPtr<IPersistStream> persist;
        com::check(object.QueryInterface(IID_PPV_ARGS(&persist)));
        const auto stream = stream_of({});
        EXPECT_EQ(persist->Save(stream.Get(), TRUE), S_OK);
        STATSTG stat{};
        com::check(stream->Stat(&stat, STATFLAG_NONAME));
        std::string bytes(stat.cbSize.QuadPart, '\0');
        stream->Seek({}, STREAM_SEEK_SET, nullptr);
        com::check(stream->Read(bytes.data(), static_cast<ULONG>(bytes.size()), nullptr));
        return bytes;
    }

    static std::string number(std::size_t value) {
        const auto low = static_cast<std::uint32_t>(value);
        return {reinterpret_cast<const char*>(&low), sizeof(low)};
    }

    static std::string list(std::string entries) {
        entries += std::string(3, '\0');
        return number(entries.size()) + entries;
    }
};

TEST_F(persistence, writes_each_byte_in_its_place) {
    const HWND owner = ::CreateWindowExW(0, L"Static", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                                         nullptr, nullptr);
    const auto object = make({L"tree", L"file"}, owner);
    const auto expected = [&](DWORD effect) {
        return number(reinterpret_cast<std::uintptr_t>(owner)) + '\1' +
               list(shell::bytes_of(shell::drive_list().get())) + '\0' +
               list(shell::bytes_of(shell::parse(*shell::make_drive().Get(), name).get())) +
               number(2) + list(shell::bytes_of(shell::parse(*place.Get(), L"tree").get())) +
               list(shell::bytes_of(shell::parse(*place.Get(), L"file").get())) + number(effect);
    };
    EXPECT_EQ(save(*object.Get()), expected(0));
    ASSERT_EQ(write_value(*object.Get(), registered_formats.preferred_drop_effect, 2), S_OK);
    EXPECT_EQ(save(*object.Get()), expected(2));
    ::DestroyWindow(owner);

    ComPtr<IPersistStream> persist;
    ASSERT_EQ(object.As(&persist), S_OK);
    CLSID id{};
    EXPECT_EQ(persist->GetClassID(&id), S_OK);
    EXPECT_EQ(id, com::CLSID_DataObjectImpl);
    EXPECT_EQ(persist->GetClassID(nullptr), E_POINTER);
    EXPECT_EQ(persist->IsDirty(), E_NOTIMPL);
    ULARGE_INTEGER size{{7, 7}};
    EXPECT_EQ(persist->GetSizeMax(&size), S_OK);
    EXPECT_EQ(size.QuadPart, 5000U);
    EXPECT_EQ(persist->GetSizeMax(nullptr), S_OK);
    EXPECT_EQ(persist->Save(nullptr, TRUE), E_POINTER);
    EXPECT_EQ(persist->Load(nullptr), E_POINTER);
    EXPECT_EQ(persist->Load(stream_of(expected(0)).Get()), E_UNEXPECTED) << "is somebody already";

    // What it loads ends where it ends. The window is gone by then.
    const auto loaded = com::make<CDataObjectImpl>();
    const auto stream = stream_of(expected(2) + "more");
    asked();
    ASSERT_EQ(loaded->Load(stream.Get()), S_OK);
    char rest[9]{};
    stream->Read(rest, 8, nullptr);
    EXPECT_STREQ(rest, "more");
    const std::string again = save(*loaded.Get());
    EXPECT_EQ(again.substr(4), expected(2).substr(4));
    EXPECT_EQ(again.substr(0, 4), number(reinterpret_cast<std::uintptr_t>(::GetDesktopWindow())));
}

TEST_F(persistence, brings_the_files_back_in_another_process) {
    const support::second_process other;
    for (const auto& names :
         {std::vector<std::wstring>{L"tree", L"file"}, std::vector<std::wstring>{L"tree"}}) {
        const auto object = make(names);
        ASSERT_EQ(write_value(*object.Get(), registered_formats.preferred_drop_effect,
                              static_cast<DWORD>(names.size())),
                  S_OK);
        const std::string all =
            names.size() == 2 ? all_told : all_told.substr(0, all_told.find("file "));
        EXPECT_EQ(transfer_test::ask_to_load(other, save(*object.Get())),
                  "effect " + std::to_string(names.size()) + " " + all);
    }
}

TEST_F(persistence, refuses_what_is_no_selection_of_ours) {
    const std::string good = save(*make({L"tree", L"file"}).Get());
    const auto load = [](const std::string& bytes) {
        const auto loaded = com::make<CDataObjectImpl>();
        const HRESULT status = loaded->Load(stream_of(bytes).Get());
        EXPECT_EQ(SUCCEEDED(loaded->Save(stream_of({}).Get(), TRUE)), true);
        ComPtr<IEnumFORMATETC> formats;
        EXPECT_EQ(loaded->EnumFormatEtc(DATADIR_GET, &formats), S_OK);
        if (FAILED(status)) {
            FORMATETC one{};
            EXPECT_EQ(formats->Next(1, &one, nullptr), S_FALSE) << "nothing changed";
        }
        return status;
    };
    EXPECT_EQ(load(good), S_OK);
    for (std::size_t length = 0; length < good.size(); length += 97) {
        EXPECT_HRESULT_FAILED(load(good.substr(0, length))) << length;
    }
    const std::size_t count_at = good.size() - 4 - 2 * std::size_t{847} - 4;
    std::string none = good.substr(0, count_at) + number(0) + number(0);
    EXPECT_EQ(load(none), E_INVALIDARG);
    std::string lying = good;
    lying.replace(count_at, 4, number(0xFFFFFFFF));
    EXPECT_HRESULT_FAILED(load(lying));
    std::string foreign = good;
    foreign.replace(count_at + 8, 2, std::string("\x20\0", 2));
    EXPECT_HRESULT_FAILED(load(foreign));
    // The folder itself is not there any more.
    const auto drive = shell::make_drive();
    shell::directory_of(*drive.Get())->rename_item(name, name + L" still");
    EXPECT_EQ(load(good), S_OK) << "it is found by its id";
    shell::directory_of(*drive.Get())->rename_item(name + L" still", name);
    std::string gone = good;
    const std::size_t folder_at = count_at - 843;
    std::memset(gone.data() + folder_at + 688, 0, 100);
    EXPECT_EQ(load(gone), E_FAIL);
}

} // namespace

} // namespace transfer
