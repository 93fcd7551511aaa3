// What fuzz/serializer, which has a model of the format and writes what it read, cannot tell.
#include "serializer/exceptions.h"
#include "serializer/node.h"

#include <gtest/gtest.h>
#include <utf8.h>

#include <sstream>
#include <vector>

namespace serializer {

namespace {

std::string text_of(const node& tree) {
    std::ostringstream out;
    tree.serialize(out);
    return out.str();
}

node read(const std::string& text) {
    std::istringstream in(text);
    return node(in);
}

TEST(node, is_written_and_read_byte_for_byte) {
    node tree(L"a", L"x<y");
    tree.add_child(L"c", L"C:\\t");
    tree.add_child(L"b", L"1");
    EXPECT_EQ(text_of(tree), "<a>x\\<y<b>1</b><c>C:\\\\t</c></a>");
    EXPECT_EQ(
        text_of(node(L"<\\", L"\\<\\> \u00E4\u0800\xFFFF\U0001F600\n")),
        "<\\<\\\\>\\\\\\<\\\\\\> \xC3\xA4\xE0\xA0\x80\xEF\xBF\xBF\xF0\x9F\x98\x80\n</\\<\\\\>");
    // What others write: no first bracket or two, lone backslashes, any order, more bytes behind.
    EXPECT_EQ(read("a>b</a>"), node(L"a", L"b"));
    node disordered(L"p", L"C:\\temp\\");
    disordered.add_child(L"a", L"\\<\\");
    disordered.add_child(L"b", L"2");
    std::istringstream more("<p>C:\\temp\\\\<b>2</b><<a>\\\\\\<\\\\</a></p>x");
    EXPECT_EQ(node(more), disordered);
    EXPECT_EQ(more.get(), 'x') << "the reader stops behind the element";
    // A slash that begins a name would be read as the end of the parent.
    node unreadable;
    unreadable.add_child(L"/a", L"");
    std::ostringstream out;
    EXPECT_THROW(unreadable.serialize(out), wrong_format_exception);
    EXPECT_EQ(out.str(), "");
}

TEST(node, tells_what_is_wrong_with_a_text) {
    std::string deep;
    for (int i = 0; i < node::max_depth; ++i) {
        deep.insert(0, "<d>").append("</d>");
    }
    const std::pair<std::string, std::vector<std::string>> cases[] = {
        {"object name syntax", {"", "<a", "<a<", "<a\xFF>", "<a>b<", "\xEF\xBB\xBF<a>b</a>"}},
        {"object value syntax", {"<a>b", "<a>b>", "<a>b\\</a>", "<a>b\xFF</a>"}},
        {"object subitem syntax", {"<a><b>1</b>x</a>", "<a><b>1</b>"}},
        {"object close tag name", {"<a>b</c>", "<a>b</"}},
        {"object close tag syntax", {"<a>b</a", "<a>b</a<"}},
        {"Object tree is too deep", {"<e>" + deep + "</e>"}},
    };
    for (const auto& [failure, texts] : cases) {
        for (const std::string& text : texts) {
            try {
                ADD_FAILURE() << text << " gave " << text_of(read(text));
            } catch (const wrong_format_exception& raised) {
                const std::string what = raised.what();
                EXPECT_TRUE(what.starts_with("void serializer::node::deserialize(") &&
                            what.ends_with(failure))
                    << text << " gave " << what;
            }
        }
    }
    EXPECT_EQ(text_of(read(deep)), deep);
    // UTF-16 instead of UTF-8, a sequence cut short, half a pair.
    for (const auto* text : {"\xFE<\xFE", "<a>\xE2\x82</a>", "<a>\xED\xA0\x80</a>"}) {
        EXPECT_THROW(read(text), utf8::exception);
    }
    // What was whole before the fault stays.
    node tree;
    std::istringstream broken("<n>v<a>1</a><b>2<c></c></d></n>");
    EXPECT_THROW(tree.deserialize(broken), wrong_format_exception);
    EXPECT_EQ(text_of(tree), "<n>v<a>1</a></n>");
}

TEST(node, finds_the_first_child_of_a_name) {
    node tree;
    tree.add_child(L"n", L"1")->second.add_child(L"inner", L"");
    tree.add_child(L"n", L"2");
    tree.set_child_value(L"n", L"3");
    tree.set_child_int(L"low", -2147483647 - 1);
    EXPECT_EQ(text_of(tree), "<><low>-2147483648</low><n>3<inner></inner></n><n>2</n></>");
    EXPECT_EQ(tree.get_child_value(L"n", L"none"), L"3");
    EXPECT_EQ(tree.get_child_value(L"m", L"none"), L"none");
    EXPECT_EQ(tree.get_child_int(L"low", 7), -2147483647 - 1);
    EXPECT_EQ(tree.get_child_int(L"none", 7), 7);
    tree.set_child_value(L"low", L"2147483647 \r\n");
    EXPECT_EQ(tree.get_child_int(L"low", 7), 2147483647);
    for (const auto* text :
         {L"", L" ", L"x", L"1x", L"1 2", L"2147483648", L"-99999999999999999999"}) {
        tree.set_child_value(L"odd", text);
        EXPECT_THROW(tree.get_child_int(L"odd", -7), wrong_format_exception) << text;
    }
}

} // namespace

} // namespace serializer
