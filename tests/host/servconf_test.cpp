// The service configurations: loading, relative paths, lookup and the
// messages of malformed files.
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "edihost.h"
#include "testsupport.h"

using testsupport::capture_stderr;
using testsupport::writefile;

namespace {
const std::string folder = EDIPROT_TESTDATA "/host/";
char *key(const char *s) { return const_cast<char *>(s); }

// Each case starts from an empty list in the folder it started in.
class Servconf : public testing::Test {
protected:
    void SetUp() override
    {
        edihost_clearservconf();
        ASSERT_NE(getcwd(cwd, sizeof cwd), nullptr);
    }
    void TearDown() override
    {
        edihost_clearservconf();
        EXPECT_EQ(chdir(cwd), 0);
    }
    char cwd[4096];
};
}  // namespace

TEST_F(Servconf, LoadsEntriesWithPathsRelativeToTheFilesFolder)
{
    ASSERT_EQ(edihost_loadservconf((folder + "servconf.txt").c_str()), 0);
    servconf_t *sc = getservconf(key("ORDERS_SENDER1"));
    ASSERT_NE(sc, nullptr);
    EXPECT_STREQ(sc->tag, "ORDERS_SENDER1");
    EXPECT_EQ(std::string(sc->fromconffile), folder + "conf/orders.cfg");
    EXPECT_STREQ(sc->toconffile, "/etc/ediprot/orders-out.cfg");
    EXPECT_EQ(sc->transconffile, nullptr);
    EXPECT_EQ(sc->postaction, 2);
    EXPECT_EQ(sc->onedokpost, 0);

    servconf_t *quoted = getservconf(key("ORDERS_SENDER 2"));
    ASSERT_NE(quoted, nullptr);
    EXPECT_EQ(quoted->onedokpost, 1);
    EXPECT_EQ(quoted->commitall, -1);
    servconf_t *invoic = getservconf(key("INVOIC_SENDER1"));
    ASSERT_NE(invoic, nullptr);
    EXPECT_EQ(invoic->fromconffile, nullptr);
    EXPECT_EQ(std::string(invoic->transconffile), folder + "../trans/invoic.cfg");

    // The configuration it names reads as a tree.
    datatree_t *tree = readconfig(sc->fromconffile, 0, key("ediprot"), 1);
    ASSERT_NE(tree, nullptr);
    EXPECT_STREQ(tree->xmltag, "edi");
    freedatatree(tree);
}

TEST_F(Servconf, KeysCompareExactly)
{
    ASSERT_EQ(edihost_loadservconf((folder + "servconf.txt").c_str()), 0);
    EXPECT_EQ(getservconf(key("orders_sender1")), nullptr);
    EXPECT_EQ(getservconf(key("ORDERS_SENDER")), nullptr);
    EXPECT_EQ(getservconf(key("ORDERS_SENDER1 ")), nullptr);
    EXPECT_EQ(getservconf(key("")), nullptr);
    EXPECT_EQ(getservconf(nullptr), nullptr);
    edihost_clearservconf();
    EXPECT_EQ(getservconf(key("ORDERS_SENDER1")), nullptr);
}

TEST_F(Servconf, AMalformedFileGivesItsLineAndLeavesTheListUnchanged)
{
    std::string dir = testsupport::tempdir();
    ASSERT_EQ(edihost_loadservconf(writefile(dir + "/first.txt", "OLD fromconffile=o.cfg\n").c_str()), 0);
    struct Case {
        const char *text;
        const char *message;
    } cases[] = {
        {"A fromconffile=a\nB fromconf=b\n", ":2: unknown field fromconf\n"},
        {"A fromconffile=a\n# note\n\nA toconffile=x\n", ":4: duplicate key A\n"},
        {"B postaction=1\nOLD fromconffile=x\n", ":2: duplicate key OLD\n"},
        {"A postaction=yes\n", ":1: bad number for postaction: yes\n"},
        {"A commitall=4294967296\n", ":1: number out of range for commitall: 4294967296\n"},
        {"A fromconffile=a fromconffile=b\n", ":1: duplicate field fromconffile\n"},
        {"A fromconffile=\"\"\n", ":1: empty path for fromconffile\n"},
        {"A fromconffile=\"a\n", ":1: unterminated quoted text\n"},
        {"A fromconffile\n", ":1: expected key=value, found 'fromconffile'\n"},
    };
    for (const Case &c : cases) {
        std::string fn = writefile(dir + "/bad.txt", c.text);
        std::string err = capture_stderr([&] { EXPECT_EQ(edihost_loadservconf(fn.c_str()), -1); });
        EXPECT_EQ(err, fn + c.message) << c.text;
        EXPECT_EQ(getservconf(key("A")), nullptr) << c.text;
        EXPECT_EQ(getservconf(key("B")), nullptr) << c.text;
        EXPECT_EQ(std::string(getservconf(key("OLD"))->fromconffile), dir + "/o.cfg");
    }
    std::string missing = dir + "/none.txt";
    std::string err = capture_stderr([&] { EXPECT_EQ(edihost_loadservconf(missing.c_str()), -1); });
    EXPECT_EQ(err, missing + ": No such file or directory\n");
}
