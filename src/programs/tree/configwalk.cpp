#include "configwalk.h"

#include <string>

#include "../state.h"
#include "tree.h"

namespace ediprot {

int configwalk(const walkformat &fmt, FILE *fp, datatree_t *head, datatree_t *outcf,
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
                configwalk(fmt, fp, head, tp->child, lb.c_str());
            }
            if (fmt.onecounter)
                counter = i;
        } else if (tp->xmltag[0] == '$') {
            fmt.writetag(fp, head, tp, lb.c_str());
        } else if (tp->child != nullptr) {
            configwalk(fmt, fp, head, tp->child, lb.c_str());
        }
    }
    return 0;
}

}  // namespace ediprot
