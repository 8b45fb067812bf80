// searchlooppath: the lookup of the output side.  For the element of a
// configuration tree that a writer is at, it finds the node of the same
// path in the data tree, in the loop occurrence the loop string names.
//
// Rules that the writers rely on: names compare exactly; a loop node ('*')
// consumes the first number of the loop string and must carry it as
// loopcnt; a node without children ends the search successfully even when
// components remain; a failed descent backs out to the next sibling.
// Path and loop string are walked in place, so any length is handled.
//
// While the writers' loop index is active, a long chain is searched through
// it (only the matching siblings, in chain order); with trace level 3 on,
// the plain walk runs so that its trace lines appear as always.
#include <stdlib.h>
#include <string.h>

#include "../debug.h"
#include "loopindex.h"
#include "tree.h"

namespace ediprot {

namespace {

// The indexed search: same answers as the plain walk, without its traces.
datatree_t *indexedsearch(const char *path, const char *loop, datatree_t *tree,
                          int *complete)
{
    const char *dot = strchr(path, '.');
    size_t n = dot != nullptr ? static_cast<size_t>(dot - path) : strlen(path);
    bool isloop = n > 0 && path[0] == '*';
    long lct = isloop ? strtol(loop, nullptr, 10) : 0;
    const char *lp = loop;
    if (isloop) {
        const char *ldot = strchr(loop, '.');
        lp = ldot != nullptr ? ldot + 1 : "";
    }
    const char *pp = dot != nullptr ? dot + 1 : "";

    // One candidate: a sibling whose name (and loop number) matched.
    auto visit = [&](datatree_t *tp) -> datatree_t * {
        if (tp->child != nullptr && dot != nullptr)
            return indexedsearch(pp, lp, tp->child, complete);
        if (complete != nullptr)
            *complete = dot == nullptr;
        return tp;
    };

    std::span<datatree_t *const> cands;
    if (loopindex_find(tree, path, n, lct, &cands)) {
        for (datatree_t *tp : cands)
            if (datatree_t *found = visit(tp))
                return found;
        return nullptr;
    }
    for (datatree_t *tp = tree; tp != nullptr; tp = tp->next) {
        if (strlen(tp->xmltag) != n || strncmp(tp->xmltag, path, n) != 0)
            continue;
        if (isloop && lct != tp->loopcnt)
            continue;
        if (datatree_t *found = visit(tp))
            return found;
    }
    return nullptr;
}

}  // namespace

datatree_t *searchlooppath(const char *path, const char *loop,
                           datatree_t *tree, int *complete)
{
    if (!trace_on(3) && !trace_low_on(3) && loopindex_active())
        return indexedsearch(path, loop, tree, complete);

    const char *dot = strchr(path, '.');
    size_t n = dot != nullptr ? static_cast<size_t>(dot - path) : strlen(path);

    for (datatree_t *tp = tree; tp != nullptr; tp = tp->next) {
        TRACE(3, "searchlooppath: path <%s>, tb <%.*s>, loop <%s>, tag <%s>\n",
              path, static_cast<int>(n), path, loop, tp->xmltag);
        if (strlen(tp->xmltag) != n || strncmp(tp->xmltag, path, n) != 0) {
            TRACE(3, "searchlooppath: skip tag <%s>\n", tp->xmltag);
            continue;
        }

        const char *lp = loop;
        if (tp->xmltag[0] == '*') {
            // strtol stops at the '.', so this reads the first number only.
            long lct = strtol(loop, nullptr, 10);
            TRACE(3, "loopcnt %s: %d, lct %ld\n", tp->xmltag, tp->loopcnt, lct);
            if (lct != tp->loopcnt)
                continue;
            const char *ldot = strchr(loop, '.');
            lp = ldot != nullptr ? ldot + 1 : "";
        }

        // At the last component nothing is left of the path: the trace
        // line then shows an empty text.
        const char *pp = dot != nullptr ? dot + 1 : "";
        TRACE(3, "searchlooppath: new path <%s>\n", pp);

        if (tp->child != nullptr && dot != nullptr) {
            datatree_t *found = searchlooppath(pp, lp, tp->child, complete);
            if (found != nullptr)
                return found;
            continue;
        }
        TRACE_LOW(3, "return this: <%s>\n", tp->xmltag);
        if (complete != nullptr)
            *complete = dot == nullptr;
        return tp;
    }
    return nullptr;
}

}  // namespace ediprot
