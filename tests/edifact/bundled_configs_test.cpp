// The bundled D.96A configurations with their samples: each sample is found
// through its service-configuration key, read with the inbound and written
// with the outbound configuration, and comes back segment for segment;
// interchanges of other projects read with the same configurations.
#include <gtest/gtest.h>

#include <stdlib.h>
#include <string.h>

#include <string>
#include <vector>

#include "edihost.h"
#include "internal.h"
#include "testsupport.h"

using namespace testsupport;

namespace {

const std::string kSamples = std::string(EDIPROT_SAMPLES) + "/";
const std::string kConfigs = std::string(EDIPROT_CONFIGS) + "/";
const std::string kCorpus = std::string(EDIPROT_CORPUS) + "/edifact/";

struct Bundled {
    const char *sample;
    const char *key;      // doctype_sender of the sample
    const char *message;  // the message node below the root
};

const Bundled kBundled[] = {
    {"orders-d96a.edi", "ORDERS_5412345000013", "*ORDERS"},
    {"desadv-d96a.edi", "DESADV_4098765000004", "*DESADV"},
    {"delfor-d96a.edi", "DELFOR_5412345000013", "*DELFOR"},
    {"delfor-d96a-product.edi", "DELFOR_5412345000020", "*DELFOR"},
};

// The data of every node along `path` (dotted names, compared exactly)
// below `tp` and its siblings, depth first: all occurrences of a loop.
void collect(const datatree_t *tp, const std::string &path, std::vector<std::string> &out)
{
    const size_t dot = path.find('.');
    const std::string name = path.substr(0, dot);
    for (; tp != nullptr; tp = tp->next) {
        if (name != tp->xmltag)
            continue;
        if (dot == std::string::npos) {
            if (tp->data != nullptr)
                out.push_back(tp->data);
        } else {
            collect(tp->child, path.substr(dot + 1), out);
        }
    }
}

std::vector<std::string> values(const datatree_t *tree, const std::string &path)
{
    std::vector<std::string> out;
    collect(tree, path, out);
    return out;
}

int count(const datatree_t *tree, const char *name)
{
    int n = 0;
    for (const datatree_t *tp = tree != nullptr ? tree->child : nullptr; tp; tp = tp->next)
        n += strcmp(tp->xmltag, name) == 0;
    return n;
}

// Loads `file` as the only service configuration.
void useservconf(const std::string &file)
{
    edihost_clearservconf();
    ASSERT_EQ(edihost_loadservconf(file.c_str()), 0) << file;
}

// A read as a host does it: the file picks its configuration through the
// service configuration, or `inhead` is handed in.
struct Read {
    datatree_t *tree = nullptr;
    std::string key;
    std::string err;
    Read(const std::string &fn, datatree_t *inhead = nullptr)
    {
        envelope_t *ev = nullptr;
        err = capture_stderr([&] {
            tree = edifactread(const_cast<char *>(fn.c_str()), &ev, inhead, nullptr);
        });
        if (ev != nullptr) {
            key = ev->servconftag;
            free(ev->servconftag);
            free(ev);
        }
    }
    ~Read() { freedatatree(tree); }
};

// Writes `tree` with the configuration in the file `outcf`; the written
// text, or "" after a failure.
std::string write(datatree_t *tree, const std::string &outcf)
{
    datatree_t *cf = edihost_readtree(outcf.c_str());
    EXPECT_NE(cf, nullptr) << outcf;
    if (cf == nullptr)
        return "";
    std::string out = tempdir() + "/out.edi";
    char sender[] = "SENDER";
    char recipient[] = "RECIP";
    int rc = edifactwrite(tree, const_cast<char *>(out.c_str()), nullptr, nullptr, cf, sender,
                          recipient, 0);
    freedatatree(cf);
    EXPECT_EQ(rc, 0);
    return rc == 0 ? readfile(out) : "";
}

// Removes the segment count of every UNT from a read tree, so that the
// writer takes it from the configuration's default function.
void dropcounts(datatree_t *tp)
{
    for (; tp != nullptr; tp = tp->next) {
        if (strcmp(tp->xmltag, "$UNT") == 0 && tp->child != nullptr &&
            strcmp(tp->child->xmltag, "0074") == 0) {
            free(tp->child->data);
            tp->child->data = nullptr;
        }
        dropcounts(tp->child);
    }
}

// A copy of an interchange written one segment a line, in one line: the
// line breaks and the blanks that indent a segment go.  Read as they
// stand, such files have no segment named UNH behind the UNB (the line
// break begins the next segment's name), so the reader refuses them.
std::string joinedcopy(const std::string &fn)
{
    std::string in = readfile(fn), out;
    bool linestart = false;
    for (char c : in) {
        if (c == '\r' || c == '\n') {
            linestart = true;
            continue;
        }
        if (linestart && c == ' ')
            continue;
        linestart = false;
        out += c;
    }
    return out;
}

TEST(BundledConfigs, SamplesComeBackSegmentForSegmentThroughTheirServiceKeys)
{
    for (const auto &b : kBundled) {
        SCOPED_TRACE(b.sample);
        useservconf(kConfigs + "servconf.conf");
        const std::string sample = kSamples + b.sample;
        Read r(sample);
        ASSERT_NE(r.tree, nullptr) << r.err;
        EXPECT_EQ(r.key, b.key);
        EXPECT_EQ(r.err, "");
        EXPECT_EQ(count(r.tree, b.message), 2);
        // The outbound configuration, as a host finds it for that key.
        servconf_t *sc = getservconf(const_cast<char *>(b.key));
        ASSERT_NE(sc, nullptr);
        ASSERT_NE(sc->toconffile, nullptr);
        std::string out = write(r.tree, sc->toconffile);
        EXPECT_EQ(messagesegments(out), messagesegments(readfile(sample)));
    }
}

TEST(BundledConfigs, RepeatedElementsAndSegmentsKeepTheirOwnValues)
{
    useservconf(kConfigs + "servconf.conf");
    Read orders(kSamples + "orders-d96a.edi");
    ASSERT_NE(orders.tree, nullptr) << orders.err;
    const std::string ord = "edi.*ORDERS.";
    EXPECT_EQ(values(orders.tree, ord + "*FTX.$FTX.C108.4440"),
              std::vector<std::string>{"Deliver to gate 3 only"});
    EXPECT_EQ(values(orders.tree, ord + "*FTX.$FTX.C108.4440_2"),
              std::vector<std::string>{"Call 2 hours ahead"});
    EXPECT_EQ(values(orders.tree, ord + "*SG25.*SG25PIA.$PIA.C212_2.7140"),
              std::vector<std::string>{"88001"});
    EXPECT_EQ(values(orders.tree, ord + "*SG25.*SG25IMD.$IMD.C273.7008_2"),
              std::vector<std::string>{"zinc plated"});
    EXPECT_EQ(values(orders.tree, ord + "*SG2.$NAD.C080.3036"),
              std::vector<std::string>{"Northwind Trading"});
    EXPECT_EQ(values(orders.tree, ord + "*SG2.$NAD.C059.3042"),
              std::vector<std::string>{"Harbour Road 12"});

    Read delfor(kSamples + "delfor-d96a.edi");
    ASSERT_NE(delfor.tree, nullptr) << delfor.err;
    EXPECT_EQ(values(delfor.tree, "edi.*DELFOR.$UNS.0081"),
              std::vector<std::string>({"D", "D"}));
    EXPECT_EQ(values(delfor.tree, "edi.*DELFOR.$UNS_2.0081"),
              std::vector<std::string>({"S", "S"}));
    // Three deliveries in the first schedule, one in each delivery point
    // of the second; two dates in one of them.
    EXPECT_EQ(values(delfor.tree, "edi.*DELFOR.*SG4.*SG8.*SG12.$QTY.C186.6060"),
              std::vector<std::string>({"1000", "1500", "12500", "400", "800", "300"}));
    EXPECT_EQ(values(delfor.tree, "edi.*DELFOR.*SG4.*SG8.*SG12.*SG12DTM.$DTM.C507.2380"),
              std::vector<std::string>(
                  {"20240909", "20240916", "20240922", "20240909", "20240910", "20240911"}));
}

// seccnt gives 1 + the tag nodes that the walk enters from UNH through UNT.
// Every occurrence that the data tree holds is entered with all its tag
// nodes, also those whose segment is absent (SG1's DTM, an SCC of one
// SG12 ...), so the count of a message is one higher, and one more for
// each such tag node.  Samples read from a file carry their UNT count, so
// what is written is the count of the file.
TEST(BundledConfigs, SeccntCountsEveryTagNodeEnteredAndOneMore)
{
    const struct {
        const char *sample;
        const char *outcf;
        const char *withcounts;
        const char *fromseccnt;
    } cases[] = {
        // The configuration has a tag node for every segment of the
        // directory: PAI, IMD and many inside the occurrences are absent.
        {"orders-d96a.edi", "orders-d96a-out.tree", "UNT+35+ORD0001 UNT+17+ORD0002",
         "UNT+53+ORD0001 UNT+30+ORD0002"},
        // Message 1: SG13's RFF and the DTM of both SG16 are absent.
        {"desadv-d96a.edi", "desadv-d96a-out.tree", "UNT+34+DES0001 UNT+13+DES0002",
         "UNT+38+DES0001 UNT+14+DES0002"},
        // Message 1: SG1's DTM and the SCC of the third SG12 are absent.
        {"delfor-d96a.edi", "delfor-d96a-out.tree", "UNT+33+DF0001 UNT+19+DF0002",
         "UNT+36+DF0001 UNT+20+DF0002"},
        // Message 1: the SCC of both SG27 is absent.
        {"delfor-d96a-product.edi", "delfor-d96a-product-out.tree",
         "UNT+26+DP0001 UNT+15+DP0002", "UNT+29+DP0001 UNT+16+DP0002"},
    };
    auto unts = [](const std::string &text) {
        std::string got;
        for (size_t at = text.find("UNT+"); at != std::string::npos;
             at = text.find("UNT+", at + 1))
            got += (got.empty() ? "" : " ") + text.substr(at, text.find('\'', at) - at);
        return got;
    };
    useservconf(kConfigs + "servconf.conf");
    for (const auto &c : cases) {
        SCOPED_TRACE(c.sample);
        Read r(kSamples + c.sample);
        ASSERT_NE(r.tree, nullptr) << r.err;
        EXPECT_EQ(unts(readfile(kSamples + c.sample)), c.withcounts);
        EXPECT_EQ(unts(write(r.tree, kConfigs + c.outcf)), c.withcounts);
        dropcounts(r.tree);
        EXPECT_EQ(unts(write(r.tree, kConfigs + c.outcf)), c.fromseccnt);
    }
}

// The reader takes a segment into the next tag node of its name, also
// inside a group whose first segment is absent.  With both schedule forms,
// a schedule by product lands in SG4's SG8, and the line items behind the
// first delivery point are lost; the product configuration reads it whole.
TEST(BundledConfigs, ScheduleByProductNeedsTheProductConfiguration)
{
    const std::string sample = kSamples + "delfor-d96a-product.edi";
    const std::string lins = "edi.*DELFOR.*SG18.$LIN.C212.7140";
    datatree_t *both = edihost_readtree((kConfigs + "delfor-d96a-in.tree").c_str());
    ASSERT_NE(both, nullptr);
    {
        Read r(sample, both);
        ASSERT_NE(r.tree, nullptr) << r.err;
        EXPECT_EQ(values(r.tree, "edi.*DELFOR.*SG4.*SG8.$LIN.C212.7140"),
                  std::vector<std::string>(
                      {"4000862141404", "4000862141435", "4000862141442"}));
        EXPECT_EQ(values(r.tree, lins), std::vector<std::string>{});
        // Nothing took the UNT of the first message.
        EXPECT_EQ(values(r.tree, "edi.*DELFOR.$UNT.0062"), std::vector<std::string>{"DP0002"});
    }
    freedatatree(both);

    useservconf(kConfigs + "servconf.conf");
    Read r(sample);
    ASSERT_NE(r.tree, nullptr) << r.err;
    EXPECT_EQ(values(r.tree, lins),
              std::vector<std::string>(
                  {"4000862141404", "4000862141411", "4000862141435", "4000862141442"}));
    EXPECT_EQ(values(r.tree, "edi.*DELFOR.*SG18.*SG24.$NAD.C082.3039"),
              std::vector<std::string>({"5412345000037", "5412345000044"}));
    EXPECT_EQ(values(r.tree, "edi.*DELFOR.$UNT.0062"),
              std::vector<std::string>({"DP0001", "DP0002"}));
}

TEST(BundledConfigs, CorpusDespatchAdviceReadsWithTheBundledConfiguration)
{
    const std::string dir = tempdir();
    writefile(dir + "/servconf.conf",
              "DESADV_1556150 fromconffile=" + kConfigs + "desadv-d96a-in.tree\n");
    useservconf(dir + "/servconf.conf");
    // Behind a UNA the line break already spoils the UNB's name.
    const struct {
        const char *name;
        const char *asis;
    } files[] = {
        {"php-edifact_D96A_DESADV.edi", "no doctype"},
        {"php-edifact_example_utf8_DESADV.edi", "no sender"},
    };
    for (const auto &f : files) {
        const std::string name = f.name;
        SCOPED_TRACE(name);
        {
            Read asis(kCorpus + name);
            EXPECT_EQ(asis.tree, nullptr);
            EXPECT_NE(asis.err.find(f.asis), std::string::npos) << asis.err;
        }
        const std::string joined = writefile(dir + "/" + name, joinedcopy(kCorpus + name));
        Read r(joined);
        ASSERT_NE(r.tree, nullptr) << r.err;
        EXPECT_EQ(r.key, "DESADV_1556150");
        EXPECT_EQ(count(r.tree, "*DESADV"), 1);
        const std::string msg = "edi.*DESADV.";
        EXPECT_EQ(values(r.tree, msg + "$BGM.1004"), std::vector<std::string>{"Y02197250"});
        EXPECT_EQ(values(r.tree, msg + "*SG1.$RFF.C506.1153"),
                  std::vector<std::string>({"ON", "PK"}));
        EXPECT_EQ(values(r.tree, msg + "*SG2.$NAD.3035"), std::vector<std::string>({"SU", "BY"}));
        EXPECT_EQ(values(r.tree, msg + "*SG10.$CPS.7164"),
                  std::vector<std::string>{"IE2156580387"});
        EXPECT_EQ(values(r.tree, msg + "*SG10.*SG15.$LIN.1082"),
                  std::vector<std::string>({"001", "002"}));
        EXPECT_EQ(values(r.tree, msg + "*SG10.*SG15.*SG16.$RFF.C506.1154"),
                  std::vector<std::string>({"6877871", "6877871", "6905456", "6905456"}));
        EXPECT_EQ(values(r.tree, msg + "$UNT.0074"), std::vector<std::string>{"21"});
    }
}

// The corpus schedule is written one indented segment a line, and its UNB
// names the sender without a qualifier, so that the reader finds no
// sender component.  The copy read here is joined into one line and gives
// the sender the qualifier ZZ; its segments are those of the file.
TEST(BundledConfigs, CorpusDeliveryScheduleReadsWithTheBundledConfiguration)
{
    const std::string name = "edinet_Issue196_DELFOR_indented.edi";
    {
        useservconf(kConfigs + "servconf.conf");
        Read asis(kCorpus + name);
        EXPECT_EQ(asis.tree, nullptr);
        EXPECT_NE(asis.err.find("no sender"), std::string::npos) << asis.err;
    }
    std::string text = joinedcopy(kCorpus + name);
    const std::string sender = "+0941B715566328+";
    const size_t at = text.find(sender);
    ASSERT_NE(at, std::string::npos);
    text.insert(at + sender.size() - 1, ":ZZ");

    const std::string dir = tempdir();
    writefile(dir + "/servconf.conf",
              "DELFOR_0941B715566328 fromconffile=" + kConfigs + "delfor-d96a-in.tree\n");
    useservconf(dir + "/servconf.conf");
    Read r(writefile(dir + "/delfor.edi", text));
    ASSERT_NE(r.tree, nullptr) << r.err;
    EXPECT_EQ(r.key, "DELFOR_0941B715566328");
    EXPECT_EQ(count(r.tree, "*DELFOR"), 1);
    const std::string msg = "edi.*DELFOR.";
    EXPECT_EQ(values(r.tree, msg + "$BGM.1004"), std::vector<std::string>{"001"});
    EXPECT_EQ(values(r.tree, msg + "*SG2.$NAD.3035"),
              std::vector<std::string>({"BY", "IV", "SE"}));
    EXPECT_EQ(values(r.tree, msg + "$UNS.0081"), std::vector<std::string>{"D"});
    EXPECT_EQ(values(r.tree, msg + "*SG4.$NAD.3035"), std::vector<std::string>{"CN"});
    EXPECT_EQ(values(r.tree, msg + "*SG4.*SG8.$LIN.C212.7140"),
              std::vector<std::string>({"XXXXXXXXX1", "XXXXXXXXX2"}));
    EXPECT_EQ(values(r.tree, msg + "$UNS_2.0081"), std::vector<std::string>{"S"});
    EXPECT_EQ(values(r.tree, msg + "$UNT.0074"), std::vector<std::string>{"331"});
}

}  // namespace
