// edi read -j: several processes over a folder, the summary, and the
// progress line that only a terminal gets.
#include <fcntl.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

#include <gtest/gtest.h>

#include "testsupport.h"

using namespace testsupport;

namespace {

testsupport::RunResult runedi(const std::vector<std::string> &args,
                              const std::vector<std::string> &env = {})
{
    return testsupport::runprogram(EDI_PROGRAM, args, env);
}

const std::string kConfig = EDIPROT_CONFIGS "/orders-d96a-in.tree";

// Three inputs, the middle one refused by the module.
std::string batchfolder()
{
    std::string dir = tempdir() + "/in";
    std::filesystem::create_directory(dir);
    std::string orders = readfile(EDIPROT_SAMPLES "/orders-d96a.edi");
    writefile(dir + "/a.edi", orders);
    writefile(dir + "/b.edi", "UNB+UNOC:3++R:14+240830:1015+X'UNH+1+ORDERS:D:96A:UN'UNZ+1+X'");
    writefile(dir + "/c.edi", orders);
    return dir;
}

TEST(EdiBatch, ReadsAFolderInProcessesAndSummarisesTheFailures)
{
    std::string in = batchfolder();
    std::string par = tempdir(), seq = tempdir();
    testsupport::RunResult r = runedi({"read", in, "-j", "2", "--config", kConfig, "-o", par});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out, "");
    // The failed input's own lines come first, then the summary.
    std::string tail = in + "/b.edi: failed: the UNB has no sender identification";
    EXPECT_NE(r.err.find(in + "/b.edi: 155: no sender\n"), std::string::npos) << r.err;
    EXPECT_NE(r.err.find(tail), std::string::npos) << r.err;
    std::string summary = "\nedi: 3 files: 2 read, 1 failed\n";
    EXPECT_EQ(r.err.substr(r.err.size() - summary.size()), summary) << r.err;
    EXPECT_EQ(r.err.find("\r"), std::string::npos) << "progress line without a terminal";

    // The same results as one process reading them in turn.
    r = runedi({"read", in, "--config", kConfig, "-o", seq});
    EXPECT_EQ(r.status, 1);
    for (const char *name : {"a.edi.tree", "c.edi.tree"}) {
        ASSERT_TRUE(exists(par + "/" + name)) << name;
        EXPECT_EQ(readfile(par + "/" + name), readfile(seq + "/" + name)) << name;
    }
    EXPECT_FALSE(exists(par + "/b.edi.tree"));
}

// stderr on a terminal: the progress line is redrawn in place.
TEST(EdiBatch, ShowsProgressOnATerminal)
{
    std::string in = batchfolder();
    int master = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_GE(master, 0);
    ASSERT_EQ(grantpt(master), 0);
    ASSERT_EQ(unlockpt(master), 0);
    std::string slave = ptsname(master);
    std::string out = tempdir();
    pid_t pid = fork();
    if (pid == 0) {
        int fd = open(slave.c_str(), O_RDWR);
        dup2(fd, 2);
        execl(EDI_PROGRAM, EDI_PROGRAM, "read", in.c_str(), "-j", "3", "--config",
              kConfig.c_str(), "-o", out.c_str(), static_cast<char *>(nullptr));
        _exit(127);
    }
    std::string seen;
    char buf[4096];
    ssize_t n;
    while ((n = read(master, buf, sizeof buf)) > 0)
        seen.append(buf, n);
    int ws = 0;
    waitpid(pid, &ws, 0);
    close(master);
    EXPECT_EQ(WEXITSTATUS(ws), 1);
    EXPECT_NE(seen.find("\r\033[Kedi: 3/3 done, 2 read, 1 failed"), std::string::npos) << seen;
    EXPECT_NE(seen.find("edi: 3 files: 2 read, 1 failed"), std::string::npos) << seen;
}

}  // namespace
