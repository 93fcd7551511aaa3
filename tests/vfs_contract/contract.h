/// The seam between the suite of the vfs contracts and the implementations that it runs over.
#pragma once

#include "vfs/vfs.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace vfs_contract {

using directory_ptr = std::shared_ptr<vfs::directory>;
using file_ptr = std::shared_ptr<vfs::file>;

/// A directory of an implementation, empty at first, that lives as long as the test.
class place {
public:
    place() = default;
    place(const place&) = delete;
    place& operator=(const place&) = delete;
    virtual ~place() = default;

    /// Makes a file, and the folders before it, without the classes under test. Parts of `path` are
    /// separated by a slash; where one is at the end, an empty folder is made.
    virtual void put(const std::wstring& path, const std::string& content) = 0;
    /// The directory by objects that nobody has used yet.
    virtual directory_ptr reach() = 0;
};

struct implementation {
    std::string name;
    std::function<std::unique_ptr<place>()> make;
    /// Open files know where they are.
    bool tells_position = true;

    friend std::ostream& operator<<(std::ostream& out, const implementation& one) {
        return out << one.name;
    }
};

/// The families of the remote store. They can be read and changed.
std::vector<implementation> remote_implementations();

/// The wrappers of local and of virtual files. They can be read only.
std::vector<implementation> source_implementations();

class contract : public testing::TestWithParam<implementation> {
protected:
    directory_ptr enter(const directory_ptr& from, const std::wstring& name) {
        return std::dynamic_pointer_cast<vfs::directory>(from->find_item_by_name(name, false));
    }

    file_ptr find_file(const directory_ptr& from, const std::wstring& name) {
        return std::dynamic_pointer_cast<vfs::file>(from->find_item_by_name(name, false));
    }

    const std::unique_ptr<place> here = GetParam().make();
};

} // namespace vfs_contract
