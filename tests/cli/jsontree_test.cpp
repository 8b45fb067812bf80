// The JSON form of a tree: every field, every byte, NULL apart from empty,
// chains of roots, and what the import refuses.
#include <gtest/gtest.h>

#include <stdlib.h>

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "findings/report.h"
#include "trees/jsoncharset.h"
#include "trees/jsontree.h"
#include "testsupport.h"

using namespace testsupport;

namespace {

// Exported and imported again, the tree gives the same tree text.
std::string throughjson(const std::string &treetext)
{
    datatree_t *tree = parse(treetext);
    if (tree == nullptr)
        return "<no tree>";
    std::string json = edi::treetojson(tree, "KEY");
    freedatatree(tree);
    edi::Report rep;
    datatree_t *back = edi::jsontotree(json, "test.json", rep);
    if (back == nullptr)
        return "<not imported>";
    std::string text = dump(back);
    freedatatree(back);
    return text;
}

TEST(JsonTree, EveryFieldAndEveryEnumerationWordSurvives)
{
    const std::string text =
        "edi loopcnt=3 data=\"\" defval=D deffunc=unhcnt iseditag=1 type=bnext edidata=opt "
        "edilen=5 edimaxlen=7 editype=float0 ediforce=mand edialign=right valid=-2\n"
        "  a type=loop editype=sdate ediforce=cond edialign=left\n"
        "  b type=next editype=date\n"
        "  c type=nc editype=time\n"
        "  d type=ncforeign editype=float\n"
        "  e editype=string loopcnt=-2147483648 valid=2147483647\n";
    datatree_t *tree = parse(text);
    ASSERT_NE(tree, nullptr);
    EXPECT_EQ(throughjson(text), dump(tree));
    freedatatree(tree);
}

TEST(JsonTree, EveryByteOfNamesAndValuesSurvivesAndNullStaysApartFromEmpty)
{
    std::string bytes;
    for (int c = 1; c < 256; c++)
        bytes += static_cast<char>(c);
    datatree_t *tree = parse("edi\n  empty data=\"\"\n  null\n");
    free(tree->xmltag);
    tree->xmltag = strdup(bytes.c_str());
    tree->data = strdup(bytes.c_str());
    std::string json = edi::treetojson(tree, nullptr);
    EXPECT_EQ(json.find("\"key\""), std::string::npos);
    edi::Report rep;
    datatree_t *back = edi::jsontotree(json, "test.json", rep);
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(std::string(back->xmltag), bytes);
    EXPECT_EQ(std::string(back->data), bytes);
    ASSERT_NE(back->child, nullptr);
    ASSERT_NE(back->child->data, nullptr);
    EXPECT_STREQ(back->child->data, "");
    EXPECT_EQ(back->child->next->data, nullptr);
    EXPECT_EQ(back->child->parent, back);
    freedatatree(tree);
    freedatatree(back);
}

// Texts are quoted exactly as the JSON library quotes them: every byte
// alone and amid others, in ISO 8859-1 (the documents' default) and as
// UTF-8 sequences the decoding keeps.
TEST(JsonTree, TextsQuotedAsTheJsonLibraryQuotesThem)
{
    std::vector<std::string> texts = {"", "plain", "a\"b\\c/d", "\x7f", "caf\xc3\xa9"};
    for (int b = 1; b < 256; b++) {
        texts.push_back(std::string(1, static_cast<char>(b)));
        texts.push_back("x" + std::string(1, static_cast<char>(b)) + "y");
    }
    for (const std::string &t : texts) {
        SCOPED_TRACE(t);
        EXPECT_EQ(edi::jsonquote(t.c_str()), nlohmann::json(edi::jsontext(t.c_str())).dump());
    }
}

TEST(JsonTree, AChainOfRootsIsAnArrayAndComesBackAsAChain)
{
    const std::string text = "first\n  kid data=1\nsecond\nthird\n";
    EXPECT_EQ(throughjson(text), text);
}

TEST(JsonTree, ImportRefusesWhatIsNoTreeWithOneMessageNamingTheFile)
{
    const struct {
        const char *json, *message;
    } cases[] = {
        {"{\"name\": ", "t.json: not a valid JSON document\n"},
        {"{\"format\": \"other\", \"tree\": {}}", "t.json: not an ediprot tree document\n"},
        {"{\"format\": \"ediprot-tree\"}", "t.json: document has no \"tree\"\n"},
        {"{\"format\": \"ediprot-tree\", \"tree\": null}", "t.json: document holds no tree\n"},
        {"[]", "t.json: document holds no tree\n"},
        {"{\"data\": \"x\"}", "t.json: a node has no \"name\"\n"},
        {"{\"name\": \"a\", \"colour\": 1}", "t.json: unknown field \"colour\"\n"},
        {"{\"name\": 7}", "t.json: \"name\" is not a string\n"},
        {"{\"name\": \"a\", \"loopcnt\": \"1\"}", "t.json: \"loopcnt\" is not an integer\n"},
        {"{\"name\": \"a\", \"edilen\": 4294967296}", "t.json: \"edilen\" out of range\n"},
        {"{\"name\": \"a\", \"editype\": \"money\"}", "t.json: bad value of \"editype\"\n"},
        {"{\"name\": \"a\", \"children\": {}}", "t.json: \"children\" is not an array\n"},
        {"{\"name\": \"a\", \"children\": [1]}", "t.json: a node is not an object or a [name, value] pair\n"},
        {"{\"name\": \"a\\u0000b\"}", "t.json: \"name\" holds a NUL character\n"},
        {"{\"name\": \"a\", \"data\": \"\\u0100\"}",
         "t.json: a: the value '\\xc4\\x80' holds U+0100, which ISO-8859-1 has no code for; "
         "the interchange cannot carry it.\n"},
    };
    for (const auto &c : cases) {
        datatree_t *tree = reinterpret_cast<datatree_t *>(1);
        edi::Report rep;
        tree = edi::jsontotree(c.json, "t.json", rep);
        EXPECT_EQ(tree, nullptr) << c.json;
        ASSERT_EQ(rep.items().size(), 1u) << c.json;
        EXPECT_EQ(rep.items()[0].file + ": " + rep.items()[0].text + "\n", c.message) << c.json;
    }
}

TEST(JsonTree, ANodeFailingDeepInsideFreesWhatWasBuilt)
{
    // The sanitizer build finds a leak if the nodes before the bad one stay.
    std::string json = "{\"name\": \"r\", \"children\": [";
    for (int i = 0; i < 100; i++)
        json += "{\"name\": \"n\", \"data\": \"v\", \"children\": [{\"name\": \"k\"}]},";
    json += "{\"name\": \"bad\", \"type\": \"nowhere\"}]}";
    edi::Report rep;
    datatree_t *tree = edi::jsontotree(json, "t.json", rep);
    EXPECT_EQ(tree, nullptr);
    ASSERT_EQ(rep.items().size(), 1u);
    EXPECT_EQ(rep.items()[0].text, "bad value of \"type\"");
}

}  // namespace
