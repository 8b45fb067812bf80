// Interchanges written by other projects: every one is read without a
// crash, a leak or a sanitizer report, whatever its result, and the flat
// segment values of each one that begins as an interchange join back into
// the bytes of the file.
#include <gtest/gtest.h>

#include <dirent.h>
#include <stdio.h>

#include <algorithm>
#include <string>
#include <vector>

#include "edihost.h"
#include "read_support.h"
#include "testsupport.h"

namespace {

const std::string kCorpus = std::string(EDIPROT_CORPUS) + "/edifact/";

std::vector<std::string> corpusfiles()
{
    std::vector<std::string> names;
    DIR *dir = opendir(kCorpus.c_str());
    if (dir == nullptr)
        return names;
    while (struct dirent *de = readdir(dir)) {
        std::string name = de->d_name;
        if (name[0] != '.' && name != "SOURCES.md")
            names.push_back(name);
    }
    closedir(dir);
    std::sort(names.begin(), names.end());
    return names;
}

// Re-joins the flat chain `seg` and compares it with `bytes` from `pos` on.
// Only the character at position 3 of a segment without an element
// separator there is not kept in the tree; it is passed over.
::testing::AssertionResult rejoins(const datatree_t *seg, const std::string &bytes,
                                   size_t pos)
{
    auto expect = [&](const std::string &text, const char *what, int num) {
        if (bytes.compare(pos, text.size(), text) != 0)
            return false;
        pos += text.size();
        (void)what;
        (void)num;
        return true;
    };
    for (int num = 1; seg != nullptr; seg = seg->next, num++) {
        char suffix[32];
        snprintf(suffix, sizeof suffix, "%03d_D", num);
        std::string name = seg->xmltag;
        if (name.size() < strlen(suffix) + 1 ||
            name.compare(name.size() - strlen(suffix), std::string::npos, suffix) != 0)
            return ::testing::AssertionFailure() << "segment " << num << " named " << name;
        std::string tag = name.substr(1, name.size() - 1 - strlen(suffix));
        if (!expect(tag, "tag", num))
            return ::testing::AssertionFailure() << "tag of segment " << num;
        const datatree_t *ep = seg->child;
        const bool elements = strcmp(ep->xmltag, "DST") == 0;
        if (elements) {
            if (!expect(std::string(1, dst_sep), "dst_sep", num))
                return ::testing::AssertionFailure() << "separator of segment " << num;
        } else if (!(ep->next == nullptr && ep->data[0] == '\0' &&
                     (pos >= bytes.size() || bytes[pos] == seg_sep))) {
            pos++;  // position 3, not kept
        }
        for (; ep != nullptr; ep = ep->next) {
            if (!expect(ep->data, "value", num))
                return ::testing::AssertionFailure()
                       << "value <" << ep->data << "> of segment " << num << " " << name;
            if (ep->child != nullptr) {
                std::string joined;
                for (const datatree_t *cp = ep->child; cp != nullptr; cp = cp->next)
                    joined += std::string(cp == ep->child ? "" : std::string(1, cmp_sep)) +
                              cp->data;
                if (joined != ep->data)
                    return ::testing::AssertionFailure()
                           << "components of <" << ep->data << "> in segment " << num;
            }
            if (ep->next != nullptr &&
                !expect(std::string(1, elements ? dst_sep : cmp_sep), "sep", num))
                return ::testing::AssertionFailure() << "separator in segment " << num;
        }
        if (seg->next != nullptr && !expect(std::string(1, seg_sep), "term", num))
            return ::testing::AssertionFailure() << "terminator of segment " << num;
    }
    if (pos != bytes.size())
        return ::testing::AssertionFailure() << "bytes left at " << pos;
    return ::testing::AssertionSuccess();
}

TEST(Corpus, EveryFileIsReadWithoutHarm)
{
    const std::vector<std::string> names = corpusfiles();
    ASSERT_FALSE(names.empty());
    edihost_clearservconf();
    ASSERT_EQ(edihost_loadservconf(EDIPROT_CONFIGS "/servconf.conf"), 0);
    datatree_t *conf = readconfig(const_cast<char *>(EDIPROT_CONFIGS "/orders-d96a-in.tree"),
                                  0, const_cast<char *>("test"), __LINE__);
    ASSERT_NE(conf, nullptr);
    int filled = 0;
    for (const auto &name : names) {
        std::string fn = kCorpus + name;
        for (datatree_t *inhead : {static_cast<datatree_t *>(nullptr), conf}) {
            envelope_t *ev = nullptr;
            datatree_t *tree = nullptr;
            std::string err = testsupport::capture_stderr([&] {
                tree = edifactread(const_cast<char *>(fn.c_str()), &ev, inhead, nullptr);
            });
            EXPECT_EQ(tree == nullptr, ev == nullptr) << name;
            if (tree != nullptr) {
                filled++;
                EXPECT_STREQ(tree->xmltag, "edi") << name;
                freedatatree(tree);
                free(ev->servconftag);
                free(ev);
            } else {
                EXPECT_FALSE(err.empty()) << name;
            }
        }
    }
    // Most files break their lines between segments, which leaves no
    // segment behind the first with its proper tag; those that don't, and
    // have their UNH right behind the UNB, are filled.
    EXPECT_GT(filled, 0);
    freedatatree(conf);
}

TEST(Corpus, FlatValuesOfEveryInterchangeJoinBackIntoTheFile)
{
    int checked = 0;
    for (const auto &name : corpusfiles()) {
        const std::string bytes = testsupport::readfile(kCorpus + name);
        size_t start = 0;
        seg_sep = '\'';
        dst_sep = '+';
        cmp_sep = ':';
        escape = '?';
        if (bytes.size() >= 9 && bytes.compare(0, 3, "UNA") == 0) {
            cmp_sep = bytes[3];
            dst_sep = bytes[4];
            escape = bytes[6];
            seg_sep = bytes[8];
            start = 9;
        } else if (bytes.size() < 9 || bytes.compare(0, 3, "UNB") != 0) {
            continue;
        }
        ediprot::tagcnt = 0;
        datatree_t *root = readsupport::readbytes(bytes.substr(start));
        ASSERT_NE(root, nullptr) << name;
        EXPECT_TRUE(rejoins(root->child, bytes, start)) << name;
        freedatatree(root);
        checked++;
    }
    EXPECT_GT(checked, 30);
}

}  // namespace
