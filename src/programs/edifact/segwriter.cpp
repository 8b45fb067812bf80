// The segment writer: editraverse walks a configuration tree top down and
// writeeditag writes the segment of each tag node with the values that the
// value rule finds for its elements.
//
// A segment goes straight into the stream, every separator included, before
// it is known whether a later element has a value.  At the end of the
// segment the stream is moved back: behind the last value written (the
// trailing empty elements are taken back) or, when no user data was
// written, to the start of the segment (the whole segment is taken back).
// Text behind the stream's position is overwritten by what follows; the
// interchange writer cuts the file at the final position.
#include <stdio.h>
#include <string.h>

#include <memory>
#include <strings.h>

#include "../internal.h"

namespace ediprot {

namespace {

// Writes the value of the element or component `tp`, if the value rule
// gives it one, and moves last_data (and was_data for user data) on.
void writevalue(FILE *fp, datatree_t *head, datatree_t *tp, const char *loop,
                long *last_data, int *was_data, bool component)
{
    char *value = resolvevalue(tp, head, loop);
    if (value == nullptr || value[0] == '\0')
        return;
    fputs(edinodeconvert(tp, value), fp);
    *last_data = ftell(fp);
    TRACE(2, "last_data: %ld\n", *last_data);
    if (tp->edidata == ed_user) {
        (*was_data)++;
        if (component)
            TRACE(2, "edidata cmp on %s\n", tp->xmltag);
        else
            TRACE(2, "edidata on %s\n", tp->xmltag);
    }
}

}  // namespace

int writeeditag(FILE *fp, datatree_t *head, datatree_t *outcf, const char *loop)
{
    TRACE(2, "writeeditag: <%s>\n", outcf->xmltag);
    sectioncnt++;
    if (strncasecmp(outcf->xmltag, "$UNH", 4) == 0) {
        TRACE(1, "writeeditag: found UNH: %d\n", sectioncnt);
        sectioncnt = 1;
    } else if (strncasecmp(outcf->xmltag, "$UNT", 4) == 0) {
        TRACE(1, "writeeditag: found UNT: %d\n", sectioncnt);
    }

    long tag_start = ftell(fp);
    TRACE(2, "last_data: %ld\n", tag_start);
    // The three characters behind the '$': cut, or blanks on the left.
    fprintf(fp, "%3.3s", outcf->xmltag + 1);

    long last_data = tag_start;
    int was_data = 0;
    for (datatree_t *tp = outcf->child; tp != nullptr; tp = tp->next) {
        fputc(dst_sep, fp);
        if (tp->child != nullptr) {
            for (datatree_t *cldp = tp->child; cldp != nullptr; cldp = cldp->next) {
                if (cldp != tp->child)
                    fputc(cmp_sep, fp);
                writevalue(fp, head, cldp, loop, &last_data, &was_data, true);
            }
        } else {
            writevalue(fp, head, tp, loop, &last_data, &was_data, false);
        }
    }

    TRACE(2, "last_data %ld, current %ld\n", last_data, ftell(fp));
    if (was_data != 0) {
        fseek(fp, last_data, SEEK_SET);
        fputc(seg_sep, fp);
    } else {
        fseek(fp, tag_start, SEEK_SET);
    }
    TRACE(2, "end writeeditag: <%s>\n", outcf->xmltag);
    return 0;
}

int editraverse(FILE *fp, datatree_t *head, datatree_t *outcf, const char *loop)
{
    if (outcf == nullptr)
        return 0;
    TRACE(2, "editraverse start <%s> loop <%s>\n", outcf->xmltag, loop);

    // The loop string lies on the heap: a buffer of this size in every
    // level of a deeply nested configuration would use up the stack.
    std::unique_ptr<char[]> lbuf(new char[kTextMax]);
    char *const lb = lbuf.get();
    const size_t lbsize = kTextMax;
    // One counter for all loop nodes of this chain: a loop node behind
    // another one goes on from the number at which the first one stopped.
    int i = 0;
    for (datatree_t *tp = outcf; tp != nullptr; tp = tp->next) {
        snprintf(lb, lbsize, "%s", loop);
        if (tp->xmltag[0] == '*') {
            for (;;) {
                i++;
                int n = snprintf(lb, lbsize, "%s%s%d", loop, loop[0] != '\0' ? "." : "", i);
                // A loop string that no longer fits would stop changing
                // with i and so never end the loop.
                if (n < 0 || n >= static_cast<int>(lbsize))
                    break;
                datatree_t *xnode = searchloopinstance(pathfornode(tp, 0), lb, head, tp->xmltag);
                if (xnode == nullptr)
                    break;
                TRACE(2, "editraverse <%s> loop <%s>, xnod %p\n", tp->xmltag, lb,
                      static_cast<void *>(xnode));
                editraverse(fp, head, tp->child, lb);
            }
        } else if (tp->xmltag[0] == '$') {
            writeeditag(fp, head, tp, lb);
        } else if (tp->child != nullptr) {
            editraverse(fp, head, tp->child, lb);
        }
    }
    return 0;
}

}  // namespace ediprot
