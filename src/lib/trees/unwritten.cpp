#include "trees/unwritten.h"

#include <stdio.h>
#include <string.h>
#include <strings.h>

#include <functional>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace edi {

namespace {

// The module's limit of a loop string (kTextMax in src/programs/state.h).
constexpr size_t kLoopStringMax = 8192;

// Chains of at most this many nodes are searched in place, longer ones
// through an index, as the module's writers do (tree/loopindex.h).
constexpr size_t kIndexMin = 32;

// The default functions the module knows (convert/defaultfuncs.cpp); each
// gives a number, any other name gives "".
bool knownfunction(const char *name)
{
    return strcasecmp(name, "unhcnt") == 0 || strcasecmp(name, "seccnt") == 0;
}

size_t digits(int i)
{
    size_t n = 1;
    for (; i >= 10; i /= 10)
        n++;
    return n;
}

// The siblings of one chain by name and, for a loop name, loop number.
class ChainIndex {
public:
    struct Key {
        std::string_view name;
        long lct;
        bool operator==(const Key &o) const { return lct == o.lct && name == o.name; }
    };
    struct Hash {
        size_t operator()(const Key &k) const
        {
            return std::hash<std::string_view>()(k.name) * 31 + static_cast<size_t>(k.lct);
        }
    };
    using Nodes = std::vector<const datatree_t *>;

    explicit ChainIndex(const datatree_t *chain)
    {
        for (const datatree_t *tp = chain; tp != nullptr; tp = tp->next)
            if (tp->xmltag != nullptr)
                map_[Key{tp->xmltag, tp->xmltag[0] == '*' ? tp->loopcnt : 0}].push_back(tp);
    }
    const Nodes *find(std::string_view name, long lct) const
    {
        auto at = map_.find(Key{name, lct});
        return at != map_.end() ? &at->second : nullptr;
    }

private:
    std::unordered_map<Key, Nodes, Hash> map_;
};

// The configuration walk of the module's writers (configwalk), with the
// lookups of searchlooppath and searchloopinstance and the part of the
// format's tag writer that decides which values reach the output.
class Walk {
public:
    Walk(const datatree_t *head, Writer w) : head_(head), writer_(w) {}

    void chain(const datatree_t *outcf)
    {
        int counter = 0;
        for (const datatree_t *tp = outcf; tp != nullptr; tp = tp->next) {
            if (tp->xmltag == nullptr)
                continue;
            names_.push_back(tp->xmltag);
            if (tp->xmltag[0] == '*') {
                // EDIFACT: one counter for all loops of the chain; VDA:
                // each loop from 1.
                int i = writer_ == Writer::edifact ? counter : 0;
                for (;;) {
                    i++;
                    size_t len = lblen_ + (loops_.empty() ? 0 : 1) + digits(i);
                    if (len >= kLoopStringMax)
                        break;
                    const size_t saved = lblen_;
                    loops_.push_back(i);
                    lblen_ = len;
                    const bool found = instance(tp);
                    if (found && tp->child != nullptr)
                        chain(tp->child);
                    loops_.pop_back();
                    lblen_ = saved;
                    if (!found)
                        break;
                }
                counter = i;
            } else if (tp->xmltag[0] == '$') {
                if (writer_ == Writer::edifact)
                    segment(tp);
                else
                    record(tp);
            } else if (tp->child != nullptr) {
                chain(tp->child);
            }
            names_.pop_back();
        }
    }

    std::vector<Written> out;

private:
    // searchlooppath from the root chain, by names_ and loops_.
    const datatree_t *search(const datatree_t *chain, size_t ci, size_t li, bool &complete)
    {
        const std::string_view name = names_[ci];
        const bool isloop = !name.empty() && name[0] == '*';
        const long lct = isloop ? (li < loops_.size() ? loops_[li] : 0) : 0;
        const size_t nli = isloop ? li + 1 : li;
        const bool last = ci + 1 == names_.size();
        auto visit = [&](const datatree_t *tp) -> const datatree_t * {
            if (tp->child != nullptr && !last)
                return search(tp->child, ci + 1, nli, complete);
            complete = last;
            return tp;
        };
        if (const ChainIndex *index = indexof(chain)) {
            if (const ChainIndex::Nodes *cands = index->find(name, lct))
                for (const datatree_t *tp : *cands)
                    if (const datatree_t *found = visit(tp))
                        return found;
            return nullptr;
        }
        for (const datatree_t *tp = chain; tp != nullptr; tp = tp->next) {
            if (tp->xmltag == nullptr || name != tp->xmltag)
                continue;
            if (isloop && lct != tp->loopcnt)
                continue;
            if (const datatree_t *found = visit(tp))
                return found;
        }
        return nullptr;
    }

    const datatree_t *lookup(bool *complete = nullptr)
    {
        bool c = false;
        const datatree_t *found = search(head_, 0, 0, c);
        if (complete != nullptr)
            *complete = c;
        return found;
    }

    // searchloopinstance: the loop node itself, matched down the whole path.
    bool instance(const datatree_t *loop)
    {
        bool complete = false;
        const datatree_t *x = lookup(&complete);
        return x != nullptr && complete && x->xmltag[0] == '*' && strcmp(x->xmltag, loop->xmltag) == 0;
    }

    const ChainIndex *indexof(const datatree_t *chain)
    {
        auto at = indexes_.find(chain);
        if (at != indexes_.end())
            return at->second.get();
        size_t n = 0;
        for (const datatree_t *tp = chain; tp != nullptr && n <= kIndexMin; tp = tp->next)
            n++;
        std::unique_ptr<ChainIndex> index;
        if (n > kIndexMin)
            index = std::make_unique<ChainIndex>(chain);
        return indexes_.emplace(chain, std::move(index)).first->second.get();
    }

    // The value rule (resolvevalue): the tree's value at the element's
    // path, else the default function's, else the default text.  Returns
    // whether a value other than "" results, and sets `fromtree` to the
    // data node it came from, if it came from the tree.
    bool value(const datatree_t *cf, const datatree_t *&fromtree)
    {
        fromtree = nullptr;
        const datatree_t *d = lookup();
        if (d != nullptr && d->data != nullptr) {
            fromtree = d;
            return d->data[0] != '\0';
        }
        if (cf->deffunc != nullptr)
            return knownfunction(cf->deffunc);
        return cf->defval != nullptr && cf->defval[0] != '\0';
    }

    // writeeditag: every element, or each component of a composite; the
    // segment stays only when an element of user data got a value.
    void segment(const datatree_t *tag)
    {
        std::vector<Written> got;
        bool kept = false;
        auto one = [&](const datatree_t *cf) {
            names_.push_back(cf->xmltag);
            const datatree_t *d = nullptr;
            if (value(cf, d)) {
                if (d != nullptr)
                    got.push_back(Written{d, cf});
                if (cf->edidata == ed_user)
                    kept = true;
            }
            names_.pop_back();
        };
        for (const datatree_t *el = tag->child; el != nullptr; el = el->next) {
            if (el->xmltag == nullptr)
                continue;
            if (el->child == nullptr) {
                one(el);
                continue;
            }
            names_.push_back(el->xmltag);
            for (const datatree_t *c = el->child; c != nullptr; c = c->next)
                if (c->xmltag != nullptr)
                    one(c);
            names_.pop_back();
        }
        if (kept)
            out.insert(out.end(), got.begin(), got.end());
    }

    // writevdarecord: a record where the tree has its node, every field.
    void record(const datatree_t *tag)
    {
        if (lookup() == nullptr)
            return;
        for (const datatree_t *f = tag->child; f != nullptr; f = f->next) {
            if (f->xmltag == nullptr)
                continue;
            names_.push_back(f->xmltag);
            const datatree_t *d = nullptr;
            if (value(f, d) && d != nullptr)
                out.push_back(Written{d, f});
            names_.pop_back();
        }
    }

    const datatree_t *head_;
    Writer writer_;
    std::vector<std::string_view> names_;  // the configuration path walked
    std::vector<long> loops_;              // the loop string, as numbers
    size_t lblen_ = 0;                     // its length as text
    std::unordered_map<const datatree_t *, std::unique_ptr<ChainIndex>> indexes_;
};

bool holdsvalue(const datatree_t *tp)
{
    return tp->data != nullptr && tp->data[0] != '\0';
}

// Depth first through the tree from `head`, with the path of each node:
// `report(node)` says whether a node holding a value is reported, `enter`
// whether the walk goes below it.
class Paths {
public:
    Paths(std::function<bool(const datatree_t *)> report,
          std::function<bool(const datatree_t *)> enter)
        : report_(std::move(report)), enter_(std::move(enter))
    {
    }

    std::vector<Unwritten> from(const datatree_t *head)
    {
        if (holdsvalue(head) && report_(head)) {
            std::string name = head->xmltag != nullptr ? head->xmltag : "";
            found_.push_back(Unwritten{head, nullptr, name, "", name, head->data});
        }
        if (enter_(head))
            below(head, nullptr);
        return std::move(found_);
    }

private:
    void below(const datatree_t *parent, const datatree_t *top)
    {
        // Names that several children bear get "[k]".
        std::unordered_map<std::string_view, int> total, seen;
        for (const datatree_t *c = parent->child; c != nullptr; c = c->next)
            total[c->xmltag != nullptr ? c->xmltag : ""]++;
        for (const datatree_t *c = parent->child; c != nullptr; c = c->next) {
            std::string_view name = c->xmltag != nullptr ? c->xmltag : "";
            std::string step(name);
            int k = ++seen[name];
            if (total[name] > 1)
                step += "[" + std::to_string(k) + "]";
            steps_.push_back(std::move(step));
            const datatree_t *t = top != nullptr ? top : c;
            if (holdsvalue(c) && report_(c))
                found_.push_back(Unwritten{c, t, joined(0), joined(1), std::string(name), c->data});
            if (c->child != nullptr && enter_(c))
                below(c, t);
            steps_.pop_back();
        }
    }

    std::string joined(size_t from) const
    {
        std::string p;
        for (size_t i = from; i < steps_.size(); i++)
            p += (i == from ? "" : ".") + steps_[i];
        return p;
    }

    std::function<bool(const datatree_t *)> report_, enter_;
    std::vector<std::string> steps_;
    std::vector<Unwritten> found_;
};

}  // namespace

std::vector<Written> writerreads(const datatree_t *head, const datatree_t *config, Writer w)
{
    Walk walk(head, w);
    if (head != nullptr && config != nullptr)
        walk.chain(config);
    return std::move(walk.out);
}

std::vector<Unwritten> unwritten(const datatree_t *head, const std::vector<Written> &written)
{
    if (head == nullptr)
        return {};
    std::unordered_set<const datatree_t *> done;
    for (const Written &w : written)
        done.insert(w.node);
    Paths paths([&done](const datatree_t *tp) { return done.count(tp) == 0; },
                [](const datatree_t *) { return true; });
    return paths.from(head);
}

std::vector<Unwritten> outside(const datatree_t *head, bool (*keep)(const datatree_t *))
{
    if (head == nullptr)
        return {};
    Paths paths([keep](const datatree_t *tp) { return !keep(tp); },
                [keep](const datatree_t *tp) { return !keep(tp); });
    return paths.from(head);
}

std::string quoted(const char *value)
{
    constexpr size_t kShown = 60;
    std::string out = "'";
    size_t n = 0;
    for (const char *p = value; *p != '\0'; p++, n++) {
        if (n == kShown) {
            out += "...";
            break;
        }
        unsigned char c = static_cast<unsigned char>(*p);
        if (c >= 0x20 && c < 0x7f) {
            out += static_cast<char>(c);
        } else {
            char buf[8];
            snprintf(buf, sizeof buf, "\\x%02x", c);
            out += buf;
        }
    }
    return out + "'";
}

}  // namespace edi
