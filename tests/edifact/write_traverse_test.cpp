// editraverse: the walk over the configuration tree and the enumeration of
// loop instances through the data tree.
#include <gtest/gtest.h>

#include <string.h>

#include <string>

#include "internal.h"
#include "testsupport.h"

using namespace testsupport;

namespace {

// A segment $XXX with one simple element named `el`.
datatree_t *seg(const char *tag, const char *el, const char *defval = nullptr)
{
    datatree_t *e = node(el);
    e->edimaxlen = 35;
    if (defval != nullptr)
        e->defval = strdup(defval);
    return node(tag, nullptr, {e});
}

// The same segment in a data tree, holding `value`.
datatree_t *dseg(const char *tag, const char *el, const char *value)
{
    return node(tag, nullptr, {node(el, value)});
}

// Walks `cf` (its root) over `data` and returns what stands in the stream
// up to its final position.
std::string walk(datatree_t *cf, datatree_t *data)
{
    FILE *fp = tmpfile();
    EXPECT_EQ(ediprot::editraverse(fp, data, cf, ""), 0);
    long end = ftell(fp);
    std::string out(static_cast<size_t>(end), '\0');
    rewind(fp);
    size_t n = fread(out.data(), 1, out.size(), fp);
    fclose(fp);
    out.resize(n);
    return out;
}

// Two sibling loops *A and *B, a segment between them outside any loop.
datatree_t *siblingconfig()
{
    return rooted(node("edi", nullptr, {
        loopnode("*A", 0, {seg("$AAA", "a")}),
        seg("$MID", "m", "M"),
        loopnode("*B", 0, {seg("$BBB", "b")}),
    }));
}

TEST(Editraverse, SecondSiblingLoopGoesOnFromTheFirstOnesCounter)
{
    // *A has the instances 1 and 2: it tries 1, 2, 3 and stops at 3, so
    // *B starts at 4.
    datatree_t *cf = siblingconfig();
    datatree_t *data = rooted(node("edi", nullptr, {
        loopnode("*A", 1, {dseg("$AAA", "a", "a1")}),
        loopnode("*A", 2, {dseg("$AAA", "a", "a2")}),
        loopnode("*B", 4, {dseg("$BBB", "b", "b4")}),
        loopnode("*B", 5, {dseg("$BBB", "b", "b5")}),
    }));
    EXPECT_EQ(walk(cf, data), "AAA+a1'AAA+a2'MID+M'BBB+b4'BBB+b5'");
    freedatatree(cf);
    freedatatree(data);
}

TEST(Editraverse, SecondSiblingLoopNumberedFromOneIsNotFound)
{
    datatree_t *cf = siblingconfig();
    datatree_t *data = rooted(node("edi", nullptr, {
        loopnode("*A", 1, {dseg("$AAA", "a", "a1")}),
        loopnode("*B", 1, {dseg("$BBB", "b", "b1")}),
    }));
    EXPECT_EQ(walk(cf, data), "AAA+a1'MID+M'");
    freedatatree(cf);
    freedatatree(data);
}

TEST(Editraverse, AbsentFirstLoopUsesUpNumberOne)
{
    datatree_t *cf = siblingconfig();
    datatree_t *data = rooted(node("edi", nullptr, {
        loopnode("*B", 2, {dseg("$BBB", "b", "b2")}),
    }));
    EXPECT_EQ(walk(cf, data), "MID+M'BBB+b2'");
    freedatatree(cf);
    freedatatree(data);
}

TEST(Editraverse, NestedLoopCountsFromOneInEachOuterInstance)
{
    datatree_t *cf = rooted(node("edi", nullptr, {node("ORDERS", nullptr, {
        loopnode("*P", 0, {seg("$NAD", "3035"), loopnode("*C", 0, {seg("$CTA", "3139")})}),
    })}));
    datatree_t *data = rooted(node("edi", nullptr, {node("ORDERS", nullptr, {
        loopnode("*P", 1, {dseg("$NAD", "3035", "BY"),
                           loopnode("*C", 1, {dseg("$CTA", "3139", "IC")}),
                           loopnode("*C", 2, {dseg("$CTA", "3139", "PD")})}),
        loopnode("*P", 2, {dseg("$NAD", "3035", "SU"),
                           loopnode("*C", 1, {dseg("$CTA", "3139", "OC")})}),
    })}));
    int saved = tracelevel;
    tracelevel = static_cast<int>(0x30000000u);
    std::string out;
    std::string err = capture_stderr([&] { out = walk(cf, data); });
    tracelevel = saved;
    EXPECT_EQ(out, "NAD+BY'CTA+IC'CTA+PD'NAD+SU'CTA+OC'");
    for (const char *lb : {"1", "1.1", "1.2", "2", "2.1"})
        EXPECT_NE(err.find(std::string("loop <") + lb + ">, xnod"), std::string::npos) << lb;
    EXPECT_EQ(err.find("loop <1.3>, xnod"), std::string::npos);
    EXPECT_EQ(err.find("loop <3>, xnod"), std::string::npos);
    freedatatree(cf);
    freedatatree(data);
}

TEST(Editraverse, ChildlessDataRootEndsEveryLoop)
{
    // The root answers every number of searchlooppath; the loops still end.
    datatree_t *cf = rooted(node("edi", nullptr, {
        seg("$UNH", "0062", "1"),
        loopnode("*A", 0, {seg("$AAA", "a", "D")}),
        node("G", nullptr, {loopnode("*B", 0, {seg("$BBB", "b", "E")})}),
    }));
    datatree_t *data = rooted(node("edi"));
    EXPECT_EQ(walk(cf, data), "UNH+1'");
    freedatatree(cf);
    freedatatree(data);
}

TEST(Editraverse, ChildlessNodeAboveALoopEndsIt)
{
    datatree_t *cf = rooted(node("edi", nullptr, {node("ORDERS", nullptr, {
        loopnode("*A", 0, {seg("$AAA", "a", "D")})})}));
    datatree_t *data = rooted(node("edi", nullptr, {node("ORDERS", "x")}));
    EXPECT_EQ(walk(cf, data), "");
    freedatatree(cf);
    freedatatree(data);
}

TEST(Editraverse, NullDataTreeWritesDefaultsOutsideLoops)
{
    datatree_t *cf = rooted(node("edi", nullptr, {
        seg("$BGM", "1004", "220"),
        loopnode("*A", 0, {seg("$AAA", "a", "D")}),
    }));
    EXPECT_EQ(walk(cf, nullptr), "BGM+220'");
    freedatatree(cf);
}

TEST(Editraverse, LoopWithoutChildrenTriesItsInstancesAndEnds)
{
    datatree_t *cf = rooted(node("edi", nullptr, {loopnode("*A", 0), seg("$END", "e", "Z")}));
    datatree_t *data = rooted(node("edi", nullptr, {loopnode("*A", 1), loopnode("*A", 2)}));
    EXPECT_EQ(walk(cf, data), "END+Z'");
    freedatatree(cf);
    freedatatree(data);
    EXPECT_EQ(ediprot::editraverse(nullptr, nullptr, nullptr, ""), 0);
}

}  // namespace
