// The value rule of the writers, the default functions and their counters.
#include <gtest/gtest.h>

#include <string.h>

#include <string>

#include "edihost.h"
#include "internal.h"
#include "testsupport.h"

using namespace testsupport;
using ediprot::resolvevalue;

namespace {

// Gives every node of the tree a greatest length, so that values pass the
// output conversion.
void widen(datatree_t *tp)
{
    for (; tp != nullptr; tp = tp->next) {
        tp->edimaxlen = 35;
        widen(tp->child);
    }
}

// One element edi.$BGM.1004 in a configuration, and a data tree in which
// the same path holds `data` (or no node at all for a NULL tree).
struct Rule {
    Rule(const char *deffunc, const char *defval, ediforce_t force)
    {
        cf = rooted(node("edi", nullptr, {node("$BGM", nullptr, {node("1004")})}));
        el = cf->child->child;
        el->deffunc = deffunc != nullptr ? strdup(deffunc) : nullptr;
        el->defval = defval != nullptr ? strdup(defval) : nullptr;
        el->ediforce = force;
        el->line = 12;
    }
    ~Rule()
    {
        freedatatree(cf);
        if (data != nullptr)
            freedatatree(data);
    }
    void hold(const char *value, bool withnode = true)
    {
        data = rooted(node("edi", nullptr, {node("$BGM", nullptr, {})}));
        if (withnode)
            adopt(data->child, {node("1004", value)});
    }
    // The value as text, "NULL" for none.
    std::string value()
    {
        char *v = resolvevalue(el, data, "");
        return v != nullptr ? v : "NULL";
    }
    datatree_t *cf = nullptr;
    datatree_t *el = nullptr;
    datatree_t *data = nullptr;
};

struct RuleCase {
    const char *what;
    bool tree;          // the data tree holds the element node
    const char *data;   // its data
    const char *deffunc;
    const char *defval;
    const char *expected;
};

TEST(Resolvevalue, TakesDataThenDefaultFunctionThenDefaultText)
{
    const RuleCase cases[] = {
        {"data wins", true, "220", "unhcnt", "X", "220"},
        {"empty data is a value", true, "", "unhcnt", "X", ""},
        {"NULL data is no value", true, nullptr, "unhcnt", "X", "1"},
        {"no node", false, nullptr, "unhcnt", "X", "1"},
        {"no deffunc", false, nullptr, nullptr, "X", "X"},
        {"unknown deffunc keeps defval out", false, nullptr, "nosuch", "X", ""},
        {"names compare case-blind", false, nullptr, "UnhCnt", "X", "1"},
        {"nothing at all", false, nullptr, nullptr, nullptr, "NULL"},
        {"empty defval", false, nullptr, nullptr, "", ""},
    };
    for (const RuleCase &c : cases) {
        ediprot::nunhcnt = 0;
        Rule r(c.deffunc, c.defval, ef_none);
        if (c.tree)
            r.hold(c.data);
        EXPECT_EQ(r.value(), c.expected) << c.what;
    }
}

TEST(Resolvevalue, LeavesTheCounterAloneWhenTheDataTreeHoldsTheValue)
{
    ediprot::sectioncnt = 5;
    Rule r("seccnt", nullptr, ef_none);
    r.hold("9");
    EXPECT_EQ(r.value(), "9");
    EXPECT_EQ(ediprot::sectioncnt, 5);
}

TEST(Resolvevalue, ReportsAMissingMandatoryElementAndGoesOn)
{
    const struct {
        bool tree;
        const char *data;
        const char *file;
        const char *message;
    } cases[] = {
        {false, nullptr, nullptr, "no file (12): mandatory element <edi.$BGM.1004> missing\n"},
        {true, "", "orders.tree", "orders.tree (12): mandatory element <edi.$BGM.1004> missing\n"},
        {true, "X", "orders.tree", ""},
    };
    for (const auto &c : cases) {
        ediprot::errcnt = 3;
        Rule r(nullptr, nullptr, ef_mand);
        r.el->file = edihost_internname(c.file);
        if (c.tree)
            r.hold(c.data);
        std::string err = capture_stderr([&] { r.value(); });
        EXPECT_EQ(err, c.message);
        EXPECT_EQ(ediprot::errcnt, c.message[0] != '\0' ? 4 : 3);
    }
}

TEST(Resolvevalue, NeverReportsConditionalOrFreeElements)
{
    for (ediforce_t force : {ef_none, ef_cond}) {
        ediprot::errcnt = 0;
        Rule r(nullptr, nullptr, force);
        std::string err = capture_stderr([&] { EXPECT_EQ(r.value(), "NULL"); });
        EXPECT_EQ(err, "");
        EXPECT_EQ(ediprot::errcnt, 0);
    }
}

TEST(Resolvevalue, UnknownFunctionNameCountsAsMissing)
{
    ediprot::errcnt = 0;
    Rule r("nosuch", "X", ef_mand);
    std::string err = capture_stderr([&] { EXPECT_EQ(r.value(), ""); });
    EXPECT_NE(err.find("mandatory element <edi.$BGM.1004> missing"), std::string::npos);
    EXPECT_EQ(ediprot::errcnt, 1);
}

TEST(Resolvevalue, FindsTheValueOfTheLoopInstanceAtHand)
{
    datatree_t *cf = rooted(node("edi", nullptr, {
        loopnode("*LIN", 0, {node("$LIN", nullptr, {node("1082")})})}));
    datatree_t *data = rooted(node("edi", nullptr, {
        loopnode("*LIN", 1, {node("$LIN", nullptr, {node("1082", "first")})}),
        loopnode("*LIN", 2, {node("$LIN", nullptr, {node("1082", "second")})})}));
    datatree_t *el = cf->child->child->child;
    EXPECT_STREQ(resolvevalue(el, data, "2"), "second");
    EXPECT_STREQ(resolvevalue(el, data, "1"), "first");
    EXPECT_EQ(resolvevalue(el, data, "3"), nullptr);
    freedatatree(cf);
    freedatatree(data);
}

// sectioncnt over a message of $UNH, one other tag node and $UNT whose
// first element asks seccnt: every tag node entered counts.
TEST(Sectioncnt, CountsEveryTagNodeEnteredFromUnh)
{
    datatree_t *cf = rooted(node("edi", nullptr, {
        node("$UNH", nullptr, {node("0062", nullptr)}),
        node("$BGM", nullptr, {node("1004", nullptr)}),
        node("$UNT", nullptr, {node("0074", nullptr)}),
    }));
    widen(cf);
    cf->child->child->defval = strdup("1");
    cf->child->next->child->defval = strdup("X");
    cf->child->next->next->child->deffunc = strdup("seccnt");
    ediprot::sectioncnt = 40;
    FILE *fp = tmpfile();
    const int expected[] = {1, 2, 3};
    int k = 0;
    for (datatree_t *tag = cf->child; tag != nullptr; tag = tag->next) {
        if (tag->next == nullptr) {
            // The counter is raised on entering $UNT, then once more by seccnt.
            ediprot::writeeditag(fp, nullptr, tag, "");
            EXPECT_EQ(ediprot::sectioncnt, 4);
            break;
        }
        ediprot::writeeditag(fp, nullptr, tag, "");
        EXPECT_EQ(ediprot::sectioncnt, expected[k++]) << tag->xmltag;
    }
    char text[64] = {0};
    rewind(fp);
    size_t n = fread(text, 1, sizeof text - 1, fp);
    fclose(fp);
    EXPECT_EQ(std::string(text, n), "UNH+1'BGM+X'UNT+4'");
    freedatatree(cf);
}

TEST(Sectioncnt, CountsATagNodeWhoseSegmentIsTakenBack)
{
    datatree_t *cf = rooted(node("edi", nullptr, {
        node("$unh001"), node("$FTX", nullptr, {node("4451")}), node("$UNT"),
    }));
    ediprot::sectioncnt = 0;
    FILE *fp = tmpfile();
    for (datatree_t *tag = cf->child; tag != nullptr; tag = tag->next)
        ediprot::writeeditag(fp, nullptr, tag, "");
    EXPECT_EQ(ediprot::sectioncnt, 3);
    EXPECT_EQ(ftell(fp), 0L);
    fclose(fp);
    freedatatree(cf);
}

TEST(Defaultfuncs, CountFromOneAfterAReset)
{
    ediprot::nunhcnt = 0;
    EXPECT_STREQ(ediprot::execdeffunc(const_cast<char *>("unhcnt")), "1");
    EXPECT_STREQ(ediprot::execdeffunc(const_cast<char *>("UNHCNT")), "2");
    ediprot::sectioncnt = 6;
    EXPECT_STREQ(ediprot::execdeffunc(const_cast<char *>("SecCnt")), "7");
    EXPECT_STREQ(ediprot::execdeffunc(const_cast<char *>("")), "");
}

}  // namespace
