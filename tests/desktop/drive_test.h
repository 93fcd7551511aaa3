#pragma once

#include "com/apartment.h"
#include "extension.h"
#include "vfs/client.h"

#include <gtest/gtest.h>

/// A case on the real desktop, with the extension registered. The thread is in an apartment.
class drive_test : public testing::Test {
protected:
    /// Signs the demo user in without a dialog, for all processes of the desktop.
    static vfs::client_ptr sign_in();

private:
    com::apartment apartment_;
    support::registered_extension registration_;
};
