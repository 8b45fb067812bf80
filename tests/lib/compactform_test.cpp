// The compact form of a tree: what it keeps, that both JSON readers take
// it back, and that a write from it gives the interchange a write from the
// full tree gives, loop numbers given or not.
#include <stdlib.h>
#include <string.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "edi.h"

namespace {

const std::string corpus = EDIPROT_CORPUS "/edifact/";
const std::string samples = EDIPROT_SAMPLES "/";

// The text the library gives, freed.
std::string taken(char *p)
{
    std::string s = p != nullptr ? p : "<null>";
    edi_free(p);
    return s;
}

// The tree of a text, or NULL with the findings in `why`.
datatree_t *parsed(const std::string &text, std::string *why = nullptr)
{
    edi_result *res = edi_tree_parse(text.data(), text.size(), "t");
    if (why != nullptr)
        for (size_t i = 0; i < edi_result_finding_count(res); i++)
            *why += edi_result_finding(res, i)->text;
    datatree_t *tree = edi_result_take_tree(res);
    edi_result_free(res);
    return tree;
}

std::string fulltext(const datatree_t *tree)
{
    return taken(edi_tree_to_text_opt(tree, EDI_FORM_FULL, nullptr));
}

struct FormCase {
    const char *what, *full, *compact;
};

const FormCase formcases[] = {
    {"configuration fields and empty nodes go, values stay",
     "edi\n"
     "  *MSG loopcnt=1 type=loop\n"
     "    $UNH iseditag=1 ediforce=mand\n"
     "      0062 data=1 edimaxlen=14 editype=string\n"
     "      S009\n"
     "        0065 edimaxlen=6 defval=ORDERS\n"
     "    $BGM iseditag=1\n"
     "      C002\n"
     "        1001 edimaxlen=3\n",
     "edi\n"
     "  *MSG loopcnt=1\n"
     "    $UNH\n"
     "      0062 data=1\n"},
    {"the empty value is data, no value is not",
     "edi\n  M\n    a data=\"\"\n    b\n    c data=x\n",
     "edi\n  M\n    a data=\"\"\n    c data=x\n"},
    {"a loop without values goes whatever its number",
     "edi\n  M\n    *L loopcnt=1\n      $X\n        e data=1\n    *L loopcnt=2\n      $X\n"
     "        e\n",
     "edi\n  M\n    *L loopcnt=1\n      $X\n        e data=1\n"},
    {"envelope nodes carry data like messages",
     "edi\n  \"#envelope\"\n    UNA data=\":+.? '\"\n    UNB\n      0020 data=R1 edimaxlen=14\n"
     "  \"#group\"\n    0038\n",
     "edi\n  \"#envelope\"\n    UNA data=\":+.? '\"\n    UNB\n      0020 data=R1\n"},
    {"a root without any value stays, so there is a tree",
     "edi iseditag=1\n  M\n    a\n",
     "edi\n"},
    {"each root of a chain is kept",
     "a\n  x data=1 valid=1\nb\n  y\n",
     "a\n  x data=1\nb\n"},
    {"bytes of every kind survive",
     "edi\n  M\n    v data=\"a\\\"b\\\\c\\n\\xe4\\x01[\\\"x\\\",\\\"y\\\"]\"\n",
     "edi\n  M\n    v data=\"a\\\"b\\\\c\\n\\xe4\\x01[\\\"x\\\",\\\"y\\\"]\"\n"},
};

TEST(CompactForm, KeepsTheNodesThatCarryDataInTextAndBothJsonReaders)
{
    for (const FormCase &c : formcases) {
        SCOPED_TRACE(c.what);
        datatree_t *tree = parsed(c.full);
        ASSERT_NE(tree, nullptr);
        EXPECT_EQ(taken(edi_tree_to_text_opt(tree, EDI_FORM_COMPACT, nullptr)), c.compact);
        for (int form : {int{EDI_FORM_COMPACT}, EDI_FORM_COMPACT | EDI_FORM_ONE_LINE}) {
            std::string json = taken(edi_tree_to_json_opt(tree, form, nullptr));
            EXPECT_NE(json.find("\"form\""), std::string::npos);
            if ((form & EDI_FORM_ONE_LINE) != 0) {
                EXPECT_EQ(json.find('\n'), json.size() - 1) << json;
            }
            // The fast reader takes the document as written; one whose
            // first key is not "format" goes to the general parser.
            for (const std::string &doc : {json, "{\"x\": 0.5, " + json.substr(1)}) {
                std::string why;
                datatree_t *back = parsed(doc, &why);
                ASSERT_NE(back, nullptr) << why << "\n" << doc;
                EXPECT_EQ(fulltext(back), c.compact) << doc;
                edi_tree_free(back);
            }
        }
        edi_tree_free(tree);
    }
}

TEST(CompactForm, RefusesAMalformedPair)
{
    const struct {
        const char *node, *why;
    } cases[] = {
        {"[\"a\"]", "is not an object"},
        {"[\"a\", \"b\", \"c\"]", "is not an object"},
        {"[\"a\", 1]", "\"data\" is not a string"},
        {"[null, \"b\"]", "\"name\" is not a string"},
    };
    for (const auto &c : cases) {
        std::string doc = std::string("{\"format\": \"ediprot-tree\", \"tree\": {\"name\": \"edi\", "
                                      "\"children\": [") + c.node + "]}}";
        std::string why;
        datatree_t *tree = parsed(doc, &why);
        EXPECT_EQ(tree, nullptr) << doc;
        EXPECT_NE(why.find(c.why), std::string::npos) << doc << ": " << why;
        edi_tree_free(tree);
    }
}

// The tree of `path` without its envelope nodes (the interchange header
// comes from the write options here), NULL when it does not read.
datatree_t *readmessages(const std::string &path)
{
    edi_result *res = edi_read(path.c_str(), nullptr);
    datatree_t *tree = edi_result_take_tree(res);
    edi_result_free(res);
    if (tree == nullptr)
        return nullptr;
    datatree_t **pp = &tree->child;
    while (*pp != nullptr) {
        datatree_t *tp = *pp;
        if (tp->xmltag != nullptr && tp->xmltag[0] == '#') {
            *pp = tp->next;
            tp->next = nullptr;
            edi_tree_free(tp);
        } else {
            pp = &tp->next;
        }
    }
    return tree;
}

// The interchange and the findings' texts of a write of `tree`.
std::string written(datatree_t *tree)
{
    edi_write_options w;
    edi_write_options_init(&w);
    w.sender = "SENDER";
    w.recipient = "RECIPIENT";
    w.reference = "REF1";
    w.name = "tree";
    edi_result *res = edi_write(tree, &w);
    std::string out = "status " + std::to_string(edi_result_status(res)) + "\n";
    for (size_t i = 0; i < edi_result_finding_count(res); i++)
        out += std::string(edi_result_finding(res, i)->text) + "\n";
    const char *text = edi_result_text(res, nullptr);
    out += text != nullptr ? text : "";
    edi_result_free(res);
    return out;
}

void zeroloops(datatree_t *tp)
{
    for (; tp != nullptr; tp = tp->next) {
        tp->loopcnt = 0;
        zeroloops(tp->child);
    }
}

TEST(CompactForm, WritesTheInterchangeTheFullTreeWrites)
{
    setenv("SOURCE_DATE_EPOCH", "1700000000", 1);
    const std::vector<std::string> inputs = {
        samples + "orders-d96a.edi",
        samples + "desadv-d96a.edi",
        samples + "delfor-d96a.edi",
        corpus + "bots_INVOIC_D96A_invoic01.edi",
        corpus + "edifabric_INVOIC_D00A_MultipleMessages.txt",
        corpus + "edinet_Issue188_IFTMIN_INVOIC_multi.edi",
        corpus + "edireader_ORDRSP-D01B-UNOC_latin1.edi",
        corpus + "staedi_orders-with-group.edi",
    };
    size_t writes = 0;
    for (const std::string &in : inputs) {
        SCOPED_TRACE(in);
        datatree_t *tree = readmessages(in);
        ASSERT_NE(tree, nullptr);
        datatree_t *full = parsed(taken(edi_tree_to_json_opt(tree, EDI_FORM_FULL, nullptr)));
        datatree_t *compact = parsed(taken(edi_tree_to_json_opt(tree, EDI_FORM_COMPACT, nullptr)));
        datatree_t *unnumbered =
            parsed(taken(edi_tree_to_text_opt(tree, EDI_FORM_COMPACT, nullptr)));
        ASSERT_TRUE(full != nullptr && compact != nullptr && unnumbered != nullptr);
        // Without loop numbers the writer's renumbering finds every
        // occurrence again.
        zeroloops(unnumbered->child);
        const std::string want = written(full);
        writes += want.compare(0, 8, "status 0") == 0;
        EXPECT_EQ(written(compact), want);
        EXPECT_EQ(written(unnumbered), want);
        // And the compact form is what is left of the full one.
        EXPECT_EQ(fulltext(compact),
                  taken(edi_tree_to_text_opt(full, EDI_FORM_COMPACT, nullptr)));
        for (datatree_t *t : {tree, full, compact, unnumbered})
            edi_tree_free(t);
    }
    EXPECT_GE(writes, inputs.size() - 1) << "the inputs must mostly write";
}

// Messages of the read benchmark (bench/edifact_read.cpp): five line
// items each.
std::string benchinterchange(int messages)
{
    std::string text = "UNA:+.? 'UNB+UNOA:3+BUYERCORP:14+SUPPLIERCO:14+071123:1015+REF1'";
    for (int m = 1; m <= messages; m++) {
        const std::string r = std::to_string(m);
        std::string body = "BGM+220+PO" + r + "+9'DTM+137:20071123:102'DTM+2:20071201:102'"
                           "FTX+AAI+++Deliver to gate 3?: ring twice'NAD+BY+4012345000009::9'"
                           "NAD+SU+4098765000004::9++Supplier Name+Main Street 1+Springfield++"
                           "12345+DE'RFF+VA:DE123456789'CTA+OC+:J. Smith'COM+0049301234:TE'"
                           "CUX+2:EUR:9'";
        int segs = 12;
        for (int i = 1; i <= 5; i++, segs += 5) {
            const std::string n = std::to_string(i);
            body += "LIN+" + n + "++40008621" + std::to_string(10000 + i) + ":EN'PIA+1+A" + n +
                    ":SA'IMD+F++:::Screw M" + n + "'QTY+21:" + std::to_string(i * 10) +
                    ":PCE'PRI+AAA:0.25'";
        }
        text += "UNH+" + r + "+ORDERS:D:96A:UN'" + body + "UNS+S'CNT+2:5'UNT+" +
                std::to_string(segs + 3) + "+" + r + "'";
    }
    return text + "UNZ+" + std::to_string(messages) + "+REF1'";
}

TEST(CompactForm, IsATenthOfTheFullJsonOrLess)
{
    const std::string text = benchinterchange(20);
    edi_result *res = edi_read_memory(text.data(), text.size(), "bench.edi", nullptr);
    ASSERT_NE(edi_result_tree(res), nullptr);
    size_t full = taken(edi_result_json_opt(res, EDI_FORM_FULL)).size();
    size_t compact = taken(edi_result_json_opt(res, EDI_FORM_COMPACT)).size();
    EXPECT_LE(compact * 10, full) << compact << " of " << full;
    // The old call keeps giving the full form.
    EXPECT_EQ(taken(edi_result_json(res)), taken(edi_result_json_opt(res, EDI_FORM_FULL)));
    edi_result_free(res);
}

TEST(CompactForm, EachMessageIsOneLineWithItsEnvelopeAndReadsBack)
{
    edi_reader *r = edi_open_path((corpus + "edifabric_INVOIC_D00A_MultipleMessages.txt").c_str(),
                                  nullptr);
    edi_message *m = nullptr;
    int n = 0;
    while (edi_next(r, &m) == 1) {
        n++;
        std::string line = taken(edi_message_json(m, EDI_FORM_COMPACT | EDI_FORM_ONE_LINE));
        EXPECT_EQ(line.find('\n'), line.size() - 1) << line;
        EXPECT_NE(line.find("\"message\":" + std::to_string(n) + ","), std::string::npos) << line;
        const edi_envelope *e = edi_message_envelope(m);
        EXPECT_NE(line.find(std::string("\"control_ref\":\"") + e->control_ref + "\""),
                  std::string::npos)
            << line;
        datatree_t *back = parsed(line);
        ASSERT_NE(back, nullptr) << line;
        EXPECT_EQ(fulltext(back),
                  taken(edi_tree_to_text_opt(edi_message_tree(m), EDI_FORM_COMPACT, nullptr)));
        edi_tree_free(back);
        edi_message_free(m);
    }
    edi_close(r);
    EXPECT_GE(n, 2);
}

}  // namespace
