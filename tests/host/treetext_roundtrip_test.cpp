// The tree writer followed by the parser gives back the same tree, for any
// byte in names and values and every field value.
#include <gtest/gtest.h>
#include <pthread.h>
#include <stddef.h>
#include <stdlib.h>
#include <string.h>

#include <string>
#include <vector>

#include "edihost.h"
#include "testsupport.h"

using testsupport::adopt;
using testsupport::dump;
using testsupport::node;
using testsupport::sametree;

namespace {

// Writes, parses and compares; returns the text that was written.
std::string roundtrip(const datatree_t *tree)
{
    std::string text = dump(tree);
    datatree_t *back = edihost_parsetree(text.data(), text.size(), "test");
    EXPECT_NE(back, nullptr) << text;
    EXPECT_TRUE(sametree(tree, back)) << text;
    if (back != nullptr)
        freedatatree(back);
    return text;
}

std::string allbytes(bool reversed)
{
    std::string s;
    for (int c = 1; c <= 255; c++)
        s += static_cast<char>(reversed ? 256 - c : c);
    return s;
}

// A configuration node with every field set.
datatree_t *confignode(const std::string &name, const std::string &text)
{
    datatree_t *tp = node(name.c_str());
    tp->defval = strdup(text.c_str());
    tp->deffunc = strdup((text + "f").c_str());
    tp->iseditag = 1;
    tp->type = nt_ncforeign;
    tp->edidata = ed_opt;
    tp->edilen = 35;
    tp->edimaxlen = -7;
    tp->editype = et_float0;
    tp->ediforce = ef_cond;
    tp->edialign = el_right;
    tp->valid = 2147483647;
    tp->loopcnt = -2147483647 - 1;
    return tp;
}

}  // namespace

TEST(TreeText, EveryByteSurvivesInNamesAndDataOfADataTree)
{
    datatree_t *root = node("edi");
    for (int c = 1; c <= 255; c++) {
        std::string one(1, static_cast<char>(c));
        std::string around = "a" + one + "b";
        adopt(root, {node(one.c_str(), one.c_str(), {node(around.c_str(), around.c_str())})});
    }
    adopt(root, {node(allbytes(false).c_str(), allbytes(true).c_str())});
    std::string text = roundtrip(root);
    for (unsigned char c : text)
        EXPECT_TRUE(c == '\n' || (c >= 0x20 && c < 0x7f)) << "raw byte " << int(c);
    freedatatree(root);
}

TEST(TreeText, EveryByteSurvivesInNamesDefaultsAndFunctionsOfAConfigurationTree)
{
    datatree_t *root = node("edi");
    for (int c = 1; c <= 255; c++) {
        std::string one(1, static_cast<char>(c));
        adopt(root, {confignode(one, one)});
    }
    adopt(root, {confignode(allbytes(true), allbytes(false))});
    roundtrip(root);
    freedatatree(root);
}

TEST(TreeText, NullAndEmptyStringsStayApart)
{
    datatree_t *tp = node("", "");
    tp->defval = strdup("");
    datatree_t *chain = adopt(node("x"), {tp, node("y")});
    EXPECT_EQ(roundtrip(chain), "x\n  \"\" data=\"\" defval=\"\"\n  y\n");
    freedatatree(chain);
}

TEST(TreeText, WriterQuotesOnlyWhatWouldNotReadBack)
{
    struct Case {
        const char *name;
        const char *data;
        const char *line;
    } cases[] = {
        {"$UNH001", "ORDERS", "$UNH001 data=ORDERS\n"},
        {"*PARTY", "#x,'+:?", "*PARTY data=#x,'+:?\n"},
        {"#c", "x", "\"#c\" data=x\n"},
        {"a b", "1=2", "\"a b\" data=\"1=2\"\n"},
        {"q\"", "back\\slash", "\"q\\\"\" data=\"back\\\\slash\"\n"},
        {"nl\n", "\r\t\x01\x7f\x80\xff", "\"nl\\n\" data=\"\\r\\t\\x01\\x7f\\x80\\xff\"\n"},
    };
    for (const Case &c : cases) {
        datatree_t *tp = node(c.name, c.data);
        EXPECT_EQ(dump(tp), c.line);
        roundtrip(tp);
        freedatatree(tp);
    }
}

TEST(TreeText, AMillionSiblingsAreWrittenAndReadBack)
{
    datatree_t *head = nullptr;
    for (int i = 0; i < 1000000; i++) {
        datatree_t *tp = node("n");
        tp->next = head;
        head = tp;
    }
    head->data = strdup("first");
    roundtrip(head);
    freedatatree(head);
}

namespace {
// Deep trees are written and read on a thread with a small stack, so that
// recursion per level would overflow it.
void *deeproundtrip(void *arg)
{
    int depth = *static_cast<int *>(arg);
    datatree_t *root = node("L", "0");
    datatree_t *tp = root;
    for (int i = 1; i < depth; i++) {
        tp->child = node("L", std::to_string(i).c_str());
        tp = tp->child;
    }
    tp->next = node("behind");
    std::string text = dump(root);
    datatree_t *back = edihost_parsetree(text.data(), text.size(), "test");
    bool same = back != nullptr && sametree(root, back);
    freedatatree(root);
    if (back != nullptr)
        freedatatree(back);
    return same ? arg : nullptr;
}
}  // namespace

TEST(TreeText, FiveThousandLevelsAreWrittenAndReadBackOnASmallStack)
{
    int depth = 5000;
    pthread_attr_t attr;
    pthread_attr_init(&attr);
    pthread_attr_setstacksize(&attr, 256 * 1024);
    pthread_t th;
    ASSERT_EQ(pthread_create(&th, &attr, deeproundtrip, &depth), 0);
    void *rc = nullptr;
    pthread_join(th, &rc);
    pthread_attr_destroy(&attr);
    EXPECT_EQ(rc, &depth);
}

TEST(TreeText, WriterReportsAFailedWrite)
{
    FILE *fp = fopen("/dev/full", "w");
    ASSERT_NE(fp, nullptr);
    datatree_t *tp = node("n", "x");
    EXPECT_EQ(edihost_writetree(fp, tp), -1);
    fclose(fp);
    freedatatree(tp);
}
