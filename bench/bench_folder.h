#pragma once

#include "bare_transfer.h"
#include "vfs/vfs.h"
#include "vfs_quilldeck/session/client.h"

#include <cstdint>
#include <memory>
#include <string>

namespace bench {

/// A folder of its own in the store in which the same work is done by both ways: through the
/// contracts, and by bare requests and a bare transfer. Deleted at the end.
class bench_folder {
public:
    explicit bench_folder(const vfs_quilldeck::client& client);
    bench_folder(const bench_folder&) = delete;
    bench_folder& operator=(const bench_folder&) = delete;
    ~bench_folder();

    void upload(const std::wstring& name, std::int64_t size);
    void download(const vfs::item_ptr& item);
    void upload_bare(const std::wstring& name, std::int64_t size);
    /// Answers in how many pieces libcurl handed the bytes over.
    int download_bare(const std::wstring& id, const std::string& location, bool read_ahead = false);

    void list_bare();
    /// With the looks for the name and for what was made.
    void make_folder_bare(const std::wstring& name);

    const std::shared_ptr<vfs::directory>& item() const noexcept { return folder_; }

    /// A file of the folder as both ways need it.
    struct entry {
        vfs::item_ptr item;
        std::wstring id;
        std::string location;
    };

    entry find(const std::wstring& name);
    void clear();

private:
    vfs_quilldeck::client client_;
    bare_transfer bare_;
    std::shared_ptr<vfs::directory> folder_;
};

} // namespace bench
