#pragma once

#include "store_walk.h"

namespace tour {

/// A folder of the tour's own, deleted for good at the end.
class scratch_folder {
public:
    explicit scratch_folder(directory_ptr place);
    scratch_folder(const scratch_folder&) = delete;
    scratch_folder& operator=(const scratch_folder&) = delete;
    /// Deletes the folder if it is still there; says so if that fails.
    ~scratch_folder();

    const directory_ptr& get() const { return folder_; }

    /// Deletes the folder and looks whether it is gone.
    void remove();

private:
    directory_ptr place_;
    directory_ptr folder_;
};

} // namespace tour
