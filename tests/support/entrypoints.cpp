// The one wrapper of the test programs around the module's readers and
// writers (kept apart from testsupport.cpp: the ABI tests load the module
// at run time and do not link these).
#include <stdlib.h>
#include <sys/stat.h>

#include "testsupport.h"
#include "tree/tree.h"

namespace testsupport {

Read::~Read()
{
    if (tree != nullptr)
        freedatatree(tree);
    if (ev != nullptr) {
        free(ev->servconftag);
        free(ev);
    }
}

std::string Read::at(const char *path, const char *loop) const
{
    if (tree == nullptr)
        return "(none)";
    datatree_t *tp = ediprot::searchlooppath(path, loop, tree);
    return tp != nullptr && tp->data != nullptr ? tp->data : "(none)";
}

void readedifact(Read &r, const std::string &fn, datatree_t *cf)
{
    r.err = capture_stderr([&] {
        r.tree = edifactread(const_cast<char *>(fn.c_str()), &r.ev, cf, nullptr);
    });
}

void readvda(Read &r, const std::string &fn, datatree_t *cf)
{
    r.err = capture_stderr([&] {
        r.tree = vdaread(const_cast<char *>(fn.c_str()), nullptr, cf, nullptr);
    });
}

namespace {

// Runs `write` (which writes the file `out`), its stderr captured or not,
// and reads back what it left there.
Written written(const std::string &out, bool capture, const std::function<int()> &write)
{
    Written w;
    auto call = [&] { w.rc = write(); };
    if (capture)
        w.err = capture_stderr(call);
    else
        call();
    struct stat st;
    if (stat(out.c_str(), &st) == 0 && S_ISREG(st.st_mode))
        w.text = readfile(out);
    return w;
}

}  // namespace

Written writeedifact(datatree_t *tree, datatree_t *cf, std::string out, bool capture)
{
    if (out.empty())
        out = tempdir() + "/out.edi";
    char sender[] = "SENDER";
    char recipient[] = "RECIP";
    return written(out, capture, [&] {
        return edifactwrite(tree, const_cast<char *>(out.c_str()), nullptr, nullptr, cf, sender,
                            recipient, 0);
    });
}

Written writevda(datatree_t *tree, datatree_t *cf, std::string out, bool capture)
{
    if (out.empty())
        out = tempdir() + "/out.vda";
    return written(out, capture, [&] {
        return vdawrite(tree, const_cast<char *>(out.c_str()), nullptr, nullptr, cf, nullptr,
                        nullptr, 0);
    });
}

}  // namespace testsupport
