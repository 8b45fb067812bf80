// Interchange reader: one EDIFACT file into a data tree.  Reads all segments
// into a flat chain, regroups them by UNB / UNH / UNZ under "docs", finds the
// configuration by doctype and sender, fills one copy of it per message,
// prunes empty loops and numbers the loops that remain.
#include <stdlib.h>
#include <string.h>
#include <strings.h>

#include "../debug.h"
#include "../state.h"
#include "../tree/tree.h"
#include "edifact.h"

namespace ediprot {
namespace {

// Segment nodes that start a group under docs.
bool startsgroup(const datatree_t *dp)
{
    return strncasecmp(dp->xmltag, "$UNB", 4) == 0 ||
           strncasecmp(dp->xmltag, "$UNH", 4) == 0 ||
           strncasecmp(dp->xmltag, "$UNZ", 4) == 0;
}

// Settles the service characters from the first nine bytes and leaves fp at
// the first segment.  Returns 0, or -1 after its message.
int firststage(FILE *fp, const char *fn)
{
    char buf[128];

    seg_sep = '\'';
    dst_sep = '+';
    cmp_sep = ':';
    float_sep = '.';
    escape = '?';
    tagcnt = 0;

    if (fread(buf, 1, 9, fp) < 9) {
        fprintf(stderr, "%s is not an edi-file\n", fn);
        return -1;
    }
    buf[9] = '\0';
    if (strncmp(buf, "UNA", 3) == 0) {
        TRACE(2, "got UNA <%s>\n", buf);
        cmp_sep = buf[3];
        dst_sep = buf[4];
        float_sep = buf[5];
        escape = buf[6];
        seg_sep = buf[8];
        TRACE(2,
              "cmp_sep <%c>, dst_sep <%c>, float_sep <%c>, escape <%c>, "
              "seg_sep <%c>\n",
              cmp_sep, dst_sep, float_sep, escape, seg_sep);
        // A terminator with its high bit set could never end a segment:
        // the whole file would run into the segment limit.
        if (static_cast<unsigned char>(seg_sep) >= 0x80) {
            fprintf(stderr, "%s: segment terminator 0x%02x out of range\n", fn,
                    static_cast<unsigned char>(seg_sep));
            return -1;
        }
        return 0;
    }
    if (strncmp(buf, "UNB", 3) == 0) {
        TRACE(2, "got UNB <%s>\n", buf);
        if (fseek(fp, 0, SEEK_SET) != 0) {
            perror(fn);
            return -1;
        }
        return 0;
    }
    fprintf(stderr, "%s is not an edi-file\n", fn);
    return -1;
}

}  // namespace
}  // namespace ediprot

using namespace ediprot;

EDIPROT_API datatree_t *edifactread(char *fn, envelope_t **evpp,
                                    datatree_t *inhead, servconf_t *sc)
{
    (void)sc;
    FILE *fp = nullptr;
    datatree_t *tree = nullptr;
    datatree_t *docs = nullptr;
    datatree_t **drun = nullptr;
    datatree_t *lastp = nullptr;
    datatree_t *snode = nullptr;
    datatree_t *tnode = nullptr;
    envelope_t *ev = nullptr;
    servconf_t *curcf = nullptr;
    datatree_t *lochead = nullptr;
    datatree_t *cfroot = nullptr;
    datatree_t *head = nullptr, *lastmsg = nullptr;

    TRACE(2, "edifactread <%s>\n", fn);
    fp = tmpfopen(fn, const_cast<char *>("r"));
    if (fp == nullptr) {
        perror(fn);
        goto error;
    }

    if (firststage(fp, fn) < 0)
        goto error;
    tree = readseg(fp, fn);
    if (tree == nullptr)
        goto error;
    TRACE(2, "edifactread: after readseg\n");
    TRACE_DUMP(3, tree);

    // Regroup: a new group at every $UNB, $UNH and $UNZ.
    docs = newnode();
    docs->xmltag = EDI_STRSAV("docs");
    drun = &docs->child;
    for (datatree_t *dp = tree->child; dp != nullptr; dp = dp->next) {
        TRACE(2, "tag now <%s>, dp %p\n", dp->xmltag, static_cast<void *>(dp));
        if (startsgroup(dp)) {
            if (lastp != nullptr) {
                TRACE(2, "set last 0\n");
                lastp->next = nullptr;
            }
            datatree_t *gp = newnode();
            gp->xmltag = EDI_STRSAV("edi");
            gp->child = dp;
            *drun = gp;
            TRACE(2, "set child now <%s>\n", dp->xmltag);
            drun = &gp->next;
            TRACE(2, "go next\n");
        }
        lastp = dp;
    }
    TRACE_DUMP(3, docs);
    TRACE(2, "printtree: %p\n", static_cast<void *>(tree));
    TRACE_DUMP(3, tree);
    // The segments now belong to docs.  Segments in front of the first
    // group (possible behind a UNA) belong to no group: they stay below
    // tree, cut off from the first group, and go with it.
    if (docs->child != nullptr && docs->child->child == tree->child)
        tree->child = nullptr;
    freedatatree(tree);
    tree = nullptr;
    setparents(docs, 0);

    ev = static_cast<envelope_t *>(calloc(1, sizeof(envelope_t)));
    if (ev == nullptr) {
        fputs("ediprot: out of memory\n", stderr);
        abort();
    }

    // The key doctype_sender, from the first UNB and the UNH behind it, as
    // they stand in the file.  A configuration handed in needs no lookup.
    snode = searchtagval(docs, "docs.edi.$UNB001_D", 1, 0);
    if (snode == nullptr || snode->data == nullptr) {
        fprintf(stderr, "%d: no sender\n", __LINE__);
        goto error;
    }
    TRACE(2, "snode: %p\n", static_cast<void *>(snode));
    TRACE(2, "snode data: <%s>\n", snode->data);
    tnode = searchtagval(docs, "docs.edi.$UNH002_D", 1, 0);
    if (tnode == nullptr || tnode->data == nullptr) {
        fprintf(stderr, "%d: no doctype\n", __LINE__);
        goto error;
    }
    TRACE(2, "tnode: %p\n", static_cast<void *>(tnode));
    TRACE(2, "tnode data: <%s>\n", tnode->data);
    ev->servconftag = EDI_MSPRINTF("%s_%s", tnode->data, snode->data);
    TRACE(2, "servconftag <%s>\n", ev->servconftag);

    if (inhead == nullptr) {
        curcf = getservconf(ev->servconftag);
        if (curcf == nullptr) {
            fprintf(stderr, "config <%s> not found\n", ev->servconftag);
            goto error;
        }
        TRACE(2, "fromconffile: <%s>\n", curcf->fromconffile);
        lochead = readconfig(curcf->fromconffile, 0, srcname, __LINE__);
        if (lochead == nullptr) {
            fprintf(stderr, "readconfig <%s> failed\n", curcf->fromconffile);
            goto error;
        }
        cfroot = lochead;
    } else {
        cfroot = inhead;
    }

    // One filled copy of the configuration per message.
    resetfill();
    head = newnode();
    head->xmltag = EDI_STRSAV("edi");
    drun = &head->child;
    for (datatree_t *xxp = docs->child; xxp != nullptr; xxp = xxp->next) {
        if (strncasecmp(xxp->child->xmltag, "$UNH", 4) != 0)
            continue;
        TRACE(2, "edifactread: start copysubtree UNH\n");
        // Only the first copy of a configuration root with several
        // children is filled; the siblings that the previous message's
        // copy brought along make room for this message's copy.
        if (*drun != nullptr) {
            forgetheads(*drun);
            freedatatree(*drun);
            *drun = nullptr;
        }
        if (cfroot->child == nullptr) {
            fprintf(stderr, "edifactread: copysubtree failed\n");
            goto error;
        }
        *drun = lastmsg = fillmessage(cfroot->child, xxp->child);
        drun = &(*drun)->next;
        // The message's segments are in its copy now.  Unless the dump of
        // docs below is to show them, they go at once, so that the flat
        // chain and the result are never held whole at the same time.
        if (!trace_on(3)) {
            freedatatree(xxp->child->next);
            xxp->child->next = nullptr;
        }
    }
    TRACE_DUMP(3, docs);
    TRACE(2, "edifactread: before emptyloop\n");
    TRACE_DUMP(3, head);
    TRACE(2, "edifactread: before emptyloop end\n");

    linkheads(head, lastmsg);
    pruneheads(&head->child, keptdata);
    numberheads(cfroot->child, head->child);
    resetfill();
    TRACE(2, "edifactread: after emptyloop\n");
    TRACE_DUMP(3, head);
    TRACE(2, "edifactread: after emptyloop end\n");

    TRACE(2, "freedatatree: %p\n", static_cast<void *>(lochead));
    if (lochead != nullptr)
        freedatatree(lochead);
    TRACE_DUMP(3, head);
    TRACE_DUMP(3, docs);
    TRACE(2, "freedatatree: %p\n", static_cast<void *>(docs));
    freedatatree(docs);
    // The segments are gone; nothing may point at them any more.
    xdata = nullptr;
    fclose(fp);

    *evpp = ev;
    TRACE(2, "edifactread ok: *evpp %p, head %p\n", static_cast<void *>(*evpp),
          static_cast<void *>(head));
    return head;

error:
    if (fp != nullptr)
        fclose(fp);
    TRACE(2, "freedatatree: %p\n", static_cast<void *>(lochead));
    if (lochead != nullptr)
        freedatatree(lochead);
    if (docs != nullptr) {
        TRACE(2, "freedatatree: %p\n", static_cast<void *>(docs));
        freedatatree(docs);
    }
    if (tree != nullptr)
        freedatatree(tree);
    if (head != nullptr)
        freedatatree(head);
    if (ev != nullptr) {
        free(ev->servconftag);
        free(ev);
    }
    xdata = nullptr;
    resetfill();
    TRACE(0, "edifactread failed\n");
    return nullptr;
}
