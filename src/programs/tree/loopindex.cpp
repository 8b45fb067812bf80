#include "loopindex.h"

#include <limits.h>
#include <string.h>

#include <memory>
#include <string_view>
#include <unordered_map>

namespace ediprot {

namespace {

struct Key {
    std::string_view name;
    long cnt;  // loopcnt for a loop name, 0 for any other name
    bool operator==(const Key &o) const { return cnt == o.cnt && name == o.name; }
};

struct KeyHash {
    size_t operator()(const Key &k) const
    {
        return std::hash<std::string_view>()(k.name) ^ (static_cast<size_t>(k.cnt) * 0x9e3779b97f4a7c15ULL);
    }
};

using Chain = std::unordered_map<Key, std::vector<datatree_t *>, KeyHash>;

// Only long chains are kept: a map entry for every short chain (one per
// loop instance and segment) would grow with the tree and turn every
// lookup into a cache miss.  Counting a short chain again costs no more
// than the plain walk that follows it.
struct Index {
    std::unordered_map<datatree_t *, Chain> chains;
    // The chain of the last lookup: consecutive lookups mostly share it.
    datatree_t *lasthead = nullptr;
    Chain *last = nullptr;
};

int scopes = 0;
Index *index_ = nullptr;
size_t minlen = kLoopIndexMin;

const std::vector<datatree_t *> kNone;

bool islong(datatree_t *head)
{
    size_t len = 0;
    for (datatree_t *tp = head; tp != nullptr && len <= minlen; tp = tp->next)
        len++;
    return len > minlen;
}

// The index of chain `head`, built on first use; NULL for a short chain.
Chain *chainfor(datatree_t *head)
{
    if (head == index_->lasthead)
        return index_->last;
    Chain *c = nullptr;
    auto it = index_->chains.find(head);
    if (it != index_->chains.end()) {
        c = &it->second;
    } else if (islong(head)) {
        c = &index_->chains[head];
        for (datatree_t *tp = head; tp != nullptr; tp = tp->next) {
            std::string_view name(tp->xmltag);
            (*c)[Key{name, name.size() > 0 && name[0] == '*' ? tp->loopcnt : 0L}].push_back(tp);
        }
    }
    index_->lasthead = head;
    index_->last = c;
    return c;
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

const std::vector<datatree_t *> *loopindex_find(datatree_t *head, const char *name,
                                                size_t n, long lct)
{
    if (!loopindex_active() || head == nullptr)
        return nullptr;
    Chain *c = chainfor(head);
    if (c == nullptr)
        return nullptr;
    bool loop = n > 0 && name[0] == '*';
    // A number outside int can equal no loopcnt.
    if (loop && (lct < INT_MIN || lct > INT_MAX))
        return &kNone;
    auto it = c->find(Key{std::string_view(name, n), loop ? lct : 0L});
    return it != c->end() ? &it->second : &kNone;
}

}  // namespace ediprot
