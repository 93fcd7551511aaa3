#pragma once

#include "drive_access.h"
#include "extension.h"

#include "com/apartment.h"

#include <gtest/gtest.h>

/// A case on the real desktop, with the extension registered. The thread is in an apartment.
class drive_test : public testing::Test {
    com::apartment apartment_;
    support::registered_extension registration_;
};
