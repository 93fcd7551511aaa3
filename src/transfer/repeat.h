/// Steps that are made again for as long as the user wants that.
#pragma once

#include "ui/prompt.h"

namespace transfer {

/// Makes `step` until it succeeds, and answers what it does. `wants_again` is called in the handler
/// of each failure, which goes on when the answer is false.
template <class Step, class WantsAgain>
auto repeat(const Step& step, const WantsAgain& wants_again) {
    for (;;) {
        try {
            return step();
        } catch (...) {
            if (!wants_again()) {
                throw;
            }
        }
    }
}

/// Whether the user wants another try after the failure that is being handled: a `vfs::exception`
/// is told by its own texts, a standard exception and the words of a worker under "Error". Whatever
/// else was raised goes on.
bool wants_retry(ui::prompt& prompt);

} // namespace transfer
