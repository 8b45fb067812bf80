// The record writer: the configuration walk (tree/configwalk) with one
// line for every record tag node that has a node in the data tree, and the
// record counters that the trailer prints.
#include <stdio.h>
#include <string.h>

#include "../convert/convert.h"
#include "../debug.h"
#include "../tree/configwalk.h"
#include "../tree/tree.h"
#include "vda.h"

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

namespace {

void toolong(const datatree_t *loopnode)
{
    fprintf(stderr, "vdatraverse: loop string too long at <%s>\n", loopnode->xmltag);
}

void tracestart(const datatree_t *outcf, const char *loop)
{
    TRACE(1, "vdatraverse start <%s> loop <%s>\n", outcf->xmltag, loop);
}

void tracenode(const datatree_t *tp)
{
    TRACE(1, "vdatraverse tag: <%s>, next <%s>\n", tp->xmltag,
          tp->next != nullptr ? tp->next->xmltag : "no next");
}

void tracesearch(const char *path, const char *lb, const datatree_t *xnode)
{
    TRACE(1, "vdatraverse: path <%s>\n", path != nullptr ? path : "(null)");
    if (xnode == nullptr)
        TRACE(1, "no node: lb <%s>\n", lb);
}

void tracefound(const datatree_t *tp, const char *lb, const datatree_t *xnode)
{
    TRACE(2, "vdatraverse <%s> loop <%s>, xnode %p, name <%s>\n", tp->xmltag, lb,
          static_cast<const void *>(xnode), xnode->xmltag);
}

// A record looks its node and fields up from the root.
void writerecord(FILE *fp, datatree_t *head, datatree_t *tag, const LoopString &loop,
                 const PathScope &)
{
    writevdarecord(fp, head, tag, loop.c_str());
}

// Each loop node counts its instances from 1, until the data tree has no
// loop node of its own for the next number.
const walkformat vdawalk = {writerecord, false, toolong, tracestart, tracenode, tracesearch,
                            tracefound};

}  // namespace

int vdatraverse(FILE *fp, datatree_t *head, datatree_t *outcf, const char *loop)
{
    return configwalk(vdawalk, fp, head, outcf, loop);
}

}  // namespace ediprot
