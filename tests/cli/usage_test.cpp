// The command line: help, version, usage errors and their exit status.
#include <gtest/gtest.h>

#include "runprogram.h"
#include "testsupport.h"

namespace {

TEST(EdiUsage, HelpAndVersionSucceed)
{
    RunResult r = runedi({"--help"});
    EXPECT_EQ(r.status, 0);
    EXPECT_NE(r.out.find("usage: edi COMMAND"), std::string::npos);
    for (const char *cmd : {"read", "write", "vda-read", "vda-write"}) {
        r = runedi({cmd, "--help"});
        EXPECT_EQ(r.status, 0) << cmd;
        EXPECT_NE(r.out.find(std::string("usage: edi ") + cmd), std::string::npos) << cmd;
    }
    r = runedi({"--version"});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out.rfind("edi ", 0), 0u);
}

TEST(EdiUsage, UsageErrorsExitWithTwoAndOneLine)
{
    const struct {
        std::vector<std::string> args;
        const char *message;
    } cases[] = {
        {{}, "edi: no command given\n"},
        {{"convert", "x"}, "edi: unknown command 'convert'\n"},
        {{"read", "--bogus", "x"}, "edi: unknown option '--bogus'\n"},
        {{"read"}, "edi: read needs an input file\n"},
        {{"read", "x", "--format", "xml"}, "edi: --format takes tree or json, not 'xml'\n"},
        {{"read", "x", "--trace", "16"}, "edi: --trace takes a level from 0 to 15, not '16'\n"},
        {{"read", "x", "--trace"}, "edi: option --trace needs a value\n"},
        {{"write", "t", "--config", "c", "--sender", "s", "--recipient", "r"},
         "edi: write needs -o OUT\n"},
        {{"write", "t", "--config", "c", "-o", "o"}, "edi: write needs --sender and --recipient\n"},
        {{"vda-write", "t", "-o", "o"}, "edi: vda-write needs --config FILE\n"},
        {{"vda-read", "x"}, "edi: vda-read needs --config FILE\n"},
        {{"vda-write", "t", "-j", "2", "--config", "c", "-o", "o"},
         "edi: -j is an option of read and vda-read\n"},
        {{"read", "x", "--exact"}, "edi: --exact and --reference are options of write\n"},
        {{"read", "x", "-j", "0"}, "edi: -j takes a number of processes from 1 to 256, not '0'\n"},
        {{"vda-read", "x", "--config", "c", "--join-lines"},
         "edi: --join-lines is an option of read only\n"},
        {{"read", "x", "--config", "c", "--servconf", "s"},
         "edi: give either --servconf or --config, not both\n"},
    };
    for (const auto &c : cases) {
        RunResult r = runedi(c.args);
        EXPECT_EQ(r.status, 2) << c.message;
        EXPECT_EQ(r.err, std::string(c.message) + "Try 'edi --help'.\n");
    }
}

TEST(EdiUsage, MissingFilesFailWithStatusOne)
{
    std::string dir = testsupport::tempdir();
    RunResult r = runedi({"read", dir + "/missing.edi", "--config", dir + "/missing.tree"});
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find("missing.tree"), std::string::npos) << r.err;

    testsupport::writefile(dir + "/bad.tree", "edi\n\tchild\n");
    r = runedi({"vda-read", dir + "/x.txt", "--config", dir + "/bad.tree"});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err.rfind(dir + "/bad.tree:2: ", 0), 0u) << r.err;
}

}  // namespace
