// Pending shapes of the message fill; see pendingshape.h.
#include "pendingshape.h"

#include <ctype.h>
#include <string.h>

#include <algorithm>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "../state.h"
#include "../tree/tree.h"
#include "edifact.h"

namespace ediprot {
namespace pending {

namespace {

enum class Kind {
    built,  // an ordinary node; recorded for its configuration node only
    lazy,   // children pending: the empty copy of the chain `src`
    block,  // the copies of the nodes of one block, from `src` on
};

struct Entry {
    const datatree_t *origin;  // configuration node copied
    datatree_t *src;           // see Kind
    Kind kind;
    bool initial;              // copied from the configuration itself
};

// The walk of a configuration node's children as far as the fill can see
// it without building them: the tag names it can take (first four
// characters, case folded, as the fill compares them) and the first
// mandatory tag it meets.  The same for every copy of the node, since a
// copy only repeats loops and every repetition holds every tag.
struct Facts {
    std::vector<uint32_t> tags;  // sorted, unique
    const char *firstmand = nullptr;
};

// The entries of one message's template nodes, by node address.  Open
// addressing in one array: a long message records millions of nodes, and
// a node-based map would allocate one more block for each of them.
class Table {
public:
    Entry *find(const datatree_t *key)
    {
        if (slots_.empty())
            return nullptr;
        for (size_t i = slot(key);; i = (i + 1) & mask_) {
            if (slots_[i].key == key)
                return &slots_[i].value;
            if (slots_[i].key == nullptr)
                return nullptr;
        }
    }
    // Records `value` for `key`; earlier Entry pointers become invalid.
    void put(const datatree_t *key, const Entry &value)
    {
        if ((used_.size() + 1) * 10 > slots_.size() * 7)
            grow();
        size_t i = slot(key);
        while (slots_[i].key != nullptr && slots_[i].key != key)
            i = (i + 1) & mask_;
        if (slots_[i].key == nullptr) {
            slots_[i].key = key;
            used_.push_back(i);
        }
        slots_[i].value = value;
    }
    void clear()
    {
        for (size_t i : used_)
            slots_[i].key = nullptr;
        used_.clear();
    }

private:
    struct Slot {
        const datatree_t *key = nullptr;
        Entry value{};
    };
    size_t slot(const datatree_t *key) const
    {
        // Node addresses differ in their middle bits; mix them into all.
        uint64_t x = reinterpret_cast<uintptr_t>(key);
        x ^= x >> 33;
        x *= 0xff51afd7ed558ccdULL;
        x ^= x >> 33;
        x *= 0xc4ceb9fe1a85ec53ULL;
        x ^= x >> 33;
        return static_cast<size_t>(x) & mask_;
    }
    void grow()
    {
        std::vector<Slot> old;
        old.swap(slots_);
        std::vector<size_t> oldused;
        oldused.swap(used_);
        slots_.resize(old.empty() ? 1024 : old.size() * 2);
        mask_ = slots_.size() - 1;
        for (size_t i : oldused)
            put(old[i].key, old[i].value);
    }
    std::vector<Slot> slots_;
    std::vector<size_t> used_;
    size_t mask_ = 0;
};

Table table;  // per message
std::unordered_map<const datatree_t *, Facts> facts;  // per configuration

uint32_t tagkey(const char *name)
{
    uint32_t k = 0;
    for (int i = 0; i < 4 && name[i] != '\0'; i++)
        k |= static_cast<uint32_t>(tolower(static_cast<unsigned char>(name[i])))
             << (8 * i);
    return k;
}

bool ismandatory(const datatree_t *tp)
{
    int force;
    memcpy(&force, &tp->ediforce, sizeof force);
    return force == ef_mand;
}

const Facts &factsof(const datatree_t *conf)
{
    auto found = facts.find(conf);
    if (found != facts.end())
        return found->second;
    Facts f;
    for (const datatree_t *cp = conf->child; cp != nullptr; cp = cp->next) {
        if (cp->iseditag != 0) {
            f.tags.push_back(tagkey(cp->xmltag));
            if (f.firstmand == nullptr && ismandatory(cp))
                f.firstmand = cp->xmltag;
        } else if (cp->child != nullptr) {
            const Facts &inner = factsof(cp);
            f.tags.insert(f.tags.end(), inner.tags.begin(), inner.tags.end());
            if (f.firstmand == nullptr)
                f.firstmand = inner.firstmand;
        }
    }
    std::sort(f.tags.begin(), f.tags.end());
    f.tags.erase(std::unique(f.tags.begin(), f.tags.end()), f.tags.end());
    return facts.emplace(conf, std::move(f)).first->second;
}

Entry *entryof(const datatree_t *tp)
{
    return table.find(tp);
}

// The configuration node of `s`: recorded for template nodes, `s` itself
// for a node of the configuration.
const datatree_t *originof(const datatree_t *s, const Entry *e)
{
    return e != nullptr ? e->origin : s;
}

// Whether `s` belongs to a block: a loop node with children, built,
// pending, or a block node itself.
bool inblock(const datatree_t *s, const Entry *e)
{
    if (s->iseditag != 0 || s->xmltag[0] != '*')
        return false;
    return s->child != nullptr ||
           (e != nullptr && (e->kind == Kind::lazy || e->kind == Kind::block));
}

// The chain whose empty copy the children of a copy of `s` are.
datatree_t *childsource(datatree_t *s, const Entry *e)
{
    return e != nullptr && e->kind == Kind::lazy ? e->src : s->child;
}

datatree_t *namedcopy(const datatree_t *s)
{
    datatree_t *np = newnode();
    np->xmltag = EDI_STRSAV(s->xmltag);
    copynodeparms(np, const_cast<datatree_t *>(s), __LINE__);
    return np;
}

// The node behind `r` in its block (origin `o`), following a block node
// into the chain it refers to; NULL at the end of the block.
datatree_t *nextinblock(const datatree_t *r, const datatree_t *o)
{
    datatree_t *n = r->next;
    if (n == nullptr)
        return nullptr;
    const Entry *e = entryof(n);
    if (!inblock(n, e) || originof(n, e) != o)
        return nullptr;
    return e != nullptr && e->kind == Kind::block ? e->src : n;
}

// The empty copy of the chain `head` as pruning leaves it: every node
// without a value, and no loop node, since pruning takes away every loop
// node of a chain in which nothing holds data.
datatree_t *bare(datatree_t *head)
{
    datatree_t *start = nullptr;
    datatree_t **tail = &start;
    for (datatree_t *s = head; s != nullptr; s = s->next) {
        if (s->xmltag[0] == '*')
            continue;
        datatree_t *np = namedcopy(s);
        const Entry *e = s->child == nullptr ? entryof(s) : nullptr;
        np->child = bare(childsource(s, e));
        *tail = np;
        tail = &np->next;
    }
    return start;
}

}  // namespace

void beginread()
{
    facts.clear();
    table.clear();
}

void beginmessage()
{
    table.clear();
}

datatree_t *copyof(datatree_t *s)
{
    const Entry *e = entryof(s);
    datatree_t *np = namedcopy(s);
    if (s->iseditag != 0) {
        np->child = copysubtree(s->child);
        if (s->xmltag[0] == '*')
            table.put(np, {originof(s, e), nullptr, Kind::built, false});
    } else if (s->child != nullptr || (e != nullptr && e->kind == Kind::lazy)) {
        table.put(np, {originof(s, e), childsource(s, e), Kind::lazy, e == nullptr});
    } else if (s->xmltag[0] == '*') {
        table.put(np, {originof(s, e), nullptr, Kind::built, false});
    }
    return np;
}

datatree_t *repetitionof(datatree_t *tp)
{
    const Entry *e = entryof(tp);
    datatree_t *np = namedcopy(tp);
    table.put(np, {originof(tp, e), tp->child, Kind::lazy, false});
    return np;
}

bool ispending(const datatree_t *tp)
{
    const Entry *e = entryof(tp);
    return e != nullptr && e->kind != Kind::built;
}

Verdict judge(const datatree_t *tp, const char **mandtag)
{
    const Facts &f = factsof(entryof(tp)->origin);
    if (xdata == nullptr) {
        if (f.firstmand == nullptr)
            return Verdict::pass;
        *mandtag = f.firstmand;
        return Verdict::missing;
    }
    return std::binary_search(f.tags.begin(), f.tags.end(), tagkey(xdata->xmltag))
               ? Verdict::open
               : Verdict::pass;
}

void open(datatree_t *tp)
{
    Entry *e = entryof(tp);
    if (e->kind == Kind::block) {
        // This node becomes the block's next copy; the copies after it
        // get a block node of their own behind it.
        datatree_t *r = e->src;
        const datatree_t *o = e->origin;
        const bool initial = e->initial && entryof(r) == nullptr;
        if (datatree_t *after = nextinblock(r, o)) {
            datatree_t *rest = newnode();
            rest->xmltag = EDI_STRSAV(tp->xmltag);
            rest->parent = tp->parent;
            rest->next = tp->next;
            tp->next = rest;
            table.put(rest, {o, after, Kind::block, false});
        }
        copynodeparms(tp, r, __LINE__);
        const Entry *re = entryof(r);
        e = entryof(tp);
        *e = {o, childsource(r, re), Kind::lazy, initial};
    }
    datatree_t *start = nullptr;
    datatree_t **tail = &start;
    const bool initial = e->initial;
    datatree_t *s = e->src;
    e->kind = Kind::built;
    e->src = nullptr;
    while (s != nullptr) {
        const Entry *se = entryof(s);
        datatree_t *np;
        if (inblock(s, se)) {
            const datatree_t *o = originof(s, se);
            np = newnode();
            np->xmltag = EDI_STRSAV(s->xmltag);
            datatree_t *first = se != nullptr && se->kind == Kind::block ? se->src : s;
            table.put(np, {o, first, Kind::block, initial});
            do {
                s = s->next;
                se = s != nullptr ? entryof(s) : nullptr;
            } while (s != nullptr && inblock(s, se) && originof(s, se) == o);
        } else {
            np = copyof(s);
            s = s->next;
        }
        // Nodes of the configuration's own copy know their parent from
        // the start, as in a copy of the whole configuration.
        if (initial)
            np->parent = tp;
        *tail = np;
        tail = &np->next;
    }
    tp->child = start;
}

const datatree_t *origin(const datatree_t *tp)
{
    const Entry *e = entryof(tp);
    return e != nullptr ? e->origin : nullptr;
}

bool settle(datatree_t *tp)
{
    Entry *e = entryof(tp);
    if (e == nullptr || e->kind == Kind::built)
        return false;
    if (tp->xmltag[0] == '*')
        return true;
    datatree_t *src = e->src;
    e->kind = Kind::built;
    e->src = nullptr;
    tp->child = bare(src);
    return false;
}

datatree_t *emptycopy(datatree_t *s)
{
    datatree_t *np = namedcopy(s);
    if (s->iseditag != 0) {
        np->child = copysubtree(s->child);
    } else if (s->xmltag[0] == '*' && s->child != nullptr) {
        // One child without a value: pruning takes this loop node away,
        // as it would the whole empty copy.
        np->child = namedcopy(s->child);
    } else {
        np->child = bare(s->child);
    }
    return np;
}

}  // namespace pending
}  // namespace ediprot
