#include "trees/renumber.h"

#include <stdint.h>
#include <string.h>

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "trees/samename.h"

namespace edi {

namespace {

bool holdsdata(const datatree_t *tp)
{
    for (const datatree_t *c = tp->child; c != nullptr; c = c->next)
        if (c->data != nullptr || holdsdata(c))
            return true;
    return false;
}

// True if the data node `dp` can be an occurrence of the configuration
// node `cp`: the names of its children, each run of one name taken once,
// come in the order of `cp`'s children.
bool fits(const datatree_t *dp, const datatree_t *cp)
{
    const datatree_t *c = cp->child;
    const char *last = nullptr;
    for (const datatree_t *d = dp->child; d != nullptr; d = d->next) {
        if (d->xmltag == nullptr || (last != nullptr && strcmp(last, d->xmltag) == 0))
            continue;
        last = d->xmltag;
        while (c != nullptr && (c->xmltag == nullptr || strcmp(c->xmltag, d->xmltag) != 0))
            c = c->next;
        if (c == nullptr)
            return false;
        c = c->next;
    }
    return true;
}

// The configuration sibling that owns the data node `dp` among the loops
// named like it, from `first` on: the first whose contents it fits (two
// sibling loops of one name are told apart by what they hold), else the
// first of them.
const datatree_t *owner(const datatree_t *first, const datatree_t *dp)
{
    const datatree_t *any = nullptr;
    for (const datatree_t *cp = first; cp != nullptr; cp = cp->next) {
        if (cp->xmltag == nullptr || strcmp(cp->xmltag, dp->xmltag) != 0)
            continue;
        if (any == nullptr)
            any = cp;
        if (fits(dp, cp))
            return cp;
    }
    return any;
}

// A name's hash: most names that differ are told apart by it without
// comparing their texts.
uint64_t namehash(const char *s)
{
    uint64_t h = 1469598103934665603ULL;
    for (; *s != '\0'; s++)
        h = (h ^ static_cast<unsigned char>(*s)) * 1099511628211ULL;
    return h;
}

// Chains at most this long are matched name by name; longer ones through
// an index, so that a long chain (many occurrences, or a configuration of
// many siblings) is not searched once per configuration node.
constexpr size_t kShort = 64;

size_t length(const datatree_t *tp, size_t limit)
{
    size_t n = 0;
    for (; tp != nullptr && n <= limit; tp = tp->next)
        n++;
    return n;
}

class Numbering {
public:
    // For each configuration node in order, every data sibling of the same
    // name in order; a loop takes the next number per occurrence and one
    // more for the writer's try that finds none.  Tag nodes' children are
    // no loops.
    void number(const datatree_t *conf, datatree_t *data)
    {
        int i = 0;
        // What the configuration's chain gives each occurrence of its loop
        // alike is kept per chain: its names' hashes, which siblings share
        // a name, its length.  The data's hashes go on a stack shared by
        // the levels of the walk.
        const Chain &chain = chainof(conf);
        if (std::min(chain.hash.size(), kShort + 1) * length(data, kShort) <= kShort * kShort / 4) {
            const size_t base = stack_.size();
            for (const datatree_t *dp = data; dp != nullptr; dp = dp->next)
                stack_.push_back(dp->xmltag != nullptr ? namehash(dp->xmltag) : 0);
            size_t k = 0;
            for (const datatree_t *cp = conf; cp != nullptr; cp = cp->next, k++) {
                if (cp->xmltag == nullptr)
                    continue;
                size_t j = base;
                for (datatree_t *dp = data; dp != nullptr; dp = dp->next, j++)
                    if (dp->xmltag != nullptr && stack_[j] == chain.hash[k] &&
                        samename(dp->xmltag, cp->xmltag))
                        occurrence(conf, cp, dp, chain.shared[k] != 0, i);
                if (cp->xmltag[0] == '*')
                    ++i;
            }
            stack_.resize(base);
            return;
        }
        std::unordered_map<std::string_view, std::vector<datatree_t *>> byname;
        for (datatree_t *dp = data; dp != nullptr; dp = dp->next)
            if (dp->xmltag != nullptr)
                byname[dp->xmltag].push_back(dp);
        size_t k = 0;
        for (const datatree_t *cp = conf; cp != nullptr; cp = cp->next, k++) {
            if (cp->xmltag == nullptr)
                continue;
            auto found = byname.find(cp->xmltag);
            if (found != byname.end())
                for (datatree_t *dp : found->second)
                    occurrence(conf, cp, dp, chain.shared[k] != 0, i);
            if (cp->xmltag[0] == '*')
                ++i;
        }
    }

private:
    // Numbers the data node `dp` as an occurrence of the configuration node
    // `cp`, and what is below it.  `shared`: a sibling of `cp` bears its name.
    void occurrence(const datatree_t *conf, const datatree_t *cp, datatree_t *dp, bool shared,
                    int &i)
    {
        bool isloop = cp->xmltag[0] == '*', istag = cp->xmltag[0] == '$';
        if (isloop && shared && owner(conf, dp) != cp)
            return;
        // An occurrence without any value is left out, as the reader prunes
        // it: 0 is a number the writer never looks for.
        if (isloop && !holdsdata(dp)) {
            dp->loopcnt = 0;
            return;
        }
        if (isloop)
            dp->loopcnt = ++i;
        if (!istag && cp->child != nullptr)
            number(cp->child, dp->child);
    }

    // A configuration chain, node by node in order: the hash of its name,
    // and whether a sibling bears the name too.
    struct Chain {
        std::vector<uint64_t> hash;
        std::vector<char> shared;
    };

    const Chain &chainof(const datatree_t *conf)
    {
        auto [at, fresh] = chains_.try_emplace(conf);
        Chain &c = at->second;
        if (!fresh)
            return c;
        std::unordered_map<std::string_view, int> count;
        for (const datatree_t *cp = conf; cp != nullptr; cp = cp->next)
            if (cp->xmltag != nullptr)
                count[cp->xmltag]++;
        for (const datatree_t *cp = conf; cp != nullptr; cp = cp->next) {
            c.hash.push_back(cp->xmltag != nullptr ? namehash(cp->xmltag) : 0);
            c.shared.push_back(cp->xmltag != nullptr && count[cp->xmltag] > 1);
        }
        return c;
    }

    std::unordered_map<const datatree_t *, Chain> chains_;
    std::vector<uint64_t> stack_;
};

}  // namespace

void renumbertree(const datatree_t *config, datatree_t *tree)
{
    Numbering().number(config->child, tree->child);
}

void renumbermessage(const datatree_t *config, datatree_t *message)
{
    for (const datatree_t *cm = config->child; cm != nullptr; cm = cm->next)
        if (cm->xmltag != nullptr && message->xmltag != nullptr &&
            strcmp(cm->xmltag, message->xmltag) == 0) {
            Numbering().number(cm->child, message->child);
            return;
        }
}

}  // namespace edi
