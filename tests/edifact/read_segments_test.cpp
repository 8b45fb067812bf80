// The segment reader: bytes of an interchange into the flat chain of
// segment nodes, elements and components, in raw file form.
#include <gtest/gtest.h>

#include <string>

#include "edifact/edifact.h"
#include "testsupport.h"

using testsupport::picture;

namespace {

// The flat read of `bytes` with the separators as they stand: the root
// that readseg returns (NULL on a refused segment).
datatree_t *readbytes(const std::string &bytes)
{
    FILE *fp = bytes.empty() ? fopen("/dev/null", "r")
                             : fmemopen(const_cast<char *>(bytes.data()), bytes.size(), "r");
    datatree_t *root = ediprot::readseg(fp, "mem");
    fclose(fp);
    return root;
}

// The reader's state as a read of a file without UNA starts it: each test
// begins from it, whatever the one before left behind.
void freshstate()
{
    ediprot::tagcnt = 0;
    seg_sep = '\'';
    dst_sep = '+';
    cmp_sep = ':';
    escape = '?';
}

struct SegmentCase {
    int before;  // tagcnt ahead of the segment
    std::string text;
    std::string expected;
};

// Reads one segment text without terminator (the last piece of a file).
std::string readone(const SegmentCase &c)
{
    ediprot::tagcnt = c.before;
    datatree_t *root = readbytes(c.text);
    EXPECT_NE(root, nullptr);
    if (root == nullptr)
        return "";
    std::string got = picture(root->child);
    freedatatree(root);
    return got;
}

TEST(Readseg, SplitsSegmentsIntoElementsAndComponentsByPosition)
{
    const SegmentCase cases[] = {
        {1, "UNH+1+ORDERS:D:96A:UN",
         "$UNH002_D{DST=\"1\" DST=\"ORDERS:D:96A:UN\"{CDE=\"ORDERS\" CDE=\"D\" "
         "CDE=\"96A\" CDE=\"UN\"}}"},
        {2, "BGM+220++9", "$BGM003_D{DST=\"220\" DST=\"\" DST=\"9\"}"},
        {3, "FTX+A?+B", "$FTX004_D{DST=\"A?+B\"}"},
        {4, "FTX+A?:B:C", "$FTX005_D{DST=\"A?:B:C\"}"},
        {5, "FTX+A:B?:C", "$FTX006_D{DST=\"A:B?:C\"{CDE=\"A\" CDE=\"B?:C\"}}"},
        {6, "FTX+:A", "$FTX007_D{DST=\":A\"{CDE=\"\" CDE=\"A\"}}"},
        {7, "ABC:X:Y", "$ABC008_D{CDE=\"X\" CDE=\"Y\"}"},
        {8, "FTX+A??+B", "$FTX009_D{DST=\"A??+B\"}"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(readone(c), c.expected) << c.text;
}

TEST(Readseg, GivesEveryMalformedSegmentTextADefinedNode)
{
    const SegmentCase cases[] = {
        {0, "", "$001_D{CDE=\"\"}"},
        {0, "ABC", "$ABC001_D{CDE=\"\"}"},
        {0, "AB", "$AB001_D{CDE=\"\"}"},
        {0, "ABC+", "$ABC001_D{DST=\"\"}"},
        {0, "ABC:", "$ABC001_D{CDE=\"\"}"},
        {0, "ABC+X+", "$ABC001_D{DST=\"X\" DST=\"\"}"},
        {0, "AB+X", "$AB+001_D{CDE=\"\"}"},
        {0, "ABCD+E", "$ABC001_D{CDE=\"+E\"}"},
        {0, "\nUNH+1+ORDERS:D:96A:UN",
         "$\\nUN001_D{CDE=\"+1+ORDERS\" CDE=\"D\" CDE=\"96A\" CDE=\"UN\"}"},
        {0, "\n", "$\\n001_D{CDE=\"\"}"},
        {998, "UNT+5+1", "$UNT999_D{DST=\"5\" DST=\"1\"}"},
        {999, "UNT+5+1", "$UNT1000_D{DST=\"5\" DST=\"1\"}"},
        {9, "UNT+5+1", "$UNT010_D{DST=\"5\" DST=\"1\"}"},
        {99, "UNT+5+1", "$UNT100_D{DST=\"5\" DST=\"1\"}"},
        {99999, "UNT+5+1", "$UNT100000_D{DST=\"5\" DST=\"1\"}"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(readone(c), c.expected) << testing::PrintToString(c.text);
}

TEST(Readseg, EndsEveryFileWithTheLastPieceEvenWhenEmpty)
{
    freshstate();
    datatree_t *root = readbytes("UNB+X'UNZ+1'");
    ASSERT_NE(root, nullptr);
    EXPECT_STREQ(root->xmltag, "edi");
    EXPECT_EQ(root->data, nullptr);
    EXPECT_EQ(picture(root->child),
              "$UNB001_D{DST=\"X\"} $UNZ002_D{DST=\"1\"} $003_D{CDE=\"\"}");
    EXPECT_EQ(root->child->iseditag, 1);
    EXPECT_EQ(root->child->child->iseditag, 0);
    EXPECT_EQ(ediprot::tagcnt, 3);
    freedatatree(root);
}

TEST(Readseg, UsesTheServiceCharactersInForce)
{
    freshstate();
    seg_sep = '!';
    dst_sep = '*';
    cmp_sep = '^';
    escape = '#';
    datatree_t *root = readbytes("FTX*A^B#^C*D#!E!NAD'X*Y!");
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(picture(root->child),
              "$FTX001_D{DST=\"A^B#^C\"{CDE=\"A\" CDE=\"B#^C\"} DST=\"D#!E\"} "
              "$NAD002_D{CDE=\"X*Y\"} $003_D{CDE=\"\"}");
    freedatatree(root);
}

TEST(Readseg, BlankReleaseCharacterReleasesTheSeparatorBehindIt)
{
    freshstate();
    escape = ' ';
    datatree_t *root = readbytes("FTX+A +B+C");
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(picture(root->child), "$FTX001_D{DST=\"A +B\" DST=\"C\"}");
    freedatatree(root);
}

}  // namespace
