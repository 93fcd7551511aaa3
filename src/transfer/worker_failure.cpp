#include "transfer/worker_failure.h"

#include "com/worker.h"
#include "ui/message.h"
#include "vfs/exceptions.h"

namespace transfer {

void show_worker_failure(const std::wstring& worker) {
    const auto show = [](const std::wstring& caption, const std::wstring& text) {
        ui::show_message(nullptr, caption, text, MB_ICONSTOP);
    };
    try {
        throw;
    } catch (const com::worker_exception& failure) {
        show(L"Internal error", failure.words());
    } catch (const vfs::exception& failure) {
        show(failure.get_name(), failure.get_description());
    } catch (...) {
        show(L"Internal error", L"Unknown error in " + worker);
    }
}

} // namespace transfer
