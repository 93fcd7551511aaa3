#include "vfs_quilldeck/shared_user_info.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace vfs_quilldeck {

namespace {

TEST(shared_user_info, cuts_texts_to_their_fields) {
    const auto texts = [](std::size_t id, std::size_t name, std::size_t word) {
        return vfs::user_info{std::wstring(id, L'\xE4'), std::wstring(id, L'b'),
                              std::wstring(name, L'\xE4'), std::wstring(word, L'd'),
                              std::wstring(word, L'e')};
    };
    for (const auto& info : {texts(0, 0, 0), texts(62, 126, 6), texts(63, 127, 7)}) {
        EXPECT_EQ(unpack(pack(info)), info);
    }
    EXPECT_EQ(unpack(pack(texts(64, 128, 8))), texts(63, 127, 7));

    // What another process wrote may end with the field itself.
    shared_user_info record;
    std::memset(&record, 'x', sizeof(record));
    const vfs::user_info info = unpack(record);
    EXPECT_EQ(info.user_id.size(), 64u);
    EXPECT_EQ(info.user_name.size(), 128u);
    EXPECT_EQ(info.user_level.size(), 8u);
}

} // namespace

} // namespace vfs_quilldeck
