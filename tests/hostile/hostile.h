// Helpers of the bad-input tests: a small configuration and interchange
// that the rows vary, noise with a fixed seed, and calls of the readers
// that keep their result and stderr.
#ifndef EDIPROT_HOSTILE_H
#define EDIPROT_HOSTILE_H

#include <string>

#include "ediprot.h"

namespace hostile {

// A configuration of one message loop with UNH, FTX and UNT.
extern const char *const kMessageConfig;
// An interchange of one message that kMessageConfig reads, with the
// default service characters: UNB, UNH, FTX (text "TEXT"), UNT, UNZ.
extern const char *const kInterchange;

// `n` bytes of noise; the same seed gives the same bytes everywhere.
std::string noise(unsigned seed, size_t n);

// `text` with every "{F}" replaced by `fn`.
std::string withname(std::string text, const std::string &fn);

// One call of edifactread or vdaread: result, envelope and stderr.  The
// destructor releases what the call returned.
struct ReadResult {
    datatree_t *tree = nullptr;
    envelope_t *ev = nullptr;
    std::string err;
    ReadResult() = default;
    ReadResult(const ReadResult &) = delete;
    ReadResult &operator=(const ReadResult &) = delete;
    ~ReadResult();
    // data of the node at `path` under the loop numbers `loop`, or
    // "(none)" when there is no such node or it has no value.
    std::string at(const char *path, const char *loop) const;
};

void readedifact(ReadResult &r, const std::string &fn, datatree_t *inhead);
void readvda(ReadResult &r, const std::string &fn, datatree_t *inhead);

// Number of nodes in the chain `tp` and everything below it.
size_t countnodes(const datatree_t *tp);

}  // namespace hostile

#endif
