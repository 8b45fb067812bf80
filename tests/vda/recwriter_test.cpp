// The record writer: which records a configuration and a data tree give,
// in which order, and how loops are counted through.
#include <gtest/gtest.h>

#include <stdlib.h>

#include "vdatest.h"

using namespace testsupport;
using namespace vdatest;

namespace {

// Runs vdatraverse over a memory stream; returns what it wrote.
std::string traverse(datatree_t *head, datatree_t *cf, std::string *err = nullptr)
{
    char *buf = nullptr;
    size_t len = 0;
    FILE *fp = open_memstream(&buf, &len);
    ediprot::initrecs();
    std::string e = capture_stderr([&] { ediprot::vdatraverse(fp, head, cf, ""); });
    fclose(fp);
    std::string out(buf, len);
    free(buf);
    if (err != nullptr)
        *err = e;
    return out;
}

int count(const char *tag)
{
    for (ediprot::vdarecs_t *rp = ediprot::recs; rp->tag != nullptr; rp++)
        if (std::string(rp->tag) == tag)
            return rp->cnt;
    return -1;
}

// vda { *A { $S512 { type(3) text(4) } } }
datatree_t *loopconfig()
{
    return rooted(node("vda", nullptr,
                       {node("*A", nullptr,
                             {node("$S512", nullptr, {field("type", 3), field("text", 4)})})}));
}

datatree_t *rec512(const char *text)
{
    return node("$S512", nullptr, {node("type", "512"), node("text", text)});
}

TEST(Vdatraverse, LoopStopsAtTheFirstMissingNumber)
{
    datatree_t *cf = loopconfig();
    datatree_t *data = rooted(node("vda", nullptr,
                                   {loopnode("*A", 1, {rec512("ONE ")}),
                                    loopnode("*A", 2, {rec512("TWO ")}),
                                    loopnode("*A", 4, {rec512("FOUR")})}));
    std::string err;
    EXPECT_EQ(traverse(data, cf, &err), "512ONE \r\n512TWO \r\n");
    EXPECT_EQ(err, "dnode: $S512\ndnode: $S512\n");
    EXPECT_EQ(count("S512"), 2);
    freedatatree(data);
    freedatatree(cf);
}

TEST(Vdatraverse, EachLoopNodeCountsFromOneSoInterleavedNumbersAreNotWritten)
{
    // The tree that reading 511 512 513 512 513 gives with two loop tags
    // at one depth: *A 1, *B 2, *A 3, *B 4.
    datatree_t *cf = rooted(node("vda", nullptr,
                                 {node("*A", nullptr, {node("$S512", nullptr, {field("t", 3)})}),
                                  node("*B", nullptr, {node("$S513", nullptr, {field("t", 3)})})}));
    datatree_t *data = rooted(node("vda", nullptr,
                                   {loopnode("*A", 1, {node("$S512", nullptr, {node("t", "512")})}),
                                    loopnode("*B", 2, {node("$S513", nullptr, {node("t", "513")})}),
                                    loopnode("*A", 3, {node("$S512", nullptr, {node("t", "512")})}),
                                    loopnode("*B", 4, {node("$S513", nullptr, {node("t", "513")})})}));
    EXPECT_EQ(traverse(data, cf), "512\r\n");
    freedatatree(data);
    freedatatree(cf);
}

TEST(Vdatraverse, NestedLoopsRestartTheInnerCountForEachOuterNumber)
{
    datatree_t *cf = rooted(node("vda", nullptr,
                                 {node("*A", nullptr,
                                       {node("grp", nullptr,
                                             {node("*D", nullptr,
                                                   {node("$S513", nullptr, {field("v", 3)})})})})}));
    auto inner = [](int n, const char *v) {
        return loopnode("*D", n, {node("$S513", nullptr, {node("v", v)})});
    };
    datatree_t *data = rooted(node("vda", nullptr,
                                   {loopnode("*A", 1, {node("grp", nullptr, {inner(1, "a11"), inner(2, "a12")})}),
                                    loopnode("*A", 2, {node("grp", nullptr, {inner(1, "a21")})})}));
    TraceLevel tl(0x30000000u);
    std::string err;
    EXPECT_EQ(traverse(data, cf, &err), "a11\r\na12\r\na21\r\n");
    for (const char *lb : {"loop <1.1>", "loop <1.2>", "loop <2.1>", "no node: lb <1.3>",
                           "no node: lb <3>"})
        EXPECT_NE(err.find(lb), std::string::npos) << lb;
    freedatatree(data);
    freedatatree(cf);
}

// A childless node above a loop answers every number in a path lookup;
// the walk must still end, and write nothing for the loop.
TEST(Vdatraverse, LoopBelowAChildlessDataNodeEnds)
{
    datatree_t *cf = rooted(node("vda", nullptr,
                                 {node("grp", nullptr,
                                       {node("*A", nullptr, {node("$S512", nullptr, {field("t", 3)})})})}));
    datatree_t *roots[] = {rooted(node("vda")), rooted(node("vda", nullptr, {node("grp")}))};
    for (datatree_t *data : roots) {
        EXPECT_EQ(traverse(data, cf), "");
        EXPECT_EQ(count("S512"), 0);
        freedatatree(data);
    }
    freedatatree(cf);
}

TEST(Vdatraverse, RecordsComeOutInTheConfigurationsOrder)
{
    datatree_t *cf = rooted(node("vda", nullptr,
                                 {node("$S511", nullptr, {field("t", 3)}),
                                  node("$S515", nullptr, {field("t", 3)}),
                                  node("$S518", nullptr, {field("t", 3)})}));
    datatree_t *data = rooted(node("vda", nullptr,
                                   {node("$S518", nullptr, {node("t", "518")}),
                                    node("$S511", nullptr, {node("t", "511")})}));
    EXPECT_EQ(traverse(data, cf), "511\r\n518\r\n");
    EXPECT_EQ(count("S511"), 1);
    EXPECT_EQ(count("S515"), 0);
    EXPECT_EQ(count("S518"), 1);
    freedatatree(data);
    freedatatree(cf);
}

// Fields without a value are blanks of their width; a record with no
// fields in its configuration is a bare line end; both count.
TEST(Writevdarecord, FieldsWithoutValueAreBlanksAndEveryRecordEndsInCrLf)
{
    datatree_t *cf = rooted(node("vda", nullptr,
                                 {node("$S511", nullptr, {field("t", 3), field("a", 4), field("b", 2)}),
                                  node("$S512"),
                                  node("$S516", nullptr, {field("t", 3), field("z", 0)})}));
    datatree_t *data = rooted(node("vda", nullptr,
                                   {node("$S511", nullptr, {node("t", ""), node("b", "XY")}),
                                    node("$S512"),
                                    node("$S516", nullptr, {node("t", "516")})}));
    std::string err;
    EXPECT_EQ(traverse(data, cf, &err), "       XY\r\n\r\n516\r\n");
    EXPECT_EQ(err, "dnode: $S511\ndnode: $S512\ndnode: $S516\n");
    EXPECT_EQ(count("S511"), 1);
    EXPECT_EQ(count("S512"), 1);
    freedatatree(data);
    freedatatree(cf);
}

TEST(Writevdarecord, DataTreeWithAnotherRootNameWritesNothing)
{
    datatree_t *cf = rooted(node("vda", nullptr, {node("$S511", nullptr, {field("t", 3)})}));
    datatree_t *data = rooted(node("VDA", nullptr, {node("$S511", nullptr, {node("t", "511")})}));
    EXPECT_EQ(traverse(data, cf), "");
    freedatatree(data);
    freedatatree(cf);
}

TEST(Writevdarecord, DefaultsFillFieldsThatTheDataTreeLacks)
{
    datatree_t *ver = field("version", 2);
    ver->defval = strdup("02");
    datatree_t *cf = rooted(node("vda", nullptr, {node("$S511", nullptr, {field("t", 3), ver})}));
    datatree_t *data = rooted(node("vda", nullptr, {node("$S511", nullptr, {node("t", "511")})}));
    EXPECT_EQ(traverse(data, cf), "51102\r\n");
    freedatatree(data);
    freedatatree(cf);
}

TEST(Recs, CountersFollowTheTrailerOrderAndIgnoreUnknownTags)
{
    ediprot::initrecs();
    for (const char *tag : {"S515", "S515", "S511", "S516", "S5", "s511"})
        ediprot::incrrecs(tag);
    EXPECT_EQ(count("S515"), 2);
    EXPECT_EQ(count("S511"), 1);
    EXPECT_STREQ(ediprot::recs[6].tag, "S519");
    EXPECT_STREQ(ediprot::recs[7].tag, "S515");
    EXPECT_EQ(ediprot::recs[8].tag, nullptr);

    char *buf = nullptr;
    size_t len = 0;
    FILE *fp = open_memstream(&buf, &len);
    ediprot::writevda519(fp);
    fclose(fp);
    EXPECT_EQ(std::string(buf, len), trailer({1, 0, 0, 0, 0, 0, 0, 2}) + "\r\n");
    free(buf);
}

TEST(Recs, CounterWiderThanSevenDigitsIsWrittenWhole)
{
    ediprot::initrecs();
    ediprot::recs[0].cnt = 10000000;
    char *buf = nullptr;
    size_t len = 0;
    FILE *fp = open_memstream(&buf, &len);
    ediprot::writevda519(fp);
    fclose(fp);
    std::string line(buf, len);
    free(buf);
    EXPECT_EQ(line.size(), 131u);
    EXPECT_EQ(line.substr(0, 13), "5190210000000");
    ediprot::initrecs();
    EXPECT_EQ(count("S511"), 0);
}

}  // namespace
