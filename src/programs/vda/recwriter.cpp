// The record writer: walks a configuration tree and writes one line for
// every record tag node that has a node in the data tree, and keeps the
// record counters that the trailer prints.
#include <stdio.h>
#include <string.h>

#include <memory>

#include "../internal.h"

namespace ediprot {

void initrecs(void)
{
    for (vdarecs_t *rp = recs; rp->tag != nullptr; rp++)
        rp->cnt = 0;
}

void incrrecs(const char *tag)
{
    for (vdarecs_t *rp = recs; rp->tag != nullptr; rp++) {
        if (strcmp(rp->tag, tag) == 0) {
            rp->cnt++;
            return;
        }
    }
}

// The trailer: "51902", the counters in table order, zero-filled to their
// width (a wider number is written whole), 67 blanks and CR LF.
void writevda519(FILE *fp)
{
    fputs("51902", fp);
    for (vdarecs_t *rp = recs; rp->tag != nullptr; rp++) {
        char num[16];
        snprintf(num, sizeof num, "%d", rp->cnt);
        for (int i = static_cast<int>(strlen(num)); i < rp->len; i++)
            fputc('0', fp);
        fputs(num, fp);
    }
    fprintf(fp, "%67s", "");
    fputs("\r\n", fp);
}

void writevdarecord(FILE *fp, datatree_t *head, datatree_t *outcf, const char *loop)
{
    char *path = pathfornode(outcf, 0);
    TRACE(0, "writevdarecord: tp <%s>, loop <%s>\n", path != nullptr ? path : "(null)", loop);
    datatree_t *dnode = path != nullptr ? searchlooppath(path, loop, head) : nullptr;
    if (dnode == nullptr) {
        TRACE(1, "dnode: nil\n");
        return;
    }
    fprintf(stderr, "dnode: %s\n", dnode->xmltag);
    incrrecs(dnode->xmltag[0] != '\0' ? dnode->xmltag + 1 : dnode->xmltag);

    int len = 0;
    for (datatree_t *tp = outcf->child; tp != nullptr; tp = tp->next) {
        TRACE(0, "writevdarecord: no child\n");
        char *data = resolvevalue(tp, head, loop);
        TRACE(2, "have data: <%s>\n", data != nullptr ? data : "(null)");
        if (data == nullptr || data[0] == '\0') {
            const int width = tp->edilen > 0 ? tp->edilen : 0;
            TRACE(1, "edilen %d\n", tp->edilen);
            len += width;
            fprintf(fp, "%-*.*s", width, width, "");
        } else {
            char *conv = edinodeconvert(tp, data);
            const int n = static_cast<int>(strlen(conv));
            TRACE(2, "converted: %s <%s> %d\n", tp->xmltag, conv, n);
            len += n;
            fputs(conv, fp);
        }
    }
    fputs("\r\n", fp);
    TRACE(1, "len %d\n", len);
}

int vdatraverse(FILE *fp, datatree_t *head, datatree_t *outcf, const char *loop)
{
    if (outcf == nullptr)
        return 0;
    TRACE(1, "vdatraverse start <%s> loop <%s>\n", outcf->xmltag, loop);

    // The loop string lies on the heap: a buffer of this size in every
    // level of a deeply nested configuration would use up the stack.
    std::unique_ptr<char[]> lbuf(new char[kTextMax]);
    char *const lb = lbuf.get();
    const size_t lbsize = kTextMax;
    for (datatree_t *tp = outcf; tp != nullptr; tp = tp->next) {
        snprintf(lb, lbsize, "%s", loop);
        TRACE(1, "vdatraverse tag: <%s>, next <%s>\n", tp->xmltag,
              tp->next != nullptr ? tp->next->xmltag : "no next");
        if (tp->xmltag[0] == '*') {
            // Each loop node counts its instances from 1, until the data
            // tree has no loop node of its own for the next number.
            for (int i = 1;; i++) {
                int n = snprintf(lb, lbsize, "%s%s%d", loop, loop[0] != '\0' ? "." : "", i);
                if (n < 0 || static_cast<size_t>(n) >= lbsize) {
                    fprintf(stderr, "vdatraverse: loop string too long at <%s>\n", tp->xmltag);
                    break;
                }
                char *path = pathfornode(tp, 0);
                datatree_t *xnode = searchloopinstance(path, lb, head, tp->xmltag);
                TRACE(1, "vdatraverse: path <%s>\n", path != nullptr ? path : "(null)");
                if (xnode == nullptr) {
                    TRACE(1, "no node: lb <%s>\n", lb);
                    break;
                }
                TRACE(2, "vdatraverse <%s> loop <%s>, xnode %p, name <%s>\n", tp->xmltag, lb,
                      static_cast<void *>(xnode), xnode->xmltag);
                vdatraverse(fp, head, tp->child, lb);
            }
        } else if (tp->xmltag[0] == '$') {
            writevdarecord(fp, head, tp, lb);
        } else if (tp->child != nullptr) {
            vdatraverse(fp, head, tp->child, lb);
        }
    }
    return 0;
}

}  // namespace ediprot
