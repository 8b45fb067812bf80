// Input value conversion: the file form of one EDIFACT element or VDA field
// into the text that the data tree holds.  This is where release characters
// leave a value; dates and zero-filled numbers take their tree form.
#include <ctype.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "../debug.h"
#include "../state.h"
#include "convert.h"

namespace ediprot {

namespace {

// The result of the last call; emptied at every call.
char buf[kTextMax];

// Copies `udata` into `out` without its release characters: a character
// equal to `escape` is dropped and the one behind it copied unchanged; a
// release character at the very end is dropped.
void unescape(const unsigned char *udata, char *out)
{
    const char esc = escape;
    char *op = out;
    for (const unsigned char *ip = udata; *ip != '\0'; ip++) {
        if (static_cast<char>(*ip) == esc) {
            if (ip[1] == '\0')
                break;
            ip++;
        }
        *op++ = static_cast<char>(*ip);
    }
    *op = '\0';
}

// `text` into the result, cut to its last character that fits.
void copycut(const char *text)
{
    const size_t n = strnlen(text, sizeof buf - 1);
    memcpy(buf, text, n);
    buf[n] = '\0';
}

// YYMMDD to DD.MM.20YY.  A day of 00 becomes 01 and the month's units digit
// 1, in the caller's text.  A text shorter than six characters (and not
// starting with a blank) has no date in it and gives the empty text.
void sdate(unsigned char *udata)
{
    TRACE(1, "edirevconvert: et_sdate <%s>\n", udata);
    if (udata[0] == ' ') {
        strcpy(buf, "01.01.1970");
        return;
    }
    if (strlen(reinterpret_cast<char *>(udata)) < 6)
        return;
    if (udata[4] == '0' && udata[5] == '0') {
        udata[5] = '1';
        udata[3] = '1';
    }
    const char *cp = reinterpret_cast<char *>(udata);
    snprintf(buf, sizeof buf, "%2.2s.%2.2s.20%2.2s", cp + 4, cp + 2, cp);
    TRACE(1, "edirevconvert: et_sdate after <%s>\n", buf);
}

// Leading zeros go, and everything from the first non-digit on.
void float0(const unsigned char *udata)
{
    TRACE(2, "edirevconvert: et_float0 <%s>\n", udata);
    const unsigned char *ip = udata;
    while (*ip == '0')
        ip++;
    size_t n = 0;
    while (ip[n] != '\0' && isdigit(ip[n]) && n < sizeof buf - 1) {
        buf[n] = static_cast<char>(ip[n]);
        n++;
    }
    buf[n] = '\0';
    TRACE(2, "edirevconvert: et_float0 after <%s>\n", buf);
}

// YYYYMMDD to YYYY-MM-DD.  `data` has 32 zero bytes behind its text, so
// positions 4 and 6 read as empty fields for a shorter text.  A text with a
// '-' among its first eight characters is already in tree form and is
// taken over unchanged.
void date(const char *data)
{
    size_t n = strnlen(data, 8);
    if (memchr(data, '-', n) != nullptr) {
        copycut(data);
        return;
    }
    snprintf(buf, sizeof buf, "%4.4s-%2.2s-%2.2s", data, data + 4, data + 6);
}

}  // namespace

char *edirevconvert(datatree_t *ep, unsigned char *udata)
{
    // Every conversion ends its text; one that gives none leaves this.
    buf[0] = '\0';
    if (udata == nullptr)
        return buf;
    // The field may hold any int that the host put there: read it as one.
    int type;
    memcpy(&type, &ep->editype, sizeof type);
    TRACE(2, "edirevconvert in <%s>, data <%s>, type %d\n", ep->xmltag, udata,
          type);
    size_t len = strlen(reinterpret_cast<char *>(udata));
    char *data = static_cast<char *>(calloc(len + 32, 1));
    if (data == nullptr) {
        fputs("ediprot: out of memory\n", stderr);
        abort();
    }
    unescape(udata, data);
    switch (type) {
    case et_sdate:
        sdate(udata);
        break;
    case et_float0:
        float0(udata);
        break;
    case et_date:
        date(data);
        break;
    default:
        // The decimal mark stays what it is in the file.  A value beyond the
        // buffer is cut to its last character that fits.
        copycut(data);
        break;
    }
    free(data);
    return buf;
}

}  // namespace ediprot
