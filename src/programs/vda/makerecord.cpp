// makerecord: one line of a VDA record file to one record subtree, a
// record node with a field node per configured field.
#include <stdio.h>
#include <string.h>

#include "../convert/convert.h"
#include "../debug.h"
#include "../state.h"
#include "../tree/tree.h"
#include "vda.h"

using namespace ediprot;

namespace {

// Copies the field of `width` characters at `pos` of a line of `linelen`
// characters into `curval` (kFieldMax characters).  Nothing outside the
// line is read: a field that begins at or behind the end of the line is
// empty, one that runs past it is cut there.  A field wider than curval
// keeps its first kFieldMax - 1 characters.
void takefield(char *curval, const char *buf, size_t linelen, size_t pos,
               size_t width)
{
    memset(curval, 0, kFieldMax);
    if (pos >= linelen)
        return;
    size_t n = linelen - pos;
    if (n > width)
        n = width;
    if (n > static_cast<size_t>(kFieldMax - 1))
        n = kFieldMax - 1;
    memcpy(curval, buf + pos, n);
}

}  // namespace

EDIPROT_API datatree_t *makerecord(char *buf, datatree_t **spp,
                                   datatree_t *inhead)
{
    // Reference for the blank test: a field of blanks only (or an empty
    // one) has no value of its own and is stored as "".
    char empty[kVdaWidth + 1];
    memset(empty, ' ', kVdaWidth);
    empty[kVdaWidth] = '\0';

    char satz[16];
    snprintf(satz, sizeof satz, "S%.3s", buf);
    TRACE(1, "makerecord: satz <%s>\n", satz);

    datatree_t *sp = findsatz(inhead, satz);
    if (spp != nullptr)
        *spp = sp;
    if (sp == nullptr)
        return nullptr;
    TRACE(1, "makerecord: got it\n");

    datatree_t *rec = newnode();
    rec->xmltag = EDI_MSPRINTF("%s", sp->xmltag);

    const size_t linelen = strlen(buf);
    size_t pos = 0;
    datatree_t **xpp = &rec->child;
    char curval[kFieldMax];
    for (datatree_t *cf = sp->child; cf != nullptr; cf = cf->next) {
        const size_t width = cf->edilen > 0 ? static_cast<size_t>(cf->edilen) : 0;
        takefield(curval, buf, linelen, pos, width);
        // The full width counts even where the line ended early.
        pos += width;

        datatree_t *fp = newnode();
        *xpp = fp;
        fp->xmltag = EDI_STRSAV(cf->xmltag);
        fp->iseditag = 1;
        fp->editype = cf->editype;
        fp->edilen = cf->edilen;
        fp->ediforce = cf->ediforce;
        fp->edialign = cf->edialign;

        // curval is a private copy: the conversion may change it in place.
        if (strncmp(curval, empty, strlen(curval)) == 0)
            fp->data = EDI_STRSAV("");
        else
            fp->data = EDI_STRSAV(edirevconvert(fp, reinterpret_cast<unsigned char *>(curval)));
        fp->parent = rec;
        xpp = &fp->next;
    }
    return rec;
}
