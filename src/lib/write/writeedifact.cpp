#include "write/writeedifact.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "directory/autoconfig.h"
#include "module/capture.h"
#include "text/countfix.h"
#include "text/minimal.h"
#include "edihost.h"
#include "module/explain.h"
#include "directory/filelayout.h"
#include "files/output.h"
#include "findings/report.h"
#include "module/module.h"
#include "trees/valueloss.h"
#include "trees/renumber.h"

namespace edi {

namespace {

// The characters the writer's UNA declares; a value holding one of them
// would break the UNB that the module writes around it.
const char servicechars[] = "+:'?";

bool refusevalue(const char *what, const std::string &v, Report &rep)
{
    if (v.find_first_of(servicechars) == std::string::npos)
        return false;
    Finding &f = rep.fail("", std::string("the ") + what + " '" + v +
                                  "' holds a separator or the release character (+ : ' ?), "
                                  "which would break the interchange header; give the "
                                  "identification without them.");
    f.element = what;
    return true;
}

struct Run {
    datatree_t *first = nullptr, *last = nullptr;
    std::string name;
};

// The root's children in runs of one node name, each a message type.
std::vector<Run> messageruns(datatree_t *root)
{
    std::vector<Run> runs;
    for (datatree_t *tp = root->child; tp != nullptr; tp = tp->next) {
        std::string name = tp->xmltag != nullptr ? tp->xmltag : "";
        if (runs.empty() || runs.back().name != name)
            runs.push_back(Run{tp, tp, name});
        else
            runs.back().last = tp;
    }
    return runs;
}

const char *messagename(const datatree_t *config)
{
    return config != nullptr && config->child != nullptr && config->child->xmltag != nullptr
               ? config->child->xmltag
               : "";
}

// True if a child of the configuration's root bears `name`: the writer
// walks the configuration, so a tree node of another name is never written.
bool describes(const datatree_t *config, const std::string &name)
{
    for (const datatree_t *tp = config->child; tp != nullptr; tp = tp->next)
        if (tp->xmltag != nullptr && name == tp->xmltag)
            return true;
    return false;
}

// Messages written by one call of the module with one configuration.
struct Piece {
    datatree_t *first = nullptr, *last = nullptr;
    datatree_t *config = nullptr;
};

// A message read with a layout taken from itself: its UNH elements are
// named by position.
bool ownlayout(const datatree_t *message)
{
    const datatree_t *unh = message->child;
    while (unh != nullptr && (unh->xmltag == nullptr || strcmp(unh->xmltag, "$UNH") != 0))
        unh = unh->next;
    return unh != nullptr && unh->child != nullptr && unh->child->xmltag != nullptr &&
           strcmp(unh->child->xmltag, "UNH01") == 0;
}

// No --config: each message type's outbound configuration is generated from
// the directory that its UNH, or --message, names; a message read with a
// layout taken from itself is written with that layout, one at a time.
bool generateconfigs(datatree_t *tree, const Settings &opt, std::vector<datatree_t *> &configs,
                     std::vector<Piece> &pieces, Report &rep)
{
    const std::string &name = opt.name;
    bool used = opt.message.empty();
    for (const Run &r : messageruns(tree)) {
        datatree_t *have = nullptr;
        for (datatree_t *c : configs)
            if (r.name == messagename(c))
                have = c;
        if (have != nullptr) {
            pieces.push_back(Piece{r.first, r.last, have});
            continue;
        }
        std::string err, id = messageid(r.first, opt.message, err);
        std::string prefix = r.name.substr(r.name.empty() ? 0 : 1) + ":";
        used = used || opt.message.compare(0, prefix.size(), prefix) == 0;
        datatree_t *config = id.empty() ? nullptr : configformessage(id, true, err);
        if (config == nullptr && ownlayout(r.first)) {
            for (datatree_t *m = r.first;; m = m->next) {
                std::string text = layoutfromtree(m);
                datatree_t *own = edihost_parsetree(text.data(), text.size(), "layout of the message");
                if (own == nullptr)
                    return false;
                configs.push_back(own);
                pieces.push_back(Piece{m, m, own});
                if (m == r.last)
                    break;
            }
            continue;
        }
        if (config == nullptr) {
            rep.fail(name, err);
            return false;
        }
        configs.push_back(config);
        pieces.push_back(Piece{r.first, r.last, config});
    }
    if (configs.empty()) {
        rep.fail(name, "the tree holds no message");
        return false;
    }
    if (!used) {
        rep.fail(name, "--message " + opt.message + " names a message type the tree does not hold");
        return false;
    }
    return true;
}

// Names the values the writer will cut or change, before it writes them.
void reportvalueloss(const Module &mod, const Settings &opt, const datatree_t *tree,
                     const std::vector<Piece> &pieces, Report &rep)
{
    std::unordered_map<const datatree_t *, int> number;
    int n = 0;
    for (const datatree_t *m = tree->child; m != nullptr; m = m->next)
        number[m] = ++n;
    std::vector<std::string> lines;
    for (const Piece &p : pieces) {
        std::vector<std::string> l = valueloss(p.first, p.last, number[p.first], p.config,
                                               mod.charsetB != nullptr ? *mod.charsetB : nullptr);
        lines.insert(lines.end(), l.begin(), l.end());
    }
    if (lines.empty())
        return;
    // Every value is a finding; past the first 20 the edi command shows
    // only how many more there are.
    const size_t shown = 20;
    const std::string &name = opt.name;
    for (size_t i = 0; i < lines.size(); i++) {
        Finding &f = rep.add(EDI_FINDING_CHANGED, EDI_SEVERITY_WARNING, name, lines[i]);
        f.verbose = i >= shown ? Finding::detail : 0;
    }
    if (lines.size() > shown)
        rep.add(EDI_FINDING_NOTE, EDI_SEVERITY_WARNING, name,
                "... and " + std::to_string(lines.size() - shown) + " more")
            .verbose = Finding::summary;
    rep.add(EDI_FINDING_CHANGED, EDI_SEVERITY_WARNING, name,
            std::to_string(lines.size()) + " value" + (lines.size() == 1 ? " is" : "s are") +
                " written other than the tree holds them: the configuration's lengths and the "
                "interchange's character set (UNOB) rule what the writer writes; change the "
                "values in the tree, or give a configuration with longer elements.");
}

// One call of the module; its text, or false after its messages, named by
// the tree file, and a sentence.
bool writeonce(const Module &mod, const Settings &opt, datatree_t *tree, datatree_t *config,
               std::string &text, Report &rep)
{
    Scratch scratch("interchange.edi");
    if (scratch.folder.empty()) {
        rep.fail("", std::string("edi: temporary folder: ") + strerror(errno));
        return false;
    }
    std::vector<char> out(scratch.file.c_str(), scratch.file.c_str() + scratch.file.size() + 1);
    std::vector<char> sender(opt.sender.c_str(), opt.sender.c_str() + opt.sender.size() + 1);
    std::vector<char> recipient(opt.recipient.c_str(),
                                opt.recipient.c_str() + opt.recipient.size() + 1);
    int rc = -1;
    std::vector<std::string> lines = inmodule(opt.trace, opt.trace < 0, [&] {
        rc = mod.edifactwrite(tree, out.data(), nullptr, nullptr, config, sender.data(),
                              recipient.data(), opt.test);
    });
    const std::string &name = opt.name;
    rep.module(name, lines);
    if (rc != 0) {
        rep.fail(name, explainwrite(lines));
        return false;
    }
    return readwhole(scratch.file, text, rep);
}

}  // namespace

WriteStatus writeedifact(const Module &mod, const Settings &opt, datatree_t *tree,
                         std::vector<datatree_t *> configs, std::string &result, Report &rep)
{
    auto release = [&configs] {
        for (datatree_t *c : configs)
            freedatatree(c);
    };
    if (refusevalue("sender", opt.sender, rep) || refusevalue("recipient", opt.recipient, rep) ||
        refusevalue("reference", opt.reference, rep)) {
        release();
        return write_refused;
    }
    std::vector<Piece> pieces;
    if (tree == nullptr || tree->child == nullptr) {
        rep.fail(opt.name, "the tree holds no message");
        release();
        return write_failed;
    }
    // An interchange header names both partners; without one the partner's
    // translator refuses the whole interchange.
    for (const auto &[what, value] : {std::pair<const char *, const std::string &>{"sender", opt.sender},
                                      {"recipient", opt.recipient}}) {
        if (value.empty()) {
            rep.fail("", std::string("the ") + what +
                             " is empty; the interchange header needs the identification of "
                             "both partners.")
                .element = what;
            release();
            return write_refused;
        }
    }
    if (configs.empty() && !generateconfigs(tree, opt, configs, pieces, rep)) {
        release();
        return write_failed;
    }

    // One configuration writes the whole tree; with several, each run of
    // messages goes with the configuration of its message node.
    std::vector<std::string> texts;
    bool ok = true;
    if (pieces.empty() && configs.size() == 1) {
        for (const Run &r : messageruns(tree)) {
            if (!describes(configs[0], r.name)) {
                rep.fail(opt.name, "the tree holds " + r.name +
                                       ", which the configuration does not describe, so it "
                                       "would be left out; give its outbound configuration "
                                       "with one more --config.");
                ok = false;
            }
        }
        pieces.push_back(Piece{tree->child, nullptr, configs[0]});
    } else if (pieces.empty()) {
        for (const Run &r : messageruns(tree)) {
            datatree_t *config = nullptr;
            for (datatree_t *c : configs)
                if (r.name == messagename(c))
                    config = c;
            if (config == nullptr) {
                rep.fail(opt.name, "no configuration given for the messages " + r.name +
                                       "; give their outbound configuration with one more "
                                       "--config.");
                ok = false;
                break;
            }
            pieces.push_back(Piece{r.first, r.last, config});
        }
    }
    // The loop numbers the writer looks for follow the configuration's
    // layout; a tree made by hand or read with another configuration gets
    // them as a read with this one would give them.
    for (const Piece &p : pieces) {
        if (p.last == nullptr)
            renumbertree(p.config, tree);
        else
            for (datatree_t *m = p.first; m != nullptr; m = m == p.last ? nullptr : m->next)
                renumbermessage(p.config, m);
    }
    if (ok)
        reportvalueloss(mod, opt, tree, pieces, rep);
    if (ok && pieces.size() == 1 && pieces[0].last == nullptr) {
        std::string text;
        ok = writeonce(mod, opt, tree, pieces[0].config, text, rep);
        texts.push_back(text);
    } else if (ok) {
        datatree_t *children = tree->child;
        for (const Piece &p : pieces) {
            // The piece alone under the root, numbered from 1 as the writer
            // looks its messages up; the links are restored behind.
            datatree_t *after = p.last->next;
            p.last->next = nullptr;
            tree->child = p.first;
            int n = 0;
            for (datatree_t *tp = p.first; tp != nullptr; tp = tp->next)
                tp->loopcnt = ++n;
            std::string text;
            ok = writeonce(mod, opt, tree, p.config, text, rep);
            p.last->next = after;
            tree->child = children;
            texts.push_back(text);
            if (!ok)
                break;
        }
    }
    release();
    if (!ok)
        return write_failed;
    std::string text = texts.size() == 1 ? texts[0] : joininterchanges(texts);
    if (!opt.exact) {
        size_t shortened = 0;
        text = minimalform(text, shortened);
        if (shortened > 0)
            rep.change(opt.output, std::to_string(shortened) + " segment" +
                                       (shortened == 1 ? "" : "s") +
                                       " without trailing empty elements or components");
        std::vector<std::string> changes;
        text = fixcounts(text, opt.reference.empty() ? newreference() : opt.reference, changes);
        for (const std::string &c : changes)
            rep.change(opt.output, c);
        // The usual convention for reproducible output: a fixed time of
        // writing from the environment.
        const char *epoch = getenv("SOURCE_DATE_EPOCH");
        char *end = nullptr;
        long long when = epoch != nullptr ? strtoll(epoch, &end, 10) : -1;
        if (epoch != nullptr && *epoch != '\0' && *end == '\0' && when >= 0)
            text = setdate(text, static_cast<time_t>(when));
    }
    result = std::move(text);
    return write_ok;
}

}  // namespace edi
