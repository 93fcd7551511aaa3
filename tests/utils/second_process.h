#pragma once

#include "utils/unique_handle.h"

#include <functional>
#include <string>

namespace support {

/// This very program once more, as the second process of a test. It answers each line that it is
/// sent with one line, and dies with this object.
class second_process {
public:
    second_process();
    /// By a copy of this program at `path`.
    explicit second_process(const std::wstring& path);
    second_process(const second_process&) = delete;
    second_process& operator=(const second_process&) = delete;
    ~second_process();

    std::string ask(const std::string& line) const;
    /// Ends the process as a crash would, and waits for its end.
    void kill() const;

private:
    utils::unique_handle process_;
    utils::unique_handle to_;
    utils::unique_handle from_;
};

/// What `main` calls first: in a second process it answers until that is killed and does not
/// return.
void serve_if_second(int argc, char** argv,
                     const std::function<std::string(const std::string&)>& answer);

} // namespace support
