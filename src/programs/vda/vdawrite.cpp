// vdawrite: a data tree as a VDA record file, the records in the order of
// the configuration, closed by the trailer 519 with the record counts.
#include <errno.h>
#include <stdio.h>
#include <unistd.h>

#include "../debug.h"
#include "../state.h"
#include "../tree/loopindex.h"
#include "vda.h"

using namespace ediprot;

namespace {

// No file of that name stays behind a failed write.
int failwrite(const char *outfile)
{
    unlink(outfile);
    fprintf(stderr, "vdawrite error\n");
    return -1;
}

}  // namespace

EDIPROT_API int vdawrite(datatree_t *tree, char *outfile, char *enc,
                         char *ev, datatree_t *outcf, char *sender,
                         char *recipient, int editest)
{
    (void)enc;
    (void)ev;
    (void)sender;
    (void)recipient;
    (void)editest;

    initrecs();
    if (outfile == nullptr) {
        errno = EINVAL;
        perror("vdawrite");
        fprintf(stderr, "vdawrite error\n");
        return -1;
    }
    TRACE(2, "vdawrite: outfile <%s>\n", outfile);
    FILE *fp = fopen(outfile, "w");
    if (fp == nullptr) {
        perror(outfile);
        return failwrite(outfile);
    }
    TRACE(2, "vdawrite: outcf %p, tree %p\n", static_cast<void *>(outcf),
          static_cast<void *>(tree));
    TRACE_DUMP(3, outcf);
    TRACE(2, "vdawrite: data %p, tree %p\n", static_cast<void *>(outcf),
          static_cast<void *>(tree));
    TRACE_DUMP(3, tree);

    // A missing mandatory field is reported and written as blanks; it does
    // not cost the file.
    errcnt = 0;
    {
        // The traverse finds every field from the root: index long chains.
        LoopIndexScope loopindex;
        vdatraverse(fp, tree, outcf, "");
    }
    errcnt = 0;

    incrrecs("S519");
    writevda519(fp);

    // A full disk or a failed close shows in the stream's error flag or in
    // the result of fclose: the file is then incomplete and is removed.
    const bool failed = ferror(fp) != 0;
    if (fclose(fp) != 0 || failed) {
        fprintf(stderr, "%s: write failed\n", outfile);
        return failwrite(outfile);
    }
    TRACE(2, "vdawrite ok\n");
    return 0;
}
