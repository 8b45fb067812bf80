// The table of node fields of the tree text format.
#include "treefields.h"

#include <string.h>

namespace edihost {

static_assert(sizeof(editype_t) == sizeof(int) && sizeof(edidata_t) == sizeof(int) &&
              sizeof(ediforce_t) == sizeof(int) && sizeof(edialign_t) == sizeof(int) &&
              sizeof(nodetype_t) == sizeof(int),
              "enumerations are stored as int");

namespace {
const char *const typewords[] = {"none", "loop", "next", "bnext", "nc", "ncforeign", nullptr};
const char *const edidatawords[] = {"user", "opt", nullptr};
const char *const editypewords[] = {"none", "string", "float", "date",
                                    "sdate", "float0", "time", nullptr};
const char *const ediforcewords[] = {"none", "mand", "cond", nullptr};
const char *const edialignwords[] = {"none", "left", "right", nullptr};
}  // namespace

#define FIELD(name, kind, words) {#name, fieldkind::kind, offsetof(datatree_t, name), words}

const treefield treefields[] = {
    FIELD(data, text, nullptr),
    FIELD(loopcnt, number, nullptr),
    FIELD(defval, text, nullptr),
    FIELD(deffunc, text, nullptr),
    FIELD(iseditag, number, nullptr),
    FIELD(type, word, typewords),
    FIELD(edidata, word, edidatawords),
    FIELD(edilen, number, nullptr),
    FIELD(edimaxlen, number, nullptr),
    FIELD(editype, word, editypewords),
    FIELD(ediforce, word, ediforcewords),
    FIELD(edialign, word, edialignwords),
    FIELD(valid, number, nullptr),
};
const size_t ntreefields = sizeof treefields / sizeof treefields[0];

#undef FIELD

const treefield *findfield(const char *key, size_t len)
{
    for (const treefield &fd : treefields)
        if (strlen(fd.key) == len && memcmp(fd.key, key, len) == 0)
            return &fd;
    return nullptr;
}

char *gettext(const datatree_t *tp, const treefield &fd)
{
    char *value;
    memcpy(&value, reinterpret_cast<const char *>(tp) + fd.offset, sizeof value);
    return value;
}

void settext(datatree_t *tp, const treefield &fd, char *value)
{
    memcpy(reinterpret_cast<char *>(tp) + fd.offset, &value, sizeof value);
}

int getnumber(const datatree_t *tp, const treefield &fd)
{
    int value;
    memcpy(&value, reinterpret_cast<const char *>(tp) + fd.offset, sizeof value);
    return value;
}

void setnumber(datatree_t *tp, const treefield &fd, int value)
{
    memcpy(reinterpret_cast<char *>(tp) + fd.offset, &value, sizeof value);
}

int findword(const treefield &fd, const char *word, size_t len)
{
    for (int i = 0; fd.words[i] != nullptr; i++)
        if (strncmp(fd.words[i], word, len) == 0 && fd.words[i][len] == '\0')
            return i;
    return -1;
}

}  // namespace edihost
