// The two path lookups on the worked data tree: parties with a name and
// address each, the second with contacts.
#include <gtest/gtest.h>

#include "testsupport.h"
#include "tree/tree.h"

using namespace testsupport;
using ediprot::searchlooppath;
using ediprot::searchpath;

namespace {

class PartyTree : public ::testing::Test {
protected:
    void SetUp() override
    {
        root = rooted(node("edi", nullptr, {
            loopnode("*PARTY", 1, {node("$NAD", nullptr, {node("3035", "BY")})}),
            loopnode("*PARTY", 2, {
                node("$NAD", nullptr, {node("3035", "SU"),
                                       node("C082", nullptr, {node("3039", "4711")})}),
                loopnode("*CONTACT", 1, {node("$CTA", "IC")}),
                loopnode("*CONTACT", 2, {node("$CTA", "PD")}),
            }),
            node("$UNT"),
        }));
    }
    void TearDown() override { freedatatree(root); }

    // The node's name and value, "NULL" for no node.
    static std::string describe(const datatree_t *tp)
    {
        if (tp == nullptr)
            return "NULL";
        std::string s = tp->xmltag;
        if (tp->data != nullptr)
            s += std::string("=") + tp->data;
        if (tp->xmltag[0] == '*')
            s += "#" + std::to_string(tp->loopcnt);
        return s;
    }

    datatree_t *root = nullptr;
};

struct LoopCase {
    const char *path;
    const char *loop;
    const char *expected;
};

TEST_F(PartyTree, Searchlooppath_FollowsNamesAndLoopNumbers)
{
    const LoopCase cases[] = {
        {"edi.*PARTY.$NAD.3035", "2", "3035=SU"},
        {"edi.*PARTY.$NAD.3035", "1.7", "3035=BY"},
        {"edi.*PARTY.$NAD.3035", "", "NULL"},
        {"edi.*PARTY.$NAD.C082.3039", "1", "NULL"},
        {"edi.*PARTY.$NAD.C082.3039", "2", "3039=4711"},
        {"edi.*PARTY.*CONTACT.$CTA", "2.2", "$CTA=PD"},
        {"edi.*PARTY.*CONTACT.$CTA", "2", "NULL"},
        {"edi.*PARTY.*CONTACT.$CTA", "1.1", "NULL"},
        {"edi.*PARTY.$NAD.3035.3036", "1", "3035=BY"},
        {"edi.$UNT.0074", "", "$UNT"},
        {"edi.*PARTY", "2", "*PARTY#2"},
        {"EDI.$UNT", "", "NULL"},
        // numbers read as strtol does: leading zeros, and no digits gives 0
        {"edi.*PARTY.$NAD.3035", "02", "3035=SU"},
        {"edi.*PARTY.$NAD.3035", "x.2", "NULL"},
        // a path ending in '.' leaves an empty component
        {"edi.*PARTY.$NAD.", "1", "NULL"},
        {"edi.$UNT.", "", "$UNT"},
        {"edi", "", "edi"},
        {"", "", "NULL"},
    };
    for (const LoopCase &c : cases)
        EXPECT_EQ(describe(searchlooppath(c.path, c.loop, root)), c.expected)
            << "path " << c.path << ", loop <" << c.loop << ">";
}

TEST_F(PartyTree, Searchpath_TriesHeadAloneIgnoringCaseAndBacksOut)
{
    const struct {
        const char *path;
        const char *expected;
    } cases[] = {
        {"edi.*PARTY.$NAD.3035", "3035=BY"},
        {"edi.*PARTY.$NAD.C082.3039", "3039=4711"},
        {"EDI.$unt", "$UNT"},
        {"edi.$UNT.0074", "NULL"},
        {"*PARTY.$NAD", "NULL"},
        {"edi", "edi"},
        {"edi.", "NULL"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(describe(searchpath(root, c.path)), c.expected) << c.path;
}

TEST(Searchlooppath, NullTreeAndChainWithoutTheNameGiveNull)
{
    EXPECT_EQ(searchlooppath("a.b", "", nullptr), nullptr);
    datatree_t *chain = node("x", nullptr, {node("a")});
    EXPECT_EQ(searchlooppath("a", "", chain), nullptr);
    freedatatree(chain);
}

TEST(Searchlooppath, NamesakesWithTheSameNumberAreTriedInTurn)
{
    datatree_t *root = node("r", nullptr, {
        loopnode("*L", 1, {node("a", "first")}),
        loopnode("*L", 1, {node("b", "second")}),
    });
    EXPECT_STREQ(searchlooppath("r.*L.a", "1", root)->data, "first");
    EXPECT_STREQ(searchlooppath("r.*L.b", "1", root)->data, "second");
    freedatatree(root);
}

TEST(Searchlooppath, ReportsWhetherTheWholePathWasMatched)
{
    datatree_t *root = node("r", nullptr, {node("leaf", "v"), node("mid", nullptr, {node("x", "1")})});
    int complete = -1;
    EXPECT_STREQ(searchlooppath("r.leaf.deeper.still", "", root, &complete)->xmltag, "leaf");
    EXPECT_EQ(complete, 0);
    EXPECT_STREQ(searchlooppath("r.mid.x", "", root, &complete)->xmltag, "x");
    EXPECT_EQ(complete, 1);
    EXPECT_STREQ(searchlooppath("r.mid", "", root, &complete)->xmltag, "mid");
    EXPECT_EQ(complete, 1);
    freedatatree(root);
}

TEST(Searchlooppath, HandlesPathsAndLoopStringsBeyondTheBufferSize)
{
    // 3000 nested nodes: a path of about 9000 characters.
    std::string path = "r";
    datatree_t *root = node("r");
    datatree_t *tp = root;
    for (int i = 0; i < 3000; i++) {
        tp->child = node("n2");
        tp = tp->child;
        path += ".n2";
    }
    tp->data = strdup("deep");
    std::string loop(10000, '1');
    datatree_t *found = searchlooppath(path.c_str(), loop.c_str(), root);
    ASSERT_NE(found, nullptr);
    EXPECT_STREQ(found->data, "deep");
    EXPECT_EQ(searchpath(root, path.c_str()), found);
    freedatatree(root);
}

TEST(Searchloopinstance, StopsWhereAChildlessNodeAboveTheLoopAnswersEveryNumber)
{
    datatree_t *cf = rooted(node("edi", nullptr, {node("*PARTY", nullptr, {node("$NAD")})}));
    datatree_t *childless = node("edi");
    char *path = pathfornode(cf->child, 0);
    EXPECT_NE(searchlooppath(path, "1", childless), nullptr);
    EXPECT_EQ(ediprot::searchloopinstance(path, "1", childless, "*PARTY"), nullptr);

    datatree_t *data = node("edi", nullptr, {loopnode("*PARTY", 1, {node("$NAD")})});
    EXPECT_EQ(ediprot::searchloopinstance(path, "1", data, "*PARTY"), data->child);
    EXPECT_EQ(ediprot::searchloopinstance(path, "2", data, "*PARTY"), nullptr);
    EXPECT_EQ(ediprot::searchloopinstance(nullptr, "1", data, "*PARTY"), nullptr);
    freedatatree(cf);
    freedatatree(childless);
    freedatatree(data);
}

TEST(Hasdata, LooksAtTheNodeAndBelowButNotItsSiblings)
{
    datatree_t *empty = node("a", "");
    EXPECT_EQ(ediprot::hasdata(empty), 1);
    datatree_t *bare = node("a", nullptr);
    bare->next = node("b", "x");
    EXPECT_EQ(ediprot::hasdata(bare), 0);
    datatree_t *deep = node("a", nullptr, {node("b"), node("c", nullptr, {node("d", "v")})});
    EXPECT_EQ(ediprot::hasdata(deep), 1);
    freedatatree(empty);
    freedatatree(bare);
    freedatatree(deep);
}

}  // namespace
