// An interchange built from a directory's message structure (every segment
// once, every element and component with a value) reads with the generated
// inbound configuration and is written back by the generated outbound one
// with the same message segments; the validator finds nothing in it.
#include <gtest/gtest.h>

#include <stdlib.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "directory/configgen.h"
#include "edihost.h"
#include "testsupport.h"
#include "directory/validate.h"

namespace {

using json = nlohmann::json;
const std::string dir = std::string(EDIPROT_CONFIGS) + "/../data/directories";

json load(const std::string &file)
{
    std::ifstream in(dir + "/" + file);
    return json::parse(in);
}

struct Sample {
    const json &d, &codes;
    std::string text;
    int segments = 0, sections = 0;
    std::vector<edi::dirs::SegmentValues> values;  // the same, for the validator

    // A value the element accepts: its first code, 1 for a number, else A.
    std::string value(const std::string &id) const
    {
        if (codes.contains(id) && !codes[id].empty())
            return codes[id][0];
        std::string repr = d["elements"].contains(id) ? d["elements"][id].value("repr", "an") : "an";
        return repr[0] == 'n' ? "1" : "A";
    }

    void segment(const std::string &tag)
    {
        segments++;
        values.push_back({tag, {}, {}});
        if (tag == "UNS") {
            std::string v = sections++ == 0 ? "D" : "S";
            text += "UNS+" + v + "'";
            values.back().elements.push_back({v});
            return;
        }
        text += tag;
        // A repeated element takes as many positions as it may repeat.
        std::vector<std::string> ids;
        for (auto &el : d["segments"][tag]["elements"])
            ids.insert(ids.end(), std::clamp(el.value("max", 1), 1, 99), el["id"]);
        for (const std::string &id : ids) {
            text += "+";
            values.back().elements.emplace_back();
            if (!d["composites"].contains(id)) {
                text += value(id);
                values.back().elements.back().push_back(value(id));
                continue;
            }
            std::string sep;
            for (auto &c : d["composites"][id]["components"]) {
                text += sep + value(c["id"]), sep = ":";
                values.back().elements.back().push_back(value(c["id"]));
            }
        }
        text += "'";
    }

    void entries(const json &list)
    {
        for (auto &e : list) {
            if (e.contains("group"))
                entries(e["children"]);
            else if (e["segment"] != "UNH" && e["segment"] != "UNT")
                segment(e["segment"]);
        }
    }
};

std::string messagesegments(const std::string &text)
{
    size_t from = text.find("UNH+"), to = text.find("UNZ+");
    return from == std::string::npos || to == std::string::npos ? "" : text.substr(from, to - from);
}

TEST(GeneratedConfigs, SampleInterchangesOfEveryDirectoryReadAndWriteBack)
{
    // One message of each directory, a different one each time (every
    // fourth directory in a sanitizer build).  DELFOR is left out: a sample
    // with both of its detail forms is ambiguous.
    struct Case {
        std::string directory, message;
    };
    std::vector<Case> cases;
    auto names = edi::dirs::directories(dir);
    for (size_t i = 0; i < names.size(); i += EDIPROT_SANITIZED ? 4 : 1) {
        edi::dirs::Directory x;
        std::string err;
        ASSERT_TRUE(x.load(dir, names[i], err)) << err;
        auto msgs = x.messages();
        size_t k = i * 37 % msgs.size();
        if (msgs[k].first == "DELFOR")
            k = (k + 1) % msgs.size();
        cases.push_back({names[i], msgs[k].first});
    }
    ASSERT_GE(cases.size(), 9u);
    for (const Case &cc : cases) {
        struct {
            const char *directory, *message;
        } c{cc.directory.c_str(), cc.message.c_str()};
        SCOPED_TRACE(cc.directory + " " + cc.message);
        json d = load(std::string(c.directory) + ".json");
        json codes = load(std::string(c.directory) + ".codes.json");
        // The message with two UNS has its first one as detail section.
        int uns = 0;
        for (auto &e : d["messages"][c.message]["structure"])
            uns += e.value("segment", "") == "UNS";
        Sample s{d, codes, "", 0, uns > 1 ? 0 : 1, {}};
        std::string version = std::string(c.directory).substr(1, 2);
        std::string release = std::string(c.directory).substr(3);
        s.text = std::string("UNH+1+") + c.message + ":D:" + version + release + ":UN'";
        s.entries(d["messages"][c.message]["structure"]);
        s.text += "UNT+" + std::to_string(s.segments + 2) + "+1'";
        // The validator finds nothing in it.
        s.values.insert(s.values.begin(),
                        {"UNH", {{"1"}, {c.message, "D", version + release, "UN"}}, {}});
        s.values.push_back({"UNT", {{std::to_string(s.segments + 2)}, {"1"}}, {}});
        EXPECT_GT(s.segments, 3);
        std::string in = testsupport::tempdir() + "/in.edi";
        std::ofstream(in) << "UNB+UNOA:3+S:14+R:14+240101:1200+1'" << s.text << "UNZ+1+1'";

        edi::dirs::Directory dd;
        std::string err, intext, outtext;
        ASSERT_TRUE(dd.load(dir, c.directory, err)) << err;
        ASSERT_TRUE(dd.config(c.message, false, intext, err)) << err;
        ASSERT_TRUE(dd.config(c.message, true, outtext, err)) << err;
        for (const edi::dirs::Finding &f : edi::dirs::validate(dd, c.message, s.values))
            ADD_FAILURE() << "segment " << f.segment << " " << f.tag << ": " << f.text;
        datatree_t *incf = edihost_parsetree(intext.data(), intext.size(), "in");
        datatree_t *outcf = edihost_parsetree(outtext.data(), outtext.size(), "out");
        ASSERT_NE(incf, nullptr);
        ASSERT_NE(outcf, nullptr);
        envelope_t *ev = nullptr;
        datatree_t *tree = edifactread(const_cast<char *>(in.c_str()), &ev, incf, nullptr);
        ASSERT_NE(tree, nullptr);
        free(ev->servconftag);
        free(ev);
        std::string out = testsupport::tempdir() + "/out.edi";
        char sender[] = "S", recipient[] = "R";
        EXPECT_EQ(edifactwrite(tree, const_cast<char *>(out.c_str()), nullptr, nullptr, outcf,
                               sender, recipient, 0), 0);
        EXPECT_EQ(messagesegments(testsupport::readfile(out)), s.text);
        freedatatree(tree);
        freedatatree(incf);
        freedatatree(outcf);
    }
}

}  // namespace

namespace {

// Every message of every directory with each segment of its structure once,
// in order, and values its elements accept: the validator must place every
// segment and find nothing.  A structure with the same group shape at two
// levels (DELFOR D96A: SG8 inside SG4, SG18 behind it) once lost its place.
TEST(Validator, EverySegmentOnceInOrderIsCleanInEveryMessageOfEveryDirectory)
{
    size_t checked = 0;
    auto names = edi::dirs::directories(dir);
    for (size_t i = 0; i < names.size(); i += EDIPROT_SANITIZED ? 6 : 1) {
        edi::dirs::Directory x;
        std::string err;
        ASSERT_TRUE(x.load(dir, names[i], err)) << err;
        json d = load(names[i] + ".json"), codes = load(names[i] + ".codes.json");
        std::string version = names[i].substr(1, 2), release = names[i].substr(3);
        auto msgs = x.messages();
        for (size_t k = 0; k < msgs.size(); k += EDIPROT_SANITIZED ? 5 : 1) {
            const std::string &type = msgs[k].first;
            int uns = 0;
            for (auto &e : d["messages"][type]["structure"])
                uns += e.value("segment", "") == "UNS";
            Sample s{d, codes, "", 0, uns > 1 ? 0 : 1, {}};
            s.entries(d["messages"][type]["structure"]);
            s.values.insert(s.values.begin(), {"UNH", {{"1"}, {type, "D", version + release, "UN"}}, {}});
            s.values.push_back({"UNT", {{std::to_string(s.segments + 2)}, {"1"}}, {}});
            for (const edi::dirs::Finding &f : edi::dirs::validate(x, type, s.values))
                ADD_FAILURE() << names[i] << " " << type << ": segment " << f.segment << " ("
                              << f.tag << "): " << f.text;
            checked++;
        }
    }
    EXPECT_GT(checked, EDIPROT_SANITIZED ? 150u : 5000u);
}

}  // namespace
