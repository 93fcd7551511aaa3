#pragma once

#include "transfer/progress_sink.h"

#include <shlobj.h>
#include <wrl/client.h>

namespace transfer {

/// The platform's progress dialog. Belongs to the apartment that made it; the dialog has a thread
/// of its own, so that it can be cancelled whatever this one does.
class CProgressDialog final : public IProgressSink {
public:
    /// Throws the status with which the platform refuses. `owner` may be null.
    explicit CProgressDialog(HWND owner);

    void start() override;
    void set_title(const std::wstring& text) override;
    void set_line(DWORD line, const std::wstring& text) override;
    void set_progress(std::uint64_t done, std::uint64_t total) override;
    void reset_timer() override;
    bool has_user_cancelled() override;
    void stop() noexcept override;

    /// Boxes about the transfer stand on its window.
    IUnknown* get() const noexcept { return m_dialog.Get(); }

private:
    HWND m_owner;
    Microsoft::WRL::ComPtr<IProgressDialog> m_dialog;
    /// When what was done was shown last, in milliseconds.
    ULONGLONG m_shown = 0;
};

/// One for a worker, which fails with the words `refusal`, a `com::worker_exception`, when the
/// platform refuses.
CProgressDialog make_progress_dialog(HWND owner, const wchar_t* refusal);

} // namespace transfer
