// edifactwrite: one data tree as one EDIFACT interchange.  UNA and UNB are
// written here, the messages by the segment writer from the configuration
// tree, and UNZ closes the file.  The file is kept only when no mandatory
// element was missing and every write reached the disk; otherwise no file
// of that name is left behind.
#include <stdio.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

#include "../debug.h"
#include "../state.h"
#include "../tree/loopindex.h"
#include "edifact.h"

namespace {

// Longest sender or recipient identification that UNB carries.
constexpr size_t kPartnerMax = 35;

void cutpartner(char *id)
{
    if (strlen(id) > kPartnerMax)
        id[kPartnerMax] = '\0';
}

// Ends the file at the stream's present position (segments taken back at
// the end may have left text behind it) and closes it.  Returns 0, or -1
// when any write, the cut or the close failed; the stream is closed
// either way.
int finishfile(FILE *fp)
{
    int rc = 0;
    if (fflush(fp) != 0 || ferror(fp))
        rc = -1;
    long end = ftell(fp);
    if (rc == 0 && (end < 0 || ftruncate(fileno(fp), static_cast<off_t>(end)) != 0))
        rc = -1;
    if (fclose(fp) != 0)
        rc = -1;
    return rc;
}

}  // namespace

EDIPROT_API int edifactwrite(datatree_t *tree, char *outfile, char *enc,
                             char *ev, datatree_t *outcf, char *sender,
                             char *recipient, int editest)
{
    (void)enc;
    (void)ev;
    using namespace ediprot;

    time_t now = time(nullptr);
    nunhcnt = 0;
    seg_sep = '\'';
    dst_sep = '+';
    cmp_sep = ':';
    escape = '?';

    if (outfile == nullptr) {
        fprintf(stderr, "output file name missing\n");
        return -1;
    }
    if (sender == nullptr || recipient == nullptr) {
        fprintf(stderr, "sender or recipient missing\n");
        unlink(outfile);
        return -1;
    }
    cutpartner(sender);
    cutpartner(recipient);

    struct tm tmv;
    localtime_r(&now, &tmv);
    // Wider than YYMMDD and HHMM need, so that no int can overflow them.
    char dbuf[40];
    char tbuf[24];
    snprintf(dbuf, sizeof dbuf, "%02d%02d%02d", tmv.tm_year % 100, tmv.tm_mon + 1,
             tmv.tm_mday);
    snprintf(tbuf, sizeof tbuf, "%02d%02d", tmv.tm_hour, tmv.tm_min);

    FILE *fp = tmpfopen(outfile, const_cast<char *>("w"));
    if (fp == nullptr) {
        perror(outfile);
        unlink(outfile);
        return -1;
    }

    TRACE(2, "edifactwrite: outcf %p, tree %p\n", static_cast<void *>(outcf),
          static_cast<void *>(tree));
    TRACE_DUMP(3, outcf);
    TRACE(2, "edifactwrite: data %p, tree %p\n", static_cast<void *>(outcf),
          static_cast<void *>(tree));
    TRACE_DUMP(3, tree);

    const char *reference = "4711";
    fprintf(fp, "UNA%c%c%c%c '", ':', '+', '.', '?');
    if (editest != 0)
        fprintf(fp, "UNB+UNOB:2+%.35s:14+%.35s:14+%s:%s+%.14s++++++1'", sender,
                recipient, dbuf, tbuf, reference);
    else
        fprintf(fp, "UNB+UNOB:2+%.35s:14+%.35s:14+%s:%s+%.14s'", sender, recipient,
                dbuf, tbuf, reference);

    errcnt = 0;
    // The traverse finds every element from the root: index long chains.
    LoopIndexScope loopindex;
    int rc = editraverse(fp, tree, outcf, "");
    if (rc == 0 && errcnt == 0) {
        fprintf(fp, "UNZ+%.6d+%.14s'", 1, reference);
        if (finishfile(fp) == 0)
            return 0;
        fprintf(stderr, "%s: write failed\n", outfile);
    } else {
        fprintf(stderr, "editraverse failed, rc %d\n", rc);
        fclose(fp);
    }
    unlink(outfile);
    return -1;
}
