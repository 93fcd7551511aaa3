// What fuzz/reply_node, which has a model of the format, cannot tell.
#include "vfs_quilldeck/wire/exceptions.h"
#include "vfs_quilldeck/wire/reply_node.h"

#include <gtest/gtest.h>

namespace vfs_quilldeck {

namespace {

TEST(reply_node, reads_what_the_service_sends_and_nothing_that_is_broken) {
    const reply_node first = [] {
        const reply_node root = reply_node::parse(
            L"\xFEFF lead <r>-<n><x>1\\<\\>\\d &lt;\n</x></n><n>2</n><N>3</N><n><x>4</x></n></r>");
        EXPECT_EQ(root.get_child_text(L"n"), L"");
        EXPECT_EQ(root.get_child_text(L"N"), L"3");
        EXPECT_EQ(root.get_child_text(L"x"), L"");
        EXPECT_EQ(root.get_children(L"n").size(), 2u);
        EXPECT_EQ(root.get_children(L"n").back().get_child_text(L"x"), L"4");
        EXPECT_EQ(root.get_children(L"N").size(), 0u);
        EXPECT_EQ(root.text(), L"");
        return root.get_children(L"n").front();
    }();
    EXPECT_EQ(first.get_child_text(L"x"), L"1<>\\d &lt;\n") << "it outlives its tree";
    for (const auto broken : {L"", L"no document", L"<a", L"a>", L"<a>text", L"<a><b></b>",
                              L"<a></a", L"<a>\\</a>", L"<a><b/></a>", L"<?xml?><R></R>"}) {
        EXPECT_THROW(reply_node::parse(broken), exception) << broken;
    }
}

TEST(reply_node, reads_a_reply_of_any_depth) {
    constexpr std::size_t depth = 200'000;
    std::wstring opening;
    std::wstring closing;
    for (std::size_t i = 0; i < depth; ++i) {
        opening += L"<d>";
        closing += L"</d>";
    }
    EXPECT_EQ(reply_node::parse(opening + closing).children().front().name(), L"d");
}

} // namespace

} // namespace vfs_quilldeck
