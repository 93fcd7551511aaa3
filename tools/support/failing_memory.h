/// Memory that runs out on demand.
#pragma once

namespace support {

/// While it lives, the allocation after `allowed` more of them by operator new fails, and all that
/// follow. Below 0 none does.
class failing_memory {
public:
    explicit failing_memory(int allowed);
    failing_memory(const failing_memory&) = delete;
    failing_memory& operator=(const failing_memory&) = delete;
    ~failing_memory();
};

} // namespace support
