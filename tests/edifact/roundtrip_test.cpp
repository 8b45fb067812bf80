// Read and write back: an interchange read with edifactread and written
// with edifactwrite keeps its message segments.
#include <gtest/gtest.h>

#include <stdlib.h>
#include <string.h>

#include <string>

#include "edihost.h"
#include "internal.h"
#include "testsupport.h"

using namespace testsupport;

namespace {

// Reads `in` with the configuration `incf` and writes the tree with
// `outcf`; returns the written text, or "" after a failure.
std::string readandwrite(const std::string &in, datatree_t *incf, datatree_t *outcf)
{
    envelope_t *ev = nullptr;
    datatree_t *tree = edifactread(const_cast<char *>(in.c_str()), &ev, incf, nullptr);
    EXPECT_NE(tree, nullptr) << in;
    if (tree == nullptr)
        return "";
    free(ev->servconftag);
    free(ev);
    std::string out = tempdir() + "/out.edi";
    char sender[] = "SENDER";
    char recipient[] = "RECIP";
    int rc = edifactwrite(tree, const_cast<char *>(out.c_str()), nullptr, nullptr, outcf, sender,
                          recipient, 0);
    freedatatree(tree);
    EXPECT_EQ(rc, 0);
    return rc == 0 ? readfile(out) : "";
}

TEST(Roundtrip, SameConfigurationGivesBackEveryMessageSegment)
{
    // Two messages; sibling loops *DTM, *SG1 (absent) and *SG2, and *SG5
    // nested in *SG2; a released separator in a value.
    std::string in = EDIPROT_TESTDATA "/edifact-out/two-messages.edi";
    datatree_t *cf = edihost_readtree(EDIPROT_TESTDATA "/edifact-out/roundtrip.tree");
    ASSERT_NE(cf, nullptr);
    std::string out = readandwrite(in, cf, cf);
    freedatatree(cf);
    EXPECT_EQ(messagesegments(out), messagesegments(readfile(in)));
    EXPECT_EQ(out.substr(out.size() - 16), "UNZ+000001+4711'");
}

// The ORDERS samples come back segment for segment, but for three segments
// that no configuration can give back as they were:
// - BGM and FTX hold a simple element where the directory has a composite
//   (C002, C107).  The reader then fills the composite's components from
//   that element and the ones behind it, so the tree holds those values
//   twice, and the writer writes what the tree holds (cut to the length of
//   each component).
// - '@' is outside the output character set and becomes a blank.
TEST(Roundtrip, OrdersSamplesReadInboundAndWrittenOutboundKeepTheirSegments)
{
    const struct {
        const char *read;
        const char *written;
    } changes[] = {
        {"BGM+220+PO4711+9'", "BGM+220:PO4711:9:+PO4711+9'"},
        {"FTX+AAI+++Deliver to gate 3'", "FTX+AAI++:Deliver to gate 3:+Deliver to gate 3'"},
        {"COM+smith@example.com:EM'", "COM+smith example.com:EM'"},
    };
    datatree_t *incf = edihost_readtree(EDIPROT_CONFIGS "/orders-d96a-in.tree");
    datatree_t *outcf = edihost_readtree(EDIPROT_CONFIGS "/orders-d96a-out.tree");
    ASSERT_NE(incf, nullptr);
    ASSERT_NE(outcf, nullptr);
    for (const char *name : {"orders_una.edi", "orders_two_messages.edi"}) {
        std::string in = std::string(EDIPROT_TESTDATA "/edifact/") + name;
        std::string expected = messagesegments(readfile(in));
        for (const auto &c : changes) {
            size_t at;
            while ((at = expected.find(c.read)) != std::string::npos)
                expected.replace(at, strlen(c.read), c.written);
        }
        EXPECT_EQ(messagesegments(readandwrite(in, incf, outcf)), expected) << name;
    }
    freedatatree(incf);
    freedatatree(outcf);
}

TEST(Roundtrip, OutboundOrdersConfigurationFillsTheMessageFrame)
{
    // A data tree with a document number only: UNH, UNS and UNT come from
    // the defaults and default functions of the configuration.
    datatree_t *outcf = edihost_readtree(EDIPROT_CONFIGS "/orders-d96a-out.tree");
    ASSERT_NE(outcf, nullptr);
    datatree_t *data = rooted(node("edi", nullptr, {loopnode("*ORDERS", 1, {
        node("$BGM", nullptr, {node("C002", nullptr, {node("1001", "220")}),
                               node("1004", "PO1")})})}));
    std::string out = tempdir() + "/out.edi";
    char sender[] = "S";
    char recipient[] = "R";
    EXPECT_EQ(edifactwrite(data, const_cast<char *>(out.c_str()), nullptr, nullptr, outcf,
                           sender, recipient, 0), 0);
    // seccnt: 1 + the six tag nodes entered (UNH, BGM, PAI, IMD, UNS, UNT); the
    // empty components of C002 stay in front of the value behind them.
    EXPECT_EQ(messagesegments(readfile(out)), "UNH+1+ORDERS:D:96A:UN'BGM+220:::+PO1'UNS+S'UNT+7'");
    freedatatree(outcf);
    freedatatree(data);
}

}  // namespace
