#include "trees/unwritten.h"

#include <stdio.h>
#include <string.h>
#include <strings.h>

#include <functional>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "trees/samename.h"

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

bool holdsvalue(const datatree_t *tp)
{
    return tp->data != nullptr && tp->data[0] != '\0';
}

// Where the walk stands in the data tree, as the module's writers keep it
// (src/programs/tree/pathscope.h): the chain the next name is looked up
// in, the childless node every longer path ends at, no match (nothing is
// found below), or `plain` below a level where several data nodes matched
// (a failed descent backs out to the next), where the walk looks each
// path up from the root.
struct Scope {
    enum Kind { chain, childless, nothing, plain };
    Kind kind = plain;
    const datatree_t *at = nullptr;
    // chain: known to be long (a lookup counted past the index's limit),
    // so that a chain of many loop instances is not counted again per
    // instance.
    mutable bool islong = false;
};

// The nodes holding a value of the tree `head` (it and everything below
// it, not its siblings), one at a time in document order.
class ValuesInOrder {
public:
    explicit ValuesInOrder(const datatree_t *head) : at_(head), root_(head) { settle(); }

    // The next one, NULL at the end.
    const datatree_t *next()
    {
        const datatree_t *tp = at_;
        if (tp != nullptr) {
            advance();
            settle();
        }
        return tp;
    }

private:
    // At the next node in document order.
    void advance()
    {
        if (at_->child != nullptr) {
            if (at_ != root_ && at_->next != nullptr)
                pending_.push_back(at_->next);
            at_ = at_->child;
            return;
        }
        at_ = at_ != root_ ? at_->next : nullptr;
        if (at_ == nullptr && !pending_.empty()) {
            at_ = pending_.back();
            pending_.pop_back();
        }
    }

    // At the next node holding a value, from the one at hand on.
    void settle()
    {
        while (at_ != nullptr && !holdsvalue(at_))
            advance();
    }

    const datatree_t *at_;
    const datatree_t *root_;
    std::vector<const datatree_t *> pending_;  // next siblings of the nodes gone down into
};

// The configuration walk of the module's writers (configwalk), with the
// lookups of searchlooppath and searchloopinstance and the part of the
// format's tag writer that decides which values reach the output.  Each
// value written goes to `out`, or, with `order` given, is compared with
// the tree's next value in document order (the walk stops at the first
// that differs).
class Walk {
public:
    Walk(const datatree_t *head, Writer w, ValuesInOrder *order = nullptr)
        : head_(head), writer_(w), order_(order), ordernext_(order != nullptr ? order->next() : nullptr)
    {
    }

    void chain(const datatree_t *outcf, const Scope &scope)
    {
        int counter = 0;
        for (const datatree_t *tp = outcf; tp != nullptr && !differs; tp = tp->next) {
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
                    Scope inner;
                    const bool found = instance(tp, scope, inner);
                    if (found && tp->child != nullptr)
                        chain(tp->child, inner);
                    loops_.pop_back();
                    lblen_ = saved;
                    if (!found || differs)
                        break;
                }
                counter = i;
            } else if (tp->xmltag[0] == '$') {
                if (writer_ == Writer::edifact)
                    segment(tp, scope);
                else
                    record(tp, scope);
            } else if (tp->child != nullptr) {
                chain(tp->child, below(scope, tp->xmltag));
            }
            names_.pop_back();
        }
    }

    // With `plain` every path is looked up from the root.
    Scope rootscope(bool plain) const
    {
        return plain ? Scope{} : Scope{Scope::chain, head_};
    }

    std::vector<Written> out;
    // With `order`: a value written is not the tree's next one.
    bool differs = false;
    // With `order`: the tree has no value left that was not written.
    bool allwritten() const { return !differs && ordernext_ == nullptr; }

private:
    void written(const Written &w)
    {
        if (order_ == nullptr) {
            out.push_back(w);
            return;
        }
        // Once every value of the tree was met, more (a value written
        // twice) change nothing.
        if (ordernext_ == nullptr)
            return;
        if (w.node != ordernext_)
            differs = true;
        else
            ordernext_ = order_->next();
    }

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

    // The first node of the scope's chain that `name` (and for a loop
    // name `lct`) matches, as search takes them, and whether a second
    // one does; with `whole` false the search stops at the first.  A
    // short chain is searched in place, a long one through its index.
    const datatree_t *firstmatch(const Scope &s, const char *name, long lct, bool whole,
                                 bool &several)
    {
        several = false;
        if (s.islong)
            return indexedmatch(s.at, name, lct, several);
        const bool isloop = name[0] == '*';
        const datatree_t *first = nullptr;
        size_t n = 0;
        for (const datatree_t *tp = s.at; tp != nullptr; tp = tp->next) {
            if (++n > kIndexMin) {
                s.islong = true;
                return indexedmatch(s.at, name, lct, several);
            }
            if (tp->xmltag == nullptr || !samename(tp->xmltag, name) ||
                (isloop && lct != tp->loopcnt))
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

    const datatree_t *indexedmatch(const datatree_t *chain, const char *name, long lct,
                                   bool &several)
    {
        const ChainIndex::Nodes *cands = indexof(chain)->find(name, lct);
        several = cands != nullptr && cands->size() > 1;
        return cands != nullptr ? cands->front() : nullptr;
    }

    // One level down by `name` from a scope: what search gives for the
    // path ending there (`found`, `complete`), and the scope below it.
    // Not for a plain scope.
    const datatree_t *step(const Scope &s, const char *name, long lct, bool &complete,
                           Scope &inner)
    {
        complete = false;
        inner = s;
        if (s.kind == Scope::childless)
            return s.at;
        if (s.kind != Scope::chain)
            return nullptr;
        bool several = false;
        const datatree_t *first = firstmatch(s, name, lct, true, several);
        if (first == nullptr) {
            inner = Scope{Scope::nothing, nullptr};
            return nullptr;
        }
        complete = true;
        inner = several            ? Scope{}
                : first->child != nullptr ? Scope{Scope::chain, first->child}
                                          : Scope{Scope::childless, first};
        return first;
    }

    // The scope below the plain or tag node `name`.
    Scope below(const Scope &s, const char *name)
    {
        if (s.kind == Scope::plain)
            return s;
        bool complete = false;
        Scope inner;
        step(s, name, 0, complete, inner);
        return inner;
    }

    // The node at the path names_, whose last name is `name`, in `s`
    // (the scope of the node above).  Every loop number is taken by the
    // loops above a tag node: a loop name below it reads none (0).
    const datatree_t *find(const Scope &s, const char *name)
    {
        if (s.kind == Scope::plain)
            return lookup();
        if (s.kind == Scope::childless)
            return s.at;
        if (s.kind != Scope::chain)
            return nullptr;
        bool several = false;
        return firstmatch(s, name, 0, false, several);
    }

    // searchloopinstance: the loop node itself, matched down the whole path.
    bool instance(const datatree_t *loop, const Scope &s, Scope &inner)
    {
        bool complete = false;
        const datatree_t *x = nullptr;
        if (s.kind == Scope::plain) {
            x = lookup(&complete);
            inner = s;
        } else {
            x = step(s, loop->xmltag, loops_.back(), complete, inner);
        }
        return x != nullptr && complete && x->xmltag[0] == '*' && strcmp(x->xmltag, loop->xmltag) == 0;
    }

    // The index of a long chain, made on first use; NULL for a short one.
    const ChainIndex *indexof(const datatree_t *chain)
    {
        size_t n = 0;
        for (const datatree_t *tp = chain; tp != nullptr && n <= kIndexMin; tp = tp->next)
            n++;
        if (n <= kIndexMin)
            return nullptr;
        std::unique_ptr<ChainIndex> &index = indexes_[chain];
        if (index == nullptr)
            index = std::make_unique<ChainIndex>(chain);
        return index.get();
    }

    // The value rule (resolvevalue): the tree's value at the element's
    // path (names_, its node found in `s`), else the default function's,
    // else the default text.  Returns whether a value other than ""
    // results, and sets `fromtree` to the data node it came from, if it
    // came from the tree.
    bool value(const datatree_t *cf, const Scope &s, const datatree_t *&fromtree)
    {
        fromtree = nullptr;
        const datatree_t *d = find(s, cf->xmltag);
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
    void segment(const datatree_t *tag, const Scope &scope)
    {
        const Scope inner = below(scope, tag->xmltag);
        got_.clear();
        bool kept = false;
        auto one = [&](const datatree_t *cf, const Scope &s) {
            names_.push_back(cf->xmltag);
            const datatree_t *d = nullptr;
            if (value(cf, s, d)) {
                if (d != nullptr)
                    got_.push_back(Written{d, cf});
                if (cf->edidata == ed_user)
                    kept = true;
            }
            names_.pop_back();
        };
        for (const datatree_t *el = tag->child; el != nullptr; el = el->next) {
            if (el->xmltag == nullptr)
                continue;
            if (el->child == nullptr) {
                one(el, inner);
                continue;
            }
            names_.push_back(el->xmltag);
            const Scope composite = below(inner, el->xmltag);
            for (const datatree_t *c = el->child; c != nullptr; c = c->next)
                if (c->xmltag != nullptr)
                    one(c, composite);
            names_.pop_back();
        }
        if (kept)
            for (const Written &w : got_)
                written(w);
    }

    // writevdarecord: a record where the tree has its node, every field.
    void record(const datatree_t *tag, const Scope &scope)
    {
        Scope inner = scope;
        if (scope.kind == Scope::plain) {
            if (lookup() == nullptr)
                return;
        } else {
            bool complete = false;
            if (step(scope, tag->xmltag, 0, complete, inner) == nullptr)
                return;
        }
        for (const datatree_t *f = tag->child; f != nullptr; f = f->next) {
            if (f->xmltag == nullptr)
                continue;
            names_.push_back(f->xmltag);
            const datatree_t *d = nullptr;
            if (value(f, inner, d) && d != nullptr)
                written(Written{d, f});
            names_.pop_back();
        }
    }

    const datatree_t *head_;
    Writer writer_;
    ValuesInOrder *order_;
    const datatree_t *ordernext_;  // with order_: the value to come
    std::vector<const char *> names_;  // the configuration path walked
    std::vector<long> loops_;          // the loop string, as numbers
    size_t lblen_ = 0;                 // its length as text
    std::vector<Written> got_;         // a segment's values, until it is kept
    std::unordered_map<const datatree_t *, std::unique_ptr<ChainIndex>> indexes_;
};

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

bool writesall(const datatree_t *head, const datatree_t *config, Writer w)
{
    if (head == nullptr || config == nullptr)
        return false;
    ValuesInOrder order(head);
    Walk walk(head, w, &order);
    walk.chain(config, walk.rootscope(false));
    return walk.allwritten();
}

std::vector<Written> writerreads(const datatree_t *head, const datatree_t *config, Writer w,
                                 bool plain)
{
    Walk walk(head, w);
    if (head != nullptr && config != nullptr)
        walk.chain(config, walk.rootscope(plain));
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
