#include "vfs_quilldeck/exceptions.h"
#include "vfs_quilldeck/reply_node.h"

#include <gtest/gtest.h>

namespace vfs_quilldeck {

namespace {

/// A leaf as name='text', an element with children as name(child child).
std::wstring show(const reply_node& node) {
    std::wstring shown(node.name());
    if (node.is_leaf()) {
        return shown + L"='" + std::wstring(node.text()) + L"'";
    }
    shown += L"(";
    for (const reply_node& child : node.children()) {
        shown += (shown.back() == L'(' ? L"" : L" ") + show(child);
    }
    return shown + L")" + std::wstring(node.text());
}

TEST(reply_node, reads_the_subset_that_the_service_sends) {
    const struct {
        std::wstring text;
        std::wstring shown;
    } cases[] = {
        {L"<Result></Result>", L"Result=''"},
        {L"\xFEFF lead <a>1</a> and <what follows", L"a='1'"},
        {L"<a> x <b>1</b> y <b></b><c><d>\n2</d></c> z </a>", L"a(b='1' b='' c(d='\n2'))"},
        {L"<a><b>1</x></Y>", L"a(b='1')"},
        {L"<a k=\"v\"><b/>1</b/></a>", L"a k=\"v\"(b/='1')"},
        {L"<a><b>1</b><></></></a>", L"a(b='1' ='')"},
        {L"</a>1</a>", L"/a='1'"},
        // Escapes, in texts and in names; a backslash elsewhere is a character like any other.
        {L"<a>\\<b\\> c:\\d \\\\ &lt;</a>", L"a='<b> c:\\d \\\\ &lt;'"},
        {L"<x\\>y><\\<z>1</z></x>", L"x>y(<z='1')"},
        {L"<a>\\\\<b></a>", L"a='\\<b>'"},
        {L"<a>\\<</a>", L"a='<'"},
        // A comment and a self-closing tag are elements that never end.
        {L"<a><!-- --></a></a>", L"a(!-- --='')"},
    };

    for (const auto& [text, shown] : cases) {
        EXPECT_EQ(show(reply_node::parse(text)), shown);
    }
    for (const auto broken : {L"", L"no document", L"<", L"<a", L"a>", L"<a>", L"<a>text",
                              L"<a><b></b>", L"<a></a", L"\\<a></a>", L"<a\\></a\\>", L"<a>\\</a>",
                              L"<a><b/></a>", L"<?xml?><Result></Result>"}) {
        try {
            ADD_FAILURE() << broken << " gave " << show(reply_node::parse(broken));
        } catch (const exception& failure) {
            EXPECT_EQ(failure.get_name(), L"Parse error");
            EXPECT_EQ(failure.get_description(), L"Server side error");
        }
    }
}

TEST(reply_node, finds_children_by_exact_name) {
    const reply_node first = [] {
        const reply_node root =
            reply_node::parse(L"<r><n><x>1</x></n><n>2</n><N>3</N><n><x>4</x><x>5</x></n></r>");
        EXPECT_EQ(root.get_child_text(L"n"), L"");
        EXPECT_EQ(root.get_child_text(L"N"), L"3");
        EXPECT_EQ(root.get_child_text(L"x"), L"");
        EXPECT_EQ(root.get_children(L"n").size(), 2u);
        EXPECT_EQ(root.get_children(L"n").back().get_child_text(L"x"), L"4");
        EXPECT_EQ(root.get_children(L"N").size(), 0u);
        return root.get_children(L"n").front();
    }();
    EXPECT_EQ(show(first), L"n(x='1')") << "a node outlives the tree that it came from";
}

TEST(reply_node, reads_a_reply_of_any_depth) {
    constexpr std::size_t depth = 200'000;
    std::wstring text;
    for (std::size_t i = 0; i < depth; ++i) {
        text += L"<d>";
    }
    text += L"<e>1</e>";
    for (std::size_t i = 0; i < depth; ++i) {
        text += L"</d>";
    }
    const reply_node root = reply_node::parse(text);
    ASSERT_EQ(root.children().size(), 1u);
    EXPECT_EQ(root.children().front().name(), L"d");
    EXPECT_FALSE(root.is_leaf());
}

} // namespace

} // namespace vfs_quilldeck
