#include "configwalk.h"

#include <string.h>

#include <string>
#include <vector>

#include "../state.h"
#include "tree.h"

namespace ediprot {

namespace {

size_t digits(int i)
{
    size_t n = 1;
    for (; i >= 10; i /= 10)
        n++;
    return n;
}

// The walk that looks every loop instance up from the root, by the loop
// node's path and the loop string; with trace lines.
int plainwalk(const walkformat &fmt, FILE *fp, datatree_t *head, datatree_t *outcf,
              const char *loop)
{
    if (outcf == nullptr)
        return 0;
    if (fmt.tracestart != nullptr)
        fmt.tracestart(outcf, loop);

    // The loop string of this level.  Loop strings are short, so it lives
    // inside the string object (no allocation per call), and it takes no
    // stack of its own size at any depth.
    std::string lb;
    int counter = 0;
    const PathScope plain;
    for (datatree_t *tp = outcf; tp != nullptr; tp = tp->next) {
        lb.assign(loop);
        if (fmt.tracenode != nullptr)
            fmt.tracenode(tp);
        if (tp->xmltag[0] == '*') {
            int i = fmt.onecounter ? counter : 0;
            for (;;) {
                i++;
                lb.assign(loop);
                if (loop[0] != '\0')
                    lb += '.';
                lb += std::to_string(i);
                // A loop string that no longer fits would stop changing
                // with i and so never end the loop.
                if (lb.size() >= static_cast<size_t>(kTextMax)) {
                    if (fmt.toolong != nullptr)
                        fmt.toolong(tp);
                    break;
                }
                char *path = pathfornode(tp, 0);
                datatree_t *xnode = searchloopinstance(path, lb.c_str(), head, tp->xmltag);
                if (fmt.tracesearch != nullptr)
                    fmt.tracesearch(path, lb.c_str(), xnode);
                if (xnode == nullptr)
                    break;
                if (fmt.tracefound != nullptr)
                    fmt.tracefound(tp, lb.c_str(), xnode);
                plainwalk(fmt, fp, head, tp->child, lb.c_str());
            }
            if (fmt.onecounter)
                counter = i;
        } else if (tp->xmltag[0] == '$') {
            fmt.writetag(fp, head, tp, LoopString(lb.c_str()), plain);
        } else if (tp->child != nullptr) {
            plainwalk(fmt, fp, head, tp->child, lb.c_str());
        }
    }
    return 0;
}

// The same walk through scopes (tree/pathscope.h), which gives the same
// instances and values; the loop string is kept as its numbers and its
// length, and made as text only for a part that goes the plain way.  No
// trace is on (rootscope), so the trace functions would write nothing and
// are not called.
struct ScopeWalk {
    const walkformat &fmt;
    FILE *fp;
    datatree_t *head;
    std::vector<int> numbers;  // the loop string
    size_t length = 0;         // ... as text

    // The chain from `outcf` whose paths go on below `scope`.
    void chain(datatree_t *outcf, const PathScope &scope)
    {
        int counter = 0;
        for (datatree_t *tp = outcf; tp != nullptr; tp = tp->next) {
            if (tp->xmltag[0] == '*') {
                int i = fmt.onecounter ? counter : 0;
                for (;;) {
                    i++;
                    const size_t len = length + (numbers.empty() ? 0 : 1) + digits(i);
                    if (len >= static_cast<size_t>(kTextMax)) {
                        if (fmt.toolong != nullptr)
                            fmt.toolong(tp);
                        break;
                    }
                    // searchloopinstance: the whole path matched, down to
                    // a loop node of the same name.
                    PathStep st = pathstep(scope, tp->xmltag, i);
                    if (st.found == nullptr || st.complete == 0 || st.found->xmltag[0] != '*' ||
                        strcmp(st.found->xmltag, tp->xmltag) != 0)
                        break;
                    prefetchsibling(st.found);
                    const size_t saved = length;
                    numbers.push_back(i);
                    length = len;
                    below(tp->child, st.inner);
                    numbers.pop_back();
                    length = saved;
                }
                if (fmt.onecounter)
                    counter = i;
            } else if (tp->xmltag[0] == '$') {
                fmt.writetag(fp, head, tp, LoopString(numbers), pathstep(scope, tp->xmltag, 0).inner);
            } else if (tp->child != nullptr) {
                below(tp->child, pathstep(scope, tp->xmltag, 0).inner);
            }
        }
    }

    void below(datatree_t *outcf, const PathScope &inner)
    {
        if (inner.kind != PathScope::plain) {
            chain(outcf, inner);
            return;
        }
        LoopString loop(numbers);
        plainwalk(fmt, fp, head, outcf, loop.c_str());
    }
};

}  // namespace

int configwalk(const walkformat &fmt, FILE *fp, datatree_t *head, datatree_t *outcf,
               const char *loop)
{
    const PathScope scope = rootscope(head, outcf, loop);
    if (scope.kind == PathScope::plain)
        return plainwalk(fmt, fp, head, outcf, loop);
    ScopeWalk walk{fmt, fp, head, {}, 0};
    walk.chain(outcf, scope);
    return 0;
}

}  // namespace ediprot
