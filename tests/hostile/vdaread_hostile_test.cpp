// vdaread and makerecord against bad input.  Each row of vdaread is a file
// with the tree it must give (the customer field of the 511 record, or
// none) and the exact stderr; each row of makerecord is one line.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "hostile.h"
#include "testsupport.h"

using hostile::ReadResult;

namespace {

// 511 with its fields; a loop with 512.  Both records are 128 wide.
const char *const kVdaConfig =
    "vda\n"
    "  $S511\n"
    "    rectype edilen=3 editype=string\n"
    "    version edilen=2 editype=string\n"
    "    customer edilen=9 editype=string\n"
    "    filler edilen=114 editype=string\n"
    "  *CALLOFF\n"
    "    $S512\n"
    "      rectype edilen=3 editype=string\n"
    "      version edilen=2 editype=string\n"
    "      part edilen=22 editype=string\n"
    "      filler edilen=101 editype=string\n";

const char *const kCustomer = "vda.$S511.customer";
const char *const kNoRecord = "(no 511)";

std::string line511(const std::string &customer = "CUSTOMER1")
{
    std::string text = "51101" + customer;
    return text + std::string(128 - text.size(), ' ');
}

std::string line512() { return "51201PART" + std::string(128 - 9, ' '); }

// `piece` repeated `count` times, each cut or padded to `width` characters.
std::string pieces(const std::string &piece, size_t width, size_t count)
{
    std::string one = piece.substr(0, width);
    one += std::string(width - one.size(), 'x');
    std::string out;
    for (size_t i = 0; i < count; i++)
        out += one;
    return out;
}

std::string repeat(const std::string &text, size_t count)
{
    std::string out;
    for (size_t i = 0; i < count; i++)
        out += text;
    return out;
}

struct Row {
    std::string name;
    std::string bytes;
    // customer of the 511 record, or kNoRecord when the tree has none.
    std::string customer;
    // Records (511 and call-off loops) directly below the root.
    size_t toplevel;
    std::string err;
};

// Test names and listings show a row by its name.
void PrintTo(const Row &row, std::ostream *os) { *os << row.name; }

std::vector<Row> rows()
{
    const std::string rec = line511();
    const std::string nopath = "insrecord: no path\n";
    // fgets hands over at most 8191 characters of a line at a time.
    const size_t piece = 8191;
    return {
        {"EmptyFile", "", kNoRecord, 0, ""},
        {"ALineOf100KilobytesBehindARecord", rec + std::string(100 * 1024, 'A') + "\n",
         "CUSTOMER1", 1, ""},
        // Every piece of the long line begins with 511 and counts as a line
        // of its own; only the first 511 finds a place.
        {"ALongLineWhosePiecesBeginWith511", pieces(rec, piece, 12) + "\n", "CUSTOMER1", 1,
         repeat(nopath, 11)},
        {"ALineEndingInsideTheRecordType", "51\n", kNoRecord, 0, ""},
        {"ALineEndingBehindTheRecordType", "511\n", "", 1, ""},
        {"ALineEndingInsideAField", "51101CUST\n", "CUST", 1, ""},
        {"ALastLineWithoutLineEnd", "51101CUSTOMER1", "CUSTOMER", 1, ""},
        // A CR alone ends no line: the whole file is one 511 record.
        {"CrOnlyLineEnds", rec + "\r" + line512() + "\r", "CUSTOMER1", 1, ""},
        {"CrLfLineEnds", rec + "\r\n" + line512() + "\r\n", "CUSTOMER1", 2, ""},
        {"NulBytesOnly", std::string(300, '\0'), kNoRecord, 0, ""},
        // The line ends at the NUL for the reader, and its last character
        // before the NUL goes as the line end would.
        {"ANulByteInsideAField", std::string("51101CUST\0OMER1\n", 16), "CUS", 1, ""},
        {"ANulByteAtTheStartOfALine", std::string("\0", 1) + rec + "\n", kNoRecord, 0, ""},
        {"NoiseFromTheFirstByte", hostile::noise(4, 65536), kNoRecord, 0, ""},
        {"NoiseBehindARecord", rec + "\n" + hostile::noise(5, 65536), "CUSTOMER1", 1, ""},
        {"TwoRecordsOfOneType", rec + "\n" + line511("OTHER") + "\n", "CUSTOMER1", 1, nopath},
    };
}

class VdareadRow : public testing::TestWithParam<Row> {
protected:
    void SetUp() override { cf = testsupport::parse(kVdaConfig); }
    void TearDown() override { freedatatree(cf); }
    datatree_t *cf = nullptr;
};

TEST_P(VdareadRow, GivesItsTreeAndItsMessage)
{
    const Row &row = GetParam();
    const std::string fn = testsupport::writefile(testsupport::tempdir() + "/in", row.bytes);
    ReadResult r;
    hostile::readvda(r, fn, cf);
    EXPECT_EQ(r.err, row.err);
    ASSERT_NE(r.tree, nullptr);
    EXPECT_STREQ(r.tree->xmltag, "vda");
    size_t top = 0;
    for (datatree_t *tp = r.tree->child; tp != nullptr; tp = tp->next)
        top++;
    EXPECT_EQ(top, row.toplevel);
    const std::string customer = r.at(kCustomer, "");
    EXPECT_EQ(customer == "(none)" ? kNoRecord : customer, row.customer);
}

INSTANTIATE_TEST_SUITE_P(Hostile, VdareadRow, testing::ValuesIn(rows()),
                         [](const testing::TestParamInfo<Row> &info) { return info.param.name; });

TEST(VdareadHostile, ReportsAMissingInputFile)
{
    datatree_t *cf = testsupport::parse(kVdaConfig);
    const std::string fn = testsupport::tempdir() + "/missing.vda";
    ReadResult r;
    hostile::readvda(r, fn, cf);
    EXPECT_EQ(r.tree, nullptr);
    EXPECT_EQ(r.err, fn + ": No such file or directory\n");
    freedatatree(cf);
}

// A folder opens for reading but gives no line: the read ends as at the
// end of a file.
TEST(VdareadHostile, ReadsAFolderAsAnEmptyFile)
{
    datatree_t *cf = testsupport::parse(kVdaConfig);
    const std::string fn = testsupport::tempdir();
    ReadResult r;
    hostile::readvda(r, fn, cf);
    ASSERT_NE(r.tree, nullptr);
    EXPECT_EQ(r.tree->child, nullptr);
    EXPECT_EQ(r.err, "");
    freedatatree(cf);
}

TEST(VdareadHostile, ReportsAnUnreadableInputFile)
{
    if (geteuid() == 0)
        GTEST_SKIP() << "root reads a file of mode 000";
    datatree_t *cf = testsupport::parse(kVdaConfig);
    const std::string fn =
        testsupport::writefile(testsupport::tempdir() + "/locked.vda", line511() + "\n");
    ASSERT_EQ(chmod(fn.c_str(), 0), 0);
    ReadResult r;
    hostile::readvda(r, fn, cf);
    EXPECT_EQ(r.tree, nullptr);
    EXPECT_EQ(r.err, fn + ": Permission denied\n");
    freedatatree(cf);
}

// ---- makerecord: one line at a time -------------------------------------

// Fields of every odd width: none, negative, wider than a field value can
// be, and one that always lies behind a short line.
const char *const kOddFields =
    "cf\n"
    "  $S511\n"
    "    rectype edilen=3 editype=string\n"
    "    negative edilen=-5 editype=string\n"
    "    zero edilen=0 editype=string\n"
    "    wide edilen=300 editype=string\n"
    "    behind edilen=4 editype=string\n";

struct LineRow {
    std::string name;
    std::string line;
    // Values of the fields in order, joined by "|"; "(null)" for no record.
    std::string values;
};

// Test names and listings show a row by its name.
void PrintTo(const LineRow &row, std::ostream *os) { *os << row.name; }

std::string values(const datatree_t *rec)
{
    if (rec == nullptr)
        return "(null)";
    std::string out;
    for (const datatree_t *tp = rec->child; tp != nullptr; tp = tp->next)
        out += (tp == rec->child ? "" : "|") + std::string(tp->data);
    return out;
}

std::vector<LineRow> linerows()
{
    const std::string a300(300, 'A');
    return {
        {"AnEmptyLine", "", "(null)"},
        {"OneCharacter", "5", "(null)"},
        {"TheRecordTypeAlone", "511", "511||||"},
        {"ALineEndingInsideTheWideField", "511ABC", "511|||ABC|"},
        {"ALineOf100Kilobytes", "511" + std::string(100 * 1024, 'A'),
         "511|||" + std::string(255, 'A') + "|AAAA"},
        {"AFieldCutExactlyAtItsWidth", "511" + a300 + "BEHIND", "511|||" + a300.substr(0, 255) + "|BEHI"},
        {"BytesWithTheHighBitSet", "511\xff\xfe\x80", "511|||\xff\xfe\x80|"},
    };
}

class MakerecordRow : public testing::TestWithParam<LineRow> {};

TEST_P(MakerecordRow, ReadsNothingOutsideTheLine)
{
    const LineRow &row = GetParam();
    datatree_t *cf = testsupport::parse(kOddFields);
    // The line in a buffer of its own size, so that a read behind its end
    // shows in the sanitizer build.
    std::vector<char> buf(row.line.begin(), row.line.end());
    buf.push_back('\0');
    datatree_t *sp = reinterpret_cast<datatree_t *>(0x1);
    datatree_t *rec = nullptr;
    std::string err = testsupport::capture_stderr([&] { rec = makerecord(buf.data(), &sp, cf); });
    EXPECT_EQ(err, "");
    EXPECT_EQ(values(rec), row.values);
    EXPECT_EQ(sp == nullptr, rec == nullptr);
    if (rec != nullptr)
        freedatatree(rec);
    freedatatree(cf);
}

INSTANTIATE_TEST_SUITE_P(Hostile, MakerecordRow, testing::ValuesIn(linerows()),
                         [](const testing::TestParamInfo<LineRow> &info) {
                             return info.param.name;
                         });

TEST(MakerecordHostile, GivesNoRecordWithoutAConfiguration)
{
    char line[] = "51101CUSTOMER1";
    datatree_t *sp = reinterpret_cast<datatree_t *>(0x1);
    EXPECT_EQ(makerecord(line, &sp, nullptr), nullptr);
    EXPECT_EQ(sp, nullptr);
    EXPECT_EQ(makerecord(line, nullptr, nullptr), nullptr);
}

}  // namespace
