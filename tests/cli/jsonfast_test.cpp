// The fast JSON reader: it must read every document that treetojson
// writes into the same tree, and whatever it declines must still come out
// of the import as the general parser reads it.
#include <gtest/gtest.h>

#include <stdlib.h>
#include <string.h>

#include <random>
#include <string>

#include "jsonfast.h"
#include "jsontree.h"
#include "testsupport.h"

using namespace testsupport;

namespace {

datatree_t *randomtree(std::mt19937 &rng, int depth)
{
    auto *tp = static_cast<datatree_t *>(calloc(1, sizeof(datatree_t)));
    auto text = [&] {
        std::string s;
        for (unsigned n = rng() % 6; n > 0; n--)
            s += static_cast<char>(1 + rng() % 255);  // every byte but NUL
        return strdup(s.c_str());
    };
    tp->xmltag = text();
    if (rng() % 2 != 0)
        tp->data = text();
    if (rng() % 4 == 0)
        tp->defval = text();
    tp->loopcnt = static_cast<int>(rng() % 3 == 0 ? rng() : 0);
    tp->edilen = -static_cast<int>(rng() % 3);
    tp->editype = static_cast<editype_t>(rng() % 4);
    tp->ediforce = static_cast<ediforce_t>(rng() % 3);
    datatree_t **kid = &tp->child;
    for (unsigned n = depth < 4 ? rng() % 4 : 0; n > 0; n--, kid = &(*kid)->next)
        *kid = randomtree(rng, depth + 1);
    return tp;
}

TEST(JsonFast, ReadsEveryExportedTreeAsItWas)
{
    std::mt19937 rng(11);
    for (int c = 0; c < 300; c++) {
        datatree_t *tree = randomtree(rng, 0);
        if (c % 3 == 0)
            tree->next = randomtree(rng, 1);  // a chain of roots: an array
        std::string json = edi::treetojson(tree, c % 2 != 0 ? "KEY" : nullptr, {{"changes", {"x"}}});
        datatree_t *back = edi::jsonfast(json);
        ASSERT_NE(back, nullptr) << json;
        EXPECT_EQ(dump(back), dump(tree)) << json;
        if (back->child != nullptr)
            EXPECT_EQ(back->child->parent, back);
        freedatatree(tree);
        freedatatree(back);
    }
}

// Documents near the edges of what the fast reader takes, through the
// whole import: the tree text it gives, or the message.
TEST(JsonFast, WhatItDeclinesTheImportStillReadsOrRefuses)
{
    const std::string head = "{\"format\": \"ediprot-tree\", ";
    const struct {
        std::string json, expect;
    } cases[] = {
        {head + "\"tree\": {\"name\": \"a\\u00e9\\/\\n\"}}", "\"a\\xe9/\\n\"\n"},
        {head + "\"tree\": {\"name\": \"a\", \"name\": \"b\"}}", "b\n"},
        {head + "\"tree\": {\"name\": \"a\", \"loopcnt\": -0}}", "a\n"},
        {head + "\"tree\": {\"name\": \"a\", \"editype\": 2}}", "a editype=float\n"},
        {head + "\"version\": 1.5, \"changes\": [\"\xe2\x82\xac\"], \"tree\": {\"name\": \"a\"}}",
         "a\n"},
        {"{\"tree\": {\"name\": \"a\"}, \"format\": \"ediprot-tree\"}", "a\n"},
        {head + "\"tree\": {\"name\": \"a\"}, \"format\": \"x\"}",
         "t.json: not an ediprot tree document\n"},
        {head + "\"tree\": {\"name\": \"a\", \"loopcnt\": 1.0}}",
         "t.json: \"loopcnt\" is not an integer\n"},
        {head + "\"tree\": {\"name\": \"a\", \"loopcnt\": 2147483648}}",
         "t.json: \"loopcnt\" out of range\n"},
        {head + "\"tree\": {\"name\": \"a\\u0100\"}}",
         "t.json: \"name\" holds a character above U+00FF\n"},
        {head + "\"tree\": []}", "t.json: document holds no tree\n"},
        {head + "\"tree\": {\"name\": \"a\"}} x", "t.json: not a valid JSON document\n"},
        {head + "\"tree\": {\"name\": \"a\\tb\"}}", "\"a\\tb\"\n"},
    };
    for (const auto &c : cases) {
        datatree_t *tree = nullptr;
        std::string err = capture_stderr([&] { tree = edi::jsontotree(c.json, "t.json"); });
        EXPECT_EQ(tree != nullptr ? dump(tree) : err, c.expect) << c.json;
        freedatatree(tree);
    }
}

}  // namespace
