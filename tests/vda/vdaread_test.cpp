// The VDA file reader: line ends, skipped lines, failures, and the tree
// that comes back.
#include <gtest/gtest.h>

#include "vdatest.h"

using namespace testsupport;
using namespace vdatest;

namespace {

// $S511: type(3) version(2) rest(5); *CALL with $S512: type(3) text(4).
datatree_t *smallconfig()
{
    return rooted(node("vda", nullptr,
                       {node("$S511", nullptr, {field("type", 3), field("version", 2),
                                                field("rest", 5)}),
                        node("*CALL", nullptr,
                             {node("$S512", nullptr, {field("type", 3), field("text", 4)})})}));
}

std::string restof(const datatree_t *tree)
{
    const datatree_t *rec = tree->child;
    if (rec == nullptr || rec->child == nullptr)
        return "(no record)";
    return rec->child->next->next->data;
}

TEST(Vdaread, LineEndsComeOffOneCharacterThenACarriageReturn)
{
    const struct {
        const char *what;
        std::string bytes;
        std::string rest;
    } cases[] = {
        {"LF", "51101ABCDE\n", "ABCDE"},
        {"CR LF", "51101ABCDE\r\n", "ABCDE"},
        {"two CRs keep one", "51101ABCD\r\r\n", "ABCD\r"},
        {"last line without line end loses a character", "51101ABCDE", "ABCD"},
        {"last line ending in CR loses only the CR", "51101ABCDE\r", "ABCDE"},
    };
    datatree_t *cf = smallconfig();
    for (const auto &c : cases) {
        std::string err;
        datatree_t *tree = read(tempfile(c.bytes), cf, &err);
        ASSERT_NE(tree, nullptr) << c.what;
        EXPECT_EQ(restof(tree), c.rest) << c.what;
        EXPECT_EQ(err, "") << c.what;
        freedatatree(tree);
    }
    freedatatree(cf);
}

TEST(Vdaread, EmptyFileAndUnknownOrEmptyLinesGiveARootWithoutChildren)
{
    datatree_t *cf = smallconfig();
    cf->line = 7;
    for (const std::string &bytes : std::vector<std::string>{"", "\n\r\n", "99901xxxx\r\n51\n",
                                                            std::string("\0" "511\n", 5)}) {
        std::string err;
        datatree_t *tree = read(tempfile(bytes), cf, &err);
        ASSERT_NE(tree, nullptr);
        EXPECT_STREQ(tree->xmltag, "vda");
        EXPECT_EQ(tree->child, nullptr);
        EXPECT_EQ(tree->line, 7);  // the root takes the parameters of the configuration's root
        EXPECT_EQ(err, "");
        freedatatree(tree);
    }
    freedatatree(cf);
}

TEST(Vdaread, RecordsHangAtTheirPathsWithParentLinks)
{
    datatree_t *cf = smallconfig();
    datatree_t *tree = read(tempfile("512WXYZ\r\n51102HELLO\r\n"), cf);
    ASSERT_NE(tree, nullptr);
    EXPECT_EQ(children(tree), "*CALL(1) $S511");
    const datatree_t *rec = tree->child->child;
    EXPECT_STREQ(rec->xmltag, "$S512");
    EXPECT_EQ(rec->parent, tree->child);
    EXPECT_EQ(tree->child->parent, tree);
    EXPECT_EQ(rec->child->parent, rec);
    EXPECT_STREQ(rec->child->next->data, "WXYZ");
    EXPECT_EQ(tree->parent, nullptr);
    freedatatree(tree);
    freedatatree(cf);
}

// The second record of a type at one place is reported and released (the
// leak check of the sanitizer build would catch a lost record).
TEST(Vdaread, SecondRecordOfATypeIsReportedAndLeftOut)
{
    datatree_t *cf = smallconfig();
    std::string err;
    datatree_t *tree = read(tempfile("51101FIRST\n51101SECND\n"), cf, &err);
    ASSERT_NE(tree, nullptr);
    EXPECT_EQ(err, "insrecord: no path\n");
    EXPECT_EQ(children(tree), "$S511");
    EXPECT_EQ(restof(tree), "FIRST");
    freedatatree(tree);
    freedatatree(cf);
}

TEST(Vdaread, LineLongerThanTheBufferComesInPieces)
{
    // 8191 characters make the first piece, whose last character comes
    // off; the rest is a line of its own with its own key.
    std::string first = "51101ABCDE" + std::string(8191 - 10, 'x');
    datatree_t *cf = smallconfig();
    datatree_t *tree = read(tempfile(first + "512TEXT\n"), cf);
    ASSERT_NE(tree, nullptr);
    EXPECT_EQ(children(tree), "$S511 *CALL(1)");
    EXPECT_STREQ(tree->child->next->child->child->next->data, "TEXT");
    freedatatree(tree);
    freedatatree(cf);
}

TEST(Vdaread, ConfigurationWithoutS511IsRefusedBeforeTheFileIsOpened)
{
    datatree_t *cf = rooted(node("vda", nullptr, {node("$S512", nullptr, {field("type", 3)})}));
    std::string err;
    EXPECT_EQ(read("/nonexistent/file.vda", cf, &err), nullptr);
    EXPECT_EQ(err, "S511 missing in vdaconf\n");
    EXPECT_EQ(read("/nonexistent/file.vda", nullptr, &err), nullptr);
    EXPECT_EQ(err, "S511 missing in vdaconf\n");
    freedatatree(cf);
}

TEST(Vdaread, FileThatCannotBeOpenedGivesNullAndTheSystemsReason)
{
    datatree_t *cf = smallconfig();
    std::string err;
    EXPECT_EQ(read("/nonexistent/file.vda", cf, &err), nullptr);
    EXPECT_EQ(err, "/nonexistent/file.vda: No such file or directory\n");
    freedatatree(cf);
}

TEST(Vdaread, NullFileNameGivesNull)
{
    datatree_t *cf = smallconfig();
    datatree_t *tree = cf;
    std::string err = capture_stderr([&] { tree = vdaread(nullptr, nullptr, cf, nullptr); });
    EXPECT_EQ(tree, nullptr);
    EXPECT_EQ(err, "vdaread: no file name\n");
    freedatatree(cf);
}

TEST(Vdaread, TracesEachLineWithItsNumberAndLength)
{
    TraceLevel tl(0x20000000u);
    datatree_t *cf = smallconfig();
    std::string err;
    datatree_t *tree = read(tempfile("\r\n51101ABCDE\r\n"), cf, &err);
    EXPECT_NE(err.find("1: len 0,  record <>\n"), std::string::npos) << err;
    EXPECT_NE(err.find("2: len 10,  record <51101ABCDE>\n"), std::string::npos) << err;
    EXPECT_NE(err.find("vdaread done 0x"), std::string::npos) << err;
    freedatatree(tree);
    freedatatree(cf);
}

}  // namespace
