#include "testsupport.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fcntl.h>
#include <spawn.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <utility>

#include "edihost.h"

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

extern char **environ;

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

}  // namespace testsupport

namespace testsupport {

namespace {

std::string quoted(const char *s)
{
    std::string out = "\"";
    for (const char *cp = s; *cp != '\0'; cp++) {
        unsigned char c = static_cast<unsigned char>(*cp);
        if (c == '\n') {
            out += "\\n";
        } else if (c == '\r') {
            out += "\\r";
        } else if (c < 0x20 || c >= 0x7f) {
            char hex[8];
            snprintf(hex, sizeof hex, "\\x%02x", c);
            out += hex;
        } else {
            out += static_cast<char>(c);
        }
    }
    return out + "\"";
}

}  // namespace

std::string picture(const datatree_t *tp)
{
    std::string out;
    for (; tp != nullptr; tp = tp->next) {
        if (!out.empty())
            out += " ";
        std::string name = quoted(tp->xmltag);
        out += name.substr(1, name.size() - 2);
        if (tp->data != nullptr)
            out += "=" + quoted(tp->data);
        if (tp->child != nullptr)
            out += "{" + picture(tp->child) + "}";
    }
    return out;
}

::testing::AssertionResult sametree(const datatree_t *a, const datatree_t *b)
{
    auto shown = [](const char *s) { return s == nullptr ? std::string("NULL") : "[" + std::string(s) + "]"; };
    std::vector<std::pair<const datatree_t *, const datatree_t *>> todo{{a, b}};
    size_t count = 0;
    while (!todo.empty()) {
        auto [x, y] = todo.back();
        todo.pop_back();
        if ((x == nullptr) != (y == nullptr))
            return ::testing::AssertionFailure() << "shape differs after " << count << " nodes";
        if (x == nullptr)
            continue;
        count++;
        const char *xs[] = {x->xmltag, x->data, x->defval, x->deffunc};
        const char *ys[] = {y->xmltag, y->data, y->defval, y->deffunc};
        for (int i = 0; i < 4; i++)
            if ((xs[i] == nullptr) != (ys[i] == nullptr) ||
                (xs[i] != nullptr && strcmp(xs[i], ys[i]) != 0))
                return ::testing::AssertionFailure() << "text field " << i << " of node " << count
                                                     << ": " << shown(xs[i]) << " vs " << shown(ys[i]);
        const int xn[] = {x->loopcnt, x->iseditag, x->type, x->edidata, x->edilen,
                          x->edimaxlen, x->editype, x->ediforce, x->edialign, x->valid};
        const int yn[] = {y->loopcnt, y->iseditag, y->type, y->edidata, y->edilen,
                          y->edimaxlen, y->editype, y->ediforce, y->edialign, y->valid};
        for (int i = 0; i < 10; i++)
            if (xn[i] != yn[i])
                return ::testing::AssertionFailure() << "number field " << i << " of node "
                                                     << count << ": " << xn[i] << " vs " << yn[i];
        todo.push_back({x->next, y->next});
        todo.push_back({x->child, y->child});
    }
    return ::testing::AssertionSuccess();
}

RunResult runprogram(const std::string &program, const std::vector<std::string> &args,
                     const std::vector<std::string> &env)
{
    std::string dir = tempdir();
    std::string outpath = dir + "/stdout", errpath = dir + "/stderr";
    posix_spawn_file_actions_t fa;
    posix_spawn_file_actions_init(&fa);
    posix_spawn_file_actions_addopen(&fa, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&fa, 1, outpath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_addopen(&fa, 2, errpath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    std::vector<std::string> argcopies{program};
    argcopies.insert(argcopies.end(), args.begin(), args.end());
    std::vector<char *> argv;
    for (std::string &a : argcopies)
        argv.push_back(a.data());
    argv.push_back(nullptr);
    std::vector<std::string> envcopies = env;
    std::vector<char *> envp;
    for (std::string &e : envcopies)
        envp.push_back(e.data());
    for (char **e = environ; *e != nullptr; e++)
        envp.push_back(*e);
    envp.push_back(nullptr);
    pid_t pid = 0;
    RunResult r;
    int rc = posix_spawn(&pid, program.c_str(), &fa, nullptr, argv.data(), envp.data());
    posix_spawn_file_actions_destroy(&fa);
    if (rc != 0) {
        ADD_FAILURE() << "cannot start " << program;
        return r;
    }
    int ws = 0;
    waitpid(pid, &ws, 0);
    if (WIFEXITED(ws))
        r.status = WEXITSTATUS(ws);
    else if (WIFSIGNALED(ws))
        r.signal = WTERMSIG(ws);
    r.out = readfile(outpath);
    r.err = readfile(errpath);
    // In the sanitizer build the program is instrumented too: a report of
    // its own fails the test whatever the exit status.
    for (const char *report : {"ERROR: AddressSanitizer", "ERROR: LeakSanitizer", "runtime error:"})
        if (r.err.find(report) != std::string::npos)
            ADD_FAILURE() << program << " reported a fault:\n" << r.err;
    return r;
}

}  // namespace testsupport
