// The interchange reader end to end: grouping, the key doctype_sender, the
// configuration by service configuration or handed in, one filled copy per
// message, pruning, loop numbers, and every way out with its message.
#include <gtest/gtest.h>

#include <string>

#include "edihost.h"
#include "read_support.h"
#include "testsupport.h"

using readsupport::picture;

namespace {

const std::string kData = std::string(EDIPROT_TESTDATA) + "/edifact/";
const std::string kConfigs = std::string(EDIPROT_CONFIGS) + "/";

envelope_t *const kUntouched = reinterpret_cast<envelope_t *>(0x1);

// One call of edifactread with its result, envelope and stderr.
struct Read {
    datatree_t *tree = nullptr;
    envelope_t *ev = kUntouched;
    std::string err;

    explicit Read(const std::string &fn, datatree_t *inhead = nullptr)
    {
        err = testsupport::capture_stderr([&] {
            tree = edifactread(const_cast<char *>(fn.c_str()), &ev, inhead, nullptr);
        });
    }
    ~Read()
    {
        if (tree != nullptr)
            freedatatree(tree);
        if (ev != kUntouched) {
            free(ev->servconftag);
            free(ev);
        }
    }
    std::string key() const { return ev != kUntouched ? ev->servconftag : "(none)"; }
    // Data of the node at `path` under the loop numbers `loop`.
    std::string at(const char *path, const char *loop) const
    {
        datatree_t *tp = ediprot::searchlooppath(path, loop, tree);
        return tp != nullptr && tp->data != nullptr ? tp->data : "(none)";
    }
};

void loadservconf()
{
    edihost_clearservconf();
    ASSERT_EQ(edihost_loadservconf((kConfigs + "servconf.conf").c_str()), 0);
}

std::string writetemp(const std::string &name, const std::string &bytes)
{
    return testsupport::writefile(testsupport::tempdir() + "/" + name, bytes);
}

TEST(Edifactread, FillsTheConfigurationThatTheServiceConfigurationNames)
{
    loadservconf();
    Read r(kData + "orders_unb.edi");
    ASSERT_NE(r.tree, nullptr) << r.err;
    EXPECT_EQ(r.err, "");
    EXPECT_EQ(r.key(), "ORDERS_BUYERCORP");
    EXPECT_EQ(r.ev->host, nullptr);
    EXPECT_EQ(r.ev->postaction, 0);
    EXPECT_STREQ(r.tree->xmltag, "edi");
    EXPECT_EQ(picture(r.tree).substr(0, 13), "edi{*ORDERS{$");
    EXPECT_EQ(r.tree->child->next, nullptr);
    EXPECT_EQ(r.at("edi.*ORDERS.$UNH.S009.0065", "1"), "ORDERS");
    EXPECT_EQ(r.at("edi.*ORDERS.$BGM.1004", "1"), "PO4711");
    EXPECT_EQ(r.at("edi.*ORDERS.*DTM.$DTM.C507.2380", "1.2"), "20071201");
    EXPECT_EQ(r.at("edi.*ORDERS.*SG2.$NAD.3035", "1.10"), "SU");
    EXPECT_EQ(r.at("edi.*ORDERS.*SG2.*SG5.*SG5COM.$COM.C076.3148", "1.10.6.2"),
              "smith@example.com");
    EXPECT_EQ(r.at("edi.*ORDERS.*SG25.*SG28.$PRI.C509.5118", "1.24.18"), "0.25");
    EXPECT_EQ(r.at("edi.*ORDERS.*SG25.*SG25QTY.$QTY.C186.6060", "1.25.4"), "50");
    EXPECT_EQ(r.at("edi.*ORDERS.*CNT.$CNT.C270.6066", "1.28"), "2");
    EXPECT_EQ(r.at("edi.*ORDERS.$UNT.0074", "1"), "24");
    // Loops that got no data are gone.
    EXPECT_EQ(picture(r.tree).find("*SG1DTM"), std::string::npos);
    EXPECT_EQ(picture(r.tree).find("*MOA"), std::string::npos);
    EXPECT_EQ(ediprot::xdata, nullptr);
}

TEST(Edifactread, GivesTheSameTreeWhateverTheServiceCharactersOrTagCase)
{
    loadservconf();
    Read base(kData + "orders_unb.edi");
    ASSERT_NE(base.tree, nullptr) << base.err;
    const std::string expected = picture(base.tree);
    for (const char *name : {"orders_una.edi", "orders_separators.edi", "orders_lowercase.edi"}) {
        Read r(kData + name);
        ASSERT_NE(r.tree, nullptr) << name << ": " << r.err;
        EXPECT_EQ(r.err, "") << name;
        EXPECT_EQ(r.key(), "ORDERS_BUYERCORP") << name;
        EXPECT_EQ(picture(r.tree), expected) << name;
    }
    // The separators stay as the last file's UNA set them.
    EXPECT_EQ(seg_sep, '\'');
    Read other(kData + "orders_separators.edi");
    EXPECT_EQ(cmp_sep, '^');
    EXPECT_EQ(dst_sep, '*');
    EXPECT_EQ(float_sep, ',');
    EXPECT_EQ(escape, '#');
    EXPECT_EQ(seg_sep, '~');
    EXPECT_EQ(ediprot::tagcnt, 27);
}

TEST(Edifactread, RemovesReleaseCharactersFromTheValues)
{
    loadservconf();
    Read r(kData + "orders_release.edi");
    ASSERT_NE(r.tree, nullptr) << r.err;
    EXPECT_EQ(r.at("edi.*ORDERS.*FTX.$FTX.C108.4440", "1.5"), "B");
    datatree_t *c108 = ediprot::searchlooppath("edi.*ORDERS.*FTX.$FTX.C108", "1.5", r.tree);
    ASSERT_NE(c108, nullptr);
    ASSERT_NE(c108->child->next, nullptr);
    EXPECT_STREQ(c108->child->next->data, "Gate +3: left's ? mark");
}

TEST(Edifactread, FillsOneNumberedCopyPerMessage)
{
    loadservconf();
    Read r(kData + "orders_two_messages.edi");
    ASSERT_NE(r.tree, nullptr) << r.err;
    datatree_t *first = r.tree->child;
    ASSERT_NE(first, nullptr);
    ASSERT_NE(first->next, nullptr);
    EXPECT_EQ(first->next->next, nullptr);
    EXPECT_EQ(first->loopcnt, 1);
    EXPECT_EQ(first->next->loopcnt, 2);
    EXPECT_EQ(r.at("edi.*ORDERS.$UNH.0062", "1"), "1");
    EXPECT_EQ(r.at("edi.*ORDERS.$UNH.0062", "2"), "2");
    EXPECT_EQ(r.at("edi.*ORDERS.*SG2.$NAD.3035", "2.9"), "BY");
}

TEST(Edifactread, FillsAConfigurationHandedInAndKeysItFromTheFile)
{
    datatree_t *conf = readconfig(const_cast<char *>((kConfigs + "orders-d96a-in.tree").c_str()),
                                  0, const_cast<char *>("test"), __LINE__);
    ASSERT_NE(conf, nullptr);
    const std::string before = testsupport::dump(conf);
    edihost_clearservconf();
    Read r(kData + "orders_una.edi", conf);
    ASSERT_NE(r.tree, nullptr) << r.err;
    EXPECT_EQ(r.err, "");
    EXPECT_EQ(r.key(), "ORDERS_BUYERCORP");
    EXPECT_EQ(r.at("edi.*ORDERS.*SG2.$NAD.3035", "1.9"), "BY");
    EXPECT_EQ(testsupport::dump(conf), before);
    freedatatree(conf);
}

TEST(Edifactread, TakesAnEmptyFirstSenderComponentAsAValue)
{
    datatree_t *conf = testsupport::parse("edi\n  MSG\n    $UNH iseditag=1\n      0062\n");
    std::string fn = writetemp("a.edi", "UNB+UNOA:1+:14+X'UNH+7+ORDERS:D:96A:UN'UNT+2+7'");
    Read r(fn, conf);
    ASSERT_NE(r.tree, nullptr) << r.err;
    EXPECT_EQ(r.key(), "ORDERS_");
    EXPECT_EQ(picture(r.tree), "edi{MSG{$UNH{0062=\"7\"}}}");
    freedatatree(conf);
}

TEST(Edifactread, KeepsTheSiblingsOfTheLastMessageCopyOnly)
{
    datatree_t *conf = testsupport::parse(
        "edi\n  MSG\n    $UNH iseditag=1\n      0062\n  EXTRA\n    x\n");
    std::string fn = writetemp("b.edi",
                               "UNB+UNOA:1+S:1+X'UNH+1+ORDERS:D:96A:UN'UNH+2+ORDERS:D:96A:UN'");
    Read r(fn, conf);
    ASSERT_NE(r.tree, nullptr) << r.err;
    EXPECT_EQ(picture(r.tree),
              "edi{MSG{$UNH{0062=\"1\"}} MSG{$UNH{0062=\"2\"}} EXTRA{x}}");
    freedatatree(conf);
}

TEST(Edifactread, MissingMandatorySegmentIsReportedButNoFailure)
{
    loadservconf();
    // The input of a message ends at the next UNH; the last message's run
    // ends in the empty segment behind the last terminator instead.
    std::string fn = writetemp("c.edi",
                               "UNB+UNOA:1+BUYERCORP:1+X'UNH+1+ORDERS:D:96A:UN'BGM+220'"
                               "UNH+2+ORDERS:D:96A:UN'BGM+221'");
    Read r(fn);
    ASSERT_NE(r.tree, nullptr);
    EXPECT_EQ(r.err, "mandatory tag <$UNS> not found\n");
    EXPECT_EQ(r.at("edi.*ORDERS.$BGM.C002.1001", "1"), "220");
}

struct FailCase {
    const char *name;
    std::string bytes;
    std::string expected;  // whole stderr; @ stands for the file name
};

TEST(Edifactread, RefusesWhatItCannotReadWithItsMessage)
{
    const std::string longseg = "UNB+UNOA:1+BUYERCORP:1+" + std::string(9000, 'x') + "'";
    const FailCase cases[] = {
        {"short.edi", "UNB+X'", "@ is not an edi-file\n"},
        {"empty.edi", "", "@ is not an edi-file\n"},
        {"other.edi", "XYZ+1+2+3'UNB'", "@ is not an edi-file\n"},
        {"lower.edi", "unb+UNOA:1+BUYERCORP:1+X'", "@ is not an edi-file\n"},
        {"bom.edi", "\xef\xbb\xbfUNB+UNOA:1+BUYERCORP:1+X'", "@ is not an edi-file\n"},
        {"nosender.edi", "UNB+UNOA:1+SENDER+X'UNH+1+ORDERS:D:96A:UN'",
         "searchtagval: node not found: cde 0\nN: no sender\n"},
        {"nounb.edi", "UNA:+.? 'UNH+1+ORDERS:D:96A:UN'UNT+1+1'",
         "searchtagval: node <docs.edi.$UNB001_D> not found\nN: no sender\n"},
        {"orphans.edi", "UNA:+.? 'XXX+1'YYY+2'UNB+UNOA:1+BUYERCORP:1'UNH+1+ORDERS:D:96A:UN'",
         "searchtagval: node <docs.edi.$UNB001_D> not found\nN: no sender\n"},
        {"nodoctype.edi", "UNB+UNOA:1+BUYERCORP:1+X'UNH+1+ORDERS'",
         "searchtagval: node not found: cde 0\nN: no doctype\n"},
        {"unknown.edi", "UNB+UNOA:1+NOBODY:1+X'UNH+1+ORDERS:D:96A:UN'",
         "config <ORDERS_NOBODY> not found\n"},
        {"released.edi", "UNB+UNOA:1+BUYER?+CORP:1+X'UNH+1+ORDERS:D:96A:UN'",
         "config <ORDERS_BUYER?+CORP> not found\n"},
        {"long.edi", longseg, "@: segment longer than 8191 characters\n"},
        {"term.edi", "UNA:+.? \xa7UNB+UNOA:1+BUYERCORP:1\xa7",
         "@: segment terminator 0xa7 out of range\n"},
    };
    for (const auto &c : cases) {
        loadservconf();
        std::string fn = writetemp(c.name, c.bytes);
        std::string expected = c.expected;
        if (expected[0] == '@')
            expected.replace(0, 1, fn);
        Read r(fn);
        EXPECT_EQ(r.tree, nullptr) << c.name;
        EXPECT_EQ(r.ev, kUntouched) << c.name;
        EXPECT_EQ(testsupport::without_line_numbers(r.err), expected) << c.name;
    }
}

TEST(Edifactread, FailsOnAFileWithoutTheUnhBehindTheUnb)
{
    loadservconf();
    const std::string expected =
        "searchtagval: node <docs.edi.$UNH002_D> not found\nN: no doctype\n";
    for (const char *name : {"orders_ung.edi", "orders_linebreaks.edi"}) {
        Read r(kData + name);
        EXPECT_EQ(r.tree, nullptr) << name;
        EXPECT_EQ(testsupport::without_line_numbers(r.err), expected) << name;
    }
    Read r(kData + "orders_una_linebreaks.edi");
    EXPECT_EQ(r.tree, nullptr);
    EXPECT_EQ(testsupport::without_line_numbers(r.err),
              "searchtagval: node <docs.edi.$UNB001_D> not found\nN: no sender\n");
}

TEST(Edifactread, ReportsAFileThatCannotBeOpenedAndKeepsTheSeparators)
{
    seg_sep = '!';
    ediprot::tagcnt = 5;
    std::string fn = testsupport::tempdir() + "/missing.edi";
    Read r(fn);
    EXPECT_EQ(r.tree, nullptr);
    EXPECT_EQ(r.err, fn + ": No such file or directory\n");
    EXPECT_EQ(seg_sep, '!');
    EXPECT_EQ(ediprot::tagcnt, 5);
}

TEST(Edifactread, ReportsAnUnreadableConfiguration)
{
    std::string dir = testsupport::tempdir();
    testsupport::writefile(dir + "/servconf.conf", "ORDERS_BUYERCORP fromconffile=nothere.tree\n");
    edihost_clearservconf();
    ASSERT_EQ(edihost_loadservconf((dir + "/servconf.conf").c_str()), 0);
    Read r(kData + "orders_unb.edi");
    EXPECT_EQ(r.tree, nullptr);
    const std::string tail = "readconfig <" + dir + "/nothere.tree> failed\n";
    ASSERT_GE(r.err.size(), tail.size());
    EXPECT_EQ(r.err.substr(r.err.size() - tail.size()), tail) << r.err;
}

TEST(Edifactread, ReportsAConfigurationRootWithoutChildren)
{
    datatree_t *conf = testsupport::parse("edi\n");
    Read r(kData + "orders_unb.edi", conf);
    EXPECT_EQ(r.tree, nullptr);
    EXPECT_EQ(r.err, "edifactread: copysubtree failed\n");
    freedatatree(conf);
}

TEST(Edifactread, ClosesEveryFailureWithATraceLineAtLevelZero)
{
    std::string fn = writetemp("x.edi", "XYZXYZXYZ");
    tracelevel = 0x10000000;
    Read r(fn);
    tracelevel = 0;
    // The message, then the prefix "HH:MM:SS.mmm (ediprot       :LINE): "
    // and the closing line.
    const std::string head = fn + " is not an edi-file\n";
    const std::string tail = "): edifactread failed\n";
    ASSERT_EQ(r.err.size(), head.size() + 12 + 2 + 14 + 1 + 4 + tail.size()) << r.err;
    EXPECT_EQ(r.err.substr(0, head.size()), head);
    EXPECT_EQ(r.err.substr(head.size() + 12, 17), " (ediprot       :");
    EXPECT_EQ(r.err.substr(r.err.size() - tail.size()), tail);
}

TEST(Edifactread, ReadsAFileWithoutUnzAndOnlyTheFirstUnbCounts)
{
    loadservconf();
    std::string fn = writetemp(
        "d.edi",
        "UNB+UNOA:1+BUYERCORP:1+X'UNH+1+ORDERS:D:96A:UN'BGM+220'UNS+S'UNT+4+1'"
        "UNZ+1+X'UNB+UNOA:1+OTHER:1+X'UNH+2+DELFOR:D:96A:UN'BGM+221'UNS+S'UNT+4+2'");
    Read r(fn);
    ASSERT_NE(r.tree, nullptr) << r.err;
    EXPECT_EQ(r.key(), "ORDERS_BUYERCORP");
    EXPECT_EQ(r.at("edi.*ORDERS.$BGM.C002.1001", "2"), "221");
    EXPECT_EQ(r.at("edi.*ORDERS.$UNH.S009.0065", "2"), "DELFOR");
}

}  // namespace
