#include "properties_fixture.h"
#include "resources/properties_ids.h"

namespace dialogs {

namespace {

TEST_F(properties_test, shows_a_file) {
    m_folder->create_file(L"a.txt");
    open(select(m_folder, {L"a.txt"}));
    EXPECT_TRUE(shows(IDC_ITEM_NAME, L"a.txt"));
    EXPECT_TRUE(shows(IDC_ITEM_LINK, m_folder->find_item_by_name(L"a.txt", false)->get_link()));
    EXPECT_EQ(cancel(), IDCANCEL);
}

} // namespace

} // namespace dialogs
