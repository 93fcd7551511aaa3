#include "vfs_quilldeck/shared_user_info.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

namespace vfs_quilldeck {

namespace {

TEST(shared_user_info, puts_each_text_at_its_offset_and_cuts_it) {
    const struct {
        std::wstring vfs::user_info::* text;
        std::size_t offset;
        std::size_t longest;
    } fields[] = {
        {&vfs::user_info::user_id, 0, 63},      {&vfs::user_info::user_access_id, 128, 63},
        {&vfs::user_info::user_name, 256, 127}, {&vfs::user_info::user_lang, 512, 7},
        {&vfs::user_info::user_level, 528, 7},
    };

    for (const auto& field : fields) {
        for (const std::size_t length : {field.longest - 1, field.longest, field.longest + 1}) {
            vfs::user_info info;
            info.*field.text = std::wstring(length, L'\xE4');
            const shared_user_info record = pack(info);

            shared_user_info expected{};
            const std::u16string cut(std::min(length, field.longest), u'\xE4');
            std::memcpy(reinterpret_cast<char*>(&expected) + field.offset, cut.data(),
                        cut.size() * sizeof(char16_t));
            EXPECT_EQ(std::memcmp(&record, &expected, sizeof(record)), 0) << field.offset;
            info.*field.text = std::wstring(cut.begin(), cut.end());
            EXPECT_EQ(unpack(record), info);
        }
    }
}

TEST(shared_user_info, ends_a_text_at_the_field_when_no_zero_does) {
    shared_user_info record;
    std::memset(&record, 'x', sizeof(record));
    const vfs::user_info info = unpack(record);
    EXPECT_EQ(info.user_id.size(), 64u);
    EXPECT_EQ(info.user_name.size(), 128u);
    EXPECT_EQ(info.user_level.size(), 8u);
}

} // namespace

} // namespace vfs_quilldeck
