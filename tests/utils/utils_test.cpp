#include "utils/exceptions.h"
#include "utils/filesystem.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <cstdlib>
#include <string>

namespace utils {

namespace {

TEST(exceptions, say_where_what_and_the_systems_words) {
    EXPECT_STREQ(system_error_exception("f()", "::Call(NULL)").what(),
                 "f(): ::Call(NULL) call returned error");
    EXPECT_STREQ(system_error_exception("f()", "::Call(NULL)", 0xDEADBEEF).what(),
                 "f(): ::Call(NULL) call returned error: Unknown error");
    const std::string known = system_error_exception("f()", "::C()", ERROR_ACCESS_DENIED).what();
    EXPECT_TRUE(known.starts_with("f(): ::C() call returned error: ") && known.ends_with("\r\n"));
    EXPECT_EQ(known.find("Unknown error"), std::string::npos);
    // Inserts are left as they stand: there is nothing to put in.
    EXPECT_NE(std::string(system_error_exception("f", "c", ERROR_BAD_EXE_FORMAT).what()).find("%1"),
              std::string::npos);
}

TEST(filesystem, gives_the_local_folder_of_the_user) {
    EXPECT_EQ(filesystem::get_special_directory(0), _wgetenv(L"LOCALAPPDATA"));
}

} // namespace

} // namespace utils
