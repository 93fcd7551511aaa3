#pragma once

#include "content.h"
#include "failures.h"
#include "store_control.h"

#include "vfs/directory.h"
#include "vfs/exceptions.h"
#include "vfs/file.h"
#include "vfs_quilldeck/session/client.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

namespace transfer_test {

/// Whose file server moves the bytes.
enum class store_kind { bundled, vsftpd };

using file_ptr = std::shared_ptr<vfs::file>;

/// A test in a folder of its own on a store, which is deleted afterwards. Whatever the test did, no
/// libcurl handle may be on lease when it is over.
class store_test : public testing::Test {
protected:
    explicit store_test(store_kind kind = store_kind::bundled);
    ~store_test() override;

    void TearDown() override;

    /// A new file, open for writing.
    file_ptr create(const std::wstring& name, std::size_t announced_size = 0);
    /// A new file with this content.
    file_ptr store(const std::wstring& name, const content& data);
    /// The file as a new listing tells it.
    file_ptr find(const std::wstring& name);
    /// What a new download of the file brings.
    content fetch(const std::wstring& name);

    /// Opens an upload without a file's stream, and answers its location.
    std::string open_upload(const vfs::file& file);
    /// Where the bytes of a location lie on the server's disk.
    std::filesystem::path path_of(const std::string& location) const;

    /// The id of the store's process.
    unsigned long store_process() const;

    /// For a test that ends the store: there is nothing to tidy up afterwards.
    void folder_goes_with_store() { tidy_ = false; }

    const std::string service_url;
    support::store_control control;
    std::shared_ptr<vfs_quilldeck::client> client;
    std::shared_ptr<vfs::directory> folder;

private:
    std::shared_ptr<vfs::directory> root_;
    /// What the store tells of itself, as JSON.
    std::string ready_;
    std::filesystem::path locations_;
    bool tidy_ = true;
};

/// The same test against both file servers.
class any_store_test : public store_test, public testing::WithParamInterface<store_kind> {
protected:
    any_store_test() : store_test(GetParam()) {}
};

inline constexpr auto broken_line = L"Please, check your internet connection or firewall settings";

/// `call` must fail with exactly these texts.
template <class Call>
void expect_failure(const std::wstring& name, const std::wstring& description, const Call& call) {
    EXPECT_EQ(support::failure_of(call), name + L": " + description);
}

/// The name of a test's parameter.
std::string name_of_store(const testing::TestParamInfo<store_kind>& info);

} // namespace transfer_test
