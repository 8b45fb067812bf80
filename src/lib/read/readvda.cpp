#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <map>
#include <mutex>

#include "module/capture.h"
#include "edihost.h"
#include "files/output.h"
#include "read/readinput.h"
#include "vda/layout.h"
#include "vda/lines.h"
#include "vda/place.h"
#include "findings/report.h"
#include "text/segments.h"

namespace edi {

namespace {


bool isrecordtype(const std::string &line)
{
    return line.size() >= 3 && familyoftype(line.substr(0, 3)) != nullptr;
}


// "hh:mm:ss.mmm (ediprot       :LINE): N: len ..." gives the line number N
// the module is at; 0 for any other line.
long traceline(const std::string &l)
{
    const size_t prefix = 36;
    if (l.size() <= prefix || l[13] != '(' || l.compare(33, 3, "): ") != 0)
        return 0;
    char *end = nullptr;
    long n = strtol(l.c_str() + prefix, &end, 10);
    return strncmp(end, ": len ", 6) == 0 ? n : 0;
}

// True if a node of the configuration answers the record key of `line`
// ("S" and its first three characters), as the module looks it up.
bool configured(const datatree_t *config, const std::string &line)
{
    std::string key = "S";
    key.append(line, 0, std::min<size_t>(3, line.find('\0')));
    std::vector<const datatree_t *> todo{config};
    while (!todo.empty()) {
        const datatree_t *tp = todo.back();
        todo.pop_back();
        for (; tp != nullptr; tp = tp->next) {
            if (tp->xmltag != nullptr && tp->xmltag[0] != '\0' && key == tp->xmltag + 1)
                return true;
            if (tp->child != nullptr)
                todo.push_back(tp->child);
        }
    }
    return false;
}


bool modulemessage(const std::string &l)
{
    return l.compare(0, 10, "insrecord:") == 0 || l.compare(0, 8, "vdaread:") == 0 ||
           l.find("missing in vdaconf") != std::string::npos;
}

// The sentence behind the records left out ("line 6 (518)", ...), noted
// among the changes; true when they fail the read (no --keep-going).
bool reportlost(const std::string &input, const std::vector<std::string> &lost,
                const std::string &why, bool keepgoing, std::vector<std::string> &changes,
                Report &rep)
{
    if (lost.empty())
        return false;
    std::string list;
    for (const std::string &s : lost)
        list += (list.empty() ? "" : ", ") + s;
    std::string sentence =
        std::to_string(lost.size()) + " record" + (lost.size() == 1 ? "" : "s") +
        " left out of the tree (" + list + "): " + why + "; see docs/vda.md" +
        (keepgoing ? "" : ", or give --keep-going to accept the tree without them") + ".";
    changes.push_back("left out of the tree: " + list);
    rep.leftout(input, sentence, keepgoing);
    return !keepgoing;
}

// The working lines of `bytes`, the changes noted; false after the
// failure of a file that holds no VDA record at all.
bool recordlines(const std::string &input, const std::string &bytes, bool raw,
                 std::vector<std::string> &lines, std::vector<std::string> &changes, Report &rep)
{
    lines = workinglines(bytes, raw, changes);
    bool anyrecord = false;
    for (const std::string &l : lines)
        anyrecord = anyrecord || isrecordtype(l);
    if (!anyrecord) {
        rep.fail(input, "holds no VDA record (no line begins with a record type 511 to 519 or "
                        "711 to 719); check that this is a VDA record file.");
        return false;
    }
    for (const std::string &c : changes)
        rep.change(input, c);
    return true;
}

// The module's own read of the working copy, for --raw: its placement
// rules, and what its trace tells of the records it could not place.
ReadResult readvdamodule(const Module &mod, const Settings &opt, datatree_t *config,
                         const std::string &input, const std::string &bytes, Report &rep)
{
    ReadResult res;
    std::vector<std::string> lines;
    if (!recordlines(input, bytes, opt.raw, lines, res.changes, rep))
        return res;
    std::string text;
    for (const std::string &l : lines)
        text += l;

    // The module's trace of level 1 names each line before its records are
    // placed, so a refusal of insrecord can be put to its line.
    bool watch = opt.trace < 0;
    envelope_t *ev = nullptr;
    datatree_t *tree = nullptr;
    std::vector<std::string> out = inmodule(watch ? 2 : opt.trace, watch, [&] {
        std::vector<char> fn(input.c_str(), input.c_str() + input.size() + 1);
        edihost_setinput(input.c_str(), text.data(), text.size());
        tree = mod.vdaread(fn.data(), &ev, config, nullptr);
        edihost_clearinput();
    });
    long at = 0;
    std::vector<std::string> lost;
    // Lines of a record type the configuration does not know: the module
    // passes them over without a word.
    std::vector<bool> unknown(lines.size());
    if (tree != nullptr)
        for (size_t i = 0; i < lines.size(); i++)
            unknown[i] = !blankline(lines[i]) && !configured(config, lines[i]);
    for (const std::string &l : out) {
        if (long n = traceline(l)) {
            at = n;
            if (n > 0 && static_cast<size_t>(n) <= lines.size() && unknown[n - 1]) {
                std::string type = lines[n - 1].substr(0, 3);
                Finding &f = rep.add(EDI_FINDING_LEFT_OUT, EDI_SEVERITY_ERROR, input,
                                     "line " + std::to_string(n) + ": record type " +
                                         printable(type) + " is not in the configuration");
                f.segment = static_cast<size_t>(n);
                f.tag = type;
                lost.push_back("line " + std::to_string(n) + " (" + printable(type) + ")");
            }
        } else if (modulemessage(l)) {
            std::string where;
            if (l.compare(0, 10, "insrecord:") == 0 && at > 0 &&
                static_cast<size_t>(at) <= lines.size()) {
                std::string type = printable(lines[at - 1].substr(0, 3));
                where = "line " + std::to_string(at) + ": record " + type + ": ";
                lost.push_back("line " + std::to_string(at) + " (" + type + ")");
            }
            rep.add(EDI_FINDING_MODULE, EDI_SEVERITY_ERROR, input, where + l);
        }
    }
    if (tree == nullptr) {
        rep.fail(input, "the configuration has no record 511, so it describes no VDA file; give a "
                        "VDA configuration.");
        return res;
    }
    if (reportlost(input, lost,
                   "the configuration knows no such record type, or its places hold one record "
                   "of a type per call-off and one call-off per file",
                   opt.keepgoing, res.changes, rep)) {
        freedatatree(tree);
        return res;
    }
    res.tree = tree;
    return res;
}


// The records of one transmission by type, to check its trailer against.
struct Transmission {
    std::map<std::string, size_t> counts;
    void reset() { counts.clear(); }
};

// The trailer's counters against the records of its transmission: one
// finding per counter that differs.
void checktrailer(const VdaFamily &f, const std::string &line, size_t lineno,
                  const Transmission &t, const std::string &input, Report &rep)
{
    for (size_t i = 0; i < f.counted.size(); i++) {
        size_t at = 5 + 7 * i;
        std::string text = at + 7 <= line.size() ? line.substr(at, 7) : "";
        auto it = t.counts.find(f.counted[i]);
        size_t have = it != t.counts.end() ? it->second : 0;
        char *end = nullptr;
        unsigned long said = strtoul(text.c_str(), &end, 10);
        if (text.size() == 7 && end == text.c_str() + 7 && said == have)
            continue;
        Finding &fd = rep.add(EDI_FINDING_VALIDATION, EDI_SEVERITY_WARNING, input,
                              "line " + std::to_string(lineno) + ": the trailer counts '" +
                                  printable(text) + "' records " + f.counted[i] +
                                  ", the transmission holds " + std::to_string(have) +
                                  " (written anew on output)");
        fd.segment = lineno;
        fd.tag = f.trailer;
        fd.element = "count" + f.counted[i];
    }
}

}  // namespace

// Each line made a record by the module (makerecord) and placed by the
// library in the loop instances of the configuration, so that every record
// is kept in file order.
ReadResult readvdainput(const Module &mod, const Settings &opt, datatree_t *config,
                        const std::string &input, const std::string &bytes, Report &rep)
{
    if (opt.raw)
        return readvdamodule(mod, opt, config, input, bytes, rep);
    ReadResult res;
    std::vector<std::string> lines;
    if (!recordlines(input, bytes, false, lines, res.changes, rep))
        return res;

    datatree_t *root = static_cast<datatree_t *>(calloc(1, sizeof(datatree_t)));
    if (root == nullptr || (root->xmltag = strdup(config->xmltag)) == nullptr)
        edihost_outofmemory();
    RecordPlacer placer(config, root);
    const VdaFamily *family = familyoftree(config);
    Transmission trans;
    std::vector<std::string> lost;
    for (size_t i = 0; i < lines.size(); i++) {
        const size_t lineno = i + 1;
        std::string line = content(lines[i]);
        if (blankline(line)) {
            if (!line.empty())
                rep.change(input, "line " + std::to_string(lineno) +
                                      ": blanks or an end-of-file mark only, passed over");
            continue;
        }
        std::string type = printable(line.substr(0, 3));
        if (line.size() != kRecordWidth) {
            Finding &f = rep.add(EDI_FINDING_VALIDATION, EDI_SEVERITY_WARNING, input,
                                 "line " + std::to_string(lineno) + ": record " + type + " has " +
                                     std::to_string(line.size()) + " characters, not 128; " +
                                     (line.size() < kRecordWidth
                                          ? "the fields behind its end are read as empty"
                                          : "the characters behind the 128th are not read"));
            f.segment = lineno;
            f.tag = line.substr(0, 3);
        }
        datatree_t *confnode = nullptr;
        datatree_t *record = nullptr;
        {
            std::lock_guard<std::recursive_mutex> hold(modulelock());
            std::vector<char> buf(line.begin(), line.end());
            buf.push_back('\0');
            record = mod.makerecord(buf.data(), &confnode, config);
        }
        if (record == nullptr) {
            const VdaFamily *other = familyoftype(line.substr(0, 3));
            std::string why = other != nullptr && family != nullptr && other != family
                                  ? " (a " + std::string(other->name) + " record in a " +
                                        family->name + " file)"
                                  : "";
            Finding &f = rep.add(EDI_FINDING_LEFT_OUT, EDI_SEVERITY_ERROR, input,
                                 "line " + std::to_string(lineno) + ": record type " + type +
                                     " is not in the configuration" + why);
            f.segment = lineno;
            f.tag = line.substr(0, 3);
            lost.push_back("line " + std::to_string(lineno) + " (" + type + ")");
            continue;
        }
        if (family != nullptr && line.compare(0, 3, family->header) == 0)
            trans.reset();
        trans.counts[line.substr(0, 3)]++;
        if (family != nullptr && line.compare(0, 3, family->trailer) == 0)
            checktrailer(*family, line, lineno, trans, input, rep);
        if (!placer.place(record, confnode)) {
            Finding &f = rep.add(EDI_FINDING_LEFT_OUT, EDI_SEVERITY_ERROR, input,
                                 "line " + std::to_string(lineno) + ": record " + type +
                                     " has no place in the configuration behind the records "
                                     "before it");
            f.segment = lineno;
            f.tag = line.substr(0, 3);
            lost.push_back("line " + std::to_string(lineno) + " (" + type + ")");
            freedatatree(record);
        }
    }
    setparents(root, 0);
    if (reportlost(input, lost,
                   "the configuration knows no such record type or has no place for it there",
                   opt.keepgoing, res.changes, rep)) {
        freedatatree(root);
        return res;
    }
    res.tree = root;
    return res;
}

}  // namespace edi
