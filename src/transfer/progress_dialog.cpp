#include "transfer/progress_dialog.h"

#include "com/guard.h"
#include "com/worker.h"

namespace transfer {

namespace {

/// How often what was done is shown, in milliseconds. Each time wakes the dialog's thread.
constexpr ULONGLONG pace = 50;

/// The dialog shortens a line to its width.
constexpr BOOL compact = TRUE;

} // namespace

CProgressDialog::CProgressDialog(HWND owner) : m_owner(owner) {
    // The header gives the interface no identifier that the compiler would know.
    void* made = nullptr;
    com::check(::CoCreateInstance(CLSID_ProgressDialog, nullptr, CLSCTX_INPROC_SERVER,
                                  IID_IProgressDialog, &made));
    *m_dialog.GetAddressOf() = static_cast<IProgressDialog*>(made);
}

void CProgressDialog::start() {
    m_dialog->StartProgressDialog(m_owner, nullptr, PROGDLG_AUTOTIME, nullptr);
}

void CProgressDialog::set_title(const std::wstring& text) {
    m_dialog->SetTitle(text.c_str());
}

void CProgressDialog::set_line(DWORD line, const std::wstring& text) {
    m_dialog->SetLine(line, text.c_str(), compact, nullptr);
}

void CProgressDialog::set_progress(std::uint64_t done, std::uint64_t total) {
    const ULONGLONG now = ::GetTickCount64();
    if (done != 0 && done < total && now - m_shown < pace) {
        return;
    }
    m_shown = now;
    m_dialog->SetProgress64(done, total);
}

void CProgressDialog::reset_timer() {
    m_dialog->Timer(PDTIMER_RESET, nullptr);
}

bool CProgressDialog::has_user_cancelled() {
    return m_dialog->HasUserCancelled() != FALSE;
}

void CProgressDialog::stop() noexcept {
    m_dialog->StopProgressDialog();
}

CProgressDialog make_progress_dialog(HWND owner, const wchar_t* refusal) {
    try {
        return CProgressDialog(owner);
    } catch (const com::status_exception&) {
        throw com::worker_exception(refusal);
    }
}

} // namespace transfer
