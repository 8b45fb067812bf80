// Where the writers' walk stands in the data tree.
//
// searchlooppath finds every element again from the root, by the path of
// its configuration node and the loop string, so a message of many loop
// instances is searched from the top once per element of every segment.
// The walk goes down the configuration one name at a time, so it can keep
// what each level of the path matched and look up only the next name:
//
//   - no data node matched: every longer path finds nothing;
//   - one data node matched: every longer path goes through it, or, when
//     it has no children, ends at it (complete 0), as searchlooppath's
//     descent does;
//   - two or more matched: a descent into the first that finds nothing
//     backs out to the next, so below this level the walk looks up from
//     the root as before (`plain`).
//
// The answers are those of searchlooppath as long as the configuration
// node's path (pathfornode) is the names the walk went down, with the
// loop numbers of the walk; rootscope checks that once per walk and
// otherwise gives `plain` from the start.
#ifndef EDIPROT_PATHSCOPE_H
#define EDIPROT_PATHSCOPE_H

#include <string>
#include <vector>

#include "ediprot.h"

namespace ediprot {

// The loop string of a walk ("1.23.1"): a text given, or the numbers of a
// walk that finds its way through scopes and needs the text only where a
// lookup falls back to the one from the root; it is made then, once.
class LoopString {
public:
    explicit LoopString(const char *text) : text_(text) {}
    explicit LoopString(const std::vector<int> &numbers) : numbers_(&numbers) {}
    const char *c_str() const;

private:
    mutable const char *text_ = nullptr;
    const std::vector<int> *numbers_ = nullptr;
    mutable std::string made_;
};

struct PathScope {
    enum Kind { chain, childless, nothing, plain };
    Kind kind = plain;
    // chain: the data chain the next name is looked up in; childless:
    // the node every longer path ends at.
    datatree_t *at = nullptr;
    // chain: known to be long (a lookup counted past the index's limit).
    // A chain of many loop instances is looked up once per instance;
    // counting its first nodes again each time would cost more than the
    // look-up in its index.
    mutable bool islong = false;
};

// One level down by `name` (loop number `lct` for a loop name, else
// ignored) from a scope that is not plain: what searchlooppath gives for
// the path that ends with `name` (`found`, and `complete` when found),
// and the scope of the paths that go on below it.
struct PathStep {
    datatree_t *found = nullptr;
    int complete = 0;
    PathScope inner;
};
PathStep pathstep(const PathScope &s, const char *name, long lct);

// Only `found` and `complete` of pathstep, without looking further for a
// second match: for the last name of a path.
datatree_t *pathfind(const PathScope &s, const char *name, long lct, int *complete);

// The sibling behind `x` (the next loop instance, mostly) asked for ahead
// of the walk: a read lays a node and everything below it down one behind
// the other, so the sibling's nodes lie behind its start, about as many
// bytes as x's own.  The walk then finds them at hand instead of waiting
// for each in turn.  Only a hint: where nodes lie elsewhere, nothing is
// read and nothing changes.
void prefetchsibling(const datatree_t *x);

// The scope of the walk of the configuration chain `outcf` over the data
// tree `head` with the loop string `loop`: the data tree's root chain, or
// plain when the walk must look up from the root.  That is when a trace
// is on (the lookups write their trace lines), when the loop index is off
// (tests compare against the plain walk), when the walk starts inside a
// loop string, and when a configuration node's path would not be the
// names the walk goes down: a name with a '.' in it, or a parent link
// that is not the node above it.
PathScope rootscope(datatree_t *head, const datatree_t *outcf, const char *loop);

}  // namespace ediprot

#endif
