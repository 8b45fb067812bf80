#include "treefastline.h"

#include <limits.h>
#include <stdlib.h>
#include <string.h>

#include "edihost.h"
#include "nodestore.h"
#include "treefields.h"
#include "treelex.h"

namespace edihost {

namespace {

const char *skipbare(const char *cp, const char *end)
{
    while (cp != end && isbare(static_cast<unsigned char>(*cp)))
        cp++;
    return cp;
}

char *copyspan(const char *cp, const char *end)
{
    return newtext(cp, static_cast<size_t>(end - cp));
}

}  // namespace

bool readplainline(const char *cp, const char *end, datatree_t *tp)
{
    const char *name = cp;
    cp = skipbare(cp, end);
    if (cp == name || (cp != end && !isblankbyte(*cp)))
        return false;
    const char *nameend = cp;

    // Fields are checked whole before anything is kept, so that a line
    // handed on to the full reader leaves nothing behind.
    struct span {
        const treefield *fd;
        const char *value, *end;
        int number;
    };
    span found[sizeof(unsigned) * CHAR_BIT];
    static_assert(sizeof found / sizeof found[0] >= 13, "one place per field");
    size_t n = 0;
    unsigned seen = 0;
    for (;;) {
        while (cp != end && isblankbyte(*cp))
            cp++;
        if (cp == end)
            break;
        const char *key = cp;
        cp = skipbare(cp, end);
        if (cp == key || cp == end || *cp != '=')
            return false;
        const treefield *fd = findfield(key, static_cast<size_t>(cp - key));
        if (fd == nullptr)
            return false;
        unsigned bit = 1u << static_cast<unsigned>(fd - treefields);
        if (seen & bit)
            return false;
        seen |= bit;
        const char *value = ++cp;
        cp = skipbare(cp, end);
        if (cp == value || (cp != end && !isblankbyte(*cp)))
            return false;
        span s{fd, value, cp, 0};
        if (fd->kind == fieldkind::number && readdecimal(value, cp, s.number) != decimal::ok)
            return false;
        if (fd->kind == fieldkind::word &&
            (s.number = findword(*fd, value, static_cast<size_t>(cp - value))) < 0)
            return false;
        found[n++] = s;
    }
    tp->xmltag = copyspan(name, nameend);
    for (size_t i = 0; i < n; i++) {
        if (found[i].fd->kind == fieldkind::text)
            settext(tp, *found[i].fd, copyspan(found[i].value, found[i].end));
        else
            setnumber(tp, *found[i].fd, found[i].number);
    }
    return true;
}

}  // namespace edihost
