#include "virtual_files.h"
#include "wrapper_test.h"

#include "transfer/local_items/hdrop_directory.h"
#include "transfer/local_items/hdrop_file.h"
#include "transfer/local_items/hdrop_wrapper.h"
#include "utils/unique_handle.h"

#include <filesystem>
#include <fstream>

namespace transfer {

namespace {

namespace fs = std::filesystem;

using support::failure_of;
using transfer_test::dropped_paths;
using transfer_test::find;
using transfer_test::tree_of;

class local_items : public testing::Test {
protected:
    local_items() { fs::create_directories(folder / L"sub"); }

    ~local_items() override { fs::remove_all(folder); }

    fs::path put(const std::wstring& name, const std::string& content) const {
        std::ofstream(folder / name, std::ios::binary) << content;
        return folder / name;
    }

    const fs::path folder = fs::temp_directory_path() / L"local items";
    const std::wstring top = folder.native();
};

TEST_F(local_items, are_what_was_dropped_or_are_left_out_with_a_text) {
    put(L"f.txt", "1");
    put(L"sub\\A.txt", "2");
    const std::wstring slashed = folder.generic_wstring();
    const std::wstring endless = top + L"\\" + std::wstring(260 - top.size(), L'x');
    CHDROPWrapper wrapper(
        dropped_paths({top + L"\\f.txt", slashed + L"//sub/", top + L"\\vanished", L"f.txt",
                       L"C:\\", top + L"\\sub\\..", top + L"\\f.txt.", top + L"\\nul",
                       top + L"\\f.txt:stream", top + L"\\*", L"\\\\.\\C:\\f", endless})
            .get());
    EXPECT_EQ(tree_of(wrapper), L"f.txt sub(A.txt) vanished");
    EXPECT_EQ(wrapper.take_refusals(),
              L"These items are left out:\n\n"
              L"'f.txt': Windows takes this name for another one.\n"
              L"'C:\\': A drive has no name that a folder could get.\n'" +
                  top + L"\\sub\\..': Windows takes this name for another one.\n'" + top +
                  L"\\f.txt.': Windows takes this name for another one.\n'" + top +
                  L"\\nul': Windows takes this name for another one.\n'" + top +
                  L"\\f.txt:stream': Windows does not allow this name.\n'" + top +
                  L"\\*': Windows does not allow this name.\n"
                  L"'\\\\.\\C:\\f': Windows does not allow this name.\n'" +
                  endless.substr(0, 30) + L"..." + std::wstring(60, L'x') +
                  L"': The path is longer than Windows allows.");
    EXPECT_EQ(wrapper.take_refusals(), L"");
    EXPECT_TRUE(wrapper.has_subfolders());

    const auto sub = find<vfs::directory>(wrapper, L"sub");
    EXPECT_EQ(failure_of([&] { sub->find_item_by_name(L"a.txt", true); }),
              L"Internal error: Error: Item 'a.txt' not found at '" + top + L"\\sub'");
    EXPECT_EQ(failure_of([&] { wrapper.find_item_by_name(L"b", true); }),
              L"Internal error: Error: Item 'b' not found at '-=Root=-'");
    EXPECT_EQ(failure_of([&] { sub->find_item_by_id(L"a", true); }),
              L"Internal error: CHDROPFile::get_id() is not implemented");
    fs::remove_all(folder);
    EXPECT_EQ(failure_of([&] {
                  sub->get_items();
              }).find(L"Unable to collect items from '" + top + L"\\sub': File system error: "),
              0U);
    EXPECT_EQ(failure_of([&] { CHDROPDirectory(top, nullptr); }),
              L"Internal error: Path " + top + L" does not exist");
}

TEST_F(local_items, are_left_out_where_their_paths_grow_too_long) {
    // A folder that can just be listed, with names on both sides of the limit.
    const std::wstring deep = top + L"\\" + std::wstring(249 - top.size(), L'd');
    const std::wstring inside = L"\\\\?\\" + deep + L"\\";
    ASSERT_TRUE(CreateDirectoryW((L"\\\\?\\" + deep).c_str(), nullptr));
    for (const wchar_t* name : {L"sixsix", L"seven77"}) {
        ASSERT_TRUE(CreateDirectoryW((inside + name).c_str(), nullptr));
    }
    for (const wchar_t* name : {L"eight888", L"nine99999"}) {
        ASSERT_TRUE(utils::unique_file(CreateFileW((inside + name).c_str(), GENERIC_WRITE, 0,
                                                   nullptr, CREATE_ALWAYS, 0, nullptr)));
    }
    CHDROPWrapper wrapper(dropped_paths({deep}).get());
    for (int i = 0; i < 2; ++i) {
        const auto inner = std::dynamic_pointer_cast<vfs::directory>(wrapper.get_items().front());
        EXPECT_EQ(inner->get_items().size(), 2U);
        EXPECT_EQ(find<vfs::file>(*inner, L"eight888")->get_size(), 0);
        EXPECT_TRUE(find<vfs::directory>(*inner, L"sixsix")->get_items().empty());
    }
    const std::wstring text = wrapper.take_refusals();
    EXPECT_NE(text.find(L"\\seven77': The path is longer than Windows allows."),
              std::wstring::npos);
    EXPECT_NE(text.find(L"\\nine99999': The path is longer than Windows allows."),
              std::wstring::npos);
    EXPECT_EQ(std::ranges::count(text, L'\n'), 3);
    RemoveDirectoryW((inside + L"seven77").c_str());
    DeleteFileW((inside + L"nine99999").c_str());
}

TEST_F(local_items, come_from_whole_blocks_only) {
    const auto failure = [](HGLOBAL block) {
        return failure_of([&] { const CHDROPWrapper wrapper(block); });
    };
    const std::wstring start = L"Internal error: CHDROPWrapper::CHDROPWrapper( hGlobal ): ";
    EXPECT_EQ(failure(nullptr), start + L"hGlobal is NULL");
    const com::unique_global whole = dropped_paths({L"C:\\a", L"C:\\b"});
    const std::size_t size = GlobalSize(whole.get());
    EXPECT_EQ(failure(com::make_global(0, GHND).get()), start + L"Out of memory");
    for (std::size_t cut = 1; cut < size; ++cut) {
        const com::unique_global part = com::make_global(cut, GHND);
        std::memcpy(com::global_lock(part.get()).bytes().data(),
                    com::global_lock(whole.get()).bytes().data(), cut);
        EXPECT_EQ(failure(part.get()), start + L"IO error 13");
    }
}

TEST_F(local_items, tell_when_a_file_is_not_what_was_opened) {
    const std::string before(100'000, 'a');
    const auto path = put(L"f", before);
    std::string buffer(60'000, ' ');
    const auto size = static_cast<std::uint32_t>(buffer.size());
    const std::wstring changed = L"Read failed: Read from '" + path.native() +
                                 L"' failed: The file has been changed meanwhile";
    for (const std::size_t length : {99'999U, 100'001U, 100'000U, 10U, 300'000U}) {
        put(L"f", before);
        fs::last_write_time(path, fs::file_time_type::clock::now() - std::chrono::hours(1));
        CHDROPFile file(path.native());
        file.open(vfs::modeRead, 0);
        EXPECT_EQ(file.read(buffer.data(), size), size);
        put(L"f", std::string(length, 'b'));
        // To the end, whatever the user answers.
        for (int attempt = 0; attempt < 6; ++attempt) {
            EXPECT_EQ(failure_of([&] { file.read(buffer.data(), size); }), changed) << length;
        }
    }
    // Going about in a file changes nothing.
    CHDROPFile file(put(L"f", before).native());
    file.open(vfs::modeRead, 0);
    file.seek(-3, vfs::seek_ending);
    EXPECT_EQ(file.get_size(), 100'000);
    EXPECT_EQ(file.read(buffer.data(), 3), 3U);
    EXPECT_FALSE(file.is_eof()) << "exactly the last byte";
    EXPECT_EQ(file.read(buffer.data(), 1), 0U);
    EXPECT_TRUE(file.is_eof());
    file.seek(5, vfs::seek_current);
    EXPECT_EQ(file.read(buffer.data(), 1), 0U);
    file.seek(0, vfs::seek_beginning);
    EXPECT_TRUE(file.is_bof());
}

TEST_F(local_items, fail_with_the_words_of_each_step) {
    const auto path = put(L"f", "1");
    const std::wstring quoted = L"'" + path.native() + L"'";
    CHDROPFile file(path.native());
    char byte = 0;
    const auto times = [&](const wchar_t* end) {
        const std::wstring start = L"Internal errorfile::";
        EXPECT_EQ(failure_of([&] { file.get_access_date(); }), start + L"get_access_date()" + end);
        EXPECT_EQ(failure_of([&] { file.get_creation_date(); }),
                  start + L"get_creation_date()" + end);
        EXPECT_EQ(failure_of([&] { file.get_modification_date(); }),
                  start + L"get_creation_date()" + end);
    };
    const auto closed = [&](const wchar_t* name) {
        return std::wstring(name) + L": Stream " + quoted + L" is not opened";
    };
    EXPECT_EQ(failure_of([&] { file.close(0); }), closed(L"Stream close failed"));
    EXPECT_EQ(failure_of([&] { file.is_bof(); }), closed(L"is_bof() failed"));
    EXPECT_EQ(failure_of([&] { file.is_eof(); }), closed(L"is_eof() failed"));
    EXPECT_EQ(failure_of([&] { file.get_pos(); }), closed(L"get_pos() failed"));
    EXPECT_EQ(failure_of([&] { file.seek(7, vfs::seek_current); }),
              L"Seek failed: Seek of stream " + quoted +
                  L" to 7 from current failed: stream not opened");
    EXPECT_EQ(failure_of([&] { file.read(&byte, 1); }),
              L"Read failed: Read from " + quoted + L" failed: Stream is not opened");
    EXPECT_EQ(failure_of([&] { file.write(&byte, 1); }),
              L"Write failed: file::write(pdata,len) m_path=" + path.native() + L" len=1");
    file.open(vfs::modeRead, 0);
    EXPECT_EQ(failure_of([&] { file.open(vfs::modeRead, 0); }),
              L"Stream open failed: Stream " + quoted + L" already opened, mode=1");
    EXPECT_EQ(failure_of([&] { file.seek(-7, vfs::seek_ending); }),
              L"Seek failed: Seek of stream " + quoted +
                  L" to -7 from ending failed: stream operation call failed");
    file.close(0);
    EXPECT_EQ(file.get_size(), 1);
    EXPECT_EQ(file.get_open_mode(), 0);
    {
        const utils::unique_file touched(CreateFileW(path.c_str(), FILE_WRITE_ATTRIBUTES, 0,
                                                     nullptr, OPEN_EXISTING, 0, nullptr));
        // The last step of the second 1,000,000,001.
        const FILETIME time{0x4630ACFF, 0x01C138D1};
        ASSERT_TRUE(SetFileTime(touched.get(), nullptr, nullptr, &time));
    }
    EXPECT_EQ(file.get_modification_date(), 1'000'000'001);
    EXPECT_GE(file.get_creation_date(), 1'000'000'001);
    EXPECT_GE(file.get_access_date(), 1'000'000'001);
    {
        const utils::unique_file locked(
            CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        EXPECT_EQ(failure_of([&] { file.open(vfs::modeRead, 0); }),
                  L"Stream open failed: Stream " + quoted +
                      L" can't be opened by unknown reason, mode=1");
    }
    fs::remove(path);
    EXPECT_EQ(failure_of([&] { file.get_size(); }),
              L"Get size failed: Can't get size: Error opening stream " + quoted);
    times(L": Can't open file: ");
}

TEST_F(local_items, can_be_written) {
    CHDROPFile file((folder / L"w").native());
    const auto write = [&](std::int32_t mode, const std::string& text) {
        file.open(mode, 0);
        EXPECT_EQ(file.get_open_mode(), mode);
        EXPECT_EQ(file.write(text.data(), static_cast<std::uint32_t>(text.size())), text.size());
        const auto size = static_cast<std::size_t>(file.get_size());
        file.close(0);
        std::string content;
        std::getline(std::ifstream(folder / L"w", std::ios::binary), content, '\0');
        EXPECT_EQ(content.size(), size);
        return content;
    };
    EXPECT_EQ(write(vfs::modeWrite | vfs::modeOverwrite, "a\nb"), "a\nb");
    EXPECT_EQ(write(vfs::modeWrite, "c"), "a\nbc");
    EXPECT_EQ(write(vfs::modeRead | vfs::modeWrite, "d"), "a\nbcd");
    EXPECT_EQ(write(vfs::modeRead | vfs::modeWrite | vfs::modeOverwrite, "e"), "e");
    // A disk that is full says so before the file counts as written.
    CHDROPFile full(L"Z:\\dev\\full");
    full.open(vfs::modeWrite | vfs::modeOverwrite, 0);
    EXPECT_EQ(full.write("1", 1), 1U);
    EXPECT_EQ(
        failure_of([&] { full.close(0); }),
        L"Stream close failed: Close of 'Z:\\dev\\full' failed: Stream operation call failed");
    EXPECT_NE(full.get_open_mode(), 0);
}

} // namespace

} // namespace transfer
