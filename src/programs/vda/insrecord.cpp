// insrecord: hangs a record into the growing data tree at the place that
// the path of its configuration node names, creating and numbering the
// plain and loop nodes on the way.
#include <stdio.h>
#include <string.h>

#include "../debug.h"
#include "../state.h"
#include "../tree/tree.h"
#include "recordindex.h"
#include "vda.h"

namespace ediprot {

namespace {

// A path fits the data model when none of its elements is longer than a
// path element buffer holds and it has no more loop elements than there
// are loop counters left below depth `lvl`.  Says why on stderr if not.
bool pathfits(const char *path, int lvl)
{
    int nloops = 0;
    for (const char *cp = path; cp != nullptr;) {
        const char *dot = strchr(cp, '.');
        size_t n = dot != nullptr ? static_cast<size_t>(dot - cp) : strlen(cp);
        if (n > static_cast<size_t>(kPathElemMax - 1)) {
            fprintf(stderr, "insrecord: path element longer than %d characters in <%s>\n",
                    kPathElemMax - 1, path);
            return false;
        }
        if (cp[0] == '*')
            nloops++;
        cp = dot != nullptr ? dot + 1 : nullptr;
    }
    if (lvl + nloops > kLoopDepths) {
        fprintf(stderr, "insrecord: more than %d loops in path <%s>\n", kLoopDepths, path);
        return false;
    }
    return true;
}

}  // namespace

// Returns 0 when the record was linked into the tree and -1 when it was
// not; then nothing in the tree refers to it and it stays the caller's.
int insrecord(datatree_t **head, datatree_t *record, const char *path,
              int *loops, int lvl)
{
    if (path == nullptr) {
        fprintf(stderr, "insrecord: no path\n");
        return -1;
    }
    if (!pathfits(path, lvl))
        return -1;
    TRACE(2, "insrecord: lvl %d, path <%s>, head %p\n", lvl, path,
          static_cast<void *>(*head));

    char current[kPathElemMax] = {0};
    const char *dot = strchr(path, '.');
    const char *remain = dot != nullptr ? dot + 1 : nullptr;
    size_t n = dot != nullptr ? static_cast<size_t>(dot - path) : strlen(path);
    memcpy(current, path, n);
    const bool inloop = current[0] == '*';
    TRACE(2, "remain <%s>, current <%s>, lvl %d\n", remain != nullptr ? remain : "(null)",
          current, lvl);

    // Loop nodes: only the one that bears the current number of this depth
    // takes further records; any other node: the first of its name.
    // While vdaread's record index is active it knows where the walk stops.
    datatree_t **run = recordindex_find(head, current, inloop ? loops[lvl] : 0);
    if (run == nullptr) {
        run = head;
        while (*run != nullptr) {
            datatree_t *tp = *run;
            if (strcmp(tp->xmltag, current) == 0 && (!inloop || tp->loopcnt == loops[lvl]))
                break;
            run = &tp->next;
        }
    }

    if (*run == nullptr) {
        TRACE(2, "no run\n");
        if (current[0] == '$') {
            *run = record;
            recordindex_appended(head);
            TRACE(2, "add record <%s> as child of <%s>\n", record->xmltag, (*head)->xmltag);
            return 0;
        }
        TRACE(2, "new loop-tag: %s\n", current);
        datatree_t *tp = newnode();
        tp->xmltag = EDI_STRSAV(current);
        *run = tp;
        if (inloop) {
            loops[lvl]++;
            tp->loopcnt = loops[lvl];
            TRACE(2, "set loopcount %d at level %d\n", loops[lvl], lvl);
        }
        recordindex_appended(head);
    }
    if (inloop)
        lvl++;
    return insrecord(&(*run)->child, record, remain, loops, lvl);
}

}  // namespace ediprot

EDIPROT_API void printloops(int *loops)
{
    fprintf(stderr, "LOOPS: ");
    for (int i = 0; i < 5; i++)
        fprintf(stderr, "%d ", loops[i]);
    fprintf(stderr, "\n");
}
