// Differential tests of the lookup indexes: on seeded random trees the
// indexed run must give what the plain walk gives, byte for byte.
//   - searchlooppath: node and completeness flag;
//   - edifactwrite and vdawrite on generated configurations and data trees
//     (loop numbers missing or repeated, partial paths, sibling loops of
//     one name, names at several depths, missing mandatory elements,
//     defaults and default functions, a name with a '.', a parent link
//     that is not the node above): return value, output, stderr; the
//     indexed run also goes down the walk's path scopes (tree/pathscope.h);
//   - vdaread with and without its record index: tree and stderr;
//   - libedi's model of the writers' walk with and without path scopes.
// The index threshold is drawn per case, so short chains are indexed too.
// EDIPROT_PROP_SEED / EDIPROT_PROP_CASES choose seed and number of cases.
#include <gtest/gtest.h>

#include <stdlib.h>
#include <string.h>

#include <random>
#include <string>

#include "state.h"
#include "testsupport.h"
#include "tree/loopindex.h"
#include "tree/tree.h"
#include "trees/unwritten.h"
#include "vda/recordindex.h"

namespace {

using testsupport::capture_stderr;

unsigned long envnum(const char *name, unsigned long dflt)
{
    const char *v = getenv(name);
    return v != nullptr && *v != '\0' ? strtoul(v, nullptr, 10) : dflt;
}

const unsigned long kSeed = envnum("EDIPROT_PROP_SEED", 11);
const unsigned long kCases = envnum("EDIPROT_PROP_CASES", 300);

struct Gen {
    std::mt19937 rng{static_cast<unsigned>(kSeed)};
    bool p(unsigned percent) { return rng() % 100 < percent; }
    unsigned n(unsigned below) { return static_cast<unsigned>(rng() % below); }
    template <size_t N> const char *pick(const char *const (&a)[N]) { return a[n(N)]; }

    datatree_t *mk(const char *name, datatree_t *child = nullptr)
    {
        datatree_t *tp = ediprot::newnode();
        tp->xmltag = strdup(name);
        tp->child = child;
        return tp;
    }

    // A configuration chain: loops (two of one name possible), tag nodes
    // with simple and composite elements, plain nodes, all at any depth.
    datatree_t *config(int depth)
    {
        static const char *const kinds[] = {"*L", "*L", "*M", "$S512", "$S513", "G"};
        datatree_t *head = nullptr, **tail = &head;
        for (unsigned k = 1 + n(depth == 0 ? 4 : 3); k > 0; k--) {
            const char *name = depth >= 3 ? "$S514" : pick(kinds);
            datatree_t *tp = mk(name);
            if (name[0] == '$')
                for (datatree_t **ep = &tp->child; ep == &tp->child || p(70); ep = &(*ep)->next)
                    *ep = element(p(30) ? 1 + n(3) : 0);
            else if (p(85))
                tp->child = config(depth + 1);
            *tail = tp;
            tail = &tp->next;
        }
        return head;
    }

    datatree_t *element(unsigned components)
    {
        static const char *const names[] = {"e", "f", "G"};
        static const char *const funcs[] = {"unhcnt", "seccnt", "nosuch"};
        // "e.f" is one name in the tree but two in its path.
        datatree_t *tp = mk(p(2) ? "e.f" : pick(names));
        for (datatree_t **cp = &tp->child; components > 0; components--, cp = &(*cp)->next)
            *cp = element(0);
        tp->edimaxlen = p(80) ? 35 : 0;
        tp->edilen = static_cast<int>(n(5));
        tp->ediforce = p(15) ? ef_mand : ef_none;
        tp->edidata = p(20) ? ed_opt : ed_user;
        tp->defval = p(25) ? strdup("D") : nullptr;
        tp->deffunc = p(10) ? strdup(pick(funcs)) : nullptr;
        return tp;
    }

    // A data tree shaped by the configuration, with numbering faults,
    // childless nodes that end paths early, and stray nodes.
    datatree_t *data(const datatree_t *cf, int *next)
    {
        static const char *const values[] = {"x", "A'B", "1+2", ":?", ""};
        datatree_t *head = nullptr, **tail = &head;
        auto add = [&](datatree_t *tp) { *tail = tp; tail = &tp->next; return tp; };
        for (; cf != nullptr; cf = cf->next) {
            if (p(5))
                add(mk(pick({"*L", "G", "e"})))->loopcnt = static_cast<int>(n(4));
            if (cf->xmltag[0] == '*') {
                int num = p(50) ? 1 : *next;
                for (unsigned k = p(10) ? 33 + n(10) : n(5); k > 0; k--) {
                    num += p(8) ? 2 : p(5) ? 0 : 1;
                    int sub = 0;
                    add(mk(cf->xmltag, data(cf->child, &sub)))->loopcnt = num - 1;
                }
                *next = num;
            } else if (p(85)) {
                int sub = 0;
                datatree_t *tp = add(mk(cf->xmltag, p(90) ? data(cf->child, &sub) : nullptr));
                if (cf->child == nullptr || tp->child == nullptr)
                    tp->data = p(70) ? strdup(pick(values)) : nullptr;
            }
        }
        return head;
    }
};

// The first tag node below `tp`, depth first.
datatree_t *firsttag(datatree_t *tp)
{
    for (datatree_t *c = tp->child; c != nullptr; c = c->next) {
        if (c->xmltag[0] == '$')
            return c;
        if (datatree_t *t = firsttag(c))
            return t;
    }
    return nullptr;
}

// One writer call; the UNB date and time are blanked.
testsupport::Written write(bool edifact, datatree_t *tree, datatree_t *cf, size_t indexmin)
{
    static const std::string file = testsupport::tempdir() + "/out";
    ediprot::loopindex_setmin(indexmin);
    ediprot::sectioncnt = 0;
    ediprot::nunhcnt = 0;
    unlink(file.c_str());
    testsupport::Written w = edifact ? testsupport::writeedifact(tree, cf, file)
                                     : testsupport::writevda(tree, cf, file);
    size_t at = w.text.find(":14+RECIP:14+");
    if (edifact && at != std::string::npos)
        w.text.replace(at + 13, 11, "D:T");
    return w;
}

TEST(IndexDifferential, WritersWriteAsWithThePlainLookup)
{
    Gen g;
    for (unsigned long c = 0; c < kCases; c++) {
        datatree_t *cf = g.mk("R", g.config(0));
        setparents(cf, 0);
        // An element whose parent link is the root: its path is then not
        // the names the walk goes down.  (Not a loop's: a loop whose path
        // leaves its loop numbers unread finds an instance for every
        // number.)
        if (g.p(10))
            if (datatree_t *tag = firsttag(cf))
                tag->child->parent = cf;
        int next = 1;
        datatree_t *data = g.mk(g.p(95) ? "R" : "X", g.data(cf->child, &next));
        setparents(data, 0);
        const size_t mins[] = {0, 3, ediprot::kLoopIndexMin}, min = mins[g.n(3)];
        for (bool edifact : {true, false}) {
            testsupport::Written plain = write(edifact, data, cf, ediprot::kLoopIndexOff);
            testsupport::Written indexed = write(edifact, data, cf, min);
            SCOPED_TRACE(testing::Message() << "seed " << kSeed << " case " << c
                                            << (edifact ? " edifact" : " vda") << "\n"
                                            << testsupport::dump(cf) << testsupport::dump(data));
            ASSERT_EQ(indexed.rc, plain.rc);
            ASSERT_EQ(indexed.text, plain.text);
            ASSERT_EQ(indexed.err, plain.err);
        }
        freedatatree(cf);
        freedatatree(data);
    }
    ediprot::loopindex_setmin(ediprot::kLoopIndexMin);
}

TEST(IndexDifferential, LookupAnswersAsThePlainWalk)
{
    static const char *const names[] = {"*L", "*M", "$S512", "e", "G", "R"};
    Gen g;
    for (unsigned long c = 0; c < kCases; c++) {
        datatree_t *cf = g.mk("R", g.config(0));
        int next = 1;
        datatree_t *data = g.mk("R", g.data(cf->child, &next));
        ediprot::LoopIndexScope scope;
        for (int q = 0; q < 100; q++) {
            std::string path = "R", loop;
            for (unsigned d = g.n(5); d > 0; d--) {
                path += std::string(".") + g.pick(names);
                if (path.back() != 'G' && path[path.rfind('.') + 1] == '*')
                    loop += (loop.empty() ? "" : ".") + std::to_string(g.n(12));
            }
            if (g.p(25))
                loop += g.p(50) ? ".x" : ".3.4";  // malformed, or numbers left over
            int want = -1, got = -1;
            ediprot::loopindex_setmin(ediprot::kLoopIndexOff);
            datatree_t *expect = ediprot::searchlooppath(path.c_str(), loop.c_str(), data, &want);
            ediprot::loopindex_setmin(c % 2 != 0 ? 0 : 3);
            datatree_t *found = ediprot::searchlooppath(path.c_str(), loop.c_str(), data, &got);
            ASSERT_EQ(found, expect) << "seed " << kSeed << " case " << c << " " << path << " " << loop;
            ASSERT_EQ(got, want) << "seed " << kSeed << " case " << c << " " << path << " " << loop;
        }
        freedatatree(cf);
        freedatatree(data);
    }
    ediprot::loopindex_setmin(ediprot::kLoopIndexMin);
}

// libedi's model of the writers' walk (src/lib/trees/unwritten.cpp), which
// names the values a write would leave out, keeps path scopes as the
// writers do: on the same generated cases it must find the values that its
// walk from the root finds, in the same order, each with the same
// configuration node; and its quick answer that every value is written
// must never hide a value the full comparison names.
TEST(IndexDifferential, LibraryWalkReadsAsFromTheRoot)
{
    Gen g;
    unsigned long allwritten = 0;
    for (unsigned long c = 0; c < kCases; c++) {
        datatree_t *cf = g.mk("R", g.config(0));
        setparents(cf, 0);
        int next = 1;
        datatree_t *data = g.mk(g.p(95) ? "R" : "X", g.data(cf->child, &next));
        setparents(data, 0);
        for (edi::Writer w : {edi::Writer::edifact, edi::Writer::vda}) {
            SCOPED_TRACE(testing::Message() << "seed " << kSeed << " case " << c
                                            << (w == edi::Writer::edifact ? " edifact" : " vda")
                                            << "\n" << testsupport::dump(cf)
                                            << testsupport::dump(data));
            const std::vector<edi::Written> plain = edi::writerreads(data, cf, w, true);
            const std::vector<edi::Written> scoped = edi::writerreads(data, cf, w);
            ASSERT_EQ(scoped.size(), plain.size());
            for (size_t k = 0; k < plain.size(); k++) {
                ASSERT_EQ(scoped[k].node, plain[k].node) << "value " << k;
                ASSERT_EQ(scoped[k].config, plain[k].config) << "value " << k;
            }
            if (edi::writesall(data, cf, w)) {
                allwritten++;
                ASSERT_TRUE(edi::unwritten(data, plain).empty());
            }
        }
        freedatatree(cf);
        freedatatree(data);
    }
    // The quick answer was given often enough to be tried.
    EXPECT_GT(allwritten, kCases / 20);
}

// Record lines of the configured types and of an unknown one, of any
// length; the configuration puts the types at several loop depths.
TEST(IndexDifferential, VdaReadBuildsAsWithThePlainWalk)
{
    static const char *const types[] = {"511", "512", "513", "514", "999"};
    const std::string file = testsupport::tempdir() + "/in.vda";
    Gen g;
    for (unsigned long c = 0; c < kCases; c++) {
        datatree_t *cf = g.mk("R", g.mk("$S511", g.element(0)));
        cf->child->next = g.config(0);
        setparents(cf, 0);
        std::string text;
        for (unsigned k = g.n(g.p(20) ? 300 : 40); k > 0; k--)
            text += g.pick(types) + std::string(g.n(12), static_cast<char>('a' + g.n(3))) + "\r\n";
        testsupport::writefile(file, text);
        std::string trees[2], errs[2];
        for (int on = 0; on < 2; on++) {
            ediprot::recordindex_setenabled(on != 0);
            testsupport::Read r;
            testsupport::readvda(r, file, cf);
            errs[on] = r.err;
            trees[on] = testsupport::dump(r.tree);
        }
        ASSERT_EQ(trees[1], trees[0]) << "seed " << kSeed << " case " << c << "\n" << testsupport::dump(cf) << text;
        ASSERT_EQ(errs[1], errs[0]) << "seed " << kSeed << " case " << c;
        freedatatree(cf);
    }
    ediprot::recordindex_setenabled(true);
}

}  // namespace
