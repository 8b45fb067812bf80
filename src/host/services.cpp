// The tree services of our host layer: allocation of strings, copying of
// node parameters, parent links, release and paths.
#include <stdarg.h>
#include <stdlib.h>
#include <string.h>

#include <mutex>
#include <new>
#include <string>
#include <unordered_set>

#include "edihost.h"
#include "nodestore.h"

extern "C" {

int tracelevel = 0;

void edihost_outofmemory(void)
{
    fputs("edihost: out of memory\n", stderr);
    abort();
}

char *strsav(char *file, int line, char *s)
{
    (void)file;
    (void)line;
    char *cp = strdup(s != nullptr ? s : "");
    if (cp == nullptr)
        edihost_outofmemory();
    return cp;
}

char *msprintf(char *file, int line, int flag, char *fmt, ...)
{
    (void)file;
    (void)line;
    (void)flag;
    va_list ap;
    va_start(ap, fmt);
    va_list aq;
    va_copy(aq, ap);
    int n = vsnprintf(nullptr, 0, fmt, ap);
    va_end(ap);
    if (n < 0)
        n = 0;
    char *cp = static_cast<char *>(malloc(static_cast<size_t>(n) + 1));
    if (cp == nullptr)
        edihost_outofmemory();
    vsnprintf(cp, static_cast<size_t>(n) + 1, fmt, aq);
    va_end(aq);
    return cp;
}

static char *dupornull(const char *s)
{
    if (s == nullptr)
        return nullptr;
    char *cp = strdup(s);
    if (cp == nullptr)
        edihost_outofmemory();
    return cp;
}

// Never destroyed: the names stay valid for trees freed at or after exit,
// and the set stays reachable, so leak checkers do not report it.
char *edihost_internname(const char *s)
{
    static std::mutex lock;
    static auto *names = new std::unordered_set<std::string>;
    if (s == nullptr)
        return nullptr;
    std::lock_guard<std::mutex> hold(lock);
    try {
        return const_cast<char *>(names->emplace(s).first->c_str());
    } catch (const std::bad_alloc &) {
        edihost_outofmemory();
    }
    return nullptr;
}

// Copies every descriptive field.  xmltag, data and the links stay as the
// caller has them; defval and deffunc are duplicated so that the source and
// the copy can each be freed on their own, the shared file name is not.
void copynodeparms(datatree_t *dst, datatree_t *src, int line)
{
    (void)line;
    dst->loopcnt = src->loopcnt;
    dst->defval = dupornull(src->defval);
    dst->deffunc = dupornull(src->deffunc);
    dst->iseditag = src->iseditag;
    dst->type = src->type;
    dst->edidata = src->edidata;
    dst->edilen = src->edilen;
    dst->edimaxlen = src->edimaxlen;
    dst->editype = src->editype;
    dst->ediforce = src->ediforce;
    dst->edialign = src->edialign;
    dst->valid = src->valid;
    dst->line = src->line;
    dst->file = src->file; // shared, see edihost_internname
}

// Iterative and without memory of its own, so that trees of any depth or
// width are linked without exhausting the stack: the walk goes down
// through `child`, on through `next`, and back up through the parent
// links it has just set.  vdaread calls it once per line on the whole
// growing tree, so each node costs a few instructions and nothing else.
void setparents(datatree_t *tree, int flag)
{
    (void)flag;
    if (tree == nullptr)
        return;
    datatree_t *up = tree;
    datatree_t *cp = tree->child;
    while (cp != nullptr) {
        cp->parent = up;
        if (cp->child != nullptr) {
            up = cp;
            cp = cp->child;
            continue;
        }
        while (cp->next == nullptr) {
            if (up == tree)
                return;
            cp = up;
            up = cp->parent;
        }
        cp = cp->next;
    }
}

// Seen as a binary tree (child left, next right), the tree is taken apart
// by rotations: linear time, constant space, any depth.
void freedatatree(datatree_t *tree)
{
    const bool stores = edihost::anystore();
    datatree_t *tp = tree;
    while (tp != nullptr) {
        if (tp->child != nullptr) {
            datatree_t *cp = tp->child;
            tp->child = cp->next;
            cp->next = tp;
            tp = cp;
        } else {
            datatree_t *np = tp->next;
            if (stores) {
                edihost::freetext(tp->xmltag);
                edihost::freetext(tp->data);
                edihost::freetext(tp->defval);
                edihost::freetext(tp->deffunc);
                edihost::freenode(tp);
            } else {
                free(tp->xmltag);
                free(tp->data);
                free(tp->defval);
                free(tp->deffunc);
                free(tp);
            }
            tp = np;
        }
    }
}

// The names from the root (as far as parent links go) down to `node`,
// joined by '.'.  Valid until the next call.  The writers ask for a path
// per element, so the text is measured first and then filled from its end
// into a buffer that is kept between calls.
char *pathfornode(datatree_t *node, int flag)
{
    (void)flag;
    static std::string path;
    if (node == nullptr)
        return nullptr;
    size_t len = 0;
    for (datatree_t *tp = node; tp != nullptr; tp = tp->parent)
        len += strlen(tp->xmltag) + (tp != node ? 1 : 0);
    try {
        path.resize(len);
    } catch (const std::bad_alloc &) {
        edihost_outofmemory();
    }
    size_t end = len;
    for (datatree_t *tp = node; tp != nullptr; tp = tp->parent) {
        if (tp != node)
            path[--end] = '.';
        size_t n = strlen(tp->xmltag);
        end -= n;
        memcpy(&path[end], tp->xmltag, n);
    }
    return path.data();
}

FILE *tmpfopen(char *name, char *mode)
{
    if (FILE *fp = edihost_openinput(name, mode))
        return fp;
    return fopen(name, mode);
}

}  // extern "C"
