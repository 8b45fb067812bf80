// The writers against hostile output conditions and data: a data tree of
// a million plain siblings, an output folder that does not exist, an
// output path that is a folder, and a full disk (a file-size limit in a
// child process).  A failure gives -1 and its message and leaves no file.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "testsupport.h"

namespace {

using testsupport::node;

constexpr int kSiblings = 1000000;

const char *const kEdifactConfig =
    "edi\n"
    "  $FTX iseditag=1\n"
    "    4451 edimaxlen=3\n"
    "    4440 edimaxlen=35\n";

const char *const kVdaConfig =
    "vda\n"
    "  $S511\n"
    "    rectype edilen=3 editype=string\n"
    "    version edilen=2 editype=string\n"
    "    customer edilen=9 editype=string\n"
    "    filler edilen=114 editype=string\n";

const std::string kTrailer = "51902"
                             "0000001"
                             "0000000"
                             "0000000"
                             "0000000"
                             "0000000"
                             "0000000"
                             "0000001"
                             "0000000" +
                             std::string(67, ' ') + "\r\n";
const std::string k511 = "51102CUSTOMER1" + std::string(114, ' ') + "\r\n";

// A root with `count` childless plain nodes and, behind them, the nodes
// that the configuration asks for, so that every lookup passes them all.
datatree_t *widedata(const char *root, int count, datatree_t *wanted)
{
    datatree_t *top = node(root);
    datatree_t **tpp = &top->child;
    for (int k = 0; k < count; k++) {
        *tpp = node("x", "noise");
        tpp = &(*tpp)->next;
    }
    *tpp = wanted;
    setparents(top, 0);
    return top;
}

datatree_t *ftxdata(int siblings)
{
    return widedata("edi", siblings, node("$FTX", nullptr, {node("4451", "AAI"), node("4440", "HELLO")}));
}

datatree_t *vdadata(int siblings)
{
    return widedata("vda", siblings,
                    node("$S511", nullptr,
                         {node("rectype", "511"), node("version", "02"),
                          node("customer", "CUSTOMER1")}));
}

// `text` with every "{F}" replaced by `fn`.
std::string withname(std::string text, const std::string &fn)
{
    for (size_t pos; (pos = text.find("{F}")) != std::string::npos;)
        text.replace(pos, 3, fn);
    return text;
}

testsupport::Written callwriter(bool edifact, datatree_t *tree, const std::string &out,
                                datatree_t *cf, bool capture = true)
{
    return edifact ? testsupport::writeedifact(tree, cf, out, capture)
                   : testsupport::writevda(tree, cf, out, capture);
}

TEST(WriterHostile, EdifactwriteWritesAMillionPlainSiblingsInReasonableTime)
{
    datatree_t *cf = testsupport::parse(kEdifactConfig);
    datatree_t *tree = ftxdata(kSiblings);
    const std::string out = testsupport::tempdir() + "/out.edi";
    testsupport::Written w = callwriter(true, tree, out, cf);
    const int rc = w.rc;
    const std::string &err = w.err;
    EXPECT_EQ(rc, 0);
    EXPECT_EQ(err, "");
    EXPECT_EQ(testsupport::messagesegments(testsupport::readfile(out)), "FTX+AAI+HELLO'");
    freedatatree(tree);
    freedatatree(cf);
}

// ---- where the output cannot go ------------------------------------------

struct Place {
    const char *name;
    bool edifact;
    bool folder;  // the output path is a folder (else: in a missing folder)
    const char *err;  // "{F}" is the output path
};

void PrintTo(const Place &p, std::ostream *os) { *os << p.name; }

class WriterPlace : public testing::TestWithParam<Place> {};

TEST_P(WriterPlace, GivesMinusOneAndItsMessageAndLeavesNothing)
{
    const Place &p = GetParam();
    datatree_t *cf = testsupport::parse(p.edifact ? kEdifactConfig : kVdaConfig);
    datatree_t *tree = p.edifact ? ftxdata(0) : vdadata(0);
    const std::string dir = testsupport::tempdir();
    const std::string out = p.folder ? dir : dir + "/missing/out";
    testsupport::Written w = callwriter(p.edifact, tree, out, cf);
    const int rc = w.rc;
    const std::string &err = w.err;
    EXPECT_EQ(rc, -1);
    EXPECT_EQ(err, withname(p.err, out));
    struct stat st;
    if (p.folder) {
        // The folder stays a folder: the removal of a failed output does
        // not touch it.
        ASSERT_EQ(stat(out.c_str(), &st), 0);
        EXPECT_TRUE(S_ISDIR(st.st_mode));
    } else {
        EXPECT_NE(stat((dir + "/missing").c_str(), &st), 0);
    }
    freedatatree(tree);
    freedatatree(cf);
}

INSTANTIATE_TEST_SUITE_P(
    Hostile, WriterPlace,
    testing::Values(Place{"EdifactwriteIntoAMissingFolder", true, false,
                          "{F}: No such file or directory\n"},
                    Place{"EdifactwriteOntoAFolder", true, true, "{F}: Is a directory\n"},
                    Place{"VdawriteIntoAMissingFolder", false, false,
                          "{F}: No such file or directory\nvdawrite error\n"},
                    Place{"VdawriteOntoAFolder", false, true, "{F}: Is a directory\nvdawrite error\n"}),
    [](const testing::TestParamInfo<Place> &info) { return std::string(info.param.name); });

// ---- a full disk ---------------------------------------------------------

struct Disk {
    const char *name;
    bool edifact;
    long limit;    // bytes the child may write
    int siblings;  // plain nodes in front of the data
    int records;   // FTX segments or 511 lines asked for by the configuration
    const char *err;
};

void PrintTo(const Disk &d, std::ostream *os) { *os << d.name; }

// A configuration that asks for the same segment or record `count` times,
// so that the output outgrows the stream's buffer and writes fail in the
// middle of the walk, not only at the close.
std::string repeated(const char *config, int count)
{
    std::string head = config;
    size_t first = head.find('\n') + 1;
    std::string root = head.substr(0, first), body = head.substr(first);
    std::string out = root;
    for (int k = 0; k < count; k++)
        out += body;
    return out;
}

class WriterFullDisk : public testing::TestWithParam<Disk> {};

TEST_P(WriterFullDisk, GivesMinusOneAndItsMessageAndLeavesNoFile)
{
    const Disk &d = GetParam();
    const std::string out = testsupport::tempdir() + "/out";
    testsupport::ChildRun run = testsupport::run_in_child(
        [&] {
            datatree_t *cf =
                testsupport::parse(repeated(d.edifact ? kEdifactConfig : kVdaConfig, d.records));
            datatree_t *tree = d.edifact ? ftxdata(d.siblings) : vdadata(d.siblings);
            testsupport::Written w = callwriter(d.edifact, tree, out, cf, false);
            freedatatree(tree);
            freedatatree(cf);
            return w.rc == -1 ? 0 : 1;
        },
        d.limit);
    EXPECT_EQ(run.status, 0) << "the writer did not return -1";
    std::string want = withname(d.err, out);
    if (!d.edifact) {
        // vdawrite names every record it writes before the failure shows.
        std::string dnodes;
        for (int k = 0; k < d.records; k++)
            dnodes += "dnode: $S511\n";
        want = dnodes + want;
    }
    EXPECT_EQ(run.err, want);
    EXPECT_FALSE(testsupport::exists(out));
}

INSTANTIATE_TEST_SUITE_P(
    Hostile, WriterFullDisk,
    testing::Values(
        Disk{"EdifactwriteOnADiskWithNoRoomAtAll", true, 0, 0, 1, "{F}: write failed\n"},
        Disk{"EdifactwriteRunningOutOfRoomMidWalk", true, 10000, 1000, 2000, "{F}: write failed\n"},
        Disk{"VdawriteOnADiskWithNoRoomAtAll", false, 0, 0, 1,
             "{F}: write failed\nvdawrite error\n"},
        Disk{"VdawriteRunningOutOfRoomMidWalk", false, 10000, 1000, 200,
             "{F}: write failed\nvdawrite error\n"}),
    [](const testing::TestParamInfo<Disk> &info) { return std::string(info.param.name); });

}  // namespace
