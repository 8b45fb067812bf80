// The reader against a literal reference: generated configurations and
// interchanges go through edifactread and through a plain rendering of the
// fill (every repetition a full copy of the occurrence, inner repetitions
// included), one pruning pass over the whole tree, and loops numbered per
// chain of configuration siblings.  Trees (with loop numbers) and messages
// must agree.  Deterministic by seed; a failing seed prints its case.
#include <gtest/gtest.h>
#include <stdio.h>
#include <string.h>
#include <strings.h>

#include <map>
#include <random>
#include <string>
#include <vector>

#include "edifact/edifact.h"
#include "edihost.h"
#include "testsupport.h"
#include "tree/tree.h"

namespace {

// ---- the literal reference --------------------------------------------

// The reference's own versions of the module's element copy, data test
// and loop pruning, so that a fault in those cannot agree with itself.

// The values of the segment's elements `src` go into the template leaves
// `dst` by position; a simple element on a composite feeds the composite's
// components from itself and the elements behind it.  Values pass
// unchanged: the generated configurations carry no types and the values
// no service characters.
void copyelements(datatree_t *dst, datatree_t *src)
{
    for (; dst != nullptr && src != nullptr; dst = dst->next, src = src->next) {
        if (dst->child != nullptr)
            copyelements(dst->child, src->child != nullptr ? src->child : src);
        else if (src->data != nullptr)
            dst->data = strdup(src->data);
    }
}

// Whether `tp` or any node below it holds a value ("" counts); its
// siblings are not looked at.
bool holdsdata(const datatree_t *tp)
{
    std::vector<const datatree_t *> todo{tp};
    while (!todo.empty()) {
        const datatree_t *np = todo.back();
        todo.pop_back();
        if (np->data != nullptr)
            return true;
        for (const datatree_t *cp = np->child; cp != nullptr; cp = cp->next)
            todo.push_back(cp);
    }
    return false;
}

// Removes, bottom-up, the loop nodes of the chain at *link below which
// nothing holds a value once pruned.  A loop node without children shares
// the fate of the last loop node with children before it in the chain
// (goes when there is none).  Returns whether anything left in the chain
// holds a value: a leaf with one, or a loop node that stayed.
bool prune(datatree_t **link)
{
    bool any = false;
    bool lastloop = false;
    while (*link != nullptr) {
        datatree_t *tp = *link;
        if (tp->xmltag[0] == '*') {
            if (tp->child != nullptr)
                lastloop = prune(&tp->child);
            if (!lastloop) {
                *link = tp->next;
                tp->next = nullptr;
                freedatatree(tp);
                continue;
            }
            any = true;
        } else if (tp->child != nullptr) {
            any = prune(&tp->child) || any;
        } else if (tp->data != nullptr) {
            any = true;
        }
        link = &tp->next;
    }
    return any;
}

struct Reference {
    std::map<const datatree_t *, const datatree_t *> origin;
    datatree_t *xdata = nullptr;
    std::string err;

    datatree_t *copy(datatree_t *head)
    {
        datatree_t *start = nullptr;
        datatree_t **tail = &start;
        for (datatree_t *tp = head; tp != nullptr; tp = tp->next) {
            datatree_t *np = ediprot::newnode();
            np->xmltag = strdup(tp->xmltag);
            copynodeparms(np, tp, 0);
            auto o = origin.find(tp);
            origin[np] = o != origin.end() ? o->second : tp;
            np->child = copy(tp->child);
            *tail = np;
            tail = &np->next;
        }
        return start;
    }

    int fill(datatree_t *out)
    {
        int match = 0;
        for (datatree_t *tp = out; tp != nullptr; tp = tp->next) {
            if (tp->iseditag != 0) {
                if (xdata != nullptr) {
                    if (strncasecmp(xdata->xmltag, tp->xmltag, 4) == 0) {
                        copyelements(tp->child, xdata->child);
                        xdata = xdata->next;
                        match = 1;
                    }
                } else if (tp->ediforce == ef_mand) {
                    err += "mandatory tag <" + std::string(tp->xmltag) + "> not found\n";
                    return -1;
                }
            } else if (tp->child != nullptr) {
                for (;;) {
                    if (fill(tp->child) < 0)
                        return -1;
                    match = holdsdata(tp->child) ? 1 : 0;
                    if (tp->xmltag[0] != '*' || match == 0)
                        break;
                    datatree_t *orgnext = tp->next;
                    tp->next = nullptr;
                    datatree_t *sp = copy(tp);
                    sp->next = orgnext;
                    tp->next = sp;
                    tp = sp;
                }
            }
        }
        return match;
    }

    void number(const datatree_t *conf, datatree_t *data, bool inner)
    {
        int i = 0;
        datatree_t *dp = data;
        for (const datatree_t *cp = conf; cp != nullptr; cp = cp->next) {
            const bool walk = inner && cp->xmltag[0] != '$' && cp->child != nullptr;
            for (; dp != nullptr && origin[dp] == cp; dp = dp->next) {
                if (cp->xmltag[0] == '*')
                    dp->loopcnt = ++i;
                if (walk && dp->child != nullptr)
                    number(cp->child, dp->child, true);
            }
            if (cp->xmltag[0] == '*')
                ++i;
        }
    }

    // The whole read after the flat stage: one template copy per message,
    // then pruning and numbering of the whole tree.
    datatree_t *read(datatree_t *segments, datatree_t *conf)
    {
        datatree_t *head = ediprot::newnode();
        head->xmltag = strdup("edi");
        datatree_t **drun = &head->child;
        for (datatree_t *sp = segments; sp != nullptr; sp = sp->next) {
            if (strncasecmp(sp->xmltag, "$UNH", 4) != 0)
                continue;
            if (*drun != nullptr)
                freedatatree(*drun);
            *drun = copy(conf->child);
            // The message: its segments up to the next UNB, UNH or UNZ.
            datatree_t *end = sp->next;
            while (end != nullptr && strncasecmp(end->xmltag, "$UNB", 4) != 0 &&
                   strncasecmp(end->xmltag, "$UNH", 4) != 0 &&
                   strncasecmp(end->xmltag, "$UNZ", 4) != 0)
                end = end->next;
            datatree_t *before = sp;
            while (before->next != end)
                before = before->next;
            before->next = nullptr;
            xdata = sp;
            setparents(*drun, 0);
            fill((*drun)->child);
            before->next = end;
            drun = &(*drun)->next;
        }
        setparents(head, 0);
        prune(&head->child);
        number(conf->child, head->child, true);
        return head;
    }
};

// ---- generated cases ----------------------------------------------------

struct Generator {
    std::mt19937 rng;
    explicit Generator(unsigned seed) : rng(seed) {}
    int pick(int n) { return static_cast<int>(rng() % static_cast<unsigned>(n)); }
    bool chance(int percent) { return pick(100) < percent; }

    const char *tag() { return (const char *[]){"AAA", "BBB", "CCC", "DDD"}[pick(4)]; }

    // One chain of configuration nodes at `indent`, nesting below `depth`.
    std::string chain(int indent, int depth)
    {
        std::string out;
        const std::string pad(indent, ' ');
        const int n = 1 + pick(3);
        for (int i = 0; i < n; i++) {
            const int kind = depth >= 6 ? 0 : pick(11);
            if (kind < 6) {
                out += pad + "$" + tag() + " iseditag=1" + (chance(20) ? " ediforce=mand" : "") + "\n";
                if (chance(5))
                    continue;  // a tag without elements
                out += pad + "  e1\n";
                if (chance(50))
                    out += pad + "  c2\n" + pad + "    k1\n" + pad + "    k2\n";
            } else if (kind < 9) {
                out += pad + (chance(50) ? "*G" : "*H") + "\n" + chain(indent + 2, depth + 1);
            } else if (kind < 10) {
                out += pad + "P\n" + chain(indent + 2, depth + 1);
            } else {
                out += pad + "*Z\n";  // a loop node without children
            }
        }
        return out;
    }

    std::string config()
    {
        return "edi\n  *MSG\n    $UNH iseditag=1 ediforce=mand\n      0062\n" + chain(4, 1) +
               "    $UNT iseditag=1" + (chance(50) ? " ediforce=mand" : "") + "\n      0074\n" +
               (chance(10) ? "  *TAIL\n    $ZZZ iseditag=1\n      z\n" : "");
    }

    // Segments that follow the configuration's shape, with noise.
    void walk(const datatree_t *tp, std::vector<std::string> &out)
    {
        for (; tp != nullptr; tp = tp->next) {
            if (tp->iseditag != 0) {
                if (chance(75))
                    out.push_back(std::string(tp->xmltag + 1, 3));
            } else if (tp->child != nullptr) {
                const int times = tp->xmltag[0] == '*' ? pick(4) : 1;
                for (int k = 0; k < times; k++)
                    walk(tp->child, out);
            }
            if (chance(3))
                out.push_back(tag());
        }
    }

    std::string interchange(const datatree_t *conf)
    {
        std::string text = "UNB+UNOA:3+SENDER:1+RECEIVER:1+200101:1200+1'";
        const int messages = chance(20) ? 2 : 1;
        for (int m = 1; m <= messages; m++) {
            std::vector<std::string> segs;
            walk(conf->child->child, segs);
            if (!segs.empty() && chance(15))
                segs.resize(static_cast<size_t>(pick(static_cast<int>(segs.size()))));
            text += "UNH+" + std::to_string(m) + "+MSG:D:96A:UN'";
            for (const std::string &s : segs) {
                if (s != "UNH" && s != "UNT")
                    text += s + "+" + std::to_string(pick(100)) + (chance(30) ? "+x:y'" : "'");
            }
            if (chance(90))
                text += "UNT+" + std::to_string(segs.size() + 2) + "+" + std::to_string(m) + "'";
        }
        return text + "UNZ+" + std::to_string(messages) + "+1'";
    }
};

TEST(FillDifferential, EdifactreadGivesTheLiteralTreeOnGeneratedCases)
{
    const unsigned cases = getenv("EDIPROT_FILL_CASES") ? atoi(getenv("EDIPROT_FILL_CASES")) : 2000;
    const unsigned first = getenv("EDIPROT_FILL_SEED") ? atoi(getenv("EDIPROT_FILL_SEED")) : 1;
    for (unsigned seed = first; seed < first + cases; seed++) {
        Generator gen(seed);
        const std::string conftext = gen.config();
        datatree_t *conf = testsupport::parse(conftext);
        ASSERT_NE(conf, nullptr);
        const std::string text = gen.interchange(conf);
        char name[] = "gen.edi";
        edihost_setinput(name, text.data(), text.size());

        envelope_t *ev = nullptr;
        datatree_t *got = nullptr;
        const std::string goterr =
            testsupport::capture_stderr([&] { got = edifactread(name, &ev, conf, nullptr); });
        ASSERT_NE(got, nullptr) << "seed " << seed << "\n" << goterr << text;

        FILE *fp = edihost_openinput(name, "r");
        ASSERT_NE(fp, nullptr);
        ediprot::tagcnt = 0;
        datatree_t *flat = ediprot::readseg(fp, name);
        ediprot::tagcnt = 0;
        fclose(fp);
        Reference ref;
        datatree_t *want = ref.read(flat->child, conf);

        const std::string g = testsupport::dump(got), w = testsupport::dump(want);
        const bool same = g == w && goterr == ref.err;
        freedatatree(got);
        freedatatree(want);
        freedatatree(flat);
        freedatatree(conf);
        free(ev->servconftag);
        free(ev);
        edihost_clearinput();
        ASSERT_TRUE(same) << "seed " << seed << "\nconfiguration:\n" << conftext
                          << "interchange:\n" << text << "\nedifactread:\n" << goterr << g
                          << "\nreference:\n" << ref.err << w;
    }
}

}  // namespace
