// Pending shapes: the template of a message fill, built only as far as the
// walk needs it.
//
// The fill repeats a loop by an empty copy of the occurrence just filled,
// inner repetitions included, and begins each message with a copy of the
// whole configuration.  Built node by node, that template grows with the
// configuration for every message, doubles with every level of nesting,
// and grows quadratically with the repetitions of an outer loop whose
// occurrences repeat inner loops.  Here a copy starts as one node whose
// children are pending: the node records the chain its children copy.
// They are built one level at a time when the walk could take a segment
// below it; otherwise the walk passes the node as it would pass the empty
// copy, which takes nothing.
//
// The nodes of one configuration node that stand in a row in a chain (a
// loop's occurrences and inherited copies) are copied as one block node
// that yields their copies one at a time, so that passing the inherited
// copies of earlier occurrences costs one step, however many there are.
//
// Every pending node is a plain datatree node without child and value, so
// hasdata and the tree helpers see what they would see in the empty copy.
// The facts about it live in a table of this file, reset for each message;
// before the message is pruned, pending nodes are either turned into their
// empty copy (plain nodes) or taken away as the empty loops they stand for.
#ifndef EDIPROT_PENDINGSHAPE_H
#define EDIPROT_PENDINGSHAPE_H

#include "ediprot.h"

namespace ediprot {
namespace pending {

// What a pending node's empty copy would do in the walk from xdata on.
enum class Verdict {
    pass,     // take nothing: no tag below it fits xdata
    missing,  // input ended and a mandatory tag lies below it (*mandtag)
    open,     // a tag below it could take xdata: build and walk it
};

// Forgets the facts of the previous configuration (start of a read).
void beginread();
// Forgets the pending nodes of the previous message.
void beginmessage();

// The template's copy of the node `s` (a configuration or template node),
// without values: a tag node with all its elements, a node with children
// as a pending node, any other node as it is.
datatree_t *copyof(datatree_t *s);
// The repetition of the filled occurrence `tp`: a pending node whose
// children are the empty copy of tp's children.
datatree_t *repetitionof(datatree_t *tp);

// True if `tp` is a pending node or a block node.
bool ispending(const datatree_t *tp);
// How the walk of the pending node `tp` would go.  With `missing`,
// *mandtag names the mandatory tag that the input lacks.
Verdict judge(const datatree_t *tp, const char **mandtag);
// Builds the children of the pending node `tp` one level deep; a block
// node first becomes the next copy of its block, and a block node for the
// copies after it is linked in behind it.
void open(datatree_t *tp);

// The configuration node that the template node `tp` copies, or NULL when
// the fill did not record one (tag nodes and leaves are not recorded).
const datatree_t *origin(const datatree_t *tp);

// For pruning: true if `tp` stands for loop nodes that hold nothing (a
// pending loop node or a block node); a pending plain node instead gets
// its empty copy as children, without the loop nodes it would lose anyway.
bool settle(datatree_t *tp);

// A copy of the configuration node `s` that pruning treats as it would
// treat the whole empty copy: for the configuration root's further
// children, which each message's template brings along.
datatree_t *emptycopy(datatree_t *s);

}  // namespace pending
}  // namespace ediprot

#endif
