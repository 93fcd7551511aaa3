#pragma once

namespace transfer_test {

/// What this process holds of the system.
struct process_usage {
    unsigned long handles = 0;
    unsigned long threads = 0;
};

process_usage read_process_usage();
/// Waits a while for threads that are about to end, those of libcurl's resolver among them.
process_usage wait_for_threads(unsigned long most_threads);

} // namespace transfer_test
