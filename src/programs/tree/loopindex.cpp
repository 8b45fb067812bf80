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

// NULL `byname` marks a short chain.
struct Chain {
    std::unique_ptr<std::unordered_map<Key, std::vector<datatree_t *>, KeyHash>> byname;
};

struct Index {
    std::unordered_map<datatree_t *, Chain> chains;
};

int scopes = 0;
Index *index_ = nullptr;

const std::vector<datatree_t *> kNone;

Chain &chainfor(datatree_t *head)
{
    auto [it, fresh] = index_->chains.try_emplace(head);
    if (!fresh)
        return it->second;
    size_t len = 0;
    for (datatree_t *tp = head; tp != nullptr && len <= kLoopIndexMin; tp = tp->next)
        len++;
    if (len > kLoopIndexMin) {
        auto map = std::make_unique<std::unordered_map<Key, std::vector<datatree_t *>, KeyHash>>();
        for (datatree_t *tp = head; tp != nullptr; tp = tp->next) {
            std::string_view name(tp->xmltag);
            (*map)[Key{name, name.size() > 0 && name[0] == '*' ? tp->loopcnt : 0L}].push_back(tp);
        }
        it->second.byname = std::move(map);
    }
    return it->second;
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
    return index_ != nullptr;
}

const std::vector<datatree_t *> *loopindex_find(datatree_t *head, const char *name,
                                                size_t n, long lct)
{
    if (index_ == nullptr || head == nullptr)
        return nullptr;
    Chain &c = chainfor(head);
    if (!c.byname)
        return nullptr;
    bool loop = n > 0 && name[0] == '*';
    // A number outside int can equal no loopcnt.
    if (loop && (lct < INT_MIN || lct > INT_MAX))
        return &kNone;
    auto it = c.byname->find(Key{std::string_view(name, n), loop ? lct : 0L});
    return it != c.byname->end() ? &it->second : &kNone;
}

}  // namespace ediprot
