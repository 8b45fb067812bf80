// Configurations of hostile shape, each used by the reader it belongs to
// and by the writer: 1,000 levels deep, 100,000 siblings wide, and (VDA)
// loop names that answer a record key.  None may crash, exhaust the stack,
// hang or leak; each gives the tree and the file that its rules say.
#include <gtest/gtest.h>
#include <string.h>

#include <string>

#include "edihost.h"
#include "testsupport.h"

using testsupport::Read;
using testsupport::writeedifact;
using testsupport::writevda;
using testsupport::Written;

namespace {

const char *const kInterchange =
    "UNB+UNOA:3+SENDER:14+RECIP:14+071123:1015+REF1'"
    "UNH+1+ORDERS:D:96A:UN'"
    "FTX+AAI++TEXT'"
    "UNT+3+1'"
    "UNZ+1+REF1'";

constexpr int kDepth = 1000;
constexpr int kWidth = 100000;

std::string indent(int level) { return std::string(2 * static_cast<size_t>(level), ' '); }

const char *const kUnh =
    "$UNH iseditag=1 ediforce=mand\n"
    "  0062 edimaxlen=14\n"
    "  S009\n"
    "    0065 edimaxlen=6\n"
    "    0052 edimaxlen=3\n";
const char *const kFtx =
    "$FTX iseditag=1\n"
    "  4451 edimaxlen=3\n"
    "  4453 edimaxlen=3\n"
    "  C108\n"
    "    4440 edimaxlen=35\n";
const char *const kUnt =
    "$UNT iseditag=1\n"
    "  0074 edimaxlen=6\n"
    "  0062 edimaxlen=14\n";

// `block` (lines of a tree text) with every line indented by `level`.
std::string at(int level, const std::string &block)
{
    std::string out;
    size_t pos = 0;
    while (pos < block.size()) {
        size_t end = block.find('\n', pos) + 1;
        out += indent(level) + block.substr(pos, end - pos);
        pos = end;
    }
    return out;
}

// The message loop with UNH, the FTX segment `depth` loops deep, and UNT.
std::string deepconfig(int depth)
{
    std::string text = "edi\n  *MSG\n" + at(2, kUnh);
    for (int k = 1; k <= depth; k++)
        text += indent(1 + k) + "*L" + std::to_string(k) + "\n";
    return text + at(2 + depth, kFtx) + at(2, kUnt);
}

// The message loop with UNH, `width` FTX tag nodes of one element side by
// side, and UNT.  (Each message holds the configuration twice, as the
// message and as the repetition tried behind it: small nodes keep the
// test at about 200 MB in the sanitizer build.)
std::string wideconfig(int width)
{
    std::string text = "edi\n  *MSG\n" + at(2, kUnh);
    const std::string ftx = at(2, "$FTX iseditag=1\n  4440 edimaxlen=35\n");
    for (int k = 0; k < width; k++)
        text += ftx;
    return text + at(2, kUnt);
}

std::string deeppath()
{
    std::string path = "edi.*MSG";
    for (int k = 1; k <= kDepth; k++)
        path += ".*L" + std::to_string(k);
    return path + ".$FTX.C108.4440";
}

std::string ones(int count)
{
    std::string out = "1";
    for (int k = 1; k < count; k++)
        out += ".1";
    return out;
}

// ---- EDIFACT -------------------------------------------------------------

// The deep configuration comes through the service configuration and the
// tree text reader, as a host would find it.
TEST(ConfigHostile, AThousandLoopsDeepReadAndWriteAnInterchange)
{
    const std::string dir = testsupport::tempdir();
    testsupport::writefile(dir + "/deep.tree", deepconfig(kDepth));
    testsupport::writefile(dir + "/serv.conf", "ORDERS_SENDER fromconffile=deep.tree\n");
    edihost_clearservconf();
    ASSERT_EQ(edihost_loadservconf((dir + "/serv.conf").c_str()), 0);
    const std::string in = testsupport::writefile(dir + "/in.edi", kInterchange);

    Read r;
    testsupport::readedifact(r, in, nullptr);
    ASSERT_NE(r.tree, nullptr) << r.err;
    EXPECT_EQ(r.err, "");
    EXPECT_EQ(r.at(deeppath().c_str(), ones(kDepth + 1).c_str()), "TEXT");

    datatree_t *cf = edihost_readtree((dir + "/deep.tree").c_str());
    ASSERT_NE(cf, nullptr);
    Written w = writeedifact(r.tree, cf);
    EXPECT_EQ(w.rc, 0);
    EXPECT_EQ(w.err, "");
    EXPECT_EQ(testsupport::messagesegments(w.text), "UNH+1+ORDERS:D'FTX+AAI++TEXT'UNT+3+1'");
    freedatatree(cf);
    edihost_clearservconf();
}

TEST(ConfigHostile, AHundredThousandSiblingTagsReadAndWriteAnInterchange)
{
    datatree_t *cf = testsupport::parse(wideconfig(kWidth));
    std::string ix = kInterchange;
    ix.replace(ix.find("FTX+AAI++TEXT'"), 14, "FTX+ONE'FTX+TWO'FTX+THREE'");
    const std::string in = testsupport::writefile(testsupport::tempdir() + "/in.edi", ix);

    Read r;
    testsupport::readedifact(r, in, cf);
    ASSERT_NE(r.tree, nullptr) << r.err;
    EXPECT_EQ(r.err, "");
    // Each segment went to the next FTX tag node; the others stay empty.
    datatree_t *msg = r.tree->child;
    ASSERT_NE(msg, nullptr);
    size_t count = 0;
    std::string texts;
    for (datatree_t *tp = msg->child; tp != nullptr; tp = tp->next, count++) {
        if (strcmp(tp->xmltag, "$FTX") == 0 && tp->child != nullptr && tp->child->data != nullptr)
            texts += std::string(tp->child->data) + " ";
    }
    EXPECT_EQ(count, static_cast<size_t>(kWidth) + 2);
    EXPECT_EQ(texts, "ONE TWO THREE ");

    // The writer finds every FTX element by its name, so each of the tag
    // nodes writes the first FTX of the tree.
    Written w = writeedifact(r.tree, cf);
    EXPECT_EQ(w.rc, 0);
    EXPECT_EQ(w.err, "");
    std::string ftxs;
    for (int k = 0; k < kWidth; k++)
        ftxs += "FTX+ONE'";
    EXPECT_EQ(testsupport::messagesegments(w.text), "UNH+1+ORDERS:D'" + ftxs + "UNT+3+1'");
    freedatatree(cf);
}

// ---- VDA -----------------------------------------------------------------

const std::string k511 = "51101CUSTOMER1" + std::string(114, ' ');
const std::string k512 = "51201PART" + std::string(119, ' ');

const char *const kFields511 =
    "$S511\n"
    "  rectype edilen=3 editype=string\n"
    "  version edilen=2 editype=string\n"
    "  customer edilen=9 editype=string\n"
    "  filler edilen=114 editype=string\n";
const char *const kFields512 =
    "$S512\n"
    "  rectype edilen=3 editype=string\n"
    "  version edilen=2 editype=string\n"
    "  part edilen=4 editype=string\n"
    "  filler edilen=119 editype=string\n";

std::string trailer(const char *counts)
{
    return std::string("51902") + counts + std::string(67, ' ') + "\r\n";
}

// A 512 record below a chain of 1,000 plain nodes.
TEST(ConfigHostile, AThousandLevelsDeepReadAndWriteARecordFile)
{
    std::string text = std::string("vda\n") + at(1, kFields511);
    std::string path = "vda";
    for (int k = 1; k <= kDepth; k++) {
        text += indent(k) + "P" + std::to_string(k) + "\n";
        path += ".P" + std::to_string(k);
    }
    text += at(kDepth + 1, kFields512);
    datatree_t *cf = testsupport::parse(text);
    const std::string in =
        testsupport::writefile(testsupport::tempdir() + "/in.vda", k511 + "\n" + k512 + "\n");

    Read r;
    testsupport::readvda(r, in, cf);
    ASSERT_NE(r.tree, nullptr);
    EXPECT_EQ(r.err, "");
    EXPECT_EQ(r.at((path + ".$S512.part").c_str(), ""), "PART");

    Written w = writevda(r.tree, cf);
    EXPECT_EQ(w.rc, 0);
    EXPECT_EQ(w.err, "dnode: $S511\ndnode: $S512\n");
    EXPECT_EQ(w.text, k511 + "\r\n" + k512 + "\r\n" +
                          trailer("0000001" "0000001" "0000000" "0000000" "0000000" "0000000"
                                  "0000001" "0000000"));
    freedatatree(cf);
}

// More loops than a read can number: the record is refused, with the
// whole path in the message.
TEST(ConfigHostile, AThousandLoopsDeepRefuseTheRecordBelowThem)
{
    std::string text = std::string("vda\n") + at(1, kFields511);
    std::string path = "vda";
    for (int k = 1; k <= kDepth; k++) {
        text += indent(k) + "*L" + std::to_string(k) + "\n";
        path += ".*L" + std::to_string(k);
    }
    text += at(kDepth + 1, kFields512);
    datatree_t *cf = testsupport::parse(text);
    const std::string in =
        testsupport::writefile(testsupport::tempdir() + "/in.vda", k511 + "\n" + k512 + "\n");

    Read r;
    testsupport::readvda(r, in, cf);
    ASSERT_NE(r.tree, nullptr);
    EXPECT_EQ(r.err, "insrecord: more than 10 loops in path <" + path + ".$S512>\n");
    EXPECT_EQ(r.tree->child->next, nullptr);

    Written w = writevda(r.tree, cf);
    EXPECT_EQ(w.rc, 0);
    EXPECT_EQ(w.err, "dnode: $S511\n");
    EXPECT_EQ(w.text, k511 + "\r\n" +
                          trailer("0000001" "0000000" "0000000" "0000000" "0000000" "0000000"
                                  "0000001" "0000000"));
    freedatatree(cf);
}

// 100,000 tag nodes between 511 and 512 whose names answer no key.
TEST(ConfigHostile, AHundredThousandSiblingsReadAndWriteARecordFile)
{
    std::string text = std::string("vda\n") + at(1, kFields511);
    for (int k = 0; k < kWidth; k++)
        text += "  $T" + std::to_string(k) + "\n";
    text += "  *CALLOFF\n" + at(2, kFields512);
    datatree_t *cf = testsupport::parse(text);
    const std::string in =
        testsupport::writefile(testsupport::tempdir() + "/in.vda", k511 + "\n" + k512 + "\n");

    Read r;
    testsupport::readvda(r, in, cf);
    ASSERT_NE(r.tree, nullptr);
    EXPECT_EQ(r.err, "");
    EXPECT_EQ(r.at("vda.*CALLOFF.$S512.part", "1"), "PART");

    Written w = writevda(r.tree, cf);
    EXPECT_EQ(w.rc, 0);
    EXPECT_EQ(w.err, "dnode: $S511\ndnode: $S512\n");
    EXPECT_EQ(w.text, k511 + "\r\n" + k512 + "\r\n" +
                          trailer("0000001" "0000001" "0000000" "0000000" "0000000" "0000000"
                                  "0000001" "0000000"));
    freedatatree(cf);
}

// A loop called *S512 answers the key S512 before the tag node below it:
// its children become the fields, and a path that ends in a loop finds no
// place.  The loop node made on the way stays; the writer takes that
// childless node for the record and writes it from the defaults.
TEST(ConfigHostile, ALoopNamedLikeARecordKeyLosesTheRecordButNothingElse)
{
    const std::string text = std::string("vda\n") + at(1, kFields511) + "  *S512\n" +
                             at(2, "$S512 edilen=3 defval=512\n" + std::string(kFields512).substr(6));
    datatree_t *cf = testsupport::parse(text);
    const std::string in = testsupport::writefile(
        testsupport::tempdir() + "/in.vda", k511 + "\n" + k512 + "\n" + k512 + "\n");

    Read r;
    testsupport::readvda(r, in, cf);
    ASSERT_NE(r.tree, nullptr);
    EXPECT_EQ(r.err, "insrecord: no path\ninsrecord: no path\n");
    EXPECT_EQ(r.at("vda.$S511.customer", ""), "CUSTOMER1");
    ASSERT_NE(r.tree->child->next, nullptr);
    EXPECT_STREQ(r.tree->child->next->xmltag, "*S512");
    EXPECT_EQ(r.tree->child->next->child, nullptr);

    Written w = writevda(r.tree, cf);
    EXPECT_EQ(w.rc, 0);
    EXPECT_EQ(w.err, "dnode: $S511\ndnode: *S512\n");
    EXPECT_EQ(w.text, k511 + "\r\n" + std::string(128, ' ') + "\r\n" +
                          trailer("0000001" "0000001" "0000000" "0000000" "0000000" "0000000"
                                  "0000001" "0000000"));
    freedatatree(cf);
}

}  // namespace
