// vdaread: a VDA record file, line by line, into a new data tree whose
// root is named after the root of the configuration.
#include <string.h>

#include "../debug.h"
#include "../state.h"
#include "../tree/tree.h"
#include "recordindex.h"
#include "vda.h"

using namespace ediprot;

namespace {

// Takes the line end off: the last character whatever it is (the LF of a
// complete line), then a CR if one is left at the end.
size_t chopline(char *buf)
{
    size_t len = strlen(buf);
    if (len > 0)
        buf[--len] = '\0';
    if (len > 0 && buf[len - 1] == '\r')
        buf[--len] = '\0';
    return len;
}

}  // namespace

EDIPROT_API datatree_t *vdaread(char *fn, envelope_t **evpp,
                                datatree_t *inhead, servconf_t *sc)
{
    (void)evpp;
    (void)sc;
    datatree_t *lochead = nullptr;
    datatree_t *sp = nullptr;
    int lct = 0;
    int loops[kLoopDepths] = {0};

    TRACE(2, "vdaread <%s>\n", fn != nullptr ? fn : "(null)");
    printdata(inhead, 0, stderr, __LINE__);

    if (findsatz(inhead, "S511") == nullptr) {
        fprintf(stderr, "S511 missing in vdaconf\n");
    } else if (fn == nullptr) {
        fprintf(stderr, "vdaread: no file name\n");
    } else {
        FILE *fp = tmpfopen(fn, const_cast<char *>("r"));
        if (fp == nullptr) {
            perror(fn);
        } else {
            lochead = newnode();
            copynodeparms(lochead, inhead, __LINE__);
            lochead->xmltag = EDI_STRSAV(inhead->xmltag);

            RecordIndexScope recordindex;
            static char buf[kTextMax];
            while (fgets(buf, sizeof buf, fp) != nullptr) {
                lct++;
                size_t len = chopline(buf);
                TRACE(1, "%d: len %d,  record <%s>\n", lct, static_cast<int>(len), buf);
                datatree_t *xp = makerecord(buf, &sp, inhead);
                if (xp == nullptr)
                    continue;
                printdata(xp, 0, stderr, __LINE__);
                // A record without a place in the tree is released here:
                // nothing refers to it.
                if (insrecord(&lochead, xp, pathfornode(sp, 0), loops, 0) != 0)
                    freedatatree(xp);
                setparents(lochead, 0);
                TRACE(2, "after insrecord\n");
                TRACE_DUMP(2, lochead);
            }
            fclose(fp);
            printdata(lochead, 0, stderr, __LINE__);
            setparents(lochead, 0);
        }
    }
    TRACE(1, "vdaread done %p\n", static_cast<void *>(lochead));
    return lochead;
}
