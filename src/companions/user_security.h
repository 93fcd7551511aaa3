#pragma once

#include "companions/local_free.h"

#include <memory>

namespace companions {

/// The security of objects that all programs of the user share. Without one, a companion that an
/// elevated program happened to start first would give them that program's: for administrators
/// only, at a level that the user's file manager may not write to.
class user_security {
public:
    /// Full access for the user and for the system, at the level of ordinary programs or below.
    /// Throws `system_error_exception`.
    user_security();

    /// For the calls that create objects; valid as long as this.
    SECURITY_ATTRIBUTES* attributes() noexcept { return &attributes_; }

private:
    std::unique_ptr<void, local_free> descriptor_;
    SECURITY_ATTRIBUTES attributes_{};
};

} // namespace companions
