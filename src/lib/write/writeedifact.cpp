#include "write/writeedifact.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <memory>
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
#include "vda/layout.h"
#include "write/losses.h"
#include "trees/envelopenodes.h"
#include "text/envelopeout.h"
#include "write/envelopeplan.h"
#include "write/highbytes.h"
#include "write/transcode.h"
#include "trees/jsoncharset.h"
#include "text/charset.h"
#include "write/writerepetitions.h"

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

// Printable ASCII as itself, control characters and DEL as blanks.
char *printabletable()
{
    static char table[129] = {0};
    static std::once_flag made;
    std::call_once(made, [] {
        for (int c = 0; c < 128; c++)
            table[c] = c < 0x20 || c == 0x7F ? ' ' : static_cast<char>(c);
    });
    return table;
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

// The number of each message node among the tree's messages, from 1.
std::unordered_map<const datatree_t *, int> messagenumbers(const datatree_t *tree)
{
    std::unordered_map<const datatree_t *, int> number;
    int n = 0;
    for (const datatree_t *m = tree->child; m != nullptr; m = m->next)
        number[m] = ++n;
    return number;
}

// Names the values the writer will cut or change, before it writes them;
// true when a cut fails the write.
bool reportvalueloss(const Module &mod, const Settings &opt, const datatree_t *tree,
                     const std::vector<Piece> &pieces, Above127 above, Report &rep)
{
    std::unordered_map<const datatree_t *, int> number = messagenumbers(tree);
    std::vector<ValueChange> lines;
    const char *table =
        opt.exact && mod.charsetB != nullptr ? *mod.charsetB : printabletable();
    for (const Piece &p : pieces) {
        std::vector<ValueChange> l =
            valueloss(p.first, p.last, number[p.first], p.config, table, above);
        lines.insert(lines.end(), l.begin(), l.end());
    }
    return reportchanges(lines, Writer::edifact, opt, rep);
}

// Runs `f` with the tree as the module writes piece `p`: a piece of some
// messages alone under the root, numbered from 1 as the writer looks its
// messages up (the links are restored behind); the whole tree as it is.
template <class F>
void aspiece(datatree_t *tree, const Piece &p, F f)
{
    if (p.last == nullptr) {
        f();
        return;
    }
    datatree_t *children = tree->child;
    datatree_t *after = p.last->next;
    p.last->next = nullptr;
    tree->child = p.first;
    int n = 0;
    for (datatree_t *tp = p.first; tp != nullptr; tp = tp->next)
        tp->loopcnt = ++n;
    f();
    p.last->next = after;
    tree->child = children;
}

// Names the values of the tree that no piece's configuration has a place
// for (the writer would pass them over without a word); true when they
// fail the write.
bool reportunwritten(const Settings &opt, datatree_t *tree, const std::vector<Piece> &pieces,
                     Report &rep)
{
    std::unordered_map<const datatree_t *, int> number = messagenumbers(tree);
    std::vector<Unwritten> lost;
    std::string hint;
    bool ownread = false;
    for (const Piece &p : pieces) {
        aspiece(tree, p, [&] {
            std::vector<Unwritten> l = leftout(tree, p.config, Writer::edifact);
            lost.insert(lost.end(), std::make_move_iterator(l.begin()),
                        std::make_move_iterator(l.end()));
            // A message read with a layout taken from itself, written with
            // a layout of a directory.
            for (const datatree_t *m = tree->child; m != nullptr && !l.empty(); m = m->next) {
                const datatree_t *cm = p.config->child;
                while (cm != nullptr && (cm->xmltag == nullptr || m->xmltag == nullptr ||
                                         strcmp(cm->xmltag, m->xmltag) != 0))
                    cm = cm->next;
                ownread = ownread || (ownlayout(m) && (cm == nullptr || !ownlayout(cm)));
            }
        });
        if (hint.empty())
            hint = roothint(tree, p.config);
    }
    // --message over a UNH that names another directory.
    for (const datatree_t *m = tree->child; m != nullptr && !lost.empty() && !opt.message.empty();
         m = m->next) {
        std::string err, read = messageid(m, "", err), written = messageid(m, opt.message, err);
        if (read.empty() || written.empty() || read == written)
            continue;
        hint += std::string(hint.empty() ? "" : " ") + "The UNH of message " +
                std::to_string(number[m]) + " names " + read + ", and --message writes it as " +
                written + ".";
        break;
    }
    if (ownread)
        hint += std::string(hint.empty() ? "" : " ") +
                "The tree was read with a layout taken from the message itself (elements named "
                "by position: UNH01, BGM01, ...); written without --message and --config it "
                "keeps that layout.";
    return reportleftout(
        lost, Writer::edifact, opt,
        [&number](const datatree_t *m) {
            auto at = number.find(m);
            return at != number.end() ? at->second : 0;
        },
        hint, rep);
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
        // The module's table blanks printable characters outside level B
        // ('@', '_', '[', ...); the library writes what the tree holds and
        // leaves the check of the declared level to validation.  Control
        // characters stay blanked.  The table is the module's again behind.
        char *own = mod.charsetB != nullptr ? *mod.charsetB : nullptr;
        if (own != nullptr && !opt.exact)
            *mod.charsetB = printabletable();
        rc = mod.edifactwrite(tree, out.data(), nullptr, nullptr, config, sender.data(),
                              recipient.data(), opt.test);
        if (own != nullptr)
            *mod.charsetB = own;
    });
    const std::string &name = opt.name;
    rep.module(name, lines);
    if (rc != 0) {
        rep.fail(name, explainwrite(lines));
        return false;
    }
    return readwhole(scratch.file, text, rep);
}

// True if the interchange is written in UTF-8: its syntax identifier
// (the option's, else the envelope's) is UNOW or UNOY, or the tree's text
// was read as UTF-8.
bool utf8output(const Settings &opt, const datatree_t *env)
{
    std::string id = opt.syntax.substr(0, opt.syntax.find(':'));
    if (id.empty()) {
        SegmentValues unb = env != nullptr ? unbvalues(env) : SegmentValues{};
        id = !unb.empty() && !unb[0].empty() ? unb[0][0] : "";
        if (opt.syntax.empty() && charsetof(env) == "UTF-8")
            return true;
    }
    return id == "UNOW" || id == "UNOY";
}

// One interchange: the messages under `tree` (no envelope nodes among
// them), `env` its `#envelope` node or NULL, `groups` its functional groups.
// Configurations generated on the way are added to `configs`.
// `modopt` names the partners to the module.
WriteStatus writeinterchange(const Module &mod, const Settings &opt, const Settings &modopt,
                             datatree_t *tree,
                             std::vector<datatree_t *> &configs, const datatree_t *env,
                             const std::vector<GroupSpan> &groups, std::string &result,
                             Report &rep)
{
    std::vector<Piece> pieces;
    if (configs.empty() && !generateconfigs(tree, opt, configs, pieces, rep)) {
        return write_failed;
    }

    // One configuration writes the whole tree; with several, each run of
    // messages goes with the configuration of its message node.
    std::vector<std::string> texts;
    bool ok = true;
    if (pieces.empty() && configs.size() == 1) {
        for (const Run &r : messageruns(tree)) {
            if (!describes(configs[0], r.name)) {
                const std::string what = "the tree holds " + r.name +
                                         ", which the configuration does not describe, so it ";
                if (opt.keepgoing) {
                    rep.add(EDI_FINDING_LEFT_OUT, EDI_SEVERITY_WARNING, opt.name,
                            what + "is left out (--keep-going).");
                    continue;
                }
                rep.fail(opt.name, what + "would be left out; give its outbound configuration "
                                          "with one more --config, or --keep-going to write "
                                          "the interchange without it.");
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
    // Nothing is lost without a word: values without a place and values
    // cut fail the write, unless the caller accepts the loss.
    if (ok) {
        const bool lost = reportunwritten(opt, tree, pieces, rep);
        const Above127 above = opt.exact           ? Above127::dropped
                               : utf8output(opt, env) ? Above127::utf8
                                                      : Above127::kept;
        const bool cut = reportvalueloss(mod, opt, tree, pieces, above, rep);
        ok = !lost && !cut;
    }
    // Written in another set than it was read in (--syntax): values are
    // transcoded for the write.
    std::unique_ptr<Transcoding> transcoded;
    if (ok && !opt.exact && !opt.syntax.empty()) {
        Charset to = charsetofsyntax(opt.syntax.substr(0, opt.syntax.find(':')));
        Charset from = env != nullptr ? envelopecharset(env) : Charset::iso8859_1;
        transcoded = std::make_unique<Transcoding>(tree, from, to, opt.keepgoing, opt.name, rep);
        ok = transcoded->ok();
    }
    for (size_t i = 0; ok && i < pieces.size(); i++) {
        const Piece &p = pieces[i];
        std::string text;
        aspiece(tree, p, [&] {
            if (opt.exact) {
                ok = writeonce(mod, modopt, tree, p.config, text, rep);
                return;
            }
            HighBytes high(tree->child, nullptr, p.config, utf8output(opt, env));
            ok = writeonce(mod, modopt, tree, p.config, text, rep);
            if (ok && high.any())
                text = HighBytes::restore(text);
        });
        texts.push_back(text);
    }
    if (!ok)
        return write_failed;
    std::string text = texts.size() == 1 ? texts[0] : joininterchanges(texts);
    if (!opt.exact) {
        EnvelopePlan plan;
        if (!planenvelope(text, env, groups, opt, plan, rep))
            return write_failed;
        text = setenvelope(text, plan.out);
        text = joinwritten(text, pieces, opt, rep);
        size_t shortened = 0;
        text = minimalform(text, shortened);
        if (shortened > 0)
            rep.change(opt.output, std::to_string(shortened) + " segment" +
                                       (shortened == 1 ? "" : "s") +
                                       " without trailing empty elements or components");
        std::vector<std::string> changes;
        text = fixcounts(text, plan.reference, changes);
        for (const std::string &c : changes)
            rep.change(opt.output, c);
        text = reseparate(text, plan.una, plan.keepuna);
    }
    result = std::move(text);
    return write_ok;
}

// The root's children cut into interchanges: each `#envelope` node begins
// one, each `#group` node a functional group; messages in front of the
// first envelope node (a tree built by hand) make an interchange of their
// own, whose envelope the options give.
struct Interchange {
    const datatree_t *env = nullptr;
    std::vector<datatree_t *> messages;
    std::vector<GroupSpan> groups;
};

std::vector<Interchange> interchangesof(datatree_t *root)
{
    std::vector<Interchange> out(1);
    bool ingroup = false;
    for (datatree_t *tp = root->child; tp != nullptr; tp = tp->next) {
        if (!isenvelopenode(tp)) {
            Interchange &ic = out.back();
            if (ingroup)
                ic.groups.back().last = ic.messages.size();
            ic.messages.push_back(tp);
            continue;
        }
        if (strcmp(tp->xmltag, envelopenodename) == 0) {
            if (out.back().env != nullptr || !out.back().messages.empty())
                out.emplace_back();
            out.back().env = tp;
            ingroup = false;
        } else if (strcmp(tp->xmltag, groupnodename) == 0) {
            Interchange &ic = out.back();
            ic.groups.push_back(GroupSpan{tp, ic.messages.size(), ic.messages.size()});
            ingroup = true;
        }
    }
    for (Interchange &ic : out) {
        // A group node with no message behind it frames nothing.
        std::vector<GroupSpan> kept;
        for (const GroupSpan &g : ic.groups)
            if (g.first < ic.messages.size() && g.last >= g.first)
                kept.push_back(g);
        ic.groups = kept;
    }
    return out;
}

// The identification the module writes into its own header: the option's,
// else the envelope's (the header is replaced behind it unless the output
// is to stay as the module wrote it).
std::string partnerid(const std::string &option, const datatree_t *env, size_t element)
{
    if (!option.empty())
        return partnerof(option)[0];
    SegmentValues unb = env != nullptr ? unbvalues(env) : SegmentValues{};
    return element < unb.size() && !unb[element].empty() ? unb[element][0] : "";
}

}  // namespace

WriteStatus writeedifact(const Module &mod, const Settings &opt, datatree_t *tree,
                         std::vector<datatree_t *> configs, std::string &result, Report &rep)
{
    auto release = [&configs] {
        for (datatree_t *c : configs)
            freedatatree(c);
    };
    if (refusevalue("reference", opt.reference, rep)) {
        release();
        return write_refused;
    }
    for (const auto &[what, value] : {std::pair<const char *, const std::string &>{"sender", opt.sender},
                                      {"recipient", opt.recipient}})
        for (const std::string &part : partnerof(value))
            if (refusevalue(what, part, rep)) {
                release();
                return write_refused;
            }
    std::vector<Interchange> ics;
    if (tree != nullptr)
        ics = interchangesof(tree);
    bool anymessage = false;
    for (const Interchange &ic : ics)
        anymessage = anymessage || !ic.messages.empty();
    if (tree == nullptr || !anymessage) {
        rep.fail(opt.name, "the tree holds no message");
        release();
        return write_failed;
    }
    // A VDA tree would be written as segments named after its records.
    if (const VdaFamily *family = familyoftree(tree)) {
        rep.fail(opt.name, std::string("the tree holds VDA records (") + family->name +
                               ", nodes $S511 to $S519 or $S711 to $S719), so it is no EDIFACT "
                               "tree; a VDA tree is written with edi vda-write.");
        release();
        return write_failed;
    }
    // An interchange header names both partners; without one the partner's
    // translator refuses the whole interchange.
    Settings inner = opt;
    for (const Interchange &ic : ics) {
        if (ic.messages.empty())
            continue;  // an envelope with no message is not written
        inner.sender = partnerid(opt.sender, ic.env, 1);
        inner.recipient = partnerid(opt.recipient, ic.env, 2);
        for (const auto &[what, value] : {std::pair<const char *, const std::string &>{"sender", inner.sender},
                                          {"recipient", inner.recipient}}) {
            if (value.empty()) {
                rep.fail("", std::string("the ") + what +
                                 " is empty; the interchange header needs the identification of "
                                 "both partners.")
                    .element = what;
                release();
                return write_refused;
            }
        }
    }

    // Each interchange is written on its own, its messages alone under the
    // root; the root's chain is linked back as it was behind.
    datatree_t *children = tree->child;
    std::vector<datatree_t *> links;
    for (datatree_t *tp = children; tp != nullptr; tp = tp->next)
        links.push_back(tp);
    WriteStatus status = write_ok;
    result.clear();
    for (const Interchange &ic : ics) {
        if (ic.messages.empty())
            continue;
        for (size_t i = 0; i < ic.messages.size(); i++)
            ic.messages[i]->next = i + 1 < ic.messages.size() ? ic.messages[i + 1] : nullptr;
        tree->child = ic.messages[0];
        inner.sender = partnerid(opt.sender, ic.env, 1);
        inner.recipient = partnerid(opt.recipient, ic.env, 2);
        std::string text;
        status = writeinterchange(mod, opt, inner, tree, configs, ic.env, ic.groups, text, rep);
        if (status != write_ok)
            break;
        result += text;
    }
    for (size_t i = 0; i < links.size(); i++)
        links[i]->next = i + 1 < links.size() ? links[i + 1] : nullptr;
    tree->child = children;
    release();
    return status;
}

}  // namespace edi
