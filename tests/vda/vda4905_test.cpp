// The VDA 4905 configuration and sample: their shape, a round trip, what
// a file with two call-offs gives, and the files of the corpus.
#include <gtest/gtest.h>

#include <string.h>

#include <filesystem>
#include <map>

#include "vdatest.h"

using namespace testsupport;
using namespace vdatest;

namespace {

const char *const kTypes[] = {"511", "512", "513", "514", "515", "517", "518", "519"};

std::string sample()
{
    return std::string(EDIPROT_SAMPLES) + "/vda4905-sample.txt";
}

// Unlinks and frees the child `tag` of `parent`; false if it has none.
bool dropchild(datatree_t *parent, const char *tag)
{
    for (datatree_t **tpp = &parent->child; *tpp != nullptr; tpp = &(*tpp)->next) {
        if (strcmp((*tpp)->xmltag, tag) == 0) {
            datatree_t *tp = *tpp;
            *tpp = tp->next;
            tp->next = nullptr;
            freedatatree(tp);
            return true;
        }
    }
    return false;
}

// The trailer that matches the record lines of `lines` (all but the last).
std::string trailerfor(const std::vector<std::string> &lines)
{
    std::map<std::string, int> n;
    for (size_t i = 0; i + 1 < lines.size(); i++)
        n[lines[i].substr(0, 3)]++;
    return trailer({n["511"], n["512"], n["513"], n["514"], n["517"], n["518"], n["519"] + 1,
                    n["515"]});
}

TEST(Vda4905Config, EveryRecordTypeIsATagNodeOf128Characters)
{
    datatree_t *cf = loadconfig("vda4905.tree");
    ASSERT_NE(cf, nullptr);
    for (const char *type : kTypes) {
        std::string key = std::string("S") + type;
        datatree_t *sp = ediprot::findsatz(cf, key.c_str());
        ASSERT_NE(sp, nullptr) << key;
        // No loop or other node answers the key before the record's tag node.
        EXPECT_EQ(std::string(sp->xmltag), "$" + key);
        int width = 0;
        for (datatree_t *fp = sp->child; fp != nullptr; fp = fp->next)
            width += fp->edilen;
        EXPECT_EQ(width, 128) << key;
        ASSERT_NE(sp->child, nullptr);
        EXPECT_EQ(sp->child->edilen, 3) << key;
        EXPECT_STREQ(sp->child->defval, type);
    }
    freedatatree(cf);
}

TEST(Vda4905Sample, EveryLineIs128CharactersEndingInCrLf)
{
    std::vector<std::string> lines = crlflines(readfile(sample()));
    ASSERT_EQ(lines.size(), 8u);
    for (const std::string &line : lines)
        EXPECT_EQ(line.size(), 128u) << line;
}

// Read and written back, the sample gives the same lines: the trailer
// comes from the writer, so the record read from the file's trailer is
// taken out of the tree first.
TEST(Vda4905Sample, RoundTripGivesTheSameRecordsAndAMatchingTrailer)
{
    datatree_t *cf = loadconfig("vda4905.tree");
    ASSERT_NE(cf, nullptr);
    std::string err;
    datatree_t *tree = read(sample(), cf, &err);
    ASSERT_NE(tree, nullptr);
    EXPECT_EQ(err, "");
    EXPECT_EQ(children(tree), "$S511 *CALLOFF(1) $S519");
    EXPECT_EQ(children(tree->child->next), "$S512 $S513 $S514 $S515 $S517 $S518");
    // The two converted dates take their tree form.
    EXPECT_STREQ(ediprot::searchlooppath("vda.$S511.transdate", "", tree)->data, "23.11.2026");

    ASSERT_TRUE(dropchild(tree, "$S519"));
    int rc = -1;
    std::string out = write(tree, cf, &rc, &err);
    EXPECT_EQ(rc, 0);
    EXPECT_EQ(out, readfile(sample()));
    std::vector<std::string> lines = crlflines(out);
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.back(), trailerfor(lines));
    EXPECT_EQ(err.find("missing"), std::string::npos) << err;
    freedatatree(tree);
    freedatatree(cf);
}

// Kept in the tree, the record of the file's trailer is written as a
// record of its own before the writer's trailer, which counts both.
TEST(Vda4905Sample, TrailerRecordLeftInTheTreeIsWrittenTwice)
{
    datatree_t *cf = loadconfig("vda4905.tree");
    ASSERT_NE(cf, nullptr);
    datatree_t *tree = read(sample(), cf);
    ASSERT_NE(tree, nullptr);
    std::vector<std::string> in = crlflines(readfile(sample()));
    std::vector<std::string> out = crlflines(write(tree, cf));
    ASSERT_EQ(out.size(), 9u);
    EXPECT_EQ(out[7], in[7]);
    EXPECT_EQ(out[8], trailer({1, 1, 1, 1, 1, 1, 2, 1}));
    freedatatree(tree);
    freedatatree(cf);
}

// A second call-off meets the call-off loop node that the first one
// created: its 512 and 513 find their tag nodes taken and are left out,
// and a record type that the first call-off lacks (here 514) joins the
// first call-off.  Writing back gives one call-off.
TEST(Vda4905Sample, SecondCallOffIsLostAndItsNewRecordTypesJoinTheFirst)
{
    std::vector<std::string> lines = crlflines(readfile(sample()));
    ASSERT_EQ(lines.size(), 8u);
    std::string second512 = lines[1];
    second512.replace(8, 9, "000004712");
    std::string second513 = lines[2];
    second513.replace(5, 6, "261121");
    const std::string file = lines[0] + "\r\n" + lines[1] + "\r\n" + lines[2] + "\r\n" +
                             lines[6] + "\r\n" + second512 + "\r\n" + second513 + "\r\n" +
                             lines[3] + "\r\n" + lines[7] + "\r\n";

    datatree_t *cf = loadconfig("vda4905.tree");
    ASSERT_NE(cf, nullptr);
    std::string err;
    datatree_t *tree = read(tempfile(file), cf, &err);
    ASSERT_NE(tree, nullptr);
    EXPECT_EQ(err, "insrecord: no path\ninsrecord: no path\n");
    EXPECT_EQ(children(tree), "$S511 *CALLOFF(1) $S519");
    EXPECT_EQ(children(tree->child->next), "$S512 $S513 $S518 $S514");
    EXPECT_STREQ(ediprot::searchlooppath("vda.*CALLOFF.$S512.calloffnew", "1", tree)->data,
                 "000004711");

    ASSERT_TRUE(dropchild(tree, "$S519"));
    std::vector<std::string> out = crlflines(write(tree, cf));
    const std::vector<std::string> want = {lines[0], lines[1], lines[2], lines[3], lines[6],
                                           trailer({1, 1, 1, 1, 0, 1, 1, 0})};
    EXPECT_EQ(out, want);
    freedatatree(tree);
    freedatatree(cf);
}

// Every corpus file reads without a crash, leak or sanitizer report; the
// repeated 518 of each call-off and every record of a later transmission
// are left out with a message.
TEST(Vda4905Corpus, EveryFileReadsAndWritesBack)
{
    datatree_t *cf = loadconfig("vda4905.tree");
    ASSERT_NE(cf, nullptr);
    int files = 0;
    for (const auto &entry : std::filesystem::directory_iterator(std::string(EDIPROT_CORPUS) + "/vda")) {
        std::string err;
        datatree_t *tree = read(entry.path().string(), cf, &err);
        ASSERT_NE(tree, nullptr) << entry.path();
        EXPECT_STREQ(tree->xmltag, "vda");
        int rc = -1;
        std::string out = write(tree, cf, &rc);
        EXPECT_EQ(rc, 0) << entry.path();
        EXPECT_FALSE(out.empty());
        freedatatree(tree);
        files++;
    }
    EXPECT_GE(files, 8);
    freedatatree(cf);
}

TEST(Vda4905Corpus, SingleTransmissionKeepsOneOfItsTwoTextRecords)
{
    datatree_t *cf = loadconfig("vda4905.tree");
    ASSERT_NE(cf, nullptr);
    std::string err;
    datatree_t *tree = read(std::string(EDIPROT_CORPUS) + "/vda/edifabric_Vda_4905_02.txt", cf, &err);
    ASSERT_NE(tree, nullptr);
    EXPECT_EQ(err, "insrecord: no path\n");
    EXPECT_EQ(children(tree), "$S511 *CALLOFF(1) $S519");
    EXPECT_EQ(children(tree->child->next), "$S512 $S513 $S515 $S518");
    EXPECT_STREQ(ediprot::searchlooppath("vda.*CALLOFF.$S518.text1", "1", tree)->data,
                 "07-08140295/04                          ");
    freedatatree(tree);
    freedatatree(cf);
}

}  // namespace
