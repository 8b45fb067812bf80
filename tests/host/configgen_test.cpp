// Every message of every directory, inbound and outbound, generates a
// configuration the tree text parser accepts.
#include <gtest/gtest.h>

#include <string>

#include "configgen.h"
#include "edihost.h"

namespace {

const std::string dir = std::string(EDIPROT_CONFIGS) + "/../data/directories";

// A sanitizer build runs ten times slower: there every directory is still
// generated, but only every fourth of its messages.
TEST(ConfigGen, EveryMessageOfEveryDirectoryParses)
{
    const size_t stride = EDIPROT_SANITIZED ? 4 : 1;
    auto all = edihost::directories(dir);
    ASSERT_EQ(all.size(), 36u);
    size_t count = 0;
    for (auto &name : all) {
        edihost::Directory d;
        std::string err, text;
        ASSERT_TRUE(d.load(dir, name, err)) << err;
        size_t index = 0;
        for (auto &[type, title] : d.messages()) {
            if (index++ % stride != 0)
                continue;
            for (bool out : {false, true}) {
                ASSERT_TRUE(d.config(type, out, text, err)) << err;
                std::string label = name + " " + type + (out ? " out" : " in");
                datatree_t *t = edihost_parsetree(text.data(), text.size(), label.c_str());
                ASSERT_NE(t, nullptr) << label;
                freedatatree(t);
                count++;
            }
        }
    }
    EXPECT_GT(count * stride, 2000u);
}

TEST(ConfigGen, UnknownMessageAndDirectoryAreRefused)
{
    edihost::Directory d;
    std::string err, text;
    EXPECT_FALSE(d.load(dir, "D77Z", err));
    ASSERT_TRUE(d.load(dir, "D96A", err));
    EXPECT_FALSE(d.config("NOSUCH", false, text, err));
    EXPECT_NE(err.find("NOSUCH"), std::string::npos);
}

}  // namespace
