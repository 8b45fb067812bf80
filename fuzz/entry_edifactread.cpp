#include <stdlib.h>
#include <string.h>

#include "edihost.h"
#include "fuzzentries.h"
#include "fuzzsupport.h"

namespace fuzzentry {

using fuzzsupport::expect;

namespace {

// One read; checks what the interface promises of tree and envelope.
int readonce(char *fn, datatree_t *inhead)
{
    envelope_t *ev = nullptr;
    datatree_t *tree = edifactread(fn, &ev, inhead, nullptr);
    if (tree == nullptr) {
        expect(ev == nullptr, "edifactread failed but set the envelope");
        return 0;
    }
    expect(ev != nullptr && ev->servconftag != nullptr, "edifactread gave a tree without envelope key");
    expect(ev->host == nullptr && ev->user == nullptr && ev->pass == nullptr &&
               ev->conf == nullptr && ev->mandant == nullptr,
           "edifactread set envelope fields other than the key");
    expect(strcmp(tree->xmltag, "edi") == 0, "edifactread gave a tree whose root is not edi");
    freedatatree(tree);
    free(ev->servconftag);
    free(ev);
    return 1;
}

}  // namespace

int edifactread(const uint8_t *data, size_t size)
{
    fuzzsupport::loadservconf();
    // The input reaches the module from memory, as the edi command hands
    // it a working copy: no file per input.  A small configuration keeps
    // the fill's cost per message low; the service configuration path
    // still reads the bundled ones.
    static char fn[] = "fuzz-input.edi";
    edihost_setinput(fn, reinterpret_cast<const char *>(data), size);
    int accepted = readonce(fn, fuzzsupport::fuzzconfig("small.tree"));
    accepted += readonce(fn, nullptr);
    edihost_clearinput();
    return accepted;
}

}  // namespace fuzzentry
