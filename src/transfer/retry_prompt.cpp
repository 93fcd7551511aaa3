#include "transfer/retry_prompt.h"

#include "resources/string_ids.h"
#include "ui/message.h"

namespace transfer {

namespace {

class CRetryBox final : public IRetryPrompt {
public:
    bool ask_retry(UINT text, const std::wstring& file_name,
                   const std::wstring& description) override {
        return ui::show_message(nullptr, IDS_STREAM_ERROR, text, {file_name, description},
                                MB_SYSTEMMODAL | MB_ICONSTOP | MB_RETRYCANCEL) == IDRETRY;
    }
};

CRetryBox retry_box;

} // namespace

IRetryPrompt& get_retry_box() noexcept {
    return retry_box;
}

} // namespace transfer
