// The tree writer: one line per node, two blanks of indentation per level,
// the name and then every field that is not 0 or NULL.  Also printdata,
// the dump service of the module, which writes through it.
#include <stdio.h>
#include <string.h>

#include <new>
#include <string>
#include <vector>

#include "edihost.h"
#include "treefields.h"
#include "treelex.h"

namespace edihost {
namespace {

void appendnode(std::string &out, const datatree_t *tp, size_t depth)
{
    out.assign(2 * depth, ' ');
    appendtoken(out, tp->xmltag != nullptr ? tp->xmltag : "", true);
    for (size_t i = 0; i < ntreefields; i++) {
        const treefield &fd = treefields[i];
        if (fd.kind == fieldkind::text) {
            const char *value = gettext(tp, fd);
            if (value == nullptr)
                continue;
            out += ' ';
            out += fd.key;
            out += '=';
            appendtoken(out, value, false);
            continue;
        }
        int value = getnumber(tp, fd);
        if (value == 0)
            continue;
        out += ' ';
        out += fd.key;
        out += '=';
        // A value outside the enumeration (only a host can put one there)
        // is shown as its number; reading it back reports it.
        int nwords = 0;
        if (fd.kind == fieldkind::word)
            while (fd.words[nwords] != nullptr)
                nwords++;
        if (value > 0 && value < nwords)
            out += fd.words[value];
        else
            out += std::to_string(value);
    }
    out += '\n';
}

// Pre-order walk with an explicit stack of the nodes above, so that any
// depth and any length of chain is written without recursion.
int writetree(FILE *fp, const datatree_t *tree)
{
    std::vector<const datatree_t *> above;
    std::string line;
    bool ok = true;
    const datatree_t *tp = tree;
    while (tp != nullptr) {
        appendnode(line, tp, above.size());
        if (fwrite(line.data(), 1, line.size(), fp) != line.size())
            ok = false;
        if (tp->child != nullptr) {
            above.push_back(tp);
            tp = tp->child;
            continue;
        }
        while (tp->next == nullptr && !above.empty()) {
            tp = above.back();
            above.pop_back();
        }
        tp = tp->next;
    }
    if (fflush(fp) != 0 || ferror(fp))
        ok = false;
    return ok ? 0 : -1;
}

}  // namespace
}  // namespace edihost

extern "C" {

int edihost_writetree(FILE *fp, const datatree_t *tree)
{
    if (fp == nullptr)
        return -1;
    try {
        return edihost::writetree(fp, tree);
    } catch (const std::bad_alloc &) {
        edihost_outofmemory();
    }
    return -1;
}

// Dumps are trace output: nothing is written unless the top four bits of
// tracelevel are set, since the module calls this unguarded in places.
void printdata(datatree_t *tree, int flag, FILE *stream, int line)
{
    (void)flag;
    (void)line;
    if ((static_cast<unsigned>(tracelevel) >> 28) == 0 || stream == nullptr)
        return;
    if (tree == nullptr) {
        fputs("(null)\n", stream);
        return;
    }
    edihost_writetree(stream, tree);
}

}  // extern "C"
