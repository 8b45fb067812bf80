#include "treefastline.h"

#include <limits.h>
#include <stdlib.h>
#include <string.h>

#include "edihost.h"
#include "nodestore.h"
#include "treefields.h"

namespace edihost {

namespace {

// The bytes of a bare token: printable ASCII except blank, '"' and '='.
struct baretable {
    bool bare[256] = {};
    constexpr baretable()
    {
        for (int c = 0x21; c < 0x7f; c++)
            bare[c] = c != '"' && c != '=';
    }
};
constexpr baretable bytes;

bool isbare(char c)
{
    return bytes.bare[static_cast<unsigned char>(c)];
}

bool isblank(char c)
{
    return c == ' ' || c == '\t';
}

const char *skipbare(const char *cp, const char *end)
{
    while (cp != end && isbare(*cp))
        cp++;
    return cp;
}

// A decimal int with an optional sign, as the full reader takes it.
bool plainint(const char *cp, const char *end, int &value)
{
    bool negative = *cp == '-';
    if (*cp == '-' || *cp == '+')
        cp++;
    if (cp == end)
        return false;
    long long n = 0;
    for (; cp != end; cp++) {
        if (*cp < '0' || *cp > '9')
            return false;
        n = n * 10 + (*cp - '0');
        if (n > static_cast<long long>(INT_MAX) + 1)
            return false;
    }
    n = negative ? -n : n;
    if (n > INT_MAX || n < INT_MIN)
        return false;
    value = static_cast<int>(n);
    return true;
}

int plainword(const treefield &fd, const char *cp, size_t len)
{
    for (int i = 0; fd.words[i] != nullptr; i++)
        if (strncmp(fd.words[i], cp, len) == 0 && fd.words[i][len] == '\0')
            return i;
    return -1;
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
    if (cp == name || (cp != end && !isblank(*cp)))
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
        while (cp != end && isblank(*cp))
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
        if (cp == value || (cp != end && !isblank(*cp)))
            return false;
        span s{fd, value, cp, 0};
        if (fd->kind == fieldkind::number && !plainint(value, cp, s.number))
            return false;
        if (fd->kind == fieldkind::word &&
            (s.number = plainword(*fd, value, static_cast<size_t>(cp - value))) < 0)
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
