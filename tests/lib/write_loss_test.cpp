// Nothing lost on write without a word (edi_write, edi_vda_write): a value
// of the tree that the writer would leave out, having no place in the
// configuration it walks, or cut to its length, fails the write with a
// finding naming it, unless keep_going accepts the loss.
//
// The findings are checked against the module itself: a value is written
// exactly when changing its first character changes the output.
#include <stddef.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <unordered_map>
#include <vector>

#include <gtest/gtest.h>

#include "edi.h"

namespace {

const std::string corpus = EDIPROT_CORPUS "/edifact/";
const std::string samples = EDIPROT_SAMPLES "/";
const std::string configs = EDIPROT_CONFIGS "/";

struct Finding {
    edi_finding_kind kind;
    edi_severity severity;
    int message;
    std::string tag, element, dataelement, value, text;
};

std::vector<Finding> findingsof(const edi_result *res)
{
    std::vector<Finding> out;
    for (size_t i = 0; i < edi_result_finding_count(res); i++) {
        const edi_finding *f = edi_result_finding(res, i);
        out.push_back(Finding{f->kind, f->severity, f->message, f->tag, f->element,
                              f->data_element, f->value, f->text});
    }
    return out;
}

// The findings of one kind that are errors or warnings (not the changes
// of information, such as the corrected counts).
std::vector<Finding> ofkind(const std::vector<Finding> &all, edi_finding_kind kind)
{
    std::vector<Finding> out;
    for (const Finding &f : all)
        if (f.kind == kind && f.severity != EDI_SEVERITY_INFO)
            out.push_back(f);
    return out;
}

// The findings that name a value left out.
std::vector<Finding> namedleftout(const std::vector<Finding> &all)
{
    std::vector<Finding> out;
    for (const Finding &f : ofkind(all, EDI_FINDING_LEFT_OUT))
        if (!f.element.empty())
            out.push_back(f);
    return out;
}

std::string alltext(const std::vector<Finding> &all)
{
    std::string t;
    for (const Finding &f : all)
        t += f.text + "\n";
    return t;
}

// A value of the tree and its place as the findings name it: the message
// number (EDIFACT) and the path below the message node (VDA: below the
// root), with "[k]" behind a name several siblings bear.
struct Value {
    datatree_t *node;
    int message;
    std::string element;
};

void valuesbelow(datatree_t *parent, int message, const std::string &above,
                 std::vector<Value> &out)
{
    std::map<std::string, int> total, seen;
    for (datatree_t *c = parent->child; c != nullptr; c = c->next)
        total[c->xmltag]++;
    for (datatree_t *c = parent->child; c != nullptr; c = c->next) {
        std::string step = c->xmltag;
        int k = ++seen[step];
        if (total[step] > 1)
            step += "[" + std::to_string(k) + "]";
        std::string path = above.empty() ? step : above + "." + step;
        if (c->data != nullptr && c->data[0] != '\0')
            out.push_back(Value{c, message, path});
        valuesbelow(c, message, path, out);
    }
}

std::vector<Value> edifactvalues(datatree_t *root)
{
    std::vector<Value> out;
    int n = 0;
    // Root children named '#...' are the library's envelope nodes, written
    // by the library, not by the module's walk.
    for (datatree_t *m = root->child; m != nullptr; m = m->next)
        if (m->xmltag[0] != '#')
            valuesbelow(m, ++n, "", out);
    return out;
}

std::vector<Value> vdavalues(datatree_t *root)
{
    std::vector<Value> out;
    valuesbelow(root, 0, "", out);
    return out;
}

// The value with its first character changed, so that whatever the
// writer does to it (cut, blanks, release characters) the output differs
// wherever the value is written.
std::string altered(const char *value)
{
    std::string v = value;
    char &c = v[0];
    if (c >= '0' && c <= '8')
        c++;
    else if (c == '9')
        c = '1';
    else if ((c >= 'A' && c < 'Z') || (c >= 'a' && c < 'z'))
        c++;
    else if (c == 'Z' || c == 'z')
        c--;
    else
        c = 'X';
    return v;
}

// The module's output as it writes it, every loss accepted, the time of
// writing in UNB masked.
std::string written(datatree_t *root, edi_write_options w, bool vda, const char *config)
{
    w.exact = 1;
    w.keep_going = 1;
    edi_result *res = vda ? edi_vda_write(root, config, &w) : edi_write(root, &w);
    EXPECT_EQ(edi_result_status(res), 0) << alltext(findingsof(res));
    size_t len = 0;
    const char *t = edi_result_text(res, &len);
    std::string out(t != nullptr ? t : "", len);
    edi_result_free(res);
    size_t unb = out.find("UNB+");
    if (unb != std::string::npos)
        out.erase(unb, out.find('\'', unb) - unb);
    return out;
}

// The places of the values the module does not write: those whose change
// leaves the output as it is.
std::set<std::pair<int, std::string>> notwritten(datatree_t *root, const std::vector<Value> &values,
                                                 const edi_write_options &w, bool vda,
                                                 const char *config)
{
    const std::string base = written(root, w, vda, config);
    std::set<std::pair<int, std::string>> out;
    for (const Value &v : values) {
        char *keep = v.node->data;
        std::string other = altered(keep);
        std::vector<char> buf(other.begin(), other.end());
        buf.push_back('\0');
        v.node->data = buf.data();
        if (written(root, w, vda, config) == base)
            out.insert({v.message, v.element});
        v.node->data = keep;
    }
    return out;
}

std::set<std::pair<int, std::string>> named(const std::vector<Finding> &all)
{
    std::set<std::pair<int, std::string>> out;
    for (const Finding &f : namedleftout(all))
        out.insert({f.message, f.element});
    return out;
}

edi_write_options writeoptions()
{
    edi_write_options w;
    edi_write_options_init(&w);
    w.sender = "ME";
    w.recipient = "YOU";
    w.reference = "REF1";
    return w;
}

// The findings of a write that may lose values against the module: every
// value the module leaves out is named, and no other.  `message` is
// TYPE:DIRECTORY to write with (NULL: the layout the message was read with,
// taken from itself); returns the number of values left out.
size_t differential(const std::string &path, const char *message)
{
    edi_result *read = edi_read(path.c_str(), nullptr);
    EXPECT_EQ(edi_result_status(read), 0) << path;
    datatree_t *root = edi_result_tree(read);
    edi_write_options w = writeoptions();
    w.message = message;
    edi_result *res = edi_write(root, &w);
    std::vector<Finding> all = findingsof(res);
    std::set<std::pair<int, std::string>> says = named(all);
    EXPECT_EQ(edi_result_status(res), says.empty() ? 0 : 1) << alltext(all);
    edi_result_free(res);
    std::set<std::pair<int, std::string>> truth =
        notwritten(root, edifactvalues(root), w, false, nullptr);
    EXPECT_EQ(says, truth) << path << " as " << (message != nullptr ? message : "its own");
    edi_result_free(read);
    return truth.size();
}

TEST(WriteLoss, TreeOfOneDirectoryWrittenWithAnotherNamesWhatTheModuleLeavesOut)
{
    // The users' case: ORDERS D96A written as D01B lost every LIN, QTY,
    // PRI and the BGM document number without a word.
    EXPECT_GT(differential(samples + "orders-d96a.edi", "ORDERS:D01B"), 40u);
    EXPECT_GT(differential(corpus + "bots_INVOIC_D96A_invoic01.edi", "INVOIC:D01B"), 0u);
    EXPECT_GT(differential(corpus + "bots_INVOIC_D96A_invoic01.edi", "INVOIC:D93A"), 0u);
}

TEST(WriteLoss, LayoutTakenFromTheFileWrittenWithADirectoryLosesAlmostEverything)
{
    // DESADV:0:96A is read with a layout taken from itself; D96A has
    // nothing of its names (UNH01, BGM01, ...).
    EXPECT_GT(differential(corpus + "php-edifact_D96A_DESADV.edi", "DESADV:D96A"), 10u);
}

TEST(WriteLoss, RoundTripsLoseNothing)
{
    // The directory named, so that a change of the UNH's version in the
    // differential does not change the configuration.
    const std::pair<std::string, const char *> files[] = {
        {samples + "orders-d96a.edi", "ORDERS:D96A"},
        {samples + "desadv-d96a.edi", "DESADV:D96A"},
        {samples + "delfor-d96a.edi", "DELFOR:D96A"},
        {corpus + "bots_INVOIC_D96A_invoic01.edi", "INVOIC:D96A"},
        {corpus + "edifabric_INVOIC_D00A_MultipleMessages.txt", "INVOIC:D00A"},
        {corpus + "php-edifact_D96A_DESADV.edi", nullptr}};
    for (const auto &[f, message] : files)
        EXPECT_EQ(differential(f, message), 0u) << f;
}

TEST(WriteLoss, FailureNamesEachValueAndWritesNothing)
{
    edi_result *read = edi_read((samples + "orders-d96a.edi").c_str(), nullptr);
    ASSERT_EQ(edi_result_status(read), 0);
    edi_write_options w = writeoptions();
    w.message = "ORDERS:D01B";
    w.name = "ord.json";
    edi_result *res = edi_write(edi_result_tree(read), &w);
    EXPECT_EQ(edi_result_status(res), 1);
    EXPECT_EQ(edi_result_text(res, nullptr), nullptr);
    std::vector<Finding> all = findingsof(res);
    std::vector<Finding> left = namedleftout(all);
    ASSERT_FALSE(left.empty());
    bool gtin = false, docnumber = false;
    for (const Finding &f : left) {
        EXPECT_EQ(f.severity, EDI_SEVERITY_ERROR);
        if (f.message == 1 && f.element == "*SG25[1].$LIN.C212.7140") {
            gtin = true;
            EXPECT_EQ(f.tag, "LIN");
            EXPECT_EQ(f.dataelement, "7140");
            EXPECT_EQ(f.value, "4000862141404");
            EXPECT_EQ(f.text, "message 1, *SG25[1].$LIN.C212.7140 '4000862141404': the "
                              "configuration has no place for this value, so it would not be "
                              "written");
        }
        docnumber = docnumber || (f.element == "$BGM.1004" && f.value == "PO-2024-0815");
    }
    EXPECT_TRUE(gtin && docnumber) << alltext(all);
    // The last finding says why the write failed, and how many.
    EXPECT_EQ(all.back().kind, EDI_FINDING_FAILURE);
    EXPECT_NE(all.back().text.find(std::to_string(left.size()) + " values of the tree have no "
                                                                  "place"),
              std::string::npos)
        << all.back().text;
    EXPECT_NE(all.back().text.find("--keep-going"), std::string::npos);
    edi_result_free(res);

    // Accepted: warnings, and the interchange without them.
    w.keep_going = 1;
    edi_result *kept = edi_write(edi_result_tree(read), &w);
    EXPECT_EQ(edi_result_status(kept), 0);
    size_t len = 0;
    const char *text = edi_result_text(kept, &len);
    ASSERT_NE(text, nullptr);
    std::string out(text, len);
    EXPECT_NE(out.find("BGM+220"), std::string::npos);
    EXPECT_EQ(out.find("LIN+"), std::string::npos);
    std::vector<Finding> warned = namedleftout(findingsof(kept));
    EXPECT_EQ(warned.size(), left.size());
    for (const Finding &f : warned)
        EXPECT_EQ(f.severity, EDI_SEVERITY_WARNING) << f.text;
    for (const Finding &f : findingsof(kept))
        EXPECT_NE(f.kind, EDI_FINDING_FAILURE) << f.text;
    edi_result_free(kept);
    edi_result_free(read);
}

TEST(WriteLoss, CallerOfAnOlderHeaderIsNotTakenForKeepGoing)
{
    edi_result *read = edi_read((samples + "orders-d96a.edi").c_str(), nullptr);
    edi_write_options w = writeoptions();
    w.message = "ORDERS:D01B";
    w.keep_going = 1;
    w.size = offsetof(edi_write_options, keep_going);
    edi_result *res = edi_write(edi_result_tree(read), &w);
    EXPECT_EQ(edi_result_status(res), 1);
    edi_result_free(res);
    edi_result_free(read);
}

TEST(WriteLoss, HugeLossNamesAThousandAndCountsTheRest)
{
    // 1,500 line items of a D96A tree written as D01B.
    std::string edi = "UNA:+.? 'UNB+UNOB:2+A+B+240101:1200+R'UNH+1+ORDERS:D:96A:UN'BGM+220+X+9'";
    for (int i = 1; i <= 1500; i++)
        edi += "LIN+" + std::to_string(i) + "'";
    edi += "UNS+S'UNT+1504+1'UNZ+1+R'";
    edi_result *read = edi_read_memory(edi.data(), edi.size(), "big.edi", nullptr);
    ASSERT_EQ(edi_result_status(read), 0);
    edi_write_options w = writeoptions();
    w.message = "ORDERS:D01B";
    edi_result *res = edi_write(edi_result_tree(read), &w);
    EXPECT_EQ(edi_result_status(res), 1);
    std::vector<Finding> all = findingsof(res);
    size_t names = 0, shown = 0;
    for (size_t i = 0; i < edi_result_finding_count(res); i++) {
        const edi_finding *f = edi_result_finding(res, i);
        if (f->kind == EDI_FINDING_LEFT_OUT && f->element[0] != '\0') {
            names++;
            shown += f->verbose == 0 ? 1 : 0;
        }
    }
    EXPECT_EQ(names, 1000u);
    EXPECT_EQ(shown, 20u);
    EXPECT_NE(alltext(all).find("... and 1481 more\n"), std::string::npos) << alltext(all);
    EXPECT_NE(all.back().text.find("1501 values"), std::string::npos) << all.back().text;
    edi_result_free(res);
    edi_result_free(read);
}

// A message built by hand, written with the bundled ORDERS configuration.
datatree_t *handtree(const std::string &bgm1004)
{
    std::string text = "edi\n"
                       "  *ORDERS\n"
                       "    $UNH\n"
                       "      0062 data=M1\n"
                       "    $BGM\n"
                       "      C002\n"
                       "        1001 data=220\n"
                       "      1004 data=" + bgm1004 + "\n";
    edi_result *res = edi_tree_parse(text.data(), text.size(), "hand.tree");
    datatree_t *tree = edi_result_take_tree(res);
    edi_result_free(res);
    return tree;
}

TEST(WriteLoss, CutValueFailsUnlessAccepted)
{
    const std::string config = configs + "orders-d96a-out.tree";
    const char *files[] = {config.c_str()};
    edi_write_options w = writeoptions();
    w.configs = files;
    w.nconfigs = 1;
    const std::string longer = "PO-4711-WITH-A-NUMBER-LONGER-THAN-35";
    datatree_t *tree = handtree(longer);
    edi_result *res = edi_write(tree, &w);
    EXPECT_EQ(edi_result_status(res), 1);
    EXPECT_EQ(edi_result_text(res, nullptr), nullptr);
    std::vector<Finding> all = findingsof(res);
    std::vector<Finding> changed = ofkind(all, EDI_FINDING_CHANGED);
    ASSERT_EQ(changed.size(), 1u) << alltext(all);
    EXPECT_EQ(changed[0].severity, EDI_SEVERITY_ERROR);
    EXPECT_EQ(changed[0].text,
              "message 1, $BGM.1004: 36 characters (release characters counted) cut to 35");
    EXPECT_EQ(all.back().kind, EDI_FINDING_FAILURE);
    EXPECT_NE(all.back().text.find("1 value would be cut"), std::string::npos) << all.back().text;
    edi_result_free(res);

    w.keep_going = 1;
    edi_result *cut = edi_write(tree, &w);
    EXPECT_EQ(edi_result_status(cut), 0);
    size_t len = 0;
    const char *text = edi_result_text(cut, &len);
    ASSERT_NE(text, nullptr);
    EXPECT_NE(std::string(text, len).find("+" + longer.substr(0, 35) + "'"), std::string::npos);
    for (const Finding &f : findingsof(cut))
        EXPECT_NE(f.severity, EDI_SEVERITY_ERROR) << f.text;
    edi_result_free(cut);
    edi_tree_free(tree);

    // A value that fits is no finding.
    datatree_t *fits = handtree("PO-4711");
    w.keep_going = 0;
    edi_result *ok = edi_write(fits, &w);
    EXPECT_EQ(edi_result_status(ok), 0);
    EXPECT_EQ(ofkind(findingsof(ok), EDI_FINDING_CHANGED).size(), 0u) << alltext(findingsof(ok));
    EXPECT_EQ(ofkind(findingsof(ok), EDI_FINDING_LEFT_OUT).size(), 0u);
    edi_result_free(ok);
    edi_tree_free(fits);
}

TEST(WriteLoss, EachWriterRefusesTheOtherFormatsTree)
{
    edi_result *edifact = edi_read((samples + "orders-d96a.edi").c_str(), nullptr);
    edi_result *vda = edi_vda_read((samples + "vda4905-sample.txt").c_str(), nullptr, nullptr);
    ASSERT_EQ(edi_result_status(edifact), 0);
    ASSERT_EQ(edi_result_status(vda), 0);
    edi_write_options w = writeoptions();
    const std::string vdaconfig = configs + "vda4905.tree";

    // With or without a configuration of the writer's format.
    for (const char *config : {static_cast<const char *>(nullptr), vdaconfig.c_str()}) {
        edi_result *res = edi_vda_write(edi_result_tree(edifact), config, &w);
        EXPECT_EQ(edi_result_status(res), 1);
        EXPECT_EQ(edi_result_text(res, nullptr), nullptr);
        std::vector<Finding> all = findingsof(res);
        ASSERT_EQ(all.size(), 1u) << alltext(all);
        EXPECT_EQ(all[0].text, "the tree holds EDIFACT messages (*ORDERS with a UNH segment), so "
                               "it is no VDA tree; an EDIFACT tree is written with edi write.");
        edi_result_free(res);
    }
    // One message node alone is an EDIFACT tree too.
    edi_result *one = edi_vda_write(edi_result_tree(edifact)->child, nullptr, &w);
    EXPECT_EQ(edi_result_status(one), 1);
    edi_result_free(one);

    const char *files[] = {vdaconfig.c_str()};
    for (size_t n : {0, 1}) {
        w.configs = n > 0 ? files : nullptr;
        w.nconfigs = n;
        edi_result *res = edi_write(edi_result_tree(vda), &w);
        EXPECT_EQ(edi_result_status(res), 1);
        EXPECT_EQ(edi_result_text(res, nullptr), nullptr);
        std::vector<Finding> all = findingsof(res);
        ASSERT_EQ(all.size(), 1u) << alltext(all);
        EXPECT_EQ(all[0].text, "the tree holds VDA records (VDA 4905, nodes $S511 to $S519 or "
                               "$S711 to $S719), so it is no EDIFACT tree; a VDA tree is written "
                               "with edi vda-write.");
        edi_result_free(res);
    }
    edi_result_free(edifact);
    edi_result_free(vda);
}

std::string tempfile(const std::string &text)
{
    char name[] = "/tmp/edi-writeloss-XXXXXX";
    int fd = mkstemp(name);
    EXPECT_GE(fd, 0);
    EXPECT_EQ(write(fd, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    close(fd);
    return name;
}

std::string slurp(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

TEST(WriteLoss, VdaValuesWithoutPlaceOrCutAreNamedAndAgreeWithTheWriter)
{
    // The bundled VDA 4905 configuration with one field of 512 renamed and
    // the customer number of 511 shortened.
    std::string config = slurp(configs + "vda4905.tree");
    size_t at = config.find("      plant ");
    ASSERT_NE(at, std::string::npos);
    config.replace(at, 12, "      works ");
    at = config.find("customer edilen=9");
    ASSERT_NE(at, std::string::npos);
    config.replace(at, 17, "customer edilen=4");
    const std::string conf = tempfile(config);

    edi_result *read = edi_vda_read((samples + "vda4905-sample.txt").c_str(), nullptr, nullptr);
    ASSERT_EQ(edi_result_status(read), 0);
    datatree_t *root = edi_result_tree(read);
    edi_write_options w = writeoptions();
    edi_result *res = edi_vda_write(root, conf.c_str(), &w);
    EXPECT_EQ(edi_result_status(res), 1);
    EXPECT_EQ(edi_result_text(res, nullptr), nullptr);
    std::vector<Finding> all = findingsof(res);
    std::vector<Finding> left = namedleftout(all);
    ASSERT_EQ(left.size(), 1u) << alltext(all);
    EXPECT_EQ(left[0].element, "*TRANSMISSION.*CALLOFF.$S512.plant");
    EXPECT_EQ(left[0].tag, "512");
    EXPECT_EQ(left[0].value, "W01");
    std::vector<Finding> changed = ofkind(all, EDI_FINDING_CHANGED);
    ASSERT_EQ(changed.size(), 1u) << alltext(all);
    EXPECT_EQ(changed[0].severity, EDI_SEVERITY_ERROR);
    EXPECT_EQ(changed[0].text, "*TRANSMISSION.$S511.customer: 9 characters (release characters "
                               "counted) cut to 4");
    edi_result_free(res);

    // The module agrees: of all values, exactly that one is not written.
    std::set<std::pair<int, std::string>> truth =
        notwritten(root, vdavalues(root), w, true, conf.c_str());
    EXPECT_EQ(truth, named(all));

    w.keep_going = 1;
    edi_result *kept = edi_vda_write(root, conf.c_str(), &w);
    EXPECT_EQ(edi_result_status(kept), 0) << alltext(findingsof(kept));
    EXPECT_NE(edi_result_text(kept, nullptr), nullptr);
    edi_result_free(kept);
    edi_result_free(read);
    unlink(conf.c_str());
}

TEST(WriteLoss, VdaValueOutsideAnyRecordIsNamed)
{
    edi_result *read = edi_vda_read((samples + "vda4905-sample.txt").c_str(), nullptr, nullptr);
    ASSERT_EQ(edi_result_status(read), 0);
    // A note hung beside the transmission: the placement keeps records only.
    std::string text = "vda\n  note data=\"call Mr Smith\"\n";
    edi_result *extra = edi_tree_parse(text.data(), text.size(), "note");
    datatree_t *parsed = edi_result_take_tree(extra);
    edi_result_free(extra);
    datatree_t *note = parsed->child;
    parsed->child = nullptr;
    edi_tree_free(parsed);
    datatree_t *root = edi_result_tree(read);
    note->next = root->child;
    root->child = note;
    edi_write_options w = writeoptions();
    edi_result *res = edi_vda_write(root, nullptr, &w);
    EXPECT_EQ(edi_result_status(res), 1);
    std::vector<Finding> left = namedleftout(findingsof(res));
    ASSERT_EQ(left.size(), 1u) << alltext(findingsof(res));
    EXPECT_EQ(left[0].element, "note");
    EXPECT_EQ(left[0].value, "call Mr Smith");
    edi_result_free(res);
    edi_result_free(read);
}

TEST(WriteLoss, VdaRoundTripLosesNothing)
{
    for (const char *name : {"vda4905-sample.txt", "vda4913-sample.txt"}) {
        edi_result *read = edi_vda_read((samples + name).c_str(), nullptr, nullptr);
        ASSERT_EQ(edi_result_status(read), 0);
        edi_write_options w = writeoptions();
        edi_result *res = edi_vda_write(edi_result_tree(read), nullptr, &w);
        EXPECT_EQ(edi_result_status(res), 0);
        // The bundled configuration is named, the writer's line for each
        // record is a detail; nothing else.
        for (const Finding &f : findingsof(res))
            EXPECT_TRUE(f.kind == EDI_FINDING_NOTE ||
                        (f.kind == EDI_FINDING_MODULE && f.severity == EDI_SEVERITY_INFO))
                << f.text;
        size_t len = 0;
        const char *text = edi_result_text(res, &len);
        EXPECT_EQ(std::string(text != nullptr ? text : "", len), slurp(samples + name));
        edi_result_free(res);
        edi_result_free(read);
    }
}

}  // namespace
