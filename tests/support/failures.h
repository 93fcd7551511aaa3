/// What a failure says, for tests to compare.
#pragma once

#include "vfs/exceptions.h"

#include <gtest/gtest.h>

#include <string>

namespace support {

/// Name and description of the failure that an operation throws, "name: description"; "none"
/// without one.
template <class Operation>
std::wstring failure_of(const Operation& operation) {
    try {
        operation();
    } catch (const vfs::exception& failure) {
        return failure.get_name() + L": " + failure.get_description();
    }
    return L"none";
}

/// The operation fails with a message that holds `where` and, behind it, `text`.
template <class Failure, class Operation>
void expect_failure(const Operation& operation, const std::string& where, const std::string& text) {
    try {
        operation();
        ADD_FAILURE() << "no failure: " << where << text;
    } catch (const Failure& failure) {
        const std::string message = failure.what();
        const auto begin = message.find(where);
        EXPECT_TRUE(begin != std::string::npos &&
                    message.find(text, begin + where.size()) != std::string::npos)
            << message;
    }
}

} // namespace support
