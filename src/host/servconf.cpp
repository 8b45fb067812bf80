// The service configurations that getservconf searches: a list of entries
// loaded from files with one line per entry,
//   KEY fromconffile=PATH toconffile=PATH transconffile=PATH
//       postaction=N onedokpost=N commitall=N
// in the tokens of the tree text format.  Keys compare exactly and must be
// unique over the whole list.
#include <stdlib.h>
#include <string.h>

#include <new>
#include <string>
#include <vector>

#include "edihost.h"
#include "treelex.h"

namespace edihost {
namespace {

servconf_t *servconfs = nullptr;

void freeentries(servconf_t *sc)
{
    while (sc != nullptr) {
        servconf_t *next = sc->next;
        free(sc->tag);
        free(sc->toconffile);
        free(sc->fromconffile);
        free(sc->transconffile);
        free(sc);
        sc = next;
    }
}

servconf_t *findentry(servconf_t *sc, const char *tag)
{
    for (; sc != nullptr; sc = sc->next)
        if (strcmp(sc->tag, tag) == 0)
            return sc;
    return nullptr;
}

// The folder of `fn` with a closing '/', or "" when fn names no folder.
std::string folderof(const char *fn)
{
    const char *slash = strrchr(fn, '/');
    return slash != nullptr ? std::string(fn, slash + 1) : std::string();
}

bool setpath(linescan &ls, char *&dst, const entryfield &ef, const std::string &folder)
{
    if (ef.value.empty())
        return ls.fail("empty path for " + ef.key);
    dst = newcopy(ef.value[0] == '/' ? ef.value : folder + ef.value);
    return true;
}

// The fields of one line on a fresh entry.
bool setentry(linescan &ls, servconf_t *sc, const std::vector<entryfield> &fields,
              const std::string &folder)
{
    for (size_t i = 0; i < fields.size(); i++) {
        const entryfield &ef = fields[i];
        for (size_t j = 0; j < i; j++)
            if (fields[j].key == ef.key)
                return ls.fail("duplicate field " + ef.key);
        bool ok;
        if (ef.key == "fromconffile")
            ok = setpath(ls, sc->fromconffile, ef, folder);
        else if (ef.key == "toconffile")
            ok = setpath(ls, sc->toconffile, ef, folder);
        else if (ef.key == "transconffile")
            ok = setpath(ls, sc->transconffile, ef, folder);
        else if (ef.key == "postaction")
            ok = readint(ls, ef, sc->postaction);
        else if (ef.key == "onedokpost")
            ok = readint(ls, ef, sc->onedokpost);
        else if (ef.key == "commitall")
            ok = readint(ls, ef, sc->commitall);
        else
            ok = ls.fail("unknown field " + ef.key);
        if (!ok)
            return false;
    }
    return true;
}

int loadservconf(const char *fn)
{
    std::string text;
    if (!slurpfile(fn, text))
        return -1;
    std::string folder = folderof(fn);
    textlines lines{text.data(), text.data() + text.size()};
    servconf_t *head = nullptr;
    servconf_t **tail = &head;
    std::vector<entryfield> fields;
    std::string key;
    const char *lb;
    const char *le;
    while (lines.next(lb, le)) {
        linescan ls{lb, le, {}};
        bool ok = true;
        if (memchr(lb, '\0', static_cast<size_t>(le - lb)) != nullptr) {
            ok = ls.fail("NUL byte in the text");
        } else {
            ls.skipblanks();
            if (ls.atend() || *ls.cp == '#')
                continue;
            ok = readentry(ls, key, fields);
        }
        if (ok && (findentry(head, key.c_str()) != nullptr ||
                   findentry(servconfs, key.c_str()) != nullptr)) {
            std::string shown;
            appendtoken(shown, key.c_str(), true);
            ok = ls.fail("duplicate key " + shown);
        }
        if (ok) {
            auto *sc = static_cast<servconf_t *>(calloc(1, sizeof(servconf_t)));
            if (sc == nullptr)
                edihost_outofmemory();
            sc->tag = newcopy(key);
            *tail = sc;
            tail = &sc->next;
            ok = setentry(ls, sc, fields, folder);
        }
        if (!ok) {
            reportline(fn, lines.lineno, ls.reason);
            freeentries(head);
            return -1;
        }
    }
    servconf_t **end = &servconfs;
    while (*end != nullptr)
        end = &(*end)->next;
    *end = head;
    return 0;
}

}  // namespace
}  // namespace edihost

extern "C" {

int edihost_loadservconf(const char *fn)
{
    if (fn == nullptr) {
        fputs("(null): no file name\n", stderr);
        return -1;
    }
    static bool cleanupset = false;
    if (!cleanupset) {
        cleanupset = true;
        atexit(edihost_clearservconf);
    }
    try {
        return edihost::loadservconf(fn);
    } catch (const std::bad_alloc &) {
        edihost_outofmemory();
    }
    return -1;
}

void edihost_clearservconf(void)
{
    edihost::freeentries(edihost::servconfs);
    edihost::servconfs = nullptr;
}

servconf_t *getservconf(char *tag)
{
    return tag != nullptr ? edihost::findentry(edihost::servconfs, tag) : nullptr;
}

}  // extern "C"
