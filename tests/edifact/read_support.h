// Helpers of the EDIFACT input tests: a compact one-line picture of a tree
// and a flat read of bytes held in memory.
#ifndef EDIPROT_READ_SUPPORT_H
#define EDIPROT_READ_SUPPORT_H

#include <stdio.h>

#include <string>

#include "internal.h"

namespace readsupport {

// The chain `tp` as "name=\"data\"{children} name ...": data only where
// it is not NULL, braces only where there are children.  Control
// characters are shown as \n, \r, \xHH.
inline std::string quoted(const char *s)
{
    std::string out = "\"";
    for (const char *cp = s; *cp != '\0'; cp++) {
        unsigned char c = static_cast<unsigned char>(*cp);
        if (c == '\n')
            out += "\\n";
        else if (c == '\r')
            out += "\\r";
        else if (c < 0x20 || c >= 0x7f) {
            char hex[8];
            snprintf(hex, sizeof hex, "\\x%02x", c);
            out += hex;
        } else
            out += static_cast<char>(c);
    }
    return out + "\"";
}

inline std::string picture(const datatree_t *tp)
{
    std::string out;
    for (; tp != nullptr; tp = tp->next) {
        if (!out.empty())
            out += " ";
        std::string name = quoted(tp->xmltag);
        out += name.substr(1, name.size() - 2);
        if (tp->data != nullptr)
            out += "=" + quoted(tp->data);
        if (tp->child != nullptr)
            out += "{" + picture(tp->child) + "}";
    }
    return out;
}

// The flat read of `bytes` with the separators as they stand: the root
// that readseg returns (NULL on a refused segment).
inline datatree_t *readbytes(const std::string &bytes)
{
    FILE *fp = fmemopen(const_cast<char *>(bytes.data()), bytes.size(), "r");
    if (bytes.empty())
        fp = fopen("/dev/null", "r");
    datatree_t *root = ediprot::readseg(fp, "mem");
    fclose(fp);
    return root;
}

}  // namespace readsupport

#endif
