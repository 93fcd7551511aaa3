#include "../transfer/store_test.h"

#include "driven_window.h"

#include "com/apartment.h"
#include "com/module_lock.h"
#include "transfer/stream.h"
#include "utils/module.h"

#include <shlwapi.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <thread>
#include <utility>
#include <vector>

namespace transfer {

namespace {

using Microsoft::WRL::ComPtr;
using transfer_test::broken_line;
using transfer_test::content;
using transfer_test::make_content;

/// A user who says Retry a number of times and then Cancel.
class scripted_prompt final : public ui::prompt {
public:
    int ask(UINT caption, UINT text, std::initializer_list<std::wstring> values,
            UINT style) override {
        EXPECT_EQ(caption, 1400U);
        EXPECT_EQ(style, 0x1015U);
        EXPECT_EQ(*values.begin(), L"file");
        asked.emplace_back(text, values.begin()[1]);
        return retries-- > 0 ? IDRETRY : IDCANCEL;
    }

    int ask(const std::wstring&, const std::wstring& text, UINT) override {
        ADD_FAILURE() << "none of our texts: " << testing::PrintToString(text);
        return IDCANCEL;
    }

    int retries = 0;
    std::vector<std::pair<UINT, std::wstring>> asked;
};

class streams : public transfer_test::store_test {
protected:
    streams() {
        store(L"file", data);
        control.reset();
    }

    ComPtr<CStreamImpl> open(HRESULT expected = S_OK) {
        auto stream = com::make<CStreamImpl>(prompt);
        EXPECT_EQ(stream->Init(find(L"file")), expected);
        return stream;
    }

    /// Reads to the end or to a failure in steps of odd lengths.
    static content read_all(IStream& stream, HRESULT expected) {
        content all;
        content piece(300'000);
        const auto step = transfer_test::steps_of({1, 4'095, 70'001, 2, 300'000});
        HRESULT status = S_OK;
        while (status == S_OK) {
            ULONG count = 77;
            status = stream.Read(piece.data(), static_cast<ULONG>(step()), &count);
            all.insert(all.end(), piece.begin(), piece.begin() + count);
        }
        EXPECT_EQ(status, expected);
        return all;
    }

    /// The transfer actions that the store was asked for.
    std::string asked() {
        std::string actions;
        for (const auto& request : control.log()) {
            const std::string action = request.value_of("action");
            if (action.find("load") != std::string::npos) {
                actions += (actions.empty() ? "" : " ") + action;
            }
        }
        return actions;
    }

    /// Lets the store refuse an action.
    void refuse(const std::string& action, int times) {
        control.fault({{"kind", "error"},
                       {"action", action},
                       {"count", std::to_string(times)},
                       {"type", "0"},
                       {"name", "Refused"},
                       {"description", "Not now"}});
    }

    const content data = make_content(1'234'567, 1);
    scripted_prompt prompt;
};

TEST_F(streams, bring_each_byte_once) {
    ComPtr<IStream> stream;
    ASSERT_EQ(create_stream(find(L"file"), IID_PPV_ARGS(&stream)), S_OK);
    // All but the size stays as the caller had it.
    alignas(STATSTG) std::array<unsigned char, sizeof(STATSTG)> bytes;
    bytes.fill(0x5A);
    auto expected = bytes;
    reinterpret_cast<STATSTG*>(expected.data())->cbSize.QuadPart = data.size();
    EXPECT_EQ(stream->Stat(reinterpret_cast<STATSTG*>(bytes.data()), STATFLAG_DEFAULT), S_OK);
    EXPECT_EQ(bytes, expected);
    ULONG count = 77;
    EXPECT_EQ(stream->Read(nullptr, 1, &count), E_POINTER);
    EXPECT_EQ(count, 0U);
    EXPECT_TRUE(read_all(*stream.Get(), S_FALSE) == data);

    stream.Reset();
    EXPECT_EQ(asked(), "open_file_download close_file_download");

    EXPECT_EQ(create_stream(folder, IID_PPV_ARGS(&stream)), E_NOINTERFACE);
    EXPECT_EQ(com::module_lock::count(), 0);
}

TEST_F(streams, copy_until_the_end_or_a_failure) {
    const auto copy = [&](IStream* target, std::uint64_t wanted) {
        const auto stream = open();
        stream->SetSilent();
        ULARGE_INTEGER limit{};
        limit.QuadPart = wanted;
        ULARGE_INTEGER read{{7, 7}};
        ULARGE_INTEGER written{{7, 7}};
        EXPECT_EQ(stream->CopyTo(target, limit, &read, &written), S_OK);
        return std::pair(read.QuadPart, written.QuadPart);
    };
    using counts = std::pair<ULONGLONG, ULONGLONG>;
    ComPtr<IStream> memory;
    *memory.GetAddressOf() = SHCreateMemStream(nullptr, 0);
    EXPECT_EQ(copy(memory.Get(), 5'000), counts(5'000, 5'000));
    EXPECT_EQ(copy(memory.Get(), ~0ULL), counts(data.size(), data.size()));
    content copied(5'000 + data.size());
    memory->Seek({}, STREAM_SEEK_SET, nullptr);
    memory->Read(copied.data(), static_cast<ULONG>(copied.size()), nullptr);
    EXPECT_TRUE(std::equal(data.begin(), data.begin() + 5'000, copied.begin()));
    EXPECT_TRUE(std::equal(data.begin(), data.end(), copied.begin() + 5'000));
    EXPECT_EQ(copy(nullptr, 5), counts(0x700000007, 0x700000007)) << "nothing was done";

    // A target that takes nothing.
    ComPtr<IStream> read_only;
    ASSERT_EQ(SHCreateStreamOnFileW(utils::own_module_path().c_str(),
                                    STGM_READ | STGM_SHARE_DENY_NONE, &read_only),
              S_OK);
    EXPECT_EQ(copy(read_only.Get(), ~0ULL), counts(4'096, 0));
    control.fault({{"kind", "cut_download"}, {"bytes", "400000"}});
    const auto [read, written] = copy(memory.Get(), ~0ULL);
    EXPECT_EQ(read, written);
    EXPECT_LE(read, 400'000U);
}

TEST_F(streams, keep_failures_in_silence) {
    control.fault({{"kind", "cut_download"}, {"bytes", "400000"}});
    const auto stream = open();
    wchar_t name[20];
    wchar_t description[200];
    EXPECT_EQ(stream->GetError(name, description, 20, 200), E_FAIL) << "nothing failed yet";
    EXPECT_EQ(stream->SetSilent(), S_OK);
    content all = read_all(*stream.Get(), E_FAIL);
    // Who reads on gets the rest, and the failure can still be asked for.
    std::ranges::copy(read_all(*stream.Get(), S_FALSE), std::back_inserter(all));
    EXPECT_TRUE(all == data);
    EXPECT_EQ(stream->GetError(name, description, 20, 200), S_OK);
    EXPECT_STREQ(name, L"Read failed");
    EXPECT_STREQ(description, broken_line);
    // Cut to the buffers, and not a character further.
    name[5] = description[1] = L'#';
    EXPECT_EQ(stream->GetError(name, description, 5, 1), S_OK);
    EXPECT_EQ(std::wstring(name, 6), std::wstring(L"Read\0#", 6));
    EXPECT_EQ(std::wstring(description, 2), std::wstring(L"\0#", 2));
    EXPECT_TRUE(prompt.asked.empty());
}

TEST_F(streams, replace_the_content_in_spite_of_failures_when_the_user_wants_it) {
    const content other = make_content(6'000'001, 3);
    auto stream = open();
    for (const char* action : {"close_file_download", "open_file_upload", "close_file_upload"}) {
        refuse(action, 1);
    }
    control.fault({{"kind", "cut_upload"}, {"bytes", "1500000"}});
    prompt.retries = 100;
    ULONG count = 0;
    for (std::size_t at = 0; at < other.size(); at += count) {
        const auto piece = std::min<std::size_t>(other.size() - at, 100'000);
        ASSERT_EQ(stream->Write(other.data() + at, static_cast<ULONG>(piece), &count), S_OK);
    }
    ULARGE_INTEGER position{};
    EXPECT_EQ(stream->Seek({}, STREAM_SEEK_CUR, &position), S_OK);
    EXPECT_EQ(position.QuadPart, other.size());
    stream.Reset();
    // Each step was made again by itself.
    EXPECT_EQ(asked(), "open_file_download close_file_download close_file_download "
                       "open_file_upload open_file_upload close_file_upload close_file_upload");
    EXPECT_EQ(
        prompt.asked,
        (decltype(prompt.asked){
            {1403, L"Not now"}, {1403, L"Not now"}, {1403, broken_line}, {1405, L"Not now"}}));
    EXPECT_TRUE(fetch(L"file") == other);
}

TEST_F(streams, cannot_be_positioned_and_leave_each_other_alone) {
    auto stream = open();
    char byte = 0;
    ASSERT_EQ(stream->Read(&byte, 1, nullptr), S_OK);
    ULARGE_INTEGER position{{7, 7}};
    EXPECT_EQ(stream->Seek({{5, 0}}, STREAM_SEEK_SET, &position), E_FAIL);
    EXPECT_EQ(position.QuadPart, 0U);
    EXPECT_TRUE(prompt.asked.empty());

    // The folder knows one object for one file; each stream opens it for itself.
    auto second = com::make<CStreamImpl>(prompt);
    const auto item = folder->find_item_by_name(L"file", false);
    EXPECT_EQ(second->Init(std::dynamic_pointer_cast<vfs::file>(item)), S_OK);
    EXPECT_EQ(read_all(*second.Get(), S_FALSE).size(), data.size());
    second.Reset();

    prompt.asked.clear();
    control.reset();
    ULONG count = 77;
    EXPECT_EQ(stream->Write(&byte, 0, &count), S_OK);
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(asked(), "") << "nothing to write turns nothing around";
    // Writing would go on at the old position, which no file of the store can: nothing is written.
    prompt.retries = 1;
    using asked_for = decltype(prompt.asked);
    const asked_for::value_type no_place{1403, L"file::seek(): Operation not implemented"};
    EXPECT_EQ(stream->Write(&byte, 1, nullptr), E_FAIL);
    EXPECT_EQ(prompt.asked, (asked_for{no_place, no_place}));
    stream->SetSilent();
    EXPECT_EQ(stream->Write(data.data(), 1'000, nullptr), E_FAIL);
    stream.Reset();
    EXPECT_EQ(asked(), "close_file_download open_file_upload");
    EXPECT_TRUE(fetch(L"file") == data);
}

TEST_F(streams, keep_the_old_content_when_a_write_is_given_up) {
    auto stream = open();
    control.fault({{"kind", "cut_upload"}, {"bytes", "300000"}});
    ASSERT_EQ(stream->Write(data.data(), 100'000, nullptr), S_OK);
    ASSERT_EQ(stream->Write(data.data(), static_cast<ULONG>(data.size()), nullptr), E_FAIL);
    stream.Reset();
    EXPECT_EQ(prompt.asked, (decltype(prompt.asked){{1403, broken_line}}));
    EXPECT_EQ(asked(), "open_file_download close_file_download open_file_upload");
    EXPECT_TRUE(fetch(L"file") == data);

    // Made good by a consumer who tries again by himself, it is kept.
    stream = open();
    stream->SetSilent();
    control.fault({{"kind", "cut_upload"}, {"bytes", "300000"}});
    const auto other = make_content(5'000'000, 4);
    ASSERT_EQ(stream->Write(other.data(), 5'000'000, nullptr), E_FAIL);
    ASSERT_EQ(stream->Write(other.data(), 5'000'000, nullptr), S_OK);
    stream.Reset();
    EXPECT_TRUE(fetch(L"file") == other);
}

TEST_F(streams, show_real_boxes) {
    const auto answer = [](const std::wstring& message, int button) {
        const HWND box = support::await_dialog(L"Error");
        EXPECT_EQ(support::message_of(box), message);
        EXPECT_EQ(support::icon_of(box), LoadIconW(nullptr, IDI_HAND));
        EXPECT_EQ(GetWindow(box, GW_OWNER), nullptr);
        EXPECT_NE(GetWindowLongPtrW(box, GWL_EXSTYLE) & WS_EX_TOPMOST, 0) << "system-modal";
        EXPECT_TRUE(support::answer_box(box, button));
    };
    refuse("open_file_download", 1);
    refuse("close_file_download", 9);
    control.fault({{"kind", "cut_download"}, {"bytes", "400000"}});
    std::thread reader([&] {
        const com::apartment apartment;
        ComPtr<IStream> stream;
        ASSERT_EQ(create_stream(find(L"file"), IID_PPV_ARGS(&stream)), S_OK);
        EXPECT_TRUE(read_all(*stream.Get(), S_FALSE) == data) << "gone on where it failed";
    });
    answer(L"Can't open 'file': Not now", IDRETRY);
    answer(std::wstring(L"Can't read from 'file': ") + broken_line, IDRETRY);
    answer(L"Can't close 'file': Not now", IDRETRY);
    answer(L"Can't close 'file': Not now", IDCANCEL);
    reader.join();
}

} // namespace

} // namespace transfer
