#include <stdio.h>
#include <stdlib.h>

#include <map>

#include "autoconfig.h"
#include "capture.h"
#include "compositepad.h"
#include "reescape.h"
#include "edihost.h"
#include "envelope.h"
#include "explain.h"
#include "filelayout.h"
#include "output.h"
#include "placement.h"
#include "segments.h"
#include "readinput.h"
#include "transport.h"

namespace edi {

namespace {

void freeenvelope(envelope_t *ev)
{
    if (ev != nullptr) {
        free(ev->servconftag);
        free(ev);
    }
}

// Messages of one type in a row, read from several working copies, are
// numbered 1, 2, ... again, as one read of them all would number them, so
// that the writer finds each under its number.
void renumbermessages(datatree_t *root)
{
    const char *last = nullptr;
    int n = 0;
    for (datatree_t *tp = root->child; tp != nullptr; tp = tp->next) {
        if (tp->xmltag == nullptr || tp->xmltag[0] != '*')
            continue;
        n = last != nullptr && std::string(last) == tp->xmltag ? n + 1 : 1;
        tp->loopcnt = n;
        last = tp->xmltag;
    }
}

// The configuration for messages of `msgtype` (ORDERS:D:96A:UN): the only
// one, or the one whose message node is named after the type.
datatree_t *configfor(const std::vector<datatree_t *> &configs, const std::string &msgtype)
{
    if (configs.size() == 1)
        return configs[0];
    std::string type = msgtype.substr(0, msgtype.find(':'));
    for (datatree_t *c : configs) {
        const char *name = c->child != nullptr ? c->child->xmltag : nullptr;
        if (name != nullptr && (name[0] == '*' || name[0] == '$') && type == name + 1)
            return c;
    }
    return nullptr;
}

// Configurations generated from the directory data, one per message type,
// released with the read.
struct Generated {
    std::map<std::string, datatree_t *> trees;  // NULL: no directory has it
    std::map<std::string, std::string> errors;
    ~Generated()
    {
        for (auto &[type, tree] : trees)
            if (tree != nullptr)
                freedatatree(tree);
    }
    datatree_t *get(const std::string &msgtype, std::string &err)
    {
        auto it = trees.find(msgtype);
        if (it == trees.end()) {
            it = trees.emplace(msgtype, configformessage(msgtype, false, errors[msgtype])).first;
        }
        err = errors[msgtype];
        return it->second;
    }
};

// The message type of type:version:release:agency.
std::string typeof(const std::string &msgtype)
{
    return msgtype.substr(0, msgtype.find(':'));
}

// Units whose messages no directory describes are cut into one unit per
// message, each to be read with a layout taken from itself; the rest stay.
// A header without message type (UNH+1+:D:95B:UN) names nothing to look
// up, so its messages are read the same way.  The note is printed even
// without --verbose: the tree's names are then positions, not the
// directory's, and the user must know why.
std::vector<Unit> ownlayouts(const std::vector<Unit> &units, Generated &gen, const Options &opt,
                             const std::string &input, std::vector<std::string> &changes)
{
    std::vector<Unit> out;
    for (const Unit &u : units) {
        std::string err;
        if (u.msgtype.empty()) {
            out.push_back(u);
            continue;
        }
        if (typeof(u.msgtype).empty())
            changes.push_back(describeunit(u) + ": the message header has no message type, so "
                              "no directory can describe it; each message was read with a "
                              "layout taken from itself");
        else if (gen.get(u.msgtype, err) == nullptr)
            changes.push_back(describeunit(u) + ": " + err +
                              "; each message was read with a layout taken from itself instead");
        else {
            out.push_back(u);
            continue;
        }
        if (!opt.verbose)
            printprefixed(input, {changes.back()});
        for (Unit &one : splitmessages(u)) {
            one.ownlayout = true;
            out.push_back(std::move(one));
        }
    }
    return out;
}

// The working copy of one unit as the module shall read it: release
// characters it would misread rewritten, composites without component
// separator given one.  Each change is noted (and printed with --verbose).
std::string prepareunit(const Unit &u, const datatree_t *config, const Options &opt,
                        const std::string &input, std::vector<std::string> &changes)
{
    std::vector<std::string> notes;
    bool changed = false;
    char release = 0;
    std::string text = reescape(u.text, changed, release);
    if (changed)
        notes.push_back(describeunit(u) + ": release characters written as '" +
                        printable(std::string(1, release)) +
                        "' (declared in UNA), because a released release character stands "
                        "in front of a separator, which the reader would take as released");
    size_t padded = 0;
    text = padcomposites(text, config, padded);
    if (padded > 0)
        notes.push_back(describeunit(u) + ": " + std::to_string(padded) + " element" +
                        (padded == 1 ? "" : "s") +
                        " without component separator where the configuration has a "
                        "composite given one, so that each value is read once");
    if (opt.verbose)
        printprefixed(input, notes);
    changes.insert(changes.end(), notes.begin(), notes.end());
    return text;
}

// True if a configuration generated from the directory left segments of
// `u` out although it knows every tag of them: the directory's structure
// allows the segment where it stands, but the reader, which places forward
// only, took an earlier place for an earlier segment.  Such a message is
// read again with a layout taken from itself, which places every segment;
// a tag the directory does not know stays a failure of the file.
bool retryownlayout(const std::string &input, const Unit &u, const std::string &text,
                    const datatree_t *tree, const datatree_t *config, const Options &opt,
                    std::vector<std::string> &changes)
{
    std::vector<LeftOut> lost = leftout(text, tree);
    if (lost.empty() || !unknowntag(text, config).empty())
        return false;
    const LeftOut &lo = lost.front();
    int msg = u.firstmsg > 0 ? u.firstmsg + lo.message - 1 : lo.message;
    std::string note = describeunit(u) + ": the directory's layout has no place for message " +
                       std::to_string(msg) + ", segment " + std::to_string(lo.position) + " (" +
                       printable(lo.tag) +
                       ") where it stands (the reader places segments forward only), so each "
                       "message was read with a layout taken from itself";
    if (opt.verbose)
        printprefixed(input, {note});
    changes.push_back(note);
    return true;
}

// Reports the segments of `u` that the read left out of `tree`; true if
// there are any.
bool reportleftout(const std::string &input, const Unit &u, const std::string &text,
                   const datatree_t *tree, const datatree_t *config, const Options &opt,
                   std::vector<std::string> &changes)
{
    std::vector<LeftOut> lost = leftout(text, tree);
    size_t total = 0;
    for (const LeftOut &lo : lost) {
        int msg = u.firstmsg > 0 ? u.firstmsg + lo.message - 1 : lo.message;
        std::string what = "message " + std::to_string(msg) + ", segment " +
                           std::to_string(lo.position) + " (" + printable(lo.tag) + ")";
        std::string behind = lo.count > 1 ? " and the " + std::to_string(lo.count - 1) +
                                                " segment" + (lo.count > 2 ? "s" : "") +
                                                " behind it in the message"
                                          : "";
        std::string seg = lo.tag + "'";
        bool known = config == nullptr || unknowntag(seg, config).empty();
        fprintf(stderr, "%s: %s: the configuration has %s, so it%s did not reach the tree\n",
                input.c_str(), what.c_str(),
                known ? "no place for this segment here"
                      : ("no segment " + printable(lo.tag) + " at all").c_str(),
                behind.c_str());
        changes.push_back("left out of the tree: " + what + behind);
        total += lo.count;
    }
    if (lost.empty())
        return false;
    fprintf(stderr,
            "%s: %zu segment%s left out of the tree: the reader places segments strictly in the "
            "order of the configuration and places nothing more of a message behind a segment "
            "it cannot place; give a configuration that describes the message as it is%s.\n",
            input.c_str(), total, total == 1 ? "" : "s",
            opt.keepgoing ? "" : ", or --keep-going to accept the tree without them");
    return true;
}

}  // namespace

ReadResult readedifactinput(const Module &mod, const Options &opt,
                            const std::vector<datatree_t *> &configs, const std::string &input)
{
    ReadResult res;
    std::string bytes;
    if (!readwhole(input, bytes))
        return res;

    std::vector<Unit> units;
    Generated gen;
    if (opt.raw) {
        units.emplace_back();
        units.back().text = bytes;
    } else {
        TransportNotes tn;
        std::string clean = striptransport(bytes, tn);
        res.changes = tn.describe();
        EnvelopeNotes en;
        units = prepareenvelope(clean, en);
        res.changes.insert(res.changes.end(), en.changes.begin(), en.changes.end());
        if (en.faults.empty() && configs.size() == 1 && configs[0] == nullptr &&
            opt.servconf.empty())
            units = ownlayouts(units, gen, opt, input, res.changes);
        if (opt.verbose)
            printprefixed(input, res.changes);
        if (!en.faults.empty()) {
            for (const std::string &f : en.faults)
                fprintf(stderr, "%s: %s.\n", input.c_str(), f.c_str());
            fprintf(stderr, "%s: the envelope is broken, so the file is not read; ask the sender "
                            "for a corrected file (--raw hands it to the module as it is).\n",
                    input.c_str());
            return ReadResult{nullptr, {}, res.changes};
        }
    }

    datatree_t *combined = nullptr;
    datatree_t **tail = nullptr;
    for (size_t k = 0; k < units.size(); k++) {
        const Unit u = units[k];  // a copy: units may grow behind it
        datatree_t *config = configfor(configs, u.msgtype);
        if (config == nullptr && configs.size() > 1) {
            fprintf(stderr, "%s: no configuration given for the message type %s (%s); give its "
                            "configuration with one more --config.\n",
                    input.c_str(), u.msgtype.c_str(), describeunit(u).c_str());
            if (combined != nullptr)
                freedatatree(combined);
            return ReadResult{nullptr, {}, res.changes};
        }
        // Neither --config nor --servconf: the configuration is generated
        // from the directory the message header names.
        datatree_t *generated = nullptr;
        bool fromdirectory = false;
        if (config == nullptr && opt.servconf.empty() && !u.msgtype.empty()) {
            std::string err;
            if (u.ownlayout) {
                std::string text = layoutfromtext(u.text);
                generated = edihost_parsetree(text.data(), text.size(), "layout of the message");
                config = generated;
            } else {
                config = gen.get(u.msgtype, err);
                fromdirectory = true;
            }
            if (config == nullptr) {
                fprintf(stderr, "%s: %s\n", input.c_str(), err.c_str());
                if (combined != nullptr)
                    freedatatree(combined);
                return ReadResult{nullptr, {}, res.changes};
            }
        }
        envelope_t *ev = nullptr;
        std::string text = opt.raw ? u.text : prepareunit(u, config, opt, input, res.changes);
        StderrCapture cap(opt.trace < 0);
        datatree_t *tree = readworkingcopy(mod, opt, config, input, text, &ev);
        if (generated != nullptr)
            freedatatree(generated);
        std::vector<std::string> lines = cap.lines();
        printprefixed(input, lines);
        if (tree == nullptr) {
            std::string where = units.size() > 1 ? " (" + describeunit(u) + ")" : "";
            fprintf(stderr, "%s: %s%s\n", input.c_str(),
                    explainread(lines, text, opt.raw).c_str(), where.c_str());
            freeenvelope(ev);
            if (combined != nullptr)
                freedatatree(combined);
            edihost_clearinput();
            return ReadResult{nullptr, {}, res.changes};
        }
        if (fromdirectory && !opt.raw && retryownlayout(input, u, text, tree, config, opt, res.changes)) {
            // Read again, each message with its own layout, right behind.
            freedatatree(tree);
            freeenvelope(ev);
            std::vector<Unit> parts = splitmessages(u);
            for (Unit &p : parts)
                p.ownlayout = true;
            units.insert(units.begin() + static_cast<long>(k) + 1, parts.begin(), parts.end());
            continue;
        }
        if (reportleftout(input, u, text, tree, config, opt, res.changes) && !opt.keepgoing) {
            freedatatree(tree);
            freeenvelope(ev);
            if (combined != nullptr)
                freedatatree(combined);
            edihost_clearinput();
            return ReadResult{nullptr, {}, res.changes};
        }
        if (ev != nullptr && ev->servconftag != nullptr)
            res.keys.push_back(ev->servconftag);
        freeenvelope(ev);
        if (combined == nullptr) {
            combined = tree;
        } else {
            // The messages go under the first root, in file order.
            *tail = tree->child;
            tree->child = nullptr;
            freedatatree(tree);
        }
        tail = &combined->child;
        while (*tail != nullptr)
            tail = &(*tail)->next;
    }
    edihost_clearinput();
    if (combined != nullptr && units.size() > 1) {
        renumbermessages(combined);
        setparents(combined, 0);
    }
    res.tree = combined;
    return res;
}

}  // namespace edi
