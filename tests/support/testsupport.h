// Helpers shared by the test programs: building trees in code, files in a
// private temporary folder, and capturing stderr.
#ifndef EDIPROT_TESTSUPPORT_H
#define EDIPROT_TESTSUPPORT_H

#include <functional>
#include <initializer_list>
#include <string>

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

// stderr with the source line numbers of "%d: no sender" / "%d: no
// doctype" replaced by "N": they are line numbers of the reader's source.
std::string without_line_numbers(const std::string &err);

}  // namespace testsupport

#endif
