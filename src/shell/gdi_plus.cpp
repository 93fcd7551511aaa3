#include "shell/gdi_plus.h"

#include "com/guard.h"

#include <objidl.h>

#include <gdiplus.h>

#include <mutex>

namespace shell {

CGdiPlus::~CGdiPlus() {
    const std::lock_guard guard(m_lock);
    if (m_token != 0) {
        Gdiplus::GdiplusShutdown(m_token);
        m_token = 0;
    }
}

void CGdiPlus::start() {
    const std::lock_guard guard(m_lock);
    if (m_token != 0) {
        return;
    }
    // No background thread: the shutdown would wait for its end while the loader, which unloads the
    // module, keeps threads from ending. It serves drawing on the screen only.
    const Gdiplus::GdiplusStartupInput input(nullptr, TRUE);
    Gdiplus::GdiplusStartupOutput output;
    if (Gdiplus::GdiplusStartup(&m_token, &input, &output) != Gdiplus::Ok) {
        m_token = 0;
        throw com::status_exception(E_FAIL);
    }
}

} // namespace shell
