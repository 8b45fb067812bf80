// Record insertion: records go to the place their configuration's path
// names; loop nodes are created and numbered from one counter per depth.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "testsupport.h"
#include "vda/vda.h"

using namespace testsupport;

namespace {

// Names (and loop numbers of loop nodes, as "*A(3)") of the children of tp.
std::string children(const datatree_t *tp)
{
    std::string out;
    for (const datatree_t *cp = tp->child; cp != nullptr; cp = cp->next) {
        out += out.empty() ? "" : " ";
        out += cp->xmltag;
        if (cp->xmltag[0] == '*')
            out += "(" + std::to_string(cp->loopcnt) + ")";
    }
    return out;
}

struct Step {
    const char *type;  // record type of the line
    bool linked;       // whether the record lands in the tree
    int loops0, loops1;
};

// Feeds one record per step through insrecord, as vdaread does, and
// checks the counters and whether the record was linked.
datatree_t *feed(datatree_t *cf, const std::vector<Step> &steps, int *loops)
{
    datatree_t *head = node(cf->xmltag);
    for (const Step &s : steps) {
        std::string key = std::string("S") + s.type;
        datatree_t *sp = ediprot::findsatz(cf, key.c_str());
        EXPECT_NE(sp, nullptr) << key;
        datatree_t *rec = node(sp->xmltag);
        int rc = 0;
        std::string err = capture_stderr(
            [&] { rc = ediprot::insrecord(&head, rec, pathfornode(sp, 0), loops, 0); });
        EXPECT_EQ(rc == 0, s.linked) << s.type;
        EXPECT_EQ(err, s.linked ? "" : "insrecord: no path\n") << s.type;
        EXPECT_EQ(loops[0], s.loops0) << s.type;
        EXPECT_EQ(loops[1], s.loops1) << s.type;
        if (rc != 0)
            freedatatree(rec);
    }
    setparents(head, 0);
    return head;
}

TEST(Insrecord, LoopTagsOfOneDepthDrawInterleavedNumbers)
{
    datatree_t *cf = rooted(node("vda", nullptr,
                                 {node("$S511"), node("*A", nullptr, {node("$S512")}),
                                  node("*B", nullptr, {node("$S513")})}));
    int loops[10] = {0};
    datatree_t *head = feed(cf,
                            {{"511", true, 0, 0},
                             {"512", true, 1, 0},
                             {"513", true, 2, 0},
                             {"512", true, 3, 0},
                             {"513", true, 4, 0},
                             {"513", false, 4, 0},
                             {"512", true, 5, 0}},
                            loops);
    EXPECT_EQ(children(head), "$S511 *A(1) *B(2) *A(3) *B(4) *A(5)");
    for (const datatree_t *tp = head->child->next; tp != nullptr; tp = tp->next)
        EXPECT_EQ(children(tp), tp->xmltag[1] == 'A' ? "$S512" : "$S513");
    freedatatree(head);
    freedatatree(cf);
}

TEST(Insrecord, NestedLoopNumbersDoNotRestartInANewOuterInstance)
{
    datatree_t *cf = rooted(node("vda", nullptr,
                                 {node("*A", nullptr,
                                       {node("$S512"), node("*D", nullptr, {node("$S513")})}),
                                  node("*B", nullptr, {node("$S518")})}));
    int loops[10] = {0};
    datatree_t *head = feed(cf,
                            {{"512", true, 1, 0},
                             {"513", true, 1, 1},
                             {"518", true, 2, 1},
                             {"512", true, 3, 1},
                             {"513", true, 3, 2}},
                            loops);
    EXPECT_EQ(children(head), "*A(1) *B(2) *A(3)");
    EXPECT_EQ(children(head->child), "$S512 *D(1)");
    EXPECT_EQ(children(head->child->next), "$S518");
    EXPECT_EQ(children(head->child->next->next), "$S512 *D(2)");
    EXPECT_EQ(children(head->child->next->next->child->next), "$S513");
    freedatatree(head);
    freedatatree(cf);
}

TEST(Insrecord, TwoRecordsInARowUnderOneLoopKeepOnlyTheFirst)
{
    datatree_t *cf = rooted(node("vda", nullptr, {node("*A", nullptr, {node("$S512")})}));
    int loops[10] = {0};
    datatree_t *head = feed(cf, {{"512", true, 1, 0}, {"512", false, 1, 0}}, loops);
    EXPECT_EQ(children(head), "*A(1)");
    freedatatree(head);
    freedatatree(cf);
}

// Each way in which a record finds no place: it is not linked, and the
// message says why.
TEST(Insrecord, RecordWithoutAPlaceIsRefusedWithAMessage)
{
    const std::string longelem(64, 'x');
    std::string elevenloops = "vda";
    for (int i = 0; i < 11; i++)
        elevenloops += ".*L" + std::to_string(i);
    elevenloops += ".$S512";
    const struct {
        const char *what;
        std::string path;  // "-" for NULL
        std::string err;
    } cases[] = {
        {"no path", "-", "insrecord: no path\n"},
        {"ends in a loop", "vda.*A", "insrecord: no path\n"},
        {"ends in a plain node", "vda.grp", "insrecord: no path\n"},
        {"tag exists", "vda.$S511", "insrecord: no path\n"},
        {"element too long", "vda." + longelem + ".$S511",
         "insrecord: path element longer than 63 characters in <vda." + longelem + ".$S511>\n"},
        {"eleven loops", elevenloops, "insrecord: more than 10 loops in path <" + elevenloops + ">\n"},
    };
    for (const auto &c : cases) {
        int loops[10] = {0};
        datatree_t *head = node("vda", nullptr, {node("$S511")});
        datatree_t *rec = node("$S511");
        int rc = 0;
        std::string err = capture_stderr([&] {
            rc = ediprot::insrecord(&head, rec, c.path == "-" ? nullptr : c.path.c_str(),
                                    loops, 0);
        });
        EXPECT_EQ(rc, -1) << c.what;
        EXPECT_EQ(err, c.err) << c.what;
        EXPECT_EQ(rec->next, nullptr) << c.what;
        freedatatree(rec);
        freedatatree(head);
    }
}

TEST(Insrecord, ElementOf63CharactersAndTenLoopsFit)
{
    std::string path = "vda." + std::string(63, 'x');
    for (int i = 0; i < 10; i++)
        path += ".*L" + std::to_string(i);
    path += ".$S512";
    int loops[10] = {0};
    datatree_t *head = node("vda");
    datatree_t *rec = node("$S512");
    EXPECT_EQ(ediprot::insrecord(&head, rec, path.c_str(), loops, 0), 0);
    EXPECT_EQ(loops[9], 1);
    freedatatree(head);
}

}  // namespace
