#pragma once

#include "vfs/exceptions.h"

#include <gtest/gtest.h>

#include <string>

namespace transfer_test {

inline constexpr auto broken_line = L"Please, check your internet connection or firewall settings";

/// `call` must fail with exactly these texts.
template <class Call>
void expect_failure(const std::wstring& name, const std::wstring& description, const Call& call) {
    try {
        call();
        ADD_FAILURE() << "no failure: " << testing::PrintToString(name);
    } catch (const vfs::exception& failure) {
        EXPECT_EQ(failure.get_name(), name);
        EXPECT_EQ(failure.get_description(), description);
    }
}

} // namespace transfer_test
