// Read-then-write through libedi keeps what the partner sent: the envelope
// (UNA characters, every UNB element, groups, several interchanges), text
// in ISO 8859 and UTF-8, and the segments byte for byte; options set the
// envelope of a tree that carries none.
#include <stdlib.h>
#include <string.h>

#include <fstream>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "edi.h"

namespace {

const std::string corpus = EDIPROT_CORPUS "/edifact/";

std::string slurp(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

// The segments of an interchange without transport bytes: byte-order mark
// and line ends between segments left out.
std::string segmentsof(std::string t)
{
    if (t.compare(0, 3, "\xEF\xBB\xBF") == 0)
        t.erase(0, 3);
    std::string out;
    for (char c : t)
        if (c != '\r' && c != '\n')
            out += c;
    return out;
}

struct Written {
    int status = -1;
    std::string text, findings;
};

Written readwrite(const std::string &input, const edi_write_options *extra = nullptr)
{
    Written w;
    edi_result *rd = edi_read_memory(input.data(), input.size(), "input", nullptr);
    datatree_t *tree = edi_result_take_tree(rd);
    edi_result_free(rd);
    if (tree == nullptr)
        return w;
    edi_write_options opt;
    edi_write_options_init(&opt);
    if (extra != nullptr)
        opt = *extra;
    edi_result *res = edi_write(tree, &opt);
    w.status = edi_result_status(res);
    size_t len = 0;
    const char *t = edi_result_text(res, &len);
    w.text.assign(t != nullptr ? t : "", len);
    for (size_t i = 0; i < edi_result_finding_count(res); i++)
        w.findings += std::string(edi_result_finding(res, i)->text) + "\n";
    edi_result_free(res);
    edi_tree_free(tree);
    return w;
}

class RoundTrip : public ::testing::TestWithParam<const char *> {};

TEST_P(RoundTrip, GivesTheSameSegments)
{
    std::string in = slurp(corpus + GetParam());
    ASSERT_FALSE(in.empty());
    Written w = readwrite(in);
    ASSERT_EQ(w.status, 0) << w.findings;
    EXPECT_EQ(segmentsof(w.text), segmentsof(in)) << w.findings;
}

// Latin-1 and UTF-8 text, other service characters, several interchanges
// each with its own UNA, a BOM and line ends.
INSTANTIATE_TEST_SUITE_P(Corpus, RoundTrip,
                         ::testing::Values("edireader_ORDRSP-D01B-UNOC_latin1.edi",
                                           "php-edifact_example_utf8_DESADV.edi",
                                           "edifabric_INVOIC_D00A_NonDefaultSeparators.txt",
                                           "edifabric_INVOIC_D00A_MultipleInterchange.txt",
                                           "bots_INVOIC_D96A_invoic01.edi"));

const char *const kPlain = "UNB+UNOA:3+ME:14+YOU:14+200101:1200+REF1'"
                           "UNH+1+INVOIC:D:96A:UN'BGM+380+42+9'"
                           "DTM+137:20200101:102'UNT+4+1'UNZ+1+REF1'";

TEST(WriteEnvelope, OptionsSetWhatTheyNameOverTheReceivedEnvelope)
{
    setenv("SOURCE_DATE_EPOCH", "1700000000", 1);  // 2023-11-14 22:13 UTC
    edi_write_options opt;
    edi_write_options_init(&opt);
    opt.sender = "NEWSENDER:ZZ:ROUTE";
    opt.syntax = "UNOC:4";
    opt.application_ref = "APP";
    opt.ack_request = 1;
    opt.group = "INVOIC";
    Written w = readwrite(kPlain, &opt);
    unsetenv("SOURCE_DATE_EPOCH");
    ASSERT_EQ(w.status, 0) << w.findings;
    EXPECT_NE(w.text.find("UNB+UNOC:4+NEWSENDER:ZZ:ROUTE+YOU:14+20231114:2213+REF1++APP++1'"),
              std::string::npos)
        << w.text;
    EXPECT_NE(w.text.find("UNG+INVOIC+NEWSENDER:ZZ+YOU:14+20231114:2213+REF1+UN+D:96A'UNH"),
              std::string::npos)
        << w.text;
    EXPECT_NE(w.text.find("'UNE+1+REF1'UNZ+1+REF1'"), std::string::npos) << w.text;
    // The partner sent no UNA, and none is written back: '*' is the
    // repetition separator of version 4 without one.
    EXPECT_EQ(w.text.compare(0, 10, "UNB+UNOC:4"), 0) << w.text;
}

TEST(WriteEnvelope, RefusesWhatWouldBreakTheHeader)
{
    struct Case {
        const char *sender, *syntax, *reference, *says;
    } cases[] = {
        {"ME+YOU", nullptr, nullptr, "holds a separator"},
        {"ME:ZZZZZ", nullptr, nullptr, "longer than its 4 characters"},
        {"A:B:C:D:E", nullptr, nullptr, "more than four parts"},
        {nullptr, "UNOQ:3", nullptr, "UNOQ"},
        {nullptr, "UNOC:9", nullptr, "version from 1 to 4"},
        {nullptr, nullptr, "REF456789012345", "longer than its 14 characters"},
    };
    for (const Case &c : cases) {
        edi_write_options opt;
        edi_write_options_init(&opt);
        opt.sender = c.sender;
        opt.syntax = c.syntax;
        opt.reference = c.reference;
        Written w = readwrite(kPlain, &opt);
        EXPECT_NE(w.status, 0) << c.says;
        EXPECT_NE(w.findings.find(c.says), std::string::npos) << w.findings;
        EXPECT_TRUE(w.text.empty()) << c.says;
    }
}

}  // namespace

namespace {

TEST(WriteEnvelope, AnotherSyntaxIdentifierTranscodesTheValues)
{
    edi_write_options opt;
    edi_write_options_init(&opt);
    opt.syntax = "UNOC:3";
    // UTF-8 text read, written as ISO 8859-1.
    Written w = readwrite(slurp(corpus + "php-edifact_example_utf8_DESADV.edi"), &opt);
    ASSERT_EQ(w.status, 0) << w.findings;
    EXPECT_NE(w.text.find("UNB+UNOC:3"), std::string::npos) << w.text;
    EXPECT_NE(w.text.find("MUNCI\xCB"), std::string::npos) << w.text;
    // Chinese text has no code in ISO 8859-1: with keep_going written as '?'
    // and named (without, the write fails: this file also holds a value
    // longer than its element).
    const std::string chinese = slurp(corpus + "smooks_edg_recadv_D01B_utf8.txt");
    opt.keep_going = 0;
    w = readwrite(chinese, &opt);
    EXPECT_EQ(w.status, 1);
    EXPECT_TRUE(w.text.empty());
    opt.keep_going = 1;
    w = readwrite(chinese, &opt);
    EXPECT_EQ(w.status, 0) << w.findings;
    EXPECT_NE(w.findings.find("holds U+62A5, which ISO-8859-1 has no code for"), std::string::npos)
        << w.findings;
    EXPECT_NE(w.findings.find("written as '?'"), std::string::npos) << w.findings;
}

}  // namespace

namespace {

// A tree text's result of edi_write: status and the number of UNB written.
std::pair<int, size_t> writetext(const std::string &tree)
{
    edi_result *parsed = edi_tree_parse(tree.data(), tree.size(), "t");
    datatree_t *t = edi_result_take_tree(parsed);
    edi_result_free(parsed);
    if (t == nullptr)
        return {-1, 0};
    edi_write_options opt;
    edi_write_options_init(&opt);
    edi_result *res = edi_write(t, &opt);
    size_t len = 0;
    const char *out = edi_result_text(res, &len);
    std::string text(out != nullptr ? out : "", len);
    size_t unb = 0;
    for (size_t at = text.find("UNB+"); at != std::string::npos; at = text.find("UNB+", at + 1))
        unb++;
    std::pair<int, size_t> r{edi_result_status(res), unb};
    edi_result_free(res);
    edi_tree_free(t);
    return r;
}

TEST(WriteEnvelope, AnEnvelopeWithoutMessagesIsNotWritten)
{
    const std::string envelope = "  \"#envelope\"\n    UNB\n      S001\n        0001 data=UNOC\n"
                                 "        0002 data=3\n      S002\n        0004 data=A\n"
                                 "      S003\n        0010 data=B\n";
    EXPECT_EQ(writetext("edi\n" + envelope).first, 1);  // no message at all
    edi_result *rd = edi_read_memory(kPlain, strlen(kPlain), "in", nullptr);
    size_t len = 0;
    char *text = edi_tree_to_text(edi_result_tree(rd), &len);
    std::string tree(text, len);
    edi_free(text);
    edi_result_free(rd);
    EXPECT_EQ(writetext(tree), (std::pair<int, size_t>{0, 1}));
    EXPECT_EQ(writetext(tree + envelope), (std::pair<int, size_t>{0, 1}));
}

}  // namespace
