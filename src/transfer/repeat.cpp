#include "transfer/repeat.h"

#include "com/worker.h"
#include "resources/string_ids.h"
#include "ui/strings.h"
#include "utils/narrow.h"
#include "vfs/exceptions.h"

#include <exception>
#include <string>

namespace transfer {

bool wants_retry(ui::prompt& prompt) {
    const auto ask = [&prompt](const std::wstring& caption, const std::wstring& text) {
        return prompt.ask(caption, text, MB_ICONSTOP | MB_RETRYCANCEL) == IDRETRY;
    };
    try {
        throw;
    } catch (const vfs::exception& failure) {
        return ask(failure.get_name(), failure.get_description());
    } catch (const com::worker_exception& failure) {
        return ask(ui::load_string(IDS_ERROR), failure.words());
    } catch (const std::exception& failure) {
        return ask(ui::load_string(IDS_ERROR), utils::widen(utils::narrow_message(failure)));
    }
}

} // namespace transfer
