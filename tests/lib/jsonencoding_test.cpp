// A JSON tree read back has its texts encoded into the set of their
// interchange.  When the fast reader saw only ASCII (nearly every
// document), the library looks only at the `#envelope` nodes, for a set
// it does not know; a document with any other character goes through the
// whole tree.  Both must give the same tree and the same findings: each
// case is read as it is and with a top-level key holding a character
// above 127 (read the whole way), and the results compared.
#include <string>

#include <gtest/gtest.h>

#include "edi.h"

namespace {

struct Read {
    int status;
    std::string findings, tree;
};

Read read(const std::string &text)
{
    edi_result *res = edi_tree_parse(text.data(), text.size(), "t.json");
    Read r{edi_result_status(res), "", ""};
    for (size_t i = 0; i < edi_result_finding_count(res); i++)
        r.findings += std::string(edi_result_finding(res, i)->text) + "\n";
    if (const datatree_t *tree = edi_result_tree(res)) {
        char *text = edi_tree_to_text_opt(tree, EDI_FORM_FULL, nullptr);
        r.tree = text != nullptr ? text : "";
        edi_free(text);
    }
    edi_result_free(res);
    return r;
}

std::string envelope(const std::string &charset)
{
    return R"({"name":"#envelope","children":[["charset",")" + charset + R"("]]})";
}

// `tree` in a document; with `wide`, beside a key that holds a character
// above 127 (it names nothing of the tree).
std::string document(const std::string &tree, bool wide)
{
    return std::string(R"({"format":"ediprot-tree","version":1,"form":"compact",)") +
           (wide ? R"("note":"\u00e9",)" : "") + R"("tree":)" + tree + "}";
}

TEST(JsonEncoding, AsciiTreesGiveWhatTheWholeWalkGives)
{
    std::string many;
    for (int k = 0; k < 23; k++)
        many += envelope("SET" + std::to_string(k)) + R"(,{"name":"*M","children":[["a","1"]]},)";
    many.pop_back();
    const struct {
        const char *what;
        std::string tree;
        bool fails;
    } cases[] = {
        {"a set the library knows",
         R"({"name":"edi","children":[)" + envelope("ISO-8859-5") +
             R"(,{"name":"*M","children":[["a","x"]]}]})",
         false},
        {"a set it does not know",
         R"({"name":"edi","children":[)" + envelope("KLINGON") +
             R"(,{"name":"*M","children":[["a","x"]]}]})",
         true},
        {"an envelope named behind its children, one of them an envelope",
         R"({"name":"edi","children":[{"children":[["charset","OUTER"],)" + envelope("INNER") +
             R"(],"name":"#envelope"}]})",
         true},
        {"an envelope below a message",
         R"({"name":"edi","children":[{"name":"*M","children":[)" + envelope("NOSUCH") + "]}]}",
         true},
        {"more envelopes with unknown sets than are named",
         R"({"name":"edi","children":[)" + many + "]}", true},
        {"no envelope", R"({"name":"edi","children":[["a","x"]]})", false},
        {"a chain of roots", R"([)" + envelope("KLINGON") + R"(,{"name":"b"}])", true},
    };
    for (const auto &c : cases) {
        const Read ascii = read(document(c.tree, false));
        const Read whole = read(document(c.tree, true));
        EXPECT_EQ(ascii.status, c.fails ? 1 : 0) << c.what << "\n" << ascii.findings;
        EXPECT_EQ(ascii.status, whole.status) << c.what;
        EXPECT_EQ(ascii.findings, whole.findings) << c.what;
        EXPECT_EQ(ascii.tree, whole.tree) << c.what;
    }
}

}  // namespace
