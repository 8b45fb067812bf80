// edifactread against bad input: every row is a file, the result it must
// give (no tree, or a tree with one value checked) and the exact message.
// Each row runs as a test of its own, so the sanitizer build checks each
// for leaks and overflows on its own.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "hostile.h"
#include "testsupport.h"

using hostile::kInterchange;
using hostile::noise;
using hostile::ReadResult;
using hostile::withname;

namespace {

const std::string kUna = "UNA:+.? '";
const char *const kFtxPath = "edi.*MSG.$FTX.C108.4440";
const char *const kNoTree = nullptr;

// A million empty segments take about 360 MB in the plain build (two nodes
// and three strings each, all held until the read ends) and about 600 MB
// with the address sanitizer's red zones; that build reads fewer.
#if defined(__SANITIZE_ADDRESS__)
constexpr size_t kManyTerminators = 400000;
#else
constexpr size_t kManyTerminators = 1000000;
#endif

// kInterchange with every terminator followed by `end`.
std::string withlineends(const std::string &end)
{
    std::string out;
    for (char c : std::string(kInterchange)) {
        out += c;
        if (c == '\'')
            out += end;
    }
    return out;
}

// kInterchange with its FTX text replaced.
std::string withftx(const std::string &text)
{
    std::string out = kInterchange;
    out.replace(out.find("TEXT"), 4, text);
    return out;
}

std::string replaced(std::string text, char from, char to)
{
    for (char &c : text)
        if (c == from)
            c = to;
    return text;
}

struct Row {
    std::string name;  // a test name: letters and digits only
    std::string bytes;
    // Value of FTX's 4440 in the first message, or kNoTree for NULL.
    const char *ftx;
    // Exact stderr, "{F}" standing for the file name; line numbers of
    // "no sender" / "no doctype" as "N".
    std::string err;
};

// Test names and listings show a row by its name.
void PrintTo(const Row &row, std::ostream *os) { *os << row.name; }

std::vector<Row> rows()
{
    const std::string nosender =
        "searchtagval: node <docs.edi.$UNB001_D> not found\nN: no sender\n";
    const std::string nodoctype =
        "searchtagval: node <docs.edi.$UNH002_D> not found\nN: no doctype\n";
    const std::string toolong = "{F}: segment longer than 8191 characters\n";
    const std::string noedi = "{F} is not an edi-file\n";
    const std::string ix = kInterchange;
    const char q = '\'';
    std::vector<Row> out = {
        {"EmptyFile", "", kNoTree, noedi},
        {"NoiseFromTheFirstByte", noise(1, 65536), kNoTree, noedi},
        {"NoiseBehindAUna", kUna + noise(2, 65536), kNoTree, nosender},
        {"NoiseInsideAMessage", withftx("TEXT'" + noise(3, 65536)), "TEXT", ""},
        {"ASegmentOfOneMegabyte", withftx(std::string(1 << 20, 'A')), kNoTree, toolong},
        {"ASegmentOf8192Characters", withftx(std::string(8192 - 9, 'A')), kNoTree, toolong},
        {"ALastSegmentOf8192CharactersWithoutTerminator", "UNB+" + std::string(8188, 'A'),
         kNoTree, toolong},
        {"AMillionEmptySegmentsInAMessage", withftx("TEXT" + std::string(kManyTerminators, q)), "TEXT", ""},
        {"AMillionEmptySegmentsBehindUnb",
         "UNB+UNOA:3+SENDER:14+RECIP:14+071123:1015+REF1" + std::string(kManyTerminators, q), kNoTree,
         nodoctype},
        {"AUnaWithAllSixCharactersEqual", "UNA''''''" + ix, kNoTree,
         "searchtagval: node not found: dst 1\nN: no sender\n"},
        {"AUnaWithAllSeparatorsEqualButTheTerminator", "UNA+++++'" + ix, kNoTree,
         "searchtagval: node not found: cde 0\nN: no sender\n"},
        {"AUnaTerminatorOf0x80", "UNA:+.? \x80" + ix, kNoTree,
         "{F}: segment terminator 0x80 out of range\n"},
        {"AUnaTerminatorOf0xa7", "UNA:+.? \xa7" + replaced(ix, q, '\xa7'), kNoTree,
         "{F}: segment terminator 0xa7 out of range\n"},
        {"AUnaTerminatorOf0xff", "UNA:+.? \xff" + ix, kNoTree,
         "{F}: segment terminator 0xff out of range\n"},
        {"NulBytesOnly", std::string(64, '\0'), kNoTree, noedi},
        {"ANulByteInsideAnElement", withftx(std::string("TE\0XT", 5)), "TE", ""},
        {"NulAsTheTerminatorOfAUna", std::string("UNA:+.? \0", 9) + replaced(ix, q, '\0'), "TEXT",
         ""},
        {"NulAsTheReleaseCharacterOfAUna", std::string("UNA:+.\0 '", 9) + ix, "TEXT", ""},
        {"CrOnlyLineEnds", withlineends("\r"), kNoTree, nodoctype},
        {"CrLfLineEnds", withlineends("\r\n"), kNoTree, nodoctype},
        {"ALineEndBehindAUna", kUna + "\n" + ix, kNoTree, nosender},
    };
    // Every file of 1 to 8 bytes is too short for its first nine.
    for (size_t n = 1; n <= 8; n++) {
        const std::string count = std::to_string(n);
        out.push_back({"TheFirst" + count + "BytesOfAnInterchange", ix.substr(0, n), kNoTree, noedi});
        out.push_back({"TheFirst" + count + "BytesOfAUna", kUna.substr(0, n), kNoTree, noedi});
    }
    return out;
}

class EdifactreadRow : public testing::TestWithParam<Row> {
protected:
    void SetUp() override { cf = testsupport::parse(hostile::kMessageConfig); }
    void TearDown() override { freedatatree(cf); }
    datatree_t *cf = nullptr;
};

TEST_P(EdifactreadRow, GivesItsResultAndItsMessage)
{
    const Row &row = GetParam();
    const std::string fn = testsupport::writefile(testsupport::tempdir() + "/in", row.bytes);
    ReadResult r;
    hostile::readedifact(r, fn, cf);
    EXPECT_EQ(testsupport::without_line_numbers(r.err), withname(row.err, fn));
    if (row.ftx == kNoTree) {
        EXPECT_EQ(r.tree, nullptr);
        EXPECT_EQ(r.ev, nullptr);
    } else {
        ASSERT_NE(r.tree, nullptr);
        EXPECT_EQ(r.at(kFtxPath, "1"), row.ftx);
    }
}

INSTANTIATE_TEST_SUITE_P(Hostile, EdifactreadRow, testing::ValuesIn(rows()),
                         [](const testing::TestParamInfo<Row> &info) { return info.param.name; });

// The longest segment that fits is read whole.
TEST(EdifactreadHostile, ReadsASegmentOf8191CharactersWhole)
{
    datatree_t *cf = testsupport::parse(hostile::kMessageConfig);
    const std::string text(8191 - 9, 'A');  // behind "FTX+AAI++"
    const std::string fn = testsupport::writefile(testsupport::tempdir() + "/in", withftx(text));
    ReadResult r;
    hostile::readedifact(r, fn, cf);
    EXPECT_EQ(r.err, "");
    EXPECT_EQ(r.at(kFtxPath, "1"), text);
    freedatatree(cf);
}

TEST(EdifactreadHostile, ReportsAMissingInputFile)
{
    const std::string fn = testsupport::tempdir() + "/missing.edi";
    ReadResult r;
    hostile::readedifact(r, fn, nullptr);
    EXPECT_EQ(r.tree, nullptr);
    EXPECT_EQ(r.ev, nullptr);
    EXPECT_EQ(r.err, fn + ": No such file or directory\n");
}

TEST(EdifactreadHostile, RefusesAFolderAsInput)
{
    const std::string fn = testsupport::tempdir();
    ReadResult r;
    hostile::readedifact(r, fn, nullptr);
    EXPECT_EQ(r.tree, nullptr);
    EXPECT_EQ(r.err, fn + " is not an edi-file\n");
}

TEST(EdifactreadHostile, ReportsAnUnreadableInputFile)
{
    if (geteuid() == 0)
        GTEST_SKIP() << "root reads a file of mode 000";
    const std::string fn =
        testsupport::writefile(testsupport::tempdir() + "/locked.edi", kInterchange);
    ASSERT_EQ(chmod(fn.c_str(), 0), 0);
    ReadResult r;
    hostile::readedifact(r, fn, nullptr);
    EXPECT_EQ(r.tree, nullptr);
    EXPECT_EQ(r.err, fn + ": Permission denied\n");
}

}  // namespace
