// Several inputs read to standard output, in turn and with -j: one JSON
// array for --format json, one JSON document per line for ndjson, never
// documents run together; and standard input and output named "-".
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "testsupport.h"

using namespace testsupport;

namespace {

const std::string kOrders = EDIPROT_SAMPLES "/orders-d96a.edi";
const std::string kDesadv = EDIPROT_SAMPLES "/desadv-d96a.edi";

// The message numbers of the documents of `out`, by input: an array of
// read documents, or NDJSON lines.
std::vector<size_t> documents(const std::string &out, bool ndjson)
{
    std::vector<size_t> sizes;
    if (!ndjson) {
        nlohmann::json doc = nlohmann::json::parse(out);  // throws when not one document
        for (const auto &d : doc)
            sizes.push_back(d.at("tree").at("children").size());
        return sizes;
    }
    size_t start = 0;
    while (start < out.size()) {
        size_t nl = out.find('\n', start);
        nlohmann::json doc = nlohmann::json::parse(out.substr(start, nl - start));
        EXPECT_EQ(doc.at("form"), "compact");
        sizes.push_back(doc.at("message").get<size_t>());
        start = nl + 1;
    }
    return sizes;
}

TEST(EdiStreams, SeveralInputsToStdoutGiveValidJson)
{
    const struct {
        std::vector<std::string> args;
        bool ndjson;
        size_t documents;
    } cases[] = {
        {{"--format", "json"}, false, 2},
        {{"--format", "json", "-j", "2"}, false, 2},
        {{"--format", "ndjson"}, true, 4},
        {{"--format", "ndjson", "-j", "2"}, true, 4},
        {{"--format", "ndjson", "-o", "-"}, true, 4},
    };
    for (const auto &c : cases) {
        std::vector<std::string> args = {"read", kOrders, kDesadv};
        args.insert(args.end(), c.args.begin(), c.args.end());
        RunResult r = runprogram(EDI_PROGRAM, args);
        SCOPED_TRACE(c.args[1] + " " + std::to_string(c.args.size()));
        EXPECT_EQ(r.status, 0) << r.err;
        std::vector<size_t> docs;
        EXPECT_NO_THROW(docs = documents(r.out, c.ndjson)) << r.out.substr(0, 2000);
        EXPECT_EQ(docs.size(), c.documents);
    }
}

TEST(EdiStreams, DashIsStandardInputAndOutput)
{
    std::string dir = tempdir();
    RunResult full = runprogram(EDI_PROGRAM, {"read", kOrders, "-o", dir + "/t.tree"});
    ASSERT_EQ(full.status, 0) << full.err;
    const struct {
        const char *what, *line;
    } cases[] = {
        {"read from stdin", "edi read - < " EDIPROT_SAMPLES "/orders-d96a.edi"},
        {"read to -o -", "edi read " EDIPROT_SAMPLES "/orders-d96a.edi -o -"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        std::string line = c.line;
        line.replace(0, 3, EDI_PROGRAM);
        RunResult r = runprogram("/bin/sh", {"-c", line});
        EXPECT_EQ(r.status, 0) << r.err;
        EXPECT_EQ(r.out, readfile(dir + "/t.tree"));
    }
    // A tree from standard input written to standard output.
    RunResult w = runprogram("/bin/sh", {"-c", std::string(EDI_PROGRAM) + " write - --message ORDERS:D96A "
                                        "--sender S --recipient R --reference REF1 --exact < " +
                                        dir + "/t.tree"});
    RunResult f = runprogram(EDI_PROGRAM, {"write", dir + "/t.tree", "--message", "ORDERS:D96A",
                                           "--sender", "S", "--recipient", "R", "--reference",
                                           "REF1", "--exact", "-o", dir + "/o.edi"});
    EXPECT_EQ(w.status, f.status) << w.err;
    if (f.status == 0) {
        EXPECT_EQ(w.out.substr(w.out.find("UNH")), readfile(dir + "/o.edi").substr(w.out.find("UNH")));
    }
}

}  // namespace
