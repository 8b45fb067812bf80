#include "pathscope.h"

#include <stdint.h>
#include <string.h>

#include <span>
#include <vector>

#include "../debug.h"
#include "loopindex.h"

namespace ediprot {

namespace {

bool isloopname(const char *name)
{
    return name[0] == '*';
}

// strcmp(a, b) == 0 for the short names of nodes, without a call.
bool samename(const char *a, const char *b)
{
    while (*a != '\0' && *a == *b) {
        a++;
        b++;
    }
    return *a == *b;
}

// The first data node of chain `s.at` that the name (and for a loop name
// the loop number) matches, and whether there is a second; with `whole`
// false the search stops at the first.  The candidates and their order
// are those of searchlooppath: the loop index's for a long chain, else
// the chain's.
datatree_t *firstmatch(const PathScope &s, const char *name, long lct, bool whole, bool &several)
{
    several = false;
    // A chain of a few nodes is searched in place: its index would give
    // the same candidates, and the walk meets millions of such chains.
    const bool isloop = isloopname(name);
    auto indexed = [&](datatree_t *&found) {
        std::span<datatree_t *const> cands;
        if (!loopindex_find(s.at, name, strlen(name), lct, &cands))
            return false;  // no index for it: the walk goes on in place
        several = cands.size() > 1;
        found = cands.empty() ? nullptr : cands[0];
        return true;
    };
    datatree_t *first = nullptr;
    if (s.islong && indexed(first))
        return first;
    size_t len = 0;
    for (datatree_t *tp = s.at; tp != nullptr; tp = tp->next) {
        if (++len == kLoopIndexMin + 1) {
            s.islong = true;
            if (indexed(first))
                return first;
        }
        if (!samename(tp->xmltag, name))
            continue;
        if (isloop && lct != tp->loopcnt)
            continue;
        if (first != nullptr) {
            several = true;
            break;
        }
        first = tp;
        if (!whole)
            break;
    }
    return first;
}

// True if every node of the chain from `top` and below has a name without
// '.' and, below the chain, the node above it as its parent; the chain's
// own nodes have none.  Then pathfornode of each is the names from the
// top down, one component each.  Iterative: configurations may be very
// deep or wide.
bool pathsarenames(const datatree_t *top)
{
    std::vector<std::pair<const datatree_t *, const datatree_t *>> todo;  // chain, its parent
    todo.emplace_back(top, nullptr);
    while (!todo.empty()) {
        auto [chain, parent] = todo.back();
        todo.pop_back();
        for (const datatree_t *tp = chain; tp != nullptr; tp = tp->next) {
            if (tp->xmltag == nullptr || strchr(tp->xmltag, '.') != nullptr || tp->parent != parent)
                return false;
            if (tp->child != nullptr)
                todo.emplace_back(tp->child, tp);
        }
    }
    return true;
}

}  // namespace

const char *LoopString::c_str() const
{
    if (text_ == nullptr) {
        for (size_t k = 0; k < numbers_->size(); k++) {
            if (k > 0)
                made_ += '.';
            made_ += std::to_string((*numbers_)[k]);
        }
        text_ = made_.c_str();
    }
    return text_;
}

PathStep pathstep(const PathScope &s, const char *name, long lct)
{
    PathStep st;
    switch (s.kind) {
    case PathScope::nothing:
    case PathScope::plain:
        st.inner = s;
        return st;
    case PathScope::childless:
        st.found = s.at;
        st.inner = s;
        return st;
    case PathScope::chain:
        break;
    }
    bool several = false;
    datatree_t *first = firstmatch(s, name, lct, true, several);
    if (first == nullptr) {
        st.inner.kind = PathScope::nothing;
        return st;
    }
    st.found = first;
    st.complete = 1;
    if (several)
        st.inner.kind = PathScope::plain;
    else if (first->child != nullptr)
        st.inner = PathScope{PathScope::chain, first->child};
    else
        st.inner = PathScope{PathScope::childless, first};
    return st;
}

datatree_t *pathfind(const PathScope &s, const char *name, long lct, int *complete)
{
    if (s.kind == PathScope::childless) {
        *complete = 0;
        return s.at;
    }
    if (s.kind != PathScope::chain)
        return nullptr;
    bool several = false;
    datatree_t *first = firstmatch(s, name, lct, false, several);
    if (first != nullptr)
        *complete = 1;
    return first;
}

void prefetchsibling(const datatree_t *x)
{
    const uintptr_t a = reinterpret_cast<uintptr_t>(x);
    const uintptr_t b = reinterpret_cast<uintptr_t>(x->next);
    constexpr uintptr_t kMost = 16384, kLine = 64;
    if (b <= a || b - a > kMost)
        return;
    for (uintptr_t p = b; p < b + (b - a); p += kLine)
        __builtin_prefetch(reinterpret_cast<const void *>(p));
}

PathScope rootscope(datatree_t *head, const datatree_t *outcf, const char *loop)
{
    PathScope s;
    if (trace_on(0) || trace_low_on(0) || !loopindex_active() || loop[0] != '\0' ||
        !pathsarenames(outcf))
        return s;
    s.kind = head != nullptr ? PathScope::chain : PathScope::nothing;
    s.at = head;
    return s;
}

}  // namespace ediprot
