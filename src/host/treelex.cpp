// Tokens, lines and messages of the tree text format.
#include "treelex.h"

#include <errno.h>
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "edihost.h"

namespace edihost {

namespace {

bool needsquotes(const char *s, bool isname)
{
    if (*s == '\0' || (isname && *s == '#'))
        return true;
    for (const unsigned char *cp = reinterpret_cast<const unsigned char *>(s); *cp; cp++)
        if (!isbare(*cp) || *cp == '\\')
            return true;
    return false;
}

int hexvalue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

// A bare token at the scan, possibly empty.
std::string readbare(linescan &ls)
{
    const char *start = ls.cp;
    while (!ls.atend() && isbare(static_cast<unsigned char>(*ls.cp)))
        ls.cp++;
    return std::string(start, ls.cp);
}

// A quoted token; the scan stands on the opening quote.
bool readquoted(linescan &ls, std::string &out)
{
    out.clear();
    ls.cp++;
    while (!ls.atend() && *ls.cp != '"') {
        unsigned char c = static_cast<unsigned char>(*ls.cp++);
        if (c < 0x20 || c == 0x7f)
            return ls.fail(bytename(c) + " in quoted text (write it as an escape)");
        if (c != '\\') {
            out += static_cast<char>(c);
            continue;
        }
        if (ls.atend())
            break;
        char e = *ls.cp++;
        switch (e) {
        case '\\': out += '\\'; break;
        case '"': out += '"'; break;
        case 'n': out += '\n'; break;
        case 'r': out += '\r'; break;
        case 't': out += '\t'; break;
        case 'x': {
            int hi = ls.end - ls.cp >= 2 ? hexvalue(ls.cp[0]) : -1;
            int lo = hi >= 0 ? hexvalue(ls.cp[1]) : -1;
            if (lo < 0)
                return ls.fail("bad escape \\x: two hex digits must follow");
            if (hi == 0 && lo == 0)
                return ls.fail("escape \\x00 (a NUL byte) is not allowed");
            out += static_cast<char>(hi * 16 + lo);
            ls.cp += 2;
            break;
        }
        default: {
            std::string what(1, e);
            if (!isbare(static_cast<unsigned char>(e)))
                what = bytename(static_cast<unsigned char>(e));
            return ls.fail("bad escape \\" + what);
        }
        }
    }
    if (ls.atend())
        return ls.fail("unterminated quoted text");
    ls.cp++;
    return true;
}

// A bare or quoted token, not empty when bare.
bool readtoken(linescan &ls, std::string &out, const char *what)
{
    if (!ls.atend() && *ls.cp == '"')
        return readquoted(ls, out);
    out = readbare(ls);
    if (!out.empty())
        return true;
    if (ls.atend() || ls.atblank())
        return ls.fail(std::string("missing ") + what);
    if (*ls.cp == '=')
        return ls.fail(std::string("'=' where ") + what + " should be");
    return ls.fail(bytename(static_cast<unsigned char>(*ls.cp)) + " outside quotes");
}

// After a token: the end of the line or a blank.
bool endoftoken(linescan &ls, const std::string &what)
{
    if (ls.atend() || ls.atblank())
        return true;
    return ls.fail("missing blank after " + what);
}

}  // namespace

void appendtoken(std::string &out, const char *s, bool isname)
{
    if (!needsquotes(s, isname)) {
        out += s;
        return;
    }
    static const char hex[] = "0123456789abcdef";
    out += '"';
    for (const unsigned char *cp = reinterpret_cast<const unsigned char *>(s); *cp; cp++) {
        unsigned char c = *cp;
        switch (c) {
        case '\\': out += "\\\\"; break;
        case '"': out += "\\\""; break;
        case '\n': out += "\\n"; break;
        case '\r': out += "\\r"; break;
        case '\t': out += "\\t"; break;
        default:
            if (c < 0x20 || c >= 0x7f) {
                out += "\\x";
                out += hex[c >> 4];
                out += hex[c & 15];
            } else {
                out += static_cast<char>(c);
            }
        }
    }
    out += '"';
}

bool textlines::next(const char *&lb, const char *&le)
{
    if (cp >= end)
        return false;
    lb = cp;
    const char *nl = static_cast<const char *>(memchr(cp, '\n', static_cast<size_t>(end - cp)));
    le = nl != nullptr ? nl : end;
    cp = nl != nullptr ? nl + 1 : end;
    if (le > lb && le[-1] == '\r')
        le--;
    lineno++;
    return true;
}

void linescan::skipblanks()
{
    while (atblank())
        cp++;
}

bool linescan::fail(std::string why)
{
    reason = std::move(why);
    return false;
}

bool readentry(linescan &ls, std::string &name, std::vector<entryfield> &fields)
{
    fields.clear();
    if (!readtoken(ls, name, "the name"))
        return false;
    if (!ls.atend() && *ls.cp == '=')
        return ls.fail("a field stands where the name should be");
    if (!endoftoken(ls, "the name"))
        return false;
    for (;;) {
        ls.skipblanks();
        if (ls.atend())
            return true;
        entryfield fd;
        fd.key = readbare(ls);
        if (fd.key.empty()) {
            if (*ls.cp == '"')
                return ls.fail("a field name must not be quoted");
            if (*ls.cp == '=')
                return ls.fail("'=' without a field name");
            return ls.fail(bytename(static_cast<unsigned char>(*ls.cp)) + " outside quotes");
        }
        if (ls.atend() || *ls.cp != '=')
            return ls.fail("expected key=value, found '" + fd.key + "'");
        ls.cp++;
        if (!readtoken(ls, fd.value, ("the value of " + fd.key).c_str()))
            return false;
        if (!endoftoken(ls, "the value of " + fd.key))
            return false;
        fields.push_back(std::move(fd));
    }
}

decimal readdecimal(const char *cp, const char *end, int &value)
{
    const bool negative = cp != end && *cp == '-';
    if (cp != end && (*cp == '-' || *cp == '+'))
        cp++;
    if (cp == end)
        return decimal::bad;
    long long n = 0;
    for (; cp != end; cp++) {
        if (*cp < '0' || *cp > '9')
            return decimal::bad;
        if (n <= static_cast<long long>(INT_MAX) + 1)
            n = n * 10 + (*cp - '0');
    }
    n = negative ? -n : n;
    if (n > INT_MAX || n < INT_MIN)
        return decimal::outofrange;
    value = static_cast<int>(n);
    return decimal::ok;
}

bool readint(linescan &ls, const entryfield &ef, int &value)
{
    const std::string &v = ef.value;
    decimal d = readdecimal(v.data(), v.data() + v.size(), value);
    if (d == decimal::ok)
        return true;
    std::string shown;
    appendtoken(shown, v.c_str(), false);
    return ls.fail((d == decimal::bad ? "bad number for " : "number out of range for ") + ef.key +
                   ": " + shown);
}

bool slurpfile(const char *fn, std::string &out)
{
    out.clear();
    FILE *fp = fopen(fn, "rb");
    if (fp == nullptr) {
        fprintf(stderr, "%s: %s\n", fn, strerror(errno));
        return false;
    }
    char buf[65536];
    size_t n;
    while ((n = fread(buf, 1, sizeof buf, fp)) > 0)
        out.append(buf, n);
    int err = ferror(fp) ? (errno != 0 ? errno : EIO) : 0;
    fclose(fp);
    if (err != 0) {
        fprintf(stderr, "%s: %s\n", fn, strerror(err));
        return false;
    }
    return true;
}

char *newcopy(const std::string &s)
{
    char *cp = static_cast<char *>(malloc(s.size() + 1));
    if (cp == nullptr)
        edihost_outofmemory();
    memcpy(cp, s.data(), s.size() + 1);
    return cp;
}

void reportline(const char *name, int line, const std::string &reason)
{
    fprintf(stderr, "%s:%d: %s\n", name, line, reason.c_str());
}

std::string bytename(unsigned char c)
{
    char buf[16];
    snprintf(buf, sizeof buf, "byte 0x%02x", c);
    return buf;
}

}  // namespace edihost
