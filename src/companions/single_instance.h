#pragma once

#include "utils/unique_handle.h"

namespace companions {

/// The right to be the one running process of a kind in the logon session. It is the ownership of a
/// named mutex and not the mutex's existence, so that neither a process that died nor somebody who
/// merely has the mutex open stands in the way of the next one. Belongs to one thread.
class single_instance {
public:
    /// Tries to get the right, without waiting. Throws `system_error_exception`.
    explicit single_instance(const wchar_t* mutex_name);
    single_instance(const single_instance&) = delete;
    single_instance& operator=(const single_instance&) = delete;

    ~single_instance() { release(); }

    bool owned() const noexcept { return owned_; }

    void release() noexcept;

private:
    utils::unique_handle mutex_;
    bool owned_ = false;
};

} // namespace companions
