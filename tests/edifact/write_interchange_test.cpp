// edifactwrite: the interchange around the messages, its failures, and a
// file that must end exactly at its last terminator.
#include <gtest/gtest.h>

#include <signal.h>
#include <string.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <regex>
#include <string>

#include "internal.h"
#include "testsupport.h"

using namespace testsupport;

namespace {

datatree_t *el(const char *name, const char *defval = nullptr, const char *deffunc = nullptr)
{
    datatree_t *e = node(name);
    e->edimaxlen = 35;
    if (defval != nullptr)
        e->defval = strdup(defval);
    if (deffunc != nullptr)
        e->deffunc = strdup(deffunc);
    return e;
}

// One message: UNH with a running number, BGM from the data tree, UNT.
datatree_t *messageconfig()
{
    return rooted(node("edi", nullptr, {node("ORDERS", nullptr, {
        node("$UNH", nullptr, {el("0062", nullptr, "unhcnt"),
                               node("S009", nullptr, {el("0065", "ORDERS"), el("0052", "D"),
                                                      el("0054", "96A"), el("0051", "UN")})}),
        node("$BGM", nullptr, {el("1004")}),
        node("$UNT", nullptr, {el("0074", nullptr, "seccnt"), el("0062", "1")}),
    })}));
}

datatree_t *messagedata(const char *docno)
{
    return rooted(node("edi", nullptr, {node("ORDERS", nullptr, {
        node("$BGM", nullptr, {node("1004", docno)})})}));
}

// YYMMDD:HHMM of the local time `t`.
std::string stamp(time_t t)
{
    struct tm tmv;
    localtime_r(&t, &tmv);
    char buf[32];
    strftime(buf, sizeof buf, "%y%m%d:%H%M", &tmv);
    return buf;
}

struct Call {
    int rc = 0;
    std::string err;
};

Call write(datatree_t *tree, const std::string &out, datatree_t *cf, const char *sender,
           const char *recipient, int editest = 0)
{
    std::string s = sender != nullptr ? sender : "";
    std::string r = recipient != nullptr ? recipient : "";
    Call c;
    c.err = capture_stderr([&] {
        c.rc = edifactwrite(tree, const_cast<char *>(out.c_str()), nullptr, nullptr, cf,
                            sender != nullptr ? s.data() : nullptr,
                            recipient != nullptr ? r.data() : nullptr, editest);
    });
    return c;
}

TEST(Edifactwrite, WritesTheInterchangeAroundTheMessage)
{
    datatree_t *cf = messageconfig();
    datatree_t *data = messagedata("PO-1");
    std::string out = tempdir() + "/out.edi";
    time_t before = time(nullptr);
    Call c = write(data, out, cf, "ABC", "XYZ");
    time_t after = time(nullptr);
    EXPECT_EQ(c.rc, 0);
    EXPECT_EQ(c.err, "");
    std::string text = readfile(out);
    std::smatch m;
    ASSERT_TRUE(std::regex_match(text, m, std::regex(
        R"(UNA:\+\.\? 'UNB\+UNOB:2\+ABC:14\+XYZ:14\+(\d{6}:\d{4})\+4711')"
        R"(UNH\+1\+ORDERS:D:96A:UN'BGM\+PO-1'UNT\+4\+1'UNZ\+000001\+4711')")))
        << text;
    EXPECT_TRUE(m[1] == stamp(before) || m[1] == stamp(after)) << m[1];
    freedatatree(cf);
    freedatatree(data);
}

TEST(Edifactwrite, MarksATestInterchangeInUnb)
{
    std::string out = tempdir() + "/out.edi";
    Call c = write(nullptr, out, nullptr, "S", "R", 1);
    EXPECT_EQ(c.rc, 0);
    EXPECT_TRUE(std::regex_match(readfile(out), std::regex(
        R"(UNA:\+\.\? 'UNB\+UNOB:2\+S:14\+R:14\+\d{6}:\d{4}\+4711\+\+\+\+\+\+1'UNZ\+000001\+4711')")))
        << readfile(out);
}

TEST(Edifactwrite, CutsSenderAndRecipientTo35InTheCallersBuffers)
{
    std::string s36(36, 'S');
    std::string r35(35, 'R');
    std::string out = tempdir() + "/out.edi";
    int rc = edifactwrite(nullptr, const_cast<char *>(out.c_str()), nullptr, nullptr, nullptr,
                          s36.data(), r35.data(), 0);
    EXPECT_EQ(rc, 0);
    EXPECT_EQ(strlen(s36.c_str()), 35u);
    EXPECT_EQ(strlen(r35.c_str()), 35u);
    std::string text = readfile(out);
    EXPECT_NE(text.find("+" + std::string(35, 'S') + ":14+" + std::string(35, 'R') + ":14+"),
              std::string::npos) << text;
}

TEST(Edifactwrite, WritesWithDefaultSeparatorsWhateverWasReadBefore)
{
    seg_sep = '~';
    dst_sep = '*';
    cmp_sep = '=';
    escape = '\\';
    float_sep = ',';
    std::string out = tempdir() + "/out.edi";
    Call c = write(nullptr, out, nullptr, "A+B:C", "XYZ");
    EXPECT_EQ(c.rc, 0);
    EXPECT_EQ(readfile(out).substr(0, 32), "UNA:+.? 'UNB+UNOB:2+A+B:C:14+XYZ");
    EXPECT_EQ(std::string() + seg_sep + dst_sep + cmp_sep + escape + float_sep, "'+:?,");
}

TEST(Edifactwrite, NumbersMessagesFromOneInEachFileAndAlwaysCountsOneMessage)
{
    datatree_t *cf = messageconfig();
    // Two messages: the message level as a loop with two instances.
    free(cf->child->xmltag);
    cf->child->xmltag = strdup("*MSG");
    datatree_t *data = rooted(node("edi", nullptr, {
        loopnode("*MSG", 1, {node("$BGM", nullptr, {node("1004", "A")})}),
        loopnode("*MSG", 2, {node("$BGM", nullptr, {node("1004", "B")})}),
    }));
    for (int round = 0; round < 2; round++) {
        std::string out = tempdir() + "/out.edi";
        Call c = write(data, out, cf, "S", "R");
        EXPECT_EQ(c.rc, 0);
        std::string text = readfile(out);
        EXPECT_NE(text.find("UNH+1+ORDERS:D:96A:UN'BGM+A'UNT+4+1'"
                            "UNH+2+ORDERS:D:96A:UN'BGM+B'UNT+4+1'UNZ+000001+4711'"),
                  std::string::npos) << text;
    }
    freedatatree(cf);
    freedatatree(data);
}

TEST(Edifactwrite, EndsTheFileAtItsLastTerminator)
{
    // The last tag node is written and then taken back whole: its text is
    // longer than UNZ, and none of it may stay behind UNZ.
    datatree_t *cf = rooted(node("edi", nullptr, {
        node("$BGM", nullptr, {el("1004", "X")}),
        node("$FTX", nullptr, {el("4451", std::string(60, 'Q').c_str())}),
    }));
    cf->child->next->child->edidata = ed_opt;
    std::string out = tempdir() + "/out.edi";
    Call c = write(nullptr, out, cf, "S", "R");
    EXPECT_EQ(c.rc, 0);
    std::string text = readfile(out);
    ASSERT_GE(text.size(), 16u);
    EXPECT_EQ(text.substr(text.size() - 22), "BGM+X'UNZ+000001+4711'");
    EXPECT_EQ(text.find('Q'), std::string::npos) << text;
    freedatatree(cf);
}

struct FailCase {
    const char *what;
    const char *sender;
    const char *recipient;
    bool mandatory_missing;
    bool bad_folder;
};

TEST(Edifactwrite, FailsWithItsMessageAndLeavesNoFile)
{
    const FailCase cases[] = {
        {"no sender", nullptr, "R", false, false},
        {"no recipient", "S", nullptr, false, false},
        {"cannot open", "S", "R", false, true},
        {"mandatory missing", "S", "R", true, false},
    };
    for (const FailCase &fc : cases) {
        std::string dir = tempdir();
        std::string out = fc.bad_folder ? dir + "/none/out.edi" : dir + "/out.edi";
        if (!fc.bad_folder)
            writefile(out, "old file");
        datatree_t *cf = messageconfig();
        datatree_t *bgm = cf->child->child->next->child;
        bgm->ediforce = fc.mandatory_missing ? ef_mand : ef_none;
        bgm->line = 7;
        Call c = write(nullptr, out, cf, fc.sender, fc.recipient);
        EXPECT_EQ(c.rc, -1) << fc.what;
        EXPECT_FALSE(exists(out)) << fc.what;
        std::string expected;
        if (fc.sender == nullptr || fc.recipient == nullptr)
            expected = "sender or recipient missing\n";
        else if (fc.bad_folder)
            expected = out + ": No such file or directory\n";
        else
            expected = "no file (7): mandatory element <edi.ORDERS.$BGM.1004> missing\n"
                       "editraverse failed, rc 0\n";
        EXPECT_EQ(c.err, expected) << fc.what;
        freedatatree(cf);
    }
}

TEST(Edifactwrite, RefusesAMissingFileName)
{
    char s[] = "S";
    char r[] = "R";
    std::string err;
    int rc = 0;
    err = capture_stderr([&] {
        rc = edifactwrite(nullptr, nullptr, nullptr, nullptr, nullptr, s, r, 0);
    });
    EXPECT_EQ(rc, -1);
    EXPECT_EQ(err, "output file name missing\n");
}

// A file-size limit makes the writes fail as a full disk would.  The call
// runs in a child process so that the limit binds nothing else.
TEST(Edifactwrite, FailedWriteRemovesTheFile)
{
    std::string out = tempdir() + "/out.edi";
    int errpipe[2];
    ASSERT_EQ(pipe(errpipe), 0);
    pid_t pid = fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        close(errpipe[0]);
        dup2(errpipe[1], 2);
        signal(SIGXFSZ, SIG_IGN);
        struct rlimit lim = {100, 100};
        setrlimit(RLIMIT_FSIZE, &lim);
        datatree_t *cf = rooted(node("edi", nullptr, {
            node("$FTX", nullptr, {el("4440", std::string(35, 'T').c_str())}),
            node("$FTX", nullptr, {el("4440", std::string(35, 'U').c_str())}),
        }));
        char s[] = "SENDER";
        char r[] = "RECIPIENT";
        int rc = edifactwrite(nullptr, const_cast<char *>(out.c_str()), nullptr, nullptr, cf,
                              s, r, 0);
        fflush(stderr);
        _exit(rc == -1 ? 0 : 1);
    }
    close(errpipe[1]);
    std::string err;
    char buf[256];
    ssize_t n;
    while ((n = read(errpipe[0], buf, sizeof buf)) > 0)
        err.append(buf, static_cast<size_t>(n));
    close(errpipe[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0) << "edifactwrite did not return -1";
    EXPECT_EQ(err, out + ": write failed\n");
    EXPECT_FALSE(exists(out));
}

}  // namespace
