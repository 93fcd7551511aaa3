#pragma once

#include "utils/unique_handle.h"

#include <windows.h>

namespace ui {

struct activation_context_traits {
    using pointer = HANDLE;

    static pointer none() noexcept { return INVALID_HANDLE_VALUE; }

    static void close(pointer value) noexcept { ::ReleaseActCtx(value); }
};

/// Makes the windows that this thread creates use version 6 of the platform's controls, which this
/// module's manifest asks for. Without it they look as the host asks for: we are loaded by all
/// kinds of programs. Where there is no such manifest, nothing changes.
class visual_styles {
public:
    visual_styles() noexcept;
    visual_styles(const visual_styles&) = delete;
    visual_styles& operator=(const visual_styles&) = delete;
    ~visual_styles();

private:
    utils::unique_resource<activation_context_traits> context_;
    ULONG_PTR cookie_ = 0;
};

} // namespace ui
