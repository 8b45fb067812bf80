// The segment writer: editraverse is the configuration walk
// (tree/configwalk) with writeeditag, which writes the segment of each tag
// node with the values that the value rule finds for its elements.
//
// A segment is put together in memory, every separator included, before
// it is known whether a later element has a value.  At its end it is cut
// behind the last value written (the trailing empty elements are taken
// back) and written to the stream at once, or, when no user data came in,
// not written at all.  Stream positions in the traces are those the text
// would have in the stream.  Building in memory spares a seek per segment,
// and a seek costs a flush and a system call.
#include <stdio.h>
#include <string.h>

#include <string>
#include <strings.h>

#include "../convert/convert.h"
#include "../debug.h"
#include "../state.h"
#include "../tree/configwalk.h"
#include "edifact.h"

namespace ediprot {

namespace {

// A segment under construction and the stream position where it begins.
struct Segment {
    std::string text;
    long start;
    long pos() const { return start + static_cast<long>(text.size()); }
};

// The value the value rule gives the element or component `tp`: its data
// node looked up in `scope` (the scope of the node above tp), or from the
// root where the scope is plain.
char *valueof(datatree_t *head, datatree_t *tp, const LoopString &loop, const PathScope &scope)
{
    if (scope.kind == PathScope::plain)
        return resolvevalue(tp, head, loop.c_str());
    // Every loop number is taken by the loops above the tag node: a loop
    // name below it reads none (0).
    int complete = 0;
    return resolvefound(tp, pathfind(scope, tp->xmltag, 0, &complete));
}

// Adds the value of the element or component `tp`, if the value rule
// gives it one, and moves last_data (and was_data for user data) on.
void writevalue(Segment &seg, datatree_t *head, datatree_t *tp, const LoopString &loop,
                const PathScope &scope, long *last_data, int *was_data, bool component)
{
    char *value = valueof(head, tp, loop, scope);
    if (value == nullptr || value[0] == '\0')
        return;
    seg.text += edinodeconvert(tp, value);
    *last_data = seg.pos();
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

int writeeditag(FILE *fp, datatree_t *head, datatree_t *outcf, const LoopString &loop,
                const PathScope &inner)
{
    TRACE(2, "writeeditag: <%s>\n", outcf->xmltag);
    sectioncnt++;
    if (strncasecmp(outcf->xmltag, "$UNH", 4) == 0) {
        TRACE(1, "writeeditag: found UNH: %d\n", sectioncnt);
        sectioncnt = 1;
    } else if (strncasecmp(outcf->xmltag, "$UNT", 4) == 0) {
        TRACE(1, "writeeditag: found UNT: %d\n", sectioncnt);
    }

    // Kept between calls, so that its memory is reused.
    static Segment seg;
    // Positions matter only to the trace lines; ftell costs a system call
    // per segment, so it is asked only when they are written.
    seg.start = trace_on(2) ? ftell(fp) : 0;
    TRACE(2, "last_data: %ld\n", seg.start);
    // The three characters behind the '$': cut, or blanks on the left
    // (printf's "%3.3s", without its cost per segment).
    const char *name = outcf->xmltag + 1;
    const size_t n = strnlen(name, 3);
    seg.text.assign(3 - n, ' ');
    seg.text.append(name, n);

    long last_data = seg.start;
    int was_data = 0;
    for (datatree_t *tp = outcf->child; tp != nullptr; tp = tp->next) {
        seg.text += dst_sep;
        if (tp->child != nullptr) {
            const PathScope composite = inner.kind == PathScope::plain
                                            ? inner
                                            : pathstep(inner, tp->xmltag, 0).inner;
            for (datatree_t *cldp = tp->child; cldp != nullptr; cldp = cldp->next) {
                if (cldp != tp->child)
                    seg.text += cmp_sep;
                writevalue(seg, head, cldp, loop, composite, &last_data, &was_data, true);
            }
        } else {
            writevalue(seg, head, tp, loop, inner, &last_data, &was_data, false);
        }
    }

    TRACE(2, "last_data %ld, current %ld\n", last_data, seg.pos());
    if (was_data != 0) {
        seg.text.resize(static_cast<size_t>(last_data - seg.start));
        seg.text += seg_sep;
        fwrite(seg.text.data(), 1, seg.text.size(), fp);
    }
    TRACE(2, "end writeeditag: <%s>\n", outcf->xmltag);
    return 0;
}

namespace {

void writetag(FILE *fp, datatree_t *head, datatree_t *tag, const LoopString &loop,
              const PathScope &inner)
{
    writeeditag(fp, head, tag, loop, inner);
}

void tracestart(const datatree_t *outcf, const char *loop)
{
    TRACE(2, "editraverse start <%s> loop <%s>\n", outcf->xmltag, loop);
}

void tracefound(const datatree_t *tp, const char *lb, const datatree_t *xnode)
{
    TRACE(2, "editraverse <%s> loop <%s>, xnod %p\n", tp->xmltag, lb,
          static_cast<const void *>(xnode));
}

// One counter for all loop nodes of a chain: a loop node behind another
// one goes on from the number at which the first one stopped.
const walkformat edifactwalk = {writetag, true, nullptr, tracestart, nullptr, nullptr, tracefound};

}  // namespace

int editraverse(FILE *fp, datatree_t *head, datatree_t *outcf, const char *loop)
{
    return configwalk(edifactwalk, fp, head, outcf, loop);
}

}  // namespace ediprot
