// Segment reader: the bytes of an interchange into a flat chain of segment
// nodes ($XXXnnn_D) with their elements (DST) and components (CDE), all
// values in their raw file form, release characters included.
#include <string.h>

#include "../debug.h"
#include "../state.h"
#include "../tree/tree.h"
#include "edifact.h"

namespace ediprot {

namespace {

// "$<name><count>_D", the count of at least three digits: made for every
// segment read, so put together without a format to interpret.
char *segmentname(const char *name, int count)
{
    const size_t n = strlen(name);
    if (n > 16 || count < 0)
        return EDI_MSPRINTF("$%s%03d_D", name, count);
    char digits[16];
    int d = 0;
    for (unsigned v = static_cast<unsigned>(count); v > 0 || d < 3; v /= 10)
        digits[d++] = static_cast<char>('0' + v % 10);
    char out[40];
    size_t at = 0;
    out[at++] = '$';
    memcpy(out + at, name, n);
    at += n;
    while (d > 0)
        out[at++] = digits[--d];
    memcpy(out + at, "_D", 3);
    return EDI_STRSAV(out);
}

}  // namespace

// A new node.  With a `name` it is a segment node "$<name><tagcnt>_D" and
// raises tagcnt; otherwise it is called `what`.  `value` becomes its data.
datatree_t *mknode(const char *what, const char *name, const char *value)
{
    TRACE(2, "mknode: what <%s>, name <%s>, value <%s>\n",
          what != nullptr ? what : "nix", name != nullptr ? name : "nix",
          value != nullptr ? value : "nix");
    datatree_t *tp = newnode();
    if (name != nullptr) {
        tagcnt++;
        tp->xmltag = segmentname(name, tagcnt);
        tp->iseditag = 1;
    } else {
        tp->xmltag = EDI_STRSAV(what);
    }
    if (value != nullptr)
        tp->data = EDI_STRSAV(value);
    return tp;
}

// Splits `str` at every `sep` that has no release character directly in
// front of it (within the current piece) into a chain of nodes named
// `what`.  The last piece is always made, even when it is empty.
datatree_t *makeelem(char *str, int sep, const char *what)
{
    char piece[kTextMax];
    datatree_t *start = nullptr;
    datatree_t **tpp = &start;
    char *ocp = piece;
    char *const last = piece + sizeof piece - 1;

    TRACE(2, "makeelem <%s>, sep %c\n", str, sep);
    for (char *ip = str; *ip != '\0'; ip++) {
        // str lies in a buffer of the same size, so this never cuts.
        if (ocp == last)
            break;
        *ocp++ = *ip;
        if (static_cast<int>(static_cast<signed char>(*ip)) != sep)
            continue;
        TRACE(2, "have sep at %d\n", static_cast<int>(ip - str));
        if (ocp - 1 > piece && ocp[-2] == escape) {
            TRACE(2, "escape\n");
            continue;
        }
        ocp[-1] = '\0';
        TRACE(2, "%s: <%s>\n", what, piece);
        *tpp = mknode(what, nullptr, piece);
        tpp = &(*tpp)->next;
        ocp = piece;
    }
    *ocp = '\0';
    TRACE(2, "%s: <%s>\n", what, piece);
    *tpp = mknode(what, nullptr, piece);
    return start;
}

// One segment node from the text of a segment without its terminator.
// `segbuf` must be zero behind the text up to position 5 at least.
datatree_t *maketag(char *segbuf)
{
    char tbuf[4];
    strncpy(tbuf, segbuf, 3);
    tbuf[3] = '\0';
    TRACE(2, "maketag <%s>\n", tbuf);
    datatree_t *tag = mknode("TAG", tbuf, nullptr);
    if (segbuf[3] == dst_sep) {
        tag->child = makeelem(segbuf + 4, dst_sep, "DST");
        for (datatree_t *tp = tag->child; tp != nullptr; tp = tp->next) {
            // Only the first component separator decides whether the
            // element has components at all.
            const char *cp = static_cast<const char *>(
                memchr(tp->data, cmp_sep, strlen(tp->data)));
            if (cp != nullptr && (cp == tp->data || cp[-1] != escape))
                tp->child = makeelem(tp->data, cmp_sep, "CDE");
        }
    } else {
        // No element separator behind the tag: position 3 is skipped and
        // the components hang straight under the segment node.
        tag->child = makeelem(segbuf + 4, cmp_sep, "CDE");
    }
    return tag;
}

// Reads every segment of fp into the chain below a root "edi".  A file that
// ends in its terminator gets one more, empty, segment node.  A segment of
// more than kTextMax - 1 characters before its terminator is refused: the
// message names `fn`, everything read so far is released and the result is
// NULL.
datatree_t *readseg(FILE *fp, const char *fn)
{
    static char segbuf[kTextMax];
    datatree_t *root = mknode("edi", nullptr, nullptr);
    datatree_t **tpp = &root->child;
    // seg_sep compared as a signed char: a terminator with its high bit set
    // never matches a byte (the first stage refuses such a UNA).
    const int term = static_cast<signed char>(seg_sep);
    const char esc = escape;
    size_t n = 0;
    int c;

    // Everything behind the text up to position 5 is kept at zero, which
    // is all that maketag reads beyond the text.
    memset(segbuf, 0, sizeof segbuf);
    while ((c = getc_unlocked(fp)) != EOF) {
        if (c == term && !(n > 0 && segbuf[n - 1] == esc)) {
            segbuf[n] = '\0';
            *tpp = maketag(segbuf);
            tpp = &(*tpp)->next;
            memset(segbuf, 0, n < 6 ? 6 : n + 1);
            n = 0;
            continue;
        }
        if (n == sizeof segbuf - 1) {
            fprintf(stderr, "%s: segment longer than %d characters\n", fn,
                    kTextMax - 1);
            freedatatree(root);
            return nullptr;
        }
        segbuf[n++] = static_cast<char>(c);
    }
    *tpp = maketag(segbuf);
    return root;
}

}  // namespace ediprot
