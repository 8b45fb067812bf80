// The value rule of the writers, the default functions and their counters.
#include <gtest/gtest.h>

#include <string.h>

#include <string>

#include "convert/convert.h"
#include "edihost.h"
#include "state.h"
#include "testsupport.h"

using namespace testsupport;
using ediprot::resolvevalue;

namespace {

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
