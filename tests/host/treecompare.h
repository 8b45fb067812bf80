// Field-by-field comparison of two trees, for the host-layer tests.
#ifndef EDIPROT_TESTS_TREECOMPARE_H
#define EDIPROT_TESTS_TREECOMPARE_H

#include <gtest/gtest.h>
#include <string.h>

#include <string>
#include <utility>
#include <vector>

#include "ediprot.h"

namespace treecompare {

// "NULL" or the text in brackets, so that NULL and "" differ in messages.
inline std::string shown(const char *s)
{
    return s == nullptr ? std::string("NULL") : "[" + std::string(s) + "]";
}

// True when both chains have the same shape and every node the same name,
// strings (NULL distinct from "") and numbers.  line, file and the links
// are not compared.  Walks without recursion.
inline ::testing::AssertionResult sametree(const datatree_t *a, const datatree_t *b)
{
    std::vector<std::pair<const datatree_t *, const datatree_t *>> todo{{a, b}};
    size_t count = 0;
    while (!todo.empty()) {
        auto [x, y] = todo.back();
        todo.pop_back();
        if ((x == nullptr) != (y == nullptr))
            return ::testing::AssertionFailure() << "shape differs after " << count << " nodes";
        if (x == nullptr)
            continue;
        count++;
        const char *names[] = {"xmltag", "data", "defval", "deffunc"};
        const char *xs[] = {x->xmltag, x->data, x->defval, x->deffunc};
        const char *ys[] = {y->xmltag, y->data, y->defval, y->deffunc};
        for (int i = 0; i < 4; i++)
            if ((xs[i] == nullptr) != (ys[i] == nullptr) ||
                (xs[i] != nullptr && strcmp(xs[i], ys[i]) != 0))
                return ::testing::AssertionFailure() << names[i] << " of node " << count << ": "
                                                     << shown(xs[i]) << " vs " << shown(ys[i]);
        int xn[] = {x->loopcnt, x->iseditag, x->type,     x->edidata,  x->edilen,
                    x->edimaxlen, x->editype, x->ediforce, x->edialign, x->valid};
        int yn[] = {y->loopcnt, y->iseditag, y->type,     y->edidata,  y->edilen,
                    y->edimaxlen, y->editype, y->ediforce, y->edialign, y->valid};
        for (int i = 0; i < 10; i++)
            if (xn[i] != yn[i])
                return ::testing::AssertionFailure() << "number field " << i << " of node "
                                                     << count << ": " << xn[i] << " vs " << yn[i];
        todo.push_back({x->next, y->next});
        todo.push_back({x->child, y->child});
    }
    return ::testing::AssertionSuccess();
}

}  // namespace treecompare

#endif
