#include "loopindex.h"

#include <limits.h>
#include <stdint.h>
#include <string.h>

#include <algorithm>
#include <string_view>
#include <unordered_map>

namespace ediprot {

namespace {

// The siblings of one name, sorted by loop number (0 for a name that is
// not a loop's), siblings of one number in chain order.  A writer asks
// for the numbers 1, 2, 3 ... in turn: `finger` remembers where the last
// answer ended, so the next number is mostly found without a search.
struct Names {
    std::vector<long> cnts;
    std::vector<datatree_t *> nodes;
    size_t finger = 0;
};

using Chain = std::unordered_map<std::string_view, Names>;

// Only long chains are indexed and kept.  A small cache, keyed by the
// address of a chain's head, remembers for the chains in use whether they
// are long and where their index is: a writer's lookups walk the same few
// chains from the root again and again.
struct Index {
    std::unordered_map<datatree_t *, Chain> chains;
    struct Slot {
        datatree_t *head = nullptr;
        Chain *chain = nullptr;
    } cache[64];
};

int scopes = 0;
Index *index_ = nullptr;
size_t minlen = kLoopIndexMin;

bool islong(datatree_t *head)
{
    size_t len = 0;
    for (datatree_t *tp = head; tp != nullptr && len <= minlen; tp = tp->next)
        len++;
    return len > minlen;
}

Chain *build(datatree_t *head)
{
    Chain &c = index_->chains[head];
    for (datatree_t *tp = head; tp != nullptr; tp = tp->next) {
        std::string_view name(tp->xmltag);
        Names &nm = c[name];
        nm.cnts.push_back(name.size() > 0 && name[0] == '*' ? tp->loopcnt : 0L);
        nm.nodes.push_back(tp);
    }
    for (auto &entry : c) {
        Names &nm = entry.second;
        if (std::is_sorted(nm.cnts.begin(), nm.cnts.end()))
            continue;
        std::vector<size_t> order(nm.cnts.size());
        for (size_t k = 0; k < order.size(); k++)
            order[k] = k;
        std::stable_sort(order.begin(), order.end(),
                         [&](size_t a, size_t b) { return nm.cnts[a] < nm.cnts[b]; });
        Names sorted;
        for (size_t k : order) {
            sorted.cnts.push_back(nm.cnts[k]);
            sorted.nodes.push_back(nm.nodes[k]);
        }
        nm = std::move(sorted);
    }
    return &c;
}

// The index of chain `head`, built on first use; NULL for a short chain.
Chain *chainfor(datatree_t *head)
{
    Index::Slot &s = index_->cache[(reinterpret_cast<uintptr_t>(head) >> 4) % 64];
    if (s.head == head)
        return s.chain;
    auto it = index_->chains.find(head);
    s.head = head;
    s.chain = it != index_->chains.end() ? &it->second : islong(head) ? build(head) : nullptr;
    return s.chain;
}

}  // namespace

LoopIndexScope::LoopIndexScope()
{
    if (scopes++ == 0)
        index_ = new Index;
}

LoopIndexScope::~LoopIndexScope()
{
    if (--scopes == 0) {
        delete index_;
        index_ = nullptr;
    }
}

bool loopindex_active()
{
    return index_ != nullptr && minlen != kLoopIndexOff;
}

void loopindex_setmin(size_t min)
{
    minlen = min;
}

bool loopindex_find(datatree_t *head, const char *name, size_t n, long lct,
                    std::span<datatree_t *const> *cands)
{
    if (!loopindex_active() || head == nullptr)
        return false;
    Chain *c = chainfor(head);
    if (c == nullptr)
        return false;
    *cands = {};
    auto it = c->find(std::string_view(name, n));
    if (it == c->end())
        return true;
    Names &nm = it->second;
    const long want = n > 0 && name[0] == '*' ? lct : 0L;
    const size_t size = nm.cnts.size();
    size_t lo = nm.finger;
    if (lo >= size || nm.cnts[lo] != want || (lo > 0 && nm.cnts[lo - 1] == want))
        lo = static_cast<size_t>(std::lower_bound(nm.cnts.begin(), nm.cnts.end(), want) - nm.cnts.begin());
    size_t hi = lo;
    if (hi < size && nm.cnts[hi] == want)
        hi = lo + 1 < size && nm.cnts[lo + 1] == want
                 ? static_cast<size_t>(std::upper_bound(nm.cnts.begin() + lo, nm.cnts.end(), want) - nm.cnts.begin())
                 : lo + 1;
    nm.finger = hi;
    *cands = std::span<datatree_t *const>(nm.nodes.data() + lo, hi - lo);
    return true;
}

}  // namespace ediprot
