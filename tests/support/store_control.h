/// The test control of a store that runs with it: its log of requests, its counters, and faults on
/// demand. The control's own requests are neither logged nor counted.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace support {

/// One request as it arrived.
struct logged_request {
    int connection = 0; ///< number of the TLS connection
    std::string path;   ///< with the path prefix
    std::string body;   ///< the raw bytes

    /// The value of the first parameter of that name as it stands on the wire; empty without one.
    std::string value_of(const std::string& key) const;
};

/// Its requests share one connection, so it belongs to one thread at a time.
class store_control {
public:
    explicit store_control(std::string url);

    /// Clears the log, the faults and the counters.
    void reset();
    std::vector<logged_request> log();
    /// The keys and values of a fault: `kind`, `path`, `action`, `skip`, `count`, `bytes`, ...
    void fault(const std::vector<std::pair<std::string, std::string>>& settings);
    std::map<std::string, std::int64_t> stats();

private:
    std::string exchange(const std::string& path, const std::string* body);

    std::string url_;
    std::unique_ptr<void, void (*)(void*)> handle_;
};

} // namespace support
