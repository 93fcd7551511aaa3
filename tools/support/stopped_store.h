#pragma once

#include <string>

namespace support {

/// Stops the store that the runner started, for as long as this lives: it says nothing, and its
/// connections stay.
class stopped_store {
public:
    stopped_store();
    stopped_store(const stopped_store&) = delete;
    stopped_store& operator=(const stopped_store&) = delete;
    ~stopped_store();

private:
    std::wstring m_process;
};

} // namespace support
