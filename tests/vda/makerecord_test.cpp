// The record builder: finding a record's configuration and cutting a line
// into its fields.
#include <gtest/gtest.h>

#include <string.h>

#include "vdatest.h"

using namespace testsupport;
using namespace vdatest;

namespace {

// $S511 with F1(3) F2(2) F3(6, et_sdate) F4(5) below a root "vda".
datatree_t *workedconfig()
{
    return rooted(node("vda", nullptr,
                       {node("$S511", nullptr,
                             {field("F1", 3), field("F2", 2), field("F3", 6, et_sdate),
                              field("F4", 5)})}));
}

std::string values(const datatree_t *rec)
{
    std::string out;
    for (const datatree_t *fp = rec->child; fp != nullptr; fp = fp->next)
        out += std::string(fp->xmltag) + "=<" + fp->data + ">";
    return out;
}

TEST(Makerecord, WorkedExampleCutsTheLineIntoItsFields)
{
    datatree_t *cf = workedconfig();
    datatree_t *sp = nullptr;
    char line[] = "51101071123     ";
    datatree_t *rec = makerecord(line, &sp, cf);
    ASSERT_NE(rec, nullptr);
    EXPECT_EQ(sp, cf->child);
    EXPECT_STREQ(rec->xmltag, "$S511");
    EXPECT_EQ(rec->data, nullptr);
    EXPECT_EQ(rec->iseditag, 0);
    EXPECT_EQ(rec->parent, nullptr);
    EXPECT_EQ(values(rec), "F1=<511>F2=<01>F3=<23.11.2007>F4=<>");

    // Field nodes carry the configuration's parameters and hang below the record.
    const datatree_t *f3 = rec->child->next->next;
    EXPECT_EQ(f3->iseditag, 1);
    EXPECT_EQ(f3->edilen, 6);
    EXPECT_EQ(f3->editype, et_sdate);
    EXPECT_EQ(f3->parent, rec);
    EXPECT_EQ(f3->loopcnt, 0);
    // The line itself is only read.
    EXPECT_STREQ(line, "51101071123     ");
    freedatatree(rec);
    freedatatree(cf);
}

TEST(Makerecord, FieldNodesTakeTypeLengthForceAndAlignmentButNoDefaults)
{
    datatree_t *f = field("F1", 3, et_float0, ef_mand);
    f->edialign = el_right;
    f->defval = strdup("999");
    f->deffunc = strdup("seccnt");
    f->edimaxlen = 9;
    datatree_t *cf = rooted(node("vda", nullptr, {node("$S511", nullptr, {f})}));
    char line[] = "511";
    datatree_t *rec = makerecord(line, nullptr, cf);
    ASSERT_NE(rec, nullptr);
    const datatree_t *fp = rec->child;
    EXPECT_EQ(fp->editype, et_float0);
    EXPECT_EQ(fp->ediforce, ef_mand);
    EXPECT_EQ(fp->edialign, el_right);
    EXPECT_EQ(fp->defval, nullptr);
    EXPECT_EQ(fp->deffunc, nullptr);
    EXPECT_EQ(fp->edimaxlen, 0);
    freedatatree(rec);
    freedatatree(cf);
}

TEST(Makerecord, UnknownRecordTypeGivesNullInResultAndConfigurationNode)
{
    datatree_t *cf = workedconfig();
    datatree_t *sp = cf;
    char line[] = "99901";
    EXPECT_EQ(makerecord(line, &sp, cf), nullptr);
    EXPECT_EQ(sp, nullptr);
    sp = cf;
    EXPECT_EQ(makerecord(line, &sp, nullptr), nullptr);
    EXPECT_EQ(sp, nullptr);
    freedatatree(cf);
}

TEST(Makerecord, KeyIsSAndAtMostThreeCharactersOfTheLine)
{
    datatree_t *cf = rooted(node("vda", nullptr,
                                 {node("$S", nullptr, {field("all", 4)}),
                                  node("$S51", nullptr, {field("all", 4)}),
                                  node("$S511", nullptr, {field("all", 4)})}));
    const struct {
        const char *line;
        const char *tag;
    } cases[] = {{"", "$S"}, {"51", "$S51"}, {"5119", "$S511"}};
    for (const auto &c : cases) {
        std::string line = c.line;
        datatree_t *rec = makerecord(line.data(), nullptr, cf);
        ASSERT_NE(rec, nullptr) << c.line;
        EXPECT_STREQ(rec->xmltag, c.tag) << c.line;
        freedatatree(rec);
    }
    freedatatree(cf);
}

TEST(Makerecord, ConfigurationWithoutFieldsGivesRecordWithoutChildren)
{
    datatree_t *cf = rooted(node("vda", nullptr, {node("$S511")}));
    datatree_t *sp = nullptr;
    char line[] = "51102";
    datatree_t *rec = makerecord(line, &sp, cf);
    ASSERT_NE(rec, nullptr);
    EXPECT_EQ(sp, cf->child);
    EXPECT_EQ(rec->child, nullptr);
    freedatatree(rec);
    freedatatree(cf);
}

TEST(Findsatz, IgnoresTheFirstCharacterAndComparesTheRestExactly)
{
    datatree_t *cf = rooted(node("vda", nullptr, {node("#S511"), node("$s512"), node("$S512")}));
    EXPECT_EQ(ediprot::findsatz(cf, "S511"), cf->child);
    EXPECT_EQ(ediprot::findsatz(cf, "S512"), cf->child->next->next);
    EXPECT_EQ(ediprot::findsatz(cf, "S51"), nullptr);
    EXPECT_EQ(ediprot::findsatz(nullptr, "S511"), nullptr);
    freedatatree(cf);
}

TEST(Findsatz, TestsANodeBeforeItsChildrenAndChildrenBeforeTheNextSibling)
{
    // *S512 answers before the $S512 below it; the $S513 inside *A before
    // the one behind *A.
    datatree_t *cf = rooted(node("vda", nullptr,
                                 {node("*S512", nullptr, {node("$S512")}),
                                  node("*A", nullptr, {node("$S513")}), node("$S513")}));
    EXPECT_STREQ(ediprot::findsatz(cf, "S512")->xmltag, "*S512");
    EXPECT_EQ(ediprot::findsatz(cf, "S513"), cf->child->next->child);
    // A chain is searched from its first node on, siblings included.
    EXPECT_EQ(ediprot::findsatz(cf->child, "S513"), cf->child->next->child);
    freedatatree(cf);
}

// Fields of blanks only, or empty ones, are stored as "": the blank test
// reaches 128 characters, so a longer field of blanks keeps them.
TEST(Makerecord, BlankTestGivesEmptyValueOnlyForBlankFieldsUpTo128)
{
    const struct {
        int len;
        std::string text;
        std::string data;
    } cases[] = {
        {5, "     ", ""},
        {0, "", ""},
        {6, "  AB  ", "  AB  "},
        {128, std::string(128, ' '), ""},
        {129, std::string(129, ' '), std::string(129, ' ')},
    };
    for (const auto &c : cases) {
        datatree_t *cf = rooted(node("vda", nullptr,
                                     {node("$S511", nullptr, {field("t", 3), field("v", c.len),
                                                              field("x", 1)})}));
        std::string line = "511" + c.text + "X";
        datatree_t *rec = makerecord(line.data(), nullptr, cf);
        ASSERT_NE(rec, nullptr);
        EXPECT_EQ(std::string(rec->child->next->data), c.data) << "len " << c.len;
        // The field's full width moves the position on, even a width of 0.
        EXPECT_STREQ(rec->child->next->next->data, "X") << "len " << c.len;
        freedatatree(rec);
        freedatatree(cf);
    }
}

// A line that ends early gives the fields behind its end the empty value,
// whatever lies behind its terminator in memory.
TEST(Makerecord, FieldsBehindTheEndOfTheLineAreEmptyAndReadNothingBeyondIt)
{
    datatree_t *cf = rooted(node("vda", nullptr,
                                 {node("$S511", nullptr,
                                       {field("t", 3), field("a", 2), field("b", 4),
                                        field("c", 3)})}));
    const struct {
        const char *bytes;
        size_t size;
        const char *values;
    } cases[] = {
        {"51101AB\0XYZWQRS", 16, "<511><01><AB><>"},
        {"51101\0XYZWQRSTU", 16, "<511><01><><>"},
        {"511\0XYZWQRSTUVW", 16, "<511><><><>"},
        {"5110", 5, "<511><0><><>"},
    };
    for (const auto &c : cases) {
        std::vector<char> buf(c.bytes, c.bytes + c.size);
        datatree_t *rec = makerecord(buf.data(), nullptr, cf);
        ASSERT_NE(rec, nullptr);
        std::string got;
        for (const datatree_t *fp = rec->child; fp != nullptr; fp = fp->next)
            got += std::string("<") + fp->data + ">";
        EXPECT_EQ(got, c.values) << c.bytes;
        freedatatree(rec);
    }
    freedatatree(cf);
}

TEST(Makerecord, CharactersBehindTheLastFieldAreIgnored)
{
    datatree_t *cf = rooted(node("vda", nullptr, {node("$S511", nullptr, {field("t", 3), field("v", 2)})}));
    char line[] = "51102 and more text";
    datatree_t *rec = makerecord(line, nullptr, cf);
    ASSERT_NE(rec, nullptr);
    EXPECT_STREQ(rec->child->next->data, "02");
    EXPECT_EQ(rec->child->next->next, nullptr);
    freedatatree(rec);
    freedatatree(cf);
}

// A field wider than a field value can hold keeps its first 255
// characters; the next field still starts behind the full width.
TEST(Makerecord, FieldWiderThanAValueKeepsItsFirst255Characters)
{
    datatree_t *cf = rooted(node("vda", nullptr,
                                 {node("$S511", nullptr, {field("t", 3), field("wide", 300),
                                                          field("last", 2)})}));
    std::string line = "511" + std::string(300, 'A') + "ZZ";
    datatree_t *rec = makerecord(line.data(), nullptr, cf);
    ASSERT_NE(rec, nullptr);
    EXPECT_EQ(std::string(rec->child->next->data), std::string(255, 'A'));
    EXPECT_STREQ(rec->child->next->next->data, "ZZ");
    freedatatree(rec);
    freedatatree(cf);
}

TEST(Makerecord, TracesTheKeyAtLevelOne)
{
    TraceLevel tl(0x20000000u);
    datatree_t *cf = workedconfig();
    char line[] = "51101";
    datatree_t *rec = nullptr;
    std::string err = capture_stderr([&] { rec = makerecord(line, nullptr, cf); });
    EXPECT_NE(err.find("makerecord: satz <S511>\n"), std::string::npos) << err;
    EXPECT_NE(err.find("makerecord: got it\n"), std::string::npos) << err;
    freedatatree(rec);
    freedatatree(cf);
}

}  // namespace
