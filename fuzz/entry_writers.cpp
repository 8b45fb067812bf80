#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "edihost.h"
#include "fuzzentries.h"
#include "fuzzsupport.h"

namespace fuzzentry {

using fuzzsupport::expect;

namespace {

// The file a writer left: none after -1; after 0 one that ends as the
// format requires.
void checkoutput(int rc, const char *out, const char *ending, const char *who)
{
    expect(rc == 0 || rc == -1, who);
    char *text = nullptr;
    size_t len = 0;
    bool there = fuzzsupport::readwhole(out, &text, &len);
    if (rc == -1) {
        expect(!there, "a writer failed but left its file");
        return;
    }
    expect(there, "a writer succeeded without a file");
    size_t n = strlen(ending);
    expect(len >= n && memcmp(text + len - n, ending, n) == 0, "a written file ends unlike its format");
    free(text);
    unlink(out);
}

}  // namespace

int writers(const uint8_t *data, size_t size)
{
    if (size == 0)
        return 0;
    bool asconfig = (data[0] & 1) != 0;
    // Bit 1 turns every trace point on (low bits too), so that the trace
    // and dump code runs on odd trees as well; set on every run, since the
    // level is process-wide.
    tracelevel = (data[0] & 2) != 0 ? -1 : 0;
    datatree_t *tree = edihost_parsetree(reinterpret_cast<const char *>(data + 1), size - 1, "fuzz");
    if (tree == nullptr)
        return 0;
    char sender[] = "SENDER";
    char recipient[] = "RECIPIENT";
    char *out = fuzzsupport::outname();
    datatree_t *edicf = asconfig ? tree : fuzzsupport::config("orders-d96a-out.tree");
    datatree_t *vdacf = asconfig ? tree : fuzzsupport::config("vda4905.tree");
    int accepted = 0;

    int rc = edifactwrite(tree, out, nullptr, nullptr, edicf, sender, recipient, 0);
    checkoutput(rc, out, "UNZ+000001+4711'", "edifactwrite returned neither 0 nor -1");
    accepted += rc == 0;

    rc = vdawrite(tree, out, nullptr, nullptr, vdacf, sender, recipient, 0);
    checkoutput(rc, out, "\r\n", "vdawrite returned neither 0 nor -1");
    accepted += rc == 0;

    freedatatree(tree);
    fuzzsupport::removefiles();
    tracelevel = 0;
    return accepted;
}

}  // namespace fuzzentry
