// Differential test of the writers' loop index: on seeded random data
// trees (long chains of sibling loops of one name, missing and repeated
// loop numbers, the same names at several depths, childless nodes that end
// a path early) searchlooppath with the index active must give the answer,
// the completeness flag included, of the plain walk kept here as reference.
// EDIPROT_PROP_SEED / EDIPROT_PROP_CASES choose seed and number of trees.
#include <gtest/gtest.h>

#include <stdlib.h>
#include <string.h>

#include <random>
#include <string>

#include "internal.h"
#include "tree/loopindex.h"

namespace {

// The plain walk, without traces.
datatree_t *reference(const char *path, const char *loop, datatree_t *tree, int *complete)
{
    const char *dot = strchr(path, '.');
    size_t n = dot != nullptr ? static_cast<size_t>(dot - path) : strlen(path);
    for (datatree_t *tp = tree; tp != nullptr; tp = tp->next) {
        if (strlen(tp->xmltag) != n || strncmp(tp->xmltag, path, n) != 0)
            continue;
        const char *lp = loop;
        if (tp->xmltag[0] == '*') {
            if (strtol(loop, nullptr, 10) != tp->loopcnt)
                continue;
            const char *ldot = strchr(loop, '.');
            lp = ldot != nullptr ? ldot + 1 : "";
        }
        if (tp->child != nullptr && dot != nullptr) {
            if (datatree_t *found = reference(dot + 1, lp, tp->child, complete))
                return found;
            continue;
        }
        *complete = dot == nullptr;
        return tp;
    }
    return nullptr;
}

const char *const kNames[] = {"*L", "*M", "$A", "$B", "1"};

unsigned long envnum(const char *name, unsigned long dflt)
{
    const char *v = getenv(name);
    return v != nullptr && *v != '\0' ? strtoul(v, nullptr, 10) : dflt;
}

datatree_t *chain(std::mt19937 &rng, int depth)
{
    datatree_t *head = nullptr, **tail = &head;
    int len = depth == 0 ? 1 : static_cast<int>(rng() % (rng() % 3 == 0 ? 80 : 6));
    for (int i = 0; i < len; i++) {
        datatree_t *tp = ediprot::newnode();
        tp->xmltag = strdup(depth == 0 ? "R" : kNames[rng() % 5]);
        tp->loopcnt = tp->xmltag[0] == '*' ? static_cast<int>(rng() % 12) : 0;
        if (depth < 4 && rng() % 3 != 0)
            tp->child = chain(rng, depth + 1);
        *tail = tp;
        tail = &tp->next;
    }
    return head;
}

void release(datatree_t *tp)
{
    while (tp != nullptr) {
        datatree_t *next = tp->next;
        release(tp->child);
        free(tp->xmltag);
        free(tp);
        tp = next;
    }
}

TEST(LoopIndexProperty, IndexedLookupAnswersAsThePlainWalk)
{
    const unsigned long seed = envnum("EDIPROT_PROP_SEED", 11);
    const unsigned long cases = envnum("EDIPROT_PROP_CASES", 200);
    std::mt19937 rng(static_cast<unsigned>(seed));
    for (unsigned long c = 0; c < cases; c++) {
        datatree_t *root = chain(rng, 0);
        ediprot::LoopIndexScope scope;
        for (int q = 0; q < 200; q++) {
            std::string path = "R", loop;
            for (int d = static_cast<int>(rng() % 5); d >= 0; d--) {
                const char *name = kNames[rng() % 5];
                path += std::string(".") + name;
                if (name[0] == '*')
                    loop += (loop.empty() ? "" : ".") + std::to_string(rng() % 13);
            }
            if (rng() % 4 == 0)
                loop += ".x";  // numbers left over or malformed
            int want = -1, got = -1;
            datatree_t *expect = reference(path.c_str(), loop.c_str(), root, &want);
            datatree_t *found = ediprot::searchlooppath(path.c_str(), loop.c_str(), root, &got);
            ASSERT_EQ(found, expect) << "seed " << seed << " case " << c << " path " << path
                                     << " loop " << loop;
            ASSERT_EQ(got, want) << "seed " << seed << " case " << c << " path " << path;
        }
        release(root);
    }
}

}  // namespace
