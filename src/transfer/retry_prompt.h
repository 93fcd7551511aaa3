#pragma once

#include <windows.h>

#include <string>

namespace transfer {

/// Asks what is to become of an operation on a file that failed.
class IRetryPrompt {
public:
    /// Whether it is to be made again. `text` is the number of the message's text, which has room
    /// for the file's name and for the description of the failure.
    virtual bool ask_retry(UINT text, const std::wstring& file_name,
                           const std::wstring& description) = 0;

protected:
    ~IRetryPrompt() = default;
};

/// The box that asks the user: system-modal, without an owner, as a stream does not know for whom
/// it is read.
IRetryPrompt& get_retry_box() noexcept;

} // namespace transfer
