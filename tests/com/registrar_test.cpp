#include "registry_lines.h"

#include "com/apartment.h"
#include "com/registrar.h"
#include "resources/resource_ids.h"

#include <gtest/gtest.h>

namespace com {

TEST(registrar, a_script_with_an_unknown_value_fails_and_writes_nothing) {
    const apartment thread;
    const support::registry_lines before = support::read_registry();
    registrar interpreter;
    try {
        interpreter.run(IDR_NAMESPACE_FOLDER, registration::add);
        FAIL();
    } catch (const status_exception& failure) {
        EXPECT_EQ(failure.status(), DISP_E_EXCEPTION);
    }
    EXPECT_EQ(support::read_registry(), before);
    EXPECT_THROW(interpreter.run(1, registration::add), status_exception);
}

} // namespace com
