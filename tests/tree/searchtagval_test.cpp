#include <gtest/gtest.h>

#include "testsupport.h"
#include "tree/tree.h"

using namespace testsupport;

namespace {

// docs.edi.$UNB001_D with the elements UNOA:1, SENDER:14 and RECIPIENT.
datatree_t *makedocs()
{
    return rooted(node("docs", nullptr, {node("edi", nullptr, {node("$UNB001_D", nullptr, {
        node("DST", "UNOA:1", {node("CDE", "UNOA"), node("CDE", "1")}),
        node("DST", "SENDER:14", {node("CDE", "SENDER"), node("CDE", "14")}),
        node("DST", "RECIPIENT"),
    })})}));
}

TEST(Searchtagval, PicksOneComponentOfOneElement)
{
    datatree_t *docs = makedocs();
    datatree_t *tp = nullptr;
    std::string err = capture_stderr([&] { tp = ediprot::searchtagval(docs, "docs.edi.$UNB001_D", 1, 0); });
    ASSERT_NE(tp, nullptr);
    EXPECT_STREQ(tp->data, "SENDER");
    EXPECT_EQ(err, "");
    EXPECT_STREQ(ediprot::searchtagval(docs, "DOCS.EDI.$unb001_d", -3, 1)->data, "1");
    freedatatree(docs);
}

TEST(Searchtagval, WritesItsOwnMessageForEachMiss)
{
    datatree_t *docs = makedocs();
    const struct {
        const char *path;
        int dst, cde;
        const char *message;
    } cases[] = {
        {"docs.edi.$UNH002_D", 1, 0, "searchtagval: node <docs.edi.$UNH002_D> not found\n"},
        {"docs.edi.$UNB001_D", 3, 0, "searchtagval: node not found: dst 3\n"},
        {"docs.edi.$UNB001_D", 1, 2, "searchtagval: node not found: cde 2\n"},
        // an element without components has no component 0
        {"docs.edi.$UNB001_D", 2, 0, "searchtagval: node not found: cde 0\n"},
    };
    for (const auto &c : cases) {
        datatree_t *tp = reinterpret_cast<datatree_t *>(1);
        std::string err = capture_stderr([&] { tp = ediprot::searchtagval(docs, c.path, c.dst, c.cde); });
        EXPECT_EQ(tp, nullptr) << c.path;
        EXPECT_EQ(err, c.message);
    }
    freedatatree(docs);
}

}  // namespace
