#include "ui/visual_styles.h"

#include "utils/module.h"

namespace ui {

visual_styles::visual_styles() noexcept {
    ACTCTXW request{};
    request.cbSize = sizeof(request);
    request.dwFlags = ACTCTX_FLAG_HMODULE_VALID | ACTCTX_FLAG_RESOURCE_NAME_VALID;
    request.hModule = utils::own_module();
    request.lpResourceName = ISOLATIONAWARE_MANIFEST_RESOURCE_ID;
    context_.reset(CreateActCtxW(&request));
    if (context_) {
        ActivateActCtx(context_.get(), &cookie_);
    }
}

visual_styles::~visual_styles() {
    if (cookie_) {
        DeactivateActCtx(0, cookie_);
    }
}

} // namespace ui
