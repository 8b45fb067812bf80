// edinodeconvert: the tree form of one value to the text that goes into an
// output file.  First the character stage makes the text safe for the
// syntax (high-bit bytes dropped, the four service characters released,
// everything else through charsetB), then the format stage gives it the
// form and length that the node's editype, edilen and edimaxlen ask for.
//
// Limits: the result has at most kTextMax - 1 characters; a value longer
// than that after the character stage is cut there.  A cut never leaves a
// release character without the character it releases (see cutlen).
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "../debug.h"
#include "../state.h"
#include "convert.h"

namespace ediprot {

namespace {

constexpr int kResultMax = kTextMax - 1;

// A length from the configuration as the format stage uses it: negative
// counts as not set, and nothing reaches beyond the result buffer.
int usable(int len)
{
    if (len < 0)
        return 0;
    return len > kResultMax ? kResultMax : len;
}

// How many characters of `data` a cut to `want` characters keeps.  Where
// the cut would fall between a release character and the character that
// it releases, the release character goes too: left alone it would
// release the separator that the writer puts behind the value.
int cutlen(const char *data, const unsigned char *released, int want)
{
    int n = static_cast<int>(strlen(data));
    if (n <= want)
        return n;
    if (want > 0 && released[want - 1])
        return want - 1;
    return want;
}

// Splits `data` in place at runs of `sep` (strtok rules: empty pieces do
// not count) and returns up to `max` pieces; the rest stay NULL.
void splitpieces(char *data, const char *sep, char **pieces, int max)
{
    char *save = nullptr;
    for (int k = 0; k < max; k++)
        pieces[k] = strtok_r(k == 0 ? data : nullptr, sep, &save);
}

// A buffer that grows as needed and is handed out cleared.
class Scratch {
public:
    ~Scratch() { free(p_); }
    char *zeroed(size_t n)
    {
        if (n > size_) {
            char *q = static_cast<char *>(realloc(p_, n));
            if (q == nullptr) {
                // The result has no error value; nothing sensible can follow.
                fputs("ediprot: out of memory\n", stderr);
                abort();
            }
            p_ = q;
            size_ = n;
        }
        memset(p_, 0, n);
        return p_;
    }

private:
    char *p_ = nullptr;
    size_t size_ = 0;
};

// Copies at most `n` characters of `src` to `dst`; a shorter source leaves
// NULs behind it, as the caller's buffer is cleared.
void putfield(char *dst, const char *src, size_t n)
{
    if (src != nullptr)
        strncpy(dst, src, n);
}

}  // namespace

char *edinodeconvert(datatree_t *ep, char *udata)
{
    // The result buffer is all NULs at every start: only the part the
    // call before may have written is cleared (a writer converts millions
    // of short values, and clearing the whole buffer cost most of each).
    static char buf[kTextMax];
    static size_t dirty = sizeof buf;
    memset(buf, 0, dirty);
    dirty = 0;

    // Kept between calls, so that their memory is reused.
    static Scratch datas, releases;
    char *data = nullptr;
    unsigned char *released = nullptr;
    if (udata != nullptr) {
        TRACE(2, "edinodeconvert in <%s>, data <%s>, edilen %d\n", ep->xmltag,
              udata, ep->edilen);
        size_t n = strlen(udata);
        data = datas.zeroed(2 * n + 1);
        // released[k] marks data[k] as a release character put in here.
        released = reinterpret_cast<unsigned char *>(releases.zeroed(2 * n + 1));
        // Every case below writes within the text made of udata (at most
        // 2n characters), edilen characters, or a date's nine.
        dirty = 2 * n + 1;
        if (dirty < static_cast<size_t>(usable(ep->edilen)) + 1)
            dirty = static_cast<size_t>(usable(ep->edilen)) + 1;
        if (dirty < 9)
            dirty = 9;
        if (dirty > sizeof buf)
            dirty = sizeof buf;

        size_t k = 0;
        for (const unsigned char *cp = reinterpret_cast<unsigned char *>(udata);
             *cp != '\0'; cp++) {
            unsigned char c = *cp;
            if (c & 0x80)
                continue;
            char ch = static_cast<char>(c);
            if (ch == seg_sep || ch == dst_sep || ch == escape || ch == cmp_sep) {
                released[k] = 1;
                data[k++] = escape;
                data[k++] = ch;
                continue;
            }
            TRACE(2, "edinodeconvert  %c (0x%x), from charset %c\n", c, c, charsetB[c]);
            data[k++] = charsetB[c];
        }
        data[k] = '\0';
        TRACE(2, "edinodeconvert data after conv  <%s>\n", data);

        int maxlen = usable(ep->edimaxlen);
        int len = usable(ep->edilen);
        switch (ep->editype) {
        case et_float: {
            int keep = cutlen(data, released, kResultMax);
            memcpy(buf, data, static_cast<size_t>(keep));
            break;
        }
        case et_date: {
            // YYYY-MM-DD to YYYYMMDD
            char *pieces[3];
            splitpieces(data, "-", pieces, 3);
            putfield(buf, pieces[0], 4);
            putfield(buf + 4, pieces[1], 2);
            putfield(buf + 6, pieces[2], 2);
            buf[8] = '\0';
            break;
        }
        case et_sdate: {
            // DD.MM.YYYY to YYMMDD; the year gives its third and fourth digit.
            char *pieces[3];
            splitpieces(data, ".", pieces, 3);
            putfield(buf + 4, pieces[0], 2);
            putfield(buf + 2, pieces[1], 2);
            if (pieces[2] != nullptr && strlen(pieces[2]) >= 2)
                putfield(buf, pieces[2] + 2, 2);
            buf[6] = '\0';
            TRACE(2, "edinodeconvert et_sdate  in <%s> , out <%s>\n", data, buf);
            break;
        }
        case et_float0: {
            // Right-aligned in a field of edilen zeros.  A value wider than
            // the field is written whole: cutting digits would change the
            // number.
            int dlen = cutlen(data, released, kResultMax);
            if (dlen >= len) {
                memcpy(buf, data, static_cast<size_t>(dlen));
            } else {
                memset(buf, '0', static_cast<size_t>(len));
                memcpy(buf + (len - dlen), data, static_cast<size_t>(dlen));
            }
            break;
        }
        default:
            if (maxlen != 0) {
                int keep = cutlen(data, released, maxlen);
                memcpy(buf, data, static_cast<size_t>(keep));
            } else if (len != 0) {
                // Exactly edilen characters: cut, or filled with blanks.
                int keep = cutlen(data, released, len);
                memcpy(buf, data, static_cast<size_t>(keep));
                memset(buf + keep, ' ', static_cast<size_t>(len - keep));
            }
            break;
        }
    }

    TRACE(2, "edinodeconvert <%s>, data <%s>\n", ep->xmltag, buf);
    return buf;
}

}  // namespace ediprot
