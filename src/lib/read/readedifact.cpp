#include <stdio.h>
#include <stdlib.h>

#include <map>
#include <mutex>

#include "directory/autoconfig.h"
#include "module/capture.h"
#include "text/compositepad.h"
#include "read/workingcopycheck.h"
#include "text/reescape.h"
#include "edihost.h"
#include "text/envelope.h"
#include "text/envelopevalues.h"
#include "trees/envelopenodes.h"
#include "text/charset.h"
#include "module/explain.h"
#include "directory/filelayout.h"
#include "files/output.h"
#include "read/placement.h"
#include "text/segments.h"
#include "read/readinput.h"
#include "trees/treeload.h"
#include "findings/report.h"
#include "text/transport.h"

namespace edi {

namespace {

void freeenvelope(envelope_t *ev)
{
    if (ev != nullptr) {
        free(ev->servconftag);
        free(ev);
    }
}

}  // namespace

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

namespace {

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

}  // namespace

// Configurations generated from the directory data, one per message type,
// released with the read.
class Generated {
public:
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

namespace {

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
std::vector<Unit> ownlayouts(std::vector<Unit> units, Generated &gen,
                             const std::string &input, std::vector<std::string> &changes,
                             Report &rep)
{
    std::vector<Unit> out;
    for (Unit &u : units) {
        std::string err;
        if (u.msgtype.empty()) {
            out.push_back(std::move(u));
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
            out.push_back(std::move(u));
            continue;
        }
        rep.add(EDI_FINDING_NOTE, EDI_SEVERITY_INFO, input, changes.back());
        for (Unit &one : splitmessages(u)) {
            one.ownlayout = true;
            out.push_back(std::move(one));
        }
    }
    return out;
}

// The working copy `copy` of one unit (repetitions already on their places)
// as the module shall read it: release characters it would misread
// rewritten, composites without component separator given one.  What was
// changed is added to `notes`.
std::string prepareunit(const Unit &u, const std::string &copy, const CompositePlaces &composites,
                        std::vector<std::string> &notes)
{
    bool changed = false;
    char release = 0;
    std::string text = reescape(copy, changed, release);
    if (changed)
        notes.push_back(describeunit(u) + ": release characters written as '" +
                        printable(std::string(1, release)) +
                        "' (declared in UNA), because a released release character stands "
                        "in front of a separator, which the reader would take as released");
    size_t padded = 0;
    text = padcomposites(text, composites, padded);
    if (padded > 0)
        notes.push_back(describeunit(u) + ": " + std::to_string(padded) + " element" +
                        (padded == 1 ? "" : "s") +
                        " without component separator where the configuration has a "
                        "composite given one, so that each value is read once");
    return text;
}

// True if a configuration generated from the directory left segments of
// `u` out although it knows every tag of them: the directory's structure
// allows the segment where it stands, but the reader, which places forward
// only, took an earlier place for an earlier segment.  Such a message is
// read again with a layout taken from itself, which places every segment;
// a tag the directory does not know stays a failure of the file.
bool retryownlayout(const std::string &input, const Unit &u, const std::string &text,
                    const datatree_t *tree, const datatree_t *config,
                    std::vector<std::string> &changes, Report &rep)
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
    rep.change(input, note);
    changes.push_back(note);
    return true;
}

// Reports the segments of `u` that the read left out of `tree`; true if
// there are any.
bool reportleftout(const std::string &input, const Unit &u, const std::string &text,
                   const datatree_t *tree, const datatree_t *config, bool keepgoing,
                   std::vector<std::string> &changes, Report &rep)
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
        Finding &f = rep.add(EDI_FINDING_LEFT_OUT,
                             keepgoing ? EDI_SEVERITY_WARNING : EDI_SEVERITY_ERROR, input,
                             what + ": the configuration has " +
                                 (known ? "no place for this segment here"
                                        : "no segment " + printable(lo.tag) + " at all") +
                                 ", so it" + behind + " did not reach the tree");
        f.message = msg;
        f.segment = lo.position;
        f.tag = lo.tag;
        f.code = 15;  // not supported in this position
        f.interchangeref = envelopevalues(u.una, u.unb, "").controlref;
        changes.push_back("left out of the tree: " + what + behind);
        total += lo.count;
    }
    if (lost.empty())
        return false;
    std::string sentence =
        std::to_string(total) + " segment" + (total == 1 ? "" : "s") +
        " left out of the tree: the reader places segments strictly in the order of the "
        "configuration and places nothing more of a message behind a segment it cannot place; "
        "give a configuration that describes the message as it is" +
        (keepgoing ? "" : ", or --keep-going to accept the tree without them") + ".";
    rep.leftout(input, sentence, keepgoing);
    return true;
}

}  // namespace

EdifactReading::EdifactReading(const Module &mod, const Settings &opt,
                               std::vector<datatree_t *> configs, std::string input,
                               std::string bytes, Report &rep)
    : mod_(mod), opt_(opt), configs_(std::move(configs)), input_(std::move(input)), rep_(rep),
      gen_(std::make_unique<Generated>())
{
    if (configs_.empty())
        configs_.push_back(nullptr);
    failed_ = !prepare(std::move(bytes));
}

EdifactReading::~EdifactReading() = default;

bool EdifactReading::prepare(std::string bytes)
{
    if (opt_.raw) {
        units_.emplace_back();
        units_.back().text = std::move(bytes);
        return true;
    }
    TransportNotes tn;
    auto clean = std::make_shared<const std::string>(striptransport(std::move(bytes), tn));
    changes_ = tn.describe();
    EnvelopeNotes en;
    units_ = prepareenvelope(clean, en);
    messages_ = en.messages;
    changes_.insert(changes_.end(), en.changes.begin(), en.changes.end());
    // What the working copies changed is shown on request only; a layout
    // taken from the message itself is always told, behind it.
    for (const std::string &c : changes_)
        rep_.change(input_, c);
    if (en.faults.empty() && configs_.size() == 1 && configs_[0] == nullptr &&
        opt_.servconf.empty())
        units_ = ownlayouts(std::move(units_), *gen_, input_, changes_, rep_);
    if (en.faults.empty() && units_.empty()) {
        rep_.fail(input_, "no interchange of the file holds a message (no UNH), so there is "
                          "nothing to read.");
        return false;
    }
    if (!en.faults.empty()) {
        for (const std::string &f : en.faults)
            rep_.fail(input_, f + ".");
        rep_.fail(input_, "the envelope is broken, so the file is not read; ask the sender for a "
                          "corrected file (--raw hands it to the module as it is).");
        return false;
    }
    return true;
}

bool EdifactReading::next(UnitRead &out)
{
    Unit u;
    while (!failed_ && takeunit(u)) {
        if (opt_.permessage && !u.ownlayout && u.lastmsg > u.firstmsg) {
            // The character set is told from the whole copy, not from the
            // message that happens to come first.
            textcharset(u, unitpieces(u));
            // Message by message: each message its own working copy, so
            // that no more than one message's tree is made at a time.  A
            // copy whose messages are places in the input is cut as the
            // read goes, one message at a time.
            if (cuttable(u)) {
                cutting_ = std::move(u);
                cutat_ = 0;
                continue;
            }
            std::vector<Unit> parts = splitmessages(u);
            if (parts.size() > 1) {
                ahead_.insert(ahead_.begin(), parts.begin(), parts.end());
                continue;
            }
        }
        if (opt_.permessage && opt_.parts > 1 && u.firstmsg > 0 && u.lastmsg == u.firstmsg &&
            (u.firstmsg - 1) % opt_.parts != opt_.part) {
            // Another worker's message: not read, only its type noted so
            // that message loops are numbered as a read of all numbers them.
            skipped_.push_back(u.ownlayout || u.msgtype.empty()
                                   ? std::string()
                                   : "*" + u.msgtype.substr(0, u.msgtype.find(':')));
            continue;
        }
        datatree_t *config = configfor(configs_, u.msgtype);
        if (config == nullptr && configs_.size() > 1) {
            rep_.fail(input_, "no configuration given for the message type " + u.msgtype + " (" +
                                  describeunit(u) +
                                  "); give its configuration with one more --config.");
            failed_ = true;
            return false;
        }
        // Neither --config nor --servconf: the configuration is generated
        // from the directory the message header names.  A layout taken from
        // the message is this unit's own and goes with it.
        std::unique_ptr<datatree_t, void (*)(datatree_t *)> own(nullptr, freedatatree);
        bool fromdirectory = false;
        if (config == nullptr && opt_.servconf.empty() && !u.msgtype.empty()) {
            std::string err;
            if (u.ownlayout) {
                std::string text = layoutfromtext(unittext(u));
                own.reset(parsetree(text, "layout of the message", rep_));
                config = own.get();
                if (config == nullptr)
                    err = describeunit(u) + ": no layout could be taken from the message (see "
                                            "above); its header or tags hold characters a "
                                            "layout cannot name.";
            } else {
                config = gen_->get(u.msgtype, err);
                fromdirectory = true;
            }
            if (config == nullptr) {
                rep_.fail(input_, err.empty() ? describeunit(u) + ": no configuration" : err);
                failed_ = true;
                return false;
            }
        }
        envelope_t *ev = nullptr;
        std::string text = unittext(u);
        if (!opt_.raw) {
            std::vector<std::string> notes;
            const bool ok = checkworkingcopy(u, config, input_, opt_.keepgoing, text, changes_,
                                             notes, rep_);
            notecopychanges(notes);
            if (!ok) {
                failed_ = true;
                return false;
            }
            notes.clear();
            text = prepareunit(u, text, compositesof(config, u.ownlayout), notes);
            notecopychanges(notes);
        }
        datatree_t *tree = nullptr;
        std::vector<std::string> lines = inmodule(opt_.trace, opt_.trace < 0, [&] {
            std::vector<char> fn(input_.c_str(), input_.c_str() + input_.size() + 1);
            // The service configuration list is the process's: it holds
            // this read's entries for the time of the call only.
            if (!opt_.servconf.empty())
                edihost_loadservconf(opt_.servconf.c_str());
            edihost_setinput(input_.c_str(), text.data(), text.size());
            tree = mod_.edifactread(fn.data(), &ev, config, nullptr);
            edihost_clearinput();
            if (!opt_.servconf.empty())
                edihost_clearservconf();
        });
        rep_.module(input_, lines);
        if (tree == nullptr) {
            std::string where =
                units_.size() > 1 || cutting_.places.size() > 1 ? " (" + describeunit(u) + ")" : "";
            rep_.fail(input_, explainread(lines, text, opt_.raw) + where);
            freeenvelope(ev);
            failed_ = true;
            return false;
        }
        if (fromdirectory && !opt_.raw &&
            retryownlayout(input_, u, text, tree, config, changes_, rep_)) {
            // Read again, each message with its own layout, right behind.
            freedatatree(tree);
            freeenvelope(ev);
            std::vector<Unit> parts = splitmessages(u);
            for (Unit &p : parts)
                p.ownlayout = true;
            ahead_.insert(ahead_.begin(), parts.begin(), parts.end());
            continue;
        }
        if (reportleftout(input_, u, text, tree, config, opt_.keepgoing, changes_, rep_) &&
            !opt_.keepgoing) {
            freedatatree(tree);
            freeenvelope(ev);
            failed_ = true;
            return false;
        }
        out.tree = tree;
        out.unit = u;
        out.text = std::move(text);
        out.key = ev != nullptr && ev->servconftag != nullptr ? ev->servconftag : "";
        out.charset = textcharset(out.unit, {out.text});
        freeenvelope(ev);
        return true;
    }
    return false;
}

const CompositePlaces &EdifactReading::compositesof(const datatree_t *config, bool own)
{
    // A layout taken from a message is freed with it, and its address may
    // come again for another: it is looked at afresh every time.
    if (own)
        return owncomposites_ = compositeplaces(config);
    auto it = composites_.find(config);
    if (it == composites_.end())
        it = composites_.emplace(config, compositeplaces(config)).first;
    return it->second;
}

void EdifactReading::notecopychanges(const std::vector<std::string> &notes)
{
    for (const std::string &n : notes) {
        if (copychanges_ < maxcopychanges) {
            rep_.change(input_, n);
            changes_.push_back(n);
        }
        copychanges_++;
    }
}

bool EdifactReading::takeunit(Unit &u)
{
    if (!ahead_.empty()) {
        u = std::move(ahead_.front());
        ahead_.pop_front();
        return true;
    }
    if (cutat_ < cutting_.places.size()) {
        u = messagepart(cutting_, cutat_++);
        return true;
    }
    // Taken out of the list: the memory of a read stays that of the input
    // and the copy being read.
    if (at_ < units_.size()) {
        u = std::move(units_[at_++]);
        return true;
    }
    if (copychanges_ > maxcopychanges) {
        std::string note = std::to_string(copychanges_ - maxcopychanges) +
                           " more changes to working copies like those above are not listed "
                           "(the first " + std::to_string(maxcopychanges) + " are)";
        rep_.change(input_, note);
        changes_.push_back(note);
        copychanges_ = maxcopychanges;
    }
    return false;
}

std::string EdifactReading::textcharset(const Unit &unit,
                                        const std::vector<std::string_view> &pieces)
{
    auto known = charsets_.find(unit.interchange);
    if (known != charsets_.end())
        return known->second;
    std::string una, unb;
    unitenvelope(unit, pieces.empty() ? std::string_view() : pieces[0], una, unb);
    std::string id = envelopevalues(una, unb, "").syntaxid;
    Charset declared = charsetofsyntax(id);
    Charset used = detectcharset(pieces, declared);
    if (used != declared && unit.interchange != utf8noted_) {
        utf8noted_ = unit.interchange;
        std::string note = describeunit(unit) + ": the syntax identifier " +
                           (id.empty() ? std::string("(none)") : printable(id)) +
                           " declares a single-byte character set, but the text is UTF-8; "
                           "its values are read as UTF-8";
        rep_.add(EDI_FINDING_NOTE, EDI_SEVERITY_WARNING, input_, note);
        changes_.push_back(note);
    }
    return charsets_[unit.interchange] = charsetname(used);
}

void unitenvelope(const Unit &unit, std::string_view text, std::string &una, std::string &unb)
{
    una = unit.una;
    unb = unit.unb;
    if (!unb.empty())
        return;
    SegmentReader sr(text);
    Segment s;
    while (sr.next(s) && s.tag != "UNH") {
        std::string seg(text.substr(s.begin, s.end - s.begin));
        if (s.tag == "UNA")
            una = seg;
        else if (s.tag == "UNB")
            unb = seg;
    }
}

void unitenvelope(const UnitRead &ur, std::string &una, std::string &unb)
{
    unitenvelope(ur.unit, ur.text, una, unb);
}

namespace {

// The messages of `ur` moved to the end of the chain at `*tail`, each
// interchange led by its `#envelope` node and each functional group by its
// `#group` node; `interchange` and `group` say what the chain's end is in.
void appendwithenvelope(UnitRead &ur, datatree_t **&tail, int &interchange, std::string &group)
{
    datatree_t *m = ur.tree->child;  // first out: the chain may end in this root
    ur.tree->child = nullptr;
    std::string una, unb;
    unitenvelope(ur, una, unb);
    if (ur.unit.interchange != interchange && !unb.empty()) {
        *tail = envelopenode(una, unb, ur.unit.unz, ur.charset);
        tail = &(*tail)->next;
        group.clear();
    }
    interchange = ur.unit.interchange;
    size_t i = 0;
    while (m != nullptr) {
        datatree_t *after = m->next;
        m->next = nullptr;
        const std::string &g = i < ur.unit.groups.size() ? ur.unit.groups[i] : group;
        if (g != group && !g.empty()) {
            *tail = groupnode(una, g, i < ur.unit.groupends.size() ? ur.unit.groupends[i] : "");
            tail = &(*tail)->next;
        }
        group = g;
        *tail = m;
        tail = &m->next;
        m = after;
        i++;
    }
}

}  // namespace

ReadResult readedifactinput(const Module &mod, const Settings &opt,
                            const std::vector<datatree_t *> &configs, const std::string &input,
                            std::string bytes, Report &rep)
{
    ReadResult res;
    // Message by message, as the iterator reads: the same trees and the
    // same findings whichever way a program reads, and memory for one
    // message's working copy at a time.
    Settings each = opt;
    each.permessage = true;
    EdifactReading reading(mod, each, configs, input, std::move(bytes), rep);
    datatree_t *combined = nullptr;
    datatree_t **tail = nullptr;
    int interchange = 0;
    std::string group;
    size_t units = 0;
    UnitRead ur;
    while (reading.next(ur)) {
        units++;
        // One key for a run of messages read with it, as for one copy.
        if (!ur.key.empty() && (res.keys.empty() || res.keys.back() != ur.key))
            res.keys.push_back(ur.key);
        // The messages go under the first root, in file order.
        datatree_t *root = ur.tree;
        if (combined == nullptr) {
            combined = root;
            tail = &combined->child;
        }
        appendwithenvelope(ur, tail, interchange, group);
        if (root != combined)
            freedatatree(root);
    }
    res.changes = reading.changes();
    if (reading.failed()) {
        if (combined != nullptr)
            freedatatree(combined);
        return res;
    }
    if (combined != nullptr) {
        if (units > 1)
            renumbermessages(combined);
        setparents(combined, 0);
    }
    res.tree = combined;
    return res;
}

}  // namespace edi
