#include "../vfs_quilldeck/store_test.h"

#include "process_census.h"
#include "second_process.h"

#include "com/apartment.h"
#include "shell/extract_image.h"
#include "shell/picture.h"
#include "shell/thumbnail_cache.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <thread>

namespace shell {

namespace {

namespace fs = std::filesystem;

/// A session with the store's own pictures, and a cache that holds none of them.
class thumbnails : public vfs_quilldeck::store_test {
protected:
    thumbnails() {
        pictures = find<vfs::directory>(*root_of(session), L"Pictures");
        dusk = find<vfs::file>(*pictures, L"Dusk.jpg");
        path = get_thumbnail_path(dusk->get_id());
        fs::remove(path);
        fs::remove(neighbour());
        control.reset();
    }

    template <class Item>
    static std::shared_ptr<Item> find(vfs::directory& folder, const std::wstring& name) {
        return std::dynamic_pointer_cast<Item>(folder.find_item_by_name(name, true));
    }

    fs::path neighbour() const { return path.native() + L".part"; }

    /// The status of a new object's `Extract`, and whether the bitmap is the whole picture.
    static std::pair<HRESULT, bool> extract(const vfs::item_ptr& item) {
        const auto extractor = com::make<CExtractImageImpl>();
        EXPECT_EQ(extractor->init(item), S_OK);
        wchar_t location[MAX_PATH];
        EXPECT_EQ(extractor->GetLocation(location, MAX_PATH, nullptr, nullptr, 0, nullptr), S_OK);
        HBITMAP bitmap = reinterpret_cast<HBITMAP>(1);
        const HRESULT status = extractor->Extract(&bitmap);
        const ui::unique_bitmap owner(bitmap);
        BITMAP description{};
        GetObjectW(bitmap, sizeof(description), &description);
        return {status, description.bmWidth == 256 && description.bmHeight == 171};
    }

    std::string cached() const {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

    /// Writes the cached file's time: ticks of 100 ns from the second of the item's date on.
    void set_written(std::int64_t ticks) const {
        const auto time = static_cast<std::uint64_t>(
            (dusk->get_modification_date() + 11'644'473'600) * 10'000'000 + ticks);
        const FILETIME written{static_cast<DWORD>(time), static_cast<DWORD>(time >> 32)};
        const utils::unique_file file(
            CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        ASSERT_TRUE(SetFileTime(file.get(), nullptr, nullptr, &written));
    }

    static constexpr auto succeeded = std::pair(S_OK, true);
    static constexpr auto failed = std::pair(E_FAIL, false);

    com::apartment apartment;
    vfs_quilldeck::client session = sign_in();
    std::shared_ptr<vfs::directory> pictures;
    std::shared_ptr<vfs::file> dusk;
    fs::path path;
};

TEST_F(thumbnails, are_fetched_once_and_kept_as_they_came) {
    const auto extractor = com::make<CExtractImageImpl>();
    ASSERT_EQ(extractor->init(*pictures, PIDLDATA(dusk)), S_OK);
    wchar_t location[MAX_PATH];
    DWORD priority = 0;
    DWORD flags = IEIFLAG_ASYNC | IEIFLAG_ASPECT;
    ASSERT_EQ(extractor->GetLocation(location, MAX_PATH, &priority, nullptr, 32, &flags),
              E_PENDING);
    EXPECT_EQ(location, path);
    EXPECT_EQ(priority, 0x10000000U);
    EXPECT_TRUE(path.native().ends_with(L"\\Quilldeck\\Thumbnails\\" + dusk->get_id()));
    EXPECT_EQ(asked(), "");

    // The shell asks on a thread in the background.
    HBITMAP bitmap = nullptr;
    std::thread([&] { EXPECT_EQ(extractor->Extract(&bitmap), S_OK); }).join();
    EXPECT_TRUE(DeleteObject(bitmap));
    EXPECT_NE(asked().find("qd_thumbnail.php"), std::string::npos);
    const vfs::byte_buffer bytes = dusk->get_thumbnail();
    EXPECT_EQ(cached(), std::string(bytes.begin(), bytes.end()));
    control.reset();

    const auto before = support::count_process();
    for (int round = 0; round < 10; ++round) {
        ASSERT_EQ(extract(dusk), succeeded);
    }
    EXPECT_EQ(support::count_process(), before);
    EXPECT_EQ(asked(), "");
}

TEST_F(thumbnails, are_fetched_again_when_the_item_is_newer) {
    for (const auto& [ticks, fresh] : {std::pair(0, true), {9'999'999, true}, {-1, false}}) {
        store_thumbnail(path, dusk->get_thumbnail());
        std::ofstream(path, std::ios::binary | std::ios::app) << "the old one";
        const std::string old = cached();
        set_written(ticks);
        control.reset();
        EXPECT_EQ(extract(dusk), succeeded);
        EXPECT_EQ(asked().empty(), fresh) << ticks;
        EXPECT_EQ(cached() == old, fresh) << ticks;
    }
    EXPECT_TRUE(is_thumbnail_fresh(path, vfs::time_unknown));
}

TEST_F(thumbnails, that_are_no_pictures_stay_and_failures_leave_nothing) {
    const std::string reply = "123456JFIF and no picture";
    control.fault({{"kind", "garbage"}, {"body", reply}, {"path", "qd_thumbnail.php"}});
    for (int look = 0; look < 2; ++look) {
        EXPECT_EQ(extract(dusk), failed);
        EXPECT_EQ(cached(), reply);
        EXPECT_EQ(asked().empty(), look == 1);
    }
    EXPECT_TRUE(fs::remove(path)) << "still held";
    control.fault({{"kind", "error"}, {"path", "qd_thumbnail.php"}});
    EXPECT_EQ(extract(dusk), failed);
    EXPECT_FALSE(fs::exists(path) || fs::exists(neighbour()));
}

TEST_F(thumbnails, of_a_killed_writer_are_never_taken) {
    ASSERT_EQ(extract(dusk), succeeded);
    const std::string whole = cached();
    set_written(-1);
    {
        const support::second_process writer;
        EXPECT_EQ(writer.ask(path.string()), "half written");
        EXPECT_EQ(extract(dusk), failed) << "one writer at a time";
    }
    EXPECT_EQ(cached(), whole);
    EXPECT_TRUE(fs::exists(neighbour()));
    EXPECT_EQ(extract(dusk), succeeded);
    EXPECT_EQ(cached(), whole);
    EXPECT_FALSE(fs::exists(neighbour()));
}

TEST_F(thumbnails, are_whole_for_all_who_meet_at_one_file) {
    {
        store_thumbnail(path, dusk->get_thumbnail());
        const utils::unique_file reader(
            CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        EXPECT_EQ(extract(dusk), failed);
        EXPECT_THROW(store_thumbnail(path, {}), std::wstring);
        EXPECT_FALSE(fs::exists(neighbour()));
    }
    const auto meet = [&] {
        const com::apartment own;
        for (int round = 0; round < 20; ++round) {
            // Whoever comes too early or too late fails; nobody gets a part.
            const auto outcome = extract(dusk);
            EXPECT_TRUE(outcome == succeeded || outcome == failed);
            DeleteFileW(path.c_str());
        }
    };
    std::thread other(meet);
    meet();
    other.join();
    EXPECT_EQ(extract(dusk), succeeded);
}

TEST_F(thumbnails, are_those_of_files_with_a_place) {
    const auto extractor = com::make<CExtractImageImpl>();
    wchar_t location[MAX_PATH];
    HBITMAP bitmap = nullptr;
    EXPECT_EQ(extractor->init(pictures), E_FAIL);
    EXPECT_EQ(extractor->init(*pictures, PIDLDATA()), E_FAIL);
    ASSERT_EQ(extractor->init(dusk), S_OK);
    EXPECT_EQ(extractor->Extract(&bitmap), E_FAIL) << "before a place is known";
    const auto length = static_cast<DWORD>(path.native().size());
    for (const DWORD size : {DWORD{0}, DWORD{1}, length}) {
        EXPECT_EQ(extractor->GetLocation(location, size, nullptr, nullptr, 0, nullptr), E_FAIL);
    }
    EXPECT_EQ(extractor->GetLocation(location, length + 1, nullptr, nullptr, 0, nullptr), S_OK);
    for (const auto id : {L"..\\out", L"a/b", L"C:", L"file:stream"}) {
        EXPECT_THROW(get_thumbnail_path(id), std::wstring);
    }
}

/// Begins a thumbnail at the path, and leaves it at that.
std::string write_half(const std::string& path) {
    static std::optional<CThumbnailWriter> writer;
    writer.emplace(fs::path(path).native());
    writer->write(vfs::byte_buffer(1000, 'x'));
    return "half written";
}

} // namespace

} // namespace shell

int main(int argc, char** argv) {
    support::serve_if_second(argc, argv, &shell::write_half);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
