#include "utils/exceptions.h"
#include "utils/file_name.h"
#include "utils/filesystem.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <cstdlib>
#include <string>
#include <vector>

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

/// Each is a name, or is none, with and without an end that the platform drops.
TEST(file_name, leads_to_a_file_of_the_folder) {
    const std::wstring longest(255, L'n');
    for (const std::wstring& name :
         std::vector<std::wstring>{L"a", L".a", L"a..b", L"console.txt", L"COM10", L"com",
                                   L"lpt\u00e9", L"It's [a] {b} ^c~ $f; g=h, i@j!", longest}) {
        EXPECT_TRUE(is_file_name(name) && is_file_name(name + L" . "));
        EXPECT_EQ(made_name(name + L" . "), name);
    }
    for (const std::wstring& name :
         std::vector<std::wstring>{L"",         L".",           L"..",
                                   L" ",        L"a\\b",        L"\\",
                                   L"..\\a",    L"a/b",         L"C:",
                                   L"a:b",      L"a*",          L"a?",
                                   L"<a",       L"a|b",         L"\"a",
                                   L"a\nb",     L"CON",         L"con.txt",
                                   L"Nul .a.b", L"COM1 ",       L"lpt\u00b3.txt",
                                   L"conin$",   longest + L"n", std::wstring(L"a\0b", 3)}) {
        EXPECT_FALSE(is_file_name(name) || is_file_name(name + L" . ")) << name.size();
    }
}

} // namespace

} // namespace utils
