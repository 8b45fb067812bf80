// Helpers shared by the test programs: trees built in code, files in a
// private temporary folder, stderr captured, child processes, and the one
// wrapper around the module's readers and writers.
#ifndef EDIPROT_TESTSUPPORT_H
#define EDIPROT_TESTSUPPORT_H

#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ediprot.h"

namespace testsupport {

// A new node (calloc/strdup, so freedatatree releases it) with the given
// children linked in order.  data NULL means no value.
datatree_t *node(const char *name, const char *data = nullptr,
                 std::initializer_list<datatree_t *> kids = {});
// The same for a loop node with its number.
datatree_t *loopnode(const char *name, int loopcnt,
                     std::initializer_list<datatree_t *> kids = {});
// Links `kids` as the children of `parent` (after any it has) and returns it.
datatree_t *adopt(datatree_t *parent, std::initializer_list<datatree_t *> kids);
// Root with parent links set.
datatree_t *rooted(datatree_t *root);

// Parses the tree text format; fails the test on a malformed text.
datatree_t *parse(const std::string &text);
// The tree text of `tree` (its whole chain).
std::string dump(const datatree_t *tree);

// A fresh folder below the system's temporary folder, removed at exit.
std::string tempdir();
std::string writefile(const std::string &path, const std::string &bytes);
std::string readfile(const std::string &path);
bool exists(const std::string &path);

// The message segments of an EDIFACT interchange with the default
// terminator: the text between the end of UNB and the start of UNZ, or
// "<no interchange>" when the text has no UNB or UNZ.
std::string messagesegments(const std::string &text);

// Runs fn and returns what it wrote to stderr.
std::string capture_stderr(const std::function<void()> &fn);

// What a call run in a child process left behind: its exit status (the
// value fn returned, or 128 + the signal that ended it) and its stderr.
struct ChildRun {
    int status = -1;
    std::string err;
};

// Runs fn in a forked child whose stderr goes through a pipe.  With
// fsize_limit >= 0 the child may write files of at most that many bytes
// and ignores SIGXFSZ, so that a write beyond the limit fails as on a full
// disk.  In a leak-checking build the child checks for leaks before it
// exits (a leak ends it with a report on its stderr).
ChildRun run_in_child(const std::function<int()> &fn, long fsize_limit = -1);


// One call of a reader: what it returned and what it wrote to stderr.  The
// destructor releases the tree and the envelope.
struct Read {
    datatree_t *tree = nullptr;
    envelope_t *ev = nullptr;
    std::string err;
    Read() = default;
    Read(const Read &) = delete;
    Read &operator=(const Read &) = delete;
    ~Read();
    // data of the node at `path` under the loop numbers `loop`, or "(none)".
    std::string at(const char *path, const char *loop) const;
};
// edifactread / vdaread of the file `fn` with the configuration `cf`
// (NULL: the service configuration decides).
void readedifact(Read &r, const std::string &fn, datatree_t *cf);
void readvda(Read &r, const std::string &fn, datatree_t *cf);

// One call of a writer into `out` (by default a fresh temporary file): its
// result, stderr and the file's bytes ("" when it left none).  Without
// `capture` stderr is left alone (a child process on a full disk could not
// keep it in a file).
struct Written {
    int rc = 0;
    std::string err;
    std::string text;
};
// edifactwrite with sender SENDER and recipient RECIP; vdawrite.
Written writeedifact(datatree_t *tree, datatree_t *cf, std::string out = "", bool capture = true);
Written writevda(datatree_t *tree, datatree_t *cf, std::string out = "", bool capture = true);

// The chain `tp` on one line: name="data"{children} name ..., data only
// where it is not NULL; control bytes as \n, \r, \xHH.
std::string picture(const datatree_t *tp);
// Both chains have the same shape, names, strings (NULL apart from "") and
// numbers; line, file and links are not compared.
::testing::AssertionResult sametree(const datatree_t *a, const datatree_t *b);

// Runs `program` with `args` as a user would; `env` entries (NAME=VALUE)
// come before those of the test's own environment.  A sanitizer report on
// its stderr fails the test.
struct RunResult {
    int status = -1;  // exit status, or -1 when a signal ended it
    int signal = 0;
    std::string out, err;
};
RunResult runprogram(const std::string &program, const std::vector<std::string> &args,
                     const std::vector<std::string> &env = {});

}  // namespace testsupport

#endif
