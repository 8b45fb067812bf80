// The VDA file writer: trailer, result, and what becomes of the file.
#include <gtest/gtest.h>

#include <signal.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "vdatest.h"

using namespace testsupport;
using namespace vdatest;

namespace {

datatree_t *config511(ediforce_t force = ef_none)
{
    return rooted(node("vda", nullptr,
                       {node("$S511", nullptr, {field("type", 3), field("customer", 9, et_string, force)}),
                        node("$S515", nullptr, {field("type", 3)})}));
}

datatree_t *data511()
{
    return rooted(node("vda", nullptr,
                       {node("$S511", nullptr, {node("type", "511"), node("customer", "K1")}),
                        node("$S515", nullptr, {node("type", "515")})}));
}

TEST(Vdawrite, NothingToWriteGivesTheTrailerAloneCountingItself)
{
    datatree_t *cf = config511();
    datatree_t *other = rooted(node("vda", nullptr, {node("$S999")}));
    const struct {
        datatree_t *tree, *cf;
    } cases[] = {{nullptr, nullptr}, {nullptr, cf}, {other, cf}, {other, nullptr}};
    const std::string want = "51902" "0000000" "0000000" "0000000" "0000000" "0000000" "0000000"
                             "0000001" "0000000" + std::string(67, ' ') + "\r\n";
    for (const auto &c : cases) {
        int rc = -2;
        std::string err;
        EXPECT_EQ(write(c.tree, c.cf, &rc, &err), want);
        EXPECT_EQ(rc, 0);
        EXPECT_EQ(err, "");
    }
    EXPECT_EQ(want.size(), 130u);
    freedatatree(other);
    freedatatree(cf);
}

TEST(Vdawrite, RecordsThenTrailerWithTheirCountsAndS515Last)
{
    datatree_t *cf = config511();
    datatree_t *data = data511();
    int rc = -2;
    std::string err;
    std::string out = write(data, cf, &rc, &err);
    EXPECT_EQ(rc, 0);
    EXPECT_EQ(out, "511K1       \r\n515\r\n" + trailer({1, 0, 0, 0, 0, 0, 1, 1}) + "\r\n");
    EXPECT_EQ(err, "dnode: $S511\ndnode: $S515\n");
    freedatatree(data);
    freedatatree(cf);
}

TEST(Vdawrite, TwoWritesInARowEachCountFromZero)
{
    datatree_t *cf = config511();
    datatree_t *data = data511();
    write(data, cf);
    std::string second = write(nullptr, cf);
    EXPECT_EQ(second, trailer({0, 0, 0, 0, 0, 0, 1, 0}) + "\r\n");
    freedatatree(data);
    freedatatree(cf);
}

TEST(Vdawrite, MissingMandatoryFieldIsReportedWrittenAsBlanksAndTheFileStays)
{
    datatree_t *cf = config511(ef_mand);
    datatree_t *data = rooted(node("vda", nullptr, {node("$S511", nullptr, {node("type", "511")})}));
    ediprot::errcnt = 5;
    int rc = -2;
    std::string err;
    std::string out = write(data, cf, &rc, &err);
    EXPECT_EQ(rc, 0);
    EXPECT_EQ(out, "511         \r\n" + trailer({1, 0, 0, 0, 0, 0, 1, 0}) + "\r\n");
    EXPECT_EQ(err, "dnode: $S511\nno file (0): mandatory element <vda.$S511.customer> missing\n");
    EXPECT_EQ(ediprot::errcnt, 0);
    freedatatree(data);
    freedatatree(cf);
}

TEST(Vdawrite, S519InTheConfigurationIsWrittenAndCountedBesideTheTrailer)
{
    datatree_t *cf = rooted(node("vda", nullptr, {node("$S519", nullptr, {field("type", 3)})}));
    datatree_t *data = rooted(node("vda", nullptr, {node("$S519", nullptr, {node("type", "519")})}));
    std::vector<std::string> lines = crlflines(write(data, cf));
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], "519");
    EXPECT_EQ(lines[1], trailer({0, 0, 0, 0, 0, 0, 2, 0}));
    freedatatree(data);
    freedatatree(cf);
}

TEST(Vdawrite, FileThatCannotBeOpenedGivesMinusOneAndNoFile)
{
    std::string fn = tempdir() + "/missing/out.vda";
    int rc = 0;
    std::string err = capture_stderr([&] {
        rc = vdawrite(nullptr, fn.data(), nullptr, nullptr, nullptr, nullptr, nullptr, 0);
    });
    EXPECT_EQ(rc, -1);
    EXPECT_EQ(err, fn + ": No such file or directory\nvdawrite error\n");
    EXPECT_FALSE(exists(fn));
}

TEST(Vdawrite, NullFileNameGivesMinusOne)
{
    int rc = 0;
    std::string err = capture_stderr([&] {
        rc = vdawrite(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, 0);
    });
    EXPECT_EQ(rc, -1);
    EXPECT_EQ(err, "vdawrite: Invalid argument\nvdawrite error\n");
}

// A file-size limit makes the writes fail as a full disk would; the child
// ignores SIGXFSZ so that the failure shows as a write error.  Its stderr
// goes through a pipe, which the limit does not touch.
TEST(Vdawrite, FailedWriteGivesMinusOneAMessageAndNoFile)
{
    std::string dir = tempdir();
    std::string fn = dir + "/out.vda";
    int pfd[2];
    ASSERT_EQ(pipe(pfd), 0);
    datatree_t *cf = config511();
    datatree_t *data = data511();
    fflush(nullptr);
    pid_t pid = fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        close(pfd[0]);
        dup2(pfd[1], 2);
        signal(SIGXFSZ, SIG_IGN);
        struct rlimit rl = {20, 20};
        setrlimit(RLIMIT_FSIZE, &rl);
        int rc = vdawrite(data, fn.data(), nullptr, nullptr, cf, nullptr, nullptr, 0);
        _exit(rc == -1 ? 0 : 1);
    }
    close(pfd[1]);
    std::string err;
    char chunk[256];
    for (ssize_t n; (n = ::read(pfd[0], chunk, sizeof chunk)) > 0;)
        err.append(chunk, static_cast<size_t>(n));
    close(pfd[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_FALSE(exists(fn));
    EXPECT_NE(err.find(fn + ": write failed\nvdawrite error\n"), std::string::npos) << err;
    freedatatree(data);
    freedatatree(cf);
}

}  // namespace
