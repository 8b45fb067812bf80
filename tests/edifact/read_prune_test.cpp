// Empty loop pruning: loop nodes without any leaf value go, bottom-up, and
// the link that led to a removed node follows the removal.
#include <gtest/gtest.h>

#include <string>

#include "read_support.h"
#include "testsupport.h"

using readsupport::picture;
using testsupport::node;

namespace {

struct Pruned {
    int rc;
    std::string left;
};

// Prunes the children of `root` and releases it.
Pruned prune(datatree_t *root)
{
    setparents(root, 0);
    int rc = ediprot::searchemptyloop(&root->child);
    Pruned p{rc, picture(root->child)};
    freedatatree(root);
    return p;
}

TEST(Searchemptyloop, RemovesAdjacentEmptyLoopsThroughTheSameLink)
{
    Pruned p = prune(node("edi", nullptr,
                          {node("$A", nullptr, {node("x", "1")}),
                           node("*L", nullptr, {node("$B", nullptr, {node("y")})}),
                           node("*L", nullptr, {node("$B", nullptr, {node("y")})}),
                           node("$C", nullptr, {node("z", "2")})}));
    EXPECT_EQ(p.rc, 2);
    EXPECT_EQ(p.left, "$A{x=\"1\"} $C{z=\"2\"}");
}

TEST(Searchemptyloop, MovesTheParentsChildLinkWhenTheFirstNodeGoes)
{
    datatree_t *root = node("edi", nullptr,
                            {node("MSG", nullptr,
                                  {node("*L", nullptr, {node("$B", nullptr, {node("y")})}),
                                   node("$C", nullptr, {node("z", "")})})});
    setparents(root, 0);
    datatree_t *msg = root->child;
    EXPECT_EQ(ediprot::searchemptyloop(&root->child), 1);
    ASSERT_NE(msg->child, nullptr);
    EXPECT_STREQ(msg->child->xmltag, "$C");
    freedatatree(root);

    // Nothing left at all: the link becomes NULL.
    root = node("edi", nullptr,
                {node("MSG", nullptr, {node("*L", nullptr, {node("a")}),
                                       node("*L", nullptr, {node("b")})})});
    setparents(root, 0);
    msg = root->child;
    EXPECT_EQ(ediprot::searchemptyloop(&root->child), 0);
    EXPECT_EQ(msg->child, nullptr);
    EXPECT_EQ(picture(root->child), "MSG");
    freedatatree(root);
}

TEST(Searchemptyloop, SurvivingLoopSetsTheRunningValueBackToOne)
{
    Pruned p = prune(node("edi", nullptr,
                          {node("a", "1"), node("b", "2"),
                           node("*L", nullptr, {node("c", "3"), node("d", "4")})}));
    EXPECT_EQ(p.rc, 1);
    p = prune(node("edi", nullptr,
                   {node("a", "1"), node("b", "2"),
                    node("*L", nullptr, {node("c", "3"), node("d", "4")}),
                    node("e", "5")}));
    EXPECT_EQ(p.rc, 2);
}

TEST(Searchemptyloop, KeepsEmptyTagNodesAndLoopsWithDataInALaterChild)
{
    Pruned p = prune(node("edi", nullptr,
                          {node("$T", nullptr, {node("x")}),
                           node("*L", nullptr, {node("$A", nullptr, {node("a")}),
                                                node("$B", nullptr, {node("b", "v")})})}));
    EXPECT_EQ(p.rc, 1);
    EXPECT_EQ(p.left, "$T{x} *L{$A{a} $B{b=\"v\"}}");
}

TEST(Searchemptyloop, RemovesNestedEmptyLoopsAndThenTheirEmptyOuterLoop)
{
    Pruned p = prune(node("edi", nullptr,
                          {node("*O", nullptr,
                                {node("*I", nullptr, {node("a", "1")}),
                                 node("*I", nullptr, {node("a")})}),
                           node("*O", nullptr,
                                {node("*I", nullptr, {node("a")})})}));
    EXPECT_EQ(p.rc, 1);
    EXPECT_EQ(p.left, "*O{*I{a=\"1\"}}");
}

TEST(Searchemptyloop, JudgesAChildlessLoopByTheLastLoopWithChildren)
{
    // No loop with children before it: removed.
    Pruned p = prune(node("edi", nullptr, {node("a", "1"), node("*E")}));
    EXPECT_EQ(p.left, "a=\"1\"");
    EXPECT_EQ(p.rc, 1);
    // Behind a surviving loop: stays, and the value becomes 1.
    p = prune(node("edi", nullptr,
                   {node("*L", nullptr, {node("a", "1")}), node("b", "2"), node("*E")}));
    EXPECT_EQ(p.left, "*L{a=\"1\"} b=\"2\" *E");
    EXPECT_EQ(p.rc, 1);
    // Behind a loop that came out empty: removed.
    p = prune(node("edi", nullptr,
                   {node("*L", nullptr, {node("a")}), node("b", "2"), node("*E")}));
    EXPECT_EQ(p.left, "b=\"2\"");
    EXPECT_EQ(p.rc, 1);
}

}  // namespace
