#pragma once

namespace transfer_test {

/// The n-th allocation of this thread fails, which leaves -1 here; 0 for none.
extern thread_local int allocations_until_failure;

} // namespace transfer_test
