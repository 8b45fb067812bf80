// Names of nodes compared where the walks over large trees compare them
// millions of times.
#ifndef EDI_SAMENAME_H
#define EDI_SAMENAME_H

namespace edi {

// strcmp(a, b) == 0, inline: node names are a few characters, shorter
// than a call to the library's strcmp takes to get going.
inline bool samename(const char *a, const char *b)
{
    while (*a != '\0' && *a == *b) {
        a++;
        b++;
    }
    return *a == *b;
}

}  // namespace edi

#endif
