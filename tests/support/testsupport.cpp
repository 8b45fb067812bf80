#include "testsupport.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "edihost.h"

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

namespace testsupport {

datatree_t *adopt(datatree_t *parent, std::initializer_list<datatree_t *> kids)
{
    datatree_t **tpp = &parent->child;
    while (*tpp != nullptr)
        tpp = &(*tpp)->next;
    for (datatree_t *kid : kids) {
        *tpp = kid;
        tpp = &kid->next;
    }
    return parent;
}

datatree_t *node(const char *name, const char *data,
                 std::initializer_list<datatree_t *> kids)
{
    auto *tp = static_cast<datatree_t *>(calloc(1, sizeof(datatree_t)));
    tp->xmltag = strdup(name);
    tp->data = data != nullptr ? strdup(data) : nullptr;
    return adopt(tp, kids);
}

datatree_t *loopnode(const char *name, int loopcnt,
                     std::initializer_list<datatree_t *> kids)
{
    datatree_t *tp = node(name, nullptr, kids);
    tp->loopcnt = loopcnt;
    return tp;
}

datatree_t *rooted(datatree_t *root)
{
    setparents(root, 0);
    return root;
}

datatree_t *parse(const std::string &text)
{
    datatree_t *tree = edihost_parsetree(text.data(), text.size(), "test");
    EXPECT_NE(tree, nullptr) << "tree text did not parse:\n" << text;
    return tree;
}

std::string dump(const datatree_t *tree)
{
    char *buf = nullptr;
    size_t len = 0;
    FILE *fp = open_memstream(&buf, &len);
    edihost_writetree(fp, tree);
    fclose(fp);
    std::string out(buf, len);
    free(buf);
    return out;
}

namespace {
struct TempRoot {
    std::string path;
    ~TempRoot()
    {
        if (!path.empty()) {
            std::error_code ec;
            std::filesystem::remove_all(path, ec);
        }
    }
};
TempRoot temproot;
}  // namespace

std::string tempdir()
{
    if (temproot.path.empty()) {
        std::string tmpl = (std::filesystem::temp_directory_path() / "ediprot-test-XXXXXX").string();
        char *made = mkdtemp(tmpl.data());
        EXPECT_NE(made, nullptr);
        temproot.path = tmpl;
    }
    static int count = 0;
    std::string dir = temproot.path + "/" + std::to_string(++count);
    mkdir(dir.c_str(), 0700);
    return dir;
}

std::string writefile(const std::string &path, const std::string &bytes)
{
    std::ofstream out(path, std::ios::binary);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return path;
}

std::string readfile(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

bool exists(const std::string &path)
{
    struct stat st;
    return stat(path.c_str(), &st) == 0;
}

std::string messagesegments(const std::string &text)
{
    size_t unb = text.find("UNB+");
    size_t start = text.find('\'', unb);
    size_t unz = text.rfind("UNZ+");
    if (unb == std::string::npos || start == std::string::npos || unz == std::string::npos ||
        unz < start)
        return "<no interchange>";
    return text.substr(start + 1, unz - start - 1);
}

std::string capture_stderr(const std::function<void()> &fn)
{
    fflush(stderr);
    testing::internal::CaptureStderr();
    fn();
    fflush(stderr);
    return testing::internal::GetCapturedStderr();
}

ChildRun run_in_child(const std::function<int()> &fn, long fsize_limit)
{
    ChildRun run;
    int pfd[2];
    if (pipe(pfd) != 0) {
        ADD_FAILURE() << "pipe failed";
        return run;
    }
    fflush(nullptr);
    pid_t pid = fork();
    if (pid < 0) {
        ADD_FAILURE() << "fork failed";
        close(pfd[0]);
        close(pfd[1]);
        return run;
    }
    if (pid == 0) {
        close(pfd[0]);
        dup2(pfd[1], 2);
        close(pfd[1]);
        if (fsize_limit >= 0) {
            signal(SIGXFSZ, SIG_IGN);
            struct rlimit rl;
            rl.rlim_cur = static_cast<rlim_t>(fsize_limit);
            rl.rlim_max = static_cast<rlim_t>(fsize_limit);
            setrlimit(RLIMIT_FSIZE, &rl);
        }
        int rc = fn();
        fflush(nullptr);
#if defined(__SANITIZE_ADDRESS__)
        __lsan_do_leak_check();
#endif
        _exit(rc & 0x7f);
    }
    close(pfd[1]);
    char chunk[4096];
    for (ssize_t n; (n = read(pfd[0], chunk, sizeof chunk)) > 0;)
        run.err.append(chunk, static_cast<size_t>(n));
    close(pfd[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    if (WIFEXITED(status))
        run.status = WEXITSTATUS(status);
    else if (WIFSIGNALED(status))
        run.status = 128 + WTERMSIG(status);
    return run;
}

std::string without_line_numbers(const std::string &err)
{
    std::string out;
    size_t pos = 0;
    while (pos < err.size()) {
        size_t end = err.find('\n', pos);
        end = end == std::string::npos ? err.size() : end + 1;
        std::string line = err.substr(pos, end - pos);
        size_t digits = line.find_first_not_of("0123456789");
        if (digits > 0 && digits != std::string::npos && line.compare(digits, 5, ": no ") == 0)
            line = "N" + line.substr(digits);
        out += line;
        pos = end;
    }
    return out;
}

}  // namespace testsupport
