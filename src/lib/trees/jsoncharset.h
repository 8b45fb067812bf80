// Values in JSON are Unicode text; in the tree they are the interchange's
// bytes.  A tree's JSON decodes each value by the character set of the
// interchange it belongs to (the `charset` of the `#envelope` node in front
// of it; ISO 8859-1 where there is none), and a JSON document read back is
// encoded the same way, so that writing it gives the bytes that were read.
#ifndef EDI_JSONCHARSET_H
#define EDI_JSONCHARSET_H

#include <string>
#include <vector>

#include "ediprot.h"
#include "text/charset.h"

namespace edi {

class Report;

// The set JSON texts are decoded with on this thread while the object
// lives (the one before is in force again behind it).
class JsonDecoding {
public:
    explicit JsonDecoding(Charset cs);
    ~JsonDecoding();
    JsonDecoding(const JsonDecoding &) = delete;
    JsonDecoding &operator=(const JsonDecoding &) = delete;

private:
    Charset before_;
};

// Called for each node as it is turned into JSON: an `#envelope` node puts
// its set in force for itself and the nodes behind it.
void jsonenvelope(const datatree_t *tp);

// `bytes` as UTF-8, decoded by the set in force.
std::string jsontext(const char *bytes);

// The set an `#envelope` node names (its charset, else its syntax
// identifier's); ISO 8859-1 when it names none the library knows.
Charset envelopecharset(const datatree_t *env);

// Every text of a tree (or chain) parsed from JSON (UTF-8) encoded into the
// set of its interchange: the `#envelope` node's in front of it, else `cs`
// (the document's, or ISO 8859-1).  False, with a failure per text naming
// the node (first 20), when a character has no code in that set.
bool encodejsontree(datatree_t *root, const std::string &name, Report &rep,
                    Charset cs = Charset::iso8859_1);

// The same for a tree whose texts are all ASCII, which every set encodes
// as they are: only its `#envelope` nodes (all of them, in document
// order) are looked at, for a set the library does not know.
bool encodeasciitree(const std::vector<datatree_t *> &envelopes, const std::string &name,
                     Report &rep);

}  // namespace edi

#endif
