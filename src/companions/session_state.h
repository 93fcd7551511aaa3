#pragma once

#include "utils/unique_handle.h"

namespace companions {

/// Owns the objects that all processes of the logon session share, from first to last:
/// - the mapping of the signed-in identity, and its mutex;
/// - the mutex of transfers, and the mapping of the files that save dialogs put down;
/// - the event of the login dialog, auto-reset: one setting tells one waiter;
/// - the log-off event. Setting it is the request to sign off. It is auto-reset, as the one waiter
///   is the session process, which takes a request by waiting; two requests before that are one.
///   Others read its existence as the sign that the rest exists too: it comes last and goes first.
class session_state {
public:
    /// Creates the objects with nobody signed in. Throws `system_error_exception`.
    session_state();
    session_state(const session_state&) = delete;
    session_state& operator=(const session_state&) = delete;

    HANDLE log_off_event() const noexcept { return log_off_event_.get(); }

    HANDLE identity_mutex() const noexcept { return identity_mutex_.get(); }

    /// Empties the whole identity and not `UserID` alone: what is left of it must not serve to
    /// restore a session. To be called by the owner of the identity's mutex.
    void forget_identity() noexcept;

private:
    explicit session_state(SECURITY_ATTRIBUTES* attributes);

    utils::unique_handle identity_mapping_;
    utils::unique_view identity_;
    utils::unique_handle identity_mutex_;
    utils::unique_handle transfer_mutex_;
    utils::unique_handle save_as_mapping_;
    utils::unique_handle login_dialog_event_;
    utils::unique_handle log_off_event_;
};

} // namespace companions
