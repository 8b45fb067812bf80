// The tree services of the host layer: release, parent links, paths,
// parameter copies and dumps.
#include <gtest/gtest.h>
#include <string.h>

#include <string>

#include "edihost.h"
#include "testsupport.h"

using testsupport::adopt;
using testsupport::capture_stderr;
using testsupport::dump;
using testsupport::node;

TEST(Freedatatree, ReleasesAChainOfAMillionSiblings)
{
    datatree_t *head = nullptr;
    for (int i = 0; i < 1000000; i++) {
        datatree_t *tp = node("n", "v");
        tp->next = head;
        head = tp;
    }
    freedatatree(head);  // leak detection checks that every node went
}

TEST(Freedatatree, ReleasesAChainAMillionLevelsDeep)
{
    datatree_t *root = node("n", "v");
    datatree_t *tp = root;
    for (int i = 0; i < 1000000; i++) {
        tp->child = node("n");
        tp = tp->child;
    }
    freedatatree(root);
}

TEST(Pathfornode, JoinsTheNamesFromTheRootAsFarAsParentLinksGo)
{
    datatree_t *root = testsupport::rooted(
        node("edi", nullptr, {node("ORDERS", nullptr, {node("$UNH", nullptr, {node("S009", nullptr, {node("0065")})})})}));
    EXPECT_STREQ(pathfornode(root, 0), "edi");
    datatree_t *deep = root->child->child->child->child;
    EXPECT_STREQ(pathfornode(deep, 0), "edi.ORDERS.$UNH.S009.0065");

    // A fresh loop copy: its own parent is still NULL, its child points to it.
    datatree_t *copy = node("*PARTY", nullptr, {node("$NAD")});
    copy->child->parent = copy;
    EXPECT_STREQ(pathfornode(copy->child, 0), "*PARTY.$NAD");
    EXPECT_EQ(pathfornode(nullptr, 0), nullptr);

    // A path longer than any fixed buffer of the module.
    std::string longname(10000, 'x');
    datatree_t *longnode = node(longname.c_str());
    longnode->parent = deep;
    EXPECT_EQ(std::string(pathfornode(longnode, 0)), "edi.ORDERS.$UNH.S009.0065." + longname);
    freedatatree(longnode);
    freedatatree(copy);
    freedatatree(root);
}

TEST(Copynodeparms, CopiesTheParametersButNeitherValueNorLinks)
{
    const char *params = " loopcnt=3 defval=dv deffunc=unhcnt iseditag=1 type=loop edidata=opt"
                         " edilen=5 edimaxlen=35 editype=sdate ediforce=mand edialign=left valid=1";
    datatree_t *src = testsupport::parse(std::string("$NAD data=value") + params +
                                         "\n  kid\nsibling\n");
    ASSERT_NE(src, nullptr);
    datatree_t *dst = node("copy");
    char *tag = dst->xmltag;

    copynodeparms(dst, src, 1);
    EXPECT_EQ(dst->xmltag, tag);
    EXPECT_EQ(dst->parent, nullptr);
    // No data, no child, no next: the dump is this one line.
    EXPECT_EQ(dump(dst), std::string("copy") + params + "\n");
    EXPECT_EQ(dst->line, 1);
    // Own copies of the strings, so that the source can go first.
    EXPECT_NE(dst->defval, src->defval);
    EXPECT_NE(dst->deffunc, src->deffunc);
    EXPECT_EQ(dst->file, src->file) << "one shared file name";
    freedatatree(src);
    EXPECT_STREQ(dst->defval, "dv");
    EXPECT_STREQ(dst->deffunc, "unhcnt");
    EXPECT_STREQ(dst->file, "test");
    freedatatree(dst);
}

